#pragma once

#include <gtest/gtest.h>
#include <log4cxx/logger.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/EventStrategy/model/HostileSchedule.h"
#include "tests/support/RandomRuns.h"

namespace orvane::support {

/// Random schedules. ORVANE_RANDOM_RUNS sets how many are tried, ORVANE_RANDOM_SEED where they
/// begin: a failure names the seed of its schedule, which shows it again as the first one.
class ScheduleTest : public ::testing::Test {
 protected:
  // A line for each call would take most of the time.
  ScheduleTest() : logger_(log4cxx::Logger::getLogger("Event")), former_(logger_->getLevel()) {
    logger_->setLevel(log4cxx::Level::getOff());
  }
  ~ScheduleTest() override { logger_->setLevel(former_); }

  /// Calls `work` with `usual` seeds, or as many as are asked for but `fewest`, until something
  /// fails.
  template <typename Work>
  void forEachSeed(int usual, Work&& work, int fewest = kFewestRuns) {
    schedules = std::max(randomRuns(usual), fewest);
    const std::uint64_t first = randomSeed();
    std::printf("%d schedules from ORVANE_RANDOM_SEED=%llu\n", schedules,
                static_cast<unsigned long long>(first));
    for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(schedules) && !HasFailure(); ++i) {
      SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(first + i));
      work(first + i);
    }
  }

  /// Takes schedules of up to `steps` steps each.
  template <typename Schedule>
  void take(int usual, int steps) {
    forEachSeed(usual, [&](std::uint64_t seed) {
      Schedule schedule(platform, seed, seen);
      for (int step = 0; step < steps && schedule.step(); ++step) {
      }
    });
    std::printf("%d delivered, %d dropped, %d inside a call, %d thrown, %d refused, %d replaced\n",
                seen.delivered, seen.dropped, seen.inside, seen.thrown, seen.refused,
                seen.replaced);
  }

  FakePlatform platform;
  HostileSeen seen;
  int schedules = 0;

 private:
  log4cxx::LoggerPtr logger_;
  log4cxx::LevelPtr former_;
};

}  // namespace orvane::support
