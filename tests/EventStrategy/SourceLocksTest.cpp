// Which operations of the sources wait for which mutex: all those that touch what it guards. What
// other threads would break without it is rarely seen to break.

#include <atomic>
#include <memory>
#include <thread>

#include "tests/EventStrategy/ExpectToWait.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingDataNotify.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/RecordingQuoteNotify.h"
#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class SourceLocks : public LibraryTest {
 protected:
  ~SourceLocks() override { platform.forgetSpis(); }
};

TEST_F(SourceLocks, shouldHaveQuotesWaitForTheirBooks) {
  RecordingQuoteNotify notify;
  const auto src = std::make_shared<QuoteSrc>(0);
  src->setNotify(&notify);
  OVDataRange range;
  range.term = 60000;
  expectToWait(TestAccess::dataMutex(*src),
               {[&] { src->subscribeQuote(codeOf(7), 0); },
                [&] { src->subscribeKline(codeOf(7), "1m", 1, 2, 0, 0, 5); },
                [&] { src->subscribeKline(range, 6, 0); },
                [&] { src->isSubscribeQuote(codeOf(7)); }, [&] { src->isSubscribeKline(5); },
                [&] { src->onQuote(quoteOf(7)); }, [&] { src->onTick(5, {}, {}, 0); },
                [&] { src->onKLine(5, {}, {}, 0); }, [&] { src->onKLineProgress(5, {}); },
                [&] { src->onRollover(5, {}); }, [&] { src->unsubscribeQuote(codeOf(7), 0); },
                [&] { src->unsubscribeKline(5); }, [&] { src->release(); }});
  EXPECT_EQ(notify.calls().size(), 5u);
  expectToWait(TestAccess::attachMutex(*src), {[&] { src->setNotify(nullptr); }});
}

TEST_F(SourceLocks, shouldHaveDictionaryDataWaitForItsBooks) {
  RecordingDataNotify notify;
  const auto src = std::make_shared<DataSrc>(0);
  src->setNotify(&notify);
  expectToWait(
      TestAccess::dataMutex(*src),
      {[&] { src->subscribeData({}, 7); }, [&] { src->subscribeDataSnapshot("dic", "key", 0); },
       [&] { src->isSubscribeData(7); }, [&] { src->isSubscribeDataSnapshot("dic", "key"); },
       [&] {
         src->onSnapshot({"key", "dic"}, {});
       },
       [&] { src->onProgress(7, 1, 2); }, [&] { src->onData(7, {}, {}, 0, 0); },
       [&] { src->onDelete(7, {}, 1, 2, 3); },
       [&] { src->unsubscribeDataSnapshot("dic", "key", 0); }, [&] { src->forgetRequest(7); },
       [&] { src->release(); }});
  EXPECT_EQ(notify.take().size(), 4u);
  expectToWait(TestAccess::attachMutex(*src), {[&] { src->setNotify(nullptr); }});
}

TEST_F(SourceLocks, shouldHaveTimersWait) {
  const auto src = std::make_shared<TimerSrc>();
  expectToWait(TestAccess::attachMutex(*src),
               {[&] { src->createTimer(5, 1, 1, 1); }, [&] { src->isTimerExist(5); },
                [&] { src->onTimer(5, 1); }, [&] { src->stopTimer(5); },
                [&] { src->stopAllTimer(); }, [&] { src->setNotify(nullptr); }});
}

TEST_F(SourceLocks, shouldHaveANewTimerWaitAgainOnceTheOldOneOfItsIdIsGone) {
  const auto src = std::make_shared<TimerSrc>();
  src->createTimer(5, 1, 1, 1);
  std::atomic<bool> isGone{false};
  std::atomic<bool> mayGoOn{false};
  platform.calls.onCall("timer.gone", [&] {
    isGone = true;
    while (!mayGoOn) std::this_thread::yield();
  });
  {
    const HostThread host([&] { src->createTimer(5, 2, 2, 2); });
    while (!isGone) std::this_thread::yield();
    TestAccess::attachMutex(*src).lock();
    mayGoOn = true;
    EXPECT_TRUE(host.awaitSleep());
    TestAccess::attachMutex(*src).unlock();
  }
  EXPECT_TRUE(src->isTimerExist(5));
  src->stopAllTimer();
}

TEST_F(SourceLocks, shouldHaveGeneralEventsWaitButForAPublication) {
  const auto src = std::make_shared<GeneralEventSrc>();
  expectToWait(TestAccess::attachMutex(*src),
               {[&] { src->setName("stg"); }, [&] { src->subscribeEvent("t", "n", {}); },
                [&] { src->onGeneralEvent("t", {}, "d"); },
                [&] { src->unsubscribeEvent("t", "n"); }, [&] { src->unsubscribeAllEvent(); },
                [&] { src->release(); }, [&] { src->setNotify(nullptr); }});
}

TEST_F(SourceLocks, shouldHaveIndexesWaitButForAQuestion) {
  const auto src = std::make_shared<IndexSrc>();
  std::list<IndexTradeElement> elements;
  expectToWait(TestAccess::attachMutex(*src),
               {[&] { src->setName("stg"); }, [&] { src->subscribeElementChange(codeOf(7)); },
                [&] { src->onElementChange(codeOf(7), elements); },
                [&] { src->unsubscribeElementChange(codeOf(7)); }, [&] { src->unsubscribeAll(); },
                [&] { src->release(); }, [&] { src->setNotify(nullptr); }});
}

class TradeSrcLocks : public TradeSrcTest {};

TEST_F(TradeSrcLocks, shouldWaitInEveryOperationButThePlainForwards) {
  TradeSrc& src = *source;
  std::list<Order> orders;
  expectToWait(TestAccess::attachMutex(src),
               {[&] { src.setName("stg"); },
                [&] { src.setNotifyQuick(true); },
                [&] { src.setCreateSourceTradeInfo({}); },
                [&] { src.setRelatedCodeId({}); },
                [&] { src.resetCache(); },
                [&] { src.subscribeTrade(account); },
                [&] { src.addSubscribeTradeByCreateSource("own", "other"); },
                [&] { src.addSubscribeTradeByCreateId("own", 1); },
                [&] { src.onRelatedCodeIdChange({}); },
                [&] { src.sendOrder({}, orders); },
                [&] { tellStatus(16); },
                [&] { src.onRtnTrade({}); },
                [&] { src.onRtnOrder({}); },
                [&] { src.onRtnPosition({}); },
                [&] { src.onRtnPositionChange({}); },
                [&] { src.onRtnSourcePosition({}); },
                [&] { src.onRtnCapital({}); },
                [&] { src.onCondDetail(1, {}, {}); },
                [&] { src.unsubscribeTrade(account); },
                [&] { src.release(); },
                [&] { src.setNotify(nullptr); }});
  EXPECT_EQ(notify.take().size(), 6u);
}

}  // namespace
}  // namespace orvane::support
