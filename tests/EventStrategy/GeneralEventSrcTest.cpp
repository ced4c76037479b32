#include "EventStrategy/GeneralEventSrc.h"

#include <latch>
#include <thread>

#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/support/HostThread.h"

namespace orvane::support {
namespace {

using Table = std::map<std::string, std::set<std::string>>;

class GeneralEventSrcTest : public LibraryTest {
 protected:
  GeneralEventSrcTest() {
    src->setName("stg");
    src->setNotify(&notify);
    platform.calls.clear();
    logs.clear();
  }
  ~GeneralEventSrcTest() override {
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  bool logged(const std::string& text) { return loggedOnce("Event", "DEBUG", "stg" + text); }
  std::vector<std::string> eventCalls() const { return platform.calls.entries("event."); }
  Table table() { return TestAccess::subscriptions(*src); }

  RecordingEventNotify notify;
  std::shared_ptr<GeneralEventSrc> src = std::make_shared<GeneralEventSrc>();
};

// Subscribing.

TEST_F(GeneralEventSrcTest, shouldLogASubscribeRememberItAndTellTheManager) {
  src->subscribeEvent("target", "name", {"k1", "k2"});
  EXPECT_TRUE(logged(",subscribeEvent,target=target,name=name,keys=k1,k2"));
  EXPECT_EQ(table(), (Table{{"target", {"name"}}}));
  EXPECT_THAT(eventCalls(), ElementsAre("event.subscribe target names=name keys=k1,k2 live=1"));
  EXPECT_EQ(platform.events->spi().get(), static_cast<GeneralEventSpi*>(src.get()));
  EXPECT_EQ(logs.lines().size(), 1u);
}

TEST_F(GeneralEventSrcTest, shouldJoinKeysByACommaAlsoIfTheyAreEmptyTexts) {
  src->subscribeEvent("t", "n", {});
  src->subscribeEvent("t", "n", {"", "a", ""});
  EXPECT_TRUE(logged(",subscribeEvent,target=t,name=n,keys="));
  EXPECT_TRUE(logged(",subscribeEvent,target=t,name=n,keys=,a,"));
}

TEST_F(GeneralEventSrcTest, shouldCallTheManagerTwiceButHoldOneEntryForTheSameTargetAndNameTwice) {
  src->subscribeEvent("t", "n", {});
  src->subscribeEvent("t", "n", {"k"});
  EXPECT_EQ(platform.calls.count("event.subscribe"), 2);
  EXPECT_EQ(table(), (Table{{"t", {"n"}}}));
}

TEST_F(GeneralEventSrcTest, shouldHaveLoggedAndRememberedASubscribeWhenTheManagerIsCalled) {
  bool loggedBefore = false;
  platform.calls.onCall("event.subscribe",
                        [&] { loggedBefore = logs.countContaining(",subscribeEvent,") == 1; });
  src->subscribeEvent("t", "n", {});
  EXPECT_TRUE(loggedBefore);
}

TEST_F(GeneralEventSrcTest, shouldLogAnUnsubscribeTellTheManagerAndKeepTheEmptyTarget) {
  src->subscribeEvent("t", "n", {});
  src->subscribeEvent("t", "m", {});
  platform.calls.clear();
  src->unsubscribeEvent("t", "n");
  EXPECT_TRUE(logged(",unsubscribeEvent,target=t,name=n"));
  EXPECT_THAT(eventCalls(), ElementsAre("event.unsubscribe t names=n"));
  EXPECT_EQ(table(), (Table{{"t", {"m"}}}));
  src->unsubscribeEvent("t", "m");
  EXPECT_EQ(table(), (Table{{"t", {}}}));
}

TEST_F(GeneralEventSrcTest,
       shouldCallTheManagerAndLeaveAnEmptyEntryForAnUnsubscribeOfAnUnknownTarget) {
  src->unsubscribeEvent("t", "n");
  EXPECT_THAT(eventCalls(), ElementsAre("event.unsubscribe t names=n"));
  EXPECT_EQ(table(), (Table{{"t", {}}}));
}

TEST_F(GeneralEventSrcTest, shouldEndEachTargetInOrderAlsoAnEmptyOneOnUnsubscribeAll) {
  src->subscribeEvent("b", "n", {});
  src->subscribeEvent("a", "n", {});
  src->subscribeEvent("a", "m", {});
  src->unsubscribeEvent("c", "n");
  platform.calls.clear();
  logs.clear();
  src->unsubscribeAllEvent();
  EXPECT_THAT(logs.messages("Event"), ElementsAre("[DEBUG] Event stg,unsubscribeAllEvent",
                                                  "[DEBUG] Event stg,unsubscribeEvent,target=a",
                                                  "[DEBUG] Event stg,unsubscribeEvent,target=b",
                                                  "[DEBUG] Event stg,unsubscribeEvent,target=c"));
  EXPECT_THAT(eventCalls(), ElementsAre("event.unsubscribeTarget a", "event.unsubscribeTarget b",
                                        "event.unsubscribeTarget c"));
  EXPECT_TRUE(table().empty());
}

TEST_F(GeneralEventSrcTest, shouldLogItsOwnTagAloneAndCallNothingForUnsubscribeAllOfAnEmptyTable) {
  src->unsubscribeAllEvent();
  EXPECT_THAT(logs.messages(), ElementsAre("[DEBUG] Event stg,unsubscribeAllEvent"));
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(GeneralEventSrcTest, shouldCallTheManagerOnceOnReleaseAlsoWhenNothingWasSubscribed) {
  src->release();
  EXPECT_THAT(eventCalls(), ElementsAre("event.unsubscribeAll"));
  EXPECT_THAT(logs.messages(), ElementsAre("[DEBUG] Event stg,release,unsubscribeEvent begin",
                                           "[DEBUG] Event stg,release,unsubscribeEvent end"));
}

TEST_F(GeneralEventSrcTest, shouldCallTheManagerOnceOnReleaseHoweverMuchWasSubscribed) {
  src->subscribeEvent("a", "n", {});
  src->subscribeEvent("b", "n", {});
  platform.calls.clear();
  logs.clear();
  int linesAtCall = 0;
  platform.calls.onCall("event.unsubscribeAll",
                        [&] { linesAtCall = static_cast<int>(logs.lines().size()); });
  src->release();
  EXPECT_THAT(eventCalls(), ElementsAre("event.unsubscribeAll"));
  EXPECT_EQ(linesAtCall, 1);
  EXPECT_TRUE(table().empty());
}

TEST_F(GeneralEventSrcTest, shouldServeAgainAfterRelease) {
  src->release();
  src->subscribeEvent("t", "n", {});
  EXPECT_EQ(table(), (Table{{"t", {"n"}}}));
  platform.events->spi()->onGeneralEvent("topic", {}, "detail");
  EXPECT_THAT(notify.take(), ElementsAre("topic [] detail"));
}

TEST_F(GeneralEventSrcTest, shouldGiveTheManagerItselfForEveryWithdrawal) {
  src->subscribeEvent("t", "n", {});
  src->unsubscribeEvent("t", "n");
  src->unsubscribeAllEvent();
  src->release();
  const auto spis = platform.events->spis();
  ASSERT_EQ(spis.size(), 4u);
  for (const auto& spi : spis) EXPECT_EQ(spi.get(), static_cast<GeneralEventSpi*>(src.get()));
}

TEST_F(GeneralEventSrcTest, shouldLogUnderTheNameThatItHasNow) {
  src->setName("other");
  src->unsubscribeAllEvent();
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "other,unsubscribeAllEvent"));
}

// Publishing and call-backs.

TEST_F(GeneralEventSrcTest, shouldForwardAPublishedEventWithoutALock) {
  platform.calls.answer("event.publishEvent", {52, "slow down"});
  bool free = false;
  platform.calls.onCall("event.publishEvent", [&] { free = TestAccess::mutexIsFree(*src); });
  EXPECT_EQ(src->publishEvent("topic", {{"k", "v"}}, "detail"), (ResultStatus{52, "slow down"}));
  EXPECT_THAT(eventCalls(), ElementsAre("event.publishEvent topic 1 detail"));
  EXPECT_TRUE(free);
}

TEST_F(GeneralEventSrcTest, shouldPassAnEventOnWithoutALookAtItsTable) {
  src->onGeneralEvent("topic", {{"a", "1"}, {"b", "2"}}, "detail");
  EXPECT_THAT(notify.take(), ElementsAre("topic [a=1,b=2,] detail"));
}

TEST_F(GeneralEventSrcTest, shouldDropAnEventThatArrivesWhileDetached) {
  src->subscribeEvent("t", "n", {});
  src->setNotify(nullptr);
  src->onGeneralEvent("topic", {}, "detail");
  src->setNotify(&notify);
  EXPECT_THAT(notify.take(), IsEmpty());
}

// Locks.

TEST_F(GeneralEventSrcTest, shouldHoldItsMutexAcrossTheManagersSubscriptionCalls) {
  int checks = 0;
  for (const char* operation :
       {"event.subscribe", "event.unsubscribe", "event.unsubscribeTarget", "event.unsubscribeAll"})
    platform.calls.onCall(operation, [&] {
      ++checks;
      EXPECT_FALSE(TestAccess::mutexIsFree(*src));
    });
  src->subscribeEvent("t", "n", {});
  src->unsubscribeEvent("t", "n");
  src->unsubscribeAllEvent();
  src->release();
  EXPECT_EQ(checks, 4);
}

TEST_F(GeneralEventSrcTest, shouldHoldItsMutexWhileItCallsTheNotify) {
  bool free = true;
  notify.hook = [&] { free = TestAccess::mutexIsFree(*src); };
  src->onGeneralEvent("topic", {}, "detail");
  EXPECT_FALSE(free);
}

TEST_F(GeneralEventSrcTest, shouldLogWithItsMutexHeld) {
  int checks = 0;
  logs.onLine([&](const CapturedLine&) {
    ++checks;
    EXPECT_FALSE(TestAccess::mutexIsFree(*src));
  });
  src->subscribeEvent("t", "n", {});
  src->unsubscribeAllEvent();
  src->release();
  logs.onLine({});
  EXPECT_EQ(checks, 5);
}

TEST_F(GeneralEventSrcTest, shouldThrowBadWeakPtrAndFreeItsMutexWhenNotHeldByASharedPtr) {
  GeneralEventSrc unowned;
  EXPECT_THROW(unowned.subscribeEvent("t", "n", {}), std::bad_weak_ptr);
  EXPECT_EQ(TestAccess::subscriptions(unowned), (Table{{"t", {"n"}}}));
  EXPECT_THROW(unowned.unsubscribeEvent("t", "n"), std::bad_weak_ptr);
  EXPECT_THROW(unowned.unsubscribeAllEvent(), std::bad_weak_ptr);
  EXPECT_THROW(unowned.release(), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::mutexIsFree(unowned));
}

// With threads.

class GeneralEventSrcThreads : public GeneralEventSrcTest {};

TEST_F(GeneralEventSrcThreads, shouldDeliverAnEventThatArrivesDuringASubscribeAfterIt) {
  std::thread service;
  std::latch started(1);
  platform.calls.onCall("event.subscribe", [&] {
    service = std::thread([&] {
      started.count_down();
      src->onGeneralEvent("early", {}, "");
    });
    started.wait();
    EXPECT_THAT(notify.take(), IsEmpty());  // The source's mutex keeps it out until the end.
  });
  src->subscribeEvent("t", "n", {});
  service.join();
  EXPECT_THAT(notify.take(), ElementsAre("early [] "));
}

TEST_F(GeneralEventSrcThreads, shouldBlockADetachUntilTheCallBackInProgressHasReturned) {
  std::latch inside(1);
  std::latch leave(1);
  std::atomic<bool> returned{false};
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread service([&] { src->onGeneralEvent("topic", {}, ""); });
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
