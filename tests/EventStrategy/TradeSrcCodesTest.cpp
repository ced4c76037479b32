// The change of a strategy's codes while accounts are subscribed.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcCodes : public TradeSrcTest {
 protected:
  TradeSrcCodes() {
    source->subscribeTrade(account);
    platform.calls.clear();
    logs.clear();
  }

  void order(int64 codeId) {
    OrderRequest request;
    request.account = account;
    request.code = codeOf(codeId);
    request.source.createSource = "own";
    std::list<Order> sent;
    source->sendOrder(request, sent);
  }
};

TEST_F(TradeSrcCodes, shouldCallNothingForAnUnchangedListAndLogTwoEmptyLists) {
  source->onRelatedCodeIdChange({codeOf(1, "A")});
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,onRelatedCodeIdChange begin,A."));
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,onRelatedCodeIdChange,sub=,unsub="));
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "stg,onRelatedCodeIdChange end"));
}

TEST_F(TradeSrcCodes, shouldEndEveryCodeSubscriptionOnAnEmptyListAndKeepTheAccounts) {
  source->onRelatedCodeIdChange({});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeSourcePosition own 5 1",
                                        "trade.unsubscribeOrderBySourceName own 5 1",
                                        "trade.unsubscribeFillBySourceName own 5 1",
                                        "trade.unsubscribePosition 5 1"));
}

TEST_F(TradeSrcCodes, shouldMakeEveryUnsubscribeBeforeTheFirstSubscribe) {
  source->onRelatedCodeIdChange({codeOf(3), codeOf(2), codeOf(3, "twice")});
  EXPECT_THAT(
      tradeCalls(),
      ElementsAre(
          "trade.unsubscribeSourcePosition own 5 1", "trade.unsubscribeOrderBySourceName own 5 1",
          "trade.unsubscribeFillBySourceName own 5 1", "trade.unsubscribePosition 5 1",
          "trade.subscribePosition 5 2", "trade.subscribeSourcePosition own 5 2",
          "trade.subscribeOrderBySourceName own 5 2", "trade.subscribeFillBySourceName own 5 2",
          "trade.subscribePosition 5 3", "trade.subscribeSourcePosition own 5 3",
          "trade.subscribeOrderBySourceName own 5 3", "trade.subscribeFillBySourceName own 5 3"));
}

TEST_F(TradeSrcCodes, shouldKeepACodeThatAnOrderWasPlacedInAndOnlySetTheBitWhenItComesBack) {
  order(1);
  source->onRelatedCodeIdChange({});
  source->onRelatedCodeIdChange({codeOf(1)});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.sendOrder 5 1"));
}

TEST_F(TradeSrcCodes, shouldEndAnOrderSubscriptionThatStrategyPositionsAloneNeverMade) {
  configure(EventTypeStrategyPosition);
  source->onRelatedCodeIdChange({});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeSourcePosition own 5 1",
                                        "trade.unsubscribeOrderBySourceName own 5 1"));
}

TEST_F(TradeSrcCodes, shouldEraseWithoutACallWhatACreateSourceThatIsGoneHadSubscribed) {
  source->setCreateSourceTradeInfo({});
  source->onRelatedCodeIdChange({});
  EXPECT_THAT(tradeCalls(), IsEmpty());
  configure(kEverything);
  source->onRelatedCodeIdChange({codeOf(1)});
  EXPECT_EQ(platform.calls.count("trade.subscribe"), 4);
}

TEST_F(TradeSrcCodes, shouldJustReplaceTheCodesWhenNoAccountIsSubscribed) {
  source->unsubscribeTrade(account);
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(2)});
  EXPECT_THAT(tradeCalls(), IsEmpty());
  source->subscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.subscribePosition 5 2"), 1);
  EXPECT_EQ(platform.calls.count("trade.subscribePosition 5 1"), 0);
}

TEST_F(TradeSrcCodes, shouldLogEachUnsubscribeBeforeItsCallUnderTheMutex) {
  std::vector<std::string> calledAfter;
  for (const char* operation :
       {"unsubscribeSourcePosition", "unsubscribeOrderBySourceName", "unsubscribeFillBySourceName",
        "unsubscribePosition", "subscribePosition"})
    platform.calls.onCall(std::string("trade.") + operation, [&, operation] {
      EXPECT_FALSE(TestAccess::mutexIsFree(*source)) << operation;
      calledAfter.push_back(eventLines().back());
    });
  source->onRelatedCodeIdChange({codeOf(2, "B"), codeOf(3, "D")});
  const std::string a = accountLog();
  EXPECT_THAT(calledAfter,
              ElementsAre(",unsubscribeSourcePosition,own," + a + ",A.",
                          ",unsubscribeOrderBySourceName,own," + a + ",A.",
                          ",unsubscribeFillBySourceName,own," + a + ",A.",
                          ",unsubscribePosition," + a + ",A.", ",subscribePosition," + a + ",B.",
                          ",subscribePosition," + a + ",D."));
  const std::vector<std::string> lines = eventLines();
  EXPECT_EQ(lines[0], ",onRelatedCodeIdChange begin,B.,D.");
  EXPECT_EQ(lines[1], ",onRelatedCodeIdChange,sub=B.,D.,unsub=A.");
  EXPECT_EQ(lines.back(), ",onRelatedCodeIdChange end");
}

TEST_F(TradeSrcCodes, shouldLogTheListAsGivenButTheDifferenceInCodeOrderAndOnce) {
  source->onRelatedCodeIdChange({codeOf(9, "I"), codeOf(2, "B"), codeOf(9, "J")});
  EXPECT_TRUE(eventLogged(",onRelatedCodeIdChange begin,I.,B.,J."));
  EXPECT_TRUE(eventLogged(",onRelatedCodeIdChange,sub=B.,I.,unsub=A."));
  EXPECT_EQ(TestAccess::relatedCodes(*source), (std::set<ICodeID>{codeOf(2), codeOf(9)}));
}

TEST_F(TradeSrcCodes, shouldWalkTheCodesOutsideAndTheAccountsInside) {
  source->subscribeTrade(accountOf(3, "other"));
  source->onRelatedCodeIdChange({codeOf(1), codeOf(2)});
  configure(EventTypePosition);
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(7), codeOf(8)});
  EXPECT_THAT(tradeCalls(),
              ElementsAre("trade.unsubscribePosition 3 1", "trade.unsubscribePosition 5 1",
                          "trade.unsubscribePosition 3 2", "trade.unsubscribePosition 5 2",
                          "trade.subscribePosition 3 7", "trade.subscribePosition 5 7",
                          "trade.subscribePosition 3 8", "trade.subscribePosition 5 8"));
}

TEST_F(TradeSrcCodes, shouldWalkTheCreateSourcesOfACodeInOrder) {
  source->setCreateSourceTradeInfo({{"b", {EventTypeOrder, 0, {}}}, {"a", {EventTypeFill, 0, {}}}});
  source->onRelatedCodeIdChange({codeOf(1), codeOf(2)});
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(3)});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeFillBySourceName a 5 2",
                                        "trade.unsubscribeOrderBySourceName b 5 2",
                                        "trade.subscribeFillBySourceName a 5 3",
                                        "trade.subscribeOrderBySourceName b 5 3"));
}

TEST_F(TradeSrcCodes, shouldTakeTheRelatedBitAloneFromACodeThatWasOrderedIn) {
  order(1);
  source->onRelatedCodeIdChange({});
  EXPECT_EQ(marks().positionCodes.at(1), SubFromOrder);
  EXPECT_EQ(marks().sourceCodes.at("own").at(1), SubFromOrder);
  source->onRelatedCodeIdChange({codeOf(1)});
  EXPECT_EQ(marks().positionCodes.at(1), SubFromOrder | SubFromRelated);
}

TEST_F(TradeSrcCodes, shouldKeepThePositionOfACodeThatOnlyAnotherCreateSourceOrderedIn) {
  source->setCreateSourceTradeInfo(
      {{"own", {kEverything, 0, {}}}, {"alt", {EventTypeFill, 0, {}}}});
  OrderRequest request;
  request.account = account;
  request.code = codeOf(1);
  request.source.createSource = "alt";
  std::list<Order> sent;
  source->sendOrder(request, sent);
  platform.calls.clear();
  source->onRelatedCodeIdChange({});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeSourcePosition own 5 1",
                                        "trade.unsubscribeOrderBySourceName own 5 1",
                                        "trade.unsubscribeFillBySourceName own 5 1"));
  EXPECT_EQ(marks().positionCodes.at(1), SubFromOrder);
}

TEST_F(TradeSrcCodes, shouldGiveNoCodesToACreateSourceThatCameAfterThemUntilACodeChanges) {
  source->setCreateSourceTradeInfo(
      {{"own", {kEverything, 0, {}}}, {"new", {EventTypeOrder, 0, {}}}});
  source->onRelatedCodeIdChange({codeOf(1)});
  EXPECT_THAT(tradeCalls(), IsEmpty());
  source->onRelatedCodeIdChange({codeOf(1), codeOf(2)});
  EXPECT_EQ(platform.calls.count("trade.subscribeOrderBySourceName new 5 2"), 1);
  EXPECT_EQ(platform.calls.count("trade.subscribeOrderBySourceName new 5 1"), 0);
  source->subscribeTrade(accountOf(6, "later"));
  EXPECT_EQ(platform.calls.count("trade.subscribeOrderBySourceName new 6 1"), 1);
}

TEST_F(TradeSrcCodes, shouldErasePositionCodesWithoutACallWhenNobodyWantsPositions) {
  configure(EventTypeOrder);
  source->onRelatedCodeIdChange({});
  EXPECT_EQ(platform.calls.count("trade.unsubscribePosition"), 0);
  EXPECT_TRUE(marks().positionCodes.empty());
}

TEST_F(TradeSrcCodes, shouldEndNoFillSubscriptionOfACreateSourceThatWantsOrdersAlone) {
  configure(EventTypeOrder);
  source->onRelatedCodeIdChange({});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeOrderBySourceName own 5 1"));
}

TEST_F(TradeSrcCodes, shouldKeepAnEmptiedMapOfCodesUnderItsCreateSource) {
  source->onRelatedCodeIdChange({});
  ASSERT_TRUE(marks().sourceCodes.contains("own"));
  EXPECT_TRUE(marks().sourceCodes.at("own").empty());
}

TEST_F(TradeSrcCodes, shouldNotTouchTheMarksOfTheWholeAccount) {
  source->addSubscribeTradeByCreateSource("own", "x");
  source->addSubscribeTradeByCreateId("own", 2);
  platform.calls.clear();
  source->onRelatedCodeIdChange({});
  source->onRelatedCodeIdChange({codeOf(4)});
  EXPECT_EQ(marks().orderSources, std::set<std::string>{"x"});
  EXPECT_EQ(marks().fillSources, std::set<std::string>{"x"});
  EXPECT_EQ(marks().orderEventSourceIds, 2);
  EXPECT_EQ(marks().fillEventSourceIds, 2);
  EXPECT_EQ(platform.calls.count("trade.subscribeStatus"), 0);
  EXPECT_EQ(platform.calls.count("trade.unsubscribeAccount"), 0);
}

TEST_F(TradeSrcCodes, shouldReplayNothingForANewCode) {
  platform.trade().positions = {positionOf(2)};
  platform.trade().orders = {orderOf(1, 1, 2)};
  notify.take();
  source->onRelatedCodeIdChange({codeOf(1), codeOf(2)});
  EXPECT_THAT(notify.take(), IsEmpty());
  tellStatus(16);  // The next reconnect brings them.
  EXPECT_THAT(notify.take(), ElementsAre("position 2", "order 1", "status 16"));
}

}  // namespace
}  // namespace orvane::support
