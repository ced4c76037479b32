#include "platform/market/LongerBars.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/fields/KLineView.h"

namespace orvane {
namespace {

constexpr int64 kLongerMinute = 60'000;
constexpr int64 kLongerBegin = 1'609'722'000'000;  ///< 2021-01-04 09:00 in Shanghai.

/// Minutes from nine o'clock on, each of a volume of 1 and a price of its number.
BarSeries minuteBars(int count) {
  BarSeries series;
  series.periodMs = kLongerMinute;
  series.timeZone = "Asia/Shanghai";
  series.origin = "here";
  for (int i = 0; i < count; ++i) {
    KLineWriter writer(series.bars.emplace_back());
    writer.setTimes(kLongerBegin + i * kLongerMinute, kLongerBegin + (i + 1) * kLongerMinute);
    for (const auto price : {kline::Open, kline::High, kline::Low, kline::Close})
      writer.set(price, i + 1);
    writer.set(kline::Volume, 1);
    writer.setDayAndFlags(20210104, 0);
  }
  return series;
}

TEST(LongerBars, shouldPutBarsTogetherAndLeaveOutWhatIsNotComplete) {
  const BarSeries longer = barsOfPeriod(minuteBars(13), "5m");
  EXPECT_EQ(longer.periodMs, 5 * kLongerMinute);
  EXPECT_EQ(longer.timeZone, "Asia/Shanghai");
  ASSERT_EQ(longer.bars.size(), 2U);
  const KLineView second(longer.bars[1]);
  EXPECT_EQ(second.beginTime(), kLongerBegin + 5 * kLongerMinute);
  EXPECT_EQ(second.endTime(), kLongerBegin + 10 * kLongerMinute);
  EXPECT_EQ(second.open(), 6);
  EXPECT_EQ(second.high(), 10);
  EXPECT_EQ(second.low(), 6);
  EXPECT_EQ(second.close(), 10);
  EXPECT_EQ(second.volume(), 5);
}

TEST(LongerBars, shouldEndWithABarThatTheLastOneCompletes) {
  EXPECT_EQ(barsOfPeriod(minuteBars(15), "5min").bars.size(), 3U);
}

TEST(LongerBars, shouldKeepTheOpenBarWhereThatIsAskedFor) {
  const BarSeries longer = barsOfPeriod(minuteBars(13), "5m", OpenBar::Kept);
  ASSERT_EQ(longer.bars.size(), 3U);
  const KLineView last(longer.bars[2]);
  EXPECT_EQ(last.endTime(), kLongerBegin + 15 * kLongerMinute);
  EXPECT_EQ(last.close(), 13);
  EXPECT_EQ(last.volume(), 3);
  EXPECT_EQ(barsOfPeriod(minuteBars(15), "5m", OpenBar::Kept).bars.size(), 3U);
}

TEST(LongerBars, shouldRefusePeriodsThatTheBarsDoNotMake) {
  for (const char* period : {"x", "1m", "30s", "90s", ""})
    EXPECT_THROW(barsOfPeriod(minuteBars(3), period), std::invalid_argument) << period;
}

}  // namespace
}  // namespace orvane
