// What the trade service calls back, live, and the statuses that start a replay.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcDelivery : public TradeSrcTest {
 protected:
  TradeDataSpi& data() { return *source; }
};

TEST_F(TradeSrcDelivery, shouldLoseAFillThatArrivesWhileNobodyListensAndDeliverItOnReconnect) {
  source->subscribeTrade(account);
  source->setNotify(nullptr);
  static_cast<TradeDataSpi&>(*source).onRtnTrade(fillOf("late"));
  source->setNotify(&notify);
  platform.trade().fills = {fillOf("late")};
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("fill late", "status 16"));
}

TEST_F(TradeSrcDelivery, shouldDeliverALiveFillOnceMoreOnlyIfTheServiceSendsItAgain) {
  source->subscribeTrade(account);
  TradeDataSpi& spi = *source;
  spi.onRtnTrade(fillOf("x"));
  spi.onRtnTrade(fillOf("x"));
  EXPECT_THAT(notify.take(), ElementsAre("fill x", "fill x"));
  platform.trade().fills = {fillOf("x")};
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
}

TEST_F(TradeSrcDelivery, shouldRememberALiveFinalOrderAndNotOneOfStatusFour) {
  source->subscribeTrade(account);
  TradeDataSpi& spi = *source;
  for (const int status : {3, 4, 5, 6, 7}) spi.onRtnOrder(orderOf(100 + status, status));
  notify.take();
  for (const int status : {3, 4, 5, 6, 7})
    platform.trade().orders.push_back(orderOf(100 + status, status));
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("order 104", "status 16"));
}

TEST_F(TradeSrcDelivery, shouldTreatBothPositionCallBacksAlike) {
  TradeDataSpi& spi = *source;
  spi.onRtnPosition(positionOf(3));
  spi.onRtnPositionChange(positionOf(4));
  spi.onRtnSourcePosition(sourcePositionOf(5));
  spi.onRtnCapital({});
  EXPECT_THAT(notify.take(),
              ElementsAre("position 3", "position 4", "sourcePosition 5", "capital"));
}

TEST_F(TradeSrcDelivery, shouldForgetWhatItSawWhenTheCacheIsReset) {
  source->subscribeTrade(account);
  static_cast<TradeDataSpi&>(*source).onRtnOrder(orderOf(7, 3));
  source->resetCache();
  configure(kEverything);
  source->setRelatedCodeId({codeOf(1)});
  notify.take();
  platform.trade().orders = {orderOf(7, 3)};
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("order 7", "status 16"));
}

TEST_F(TradeSrcDelivery, shouldForwardOnlyTheStatusOfAnAccountThatIsNotSubscribed) {
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcDelivery, shouldReplayNothingForAnyOtherStatus) {
  source->subscribeTrade(account);
  notify.take();
  tellStatus(17);
  EXPECT_THAT(notify.take(), ElementsAre("status 17"));
}

TEST_F(TradeSrcDelivery, shouldMarkTheSnapshotSentWithoutAFetchWhenNothingIsWanted) {
  configure(0);
  source->setNotify(nullptr);
  source->subscribeTrade(account);
  source->setNotify(&notify);
  EXPECT_FALSE(marks().snapshotSent);
  platform.calls.clear();
  tellStatus(16);
  EXPECT_TRUE(marks().snapshotSent);
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,sendSnapshot begin"));
  EXPECT_EQ(logs.countContaining(",onReConnect begin,"), 0);
  tellStatus(16);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_EQ(logs.countContaining(",onReConnect begin,"), 1);
}

TEST_F(TradeSrcDelivery, shouldDropARecordWhileNobodyListensAndKeepNoBooksForIt) {
  source->setNotify(nullptr);
  data().onRtnTrade(fillOf("late"));
  data().onRtnOrder(orderOf(7, 3));
  data().onRtnPosition(positionOf(1));
  data().onRtnPositionChange(positionOf(1));
  data().onRtnSourcePosition(sourcePositionOf(1));
  data().onRtnCapital({});
  tellStatus(16);
  source->setNotify(&notify);
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_TRUE(TestAccess::finishedOrderIds(*source).empty());
  EXPECT_TRUE(TestAccess::deliveredFillKeys(*source).empty());
}

TEST_F(TradeSrcDelivery, shouldFilterNothingThatTheServiceSendsLive) {
  data().onRtnOrder(orderOf(1, 0, 77, "nobody"));
  data().onRtnTrade(fillOf("f", 77, "nobody"));
  data().onRtnPosition(positionOf(77));
  data().onRtnSourcePosition(sourcePositionOf(77, "nobody"));
  EXPECT_THAT(notify.take(), ElementsAre("order 1", "fill f", "position 77", "sourcePosition 77"));
}

TEST_F(TradeSrcDelivery, shouldNeedNoBitOfTheMaskForACapital) {
  configure(0);
  data().onRtnCapital({});
  EXPECT_THAT(notify.take(), ElementsAre("capital"));
}

TEST_F(TradeSrcDelivery, shouldHoldTheMutexWhileTheListenerIsCalled) {
  int calls = 0;
  notify.onLine = [&](const std::string& line) {
    ++calls;
    EXPECT_FALSE(TestAccess::mutexIsFree(*source)) << line;
  };
  data().onRtnOrder(orderOf(1, 3));
  data().onRtnTrade(fillOf("f"));
  data().onRtnPosition(positionOf(1));
  data().onRtnPositionChange(positionOf(1));
  data().onRtnSourcePosition(sourcePositionOf(1));
  data().onRtnCapital({});
  tellStatus(17);
  EXPECT_EQ(calls, 7);
  notify.onLine = {};
}

TEST_F(TradeSrcDelivery, shouldRememberNothingWhenTheListenerThrows) {
  source->subscribeTrade(account);
  notify.onLine = [](const std::string&) { throw std::runtime_error("full"); };
  EXPECT_THROW(data().onRtnOrder(orderOf(7, 3)), std::runtime_error);
  EXPECT_THROW(data().onRtnTrade(fillOf("f")), std::runtime_error);
  notify.onLine = {};
  EXPECT_TRUE(TestAccess::finishedOrderIds(*source).empty());
  EXPECT_TRUE(TestAccess::deliveredFillKeys(*source).empty());
  platform.trade().orders = {orderOf(7, 3)};
  platform.trade().fills = {fillOf("f")};
  tellStatus(16);  // So the reconnect brings what was lost.
  EXPECT_THAT(notify.take(), ElementsAre("order 7", "fill f", "status 16"));
}

TEST_F(TradeSrcDelivery, shouldHandOnEveryRecordAsItCame) {
  struct Keeper : EventTradeNotify {
    void onRtnPosition(const Position& position) override { positions.push_back(&position); }
    void onRtnStrategyPosition(const SourcePosition& position) override { part = &position; }
    void onRtnOrder(const Order& given) override { order = &given; }
    void onRtnTrade(const OrderFill& given) override { fill = &given; }
    void onRspStatus(const AccountID& given, const AccountStatusInfo& told) override {
      id = &given;
      info = &told;
    }
    void onRtnCapital(const TradingAccount& given) override { capital = &given; }
    std::vector<const Position*> positions;
    const SourcePosition* part = nullptr;
    const Order* order = nullptr;
    const OrderFill* fill = nullptr;
    const AccountID* id = nullptr;
    const AccountStatusInfo* info = nullptr;
    const TradingAccount* capital = nullptr;
  } keeper;
  source->setNotify(&keeper);
  const Order order = orderOf(1, 0);
  const OrderFill fill = fillOf("f");
  const Position position = positionOf(1);
  const SourcePosition part = sourcePositionOf(1);
  const TradingAccount capital;
  const AccountID id;
  const AccountStatusInfo info;
  data().onRtnOrder(order);
  data().onRtnTrade(fill);
  data().onRtnPosition(position);
  data().onRtnPositionChange(position);
  data().onRtnSourcePosition(part);
  data().onRtnCapital(capital);
  static_cast<TradeMsgSpi&>(*source).onRspStatus(id, info);
  source->setNotify(&notify);
  EXPECT_EQ(keeper.order, &order);
  EXPECT_EQ(keeper.fill, &fill);
  EXPECT_THAT(keeper.positions, ElementsAre(&position, &position));
  EXPECT_EQ(keeper.part, &part);
  EXPECT_EQ(keeper.capital, &capital);
  EXPECT_EQ(keeper.id, &id);
  EXPECT_EQ(keeper.info, &info);
}

TEST_F(TradeSrcDelivery, shouldLeaveEveryOtherCallBackEmpty) {
  TradeMsgSpi& status = *source;
  status.onMsgReserved2();
  status.onMsgReserved3();
  data().onDataReserved2();
  data().onDataReserved4();
  data().onDataReserved6();
  data().onDataReserved8();
  data().onDataReserved10();
  data().onDataReserved15();
  data().onDataReserved32();
  CondSpi& conditions = *source;
  conditions.onCondReserved1();
  conditions.onCondReserved6();
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

// Statuses.

TEST_F(TradeSrcDelivery, shouldReplayTheAccountsOfAStatusInItsOrderAndPassOverTheOthers) {
  const TradingAccountID other = accountOf(3, "other");
  platform.calls.answer("trade.getPositions", {-6, "down"});
  source->subscribeTrade(account);
  source->subscribeTrade(other);
  platform.calls.answer("trade.getPositions", {});
  platform.calls.clear();
  tellStatus(16, {account, accountOf(4, "unknown"), other});
  EXPECT_THAT(tradeCalls(),
              ElementsAre("trade.getPositions 5 mask=262176", "trade.sourcePositions 5",
                          "trade.ordersOfAccount 5", "trade.fillsOfAccount 5",
                          "trade.getPositions 3 mask=262176", "trade.sourcePositions 3",
                          "trade.ordersOfAccount 3", "trade.fillsOfAccount 3"));
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
}

TEST_F(TradeSrcDelivery, shouldAskWithTheAccountThatWasSubscribedAndNotWithTheStatusesOwn) {
  source->subscribeTrade(account);
  std::vector<std::string> asked;
  platform.trade().onAccountQuery = [&](const TradingAccountID& of) {
    asked.push_back(of.account);
    return ResultStatus();
  };
  tellStatus(16, {accountOf(5, "another text")});
  EXPECT_THAT(asked, ElementsAre("acc", "acc", "acc", "acc"));
}

TEST_F(TradeSrcDelivery, shouldReplayButForwardNoStatusWithoutItsBit) {
  configure(EventTypeOrder);
  platform.trade().orders = {orderOf(1, 1)};
  source->subscribeTrade(account);
  notify.take();
  tellStatus(16);
  tellStatus(17);
  EXPECT_THAT(notify.take(), ElementsAre("order 1"));
}

TEST_F(TradeSrcDelivery, shouldForwardTheStatusThoughItsReplayFailedAndTryAgainAtTheNext) {
  platform.calls.answer("trade.ordersOfAccount", {-6, "down"});
  source->subscribeTrade(account);
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
  EXPECT_FALSE(marks().snapshotSent);
  platform.calls.answer("trade.ordersOfAccount", {});
  tellStatus(16);
  EXPECT_TRUE(marks().snapshotSent);
  EXPECT_EQ(logs.countContaining("sendSnapshot end"), 1);
}

TEST_F(TradeSrcDelivery, shouldFetchNothingForAStatusWhileNobodyListens) {
  source->subscribeTrade(account);
  source->setNotify(nullptr);
  platform.calls.clear();
  logs.clear();
  tellStatus(16);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_THAT(eventLines(), IsEmpty());
}

}  // namespace
}  // namespace orvane::support
