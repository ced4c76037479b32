#include "EventStrategy/IndexSrc.h"

#include <latch>
#include <thread>

#include "shared/BaseInformation.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/support/HostThread.h"

namespace orvane::support {
namespace {

class IndexSrcTest : public LibraryTest {
 protected:
  IndexSrcTest() {
    auto tables = std::make_shared<BaseInformationMap>();
    tables->markets[1] = {"SSE"};
    gBaseInformationMap = tables;
    src->setName("stg");
    src->setNotify(&notify);
    platform.calls.clear();
    logs.clear();
  }
  ~IndexSrcTest() override {
    src->setNotify(nullptr);
    platform.forgetSpis();
    gBaseInformationMap.reset();
  }

  std::vector<std::string> indexCalls() const { return platform.calls.entries("index."); }
  std::vector<std::string> eventLines() const { return logs.messages("Event"); }
  std::set<ICodeID> codes() { return TestAccess::codes(*src); }

  void change(const ICodeID& code) {
    std::list<IndexTradeElement> elements = {{codeOf(3), 30}, {codeOf(4), 40}};
    src->onElementChange(code, elements);
  }

  RecordingEventNotify notify;
  std::shared_ptr<IndexSrc> src = std::make_shared<IndexSrc>();
};

// Subscribing.

TEST_F(IndexSrcTest, shouldLogASubscribeRememberTheCodeAndTellTheService) {
  src->subscribeElementChange(codeOf(7, "000300"));
  EXPECT_THAT(eventLines(), ElementsAre("[DEBUG] Event stg,subscribeElementChange,000300.SSE"));
  EXPECT_EQ(codes(), (std::set<ICodeID>{codeOf(7)}));
  EXPECT_THAT(indexCalls(), ElementsAre("index.subscribeElementChange 7"));
  EXPECT_EQ(platform.indexes.spi().get(), static_cast<IndexTradeSpi*>(src.get()));
}

TEST_F(IndexSrcTest, shouldCallTheServiceTwiceButHoldOneEntryForTheSameCodeTwice) {
  src->subscribeElementChange(codeOf(7, "A"));
  src->subscribeElementChange(codeOf(7, "A"));
  EXPECT_EQ(platform.calls.count("index.subscribeElementChange"), 2);
  EXPECT_EQ(codes().size(), 1u);
}

TEST_F(IndexSrcTest, shouldTakeTwoRecordsOfOneIdAndDifferentTextsForOneCode) {
  src->subscribeElementChange(codeOf(7, "A"));
  src->subscribeElementChange(codeOf(7, "B"));
  ASSERT_EQ(codes().size(), 1u);
  EXPECT_EQ(codes().begin()->code, "A");
  change(codeOf(7, "C"));
  EXPECT_THAT(notify.take(), ElementsAre("7 C [3=30,4=40,]"));
  src->unsubscribeElementChange(codeOf(7, "D"));
  EXPECT_TRUE(codes().empty());
}

TEST_F(IndexSrcTest, shouldLogAnUnsubscribeTellTheServiceAndForgetTheCode) {
  src->subscribeElementChange(codeOf(7, "A"));
  src->subscribeElementChange(codeOf(8, "B"));
  platform.calls.clear();
  logs.clear();
  src->unsubscribeElementChange(codeOf(7, "A"));
  EXPECT_THAT(eventLines(), ElementsAre("[DEBUG] Event stg,unsubscribeElementChange,A.SSE"));
  EXPECT_THAT(indexCalls(), ElementsAre("index.unsubscribeElementChange 7"));
  EXPECT_EQ(codes(), (std::set<ICodeID>{codeOf(8)}));
}

TEST_F(IndexSrcTest, shouldTellTheServiceAlsoForAnUnsubscribeOfACodeNeverSubscribed) {
  src->unsubscribeElementChange(codeOf(7, "A"));
  EXPECT_THAT(indexCalls(), ElementsAre("index.unsubscribeElementChange 7"));
  EXPECT_TRUE(codes().empty());
}

TEST_F(IndexSrcTest, shouldEndEachCodeInOrderOnUnsubscribeAllUnderItsTag) {
  for (const int64 id : {8, 7}) src->subscribeElementChange(codeOf(id, "C" + std::to_string(id)));
  platform.calls.clear();
  logs.clear();
  src->unsubscribeAll();
  EXPECT_THAT(eventLines(),
              ElementsAre("[DEBUG] Event stg,unsubscribeAll,unsubscribeElementChange,C7.SSE",
                          "[DEBUG] Event stg,unsubscribeAll,unsubscribeElementChange,C8.SSE"));
  EXPECT_THAT(indexCalls(),
              ElementsAre("index.unsubscribeElementChange 7", "index.unsubscribeElementChange 8"));
  EXPECT_TRUE(codes().empty());
}

TEST_F(IndexSrcTest, shouldLogNothingAndCallNothingForUnsubscribeAllOfAnEmptySet) {
  src->unsubscribeAll();
  src->release();
  EXPECT_THAT(logs.messages(), IsEmpty());
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(IndexSrcTest, shouldEndEachCodeInOrderOnReleaseUnderItsTag) {
  for (const int64 id : {8, 7}) src->subscribeElementChange(codeOf(id, "C" + std::to_string(id)));
  platform.calls.clear();
  logs.clear();
  src->release();
  EXPECT_THAT(eventLines(),
              ElementsAre("[DEBUG] Event stg,release,unsubscribeElementChange,C7.SSE",
                          "[DEBUG] Event stg,release,unsubscribeElementChange,C8.SSE"));
  EXPECT_THAT(indexCalls(),
              ElementsAre("index.unsubscribeElementChange 7", "index.unsubscribeElementChange 8"));
  EXPECT_TRUE(codes().empty());
}

TEST_F(IndexSrcTest, shouldServeAgainAfterRelease) {
  src->release();
  src->subscribeElementChange(codeOf(7, "A"));
  change(codeOf(7, "A"));
  EXPECT_THAT(notify.take(), ElementsAre("7 A [3=30,4=40,]"));
}

TEST_F(IndexSrcTest, shouldGiveTheServiceItselfForEveryWithdrawal) {
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeElementChange(codeOf(7));
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeAll();
  src->subscribeElementChange(codeOf(7));
  src->release();
  const auto spis = platform.indexes.spis();
  ASSERT_EQ(spis.size(), 6u);
  for (const auto& spi : spis) EXPECT_EQ(spi.get(), static_cast<IndexTradeSpi*>(src.get()));
}

TEST_F(IndexSrcTest, shouldHaveLoggedEachStepBeforeTheServiceIsCalled) {
  std::vector<int> lines;
  const auto count = [&] { lines.push_back(static_cast<int>(logs.lines().size())); };
  platform.calls.onCall("index.subscribeElementChange", count);
  platform.calls.onCall("index.unsubscribeElementChange", count);
  src->subscribeElementChange(codeOf(7));
  src->subscribeElementChange(codeOf(8));
  src->unsubscribeAll();
  EXPECT_THAT(lines, ElementsAre(1, 2, 3, 4));
}

// Questions and call-backs.

TEST_F(IndexSrcTest, shouldForwardAQuestionForElementsWithoutALock) {
  platform.calls.answer("index.indexElements", {22, "none"});
  bool free = false;
  platform.calls.onCall("index.indexElements", [&] { free = TestAccess::mutexIsFree(*src); });
  std::list<IndexTradeElement> elements;
  EXPECT_EQ(src->indexElements(codeOf(7), elements), (ResultStatus{22, "none"}));
  EXPECT_THAT(indexCalls(), ElementsAre("index.indexElements 7"));
  EXPECT_EQ(elements.size(), 1u);
  EXPECT_TRUE(free);
}

TEST_F(IndexSrcTest, shouldPassAChangeOfASubscribedCodeOnAndDropThoseOfOthers) {
  src->subscribeElementChange(codeOf(7));
  change(codeOf(8, "B"));
  change(codeOf(7, "A"));
  EXPECT_THAT(notify.take(), ElementsAre("7 A [3=30,4=40,]"));
}

TEST_F(IndexSrcTest, shouldDropALateChangeAfterTheUnsubscribeAlsoWhileAttached) {
  src->subscribeElementChange(codeOf(7));
  const auto spi = platform.indexes.spi();
  src->unsubscribeElementChange(codeOf(7));
  std::list<IndexTradeElement> elements = {{codeOf(3), 30}};
  spi->onElementChange(codeOf(7), elements);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(IndexSrcTest, shouldDropAChangeThatArrivesWhileDetached) {
  src->subscribeElementChange(codeOf(7));
  src->setNotify(nullptr);
  change(codeOf(7));
  src->setNotify(&notify);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(IndexSrcTest, shouldDoNothingInTheCallBacksThatAreReserved) {
  src->subscribeElementChange(codeOf(7));
  IndexTradeSpi& spi = *src;
  spi.onIndexReserved1();
  spi.onIndexReserved2();
  spi.onIndexReserved3();
  spi.onIndexReserved4();
  spi.onIndexReserved5();
  spi.onIndexReserved6();
  spi.onIndexReserved7();
  EXPECT_THAT(notify.take(), IsEmpty());
}

// Locks.

TEST_F(IndexSrcTest, shouldHoldItsMutexAcrossTheServicesSubscriptionCalls) {
  int checks = 0;
  for (const char* operation : {"index.subscribeElementChange", "index.unsubscribeElementChange"})
    platform.calls.onCall(operation, [&] {
      ++checks;
      EXPECT_FALSE(TestAccess::mutexIsFree(*src));
    });
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeElementChange(codeOf(7));
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeAll();
  src->subscribeElementChange(codeOf(7));
  src->release();
  EXPECT_EQ(checks, 6);
}

TEST_F(IndexSrcTest, shouldHoldItsMutexWhileItCallsTheNotify) {
  src->subscribeElementChange(codeOf(7));
  bool free = true;
  notify.hook = [&] { free = TestAccess::mutexIsFree(*src); };
  change(codeOf(7));
  EXPECT_FALSE(free);
}

TEST_F(IndexSrcTest, shouldThrowBadWeakPtrAndFreeItsMutexWhenNotHeldByASharedPtr) {
  IndexSrc unowned;
  EXPECT_THROW(unowned.subscribeElementChange(codeOf(7)), std::bad_weak_ptr);
  EXPECT_EQ(TestAccess::codes(unowned).size(), 1u);
  EXPECT_THROW(unowned.unsubscribeElementChange(codeOf(7)), std::bad_weak_ptr);
  EXPECT_EQ(TestAccess::codes(unowned).size(), 1u);
  EXPECT_THROW(unowned.release(), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::mutexIsFree(unowned));
}

// With threads.

class IndexSrcThreads : public IndexSrcTest {};

TEST_F(IndexSrcThreads, shouldDeliverAChangeThatArrivesDuringASubscribeAfterIt) {
  std::thread service;
  std::latch started(1);
  platform.calls.onCall("index.subscribeElementChange", [&] {
    service = std::thread([&] {
      started.count_down();
      change(codeOf(7, "A"));
    });
    started.wait();
    EXPECT_THAT(notify.take(), IsEmpty());  // The source's mutex keeps it out until the end.
  });
  src->subscribeElementChange(codeOf(7));
  service.join();
  EXPECT_THAT(notify.take(), ElementsAre("7 A [3=30,4=40,]"));
}

TEST_F(IndexSrcThreads, shouldBlockADetachUntilTheCallBackInProgressHasReturned) {
  src->subscribeElementChange(codeOf(7));
  ASSERT_EQ(codes().size(), 1u);
  std::latch inside(1);
  std::latch leave(1);
  std::atomic<bool> returned{false};
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread service([&] { change(codeOf(7)); });
  inside.wait();
  {
    HostThread host([&] {
      src->setNotify(nullptr);
      EXPECT_TRUE(returned);
    });
    EXPECT_TRUE(host.awaitSleep());
    leave.count_down();
  }
  service.join();
}

}  // namespace
}  // namespace orvane::support
