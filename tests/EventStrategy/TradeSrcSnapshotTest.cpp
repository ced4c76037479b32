// The replay of an account's state: the snapshot, and what follows a loss of the connection.

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

TEST_F(TradeSrcSnapshot, shouldGiveAQuickAccountNoFinalOrderAndNoFillButEveryOtherOrder) {
  platform.trade().orders.clear();
  for (int status = 0; status <= 8; ++status)
    platform.trade().orders.push_back(orderOf(status, status));
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 0", "order 1",
                                         "order 2", "order 4", "order 8"));
  EXPECT_EQ(TestAccess::finishedOrderIds(*source), (std::set<int64>{3, 5, 6, 7}));
  EXPECT_EQ(TestAccess::deliveredFillKeys(*source).size(), 2u);
}

TEST_F(TradeSrcSnapshot, shouldRememberFinalOrdersAndFillsWithoutQuickToo) {
  source->setNotifyQuick(false);
  source->subscribeTrade(account);
  EXPECT_EQ(TestAccess::finishedOrderIds(*source), std::set<int64>{11});
  EXPECT_EQ(TestAccess::deliveredFillKeys(*source).size(), 2u);
}

TEST_F(TradeSrcSnapshot, shouldSortTextsByTheirBytesAndKeepTheOrderOfEquals) {
  FakeTradeService& service = platform.trade();
  source->setNotifyQuick(false);
  service.orders = {orderOf(1), orderOf(2), orderOf(3), orderOf(4)};
  const std::vector<std::string> refs = {"\xb0", "z", "a", "a"};
  auto ref = refs.begin();
  for (Order& order : service.orders) order.orderRef = *ref++;
  service.fills = {fillOf("\xb0"), fillOf("z"), fillOf("ab"), fillOf("a"), fillOf("late")};
  service.fills.front().fillTime() = -1;
  service.fills.back().fillTime() = 1;
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 3", "order 4", "order 2",
                          "order 1", "fill \xb0", "fill a", "fill ab", "fill z", "fill late"));
}

TEST_F(TradeSrcSnapshot, shouldNotSortAfterAReconnect) {
  FakeTradeService& service = platform.trade();
  source->subscribeTrade(account);
  notify.take();
  service.orders = {orderOf(9, 3, 1, "own", 90), orderOf(8, 3, 1, "own", 10), orderOf(7, 1)};
  service.fills = {fillOf("y", 1, "own", 90), fillOf("x", 1, "own", 10)};
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "order 9", "order 8",
                                         "order 7", "fill y", "fill x", "status 16"));
}

TEST_F(TradeSrcSnapshot, shouldReturnAtOnceFromASecondSnapshotOfTheSameAccount) {
  source->subscribeTrade(account);
  notify.take();
  platform.calls.clear();
  logs.clear();
  TestAccess::sendSnapshot(*source, account);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(eventLines(), IsEmpty());
}

TEST_F(TradeSrcSnapshot, shouldAskOnlyForWhatTheMaskWants) {
  const std::vector<std::pair<int64, std::string>> queries = {
      {EventTypePosition, "trade.getPositions 5 mask=262176"},
      {EventTypeStrategyPosition, "trade.sourcePositions 5"},
      {EventTypeOrder, "trade.ordersOfAccount 5"},
      {EventTypeFill, "trade.fillsOfAccount 5"}};
  for (const auto& [wanted, query] : queries) {
    configure(wanted);
    source->subscribeTrade(account);
    platform.calls.clear();
    tellStatus(16);
    EXPECT_THAT(tradeCalls(), ElementsAre(query));
    source->unsubscribeTrade(account);
  }
}

TEST_F(TradeSrcSnapshot, shouldStopAtEachQueryThatFailsAndDeliverNothingOfTheOnesBefore) {
  const std::vector<std::string> queries = {"trade.getPositions", "trade.sourcePositions",
                                            "trade.ordersOfAccount", "trade.fillsOfAccount"};
  source->subscribeTrade(account);
  notify.take();
  for (std::size_t failing = 0; failing < queries.size(); ++failing) {
    platform.calls.answer(queries[failing], {-6, "down"});
    platform.calls.clear();
    logs.clear();
    tellStatus(16);
    EXPECT_EQ(tradeCalls().size(), failing + 1);
    EXPECT_THAT(notify.take(), ElementsAre("status 16"));
    EXPECT_THAT(eventLines(), ElementsAre(",onReConnect begin," + accountLog()));
    EXPECT_TRUE(marks().snapshotSent);
    platform.calls.answer(queries[failing], {});
  }
  tellStatus(16);  // Comes back to the reconnect.
  EXPECT_TRUE(eventLogged(",onReConnect end"));
  EXPECT_EQ(logs.countContaining("sendSnapshot"), 0);
}

TEST_F(TradeSrcSnapshot, shouldMarkTheSnapshotSentAndLogBeforeTheFirstRecordGoesOut) {
  bool seen = false;
  notify.onLine = [&](const std::string&) {
    if (std::exchange(seen, true)) return;
    EXPECT_FALSE(TestAccess::mutexIsFree(*source));
    EXPECT_EQ(eventLines().back(), ",sendSnapshot begin");
    throw std::runtime_error("full");
  };
  EXPECT_THROW(source->subscribeTrade(account), std::runtime_error);
  EXPECT_TRUE(marks().snapshotSent);  // No failure after the fetch clears it.
  EXPECT_TRUE(TestAccess::mutexIsFree(*source));
  tellStatus(16);
  EXPECT_EQ(logs.countContaining("onReConnect begin"), 1);
  notify.onLine = {};
}

// The filters: the selectors of the subscriptions, applied to answers for the whole account.

TEST_F(TradeSrcSnapshot, shouldNeverReplayAPositionInACodeThatIsNotSubscribed) {
  platform.trade().positions = {positionOf(3), positionOf(1), positionOf(2)};
  source->subscribeTrade(account);
  tellStatus(16);
  for (const std::string& line : notify.take())
    EXPECT_TRUE(line != "position 2" && line != "position 3") << line;
}

TEST_F(TradeSrcSnapshot, shouldKeepAnOwnOrderInACodeThatIsNotSubscribedOutUnlessItsIdIsAdmitted) {
  platform.trade().orders = {orderOf(13, 1, 2)};
  platform.trade().orders.front().source.sourceType = 512 + 4;
  platform.trade().fills.clear();
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1"));
  source->addSubscribeTradeByCreateId("own", 2);
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "sourcePosition 1", "status 16"));
  source->addSubscribeTradeByCreateId("own", 4);
  tellStatus(16);
  EXPECT_THAT(notify.take(),
              ElementsAre("position 1", "sourcePosition 1", "order 13", "status 16"));
}

TEST_F(TradeSrcSnapshot, shouldAdmitFillsByTheirOwnSourcesAndIdsAndNotByThoseOfOrders) {
  source->setRelatedCodeId({});
  source->setCreateSourceTradeInfo(
      {{"o", {EventTypeOrder, 4, {"x"}}}, {"f", {EventTypeFill, 8, {"y"}}}});
  source->setNotifyQuick(false);
  FakeTradeService& service = platform.trade();
  service.orders.clear();
  service.fills.clear();
  int64 id = 0;
  for (const auto& [from, type] : std::vector<std::pair<std::string, int64>>{
           {"x", 0}, {"y", 0}, {"z", 4}, {"z", 8}, {"z", 0}}) {
    service.orders.push_back(orderOf(++id, 1, 1, from));
    service.orders.back().source.sourceType = type;
    service.fills.push_back(fillOf(std::to_string(id), 1, from));
    service.fills.back().source.sourceType = type;
  }
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("order 1", "order 3", "fill 2", "fill 4"));
}

TEST_F(TradeSrcSnapshot, shouldReplayNothingOfACreateSourceThatDoesNotWantTheKind) {
  source->setCreateSourceTradeInfo({{"all", {kEverything, 0, {}}}, {"mute", {0, 0, {}}}});
  source->setNotifyQuick(false);
  FakeTradeService& service = platform.trade();
  service.positions.clear();
  service.sourcePositionRecords = {sourcePositionOf(1, "mute"), sourcePositionOf(1, "all")};
  service.orders = {orderOf(1, 1, 1, "mute"), orderOf(2, 1, 1, "all")};
  service.fills = {fillOf("m", 1, "mute"), fillOf("a", 1, "all")};
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("sourcePosition 1", "order 2", "fill a"));
}

TEST_F(TradeSrcSnapshot, shouldReplayNothingOfACreateSourceThatIsNoLongerConfigured) {
  source->subscribeTrade(account);
  notify.take();
  source->setCreateSourceTradeInfo({{"another", {kEverything, 0, {}}}});
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "status 16"));
}

TEST_F(TradeSrcSnapshot, shouldNotReplayASourcePositionOfAnotherSourceOrCode) {
  platform.trade().sourcePositionRecords = {sourcePositionOf(1, "other"), sourcePositionOf(2)};
  source->addSubscribeTradeByCreateSource("own", "other");
  platform.trade().orders.clear();
  source->subscribeTrade(account);
  EXPECT_THAT(notify.take(), ElementsAre("position 1"));
}

}  // namespace
}  // namespace orvane::support
