// The figures of a run, against values worked out by hand.

#include "host/Figures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "host/FigureText.h"
#include "platform/fields/FillView.h"
#include "tests/host/Durations.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

using test::kDay;

OrderFill fillOf(order::Offset offset, double profit, double fee, double turnover) {
  OrderFill fill;
  fill.ints[fill::OffsetAt] = static_cast<std::int32_t>(offset);
  fill.numbers[fill::Profit] = std::bit_cast<Word>(profit);
  fill.numbers[fill::Turnover] = std::bit_cast<Word>(turnover);
  fill.values[fill::Fee] = std::bit_cast<Word>(fee);
  return fill;
}

TEST(Figures, shouldBeEmptyWhereNothingHappened) {
  const Figures figures = makeFigures(1000, {}, {});
  EXPECT_EQ(figures.finalEquity, 1000);
  EXPECT_EQ(figures.profit, 0);
  EXPECT_FALSE(figures.annualReturn);
  EXPECT_FALSE(figures.sharpe);
  EXPECT_FALSE(figures.winRate);
  EXPECT_FALSE(figures.profitFactor);
  EXPECT_FALSE(figures.exposure);
  EXPECT_EQ(figures.drawdown.peakTime, kUnsetTime);
}

TEST(Figures, shouldTakeTheLastEquityOfEachDayForReturns) {
  const EquityCurve curve = {
      {0, 100, 0}, {10, 110, 0}, {kDay, 50, 0}, {kDay + 5, 99, 0}, {3 * kDay, 118.8, 0}};
  const std::vector<double> returns = dailyReturns(100, curve);
  ASSERT_EQ(returns.size(), 3u);
  EXPECT_NEAR(returns[0], 0.1, 1e-15);
  EXPECT_NEAR(returns[1], -0.1, 1e-15);
  EXPECT_NEAR(returns[2], 0.2, 1e-15);
}

TEST(Figures, shouldGiveSharpeAndSortinoOfDailyReturns) {
  const EquityCurve curve = {{0, 110, 0}, {kDay, 99, 0}, {2 * kDay, 118.8, 0}};
  const Figures figures = makeFigures(100, curve, {});
  // Returns 0.1, -0.1, 0.2: mean 1/15, sample variance 0.07/3, downside mean square 0.01/3.
  const double mean = 0.2 / 3;
  ASSERT_TRUE(figures.sharpe && figures.sortino);
  EXPECT_NEAR(*figures.sharpe, mean / std::sqrt(0.07 / 3) * std::sqrt(252.0), 1e-12);
  EXPECT_NEAR(*figures.sortino, mean / std::sqrt(0.01 / 3) * std::sqrt(252.0), 1e-12);
}

TEST(Figures, shouldGiveNoSharpeWhereReturnsDoNotVaryAndNoSortinoWithoutALoss) {
  const Figures flat = makeFigures(100, {{0, 100, 0}, {kDay, 100, 0}, {28 * kDay, 100, 0}}, {});
  EXPECT_FALSE(flat.sharpe);
  EXPECT_FALSE(flat.sortino);
  EXPECT_EQ(flat.annualVolatility, 0);
}

TEST(Figures, shouldTakeADayThatComesAgainForADayOfItsOwn) {
  const EquityCurve curve = {{-1, 110, 0}, {kDay, 121, 0}, {kDay - 1, 242, 0}, {kDay + 1, 121, 0}};
  const std::vector<double> returns = dailyReturns(100, curve);
  ASSERT_EQ(returns.size(), 4u);
  EXPECT_NEAR(returns[1], 0.1, 1e-12);
  EXPECT_NEAR(returns[2], 1, 1e-12);
  EXPECT_NEAR(returns[3], -0.5, 1e-12);
}

TEST(Figures, shouldFindTheDeeperOfTwoFallsThatAreNearlyAlike) {
  const EquityCurve curve = {{0, 1e6, 0}, {1, 5e5, 0}, {2, 1e6, 0}, {3, 5e5 - 1e-7, 0}};
  EXPECT_EQ(deepestDrawdown(1e6, curve).troughTime, 3);
}

TEST(Figures, shouldCompoundTheReturnOverAYear) {
  const auto halfYear = static_cast<int64>(365.25 / 2 * static_cast<double>(kDay));
  const Figures figures = makeFigures(100, {{0, 100, 0}, {halfYear, 110, 0}}, {});
  ASSERT_TRUE(figures.annualReturn);
  EXPECT_NEAR(*figures.annualReturn, 0.21, 1e-9);
  EXPECT_DOUBLE_EQ(*figures.totalReturn, 0.1);
}

TEST(Figures, shouldTellNothingByTheYearOfLessThanFourWeeks) {
  const auto endingAt = [](int64 end) {
    return makeFigures(100, {{0, 110, 0}, {kDay, 99, 0}, {end, 118.8, 0}}, {});
  };
  const Figures almost = endingAt(28 * kDay - 1);
  EXPECT_FALSE(almost.isLongEnoughForAYear());
  EXPECT_FALSE(almost.annualReturn);
  EXPECT_FALSE(almost.annualVolatility);
  EXPECT_TRUE(almost.sharpe && almost.sortino) << "runs of one span can still be ranked";
  const Figures enough = endingAt(28 * kDay);
  EXPECT_EQ(enough.days, 28);
  EXPECT_TRUE(enough.isLongEnoughForAYear());
  ASSERT_TRUE(enough.annualReturn && enough.annualVolatility);
  EXPECT_NEAR(*enough.annualReturn, std::pow(1.188, 365.25 / 28) - 1, 1e-9);
  EXPECT_NEAR(*enough.annualVolatility, std::sqrt(0.07 / 3 * 252), 1e-12);
}

TEST(Figures, shouldFindTheDeepestDrawdownWithItsDates) {
  const Drawdown fall = deepestDrawdown(
      100,
      {{1, 100, 0}, {2, 90, 0}, {3, 120, 0}, {4, 84, 0}, {5, 100, 0}, {6, 120, 0}, {7, 110, 0}});
  EXPECT_DOUBLE_EQ(fall.amount, 36);
  EXPECT_DOUBLE_EQ(fall.share.value(), 0.3);
  EXPECT_EQ(fall.peakTime, 3);
  EXPECT_EQ(fall.troughTime, 4);
  EXPECT_EQ(fall.recoveryTime, 6);
}

TEST(Figures, shouldTakeForRecoveryWhatComesBehindTheTroughAlone) {
  // At the trough's own time the peak was still there, and is reached again later.
  const Drawdown fall =
      deepestDrawdown(100, {{0, 100, 0}, {5, 90, 0}, {5, 100, 0}, {6, 99, 0}, {7, 100, 0}});
  EXPECT_EQ(fall.peakTime, 0);
  EXPECT_EQ(fall.troughTime, 5);
  EXPECT_EQ(fall.recoveryTime, 7);
}

TEST(Figures, shouldMakeOfACurveWhatEachFigureIsByItself) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(seed));
  std::mt19937_64 random(seed);
  for (int run = 0; run < support::randomRuns(300); ++run) {
    EquityPoints points;
    int64 time = static_cast<int64>(random() % 5) * kDay;
    for (std::size_t count = random() % 40; count > 0; --count) {
      points.push_back(
          {time, static_cast<double>(random() % 50) - 5, random() % 3 == 0 ? 0.0 : 7.0});
      time += static_cast<int64>(random() % 3) * kDay / 3;
    }
    const double start = static_cast<double>(random() % 3) * 10;
    const EquityCurve curve(points);
    const Figures figures = makeFigures(start, curve, {});
    const Drawdown alone = deepestDrawdown(start, curve);
    EXPECT_EQ(figures.drawdown.share, alone.share);
    EXPECT_EQ(figures.drawdown.amount, alone.amount);
    EXPECT_EQ(figures.drawdown.peakTime, alone.peakTime);
    EXPECT_EQ(figures.drawdown.troughTime, alone.troughTime);
    EXPECT_EQ(figures.drawdown.recoveryTime, alone.recoveryTime);
    const std::vector<double> returns = dailyReturns(start, curve);
    double mean = 0, squares = 0;
    for (const double each : returns) mean += each / static_cast<double>(returns.size());
    for (const double each : returns) squares += (each - mean) * (each - mean);
    if (returns.size() < 2) {
      EXPECT_FALSE(figures.sharpe);
    } else if (squares > 1e-12) {
      ASSERT_TRUE(figures.sharpe);
      const double deviation = std::sqrt(squares / static_cast<double>(returns.size() - 1));
      EXPECT_NEAR(*figures.sharpe, mean / deviation * std::sqrt(252), 1e-9);
    }
    int64 held = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
      held += points[i - 1].exposure > 0 ? points[i].time - points[i - 1].time : 0;
    const int64 whole = points.empty() ? 0 : points.back().time - points.front().time;
    ASSERT_EQ(figures.exposure.has_value(), whole > 0);
    if (whole > 0) {
      EXPECT_EQ(*figures.exposure, static_cast<double>(held) / static_cast<double>(whole));
    }
    if (HasFailure()) return;
  }
}

TEST(Figures, shouldLeaveTheRecoveryOutWhereItNeverCame) {
  EXPECT_EQ(deepestDrawdown(100, {{1, 100, 0}, {2, 90, 0}, {3, 99, 0}}).recoveryTime, kUnsetTime);
}

TEST(Figures, shouldGiveNoShareOfAnAccountThatBeganWithoutMoney) {
  const Drawdown fall = deepestDrawdown(0, {{1, 0, 0}, {2, 7, 0}, {3, -84, 0}, {4, -50, 0}});
  EXPECT_EQ(fall.share, std::nullopt);
  EXPECT_DOUBLE_EQ(fall.amount, 91);
  EXPECT_EQ(fall.peakTime, 2);
  EXPECT_EQ(fall.troughTime, 3);
  EXPECT_EQ(deepestDrawdown(100, {{1, 100, 0}}).share, 0);
  const Drawdown inDebt = deepestDrawdown(0, {{1, -5, 0}, {2, -12, 0}});
  EXPECT_DOUBLE_EQ(inDebt.amount, 7);
  EXPECT_EQ(inDebt.peakTime, 1);
}

TEST(Figures, shouldTellDifferencesWithoutTheNoiseOfTheirSubtraction) {
  const Figures figures = makeFigures(1'000'000, {{1, 1'000'300.1, 0}, {2, 1'000'260.55, 0}}, {});
  EXPECT_EQ(figures.profit, 260.55);
  EXPECT_EQ(figures.totalReturn, 260.55 / 1'000'000);
  EXPECT_EQ(figures.drawdown.amount, 39.55);
  EXPECT_EQ(makeFigures(1e14, {{1, 1e14 + 0.5, 0}}, {}).profit, 0.5);
  EXPECT_EQ(makeFigures(0.001, {{1, 0.00100000001, 0}}, {}).profit, 1e-11);
  EXPECT_EQ(makeFigures(9'000'000, {{1, 9'000'000.1, 0}}, {}).profit, 0.1);
  EXPECT_EQ(makeFigures(0, {}, {}).profit, 0);
  EXPECT_EQ(makeFigures(1495.86, {{1, 4071.76, 0}}, {}).profit, 2575.9);
  EXPECT_EQ(makeFigures(1000, {{1, -3096.03, 0}}, {}).profit, -4096.03);
}

TEST(Figures, shouldTellEveryDifferenceOfMillionthsExactly) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  for (int run = 0; run < 20'000; ++run) {
    const auto millionths = [&] {
      const auto size = static_cast<std::int64_t>(random() % 1'000'000'000'000);
      return random() % 2 == 0 ? size : -size;
    };
    const std::int64_t one = millionths(), other = millionths();
    const double expected = static_cast<double>(one - other) / 1e6;
    ASSERT_EQ(
        makeFigures(static_cast<double>(other) / 1e6, {{1, static_cast<double>(one) / 1e6, 0}}, {})
            .profit,
        expected)
        << one << " " << other;
  }
}

TEST(FigureText, shouldShowWhatTwoDecimalsWouldHide) {
  EXPECT_EQ(percentText(0.1234567), "12.35%");
  EXPECT_EQ(percentText(0.0000437), "0.0044%");
  EXPECT_EQ(percentText(-0.0000437), "-0.0044%");
  EXPECT_EQ(percentText(0), "0.00%");
  EXPECT_EQ(percentText(-1e-9), "0.00%");
  EXPECT_EQ(percentText(0.0000005), "0.00%");
}

TEST(Figures, shouldCountClosingFillsAfterTheirFees) {
  const Figures figures =
      makeFigures(1000, {},
                  {fillOf(order::Offset::Open, 0, 1, 50), fillOf(order::Offset::Close, 31, 1, 60),
                   fillOf(order::Offset::Close, -9, 1, 70), fillOf(order::Offset::Close, 1, 1, 80),
                   fillOf(order::Offset::CloseToday, 10, 0, 90)});
  EXPECT_EQ(figures.fills, 5u);
  EXPECT_EQ(figures.closings, 4u);
  EXPECT_DOUBLE_EQ(*figures.winRate, 0.5);
  EXPECT_DOUBLE_EQ(*figures.profitFactor, 4);
  EXPECT_DOUBLE_EQ(*figures.meanWin, 20);
  EXPECT_DOUBLE_EQ(*figures.meanLoss, -10);
  EXPECT_DOUBLE_EQ(figures.turnover, 350);
  EXPECT_DOUBLE_EQ(figures.fees, 4);
}

TEST(Figures, shouldWeighExposureByTime) {
  EXPECT_DOUBLE_EQ(
      *makeFigures(100, {{0, 100, 0}, {10, 100, 5}, {40, 100, 0}, {100, 100, 0}}, {}).exposure,
      0.3);
}

}  // namespace
}  // namespace orvane
