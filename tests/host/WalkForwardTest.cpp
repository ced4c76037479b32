// The windows of a walk.

#include "host/sweep/WalkForward.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"

namespace orvane {
namespace {

constexpr int64 kDayMs = 86'400'000;

std::string walkRefusalOf(const std::string& given, int64 days = 100) {
  try {
    WalkForward::parse(given, "--walk-forward").windows({0, days * kDayMs}, "--walk-forward");
    return {};
  } catch (const InputError& error) {
    return error.what();
  }
}

TEST(WalkForward, shouldLayWindowsEndToEndUnlessAStepSaysOtherwise) {
  const WalkForward walk = WalkForward::parse("20d:10d", "--walk-forward");
  const auto windows = walk.windows({0, 50 * kDayMs}, "--walk-forward");
  ASSERT_EQ(windows.size(), 3);
  for (int64 i = 0; i < 3; ++i) {
    const WalkWindow& window = windows[static_cast<std::size_t>(i)];
    EXPECT_EQ(window.inSample, (TimeSpan{10 * i * kDayMs, (10 * i + 20) * kDayMs}));
    EXPECT_EQ(window.outOfSample, (TimeSpan{(10 * i + 20) * kDayMs, (10 * i + 30) * kDayMs}));
  }
  EXPECT_EQ(WalkForward::parse("20d:10d:30d", "--walk-forward")
                .windows({0, 60 * kDayMs}, "--walk-forward")
                .size(),
            2);
}

TEST(WalkForward, shouldTryTheLastWindowOnWhatIsLeftOfTheData) {
  const WalkForward walk = WalkForward::parse("1w:36h", "--walk-forward");
  const auto windows = walk.windows({0, 9 * kDayMs}, "--walk-forward");
  ASSERT_EQ(windows.size(), 2);
  EXPECT_EQ(windows[1].inSample, (TimeSpan{kDayMs * 3 / 2, kDayMs * 17 / 2}));
  EXPECT_EQ(windows[1].outOfSample, (TimeSpan{kDayMs * 17 / 2, 9 * kDayMs}));
}

TEST(WalkForward, shouldNeitherLookAheadNorTryAnyInstantTwice) {
  for (const char* given : {"5d:1d", "1d:5d", "36h:7h:11h", "90m:90m", "3d:3d:3d"}) {
    const WalkForward walk = WalkForward::parse(given, "--walk-forward");
    const TimeSpan whole{3 * kDayMs, 20 * kDayMs + 1};
    int64 triedUntil = whole.begin;
    for (const WalkWindow& window : walk.windows(whole, "--walk-forward")) {
      EXPECT_LT(window.inSample.begin, window.inSample.end) << given;
      EXPECT_EQ(window.inSample.end, window.outOfSample.begin) << given;
      EXPECT_LT(window.outOfSample.begin, window.outOfSample.end) << given;
      EXPECT_GE(window.inSample.begin, whole.begin) << given;
      EXPECT_LE(window.outOfSample.end, whole.end) << given;
      EXPECT_GE(window.outOfSample.begin, triedUntil) << given;
      triedUntil = window.outOfSample.end;
    }
    EXPECT_GT(triedUntil, whole.begin) << given;
  }
}

TEST(WalkForward, shouldMakeNoWindowOfTheLastInstantAlone) {
  const WalkForward walk = WalkForward::parse("20d:10d", "--walk-forward");
  const auto windows = walk.windows({0, 40 * kDayMs + 1}, "--walk-forward");
  ASSERT_EQ(windows.size(), 2);
  EXPECT_EQ(windows[0].outOfSample.end, 30 * kDayMs);
  EXPECT_EQ(windows[1].outOfSample, (TimeSpan{30 * kDayMs, 40 * kDayMs + 1}));
}

TEST(WalkForward, shouldNameWhatIsWrong) {
  using testing::StartsWith;
  EXPECT_THAT(walkRefusalOf("90d"), StartsWith("--walk-forward: \"90d\" is not IN:OUT"));
  EXPECT_THAT(walkRefusalOf("9d:1d:1d:1d"), StartsWith("--walk-forward: \"9d:1d:1d:1d\" is not"));
  for (const char* part : {"0d", "-1d", "1.5d", "1y", "d", "", "999999999d"})
    EXPECT_THAT(walkRefusalOf(std::string("9d:") + part),
                StartsWith("--walk-forward: \"" + std::string(part) + "\" in \"9d:"));
  EXPECT_THAT(walkRefusalOf("9d:2d:1d"), StartsWith("--walk-forward: the step in \"9d:2d:1d\" is"));
  EXPECT_THAT(walkRefusalOf("100d:1d"), StartsWith("--walk-forward: what is to be played, "
                                                   "1970-01-01T00:00:00.000Z to 1970-04-11"));
  EXPECT_THAT(walkRefusalOf("1s:1s"), StartsWith("--walk-forward: there are more than 100000"));
}

}  // namespace
}  // namespace orvane
