#include "platform/core/FloodSense.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds kAtOnce{100}, kLater{5000};

int tasksUntilFlood(FloodSense& flood) {
  int tasks = 0;
  for (; !flood.isFlood() && tasks < 1'000'000; ++tasks) flood.came(kAtOnce);
  return tasks;
}

TEST(FloodSense, shouldTakeTasksThatKeepComingAtOnceForAFlood) {
  FloodSense flood;
  EXPECT_FALSE(flood.isFlood());
  EXPECT_EQ(tasksUntilFlood(flood), 16);
}

TEST(FloodSense, shouldBeginToCountAnewWithATaskThatComesLater) {
  FloodSense flood;
  for (int i = 0; i < 15; ++i) flood.came(kAtOnce);
  flood.came(kLater);
  EXPECT_EQ(tasksUntilFlood(flood), 16);
}

TEST(FloodSense, shouldStayInAFloodWhileManyCome) {
  FloodSense flood;
  tasksUntilFlood(flood);
  for (int i = 0; i < 100; ++i) {
    flood.gathered(60);
    EXPECT_TRUE(flood.isFlood());
    flood.came(kAtOnce);
  }
  flood.came(kLater);
  EXPECT_FALSE(flood.isFlood());
}

TEST(FloodSense, shouldNotCountTasksInARowWithoutEnd) {
  FloodSense flood;
  for (int i = 0; i < 100'000; ++i) flood.came(kAtOnce);
  flood.gathered(0);
  EXPECT_FALSE(flood.isFlood());
  EXPECT_EQ(tasksUntilFlood(flood), 128);
}

TEST(FloodSense, shouldEverMoreRarelyMakeOneWhoWaitsForEachTaskWaitInVain) {
  FloodSense flood;
  EXPECT_EQ(tasksUntilFlood(flood), 16);
  flood.gathered(1);
  EXPECT_EQ(tasksUntilFlood(flood), 128);
  flood.gathered(1);
  EXPECT_EQ(tasksUntilFlood(flood), 1024);
  for (int i = 0; i < 3; ++i) {
    flood.gathered(0);
    EXPECT_EQ(tasksUntilFlood(flood), 4096);
  }
  flood.gathered(60);
  EXPECT_TRUE(flood.isFlood());
  flood.came(kLater);
  EXPECT_EQ(tasksUntilFlood(flood), 16);
}

}  // namespace
}  // namespace orvane::detail
