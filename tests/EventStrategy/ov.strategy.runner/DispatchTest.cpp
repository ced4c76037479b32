// The table from event records to the strategy's calls, and the gate that keeps late data out.

#include <utility>

#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class DispatchTest : public RunnerTest {
 protected:
  void SetUp() override { startRun(); }

  QuoteNotify& quotes() { return TestAccess::quoteNotify(*runner); }
  DataNotify& data() { return TestAccess::dataNotify(*runner); }
  EventTradeNotify& trades() { return TestAccess::tradeNotify(*runner); }

  /// Subscribes bars whose id the context draws and returns the id.
  int plainBars(int64 codeId, const std::string& frequency) {
    context().subscribeKline(codeOf(codeId, "IF"), frequency, 1, 2, 0, 0);
    return platform.routes.lastRequestId();
  }

  int dictionary() {
    context().subscribeDic("name", "key", 1, 2, 0);
    return platform.routes.lastRequestId();
  }
};

// Bars and ticks.

TEST_F(DispatchTest, shouldDeliverBarsOfADrawnIdWithTheSubscriptionsCodeAndFrequency) {
  const int id = plainBars(7, "1m");
  quotes().onKLine(id, codeOf(999, "service's"), {barOf(1), barOf(2)}, {4, "s"}, 16);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onBarSeries IF#7 1m [1,2,] status=4/s 16"));
}

TEST_F(DispatchTest, shouldDeliverEachBatchWithItsOwnCodeAndFrequencyWhenSubscriptionsTakeTurns) {
  // Codes of one id and different texts are one code; what is delivered is the subscription's.
  const int first = plainBars(7, "1m");
  const int second = plainBars(7, "15m");
  context().subscribeKline(101, codeOf(7, "IF2"), "1m", 1, 2, 0, 0);
  context().subscribeKline(102, ICodeID{7, 3, 1, "IF2"}, "1m", 1, 2, 0, 0);
  for (const int id : {first, second, first, 101, 102, 101, first, second}) {
    quotes().onKLine(id, codeOf(7), {barOf(id)}, {}, 0);
    pool.runAll();
  }
  const auto bar = [](int id) { return " [" + std::to_string(id) + ",] status=0/ 0"; };
  EXPECT_THAT(
      script->calls(),
      ElementsAre("onBarSeries IF#7 1m" + bar(first), "onBarSeries IF#7 15m" + bar(second),
                  "onBarSeries IF#7 1m" + bar(first), "onBarSeriesById 101 IF2#7 1m" + bar(101),
                  "onBarSeriesById 102 IF2#7 1m" + bar(102),
                  "onBarSeriesById 101 IF2#7 1m" + bar(101), "onBarSeries IF#7 1m" + bar(first),
                  "onBarSeries IF#7 15m" + bar(second)));
}

TEST_F(DispatchTest, shouldDeliverTicksOfADrawnIdInThePlainForm) {
  const int id = plainBars(7, "tick");
  quotes().onTick(id, codeOf(999), {quoteOf(7, 5)}, {}, 3);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onTickSeries IF#7 [5,] status=0/ 3"));
}

TEST_F(DispatchTest, shouldDeliverBarsAndTicksOfACallersIdInTheByIdForm) {
  context().subscribeKline(77, codeOf(8, "IC"), "2m", 1, 2, 0, 0);
  quotes().onKLine(77, codeOf(999), {barOf(1)}, {4, "s"}, 16);
  quotes().onTick(77, codeOf(999), {quoteOf(7, 5)}, {}, 3);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onBarSeriesById 77 IC#8 2m [1,] status=4/s 16",
                                           "onTickSeriesById 77 IC#8 [5,] status=0/ 3"));
}

TEST_F(DispatchTest, shouldDeliverProgressInTheFormOfItsId) {
  const int id = plainBars(7, "1m");
  context().subscribeKline(77, codeOf(8, "IC"), "2m", 1, 2, 0, 0);
  quotes().onKLineProgress(id, codeOf(999), {1, 2, 3, 4, {}});
  quotes().onKLineProgress(77, codeOf(999), {5, 6, 7, 8, {9, "p"}});
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onBarProgress IF#7 1m 1/2/3/4 status=0/",
                                           "onBarProgressById 77 IC#8 2m 5/6/7/8 status=9/p"));
}

TEST_F(DispatchTest, shouldDeliverTheByIdFormWhenAnIdStandsInBothTables) {
  const int id = plainBars(7, "1m");
  context().subscribeKline(id, codeOf(8, "IC"), "2m", 1, 2, 0, 0);
  quotes().onKLine(id, codeOf(7), {barOf(1)}, {}, 0);
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("onBarSeriesById " + std::to_string(id) + " IC#8 2m [1,] status=0/ 0"));
}

TEST_F(DispatchTest, shouldDropABarOfACancelledSubscriptionSilently) {
  const int id = plainBars(7, "1m");
  quotes().onKLine(id, codeOf(7), {barOf(1)}, {}, 0);
  quotes().onKLineProgress(id, codeOf(7), {});
  context().unsubscribeKline(codeOf(7), "1m");
  context().subscribeKline(77, codeOf(7), "1m", 1, 2, 0, 0);
  quotes().onKLine(77, codeOf(7), {barOf(1)}, {}, 0);
  context().unsubscribeKline(77);
  logs.clear();
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(DispatchTest, shouldDropTheNextBarOfASubscriptionThatWasCancelledAfterOne) {
  const int drawn = plainBars(7, "1m");
  context().subscribeKline(77, codeOf(8), "2m", 1, 2, 0, 0);
  const auto bars = [&](int id) {
    quotes().onKLine(id, codeOf(7), {barOf(1)}, {}, 0);
    pool.runAll();
    return script->calls().size();
  };
  EXPECT_EQ(bars(drawn), 1u);
  context().unsubscribeKline(codeOf(7), "1m");
  EXPECT_EQ(bars(drawn), 1u);
  EXPECT_EQ(bars(77), 2u);
  context().unsubscribeKline(77);
  EXPECT_EQ(bars(77), 2u);
  EXPECT_EQ(bars(77), 2u);
}

TEST_F(DispatchTest, shouldDeliverByWhatAnIdStandsForNow) {
  const int id = plainBars(7, "1m");
  const auto bars = [&] {
    quotes().onKLine(id, codeOf(7), {barOf(1)}, {}, 0);
    pool.runAll();
  };
  bars();
  context().subscribeKline(id, codeOf(8, "IC"), "2m", 1, 2, 0, 0);
  bars();
  context().unsubscribeKline(id);
  bars();
  context().subscribeKline(id, codeOf(9, "IH"), "5m", 1, 2, 0, 0);
  bars();
  const std::string byId = "onBarSeriesById " + std::to_string(id);
  EXPECT_THAT(
      script->calls(),
      ElementsAre("onBarSeries IF#7 1m [1,] status=0/ 0", byId + " IC#8 2m [1,] status=0/ 0",
                  "onBarSeries IF#7 1m [1,] status=0/ 0", byId + " IH#9 5m [1,] status=0/ 0"));
}

TEST_F(DispatchTest, shouldDeliverByTheSubscriptionThatACallBackPutInItsOwnsPlace) {
  context().subscribeKline(77, codeOf(8, "IC"), "2m", 1, 2, 0, 0);
  bool isFirst = true;
  script->on("onBarSeriesById", [&](IContext* user) {
    if (!std::exchange(isFirst, false)) return;
    user->unsubscribeKline(77);
    user->subscribeKline(77, codeOf(9, "IH"), "5m", 1, 2, 0, 0);
  });
  for (int i = 0; i < 2; ++i) quotes().onKLine(77, codeOf(7), {barOf(1)}, {}, 0);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onBarSeriesById 77 IC#8 2m [1,] status=0/ 0",
                                           "onBarSeriesById 77 IH#9 5m [1,] status=0/ 0"));
}

TEST_F(DispatchTest, shouldDropBarsOnceTheContextHasLeft) {
  const int drawn = plainBars(7, "1m");
  quotes().onKLine(drawn, codeOf(7), {barOf(1)}, {}, 0);
  pool.runAll();
  context().exit();
  quotes().onKLine(drawn, codeOf(7), {barOf(1)}, {}, 0);
  pool.runAll();
  EXPECT_EQ(script->calls().size(), 1u);
}

// Quotes.

TEST_F(DispatchTest, shouldDeliverAQuoteOfASubscribedCode) {
  context().subscribeQuote(codeOf(7), 0);
  deliver(tickEvent(7, 5));
  EXPECT_THAT(script->calls(), ElementsAre("onQuote C#7 5"));
}

TEST_F(DispatchTest, shouldDropAQuoteOfACodeWithAReferenceCountOf0Silently) {
  context().subscribeQuote(codeOf(7), 0);
  runner->pushEvent(tickEvent(7));
  runner->pushEvent(tickEvent(8));
  context().unsubscribeQuote(codeOf(7));
  logs.clear();
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(DispatchTest, shouldAskTheQuoteSourceAndNotTheContextsBooksForAQuote) {
  runner->subscribeQuote(codeOf(7), 0);  // Past the context: the source alone counts it.
  deliver(tickEvent(7));
  EXPECT_EQ(script->count("onQuote"), 1);
}

// Timers.

TEST_F(DispatchTest, shouldDeliverATimerThatStillStands) {
  const int id = context().createTimer(1000, 0, 1);
  platform.timers.fire(id, 55);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onTimer " + std::to_string(id) + " 55"));
}

TEST_F(DispatchTest, shouldDropTheFiringOfAStoppedTimerAlthoughItWasQueuedBeforeTheStop) {
  const int id = context().createTimer(1000, 0, 1);
  platform.timers.fire(id, 55);
  EXPECT_EQ(TestAccess::pendingTypes(*runner), (std::vector<int>{512}));
  context().stopTimer(id);
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

// Trade.

TEST_F(DispatchTest, shouldCallOnAccountStatusForEachAccountOfTheReport) {
  AccountStatusInfo info;
  info.statusCode = 16;
  info.result = {3, "r"};
  info.accounts.resize(2);
  info.accounts[0].accountKey = 1;
  info.accounts[1].accountKey = 2;
  trades().onRspStatus({}, info);
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("onAccountStatus 1 16 status=3/r", "onAccountStatus 2 16 status=3/r"));
}

TEST_F(DispatchTest, shouldMakeNoCallForAnAccountStatusWithoutAccounts) {
  AccountStatusInfo info;
  info.statusCode = 16;
  trades().onRspStatus({}, info);
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(DispatchTest, shouldDeliverTradeRecordsWithoutACheck) {
  TradingAccount capital;
  capital.account.accountKey = 1;
  capital.value = 2;
  trades().onRtnCapital(capital);
  Position position;
  position.account.accountKey = 3;
  position.code = codeOf(4);
  trades().onRtnPosition(position);
  SourcePosition source;
  source.account.accountKey = 5;
  source.code = codeOf(6);
  source.createSource = "cs";
  source.sourceText = "st";
  trades().onRtnStrategyPosition(source);
  Order order;
  order.id = 7;
  trades().onRtnOrder(order);
  OrderFill fill;
  fill.id = 8;
  fill.fillText = "f";
  trades().onRtnTrade(fill);
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("onCapital 1 2", "onPosition 3 C#4", "onStrategyPosition 5 C#6 1 cs st",
                          "onOrder 7 #0", "onFill 8 f"));
}

// Dictionary data.

TEST_F(DispatchTest, shouldDeliverDictionaryDataWithTheNameAndKeyOfTheSubscription) {
  const int id = dictionary();
  data().onData(id, {{1, 2, "x"}, {3, 4, "y"}}, DataValueType::None, {5, "s"}, 6, 7);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDic name key [1:2:x,3:4:y,] status=5/s 6"));
}

TEST_F(DispatchTest, shouldPassTheFirstDeletedValueInBothPositions) {
  const int id = dictionary();
  data().onDeleteData(id, 11, 22, 33);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDicDeleted name key 11 11"));
}

TEST_F(DispatchTest, shouldDropDictionaryDataOfAnUnknownOrCancelledRequest) {
  const int id = dictionary();
  data().onData(999, {}, DataValueType::None, {}, 0, 0);
  data().onDeleteData(999, 1, 2, 3);
  data().onData(id, {}, DataValueType::None, {}, 0, 0);
  data().onDeleteData(id, 1, 2, 3);
  context().unsubscribeDic("name", "key");
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(DispatchTest, shouldDeliverASnapshotOnlyWhileItsSubscriptionCountIsAtLeast1) {
  context().subscribeDicSnapshot("name", "key", 0);
  data().onDataSnapshot("name", "key", {1, 2, "r"});
  data().onDataSnapshot("name", "other", {1, 2, "r"});
  data().onDataSnapshot("key", "name", {1, 2, "r"});
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDicSnapshot name key 1:2:r"));
  script->clear();
  data().onDataSnapshot("name", "key", {1, 2, "r"});
  context().unsubscribeDicSnapshot("name", "key");
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

// Types without a delivery.

TEST_F(DispatchTest, shouldDropTheFourKindsThatAreQueuedButNeverDelivered) {
  const int id = plainBars(7, "1m");
  const int dic = dictionary();
  quotes().onRollover(id, codeOf(7), {});
  data().onProgress(dic, 1, 2);
  TestAccess::eventNotify(*runner).onGeneralEvent("t", {}, "d");
  std::list<IndexTradeElement> elements;
  TestAccess::indexNotify(*runner).onElementChange(codeOf(7), elements);
  EXPECT_EQ(TestAccess::pendingTypes(*runner), (std::vector<int>{524288, 4194304, 32768, 8388608}));
  logs.clear();
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(DispatchTest, shouldDropTheTypesThatNoRecordIsBuiltWith) {
  for (const int type : {0x1, 0x400, 0x800, 0x1000, 0x2000, 0x10000, 0x40000, 0x200000, 0x1000000})
    runner->pushEvent(new IEvent(type));
  logs.clear();
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(DispatchTest, shouldPassTheRunsContextWithEachCall) {
  deliver(orderEvent(1));
  EXPECT_EQ(script->context(), &context());
}

TEST_F(DispatchTest, shouldResolveAKlineRequestInTheCallersTableFirst) {
  UserContext& user = TestAccess::context(*runner);
  const int id = plainBars(7, "1m");
  ICodeID code;
  std::string frequency;
  bool byCaller = true;
  EXPECT_TRUE(user.resolveKlineRequest(id, code, frequency, byCaller));
  EXPECT_EQ(code.id, 7);
  EXPECT_EQ(frequency, "1m");
  EXPECT_FALSE(byCaller);
  user.subscribeKline(id, codeOf(8), "2m", 1, 2, 0, 0);
  EXPECT_TRUE(user.resolveKlineRequest(id, code, frequency, byCaller));
  EXPECT_EQ(code.id, 8);
  EXPECT_EQ(frequency, "2m");
  EXPECT_TRUE(byCaller);
  EXPECT_FALSE(user.resolveKlineRequest(id + 1000, code, frequency, byCaller));
}

TEST_F(DispatchTest, shouldResolveAKlineRequestToAllOfItsCodeWhateverStoodThereBefore) {
  UserContext& user = TestAccess::context(*runner);
  user.subscribeKline(101, ICodeID{7, 2, 1, "A"}, "1m", 1, 2, 0, 0);
  const ICodeID others[] = {{8, 2, 1, "A"}, {7, 3, 1, "A"}, {7, 2, 4, "A"}, {7, 2, 1, "B"}};
  for (const ICodeID& other : others) {
    ICodeID code = other;
    std::string frequency = "2m";
    bool byCaller = false;
    EXPECT_TRUE(user.resolveKlineRequest(101, code, frequency, byCaller));
    EXPECT_EQ(std::tuple(code.id, code.kind, code.market, code.code),
              std::tuple(7, 2, 1, std::string("A")));
    EXPECT_EQ(frequency, "1m");
  }
}

}  // namespace
}  // namespace orvane::support
