// What a server run counts of its publications, and the line that tells it.

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

constexpr int64 kDayMs = 24 * 3600 * 1000;
/// 18:00 of the first day in the platform's zone; the clock begins at 9:30.
constexpr int64 kCutOver = ManualClock::kStart + (18 * 60 - 9 * 60 - 30) * 60000;

class ServerStatisticsTest : public RunnerTest {
 protected:
  ServerStatisticsTest() : RunnerTest(1) { platform.calls.clear(); }

  std::string statLine() { return user.env("#STAT#", "default"); }

  ServerUserContext& user = TestAccess::serverContext(*runner);
};

TEST_F(ServerStatisticsTest, shouldShowTheStampOf0AndFiveZerosOnAFreshContext) {
  EXPECT_EQ(statLine(),
            "19700101 080000 QtReal:0, QtHist:0, DtReal:       0, DtHist:      0, PubQue:    0");
  EXPECT_EQ(TestAccess::stats(user),
            (std::map<std::string, int64>{
                {"301", 0}, {"304", 0}, {"601", 0}, {"604", 0}, {"pubque", 0}}));
  EXPECT_EQ(logs.countContaining("clear stat data"), 0);
}

TEST_F(ServerStatisticsTest, shouldTakeTheBasesPathForAKeyThatOnlyResemblesIt) {
  for (const char* key : {"#STAT#x", "#STAT", "STAT#", "#stat#", ""})
    EXPECT_EQ(user.env(key, "default"), "default") << key;
  user.setEnv("#STAT#x", "own", true);
  EXPECT_EQ(user.env("#STAT#x", "default"), "own");
}

TEST_F(ServerStatisticsTest, shouldShowTheLineEvenIfTheEnvironmentHoldsTheKey) {
  user.setEnv("#STAT#", "own", true);
  EXPECT_TRUE(statLine().starts_with("19700101 080000 QtReal:0"));
  EXPECT_EQ(user.envs().at("#STAT#"), "own");
}

TEST_F(ServerStatisticsTest, shouldCountTheItemsOfEachQuotePublicationByBit0) {
  const std::list<IDepthMarketData> quotes(3);
  const std::list<IKLine> bars(5);
  user.publishQuoteList(quotes, 1);
  EXPECT_EQ(TestAccess::stats(user), (std::map<std::string, int64>{{"301", 3}}));
  user.publishQuoteSeries(codeOf(7), bars, 60, 3);
  EXPECT_EQ(TestAccess::stats(user).at("301"), 8);
  user.publishQuoteItems(codeOf(7), {quoteOf(7)}, 1);
  user.publishQuoteItems2(codeOf(7), bars, 5);
  EXPECT_EQ(TestAccess::stats(user), (std::map<std::string, int64>{{"301", 14}}));
  user.publishQuoteList(quotes, 0);
  user.publishQuoteSeries(codeOf(7), bars, 60, 2);
  user.publishQuoteItems(codeOf(7), {quoteOf(7)}, 4);
  user.publishQuoteItems2(codeOf(7), bars, -2);
  EXPECT_EQ(TestAccess::stats(user), (std::map<std::string, int64>{{"301", 14}, {"304", 14}}));
}

TEST_F(ServerStatisticsTest, shouldForwardWhatItCountedWithTheFlagsUnchanged) {
  platform.calls.answer("publisher.publishQuoteItems", {52, "slow"});
  EXPECT_EQ(user.publishQuoteList({quoteOf(1)}, 1), ResultStatus());
  EXPECT_EQ(user.publishQuoteSeries(codeOf(7), {barOf(1)}, 60, 2), ResultStatus());
  EXPECT_EQ(user.publishQuoteItems(codeOf(7), {quoteOf(1)}, 3), (ResultStatus{52, "slow"}));
  EXPECT_EQ(user.publishQuoteItems2(codeOf(7), {barOf(1)}, 4), ResultStatus());
  EXPECT_THAT(
      platform.calls.entries(),
      ElementsAre("publisher.publishQuoteList 1 1", "publisher.publishQuoteSeries 7 1 60 2",
                  "publisher.publishQuoteItems 7 1 3", "publisher.publishQuoteItems2 7 1 4"));
  EXPECT_EQ(TestAccess::stats(user).at("301"), 2);  // A refused one is counted too.
}

TEST_F(ServerStatisticsTest, shouldNotCountTheOtherPublications) {
  user.publishOp5("k", "t", 1);
  user.publishOp6("k", "t", 1);
  user.publishOp7("k", "t", 1);
  user.publishOp8("k", "t", 1);
  EXPECT_TRUE(TestAccess::stats(user).empty());
  EXPECT_EQ(TestAccess::lastPublishMs(user), 0);
  EXPECT_EQ(platform.calls.count("publisher."), 4);
}

TEST_F(ServerStatisticsTest, shouldCountRecordsByBit0AndForwardThemWithBit128) {
  platform.calls.answer("publisher.publishRecords", {0, "17"});
  const std::list<Record> records(4);
  EXPECT_EQ(user.publishRecords("n", "t", 2, records, 1), (ResultStatus{0, "17"}));
  EXPECT_EQ(TestAccess::stats(user), (std::map<std::string, int64>{{"601", 4}, {"pubque", 17}}));
  user.publishRecords("n", "t", 2, {{}}, 2);
  EXPECT_EQ(TestAccess::stats(user),
            (std::map<std::string, int64>{{"601", 4}, {"604", 1}, {"pubque", 17}}));
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.publishRecords n t 2 4 129 0",
                                                    "publisher.publishRecords n t 2 1 130 0"));
}

TEST_F(ServerStatisticsTest, shouldSetTheQueueDepthByEachSuccessfulReplyAndLeaveItByARefusal) {
  platform.calls.answer("publisher.publishRecords", {0, "17"});
  user.publishRecords("n", "t", 2, {{}}, 1);
  platform.calls.answer("publisher.publishRecords", {52, "99"});
  EXPECT_EQ(user.publishRecords("n", "t", 2, {{}}, 1), (ResultStatus{52, "99"}));
  EXPECT_EQ(TestAccess::stats(user).at("pubque"), 17);
  EXPECT_EQ(TestAccess::stats(user).at("601"), 2);  // A refused one is counted too.
  platform.calls.answer("publisher.publishRecords", {0, "5"});
  user.publishRecords("n", "t", 2, {{}}, 1);
  EXPECT_EQ(TestAccess::stats(user).at("pubque"), 5);
  platform.calls.answer("publisher.publishRecords", {0, "no number"});
  user.publishRecords("n", "t", 2, {{}}, 1);
  EXPECT_EQ(TestAccess::stats(user).at("pubque"), 0);
}

TEST_F(ServerStatisticsTest, shouldShowTheTimeOfTheLastPublicationAndTheCounters) {
  platform.calls.answer("publisher.publishRecords", {0, "12345"});
  user.publishRecords("n", "t", 2, std::list<Record>(2), 1);
  user.publishRecords("n", "t", 2, std::list<Record>(3), 0);
  platform.clock.advance(61'999);  // 9:31:01.999
  user.publishQuoteList(std::list<IDepthMarketData>(4), 1);
  user.publishQuoteList(std::list<IDepthMarketData>(5), 0);
  platform.clock.advance(3'600'000);
  EXPECT_EQ(statLine(),
            "20210104 093101 QtReal:4, QtHist:5, DtReal:       2, DtHist:      3, PubQue:12345");
}

TEST_F(ServerStatisticsTest, shouldStampEachKindOfPublication) {
  int64 last = 0;
  const auto expectStamped = [&] {
    EXPECT_EQ(TestAccess::lastPublishMs(user), platform.clock.now());
    EXPECT_NE(TestAccess::lastPublishMs(user), last);
    last = TestAccess::lastPublishMs(user);
    platform.clock.advance(1);
  };
  user.publishQuoteList({}, 1);
  expectStamped();
  user.publishQuoteSeries(codeOf(7), {}, 60, 0);
  expectStamped();
  user.publishQuoteItems(codeOf(7), {}, 1);
  expectStamped();
  user.publishQuoteItems2(codeOf(7), {}, 0);
  expectStamped();
  user.publishRecords("n", "t", 2, {}, 0);
  expectStamped();
}

// The cut-over.

TEST_F(ServerStatisticsTest, shouldBeginItsDayAtTodays18) {
  EXPECT_EQ(TestAccess::statResetMs(user), kCutOver);
}

TEST_F(ServerStatisticsTest, shouldClear24HoursAfterTheCutOverButKeepTheStamp) {
  user.publishQuoteList({quoteOf(1)}, 1);
  platform.clock.set(kCutOver + kDayMs - 1);
  EXPECT_TRUE(statLine().starts_with("20210104 093000 QtReal:1,"));
  EXPECT_EQ(logs.countContaining("clear stat data"), 0);
  platform.clock.set(kCutOver + kDayMs);
  EXPECT_EQ(statLine(),
            "20210104 093000 QtReal:0, QtHist:0, DtReal:       0, DtHist:      0, PubQue:    0");
  EXPECT_TRUE(runnerLogged("DEBUG", ",clear stat data"));
  EXPECT_EQ(TestAccess::statResetMs(user), kCutOver + kDayMs);
}

TEST_F(ServerStatisticsTest, shouldClear24HoursBeforeTheCutOver) {
  user.publishQuoteList({quoteOf(1)}, 1);
  platform.clock.set(kCutOver - kDayMs + 1);
  EXPECT_TRUE(statLine().starts_with("20210104 093000 QtReal:1,"));
  platform.clock.set(kCutOver - kDayMs);
  EXPECT_TRUE(statLine().starts_with("20210104 093000 QtReal:0,"));
  EXPECT_EQ(TestAccess::statResetMs(user), kCutOver - kDayMs);
  EXPECT_TRUE(runnerLogged("DEBUG", ",clear stat data"));
}

TEST_F(ServerStatisticsTest, shouldLandOn18OfTheDayOfTheCallAndNotClearAgain) {
  // Three days later in the morning: 18:00 of that day is still to come.
  platform.clock.set(ManualClock::kStart + 3 * kDayMs);
  statLine();
  EXPECT_EQ(TestAccess::statResetMs(user), kCutOver + 3 * kDayMs);
  user.publishQuoteList({quoteOf(1)}, 1);
  EXPECT_TRUE(statLine().starts_with("20210107 093000 QtReal:1,"));
  EXPECT_EQ(logs.countContaining("clear stat data"), 1);
}

TEST_F(ServerStatisticsTest, shouldClearOnlyWhenItIsAsked) {
  user.publishQuoteList({quoteOf(1)}, 1);
  platform.clock.set(kCutOver + 2 * kDayMs);
  user.env("other", "");
  user.publishQuoteList({quoteOf(1)}, 1);
  EXPECT_EQ(TestAccess::stats(user).at("301"), 2);
  EXPECT_TRUE(statLine().starts_with("20210106 180000 QtReal:0,"));
}

TEST_F(ServerStatisticsTest, shouldKeepTheCountersOverARunsEnd) {
  startRun();
  user.publishQuoteList({quoteOf(1)}, 1);
  runner->stop();
  pool.runAll();
  EXPECT_EQ(TestAccess::stats(user).at("301"), 1);
  EXPECT_TRUE(statLine().starts_with("20210104 093000 QtReal:1,"));
}

}  // namespace
}  // namespace orvane::support
