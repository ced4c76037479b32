// The worst moments of the source of general events, one by one: a manager that keeps every shared
// pointer, calls back when it likes, and throws.

#include <stdexcept>

#include "EventStrategy/GeneralEventSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/DetachRace.h"

namespace orvane::support {
namespace {

const char* const kEventCalls[] = {"event.subscribe", "event.unsubscribe",
                                   "event.unsubscribeTarget", "event.unsubscribeAll"};

class GeneralEventSrcHostility : public LibraryTest {
 protected:
  GeneralEventSrcHostility() { src->setNotify(&notify); }
  ~GeneralEventSrcHostility() override {
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  void throwFrom(const char* operation) {
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  }

  RecordingEventNotify notify;
  std::shared_ptr<GeneralEventSrc> src = std::make_shared<GeneralEventSrc>();
};

TEST_F(GeneralEventSrcHostility, shouldDeliverAnEventThatComesTwiceTwiceAlsoAfterTheUnsubscribe) {
  // The manager is trusted to deliver what was subscribed and nothing else.
  src->subscribeEvent("t", "n", {});
  src->unsubscribeEvent("t", "n");
  for (int i = 0; i < 2; ++i)
    onAnotherThread([this] { platform.events->spi()->onGeneralEvent("late", {}, ""); });
  EXPECT_THAT(notify.take(), ElementsAre("late [] ", "late [] "));
}

TEST_F(GeneralEventSrcHostility,
       shouldLiveUntilTheManagerLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  src->subscribeEvent("t", "n", {});
  const std::weak_ptr<GeneralEventSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<GeneralEventSrc>();
  ASSERT_FALSE(watched.expired());
  for (const auto& spi : platform.events->spis()) spi->onGeneralEvent("late", {}, "");
  EXPECT_THAT(notify.take(), IsEmpty());
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
}

TEST_F(GeneralEventSrcHostility, shouldLetAnExceptionOfTheManagerThroughAndFreeItsMutex) {
  for (const char* operation : kEventCalls) throwFrom(operation);
  using Table = std::map<std::string, std::set<std::string>>;
  EXPECT_THROW(src->subscribeEvent("t", "n", {}), std::runtime_error);
  EXPECT_THROW(src->unsubscribeEvent("t", "n"), std::runtime_error);
  EXPECT_THROW(src->unsubscribeEvent("u", "n"), std::runtime_error);
  EXPECT_THROW(src->unsubscribeAllEvent(), std::runtime_error);
  EXPECT_EQ(TestAccess::subscriptions(*src), (Table{{"t", {"n"}}}));
  logs.clear();
  EXPECT_THROW(src->release(), std::runtime_error);
  EXPECT_TRUE(TestAccess::subscriptions(*src).empty());
  EXPECT_EQ(logs.countContaining(",release,unsubscribeEvent end"), 1);
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(GeneralEventSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  src->subscribeEvent("t", "n", {});
  DetachRace race;
  race.callBack = [spi = platform.events->spi()] { spi->onGeneralEvent("topic", {}, ""); };
  race.work = [this] {
    src->subscribeEvent("t", "n", {});
    src->unsubscribeEvent("t", "n");
    src->unsubscribeAllEvent();
  };
  race.detach = [this] { src->setNotify(nullptr); };
  race.leave = [this] {
    src->release();
    src = std::make_shared<GeneralEventSrc>();
    platform.forgetSpis();
  };
  EXPECT_EQ(heardAfterDetach(notify.hook, race), 0);
}

}  // namespace
}  // namespace orvane::support
