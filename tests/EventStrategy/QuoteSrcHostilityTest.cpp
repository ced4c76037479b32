// The quote source's worst moments, one by one: a service that calls back at once, late, twice,
// from many threads, while it is told to stop, and that throws.

#include <stdexcept>

#include "EventStrategy/QuoteSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/DetachRace.h"
#include "tests/EventStrategy/model/QuoteKeeper.h"

namespace orvane::support {
namespace {

using ::testing::SizeIs;

class QuoteSrcHostility : public LibraryTest {
 protected:
  QuoteSrcHostility() { src->setNotify(&owner); }
  ~QuoteSrcHostility() override {
    for (const char* operation :
         {"quote.subscribeQuote", "quote.unsubscribeQuote", "quote.subscribeBars",
          "quote.cancelRequest", "quote.unsubscribeSpi", "code.codeIdOf"})
      platform.calls.onCall(operation, {});
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  void request(int id, int64 code = 7) {
    src->subscribeKline(codeOf(code), "1m", 10, 20, 0, 0, id);
  }
  void throwFrom(const char* operation) {
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  }

  /// Every call-back that there is, for code 7 and request 5.
  static void callAll(QuoteSpi& spi) {
    spi.onQuote(quoteOf(7));
    spi.onTick(5, {quoteOf(7)}, {}, 0);
    spi.onKLine(5, {barOf(1)}, {}, kLastBatchFlag);
    spi.onKLineProgress(5, {});
    spi.onRollover(5, {});
    spi.onTimesale(5);
    spi.onDeallist(5);
    spi.onDisconnected();
  }
  static constexpr std::size_t kHeard = 5;  ///< So many of `callAll` reach an owner.

  QuoteKeeper owner;
  std::shared_ptr<QuoteSrc> src = std::make_shared<QuoteSrc>(0);
};

TEST_F(QuoteSrcHostility, shouldDeliverWhatTheServiceCallsBackInsideTheSubscribeItself) {
  platform.calls.onCall("quote.subscribeQuote", [this] {
    src->onQuote(quoteOf(7));
    onAnotherThread([this] { src->onQuote(quoteOf(7)); });
  });
  platform.calls.onCall("quote.subscribeBars", [this] {
    src->onKLine(5, {barOf(1)}, {}, 0);
    onAnotherThread([this] { src->onTick(5, {quoteOf(7)}, {}, 0); });
  });
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  EXPECT_THAT(owner.take(), SizeIs(4));
}

TEST_F(QuoteSrcHostility, shouldDeliverACallBackThatComesTwiceTwice) {
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  for (int i = 0; i < 2; ++i) onAnotherThread([this] { callAll(*platform.quotes().quoteSpi(7)); });
  EXPECT_THAT(owner.take(), SizeIs(2 * kHeard));
}

TEST_F(QuoteSrcHostility, shouldGiveALateBatchTheCodeOfTheRequestThatHasTheIdNow) {
  request(5, 7);
  src->unsubscribeKline(5);
  request(5, 8);
  onAnotherThread([this] { src->onKLine(5, {barOf(1)}, {}, 0); });
  EXPECT_THAT(owner.take(), ElementsAre("request 5 of 8C: bars flags=0 status=0, bar 1"));
}

TEST_F(QuoteSrcHostility, shouldDropWhatComesInsideTheLastUnsubscribeAndAfterIt) {
  src->subscribeQuote(codeOf(7), 0);
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  src->unsubscribeQuote(codeOf(7), 0);
  const auto late = [this] { onAnotherThread([this] { callAll(*src); }); };
  platform.calls.onCall("quote.unsubscribeQuote", late);
  src->unsubscribeQuote(codeOf(7), 0);
  EXPECT_THAT(owner.take(), SizeIs(kHeard - 1));  // The request still stands.
  platform.calls.onCall("quote.cancelRequest", late);
  src->unsubscribeKline(5);
  for (const auto& spi : platform.quotes().spis()) callAll(*spi);
  EXPECT_THAT(owner.take(), IsEmpty());
}

TEST_F(QuoteSrcHostility, shouldSubscribeAnewForWhoComesWhileTheLastOneLeaves) {
  src->subscribeQuote(codeOf(7), 1);
  platform.calls.clear();
  platform.calls.onCall("quote.unsubscribeQuote",
                        [this] { onAnotherThread([this] { src->subscribeQuote(codeOf(7), 3); }); });
  src->unsubscribeQuote(codeOf(7), 2);
  EXPECT_THAT(platform.calls.entries("quote."),
              ElementsAre("quote.unsubscribeQuote 7 flags=2", "quote.subscribeQuote 7 flags=3"));
  EXPECT_TRUE(src->isSubscribeQuote(codeOf(7)));
}

TEST_F(QuoteSrcHostility, shouldDropWhatComesInsideARelease) {
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  int calls = 0;
  const auto late = [&] {
    ++calls;
    callAll(*src);
    onAnotherThread([this] { callAll(*src); });
  };
  platform.calls.onCall("quote.cancelRequest", late);
  platform.calls.onCall("quote.unsubscribeSpi", late);
  src->release();
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(owner.take(), IsEmpty());
}

TEST_F(QuoteSrcHostility, shouldKeepWhatIsSubscribedWhileItReleases) {
  request(5);
  platform.calls.onCall("quote.cancelRequest", [this] {
    onAnotherThread([this] {
      src->subscribeQuote(codeOf(8), 0);
      request(6, 8);
    });
  });
  src->release();
  EXPECT_FALSE(src->isSubscribeKline(5));
  EXPECT_TRUE(src->isSubscribeKline(6));
  EXPECT_TRUE(src->isSubscribeQuote(codeOf(8)));
}

TEST_F(QuoteSrcHostility, shouldLiveUntilTheServiceLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  const std::weak_ptr<QuoteSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<QuoteSrc>(0);
  ASSERT_FALSE(watched.expired());
  for (const auto& spi : platform.quotes().spis()) callAll(*spi);
  EXPECT_THAT(owner.take(), IsEmpty());
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
}

TEST_F(QuoteSrcHostility, shouldLetAnExceptionOfTheServiceThroughWithItsBooksWrittenAndNoLockHeld) {
  for (const char* operation : {"quote.subscribeQuote", "quote.unsubscribeQuote",
                                "quote.subscribeBars", "quote.cancelRequest"})
    throwFrom(operation);
  EXPECT_THROW(src->subscribeQuote(codeOf(7), 0), std::runtime_error);
  EXPECT_TRUE(src->isSubscribeQuote(codeOf(7)));
  EXPECT_THROW(src->unsubscribeQuote(codeOf(7), 0), std::runtime_error);
  EXPECT_FALSE(src->isSubscribeQuote(codeOf(7)));
  EXPECT_THROW(request(5), std::runtime_error);
  EXPECT_TRUE(src->isSubscribeKline(5));
  EXPECT_THROW(src->unsubscribeKline(5), std::runtime_error);
  EXPECT_FALSE(src->isSubscribeKline(5));
  EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
  EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
}

TEST_F(QuoteSrcHostility, shouldLeaveNoTraceOfATextThatTheCodeServiceThrowsAt) {
  throwFrom("code.codeIdOf");
  const std::string text = "IF2101";
  EXPECT_THROW(src->subscribeQuote(text, 0), std::runtime_error);
  EXPECT_THROW(src->subscribeKline(text, "1m", 1, 0, 5, 0), std::runtime_error);
  EXPECT_TRUE(TestAccess::refCounts(*src).empty());
  EXPECT_TRUE(TestAccess::requests(*src).empty());
  EXPECT_EQ(platform.calls.count("quote."), 0);
}

TEST_F(QuoteSrcHostility, shouldFreeItsMutexWhenItsOwnerThrows) {
  request(5);
  owner.hook = [] { throw std::runtime_error("no memory"); };
  EXPECT_THROW(src->onKLineProgress(5, {}), std::runtime_error);
  EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
  owner.hook = {};
}

TEST_F(QuoteSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  src->subscribeQuote(codeOf(7), 0);
  request(5);
  DetachRace race;
  race.callBack = [spi = platform.quotes().quoteSpi(7)] { callAll(*spi); };
  race.work = [this] {
    request(5);
    src->subscribeQuote(codeOf(7), 0);
    src->unsubscribeQuote(codeOf(7), 0);
    src->unsubscribeKline(5);
  };
  race.detach = [this] { src->setNotify(nullptr); };
  race.leave = [this] {
    src->release();
    src = std::make_shared<QuoteSrc>(0);
    platform.forgetSpis();
  };
  EXPECT_EQ(heardAfterDetach(owner.hook, race), 0);
}

}  // namespace
}  // namespace orvane::support
