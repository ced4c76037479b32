// Blocking fetches: what is asked of the service, what comes back, and what reaches a waiter that
// has left.

#include "EventStrategy/QuoteGetSync.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/EventStrategy/SyncFetchTest.h"

namespace orvane::support {
namespace {

class QuoteGetSyncTest : public SyncFetchTest {};

TEST_F(QuoteGetSyncTest, shouldAskForEachRangeInOrderAndThenCancelEachRequest) {
  answerAtOnce();
  OVDataRange range = rangeOf(7, 120000);
  range.mode = 1;
  range.beginTime = 5;
  range.endTime = 6;
  range.flags = 3;
  const auto bars = src->fetchBarsSync({range, rangeOf(8)}, 1000);
  EXPECT_EQ(bars.size(), 2u);
  EXPECT_THAT(
      platform.calls.entries(),
      ElementsAre("common.dataRangeToQuery 120000 mode=1 begin=5 end=6 flags=3",
                  "quote.subscribeBars 1 code=7 term=(3,2) begin=5 end=6 count=2147483647 flags=3",
                  "common.dataRangeToQuery 60000 mode=0 begin=0 end=0 flags=0",
                  "quote.subscribeBars 2 code=8 term=(3,1) begin=0 end=0 count=2147483647 flags=0",
                  "quote.cancelRequest 1", "quote.cancelRequest 2"));
}

TEST_F(QuoteGetSyncTest, shouldNotWaitForAnEmptyList) {
  EXPECT_TRUE(src->fetchBarsSync({}, 1000).empty());
  EXPECT_EQ(clockReads, 1);
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(QuoteGetSyncTest, shouldNotWaitWhenAllThreeRangesAreRefusedAtOnce) {
  platform.calls.answer("quote.subscribeBars", {22, "no"});
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7), rangeOf(8), rangeOf(9)}, 1000).empty());
  EXPECT_EQ(clockReads, 1);
  EXPECT_THAT(
      platform.calls.entries("quote.cancelRequest"),
      ElementsAre("quote.cancelRequest 1", "quote.cancelRequest 2", "quote.cancelRequest 3"));
}

TEST_F(QuoteGetSyncTest, shouldAnswerTheOthersWhenOneRangeIsRefused) {
  platform.calls.answer("quote.subscribeBars", {22, "no"});
  onRequest([this](int id) {
    platform.calls.answer("quote.subscribeBars", {});  // Of the next call.
    if (id == 2) spiOf(id)->onKLine(id, {barOf(2)}, {}, kLastBatchFlag);
  });
  const auto bars = src->fetchBarsSync({rangeOf(7), rangeOf(8)}, 1000);
  EXPECT_EQ(clockReads, 1);
  EXPECT_EQ(bars.size(), 1u);
  EXPECT_TRUE(bars.contains(codeOf(8)));
}

TEST_F(QuoteGetSyncTest, shouldHoldOnlyTheSecondOfTwoBatchesWhenTheFirstHasNoBit16) {
  onRequest([this](int id) {
    spiOf(id)->onKLine(id, {barOf(1), barOf(2)}, {}, 0);
    spiOf(id)->onKLine(id, {barOf(3)}, {}, 1 | 2 | 4 | 8 | 32);
    spiOf(id)->onKLine(id, {barOf(4), barOf(5)}, {}, kLastBatchFlag);
  });
  const auto bars = src->fetchBarsSync({rangeOf(7)}, 1000);
  ASSERT_EQ(bars.size(), 1u);
  EXPECT_EQ(bars.at(codeOf(7)), (std::vector<IKLine>{barOf(4), barOf(5)}));
}

TEST_F(QuoteGetSyncTest, shouldNotTakeABatchWithoutBit16ForTheEnd) {
  onRequest([this](int id) { spiOf(id)->onKLine(id, {barOf(1)}, {}, 8 | 32); });
  clockStep = 1000;
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, 999).empty());
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteGetSyncTest, shouldTakeTheLastBatchAmongOtherBitsWithAnErrorStatusAndAnyId) {
  onRequest([this](int id) {
    spiOf(id)->onKLine(99, {barOf(1)}, {4, "late"}, kLastBatchFlag | 3);
  });
  const auto bars = src->fetchBarsSync({rangeOf(7)}, 1000);
  EXPECT_EQ(bars.at(codeOf(7)), (std::vector<IKLine>{barOf(1)}));
}

TEST_F(QuoteGetSyncTest, shouldHaveAnEntryForAnEmptyAnswer) {
  onRequest([this](int id) { spiOf(id)->onKLine(id, {}, {}, kLastBatchFlag); });
  const auto bars = src->fetchBarsSync({rangeOf(7)}, 1000);
  ASSERT_EQ(bars.size(), 1u);
  EXPECT_TRUE(bars.begin()->second.empty());
}

TEST_F(QuoteGetSyncTest, shouldNameTheCodeOfTheRange) {
  answerAtOnce();
  const auto bars = src->fetchBarsSync({rangeOf(7)}, 1000);
  EXPECT_EQ(bars.begin()->first.code, "C7");
}

TEST_F(QuoteGetSyncTest, shouldHaveOneEntryFromTheLaterEndWhenTwoRangesHaveOneCode) {
  for (const auto& [first, second] : {std::pair{1, 2}, std::pair{4, 3}}) {
    onRequest([&, first = first, second = second](int id) {
      if (id != std::max(first, second)) return;
      spiOf(first)->onKLine(first, {barOf(10), barOf(11)}, {}, kLastBatchFlag);
      spiOf(second)->onKLine(second, {barOf(20)}, {}, kLastBatchFlag);
    });
    const auto bars = src->fetchBarsSync({rangeOf(7), rangeOf(7, 120000)}, 1000);
    ASSERT_EQ(bars.size(), 1u);
    EXPECT_EQ(bars.at(codeOf(7)), (std::vector<IKLine>{barOf(20)}));
  }
}

TEST_F(QuoteGetSyncTest, shouldKeepTheSecondOfTwoLastBatches) {
  onRequest([this](int id) {
    spiOf(id)->onKLine(id, {barOf(1)}, {}, kLastBatchFlag);
    spiOf(id)->onKLine(id, {barOf(2)}, {}, kLastBatchFlag);
  });
  EXPECT_EQ(src->fetchBarsSync({rangeOf(7)}, 1000).at(codeOf(7)), (std::vector<IKLine>{barOf(2)}));
}

TEST_F(QuoteGetSyncTest, shouldEndATickRequestByItsLastBatchWithoutAnEntry) {
  onRequest([this](int id) {
    spiOf(id)->onTick(id, {quoteOf(7)}, {}, 0);
    EXPECT_FALSE(syncSpiOf(id)->isDone());
    spiOf(id)->onTick(id, {quoteOf(7)}, {4, "late"}, kLastBatchFlag);
    EXPECT_TRUE(syncSpiOf(id)->isDone());
  });
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7, 0)}, 1000).empty());
  EXPECT_EQ(clockReads, 1);
}

TEST_F(QuoteGetSyncTest, shouldIgnoreAllOtherCallBacks) {
  onRequest([this](int id) {
    const auto spi = syncSpiOf(id);
    spi->onQuote(quoteOf(7));
    spi->onTimesale(id);
    spi->onDeallist(id);
    spi->onKLineProgress(id, {});
    spi->onRollover(id, {});
    static_cast<QuoteSpi&>(*spi).onDisconnected();
    spi->onMaintainReserved1();
    spi->onMaintainReserved2();
    spi->onMaintainReserved3();
    spi->onMaintainReserved5();
    EXPECT_FALSE(spi->isDone());
  });
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, -1).empty());
}

// Time.

TEST_F(QuoteGetSyncTest, shouldGoOnWhileTheDifferenceIsNotAboveTheTimeout) {
  clockStep = 500;  // Seen: the start, 500, 1000, 1500.
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, 1000).empty());
  EXPECT_EQ(clockReads, 4);
}

TEST_F(QuoteGetSyncTest, shouldEndWhenTheWallClockWasSetBackByMoreThanTheTimeout) {
  clockStep = -1001;
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, 1000).empty());
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteGetSyncTest, shouldLookOnceMoreBeforeItEndsByATimeoutOf0) {
  // At a difference of 0 it waits one slice; what comes in it is found.
  beforeClockRead(2, [this] { spiOf(1)->onKLine(1, {barOf(1)}, {}, kLastBatchFlag); });
  EXPECT_EQ(src->fetchBarsSync({rangeOf(7)}, 0).size(), 1u);
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteGetSyncTest, shouldNotWaitAtAllWithANegativeTimeout) {
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, -1).empty());
  EXPECT_EQ(clockReads, 2);
  EXPECT_THAT(platform.calls.entries("quote.cancelRequest"), ElementsAre("quote.cancelRequest 1"));
}

TEST_F(QuoteGetSyncTest, shouldFindAnEndThatWokeNobodyAtTheNextSlice) {
  beforeClockRead(2, [this] { syncSpiOf(1)->setDone(); });
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, 1000).empty());
  EXPECT_EQ(clockReads, 2);
}

TEST_F(QuoteGetSyncTest, shouldReturnAPartialMapWhenTheTimeoutIsShorterThanAnAnswersDelay) {
  onRequest([this](int id) {
    if (id == 2) spiOf(id)->onKLine(id, {barOf(2)}, {}, kLastBatchFlag);
  });
  clockStep = 1001;
  const auto bars = src->fetchBarsSync({rangeOf(7), rangeOf(8)}, 1000);
  ASSERT_EQ(bars.size(), 1u);
  EXPECT_EQ(bars.at(codeOf(8)), (std::vector<IKLine>{barOf(2)}));
  EXPECT_EQ(platform.calls.count("quote.cancelRequest"), 2);
}

// Call-backs to a waiter that has left.

TEST_F(QuoteGetSyncTest, shouldDropALateBatchOfAnotherThreadSinceItsFunctionIsEmpty) {
  src->fetchBarsSync({rangeOf(7)}, -1);
  expectDeaf(1);
  onAnotherThread([this] {
    spiOf(1)->onKLine(1, {barOf(1)}, {}, kLastBatchFlag);
    spiOf(1)->onTick(1, {quoteOf(7)}, {}, kLastBatchFlag);
    syncSpiOf(1)->onMaintained(1, codeOf(7), ITimeType::Day, {});
  });
  EXPECT_TRUE(syncSpiOf(1)->isDone());
}

TEST_F(QuoteGetSyncTest, shouldDropACallBackFromWithinTheCancel) {
  platform.calls.onCall("quote.cancelRequest", [this] {
    expectDeaf(1);
    spiOf(1)->onKLine(1, {barOf(1)}, {}, kLastBatchFlag);
  });
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7)}, -1).empty());
  EXPECT_EQ(platform.calls.count("quote.cancelRequest"), 1);
}

TEST_F(QuoteGetSyncTest, shouldCancelAndForgetRequestByRequest) {
  int cancels = 0;
  platform.calls.onCall("quote.cancelRequest", [&] {
    expectDeaf(++cancels);
    EXPECT_EQ(TestAccess::hasBarsCallback(*syncSpiOf(2)), cancels == 1);
  });
  src->fetchBarsSync({rangeOf(7), rangeOf(8)}, -1);
  EXPECT_EQ(cancels, 2);
}

TEST_F(QuoteGetSyncTest, shouldTakeAnAnswerThatComesWhileAnEarlierRequestIsCancelled) {
  platform.calls.onCall("quote.cancelRequest", [this] {
    if (platform.calls.count("quote.cancelRequest") == 1)
      onAnotherThread([this] { spiOf(2)->onKLine(2, {barOf(2)}, {}, kLastBatchFlag); });
  });
  const auto bars = src->fetchBarsSync({rangeOf(7), rangeOf(8)}, -1);
  ASSERT_EQ(bars.size(), 1u);
  EXPECT_EQ(bars.at(codeOf(8)), (std::vector<IKLine>{barOf(2)}));
}

TEST_F(QuoteGetSyncTest, shouldDropACallBackAfterTheOwnerIsGone) {
  src->fetchBarsSync({rangeOf(7)}, -1);
  src.reset();
  EXPECT_FALSE(syncSpiOf(1)->isDone());
  onAnotherThread([this] { spiOf(1)->onKLine(1, {barOf(1)}, {}, kLastBatchFlag); });
  EXPECT_TRUE(syncSpiOf(1)->isDone());
}

TEST_F(QuoteGetSyncTest, shouldLeaveTheSpiToTheServiceAlone) {
  src->fetchBarsSync({rangeOf(7)}, -1);
  const std::weak_ptr<QuoteSpi> spi = spiOf(1);
  EXPECT_EQ(spi.use_count(), 1);
  platform.forgetSpis();
  EXPECT_TRUE(spi.expired());
}

TEST_F(QuoteGetSyncTest, shouldTellTheServiceThatSomebodyWaits) {
  onRequest([this](int id) {
    EXPECT_NE(std::dynamic_pointer_cast<IBlockingReceiver>(spiOf(id)), nullptr);
  });
  src->fetchBarsSync({rangeOf(7)}, -1);
  EXPECT_EQ(platform.calls.count("quote.subscribeBars"), 1);
}

TEST_F(QuoteGetSyncTest, shouldKeepNoTraceInTheSourcesBooks) {
  onRequest([this](int id) {
    EXPECT_FALSE(src->isSubscribeKline(id));
    EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
    EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
  });
  src->fetchBarsSync({rangeOf(7)}, -1);
  EXPECT_TRUE(TestAccess::requests(*src).empty());
}

// A service that throws.

TEST_F(QuoteGetSyncTest, shouldLeaveNoCallBackBehindWhenTheSecondRequestThrows) {
  onRequest([](int id) {
    if (id == 2) throw std::runtime_error("request 2");
  });
  EXPECT_THROW(src->fetchBarsSync({rangeOf(7), rangeOf(8), rangeOf(9)}, 1000), std::runtime_error);
  expectDeaf(1);
  expectDeaf(2);
  onAnotherThread([this] { spiOf(1)->onKLine(1, {barOf(1)}, {}, kLastBatchFlag); });
  EXPECT_THAT(platform.calls.entries("quote.cancelRequest"),
              ElementsAre("quote.cancelRequest 1", "quote.cancelRequest 2"));
}

TEST_F(QuoteGetSyncTest, shouldLeaveNoCallBackBehindWhenACancelThrows) {
  platform.calls.onCall("quote.cancelRequest", [this] {
    const int call = platform.calls.count("quote.cancelRequest");
    throw std::runtime_error("cancel " + std::to_string(call));
  });
  EXPECT_EQ(thrownBy([this] {
              src->fetchBarsSync({rangeOf(7), rangeOf(8), rangeOf(9)}, -1);
            }),
            "cancel 1");
  for (const int id : {1, 2, 3}) expectDeaf(id);
  EXPECT_THAT(
      platform.calls.entries("quote.cancelRequest"),
      ElementsAre("quote.cancelRequest 1", "quote.cancelRequest 2", "quote.cancelRequest 3"));
}

TEST_F(QuoteGetSyncTest, shouldLeaveNoCallBackBehindWhenTheClockThrows) {
  beforeClockRead(2, [] { throw std::runtime_error("clock"); });
  EXPECT_THROW(src->fetchBarsSync({rangeOf(7)}, 1000), std::runtime_error);
  expectDeaf(1);
  EXPECT_EQ(platform.calls.count("quote.cancelRequest"), 1);
}

TEST_F(QuoteGetSyncTest, shouldCountEveryRangeAsRefusedWhereThereIsNoMarketData) {
  platform.routes.hasRealtime = false;
  EXPECT_TRUE(src->fetchBarsSync({rangeOf(7), rangeOf(8)}, 1000).empty());
  EXPECT_EQ(clockReads, 1);
}

}  // namespace
}  // namespace orvane::support
