// Random lives of runners, with hosts, strategies, services and pool threads that take turns,
// against a model of the lifecycle and the pump.

#include <log4cxx/logger.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/RunnerThreadPool.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/LifecycleWorld.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/Shrink.h"

namespace orvane::support {
namespace {

using Step = LifecycleWorld::Step;

/// Pool threads come on most often: a call of the library takes several turns.
int aThread(Draw& draw) {
  const int what = draw.below(20);
  if (what < 4) return draw.below(LifecycleWorld::kHosts);
  if (what < 10) return LifecycleWorld::kHosts + draw.below(LifecycleWorld::kServices);
  return LifecycleWorld::kHosts + LifecycleWorld::kServices + draw.below(LifecycleWorld::kWorkers);
}

std::vector<Step> drawn(std::uint64_t seed) {
  constexpr int kSteps = 300;
  Draw draw(seed);
  std::vector<Step> steps;
  for (int i = 0; i < kSteps; ++i) {
    const int thread = aThread(draw);
    steps.push_back({thread, draw.number()});
  }
  return steps;
}

class LifecycleSchedule : public ::testing::Test {
 protected:
  // Of the runners' lines the errors alone are looked at; the others would take most of the time.
  LifecycleSchedule()
      : logger_(log4cxx::Logger::getLogger("Runner")),
        former_(logger_->getLevel()),
        events_(log4cxx::Logger::getLogger("Event")),
        formerOfEvents_(events_->getLevel()) {
    logger_->setLevel(log4cxx::Level::getError());
    events_->setLevel(log4cxx::Level::getError());
    const FakePlatform platform;
    runnerThreadPool();  // Made once in the process, while no thread takes turns.
  }
  ~LifecycleSchedule() override {
    logger_->setLevel(former_);
    events_->setLevel(formerOfEvents_);
  }

  std::string play(const std::vector<Step>& steps, LifecycleWorld::Seen& seen) {
    LifecycleWorld world(turns_, logs_, seen);
    return world.play(steps);
  }

  /// Tells a failing schedule once more, without the steps that do not matter.
  std::string story(const std::vector<Step>& steps) {
    LifecycleWorld::Seen seen;
    const std::vector<Step> left = shrunken<Step>(
        steps, [&](const std::vector<Step>& some) { return !play(some, seen).empty(); });
    LifecycleWorld world(turns_, logs_, seen, true);
    world.play(left);
    return std::to_string(left.size()) + " steps:\n" + world.story();
  }

 private:
  log4cxx::LoggerPtr logger_;
  log4cxx::LevelPtr former_;
  log4cxx::LoggerPtr events_;
  log4cxx::LevelPtr formerOfEvents_;
  LogCapture logs_;
  Turns turns_{LifecycleWorld::kThreads};
};

TEST_F(LifecycleSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  const std::uint64_t seed = randomSeed();
  const int schedules = std::max(randomRuns(600), 60);  // Fewer could miss something rare.
  RecordProperty("seed", std::to_string(seed));
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  std::fflush(stdout);  // Also for a run that does not come to its end.
  LifecycleWorld::Seen seen;
  for (int i = 0; i < schedules; ++i) {
    const std::vector<Step> steps = drawn(seed + static_cast<std::uint64_t>(i));
    const std::string failure = play(steps, seen);
    if (failure.empty()) continue;
    FAIL() << "ORVANE_RANDOM_SEED=" << seed + static_cast<std::uint64_t>(i) << " " << failure
           << "\n"
           << story(steps);
  }
  const std::pair<const char*, std::int64_t> all[] = {{"starts", seen.starts},
                                                      {"stops", seen.stops},
                                                      {"resets", seen.resets},
                                                      {"updates", seen.updates},
                                                      {"data", seen.data},
                                                      {"throws", seen.throws},
                                                      {"failed loads", seen.failedLoads},
                                                      {"from within", seen.fromWithin},
                                                      {"own ends", seen.ends},
                                                      {"discarded", seen.discarded},
                                                      {"blocked", seen.blocked},
                                                      {"late data", seen.lateData},
                                                      {"unstopped", seen.unstopped},
                                                      {"at once", seen.atOnce}};
  std::printf("%d schedules, %lld steps, %lld calls", schedules, static_cast<long long>(seen.steps),
              static_cast<long long>(seen.calls));
  for (const auto& [what, count] : all) {
    std::printf(", %lld %s", static_cast<long long>(count), what);
    EXPECT_GT(count, schedules / 20) << what;
  }
  std::printf("\n");
}

}  // namespace
}  // namespace orvane::support
