// What a report's chart shows of a series.

#include "host/CandleSeries.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "tests/host/Durations.h"

namespace orvane {
namespace {

using test::kDay;
using test::kHour;
using test::kMinute;
constexpr int64 kMonday = 1'609'718'400'000;  // 2021-01-04 00:00 UTC.

CandleSeries seriesOf(std::size_t most, const std::string& zone = "UTC") {
  return {most, std::make_shared<const ZoneOffsets>(zone)};
}

IKLine barOf(int64 begin, double open, double high, double low, double close, double volume = 1,
             int64 length = kMinute) {
  IKLine bar;
  KLineWriter writer(bar);
  writer.setTimes(begin, begin + length);
  writer.set(kline::Open, open);
  writer.set(kline::High, high);
  writer.set(kline::Low, low);
  writer.set(kline::Close, close);
  writer.set(kline::Volume, volume);
  writer.setDayAndFlags(20210104, 0);
  return bar;
}

IDepthMarketData tickOf(int64 time, double last, double volume) {
  IDepthMarketData tick;
  QuoteWriter writer(tick);
  writer.setTime(time);
  writer.set(quote::LastPrice, last);
  writer.set(quote::Volume, volume);
  writer.set(quote::Flags, quote::kHasTrade);
  return tick;
}

IDepthMarketData quoteOf(int64 time, double bid, double ask) {
  IDepthMarketData tick;
  QuoteWriter writer(tick);
  writer.setTime(time);
  writer.setBid(0, bid, 1);
  writer.setAsk(0, ask, 1);
  writer.set(quote::Flags, quote::kHasBid | quote::kHasAsk);
  return tick;
}

TEST(CandleSeries, shouldKeepBarsAsTheyCameWhileTheyAreFew) {
  CandleSeries series = seriesOf(3);
  series.addBar(barOf(kMonday, 10, 12, 9, 11, 100));
  series.addBar(barOf(kMonday + 5 * kHour, 11, 11, 8, 8, 50));
  EXPECT_EQ(series.widthMs(), 0);
  EXPECT_EQ(series.candles(), (std::vector<Candle>{{kMonday, 10, 12, 9, 11, 100},
                                                   {kMonday + 5 * kHour, 11, 11, 8, 8, 50}}));
}

TEST(CandleSeries, shouldPutBarsTogetherByTheShortestIntervalThatMakesThemFewEnough) {
  CandleSeries series = seriesOf(3);
  for (int i = 0; i < 12; ++i) series.addBar(barOf(kMonday + i * kMinute, i, i + 2, i - 1, i + 1));
  EXPECT_EQ(series.widthMs(), 5 * kMinute);
  EXPECT_EQ(series.candles(), (std::vector<Candle>{{kMonday, 0, 6, -1, 5, 5},
                                                   {kMonday + 5 * kMinute, 5, 11, 4, 10, 5},
                                                   {kMonday + 10 * kMinute, 10, 13, 9, 12, 2}}));
  EXPECT_EQ(series.records(), 12u);
}

TEST(CandleSeries, shouldHoldNoMoreThanAskedForHoweverLongTheSeriesIs) {
  CandleSeries series = seriesOf(50);
  double volume = 0;
  for (int64 i = 0; i < 200'000; ++i) {
    const auto price = static_cast<double>(i % 977);
    series.addBar(barOf(kMonday + i * kMinute, price, price + 1, price - 1, price));
    ASSERT_LE(series.candles().size(), 50u);
  }
  for (const Candle& candle : series.candles()) volume += candle.volume;
  EXPECT_EQ(volume, 200'000);
  EXPECT_EQ(series.widthMs(), 7 * kDay);
  EXPECT_EQ(series.candles().front().open, 0);
  EXPECT_EQ(series.candles().back().close, static_cast<double>(199'999 % 977));
}

TEST(CandleSeries, shouldGiveTheSameCandlesAsBarsPutTogetherAtOnce) {
  // Widened step by step or from the start: with room for all, the intervals decide alone.
  CandleSeries narrow = seriesOf(4), wide = seriesOf(1000);
  for (int64 i = 0; i < 600; ++i) {
    const IKLine bar = barOf(kMonday + i * kMinute, 1, 2.0 + static_cast<double>(i % 7), 0.5, 1);
    narrow.addBar(bar);
    wide.addBar(bar);
  }
  ASSERT_EQ(narrow.widthMs(), 4 * kHour);
  ASSERT_EQ(narrow.candles().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    double high = 0, volume = 0;
    for (const Candle& candle : wide.candles()) {
      const auto at = static_cast<std::size_t>((candle.time - kMonday) / (4 * kHour));
      if (at != i) continue;
      high = std::max(high, candle.high);
      volume += candle.volume;
    }
    EXPECT_EQ(narrow.candles()[i].high, high);
    EXPECT_EQ(narrow.candles()[i].volume, volume);
  }
}

TEST(CandleSeries, shouldCutDaysAndWeeksByTheCalendarOfTheZone) {
  CandleSeries series = seriesOf(4, "Asia/Shanghai");
  // 23 hours from Monday 08:00 on, local time: Monday has 16 of them.
  for (int64 i = 0; i < 23; ++i) series.addBar(barOf(kMonday + i * kHour, 1, 1, 1, 1, 1, kHour));
  ASSERT_EQ(series.widthMs(), kDay);
  ASSERT_EQ(series.candles().size(), 2u);
  EXPECT_EQ(series.candles()[0].volume, 16);
  EXPECT_EQ(series.candles()[1].time, kMonday + 16 * kHour);
  CandleSeries weeks = seriesOf(2);
  // From a Friday on: the week ends with Sunday.
  for (int64 i = 0; i < 10; ++i) weeks.addBar(barOf(kMonday + (4 + i) * kDay, 1, 1, 1, 1, 1, kDay));
  ASSERT_EQ(weeks.widthMs(), 7 * kDay);
  EXPECT_EQ(weeks.candles()[0].volume, 3);
  EXPECT_EQ(weeks.candles()[1].time, kMonday + 7 * kDay);
}

TEST(CandleSeries, shouldPassOverBarsThatComeAgainOrHaveNoPrice) {
  CandleSeries series = seriesOf(10);
  const IKLine bar = barOf(kMonday, 1, 2, 1, 2);
  series.addBar(bar);
  series.addBar(bar);
  series.addBar(barOf(kMonday - kDay, 1, 2, 1, 2));
  series.addBar(barOf(kMonday + kMinute, std::nan(""), 2, 1, 2));
  EXPECT_EQ(series.candles().size(), 1u);
  EXPECT_EQ(series.records(), 1u);
  EXPECT_EQ(series.passedOver(), 3u);
}

TEST(CandleSeries, shouldTakeAVolumeThatIsNotToldForNone) {
  CandleSeries series = seriesOf(10);
  series.addBar(barOf(kMonday, 1, 1, 1, 1, std::nan("")));
  series.addBar(barOf(kMonday + kMinute, 1, 1, 1, 1, -1));
  for (const Candle& candle : series.candles()) EXPECT_EQ(candle.volume, 0);
}

TEST(CandleSeries, shouldMakeCandlesOfTicksByTheSecond) {
  CandleSeries series = seriesOf(10);
  series.addTick(tickOf(kMonday, 5, 1));
  series.addTick(tickOf(kMonday, 7, 2));
  series.addTick(tickOf(kMonday + 999, 4, 3));
  series.addTick(tickOf(kMonday + 1000, 6, 1));
  EXPECT_EQ(series.widthMs(), 1000);
  EXPECT_EQ(series.candles(),
            (std::vector<Candle>{{kMonday, 5, 7, 4, 4, 6}, {kMonday + 1000, 6, 6, 6, 6, 1}}));
}

TEST(CandleSeries, shouldShowTheMiddleOfBidAndAskUntilThereIsATrade) {
  CandleSeries series = seriesOf(10);
  series.addTick(quoteOf(kMonday, 10, 12));
  series.addTick(tickOf(kMonday + 1000, 10.5, 1));
  series.addTick(quoteOf(kMonday + 2000, 10, 12));
  ASSERT_EQ(series.candles().size(), 2u);
  EXPECT_EQ(series.candles()[0].close, 11);
  EXPECT_EQ(series.candles()[1].close, 10.5);
  EXPECT_EQ(series.passedOver(), 1u);
}

}  // namespace
}  // namespace orvane
