#include "platform/market/files/ZoneClock.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <random>

namespace orvane::detail {
namespace {

constexpr std::int64_t kHourMs = 3'600'000;

TEST(ZoneClock, shouldAgreeWithTheZoneTableAtRandomTimes) {
  const unsigned seed = 20131206;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  std::uniform_int_distribution<std::int64_t> times(0, 1'700'000'000'000);
  for (const char* name :
       {"America/New_York", "Asia/Shanghai", "Europe/London", "Australia/Sydney"}) {
    ZoneClock clock(name);
    const QTimeZone zone(name);
    ASSERT_TRUE(clock.ok());
    for (int i = 0; i < 2000; ++i) {
      const std::int64_t utc = times(random);
      const std::int64_t offset =
          std::int64_t{zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(utc, Qt::UTC))} * 1000;
      ASSERT_EQ(clock.toLocal(utc), utc + offset) << name << " " << utc;
      const std::int64_t back = clock.toUtc(utc + offset);
      // Where a local time occurs twice, the first is taken.
      ASSERT_TRUE(back == utc || (back < utc && clock.toLocal(back) == utc + offset))
          << name << " " << utc;
      ASSERT_EQ(clock.toUtc(utc + offset, utc), utc);
    }
  }
}

TEST(ZoneClock, shouldTakeTheSecondOfTwoTimesWhenTheFirstIsTooEarly) {
  ZoneClock clock("America/New_York");
  const std::int64_t local = 1'383'440'400'000 + kHourMs / 2;  // 2013-11-03 01:30
  const std::int64_t first = local + 4 * kHourMs;
  EXPECT_EQ(clock.toUtc(local), first);
  EXPECT_EQ(clock.toUtc(local, first), first);
  EXPECT_EQ(clock.toUtc(local, first + 1), first + kHourMs);
}

TEST(ZoneClock, shouldCountOnWhenALocalTimeWasSkipped) {
  ZoneClock clock("America/New_York");
  const std::int64_t local = 1'362'882'600'000;  // 2013-03-10 02:30
  EXPECT_EQ(clock.toUtc(local), local + 5 * kHourMs);
}

TEST(ZoneClock, shouldKeepAFixedOffsetWhenOneIsNamed) {
  ZoneClock clock("-05:00");
  EXPECT_EQ(clock.name(), "UTC-05:00");
  EXPECT_TRUE(QTimeZone(clock.name().c_str()).isValid());
  EXPECT_EQ(clock.toUtc(0), 5 * kHourMs);
  EXPECT_EQ(clock.toLocal(0), -5 * kHourMs);
  EXPECT_EQ(ZoneClock("UTC").name(), "UTC");
  EXPECT_FALSE(ZoneClock("Nowhere").ok());
}

}  // namespace
}  // namespace orvane::detail
