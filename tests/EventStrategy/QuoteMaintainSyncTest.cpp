// Blocking maintenance: what is asked, what comes back, and what reaches a waiter that has left.

#include <stdexcept>

#include "EventStrategy/QuoteGetSync.h"
#include "tests/EventStrategy/SyncFetchTest.h"

namespace orvane::support {
namespace {

class QuoteMaintainSyncTest : public SyncFetchTest {
 protected:
  std::shared_ptr<detail::QuoteGetSyncSpi> maintainSpi() const {
    return std::dynamic_pointer_cast<detail::QuoteGetSyncSpi>(platform.maintenance.spi());
  }
  void answer(const ResultStatus& status) {
    platform.calls.onCall("maintain.maintain", [this, status] {
      maintainSpi()->onMaintained(0, codeOf(7), ITimeType::Minute, status);
    });
  }
  ResultStatus maintain(int64 timeoutMs, const std::string& frequency = "1m") {
    return src->maintainDataSync(codeOf(7), frequency, 42, timeoutMs);
  }
};

TEST_F(QuoteMaintainSyncTest, shouldAskOnceWithTheUnitOfTheFrequencyCancelAndRelease) {
  answer({});
  EXPECT_EQ(maintain(1000), ResultStatus());
  EXPECT_EQ(src->maintainDataSync(codeOf(8), "1d", -1, 1000), ResultStatus());
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("maintain.create", "maintain.maintain 1 code=7 type=3 value=42",
                          "quote.cancelRequest 1", "maintain.release", "maintain.create",
                          "maintain.maintain 2 code=8 type=5 value=-1", "quote.cancelRequest 2",
                          "maintain.release"));
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteMaintainSyncTest, shouldReturnTheStatusThatTheCallBackBrought) {
  answer({42, "broken"});
  EXPECT_EQ(maintain(1000), (ResultStatus{42, "broken"}));
}

TEST_F(QuoteMaintainSyncTest, shouldReturnTheRefusalAtOnce) {
  platform.calls.answer("maintain.maintain", {38, "no"});
  EXPECT_EQ(maintain(1000), (ResultStatus{38, "no"}));
  EXPECT_EQ(clockReads, 1);
  EXPECT_EQ(platform.calls.count("quote.cancelRequest 1"), 1);
  EXPECT_EQ(platform.calls.count("maintain.release"), 1);
}

TEST_F(QuoteMaintainSyncTest, shouldPreferTheRefusalToWhatTheCallBackBrought) {
  answer({42, "broken"});
  platform.calls.answer("maintain.maintain", {38, "no"});
  EXPECT_EQ(maintain(1000), (ResultStatus{38, "no"}));
}

TEST_F(QuoteMaintainSyncTest, shouldReturnTheErrorOfABadFrequencyAfterTheWholeTimeout) {
  clockStep = 500;  // Seen: the start, 500, 1000, 1500.
  EXPECT_EQ(maintain(1000, "x"), (ResultStatus{17, gbkFromUtf8("无效KLine周期")}));
  EXPECT_EQ(clockReads, 4);
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("maintain.create", "quote.cancelRequest 1", "maintain.release"));
}

TEST_F(QuoteMaintainSyncTest, shouldReturnCode0AfterTheTimeoutWhenNoAnswerCame) {
  clockStep = 1001;
  EXPECT_EQ(maintain(1000), ResultStatus());
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteMaintainSyncTest, shouldFindTheAnswerAtTheNextSliceThoughItWakesNobody) {
  beforeClockRead(2, [this] {
    onAnotherThread([this] { maintainSpi()->onMaintained(1, codeOf(7), ITimeType::Day, {4, ""}); });
  });
  EXPECT_EQ(maintain(1000), (ResultStatus{4, ""}));
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteMaintainSyncTest, shouldDropALateAnswerSinceItsFunctionIsEmpty) {
  maintain(-1);
  expectDeaf(*maintainSpi());
  onAnotherThread([this] {
    maintainSpi()->onMaintained(1, codeOf(7), ITimeType::Day, {4, "late"});
    maintainSpi()->onMaintained(1, codeOf(7), ITimeType::Day, {4, "again"});
  });
  EXPECT_TRUE(maintainSpi()->isDone());
}

TEST_F(QuoteMaintainSyncTest, shouldHoldTheObjectUntilTheRequestIsCancelled) {
  platform.calls.onCall("quote.cancelRequest", [this] {
    EXPECT_EQ(platform.calls.count("maintain.release"), 0);
    expectDeaf(*maintainSpi());
  });
  maintain(-1);
  EXPECT_EQ(platform.calls.count("maintain.release"), 1);
}

TEST_F(QuoteMaintainSyncTest, shouldReleaseAndLeaveNoCallBackBehindWhenTheServiceThrows) {
  platform.calls.onCall("maintain.maintain", [] { throw std::runtime_error("maintain"); });
  EXPECT_THROW(maintain(1000), std::runtime_error);
  expectDeaf(*maintainSpi());
  EXPECT_EQ(platform.calls.count("maintain.release"), 1);
  EXPECT_EQ(platform.calls.count("quote.cancelRequest 1"), 1);
}

TEST_F(QuoteMaintainSyncTest, shouldWorkWhereThereIsNoMarketData) {
  platform.routes.hasRealtime = false;
  answer({42, "broken"});
  EXPECT_EQ(maintain(1000), (ResultStatus{42, "broken"}));
  EXPECT_EQ(platform.calls.count("quote."), 0);
}

}  // namespace
}  // namespace orvane::support
