// How times are shown, and a feed that hardly moves.

#include "platform/market/TimeShift.h"

#include <thread>

#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using detail::TimeShift;

TEST(TimeShift, shouldDrawTimesTogetherByTheSpeedAndFindThemAgain) {
  const TimeShift shift(1'000, 50'000, 4);
  EXPECT_EQ(shift.shown(1'000), 50'000);
  EXPECT_EQ(shift.shown(9'000), 52'000);
  EXPECT_EQ(shift.inData(52'000), 9'000);
}

TEST(TimeShift, shouldStayInTheRangeOfTheClocksAtAnySpeed) {
  constexpr int64 kYear = 366 * kDay;
  for (const double speed : {5e-324, 1e-300, 1e-12}) {
    const TimeShift shift(0, kMonday, speed);
    EXPECT_GT(shift.shown(kDay), kMonday + 100 * kYear) << speed;
    EXPECT_LT(shift.shown(kDay), kMonday + 201 * kYear) << speed;
    EXPECT_EQ(shift.inData(kMonday + 1), 1) << speed;
  }
  const TimeShift fast(0, kMonday, 1e300);
  EXPECT_EQ(fast.shown(kDay), kMonday);
  EXPECT_GT(fast.inData(kMonday + 1), 100 * kYear);
}

TEST(Playback, shouldWaitForTheSecondRecordAtASpeedThatHardlyMoves) {
  PlatformOptions options;
  options.speed = 1e-300;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:01=") != std::string::npos) platform->cancel();
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(runner->handled().size(), 2u) << "the first bar, and the end of the history";
}

TEST(Playback, shouldLetAnotherThreadWaitForQuietInTheMidstOfARun) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 200));
  std::thread other;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find(" 0:01=") == std::string::npos) return;
    other = std::thread([&] {
      for (int i = 0; i < 20; ++i) platform->drain();
    });
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  other.join();
  EXPECT_EQ(runner->handled().size(), 201u);
}

}  // namespace
}  // namespace orvane::testing
