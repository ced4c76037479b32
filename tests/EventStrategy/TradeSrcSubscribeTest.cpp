// Subscribing by account, code, create source and create id, call by call.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

constexpr int64 kOrderAndFill = EventTypeOrder | EventTypeFill;

class TradeSrcSubscribe : public TradeSrcTest {
 protected:
  void configureAs(const std::map<std::string, CreateSourceTradeInfo>& infos) {
    source->setCreateSourceTradeInfo(infos);
    logs.clear();
  }

  void order(int64 codeId, const std::string& createSource = "own") {
    OrderRequest request;
    request.account = account;
    request.code = codeOf(codeId, "Q");
    request.source.createSource = createSource;
    std::list<Order> sent;
    source->sendOrder(request, sent);
  }

  std::vector<std::string> takeCalls() {
    std::vector<std::string> calls = tradeCalls();
    platform.calls.clear();
    return calls;
  }
};

TEST_F(TradeSrcSubscribe, shouldSubscribeStatusCapitalCodesSourcesAndIdsInThisOrder) {
  source->setRelatedCodeId({codeOf(2), codeOf(1)});
  configureAs({{"own", {kEverything, 5, {"x", "w"}}}, {"alt", {EventTypeFill, 1, {"w"}}}});
  source->subscribeTrade(account);
  std::vector<std::string> calls = tradeCalls();
  ASSERT_GT(calls.size(), 4u);
  calls.resize(calls.size() - 4);  // The snapshot's queries.
  EXPECT_THAT(
      calls,
      ElementsAre(
          "trade.subscribeStatus 5", "trade.subscribeCapital 5", "trade.subscribePosition 5 1",
          "trade.subscribeFillBySourceName alt 5 1", "trade.subscribeSourcePosition own 5 1",
          "trade.subscribeOrderBySourceName own 5 1", "trade.subscribeFillBySourceName own 5 1",
          "trade.subscribePosition 5 2", "trade.subscribeFillBySourceName alt 5 2",
          "trade.subscribeSourcePosition own 5 2", "trade.subscribeOrderBySourceName own 5 2",
          "trade.subscribeFillBySourceName own 5 2", "trade.subscribeFillBySourceName w 5",
          "trade.subscribeOrderBySourceName w 5", "trade.subscribeOrderBySourceName x 5",
          "trade.subscribeFillBySourceName x 5", "trade.subscribeFillByEventSourceId 1 5",
          "trade.subscribeOrderByEventSourceId 1 5", "trade.subscribeOrderByEventSourceId 4 5",
          "trade.subscribeFillByEventSourceId 4 5"));
}

TEST_F(TradeSrcSubscribe, shouldLogALineBeforeEachCallWithTheAccountAndTheCode) {
  configureAs({{"own", {kEverything, 2, {"x"}}}});
  source->setNotify(nullptr);  // No snapshot, so that the lines are those of the subscriptions.
  std::vector<std::string> calledAfter;
  for (const char* operation :
       {"subscribeStatus", "subscribeCapital", "subscribePosition", "subscribeSourcePosition",
        "subscribeOrderBySourceName", "subscribeOrderByEventSourceId", "subscribeFillBySourceName",
        "subscribeFillByEventSourceId"})
    platform.calls.onCall(std::string("trade.") + operation, [&, operation] {
      EXPECT_FALSE(TestAccess::mutexIsFree(*source)) << operation;
      calledAfter.push_back(eventLines().back());
    });
  source->subscribeTrade(account);
  const std::string a = accountLog();
  const std::vector<std::string> lines = {
      ",subscribeStatus," + a,
      ",subscribeCapital," + a,
      ",subscribePosition," + a + ",A.",
      ",subscribeSourcePosition,own," + a + ",A.",
      ",subscribeOrderBySourceName,own," + a + ",A.",
      ",subscribeFillBySourceName,own," + a + ",A.",
      ",subscribeOrderBySourceName,x," + a,
      ",subscribeFillBySourceName,x," + a,
      ",subscribeOrderByEventSourceId,手工," + a,
      ",subscribeFillByEventSourceId,手工," + a,
  };
  EXPECT_EQ(calledAfter, lines);
  std::vector<std::string> all = {",subscribeTrade," + a, ",subscribeByAccount begin," + a};
  all.insert(all.end(), lines.begin(), lines.end());
  all.push_back(",subscribeByAccount end");
  EXPECT_EQ(eventLines(), all);
}

TEST_F(TradeSrcSubscribe, shouldOnlyLogASecondSubscriptionOfAnAccount) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  notify.take();
  source->subscribeTrade(account);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(eventLines(), ElementsAre(",subscribeTrade," + accountLog()));
}

TEST_F(TradeSrcSubscribe, shouldSubscribeNoCapitalWithoutItsBitAndNoPositionWithoutIts) {
  configureAs({{"own", {EventTypeOrder, 0, {}}}});
  source->subscribeTrade(account);
  EXPECT_THAT(tradeCalls(),
              ElementsAre("trade.subscribeStatus 5", "trade.subscribeOrderBySourceName own 5 1",
                          "trade.ordersOfAccount 5"));
  EXPECT_EQ(marks().positionCodes, (std::map<int64, TradeSrcSubFrom>{{1, SubFromRelated}}));
}

TEST_F(TradeSrcSubscribe, shouldNotSubscribeAPositionLaterThatItsBitWasMissingForAtFirst) {
  configureAs({{"own", {EventTypeOrder, 0, {}}}});
  source->subscribeTrade(account);
  configureAs({{"own", {kEverything, 0, {}}}});
  platform.calls.clear();
  order(1);
  source->onRelatedCodeIdChange({codeOf(1), codeOf(1)});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.sendOrder 5 1"));
}

TEST_F(TradeSrcSubscribe, shouldKeepEntriesAndCallNothingForACreateSourceWithAnOverrideOf0) {
  configureAs({{"mute", {0, 255, {"x"}}}});
  source->subscribeTrade(account);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.subscribeStatus 5"));
  EXPECT_EQ(marks().sourceCodes.at("mute"), (std::map<int64, TradeSrcSubFrom>{{1, 1}}));
  EXPECT_THAT(marks().orderSources, IsEmpty());
  EXPECT_EQ(marks().orderEventSourceIds, 0);
}

TEST_F(TradeSrcSubscribe, shouldLetTheFirstCreateSourceWithTheRightBitWinAndALaterAddTheOther) {
  source->setRelatedCodeId({});
  configureAs({{"a", {EventTypeOrder, 4, {"x"}}}, {"b", {kOrderAndFill, 4, {"x"}}}});
  source->subscribeTrade(account);
  EXPECT_THAT(
      platform.calls.entries("trade.subscribe"),
      ElementsAre("trade.subscribeStatus 5", "trade.subscribeOrderBySourceName x 5",
                  "trade.subscribeFillBySourceName x 5", "trade.subscribeOrderByEventSourceId 4 5",
                  "trade.subscribeFillByEventSourceId 4 5"));
}

TEST_F(TradeSrcSubscribe, shouldReachEverySubscribedAccountWithASourceThatIsAddedLater) {
  source->setRelatedCodeId({});
  const TradingAccountID other = accountOf(3, "other");
  source->subscribeTrade(account);
  source->subscribeTrade(other);
  notify.take();
  platform.calls.clear();
  logs.clear();
  source->addSubscribeTradeByCreateSource("own", "x");
  EXPECT_THAT(
      takeCalls(),
      ElementsAre("trade.subscribeOrderBySourceName x 3", "trade.subscribeFillBySourceName x 3",
                  "trade.subscribeOrderBySourceName x 5", "trade.subscribeFillBySourceName x 5"));
  EXPECT_EQ(eventLines().front(), ",addSubscribeTradeByCreateSource,own,subCreateSource=x");
  source->addSubscribeTradeByCreateSource("own", "x");
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_THAT(notify.take(), IsEmpty());  // No snapshot for what this adds.
  EXPECT_EQ(TestAccess::createSourceInfos(*source).at("own").subCreateSource,
            std::set<std::string>{"x"});
}

TEST_F(TradeSrcSubscribe, shouldSubscribeASourceThatWasAddedBeforeTheAccount) {
  source->setRelatedCodeId({});
  source->addSubscribeTradeByCreateSource("own", "x");
  EXPECT_THAT(takeCalls(), IsEmpty());
  source->subscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.subscribeOrderBySourceName x 5"), 1);
}

TEST_F(TradeSrcSubscribe, shouldLoseARequestForAnUnknownCreateSourceWithoutAWord) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  source->addSubscribeTradeByCreateSource("nobody", "x");
  source->addSubscribeTradeByCreateId("nobody", 3);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_THAT(eventLines(), ElementsAre(",addSubscribeTradeByCreateSource,nobody,subCreateSource=x",
                                        ",addSubscribeTradeByCreateId,nobody,非本机|手工"));
  EXPECT_FALSE(TestAccess::createSourceInfos(*source).contains("nobody"));
}

TEST_F(TradeSrcSubscribe, shouldCallNothingForACreateIdWhoseBitIsThereAndOnlyTheNewBitsElse) {
  source->setRelatedCodeId({});
  source->subscribeTrade(account);
  source->addSubscribeTradeByCreateId("own", 2);
  platform.calls.clear();
  logs.clear();
  source->addSubscribeTradeByCreateId("own", 2);
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_THAT(eventLines(), ElementsAre(",addSubscribeTradeByCreateId,own,手工"));
  source->addSubscribeTradeByCreateId("own", 8);
  EXPECT_THAT(takeCalls(), ElementsAre("trade.subscribeOrderByEventSourceId 8 5",
                                       "trade.subscribeFillByEventSourceId 8 5"));
  EXPECT_EQ(TestAccess::createSourceInfos(*source).at("own").subCreateId, 10);
  EXPECT_EQ(marks().orderEventSourceIds, 10);
}

TEST_F(TradeSrcSubscribe, shouldReachEverySubscribedAccountWithACreateIdThatIsAddedLater) {
  source->setRelatedCodeId({});
  configureAs({{"own", {EventTypeFill, 0, {}}}});
  source->subscribeTrade(account);
  source->subscribeTrade(accountOf(3, "other"));
  platform.calls.clear();
  source->addSubscribeTradeByCreateId("own", 16);
  EXPECT_THAT(takeCalls(), ElementsAre("trade.subscribeFillByEventSourceId 16 3",
                                       "trade.subscribeFillByEventSourceId 16 5"));
  EXPECT_EQ(marks().orderEventSourceIds, 0);
}

// Orders.

TEST_F(TradeSrcSubscribe,
       shouldSubscribeACodeOutsideTheRelatedOnesByItsOrderAndLaterOnlySetTheBit) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  order(9);
  EXPECT_EQ(marks().positionCodes.at(9), SubFromOrder);
  EXPECT_EQ(marks().sourceCodes.at("own").at(9), SubFromOrder);
  EXPECT_EQ(eventLines().front(), ",subscribePosition," + accountLog() + ",Q.");
  takeCalls();
  source->onRelatedCodeIdChange({codeOf(1), codeOf(9)});
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_EQ(marks().positionCodes.at(9), SubFromOrder | SubFromRelated);
  EXPECT_EQ(marks().sourceCodes.at("own").at(9), SubFromOrder | SubFromRelated);
}

TEST_F(TradeSrcSubscribe, shouldSetTheBitOfAnOrderInARelatedCodeAndCallNothing) {
  source->subscribeTrade(account);
  takeCalls();
  order(1);
  EXPECT_THAT(takeCalls(), ElementsAre("trade.sendOrder 5 1"));
  EXPECT_EQ(marks().positionCodes.at(1), SubFromOrder | SubFromRelated);
}

TEST_F(TradeSrcSubscribe, shouldSubscribeForTheRequestsCreateSourceOnly) {
  configureAs({{"alt", {kEverything, 0, {}}}, {"own", {kEverything, 0, {}}}});
  source->subscribeTrade(account);
  takeCalls();
  order(9, "alt");
  EXPECT_THAT(takeCalls(),
              ElementsAre("trade.subscribePosition 5 9", "trade.subscribeSourcePosition alt 5 9",
                          "trade.subscribeOrderBySourceName alt 5 9",
                          "trade.subscribeFillBySourceName alt 5 9", "trade.sendOrder 5 9"));
  EXPECT_FALSE(marks().sourceCodes.at("own").contains(9));
}

TEST_F(TradeSrcSubscribe, shouldSendAnOrderOfAnUnknownCreateSourceWithoutSubscribing) {
  source->subscribeTrade(account);
  takeCalls();
  order(9, "nobody");
  EXPECT_THAT(takeCalls(), ElementsAre("trade.sendOrder 5 9"));
  EXPECT_FALSE(marks().positionCodes.contains(9));
}

TEST_F(TradeSrcSubscribe, shouldSendAnOrderOfAnAccountNeverSubscribedWithoutSubscribing) {
  order(9);
  EXPECT_THAT(takeCalls(), ElementsAre("trade.sendOrder 5 9"));
  EXPECT_TRUE(TestAccess::subInfos(*source).empty());
}

TEST_F(TradeSrcSubscribe, shouldHoldTheMutexForTheSubscribingAndLetItGoBeforeTheOrder) {
  source->subscribeTrade(account);
  platform.calls.onCall("trade.subscribePosition",
                        [&] { EXPECT_FALSE(TestAccess::mutexIsFree(*source)); });
  bool wasFree = false;
  platform.calls.onCall("trade.sendOrder", [&] { wasFree = TestAccess::mutexIsFree(*source); });
  order(9);
  EXPECT_TRUE(wasFree);
  platform.calls.onCall("trade.subscribePosition", {});
}

TEST_F(TradeSrcSubscribe, shouldOverwriteTheCallersOrdersAndReturnTheStatus) {
  platform.trade().sentOrders = {orderOf(21, 0), orderOf(22, 0)};
  std::list<Order> orders = {orderOf(1, 0)};
  EXPECT_EQ(source->sendOrder({}, orders), ResultStatus());
  ASSERT_EQ(orders.size(), 2u);
  EXPECT_EQ(orders.front().id, 21);
  platform.calls.answer("trade.sendOrder", {4, "no"});
  EXPECT_EQ(source->sendOrder({}, orders), (ResultStatus{4, "no"}));
  EXPECT_THAT(orders, IsEmpty());
}

TEST_F(TradeSrcSubscribe, shouldAppendTheIdsOfTheNewOrders) {
  platform.trade().sentOrders = {orderOf(21, 0), orderOf(22, 0)};
  std::vector<int64> ids = {1};
  EXPECT_EQ(source->sendOrderIds({}, ids), ResultStatus());
  EXPECT_THAT(ids, ElementsAre(1, 21, 22));
  platform.calls.answer("trade.sendOrder", {4, "no"});
  EXPECT_EQ(source->sendOrderIds({}, ids).code, 4);
  EXPECT_THAT(ids, ElementsAre(1, 21, 22));
}

// Unsubscribing.

TEST_F(TradeSrcSubscribe, shouldDoAndLogNothingForAnUnsubscribeOfAnUnknownAccount) {
  source->unsubscribeTrade(account);
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(TradeSrcSubscribe, shouldDropAllOfAnAccountInOneCallBetweenTwoLines) {
  const TradingAccountID other = accountOf(3, "other");
  source->subscribeTrade(account);
  source->subscribeTrade(other);
  takeCalls();
  logs.clear();
  platform.calls.onCall("trade.unsubscribeAccount", [&] {
    EXPECT_FALSE(TestAccess::mutexIsFree(*source));
    EXPECT_THAT(eventLines(), ElementsAre(",unsubscribeTrade begin," + accountLog()));
  });
  source->unsubscribeTrade(account);
  EXPECT_THAT(takeCalls(), ElementsAre("trade.unsubscribeAccount 5"));
  EXPECT_EQ(eventLines().back(), ",unsubscribeTrade end");
  EXPECT_EQ(TestAccess::subInfos(*source).size(), 1u);
  EXPECT_TRUE(TestAccess::subInfos(*source).contains(other));
  platform.calls.onCall("trade.unsubscribeAccount", {});
}

TEST_F(TradeSrcSubscribe, shouldMakeEveryCallAgainForAnAccountThatWasUnsubscribed) {
  source->subscribeTrade(account);
  const std::vector<std::string> first = takeCalls();
  source->unsubscribeTrade(account);
  takeCalls();
  source->subscribeTrade(account);
  EXPECT_EQ(takeCalls(), first);
}

TEST_F(TradeSrcSubscribe, shouldForgetTheOrderedCodesOfAnAccountThatWasUnsubscribed) {
  source->subscribeTrade(account);
  order(9);
  source->unsubscribeTrade(account);
  source->subscribeTrade(account);
  EXPECT_FALSE(marks().positionCodes.contains(9));
  EXPECT_FALSE(marks().sourceCodes.at("own").contains(9));
}

}  // namespace
}  // namespace orvane::support
