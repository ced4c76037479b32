#include "host/SeriesMerge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"

namespace orvane {
namespace {

LoadedBars bars(const std::string& code, int64 periodMs, std::initializer_list<int64> begins,
                const std::string& origin) {
  LoadedBars result;
  result.code = code;
  result.series.periodMs = periodMs;
  result.series.origin = origin;
  for (const int64 begin : begins)
    KLineWriter(result.series.bars.emplace_back()).setTimes(begin, begin + periodMs);
  return result;
}

LoadedTicks ticks(std::vector<TickColumnId> columns, std::vector<int64> times,
                  std::vector<double> cells) {
  LoadedTicks result;
  result.code = "A";
  result.series.origin = "ticks";
  result.series.columns = std::move(columns);
  result.series.tradingDays.assign(times.size(), 20210104);
  result.series.times = std::move(times);
  result.series.cells = std::move(cells);
  return result;
}

TEST(SeriesMerge, shouldJoinFilesOfOneCodeInTimeOrder) {
  const auto merged = mergeBars({bars("A", 10, {30, 40}, "late.csv"), bars("B", 10, {5}, "b.csv"),
                                 bars("A", 10, {10, 20}, "early.csv")});
  ASSERT_EQ(merged.size(), 2u);
  EXPECT_EQ(merged[0].code, "A");
  EXPECT_EQ(merged[0].series.origin, "early.csv, late.csv");
  ASSERT_EQ(merged[0].series.bars.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_EQ(KLineView(merged[0].series.bars[i]).beginTime(), static_cast<int64>(10 * (i + 1)));
  EXPECT_EQ(merged[1].code, "B");
}

TEST(SeriesMerge, shouldKeepPeriodsOfOneCodeApart) {
  const auto merged = mergeBars({bars("A", 10, {10, 20}, "a"), bars("A", 20, {10}, "b")});
  EXPECT_EQ(merged.size(), 2u);
}

TEST(SeriesMerge, shouldNameBothFilesWhenTheyOverlap) {
  try {
    mergeBars({bars("A", 10, {10, 20}, "one.csv"), bars("A", 10, {20, 30}, "two.csv")});
    FAIL();
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("one.csv"));
    EXPECT_THAT(error.what(), testing::HasSubstr("two.csv"));
    EXPECT_THAT(error.what(), testing::HasSubstr("\"A\""));
  }
}

TEST(SeriesMerge, shouldJoinTicksOfDifferentColumnsAndAllowOneTimeOnBothSides) {
  const TickColumnId last{TickColumn::LastPrice}, bid{TickColumn::BidPrice},
      volume{TickColumn::Volume};
  const auto merged = mergeTicks(
      {ticks({last, bid}, {1, 2}, {10, 9, 11, 8}), ticks({bid, volume}, {2, 3}, {7, 100, 6, 200})});
  ASSERT_EQ(merged.size(), 1u);
  EXPECT_EQ(merged[0].series.columns, (std::vector<TickColumnId>{last, bid, volume}));
  EXPECT_EQ(merged[0].series.times, (std::vector<int64>{1, 2, 2, 3}));
  EXPECT_EQ(merged[0].series.cells,
            (std::vector<double>{10, 9, 0, 11, 8, 0, 0, 7, 100, 0, 6, 200}));
}

}  // namespace
}  // namespace orvane
