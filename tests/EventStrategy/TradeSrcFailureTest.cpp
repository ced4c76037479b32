// What the trade source's tables hold after a service threw or refused.

#include <stdexcept>

#include "tests/EventStrategy/CollectingStrategy.h"
#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

using Codes = std::map<int64, TradeSrcSubFrom>;

class TradeSrcFailure : public TradeSrcTest {
 protected:
  ~TradeSrcFailure() override {
    for (const std::string& operation : throwing_) platform.calls.onCall(operation, {});
  }

  void failAt(const std::string& operation) {
    throwing_.push_back(operation);
    platform.calls.onCall(operation, [] { throw std::runtime_error("service fell over"); });
  }
  void heal(const std::string& operation) { platform.calls.onCall(operation, {}); }

 private:
  std::vector<std::string> throwing_;
};

TEST_F(TradeSrcFailure, shouldHandAnExceptionOnAndLeaveTheMutexFreeWhicheverSubscribeThrows) {
  source->addSubscribeTradeByCreateSource("own", "x");
  source->addSubscribeTradeByCreateId("own", 2);
  for (const char* operation :
       {"subscribeStatus", "subscribeCapital", "subscribePosition", "subscribeSourcePosition",
        "subscribeOrderBySourceName", "subscribeFillBySourceName", "subscribeOrderByEventSourceId",
        "subscribeFillByEventSourceId", "getPositions", "sourcePositions", "ordersOfAccount",
        "fillsOfAccount"}) {
    const std::string name = std::string("trade.") + operation;
    failAt(name);
    EXPECT_THROW(source->subscribeTrade(account), std::runtime_error) << operation;
    heal(name);
    EXPECT_TRUE(TestAccess::mutexIsFree(*source)) << operation;
    EXPECT_FALSE(marks().snapshotSent) << operation;
    source->unsubscribeTrade(account);
  }
  source->subscribeTrade(account);
  EXPECT_TRUE(marks().snapshotSent);
}

TEST_F(TradeSrcFailure, shouldKeepAnAccountWhoseSubscribeThrewSoThatAConnectionReplaysIt) {
  failAt("trade.subscribeStatus");
  EXPECT_THROW(source->subscribeTrade(account), std::runtime_error);
  heal("trade.subscribeStatus");
  platform.calls.clear();
  source->subscribeTrade(account);  // It is there already.
  EXPECT_THAT(tradeCalls(), IsEmpty());
  tellStatus(16);
  EXPECT_TRUE(marks().snapshotSent);
}

TEST_F(TradeSrcFailure, shouldKeepTheMarkOfACodeWhoseSubscribeThrewAndNotTryItAgain) {
  failAt("trade.subscribePosition");
  EXPECT_THROW(source->subscribeTrade(account), std::runtime_error);
  heal("trade.subscribePosition");
  EXPECT_EQ(marks().positionCodes, (Codes{{1, SubFromRelated}}));
  EXPECT_TRUE(marks().sourceCodes.empty());
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(1)});
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcFailure, shouldSetNoMarkOfASourceOrIdWhoseSubscribeThrewAndTryItAgain) {
  source->subscribeTrade(account);
  failAt("trade.subscribeFillBySourceName");
  failAt("trade.subscribeFillByEventSourceId");
  EXPECT_THROW(source->addSubscribeTradeByCreateSource("own", "x"), std::runtime_error);
  EXPECT_THROW(source->addSubscribeTradeByCreateId("own", 2), std::runtime_error);
  heal("trade.subscribeFillBySourceName");
  heal("trade.subscribeFillByEventSourceId");
  EXPECT_EQ(marks().orderSources, std::set<std::string>{"x"});
  EXPECT_TRUE(marks().fillSources.empty());
  EXPECT_EQ(marks().orderEventSourceIds, 2);
  EXPECT_EQ(marks().fillEventSourceIds, 0);
  platform.calls.clear();
  source->addSubscribeTradeByCreateSource("own", "x");
  source->addSubscribeTradeByCreateId("own", 2);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.subscribeFillBySourceName x 5",
                                        "trade.subscribeFillByEventSourceId 2 5"));
}

TEST_F(TradeSrcFailure, shouldSetNoMarkOfASourceOrIdWhoseFirstSubscribeThrew) {
  source->subscribeTrade(account);
  failAt("trade.subscribeOrderBySourceName");
  failAt("trade.subscribeOrderByEventSourceId");
  EXPECT_THROW(source->addSubscribeTradeByCreateSource("own", "x"), std::runtime_error);
  EXPECT_THROW(source->addSubscribeTradeByCreateId("own", 2), std::runtime_error);
  heal("trade.subscribeOrderBySourceName");
  heal("trade.subscribeOrderByEventSourceId");
  EXPECT_TRUE(marks().orderSources.empty());
  EXPECT_TRUE(marks().fillSources.empty());
  EXPECT_EQ(marks().orderEventSourceIds, 0);
  EXPECT_EQ(marks().fillEventSourceIds, 0);
}

TEST_F(TradeSrcFailure, shouldTakeOverQuickBeforeTheFirstSubscribeOfAnAccount) {
  source->setNotifyQuick(false);
  failAt("trade.subscribeStatus");
  EXPECT_THROW(source->subscribeTrade(account), std::runtime_error);
  heal("trade.subscribeStatus");
  EXPECT_FALSE(marks().quick);
}

TEST_F(TradeSrcFailure, shouldRememberNothingOfAReplayThatTheListenerThrowsIn) {
  source->subscribeTrade(account);
  platform.trade().orders = {orderOf(7, 3)};
  platform.trade().fills = {fillOf("f")};
  for (const char* kind : {"order", "fill"}) {
    notify.onLine = [kind](const std::string& line) {
      if (line.starts_with(kind)) throw std::runtime_error("no memory");
    };
    EXPECT_THROW(tellStatus(16), std::runtime_error);
    EXPECT_EQ(TestAccess::finishedOrderIds(*source).size(), kind == std::string("fill") ? 1u : 0u);
    EXPECT_TRUE(TestAccess::deliveredFillKeys(*source).empty());
  }
  notify.onLine = {};
}

TEST_F(TradeSrcFailure, shouldKeepAnAccountWhoseUnsubscribeThrewAndTryItAgain) {
  source->subscribeTrade(account);
  failAt("trade.unsubscribeAccount");
  EXPECT_THROW(source->unsubscribeTrade(account), std::runtime_error);
  heal("trade.unsubscribeAccount");
  EXPECT_TRUE(marks().snapshotSent);
  source->unsubscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.unsubscribeAccount"), 2);
  EXPECT_TRUE(TestAccess::subInfos(*source).empty());
}

TEST_F(TradeSrcFailure, shouldReflectTheStepsMadeSoFarWhenAChangeOfCodesThrows) {
  source->subscribeTrade(account);
  failAt("trade.subscribeOrderBySourceName");
  EXPECT_THROW(source->onRelatedCodeIdChange({codeOf(2), codeOf(3)}), std::runtime_error);
  heal("trade.subscribeOrderBySourceName");
  EXPECT_EQ(TestAccess::relatedCodes(*source), (std::set<ICodeID>{codeOf(2), codeOf(3)}));
  EXPECT_EQ(marks().positionCodes, (Codes{{2, SubFromRelated}}));
  EXPECT_EQ(marks().sourceCodes.at("own"), (Codes{{2, SubFromRelated}}));
  EXPECT_TRUE(TestAccess::mutexIsFree(*source));
}

TEST_F(TradeSrcFailure, shouldSendNoOrderWhenItsSubscribingThrowsAndKeepItsMarksWhenItIsRefused) {
  source->subscribeTrade(account);
  OrderRequest request;
  request.account = account;
  request.code = codeOf(9);
  request.source.createSource = "own";
  std::list<Order> orders = {orderOf(1)};
  failAt("trade.subscribePosition");
  EXPECT_THROW(source->sendOrder(request, orders), std::runtime_error);
  heal("trade.subscribePosition");
  EXPECT_EQ(platform.calls.count("trade.sendOrder"), 0);
  EXPECT_EQ(orders.size(), 1u);
  platform.calls.answer("trade.sendOrder", {4, "refused"});
  EXPECT_EQ(source->sendOrder(request, orders).code, 4);
  EXPECT_EQ(marks().positionCodes.at(9), SubFromOrder);
  EXPECT_EQ(marks().sourceCodes.at("own").at(9), SubFromOrder);
}

TEST_F(TradeSrcFailure, shouldLeaveTheCallersOrdersAloneWhenTheServiceThrowsOnAnOrder) {
  std::list<Order> orders = {orderOf(1)};
  std::vector<int64> ids = {1};
  failAt("trade.sendOrder");
  EXPECT_THROW(source->sendOrder({}, orders), std::runtime_error);
  EXPECT_THROW(source->sendOrderIds({}, ids), std::runtime_error);
  EXPECT_EQ(orders.size(), 1u);
  EXPECT_THAT(ids, ElementsAre(1));
}

TEST_F(TradeSrcFailure, shouldForwardNoStatusWhoseReplayThrewAndReplayAtTheNext) {
  platform.calls.answer("trade.getPositions", {-6, "down"});
  source->subscribeTrade(account);
  platform.calls.answer("trade.getPositions", {});
  failAt("trade.ordersOfAccount");
  EXPECT_THROW(tellStatus(16), std::runtime_error);
  heal("trade.ordersOfAccount");
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_FALSE(marks().snapshotSent);
  tellStatus(16);
  EXPECT_TRUE(marks().snapshotSent);
  EXPECT_THAT(notify.take(), ElementsAre("status 16"));
}

TEST_F(TradeSrcFailure, shouldStillWithdrawFromTheConditionsWhenTheTradeServiceThrowsOnRelease) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  failAt("trade.unsubscribeAll");
  EXPECT_THROW(source->release(), std::runtime_error);
  heal("trade.unsubscribeAll");
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("trade.unsubscribeAll", "cond.unsubscribeDetails"));
  EXPECT_EQ(eventLines().size(), 2u);
  EXPECT_TRUE(TestAccess::subInfos(*source).empty());
  EXPECT_TRUE(TestAccess::mutexIsFree(*source));
}

TEST_F(TradeSrcFailure, shouldNotEndTheProcessWhenAServiceThrowsWhileItsOwnerGoes) {
  for (const char* operation : {"trade.unsubscribeAll", "cond.unsubscribeDetails"}) {
    auto strategy = std::make_unique<CollectingStrategy>();
    strategy->startEvent();
    strategy->subscribeTrade(account);
    strategy->stopEvent();
    platform.calls.clear();
    failAt(operation);
    strategy.reset();
    heal(operation);
    EXPECT_EQ(platform.calls.count("cond.unsubscribeDetails"), 1) << operation;
    EXPECT_EQ(platform.calls.count("quote.unsubscribeSpi"), 1) << operation;
  }
}

TEST_F(TradeSrcFailure, shouldAttachTheListenerThoughTheConditionServiceCannotBeFetched) {
  platform.onConditionService = [] { throw std::runtime_error("no conditions"); };
  EXPECT_THROW(source->setNotify(nullptr), std::runtime_error);
  platform.onConditionService = {};
  EXPECT_EQ(TestAccess::notify(*source), nullptr);
  EXPECT_TRUE(TestAccess::mutexIsFree(*source));
}

}  // namespace
}  // namespace orvane::support
