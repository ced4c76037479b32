// Random schedules of what a strategy does with its source of general events and a hostile manager
// to it, against a model of the source's table.

#include "EventStrategy/GeneralEventSrc.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/GeneralEventModel.h"
#include "tests/EventStrategy/model/OwnedSchedule.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

const std::vector<std::string> kEventTexts = {"a", "b", "c"};

/// The source holds its mutex across each call of the manager.
class EventSchedule final
    : public OwnedSchedule<GeneralEventSrc, RecordingEventNotify, GeneralEventModel> {
 public:
  EventSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : OwnedSchedule(platform, seed, seen, "event.",
                      {"event.subscribe", "event.unsubscribe", "event.unsubscribeTarget",
                       "event.unsubscribeAll"}) {}

 private:
  void takeStep() override {
    switch (below(16)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return subscribe(oneOf(kEventTexts), oneOf(kEventTexts));
      case 4:
      case 5:
      case 6:
        return unsubscribe(oneOf(kEventTexts), oneOf(kEventTexts));
      case 7:
        return unsubscribeAll();
      case 8:
        return release();
      case 9:
        return listen(oneIn(2));
      case 10:
        return oneIn(2) ? replace(model_.release()) : listen(true);
      default:
        callBack();
        callBack();
    }
  }

  // What the owner does.

  void subscribe(const std::string& target, const std::string& name) {
    tell("subscribe " + target + " " + name);
    expectCalls(model_.subscribe(target, name));
    source_->subscribeEvent(target, name, {"k"});
  }

  void unsubscribe(const std::string& target, const std::string& name) {
    tell("unsubscribe " + target + " " + name);
    expectCalls(GeneralEventModel::unsubscribe(target, name));
    source_->unsubscribeEvent(target, name);
    model_.unsubscribed(target, name);
  }

  /// The first target that the manager throws at ends it, and the table stays.
  void unsubscribeAll() {
    tell("unsubscribe all");
    Lines calls = model_.unsubscribeAll();
    if (const auto thrown = thrownBy([this] { source_->unsubscribeAllEvent(); })) {
      ASSERT_LE(static_cast<std::size_t>(asked_), calls.size());
      calls.resize(static_cast<std::size_t>(asked_));
      expectCalls(calls);
      throw std::runtime_error(*thrown);
    }
    expectCalls(calls);
    model_.table.clear();
  }

  void release() {
    tell("release");
    expectCalls(model_.release());
    source_->release();
  }

  // What the manager does.

  void act() override {
    ++asked_;
    if (mood() == Mood::Throws && !oneIn(3)) throwNow();
    if (mood() != Mood::CallsAtOnce && mood() != Mood::CallsFromAThread) return;
    if (!isCalledBeside()) callBackBeside(drawCallBack());
  }

  void callBack() override { drawCallBack()(); }

  /// What is heard depends on nothing that an operation changes: the manager is trusted.
  std::function<void()> drawCallBack() {
    const auto spis = platform_.events->spis();
    const std::shared_ptr<GeneralEventSpi> spi = spis.empty() || !oneIn(4) ? source_ : oneOf(spis);
    const std::string number = std::to_string(below(1000));
    const int times = oneIn(6) ? 2 : 1;
    for (int i = 0; i < times; ++i)
      expectDelivery(model_.listens && spi.get() == source_.get(), "topic [n=" + number + ",] d");
    return [spi, number, times] {
      for (int i = 0; i < times; ++i) spi->onGeneralEvent("topic", {{"n", number}}, "d");
    };
  }

  void afterStep() override { asked_ = 0; }

  // What is compared.

  void expectTables() override { EXPECT_EQ(TestAccess::subscriptions(*source_), model_.table); }

  int asked_ = 0;  ///< Calls that the manager got in this step.
};

class GeneralEventSrcSchedule : public ScheduleTest {};

TEST_F(GeneralEventSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<EventSchedule>(1500, 60);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules);
  EXPECT_GT(seen.inside, schedules / 2);
  EXPECT_GT(seen.thrown, schedules / 2);
  EXPECT_GT(seen.replaced, schedules / 4);
}

}  // namespace
}  // namespace orvane::support
