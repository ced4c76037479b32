// Random schedules of what a strategy does with its timers and a hostile platform to them, against
// a model of the source's table.

#include "EventStrategy/TimerSrc.h"
#include "tests/EventStrategy/model/OwnedSchedule.h"
#include "tests/EventStrategy/model/ScheduleTest.h"
#include "tests/EventStrategy/model/TimerKeeper.h"
#include "tests/EventStrategy/model/TimerModel.h"

namespace orvane::support {
namespace {

constexpr int kTimerIds = 5;

class TimerSchedule final : public OwnedSchedule<TimerSrc, TimerKeeper, TimerModel> {
 public:
  TimerSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : OwnedSchedule(platform, seed, seen, "timer.st", {"timer.stop"}) {
    platform_.calls.onCall("timer.start", [this] { startInside(); });
  }
  ~TimerSchedule() override {
    for (const char* operation : {"timer.start", "timer.stop"})
      platform_.calls.onCall(operation, {});
    letGo();
  }

 private:
  void takeStep() override {
    platform_.timers.startResult = mood() != Mood::Refuses;
    switch (below(16)) {
      case 0:
      case 1:
      case 2:
      case 3:
      case 4:
        return create(below(kTimerIds));
      case 5:
      case 6:
      case 7:
        return stop(below(kTimerIds));
      case 8:
        return stopAll();
      case 9:
        return listen(true);
      case 10:
        return oneIn(3) ? replace() : listen(oneIn(2));
      default:
        callBack();
        callBack();
    }
  }

  // What the owner does.

  /// A timer of the same id is stopped and gone before the new one is known, and the new one is
  /// known before it starts.
  void create(int id) {
    const int begin = below(100) - 50, interval = below(100) - 50, count = below(10) - 5;
    tell("create " + std::to_string(id));
    expectCalls(model_.stop(id));
    starting_ = id;
    terms_ = "begin=" + std::to_string(begin) + " interval=" + std::to_string(interval) +
             " count=" + std::to_string(count);
    source_->createTimer(id, begin, interval, count);
    EXPECT_EQ(starting_, -1) << "it was never started";
  }

  void startInside() {
    expectGone();
    notifies_.push_back(platform_.timers.notifyOf(starting_));
    expectCalls(model_.start(std::exchange(starting_, -1), terms_));
    if (!platform_.timers.startResult) ++seen_.refused;
    act();
  }

  void stop(int id) {
    tell("stop " + std::to_string(id));
    expectCalls(model_.stop(id));
    source_->stopTimer(id);
  }

  void stopAll() {
    tell("stop all");
    expectCalls(model_.stopAll());
    source_->stopAllTimer();
  }

  /// The owner goes without a word; once the platform lets go too, the source stops what is left.
  /// What a stop throws then reaches nobody.
  void replace() {
    tell("replace");
    ++seen_.replaced;
    listen(false);
    for (const auto& notify : notifies_) notify->onTimer(below(kTimerIds), 1);
    letGo();
    expectCalls(model_.stopAll());
    source_ = std::make_shared<TimerSrc>();
    expectedThrow.reset();
    listen(true);
  }

  void letGo() {
    platform_.timers.forget();
    notifies_.clear();
  }

  // What the platform does.

  /// A firing of any timer, known or not: whether it is still wanted is for others to say.
  void callBack() override {
    const std::shared_ptr<ITimerNotify> notify = notifies_.empty() ? source_ : oneOf(notifies_);
    const int id = below(kTimerIds), value = below(1000), times = oneIn(6) ? 2 : 1;
    for (int i = 0; i < times; ++i)
      tellOwner(model_.listens, std::to_string(id) + " " + std::to_string(value),
                [&] { notify->onTimer(id, value); });
  }

  // What is compared.

  void afterStep() override {
    starting_ = -1;
    expectGone();
  }
  /// What was stopped is held by nobody.
  void expectGone() {
    EXPECT_EQ(platform_.calls.count("timer.gone"), platform_.calls.count("timer.stop"));
  }
  void expectInside() override { expectTables(); }
  void expectTables() override {
    for (int id = 0; id < kTimerIds; ++id)
      EXPECT_EQ(source_->isTimerExist(id), model_.ids.contains(id)) << id;
    EXPECT_EQ(TestAccess::timerCount(*source_), model_.ids.size());
  }

  std::vector<std::shared_ptr<ITimerNotify>> notifies_;  ///< All that a start brought.
  int starting_ = -1;                                    ///< What is about to be started.
  std::string terms_;
};

class TimerSrcSchedule : public ScheduleTest {};

TEST_F(TimerSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<TimerSchedule>(2000, 60);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules / 4);
  EXPECT_GT(seen.inside, schedules / 2);
  EXPECT_GT(seen.thrown, schedules / 2);
  EXPECT_GT(seen.refused, schedules / 2);
  EXPECT_GT(seen.replaced, schedules / 4);
}

}  // namespace
}  // namespace orvane::support
