// The context of server runs: what it does otherwise than the ordinary one.

#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class ServerUserContextTest : public RunnerTest {
 protected:
  ServerUserContextTest() : RunnerTest(1) { platform.calls.clear(); }

  IContext& user = context();
};

// Market data: 0x100000 is 1048576, bit 20.

TEST_F(ServerUserContextTest, shouldAddItsFlagToAQuoteSubscribeAndShowItInTheLog) {
  EXPECT_EQ(user.subscribeQuote(codeOf(7, "IF"), 5), ResultStatus());
  EXPECT_THAT(platform.calls.entries("quote."),
              ElementsAre("quote.subscribeQuote 7 flags=1048581"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe quote,IF.,flags=0|2|20"));
}

TEST_F(ServerUserContextTest, shouldAnswerASecondQuoteSubscribeFromTheBooks) {
  platform.calls.answer("quote.subscribeQuote", {4, "no quote"});
  EXPECT_EQ(user.subscribeQuote(codeOf(7), 0), (ResultStatus{4, "no quote"}));
  EXPECT_EQ(user.subscribeQuote(codeOf(7), 1), (ResultStatus{4, "no quote"}));
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"), 1);
}

TEST_F(ServerUserContextTest, shouldUnsubscribeAQuoteWithoutItsFlag) {
  user.subscribeQuote(codeOf(7), 0);
  user.unsubscribeQuote(codeOf(7));
  EXPECT_THAT(platform.calls.entries("quote.unsubscribeQuote"),
              ElementsAre("quote.unsubscribeQuote 7 flags=0"));
}

TEST_F(ServerUserContextTest, shouldAddItsFlagToBothKlineSubscribesAndShowItInTheLog) {
  EXPECT_EQ(user.subscribeKline(codeOf(7, "IF"), "1m", 1, 2, 3, 4), ResultStatus());
  const int id = platform.routes.lastRequestId();
  EXPECT_EQ(user.subscribeKline(9001, codeOf(7, "IF"), "1m", 1, 2, 3, 0), ResultStatus());
  EXPECT_EQ(platform.quotes().query(id).flags & ~4, 0x100000);
  EXPECT_EQ(platform.quotes().query(id).flags & 4, 4);
  EXPECT_EQ(platform.quotes().query(9001).flags, 0x100000);
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe kline,IF.,1m,beginTime=1,endTime=2,count=3,"
                           "flags=2|20,requestId=" +
                               std::to_string(id)));
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",subscribe kline by reqId,IF.,1m,beginTime=1,endTime=2,count=3,"
                           "flags=20,requestId=9001"));
}

TEST_F(ServerUserContextTest, shouldAddItsFlagBesideThatOfAnUnsetBegin) {
  user.subscribeKline(9001, codeOf(7), "1m", kUnsetTime, 2, 3, 0);
  EXPECT_EQ(platform.quotes().query(9001).flags, 0x100000 | 64);
}

TEST_F(ServerUserContextTest, shouldRefuseAUsedCallersIdAsTheOrdinaryContextDoes) {
  user.subscribeKline(9001, codeOf(7), "1m", 1, 2, 3, 0);
  EXPECT_EQ(user.subscribeKline(9001, codeOf(8), "1m", 1, 2, 3, 0),
            (ResultStatus{-1, gbkFromUtf8("reqId=9001重复订阅")}));
}

TEST_F(ServerUserContextTest, shouldDeliverWhatItSubscribed) {
  startRun();
  user.subscribeQuote(codeOf(7), 0);
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7, 5));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onQuote C#7 5"));
  EXPECT_EQ(script->context(), &user);
}

// Orders.

TEST_F(ServerUserContextTest, shouldAnswer23ForSendOrderIdsAndSendNothing) {
  platform.trade().sentOrders.resize(2);
  std::list<int64> ids = {1};
  EXPECT_EQ(user.sendOrderIds({}, ids), (ResultStatus{23, gbkFromUtf8("不支持")}));
  EXPECT_EQ(ids, (std::list<int64>{1}));
  EXPECT_EQ(platform.calls.count("trade."), 0);
}

TEST_F(ServerUserContextTest, shouldStampAnOrderWith65536AndTheOrderSource) {
  OrderRequest request;
  std::list<Order> orders;
  for (const int64 type : {int64{-1}, int64{0}, int64{1}}) {
    request.source.sourceType = type;
    EXPECT_EQ(user.sendOrder(request, orders), ResultStatus());
    EXPECT_EQ(platform.trade().lastRequest.source.sourceType, 65536) << type;
    EXPECT_EQ(platform.trade().lastRequest.source.createSource, "source");
  }
  EXPECT_EQ(request.source.sourceType, 1);  // The caller's own record stays as it was.
  EXPECT_EQ(request.source.createSource, "");
}

TEST_F(ServerUserContextTest, shouldKeepAnOrdersOwnSources) {
  OrderRequest request;
  request.source.sourceType = 2;
  request.source.createSource = "own";
  std::list<Order> orders;
  user.sendOrder(request, orders);
  EXPECT_EQ(platform.trade().lastRequest.source.sourceType, 2);
  EXPECT_EQ(platform.trade().lastRequest.source.createSource, "own");
}

TEST_F(ServerUserContextTest, shouldReadTheOrderSourceAtEachOrderWithNoLockLeftHeld) {
  std::list<Order> orders;
  platform.calls.onCall("trade.sendOrder",
                        [this] { EXPECT_TRUE(TestAccess::sharedMutexIsFree(*runner)); });
  user.sendOrder({}, orders);
  runner->shared().orderSource = "another";
  user.sendOrder({}, orders);
  EXPECT_EQ(platform.trade().lastRequest.source.createSource, "another");
}

TEST_F(ServerUserContextTest, shouldReturnTheStatusOfSendOrder) {
  platform.calls.answer("trade.sendOrder", {38, "no"});
  std::list<Order> orders;
  EXPECT_EQ(user.sendOrder({}, orders), (ResultStatus{38, "no"}));
}

}  // namespace
}  // namespace orvane::support
