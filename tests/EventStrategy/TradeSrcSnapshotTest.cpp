// The replay of an account's state, and what is delivered live.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcSnapshot : public TradeSrcTest {
 protected:
  TradeSrcSnapshot() {
    FakeTradeService& service = platform.trade();
    service.positions = {positionOf(1), positionOf(2)};
    service.sourcePositionRecords = {sourcePositionOf(1), sourcePositionOf(1, "other"),
                                     sourcePositionOf(2)};
    service.orders = {orderOf(12, 1, 1, "own", 20), orderOf(11, 3, 1, "own", 10),
                      orderOf(13, 1, 2, "own", 5), orderOf(14, 1, 1, "other", 5)};
    service.fills = {fillOf("f2", 1, "own", 9), fillOf("f1", 1, "own", 9),
                     fillOf("f0", 2, "own", 1)};
  }
};

TEST_F(TradeSrcSnapshot, shouldDeliverPositionsSourcePositionsOrdersAndFillsInThisOrder) {
  source->setNotifyQuick(false);
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 11", "order 12",
                                         "fill f1", "fill f2"));
}

TEST_F(TradeSrcSnapshot, shouldAskTheServiceInThisOrderAndWithTheMaskOfAReplay) {
  source->subscribeTrade(account);
  const auto calls = tradeCalls();
  const std::vector<std::string> tail(calls.end() - 4, calls.end());
  EXPECT_THAT(tail, ElementsAre("trade.getPositions 5 mask=262176", "trade.sourcePositions 5",
                                "trade.ordersOfAccount 5", "trade.fillsOfAccount 5"));
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,sendSnapshot begin"));
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,sendSnapshot end"));
}

TEST_F(TradeSrcSnapshot, shouldWithholdFinalOrdersAndFillsFromAQuickAccount) {
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 12"));
}

TEST_F(TradeSrcSnapshot, shouldRememberWhatAQuickAccountWithheldSoThatNoReconnectDeliversIt) {
  source->subscribeTrade(account);
  notify.take();
  tellStatus(16);
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 12", "status 16"));
}

TEST_F(TradeSrcSnapshot, shouldSortByTimeAndThenByTextWithTheShorterFirst) {
  FakeTradeService& service = platform.trade();
  service.orders = {orderOf(1, 1, 1, "own", 7), orderOf(2, 1, 1, "own", 7),
                    orderOf(3, 1, 1, "own", 6)};
  service.orders.front().orderRef = "ab";
  std::next(service.orders.begin())->orderRef = "a";
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 3", "order 2", "order 1"));
}

TEST_F(TradeSrcSnapshot, shouldDeliverNothingWhenTheLastQueryFails) {
  platform.calls.answer("trade.fillsOfAccount", {-6, "down"});
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_EQ(logs.countContaining("sendSnapshot"), 0);
  platform.calls.answer("trade.fillsOfAccount", {});
  tellStatus(16);  // The first connection, since nothing was replayed before.
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 12", "status 16"));
  EXPECT_EQ(logs.countContaining("onReConnect"), 0);
}

TEST_F(TradeSrcSnapshot, shouldStopAtTheFirstQueryThatFails) {
  platform.calls.answer("trade.sourcePositions", {-6, "down"});
  source->subscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.ordersOfAccount"), 0);
  EXPECT_EQ(platform.calls.count("trade.fillsOfAccount"), 0);
}

TEST_F(TradeSrcSnapshot, shouldNotFetchWhileNobodyListens) {
  source->setNotify(nullptr);
  source->subscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.getPositions"), 0);
  source->setNotify(&notify);
  source->unsubscribeTrade(account);
  source->subscribeTrade(account);
  source->setNotify(nullptr);
  platform.calls.clear();
  tellStatus(16);
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcSnapshot, shouldReplayInFullAfterAnUnsubscribeAndASubscribe) {
  source->setNotifyQuick(false);
  source->subscribeTrade(account);
  const auto first = notify.take();
  source->unsubscribeTrade(account);
  source->subscribeTrade(account);
  EXPECT_EQ(notify.take(), first);
}

TEST_F(TradeSrcSnapshot, shouldDeliverAnOrderThatEndedDuringAnOutageOnce) {
  source->subscribeTrade(account);
  notify.take();
  platform.trade().orders.push_back(orderOf(21, 5));
  platform.trade().fills.push_back(fillOf("f9"));
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 12", "order 21",
                                         "fill f9", "status 16"));
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,onReConnect end"));
  tellStatus(16);
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 12", "status 16"));
}

TEST_F(TradeSrcSnapshot, shouldDeliverAnOrderThatIsNotFinalAgainOnEveryReconnect) {
  platform.trade().orders = {orderOf(30, 4)};
  source->subscribeTrade(account);
  notify.take();
  for (int i = 0; i < 3; ++i) {
    tellStatus(16);
    EXPECT_THAT(notify.take(),
                ElementsAre("position 1", "sourcePosition 1", "order 30", "status 16"));
  }
}

TEST_F(TradeSrcSnapshot, shouldAdmitOrdersAndFillsOfAnotherSubscribedSourceInAnyCode) {
  source->addSubscribeTradeByCreateSource("own", "other");
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 14", "order 12"));
}

TEST_F(TradeSrcSnapshot, shouldForwardOnlyTheStatusOfAnAccountThatIsNotSubscribed) {
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcSnapshot, shouldReplayNothingForAnyOtherStatus) {
  source->subscribeTrade(account);
  notify.take();
  tellStatus(17);
  EXPECT_THAT(notify.take(), ElementsAre("status 17"));
}

TEST_F(TradeSrcSnapshot, shouldMarkTheSnapshotSentWithoutAFetchWhenNothingIsWanted) {
  configure(0);
  source->subscribeTrade(account);
  notify.take();
  platform.calls.clear();
  tellStatus(16);
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_EQ(logs.countContaining(",onReConnect begin,"), 1);
}

class TradeSrcDelivery : public TradeSrcTest {};

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

TEST(TradeSrcThreads, shouldNotCallBackAfterTheListenerIsGoneWhicheverThreadTheServiceUses) {
  FakePlatform platform;
  auto source = std::make_shared<TradeSrc>();
  std::atomic<bool> stop{false};
  std::thread service([&] {
    TradeDataSpi& spi = *source;
    while (!stop) {
      spi.onRtnOrder({});
      spi.onRtnTrade({});
    }
  });
  for (int round = 0; round < 200; ++round) {
    auto notify = std::make_unique<RecordingTradeNotify>();
    source->setNotify(notify.get());
    source->setNotify(nullptr);
    notify.reset();  // A call-back in flight would touch it.
  }
  source->release();
  stop = true;
  service.join();
  EXPECT_EQ(source.use_count(), 1);
}

}  // namespace
}  // namespace orvane::support
