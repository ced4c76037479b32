// History, asked for in spans that a service can bear.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcHistory : public TradeSrcTest {
 protected:
  static constexpr int64 kDay = 86'400'000;
  static constexpr int64 kJanuary = 1'609'459'200'000;  // 2021-01-01 UTC.

  void put(std::int32_t date) { platform.trade().history = {recordOf(account, {date})}; }

  static HistoryDayRecord recordOf(const TradingAccountID& of,
                                   const std::vector<std::int32_t>& dates) {
    HistoryDayRecord record;
    record.account = of;
    for (const std::int32_t date : dates) record.entries.push_back({date, {}, {}});
    return record;
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

TEST_F(TradeSrcHistory, shouldTakeARecordWithoutDaysForOneOfTheLastDayOf2099) {
  HistoryQuery query;
  query.end = 5'000'000'000'000;  // 2128.
  const int64 lastDay = 4'102'358'400'000;
  platform.trade().history = {recordOf(account, {})};
  EXPECT_EQ(spansOf(query).front().first, lastDay - 30 * kDay);
  TradingAccountID other = account;
  other.accountKey = 77;
  platform.trade().history.push_back(recordOf(other, {21000131}));
  EXPECT_EQ(spansOf(query).front().first, lastDay - 30 * kDay);
  platform.trade().history = {recordOf(other, {21000131})};
  EXPECT_EQ(spansOf(query).front().first, lastDay + kDay);
}

TEST_F(TradeSrcHistory, shouldProbeWithARequestThatIsTheSameButForItsMask) {
  put(20210131);
  HistoryQuery query;
  query.mask = 1153;
  query.accounts = {account};
  query.codes = {codeOf(3)};
  query.sources = {"own"};
  query.begin = kJanuary;
  query.end = kJanuary + 400 * kDay;
  std::vector<HistoryQuery> asked;
  platform.calls.onCall("trade.queryHistory", [&] { asked.push_back(platform.trade().lastQuery); });
  source->queryHistory(query, days);
  ASSERT_EQ(asked.size(), 4u);
  for (const HistoryQuery& each : asked) {
    EXPECT_EQ(each.accounts, query.accounts);
    EXPECT_EQ(each.codes, query.codes);
    EXPECT_EQ(each.sources, query.sources);
  }
  EXPECT_EQ(asked[0].mask, 1041);
  EXPECT_EQ(asked[0].begin, query.begin);
  EXPECT_EQ(asked[0].end, query.end);
  EXPECT_EQ(asked[1].mask, 1153);
}

TEST_F(TradeSrcHistory, shouldPreferTheProbeOfBit2WhereBothBitsAreSet) {
  HistoryQuery query;
  query.mask = 2 | 0x100000;
  spansOf(query);
  EXPECT_EQ(masks.front(), 1042);
}

TEST_F(TradeSrcHistory, shouldTakeTheSmallestFirstDayOfTheRecordsThatHaveOne) {
  platform.trade().history = {recordOf(accountOf(1, "a"), {}),
                              recordOf(accountOf(2, "b"), {20210301, 20200101}),
                              recordOf(accountOf(3, "c"), {20210131})};
  HistoryQuery query;
  query.end = kJanuary + kDay;
  EXPECT_THAT(spansOf(query), ElementsAre(std::pair(kJanuary, query.end)));
}

TEST_F(TradeSrcHistory, shouldNotLookAtAFailureOfTheProbe) {
  put(20210131);
  platform.calls.answer("trade.queryHistory", {-6, "down"});
  HistoryQuery query;
  query.begin = kJanuary;
  query.end = kJanuary + kDay;
  EXPECT_THAT(spansOf(query), IsEmpty());  // No record came with the failure: the default day.
  EXPECT_EQ(status.code, 0);
}

TEST_F(TradeSrcHistory, shouldAskOnceForASpanThatEndsWhereItBegins) {
  put(20210131);
  HistoryQuery query;
  query.begin = kJanuary;
  query.end = kJanuary;
  EXPECT_THAT(spansOf(query), ElementsAre(std::pair(kJanuary, kJanuary)));
  query.begin = kJanuary + 1;
  EXPECT_THAT(spansOf(query), IsEmpty());
}

TEST_F(TradeSrcHistory, shouldAskOnceForExactlyHalfAYearAndTwiceForAMillisecondMore) {
  put(20210131);
  HistoryQuery query;
  query.end = kJanuary + 180 * kDay;
  EXPECT_THAT(spansOf(query), ElementsAre(std::pair(kJanuary, query.end)));
  ++query.end;
  EXPECT_THAT(spansOf(query),
              ElementsAre(std::pair(kJanuary, query.end - 1), std::pair(query.end, query.end)));
}

TEST_F(TradeSrcHistory, shouldAddNewAccountsAndAppendToThoseThatAreThereAlready) {
  put(20210131);
  days = {recordOf(accountOf(9, "before"), {20190101}), recordOf(account, {20200101})};
  HistoryQuery query;
  query.end = kJanuary + 300 * kDay;
  int call = 0;
  platform.calls.onCall("trade.queryHistory", [&] {
    if (++call == 2) platform.trade().history = {recordOf(account, {20210201})};
    if (call == 3)
      platform.trade().history = {recordOf(accountOf(6, "new"), {20210801}),
                                  recordOf(account, {20210802, 20210803})};
  });
  EXPECT_EQ(source->queryHistory(query, days).code, 0);
  std::vector<std::pair<int, std::vector<int>>> found;
  for (const HistoryDayRecord& record : days) {
    found.emplace_back(record.account.accountKey, std::vector<int>());
    for (const HistoryDayEntry& entry : record.entries) found.back().second.push_back(entry.date);
  }
  EXPECT_THAT(found,
              ElementsAre(std::pair(9, std::vector<int>{20190101}),
                          std::pair(5, std::vector<int>{20200101, 20210201, 20210802, 20210803}),
                          std::pair(6, std::vector<int>{20210801})));
}

TEST_F(TradeSrcHistory, shouldReturnAFailureAtOnceAndKeepWhatItHas) {
  put(20210131);
  HistoryQuery query;
  query.end = kJanuary + 1000 * kDay;
  int calls = 0;
  platform.calls.onCall("trade.queryHistory", [&] {
    if (++calls == 2) platform.calls.answer("trade.queryHistory", {-23, "late"});
  });
  EXPECT_EQ(source->queryHistory(query, days), (ResultStatus{-23, "late"}));
  EXPECT_EQ(calls, 3);  // The probe, a span that was answered, and one that was not.
  ASSERT_EQ(days.size(), 1u);
  EXPECT_EQ(days.front().entries.size(), 1u);
}

TEST_F(TradeSrcHistory, shouldHoldNoMutexWhileItAsks) {
  put(20210131);
  HistoryQuery query;
  query.end = kJanuary;
  bool isFree = true;
  platform.calls.onCall("trade.queryHistory",
                        [&] { isFree = isFree && TestAccess::mutexIsFree(*source); });
  source->queryHistory(query, days);
  EXPECT_TRUE(isFree);
}

}  // namespace
}  // namespace orvane::support
