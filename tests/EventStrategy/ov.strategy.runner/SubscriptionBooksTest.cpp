// How the context remembers subscriptions, so that a second identical call reaches no source.

#include "EventStrategy/TradeSrc.h"
#include "shared/BaseInformation.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

TradingAccountID accountOf(int key, const std::string& text) {
  TradingAccountID account;
  account.accountKey = key;
  account.account = text;
  return account;
}

class SubscriptionBooks : public RunnerTest {
 protected:
  SubscriptionBooks() {
    auto tables = std::make_shared<BaseInformationMap>();
    tables->markets[1] = {"CFFEX"};
    gBaseInformationMap = tables;
    platform.calls.clear();
    logs.clear();
  }
  ~SubscriptionBooks() override { gBaseInformationMap.reset(); }

  std::vector<std::string> quoteCalls() {
    std::vector<std::string> entries = platform.calls.entries("quote.");
    platform.calls.clear();
    return entries;
  }

  ResultStatus subscribe(int64 code, const std::string& frequency, int64 begin = 10) {
    return user.subscribeKline(codeOf(code, "IF"), frequency, begin, 20, 30, 4);
  }

  IContext& user = TestAccess::context(*runner);
};

// Quotes.

TEST_F(SubscriptionBooks, shouldAnswerTheFirstResultForASecondQuoteSubscribeAlsoAnError) {
  platform.calls.answer("quote.subscribeQuote", {1, "refused"});
  const ResultStatus refused{1, "refused"};
  EXPECT_EQ(user.subscribeQuote(codeOf(7), 0), refused);
  platform.calls.answer("quote.subscribeQuote", {});
  EXPECT_EQ(user.subscribeQuote(codeOf(7, "other text"), 9), refused);
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.subscribeQuote 7 flags=0"));
  EXPECT_EQ(logs.countContaining(",subscribe quote,"), 1);
  EXPECT_TRUE(runner->isSubscribeQuote(codeOf(7)));
}

TEST_F(SubscriptionBooks, shouldLogAQuoteSubscribeAndUnsubscribeWithCodeAndFlagBits) {
  user.subscribeQuote(codeOf(7, "IF2101"), 5);
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe quote,IF2101.CFFEX,flags=0|2"));
  user.unsubscribeQuote(codeOf(7, "IF2101"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",unsubscribe quote,IF2101.CFFEX"));
}

TEST_F(SubscriptionBooks, shouldPrintNothingForFlags0AndForBits30And31) {
  user.subscribeQuote(codeOf(7, "A"), 0);
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe quote,A.CFFEX,flags="));
  user.subscribeQuote(codeOf(8, "B"), (1 << 30) | 2);
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe quote,B.CFFEX,flags=1"));
}

TEST_F(SubscriptionBooks, shouldUnsubscribeAQuoteWithFlags0AndReachTheSourceAgainAfterIt) {
  user.subscribeQuote(codeOf(7), 5);
  user.unsubscribeQuote(codeOf(7));
  user.unsubscribeQuote(codeOf(7));
  user.subscribeQuote(codeOf(7), 3);
  EXPECT_THAT(quoteCalls(),
              ElementsAre("quote.subscribeQuote 7 flags=5", "quote.unsubscribeQuote 7 flags=0",
                          "quote.subscribeQuote 7 flags=3"));
}

TEST_F(SubscriptionBooks, shouldReachNoSourceForAnUnsubscribeOfACodeNeverSubscribed) {
  user.unsubscribeQuote(codeOf(7));
  user.unsubscribeKline(codeOf(7), "1m");
  user.unsubscribeKline(5);
  user.unsubscribeDic("n", "k");
  user.unsubscribeDicSnapshot("n", "k");
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

// Bars known by code and frequency.

TEST_F(SubscriptionBooks, shouldDrawAnIdAndLogAllFieldsOfAKlineSubscribe) {
  EXPECT_EQ(subscribe(7, "1m"), ResultStatus());
  const std::string id = std::to_string(platform.routes.lastRequestId());
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.subscribeBars " + id +
                                        " code=7 term=(3,1) begin=10 end=20 count=30 flags=4"));
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe kline,IF.CFFEX,1m,beginTime=10,endTime=20,count=30,"
                           "flags=2,requestId=" +
                               id));
}

TEST_F(SubscriptionBooks, shouldAddFlag64ForAnUnsetBeginButLogTheFlagsAsGiven) {
  subscribe(7, "1m", kUnsetTime);
  const int id = platform.routes.lastRequestId();
  EXPECT_EQ(platform.quotes().query(id).flags, 4 | 64);
  EXPECT_EQ(platform.quotes().query(id).beginTime, kUnsetTime);
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe kline,IF.CFFEX,1m,beginTime=9223372036854775807,endTime=20,"
                           "count=30,flags=2,requestId=" +
                               std::to_string(id)));
  user.subscribeKline(77, codeOf(7), "1m", kUnsetTime, 20, 30, 4);
  EXPECT_EQ(platform.quotes().query(77).flags, 4 | 64);
}

TEST_F(SubscriptionBooks, shouldReturnTheStoredStatusAndIgnoreNewTimesForTheSameCodeAndFrequency) {
  platform.calls.answer("quote.subscribeBars", {7, "refused"});
  const ResultStatus refused{7, "refused"};
  EXPECT_EQ(subscribe(7, "1m"), refused);
  platform.calls.answer("quote.subscribeBars", {});
  EXPECT_EQ(user.subscribeKline(codeOf(7, "other"), "1m", 99, 199, 1, 0), refused);
  EXPECT_EQ(quoteCalls().size(), 1u);
  EXPECT_EQ(logs.countContaining(",subscribe kline,"), 1);
  EXPECT_EQ(subscribe(7, "2m"), ResultStatus());
  EXPECT_EQ(subscribe(8, "1m"), ResultStatus());
  EXPECT_EQ(quoteCalls().size(), 2u);
}

TEST_F(SubscriptionBooks, shouldStoreTheStatusOfABadFrequencyLikeAnyOther) {
  const ResultStatus expected{17, gbkFromUtf8("无效KLine周期")};
  EXPECT_EQ(subscribe(7, "7x"), expected);
  EXPECT_EQ(subscribe(7, "7x"), expected);
  EXPECT_EQ(logs.countContaining(",subscribe kline,"), 1);
  EXPECT_THAT(quoteCalls(), IsEmpty());
}

TEST_F(SubscriptionBooks, shouldDrawANewIdForTheSameSubscribeAfterItsUnsubscribe) {
  subscribe(7, "1m");
  const int first = platform.routes.lastRequestId();
  platform.calls.clear();
  user.unsubscribeKline(codeOf(7, "IF"), "1m");
  EXPECT_TRUE(
      runnerLogged("DEBUG", ",unsubscribe kline,IF.CFFEX,1m,requestId=" + std::to_string(first)));
  subscribe(7, "1m");
  const int second = platform.routes.lastRequestId();
  EXPECT_GT(second, first);
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.cancelRequest " + std::to_string(first),
                                        "quote.subscribeBars " + std::to_string(second) +
                                            " code=7 term=(3,1) begin=10 end=20 count=30 flags=4"));
}

TEST_F(SubscriptionBooks, shouldKeepOtherFrequenciesOfACodeWhenOneIsUnsubscribed) {
  subscribe(7, "1m");
  subscribe(7, "2m");
  const int second = platform.routes.lastRequestId();
  user.unsubscribeKline(codeOf(7), "1m");
  EXPECT_TRUE(runner->isSubscribeKline(second));
  EXPECT_EQ(subscribe(7, "2m"), ResultStatus());
  EXPECT_EQ(platform.routes.lastRequestId(), second);
}

// Bars known by the caller's id.

TEST_F(SubscriptionBooks, shouldGiveMinus1WithTheIdForAUsedCallersIdAndLetTheFirstRunOn) {
  EXPECT_EQ(user.subscribeKline(7, codeOf(1, "IF"), "1m", 10, 20, 30, 4), ResultStatus());
  EXPECT_EQ(user.subscribeKline(7, codeOf(2), "2m", 1, 2, 3, 0),
            (ResultStatus{-1, gbkFromUtf8("reqId=7重复订阅")}));
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.subscribeBars 7 code=1 term=(3,1) begin=10 end=20 "
                                        "count=30 flags=4"));
  EXPECT_TRUE(runner->isSubscribeKline(7));
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe kline by reqId,IF.CFFEX,1m,beginTime=10,endTime=20,"
                           "count=30,flags=2,requestId=7"));
}

TEST_F(SubscriptionBooks, shouldLetManyCallersIdsServeOneCodeAndFrequency) {
  subscribe(7, "1m");
  EXPECT_EQ(user.subscribeKline(101, codeOf(7), "1m", 10, 20, 30, 4), ResultStatus());
  EXPECT_EQ(user.subscribeKline(102, codeOf(7), "1m", 10, 20, 30, 4), ResultStatus());
  EXPECT_EQ(quoteCalls().size(), 3u);
}

TEST_F(SubscriptionBooks, shouldRememberACallersIdWhateverTheStatusWas) {
  platform.calls.answer("quote.subscribeBars", {7, "refused"});
  EXPECT_EQ(user.subscribeKline(7, codeOf(1), "1m", 1, 2, 3, 0).code, 7);
  EXPECT_EQ(user.subscribeKline(7, codeOf(1), "1m", 1, 2, 3, 0).code, -1);
}

TEST_F(SubscriptionBooks, shouldUndoEachFamilyByItsOwnUnsubscribeOnly) {
  subscribe(7, "1m");
  const int drawn = platform.routes.lastRequestId();
  user.subscribeKline(101, codeOf(7), "1m", 1, 2, 3, 0);
  platform.calls.clear();
  user.unsubscribeKline(drawn);  // A drawn id does nothing here.
  EXPECT_THAT(quoteCalls(), IsEmpty());
  user.unsubscribeKline(101);
  EXPECT_TRUE(runnerLogged("DEBUG", ",unsubscribe kline by reqId,requestId=101"));
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.cancelRequest 101"));
  EXPECT_TRUE(runner->isSubscribeKline(drawn));
  EXPECT_EQ(user.subscribeKline(101, codeOf(7), "1m", 1, 2, 3, 0), ResultStatus());
}

TEST_F(SubscriptionBooks, shouldNotLoseTheFirstBatchOfASubscriptionMadeOnThePoolTask) {
  // The service answers from its own thread before the subscribe call has returned.
  platform.calls.onCall("quote.subscribeBars", [this] {
    onAnotherThread([this] {
      const int id = platform.routes.lastRequestId();
      platform.quotes().requestSpi(id)->onKLine(id, {barOf(1)}, {}, 0);
    });
  });
  script->on("onStart", [](IContext* c) { c->subscribeKline(codeOf(7, "IF"), "1m", 1, 2, 0, 0); });
  runner->start({});
  pool.runAll();
  EXPECT_EQ(script->calls().back(), "onBarSeries IF#7 1m [1,] status=0/ 0");
}

// Trade.

TEST_F(SubscriptionBooks, shouldTellTheFullSetOfCodesOnceForEachNewCode) {
  startRun();
  const TradingAccountID account = accountOf(5, "0815");
  user.subscribeTrade(account, codeOf(2, "B"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe trade,0815"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe trade,B.CFFEX"));
  const std::string told = ",onRelatedCodeIdChange begin,";
  EXPECT_EQ(logs.countContaining(told), 1);
  user.subscribeTrade(account, codeOf(2, "B"));
  EXPECT_EQ(logs.countContaining(",subscribe trade,"), 2);
  EXPECT_EQ(logs.countContaining(told), 1);
  user.subscribeTrade(account, codeOf(1, "A"));
  EXPECT_EQ(logs.countContaining(",subscribe trade,0815"), 1);
  EXPECT_EQ(logs.countContaining(told), 2);
  const auto codes = TestAccess::relatedCodes(TestAccess::trades(*runner));
  EXPECT_EQ(codes, (std::set<ICodeID>{codeOf(1), codeOf(2)}));
}

TEST_F(SubscriptionBooks, shouldAddTheCreateIdEachTimeButSubscribeTheAccountOnce) {
  startRun();
  const TradingAccountID account = accountOf(5, "0815");
  user.subscribeTrade(account, EventSourceId{2});
  user.subscribeTrade(account, EventSourceId{4});
  EXPECT_EQ(logs.count("Runner", "DEBUG", "r1,subscribe trade,0815"), 1);
  const auto infos = TestAccess::createSourceInfos(TestAccess::trades(*runner));
  ASSERT_EQ(infos.count("source"), 1u);
  EXPECT_EQ(infos.at("source").subCreateId, 2 | 4);
  EXPECT_EQ(platform.calls.count("trade.subscribeStatus"), 1);
}

TEST_F(SubscriptionBooks, shouldSubscribeANewAccountBeforeItsSourceIsToldOfTheCodes) {
  startRun();
  user.subscribeTrade(accountOf(5, "0815"), codeOf(2, "B"));
  std::vector<std::string> order;
  for (const std::string& line : logs.messages())
    for (const char* part : {",subscribe trade,0815", ",subscribeByAccount end",
                             ",subscribe trade,B.CFFEX", ",onRelatedCodeIdChange begin,B.CFFEX"})
      if (line.ends_with(part)) order.push_back(part);
  EXPECT_THAT(order,
              ElementsAre(",subscribe trade,0815", ",subscribeByAccount end",
                          ",subscribe trade,B.CFFEX", ",onRelatedCodeIdChange begin,B.CFFEX"));
}

TEST_F(SubscriptionBooks, shouldAddTheCreateIdBeforeTheAccountSoThatItsFirstPictureHasItsOrders) {
  startRun();
  Order manual;
  manual.id = 71;
  manual.account = accountOf(5, "0815");
  manual.source.sourceType = 2;
  platform.trade().orders = {manual};
  user.subscribeTrade(manual.account, EventSourceId{2});
  pool.runAll();
  EXPECT_EQ(script->count("onOrder"), 1);
  EXPECT_EQ(platform.calls.count("trade.subscribeOrderByEventSourceId 2 5"), 1);
}

TEST_F(SubscriptionBooks, shouldForwardSetNotifyQuickToTheTradeSource) {
  user.setNotifyQuick(false);
  EXPECT_FALSE(TestAccess::notifyQuick(TestAccess::trades(*runner)));
  user.setNotifyQuick(true);
  EXPECT_TRUE(TestAccess::notifyQuick(TestAccess::trades(*runner)));
}

// Dictionary data.

TEST_F(SubscriptionBooks, shouldSendFlags1And16384AndTheGivenOnesForADictionaryWithBothTimesUnset) {
  EXPECT_EQ(user.subscribeDic("name", "key", kUnsetTime, kUnsetTime, 8), ResultStatus());
  const int id = platform.routes.lastRequestId();
  const DataReq request = platform.data().request(id);
  EXPECT_EQ(request.name, "name");
  EXPECT_EQ(request.targets, (std::list<std::string>{"key"}));
  EXPECT_EQ(request.beginTime, kUnsetTime);
  EXPECT_EQ(request.endTime, kUnsetTime);
  EXPECT_EQ(request.count, 2147483647);
  EXPECT_EQ(request.flags, 1 | 16384 | 8);
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe data,name,key,beginTime=9223372036854775807,"
                           "endTime=9223372036854775807,requestId=" +
                               std::to_string(id)));
}

TEST_F(SubscriptionBooks, shouldSendFlag2ForAGivenBeginAndNoFlag1ForAGivenEnd) {
  user.subscribeDic("name", "key", 10, 20, 0);
  EXPECT_EQ(platform.data().request(platform.routes.lastRequestId()).flags, 2 | 16384);
  user.subscribeDic("name", "open", 10, kUnsetTime, 0);
  EXPECT_EQ(platform.data().request(platform.routes.lastRequestId()).flags, 2 | 1 | 16384);
}

TEST_F(SubscriptionBooks, shouldAnswerTheFirstResultForASecondDictionarySubscribe) {
  platform.calls.answer("data.subscribeData", {30, "not yet"});
  const ResultStatus first{30, "not yet"};
  EXPECT_EQ(user.subscribeDic("name", "key", 1, 2, 0), first);
  platform.calls.answer("data.subscribeData", {});
  EXPECT_EQ(user.subscribeDic("name", "key", 3, 4, 5), first);
  EXPECT_EQ(platform.calls.count("data.subscribeData"), 1);
  EXPECT_EQ(user.subscribeDic("name", "other", 1, 2, 0), ResultStatus());
}

TEST_F(SubscriptionBooks, shouldUnsubscribeDictionaryDataByItsId) {
  user.subscribeDic("name", "key", 1, 2, 0);
  const std::string id = std::to_string(platform.routes.lastRequestId());
  user.unsubscribeDic("name", "key");
  user.unsubscribeDic("name", "key");
  EXPECT_TRUE(runnerLogged("DEBUG", ",unsubscribe data,name,key,requestId=" + id));
  EXPECT_THAT(platform.calls.entries("data.unsub"), ElementsAre("data.unsubscribeData " + id));
  user.subscribeDic("name", "key", 1, 2, 0);
  EXPECT_EQ(platform.calls.count("data.subscribeData"), 2);
}

TEST_F(SubscriptionBooks, shouldSubscribeASnapshotOnceAndUnsubscribeItWithFlags0) {
  user.subscribeDicSnapshot("name", "key", 5);
  user.subscribeDicSnapshot("name", "key", 6);
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe data snapshot,name,key,flags=0|2"));
  user.unsubscribeDicSnapshot("name", "key");
  user.unsubscribeDicSnapshot("name", "key");
  EXPECT_TRUE(runnerLogged("DEBUG", ",unsubscribe data snapshot,name,key"));
  EXPECT_THAT(platform.calls.entries("data."),
              ElementsAre("data.subscribeSnapshot name/key flags=5",
                          "data.unsubscribeSnapshot name/key flags=0"));
}

// Unsubscribe from within.

TEST_F(SubscriptionBooks, shouldDeliverNothingMoreToAStrategyThatUnsubscribesInsideItsCallBack) {
  startRun();
  user.subscribeQuote(codeOf(7), 0);
  subscribe(7, "1m");
  const int id = platform.routes.lastRequestId();
  script->on("onQuote", [](IContext* c) { c->unsubscribeQuote(codeOf(7)); });
  script->on("onBarSeries", [](IContext* c) { c->unsubscribeKline(codeOf(7), "1m"); });
  for (int i = 0; i < 3; ++i) {
    platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
    platform.quotes().requestSpi(id)->onKLine(id, {barOf(i)}, {}, 0);
  }
  pool.runAll();
  EXPECT_EQ(script->count("onQuote"), 1);
  EXPECT_EQ(script->count("onBarSeries"), 1);
}

}  // namespace
}  // namespace orvane::support
