// The change of a strategy's codes, the widening by an order, and history in spans.

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

TEST_F(TradeSrcCodes, shouldSubscribeACodeOutsideTheRelatedOnesWhenAnOrderIsPlacedInIt) {
  order(9);
  EXPECT_THAT(tradeCalls(),
              ElementsAre("trade.subscribePosition 5 9", "trade.subscribeSourcePosition own 5 9",
                          "trade.subscribeOrderBySourceName own 5 9",
                          "trade.subscribeFillBySourceName own 5 9", "trade.sendOrder 5 9"));
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(1), codeOf(9)});
  EXPECT_THAT(tradeCalls(), IsEmpty());
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

TEST_F(TradeSrcCodes, shouldSendAnOrderForAnAccountThatWasNeverSubscribedWithoutSubscribing) {
  account.accountKey = 6;
  order(9);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.sendOrder 6 9"));
}

class TradeSrcHistory : public TradeSrcTest {
 protected:
  static constexpr int64 kDay = 86'400'000;
  static constexpr int64 kJanuary = 1'609'459'200'000;  // 2021-01-01 UTC.

  void put(std::int32_t date) {
    HistoryDayRecord record;
    record.account = account;
    record.entries.push_back({date, {}, {}});
    platform.trade().history = {record};
  }

  /// The spans that the service was asked for, without the probe.
  std::vector<std::pair<int64, int64>> spansOf(HistoryQuery query) {
    std::vector<std::pair<int64, int64>> spans;
    masks.clear();
    platform.calls.onCall("trade.queryHistory", [&] {
      masks.push_back(platform.trade().lastQuery.mask);
      spans.emplace_back(platform.trade().lastQuery.begin, platform.trade().lastQuery.end);
    });
    status = source->queryHistory(query, days);
    platform.calls.onCall("trade.queryHistory", {});
    if (!spans.empty()) spans.erase(spans.begin());
    return spans;
  }

  std::list<HistoryDayRecord> days;
  std::vector<int> masks;
  ResultStatus status;
};

TEST_F(TradeSrcHistory, shouldAskInSpansOfHalfAYearFromThirtyDaysBeforeTheFirstDay) {
  put(20210131);
  HistoryQuery query;
  query.mask = 1089;
  query.begin = 0;
  query.end = kJanuary + 200 * kDay;
  const int64 half = kJanuary + 180 * kDay;
  EXPECT_THAT(spansOf(query),
              ElementsAre(std::pair(kJanuary, half), std::pair(half + 1, query.end)));
  EXPECT_THAT(masks, ElementsAre(1041, 1089, 1089));
  ASSERT_EQ(days.size(), 1u);  // One account: its entries are joined.
  EXPECT_EQ(days.front().entries.size(), 2u);
  EXPECT_EQ(status.code, 0);
}

TEST_F(TradeSrcHistory, shouldBeginNoEarlierThanItWasAsked) {
  put(20210131);
  HistoryQuery query;
  query.begin = kJanuary + 5;
  query.end = kJanuary + 10;
  EXPECT_THAT(spansOf(query), ElementsAre(std::pair(kJanuary + 5, kJanuary + 10)));
}

TEST_F(TradeSrcHistory, shouldProbeWithTheMaskThatFitsTheRequest) {
  HistoryQuery query;
  query.mask = 2;
  spansOf(query);
  EXPECT_EQ(masks.front(), 1042);
  query.mask = 0x100000;
  spansOf(query);
  EXPECT_EQ(masks.front(), 0x100410);
}

TEST_F(TradeSrcHistory, shouldAskForNothingWhenNoDayIsOnRecord) {
  platform.trade().history.clear();
  HistoryQuery query;
  query.end = kJanuary;
  EXPECT_THAT(spansOf(query), IsEmpty());
  EXPECT_EQ(status.code, 0);
}

TEST_F(TradeSrcHistory, shouldReturnAFailureAtOnceAndKeepWhatItHas) {
  put(20210131);
  HistoryQuery query;
  query.end = kJanuary + 1000 * kDay;
  int calls = 0;
  platform.calls.onCall("trade.queryHistory", [&] {
    if (++calls == 2) platform.calls.answer("trade.queryHistory", {-23, "late"});
  });
  const ResultStatus failed = source->queryHistory(query, days);
  EXPECT_EQ(failed.code, -23);
  EXPECT_LE(calls, 3);
}

}  // namespace
}  // namespace orvane::support
