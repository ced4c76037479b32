#include "host/ZoneOffsets.h"
#include "tests/host/Durations.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using test::kHour;
constexpr int64 kSummer = 1'615'705'200'000;  // 2021-03-14 07:00 UTC: New York's clock goes on.

TEST(ZoneOffsets, shouldTellTheClockOfAZoneBeforeAndAfterAChange) {
  const ZoneOffsets zone("America/New_York");
  EXPECT_EQ(zone.toLocal(kSummer - 1), kSummer - 1 - 5 * kHour);
  EXPECT_EQ(zone.toLocal(kSummer), kSummer - 4 * kHour);
}

TEST(ZoneOffsets, shouldKnowFixedOffsetsAndTakeAnythingElseForUtc) {
  EXPECT_EQ(ZoneOffsets("UTC-05:00").toLocal(kSummer), kSummer - 5 * kHour);
  EXPECT_EQ(ZoneOffsets("").toLocal(kSummer), kSummer);
  EXPECT_EQ(ZoneOffsets("Nowhere/AtAll").toLocal(kSummer), kSummer);
}

TEST(ZoneOffsets, shouldTellTheSpansOfAStretchOfTime) {
  const ZoneOffsets zone("America/New_York");
  EXPECT_EQ(zone.spansOf(kSummer, kSummer + kHour).size(), 1u);
  const auto spans = zone.spansOf(kSummer - kHour, kSummer + kHour);
  ASSERT_EQ(spans.size(), 2u);
  EXPECT_EQ(spans[1].begin, kSummer);
  EXPECT_EQ(spans[1].offsetMs, -4 * kHour);
}

}  // namespace
}  // namespace orvane
