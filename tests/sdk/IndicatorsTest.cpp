#include "sdk/Indicators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <vector>

#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

using Values = std::vector<double>;

/// What an indicator said once it was ready, one value for each that it took from then on.
template <typename Indicator>
Values readyValues(Indicator indicator, const Values& input) {
  Values result;
  for (const double value : input) {
    indicator.add(value);
    if (indicator.isReady())
      result.push_back(indicator.value());
    else
      EXPECT_TRUE(std::isnan(indicator.value()));
  }
  return result;
}

/// Published values are rounded to the cent, and some of them were made of prices with more digits
/// than were published.
void expectPublished(const Values& values, const Values& published, double within) {
  ASSERT_EQ(values.size(), published.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], published[i], within) << i;
}

// Prices and values: StockCharts.com ChartSchool, "Moving Averages - Simple and Exponential",
// worksheet cs-movavg: ten days.
const Values kMeanPrices = {22.27, 22.19, 22.08, 22.17, 22.18, 22.13, 22.23, 22.43, 22.24, 22.29,
                            22.15, 22.39, 22.38, 22.61, 23.36, 24.05, 23.75, 23.83, 23.95, 23.63,
                            23.82, 23.87, 23.65, 23.19, 23.10, 23.33, 22.68, 23.10, 22.40, 22.17};

TEST(Sma, shouldGiveThePublishedValues) {
  expectPublished(readyValues(Sma(10), kMeanPrices),
                  {22.22, 22.21, 22.23, 22.26, 22.31, 22.42, 22.61, 22.77, 22.91, 23.08, 23.21,
                   23.38, 23.53, 23.65, 23.71, 23.69, 23.61, 23.51, 23.43, 23.28, 23.13},
                  0.011);
}

TEST(Ema, shouldGiveThePublishedValues) {
  expectPublished(readyValues(Ema(10), kMeanPrices),
                  {22.22, 22.21, 22.24, 22.27, 22.33, 22.52, 22.80, 22.97, 23.13, 23.28, 23.34,
                   23.43, 23.51, 23.54, 23.47, 23.40, 23.39, 23.26, 23.23, 23.08, 22.92},
                  0.011);
}

// Prices and values: StockCharts.com ChartSchool, "Relative Strength Index (RSI)", worksheet
// cs-rsi: 14 days of QQQQ.
TEST(Rsi, shouldGiveThePublishedValues) {
  const Values prices = {44.3389, 44.0902, 44.1497, 43.6124, 44.3278, 44.8264, 45.0955,
                         45.4245, 45.8433, 46.0826, 45.8931, 46.0328, 45.6140, 46.2820,
                         46.2820, 46.0028, 46.0328, 46.4116, 46.2222, 45.6439, 46.2122,
                         46.2521, 45.7137, 46.4515, 45.7835, 45.3548, 44.0288, 44.1783,
                         44.2181, 44.5672, 43.4205, 42.6628, 43.1314};
  expectPublished(readyValues(Rsi(14), prices),
                  {70.53, 66.32, 66.55, 69.41, 66.36, 57.97, 62.93, 63.26, 56.06, 62.38, 54.71,
                   50.42, 39.99, 41.46, 41.87, 45.46, 37.30, 33.08, 37.77},
                  0.0051);
}

// Prices and values: StockCharts.com ChartSchool, "Average True Range (ATR)", worksheet cs-atr: 14
// days of QQQQ, 1 April to 13 May 2010.
TEST(Atr, shouldGiveThePublishedValues) {
  const Values highs = {48.70, 48.72, 48.90, 48.87, 48.82, 49.05, 49.20, 49.35, 49.92, 50.19,
                        50.12, 49.66, 49.88, 50.19, 50.36, 50.57, 50.65, 50.43, 49.63, 50.33,
                        50.29, 50.17, 49.32, 48.50, 48.32, 46.80, 47.80, 48.39, 48.66, 48.79};
  const Values lows = {47.79, 48.14, 48.39, 48.37, 48.24, 48.64, 48.94, 48.86, 49.50, 49.87,
                       49.20, 48.90, 49.43, 49.73, 49.26, 50.09, 50.30, 49.21, 48.98, 49.61,
                       49.20, 49.43, 48.08, 47.64, 41.55, 44.28, 47.31, 47.20, 47.90, 47.73};
  const Values closes = {48.16, 48.61, 48.75, 48.63, 48.74, 49.03, 49.07, 49.32, 49.91, 50.13,
                         49.53, 49.50, 49.75, 50.03, 50.31, 50.52, 50.41, 49.34, 49.37, 50.23,
                         49.24, 49.93, 48.43, 48.18, 46.57, 45.41, 47.77, 47.72, 48.62, 47.85};
  Atr atr(14);
  Values values;
  for (std::size_t i = 0; i < closes.size(); ++i) {
    EXPECT_EQ(atr.isReady(), i >= 14);
    if (const double value = atr.add(highs[i], lows[i], closes[i]); atr.isReady())
      values.push_back(value);
  }
  expectPublished(values,
                  {0.55, 0.59, 0.59, 0.57, 0.61, 0.62, 0.64, 0.67, 0.69, 0.77, 0.78, 1.21, 1.30,
                   1.38, 1.37, 1.34, 1.32},
                  0.0061);
}

// Prices and values: StockCharts.com ChartSchool, "Bollinger Bands", worksheet cs-bbands: 20 days,
// 2 deviations.
TEST(Bollinger, shouldGiveThePublishedValues) {
  const Values prices = {86.16, 89.09, 88.78, 90.32, 89.07, 91.15, 89.44, 89.18, 86.93,
                         87.68, 86.96, 89.43, 89.32, 88.72, 87.45, 87.26, 89.50, 87.90,
                         89.13, 90.70, 92.90, 92.98, 91.80, 92.66, 92.68, 92.30, 92.77,
                         92.54, 92.95, 93.20, 91.07, 89.83, 89.74, 90.40, 90.74, 88.02,
                         88.09, 88.84, 90.78, 90.54, 91.39, 90.65};
  Bollinger bands(20, 2);
  Values middle, upper, lower;
  for (const double price : prices) {
    bands.add(price);
    if (!bands.isReady()) continue;
    middle.push_back(bands.middle());
    upper.push_back(bands.upper());
    lower.push_back(bands.lower());
  }
  expectPublished(
      middle, {88.71, 89.05, 89.24, 89.39, 89.51, 89.69, 89.75, 89.91, 90.08, 90.38, 90.66, 90.86,
               90.88, 90.91, 90.99, 91.15, 91.19, 91.12, 91.17, 91.25, 91.24, 91.17, 91.05},
      0.011);
  expectPublished(
      upper, {91.29, 91.95, 92.61, 92.93, 93.31, 93.73, 93.90, 94.26, 94.56, 94.79, 95.04, 94.91,
              94.90, 94.90, 94.86, 94.67, 94.56, 94.68, 94.58, 94.53, 94.53, 94.37, 94.15},
      0.011);
  expectPublished(
      lower, {86.12, 86.14, 85.87, 85.85, 85.70, 85.65, 85.59, 85.56, 85.60, 85.98, 86.27, 86.82,
              86.87, 86.91, 87.12, 87.63, 87.83, 87.56, 87.76, 87.97, 87.95, 87.96, 87.95},
      0.011);
}

TEST(Rsi, shouldBeAtItsEndsWhereOnlyOneSideMoves) {
  EXPECT_EQ(readyValues(Rsi(3), {1, 2, 3, 4, 4}), (Values{100, 100}));
  EXPECT_EQ(readyValues(Rsi(3), {4, 3, 2, 1}), (Values{0}));
  EXPECT_EQ(readyValues(Rsi(3), {7, 7, 7, 7}), (Values{50}));
}

TEST(Atr, shouldTakeGapsIntoTheTrueRange) {
  Atr atr(1);
  EXPECT_EQ(atr.add(10, 8, 9), 2);       // The first one has no close before it.
  EXPECT_EQ(atr.add(15, 14, 14), 6);     // From 9 up to 15.
  EXPECT_EQ(atr.add(10, 9.5, 10), 4.5);  // From 14 down to 9.5.
  IKLine bar;
  KLineWriter writer(bar);
  writer.set(kline::High, 13);
  writer.set(kline::Low, 11);
  writer.set(kline::Close, 12);
  EXPECT_EQ(atr.add(KLineView(bar)), 3);
}

TEST(RollingExtreme, shouldAnswerTheHighestAndTheLowestOfTheWindow) {
  const Values input = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
  EXPECT_EQ(readyValues(RollingHigh(3), input), (Values{4, 4, 5, 9, 9, 9, 6, 6}));
  EXPECT_EQ(readyValues(RollingLow(3), input), (Values{1, 1, 1, 1, 2, 2, 2, 3}));
  EXPECT_EQ(readyValues(RollingHigh(1), input), input);
}

TEST(Indicators, shouldHoldAgainstThePlainDefinitionAtEveryLength) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(seed));
  std::mt19937_64 random(seed);
  for (int length = 1; length <= 40; ++length) {
    Sma sma(length);
    Bollinger bands(length, 2);
    RollingHigh high(length);
    RollingLow low(length);
    Values input;
    for (int i = 0; i < 5 * length + 7; ++i) {
      input.push_back(static_cast<double>(random() % 20'000) / 8 - 1000);
      sma.add(input.back());
      bands.add(input.back());
      high.add(input.back());
      low.add(input.back());
      ASSERT_EQ(sma.isReady(), i + 1 >= length);
      if (!sma.isReady()) continue;
      const auto begin = input.end() - length;
      double sum = 0, squares = 0;
      for (auto at = begin; at != input.end(); ++at) sum += *at;
      for (auto at = begin; at != input.end(); ++at) squares += std::pow(*at - sum / length, 2);
      ASSERT_NEAR(sma.value(), sum / length, 1e-9);
      ASSERT_NEAR(bands.middle(), sum / length, 1e-9);
      ASSERT_NEAR(bands.deviation(), std::sqrt(squares / length), 1e-9);
      ASSERT_EQ(high.value(), *std::max_element(begin, input.end()));
      ASSERT_EQ(low.value(), *std::min_element(begin, input.end()));
    }
  }
}

TEST(Indicators, shouldKeepNothingOfAValueThatLeftTheWindow) {
  Sma sma(3);
  Bollinger bands(3);
  for (const double value : {1e17, 0.5, 0.25, 0.5, 0.75}) {
    sma.add(value);
    bands.add(value);
  }
  EXPECT_EQ(sma.value(), 0.5);
  EXPECT_EQ(bands.middle(), 0.5);
  EXPECT_NEAR(bands.deviation(), std::sqrt(0.125 / 3), 1e-15);
  Bollinger flat(7);
  for (int i = 0; i < 100; ++i) flat.add(1234567.1);
  EXPECT_EQ(flat.deviation(), 0);
  EXPECT_EQ(flat.upper(), 1234567.1);
}

TEST(Indicators, shouldRefuseALengthAndAValueThatMeanNothing) {
  EXPECT_THROW(Sma(0), std::invalid_argument);
  EXPECT_THROW(Ema(-1), std::invalid_argument);
  EXPECT_THROW(Rsi(0), std::invalid_argument);
  EXPECT_THROW(Atr(0), std::invalid_argument);
  EXPECT_THROW(Bollinger(0), std::invalid_argument);
  EXPECT_THROW(RollingHigh(0), std::invalid_argument);
  const double none = std::nan("");
  Sma sma(2);
  Ema ema(2);
  Rsi rsi(2);
  Atr atr(2);
  EXPECT_THROW(sma.add(none), std::invalid_argument);
  EXPECT_THROW(ema.add(HUGE_VAL), std::invalid_argument);
  EXPECT_THROW(rsi.add(none), std::invalid_argument);
  EXPECT_THROW(atr.add(1, none, 1), std::invalid_argument);
  // What was refused was not taken.
  sma.add(1);
  EXPECT_FALSE(sma.isReady());
  EXPECT_EQ(sma.add(2), 1.5);
  ema.add(1);
  EXPECT_EQ(ema.add(2), 1.5);
}

}  // namespace
}  // namespace orvane
