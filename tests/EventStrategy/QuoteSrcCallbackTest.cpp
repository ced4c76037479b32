// What a quote source does with the service's call-backs, and which lock is held when.

#include <future>
#include <latch>
#include <memory>
#include <thread>

#include "EventStrategy/QuoteSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingQuoteNotify.h"

namespace orvane::support {
namespace {

class QuoteSrcCallback : public LibraryTest {
 protected:
  QuoteSrcCallback() { src->setNotify(&notify); }
  ~QuoteSrcCallback() override { src->setNotify(nullptr); }

  void subscribeBars(int requestId, int64 codeId = 7) {
    src->subscribeKline(codeOf(codeId), "1m", 10, 20, 0, 0, requestId);
  }

  RecordingQuoteNotify notify;
  std::shared_ptr<QuoteSrc> src = std::make_shared<QuoteSrc>(0);
};

TEST_F(QuoteSrcCallback, shouldPassAQuoteOfASubscribedCodeOn) {
  src->subscribeQuote(codeOf(7), 0);
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  EXPECT_THAT(notify.calls(), ElementsAre("onQuote 7"));
}

TEST_F(QuoteSrcCallback, shouldDropAQuoteOfACodeWithCount0) {
  src->onQuote(quoteOf(7));
  src->subscribeQuote(codeOf(7), 0);
  const auto spi = platform.quotes().quoteSpi(7);
  src->unsubscribeQuote(codeOf(7), 0);
  spi->onQuote(quoteOf(7));
  EXPECT_THAT(notify.calls(), IsEmpty());
}

TEST_F(QuoteSrcCallback, shouldPassBatchesOnWithTheCodeOfTheQuery) {
  subscribeBars(5);
  const auto spi = platform.quotes().requestSpi(5);
  spi->onKLine(5, {barOf(1), barOf(2)}, {4, "late"}, 16);
  spi->onTick(5, {quoteOf(1)}, {}, 3);
  spi->onKLineProgress(5, {42, 0, 0, 0, {}});
  spi->onRollover(5, {43, {}});
  EXPECT_THAT(notify.calls(), ElementsAre("onKLine 5 code=7 size=2 status=4late flag=16",
                                          "onTick 5 code=7 size=1 status=0 flag=3",
                                          "onKLineProgress 5 code=7 42", "onRollover 5 code=7 43"));
}

TEST_F(QuoteSrcCallback, shouldDropABatchAfterTheUnsubscribeOfItsId) {
  subscribeBars(5);
  const auto spi = platform.quotes().requestSpi(5);
  src->unsubscribeKline(5);
  spi->onKLine(5, {barOf(1)}, {}, 0);
  spi->onTick(5, {quoteOf(1)}, {}, 0);
  spi->onKLineProgress(5, {});
  spi->onRollover(5, {});
  EXPECT_THAT(notify.calls(), IsEmpty());
}

TEST_F(QuoteSrcCallback, shouldKeepARequestAfterItsLastBatch) {
  subscribeBars(5);
  src->onKLine(5, {barOf(1)}, {}, kLastBatchFlag);
  src->onKLine(5, {barOf(2)}, {}, 0);
  EXPECT_EQ(notify.calls().size(), 2u);
  EXPECT_TRUE(src->isSubscribeKline(5));
}

TEST_F(QuoteSrcCallback, shouldDropEverythingWhileDetached) {
  src->subscribeQuote(codeOf(7), 0);
  subscribeBars(5);
  src->setNotify(nullptr);
  src->onQuote(quoteOf(7));
  src->onKLine(5, {barOf(1)}, {}, 0);
  src->onTick(5, {}, {}, 0);
  src->onKLineProgress(5, {});
  src->onRollover(5, {});
  EXPECT_THAT(notify.calls(), IsEmpty());
  src->setNotify(&notify);
  src->onQuote(quoteOf(7));
  EXPECT_THAT(notify.calls(), ElementsAre("onQuote 7"));
}

TEST_F(QuoteSrcCallback, shouldHandTheServiceASharedPointerToItself) {
  src->subscribeQuote(codeOf(7), 0);
  subscribeBars(5);
  EXPECT_EQ(platform.quotes().quoteSpi(7).get(), static_cast<QuoteSpi*>(src.get()));
  EXPECT_EQ(platform.quotes().requestSpi(5).get(), static_cast<QuoteSpi*>(src.get()));
  EXPECT_GE(src.use_count(), 3);
}

// Locks.

TEST_F(QuoteSrcCallback, shouldHoldNoLockAcrossAnyServiceCall) {
  int checks = 0;
  const auto check = [&] {
    ++checks;
    EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
    EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
  };
  for (const char* operation :
       {"quote.subscribeQuote", "quote.unsubscribeQuote", "quote.subscribeBars",
        "quote.cancelRequest", "quote.unsubscribeSpi", "quote.getQuote"})
    platform.calls.onCall(operation, check);
  src->subscribeQuote(codeOf(7), 0);
  src->unsubscribeQuote(codeOf(7), 0);
  subscribeBars(5);
  src->unsubscribeKline(5);
  subscribeBars(6);
  IDepthMarketData quote;
  src->getQuote(codeOf(7), quote, 0);
  src->release();
  EXPECT_EQ(checks, 8);
}

TEST_F(QuoteSrcCallback, shouldHoldTheNotifyMutexAloneWhileItCallsTheNotify) {
  src->subscribeQuote(codeOf(7), 0);
  subscribeBars(5);
  int checks = 0;
  notify.hook = [&] {
    ++checks;
    EXPECT_FALSE(TestAccess::notifyMutexIsFree(*src));
    EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
  };
  src->onQuote(quoteOf(7));
  src->onKLine(5, {}, {}, 0);
  src->onTick(5, {}, {}, 0);
  src->onKLineProgress(5, {});
  src->onRollover(5, {});
  EXPECT_EQ(checks, 5);
}

TEST_F(QuoteSrcCallback, shouldBlockADetachUntilTheCallBackInProgressHasReturned) {
  src->subscribeQuote(codeOf(7), 0);
  std::latch inside(1);
  std::latch leave(1);
  std::atomic<bool> returned{false};
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread service([&] { src->onQuote(quoteOf(7)); });
  inside.wait();
  std::promise<bool> detached;
  std::thread host([&] {
    src->setNotify(nullptr);
    detached.set_value(returned);
  });
  // The host waits for the mutex now or will: either way it must see the call-back's end.
  leave.count_down();
  EXPECT_TRUE(detached.get_future().get());
  service.join();
  host.join();
  EXPECT_EQ(notify.calls().size(), 1u);
}

TEST_F(QuoteSrcCallback, shouldCountSubscribersRightUnderManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 300;
  std::latch go(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      go.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        src->subscribeQuote(codeOf(7), 0);
        src->onQuote(quoteOf(7));
        subscribeBars(100 + i);
        src->onKLine(100 + i, {barOf(1)}, {}, 0);
        src->unsubscribeKline(100 + i);
        src->unsubscribeQuote(codeOf(7), 0);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(TestAccess::refCounts(*src).empty());
  EXPECT_TRUE(TestAccess::requests(*src).empty());
  EXPECT_EQ(notify.calls().size(), 2u * kThreads * kRounds);
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"),
            platform.calls.count("quote.unsubscribeQuote"));
}

}  // namespace
}  // namespace orvane::support
