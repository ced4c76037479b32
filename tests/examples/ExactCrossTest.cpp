#include "examples/sma_cross/ExactCross.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Signal = ExactCross::Signal;

/// The double of a decimal number, as a file's reader makes it.
double decimal(long long mantissa, int decimals) {
  return std::strtod((std::to_string(mantissa) + "e-" + std::to_string(decimals)).c_str(), nullptr);
}

std::vector<Signal> signalsOf(std::size_t fast, std::size_t slow,
                              const std::vector<double>& closes) {
  ExactCross cross(fast, slow);
  std::vector<Signal> result;
  for (const double close : closes) result.push_back(cross.add(close));
  return result;
}

/// The definition itself, over integers: sums anew at each bar.
std::vector<Signal> expectedSignals(std::size_t fast, std::size_t slow,
                                    const std::vector<long long>& closes) {
  std::vector<Signal> result;
  int last = 0;
  for (std::size_t i = 0; i < closes.size(); ++i) {
    result.push_back(Signal::None);
    if (i + 1 < slow) continue;
    long long fastSum = 0, slowSum = 0;
    for (std::size_t k = 0; k < fast; ++k) fastSum += closes[i - k];
    for (std::size_t k = 0; k < slow; ++k) slowSum += closes[i - k];
    const long long difference =
        fastSum * static_cast<long long>(slow) - slowSum * static_cast<long long>(fast);
    if (difference == 0) continue;
    const int sign = difference > 0 ? 1 : -1;
    if (last < 0 && sign > 0) result.back() = Signal::Up;
    if (last > 0 && sign < 0) result.back() = Signal::Down;
    last = sign;
  }
  return result;
}

TEST(ExactCross, shouldAgreeWithItsDefinitionForEveryPriceTick) {
  constexpr unsigned kSeed = 20210104;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937_64 random(kSeed);
  for (const auto& [tick, decimals] :
       std::vector<std::pair<long long, int>>{{2, 1}, {5, 2}, {1, 0}, {1, 5}, {25, 2}, {1, 8}}) {
    for (const auto& [fast, slow] :
         std::vector<std::pair<std::size_t, std::size_t>>{{1, 2}, {2, 4}, {5, 20}, {7, 30}}) {
      std::vector<long long> mantissas;
      std::vector<double> closes;
      long long price = 20'000;
      for (int i = 0; i < 2'000; ++i) {
        // Small steps, so that equal means are common.
        price += static_cast<long long>(random() % 3) - 1;
        mantissas.push_back(price * tick);
        closes.push_back(decimal(price * tick, decimals));
      }
      EXPECT_EQ(signalsOf(fast, slow, closes), expectedSignals(fast, slow, mantissas))
          << "tick " << tick << "e-" << decimals << ", " << fast << " and " << slow;
    }
  }
}

TEST(ExactCross, shouldSeeEqualMeansWhereBinarySumsDiffer) {
  const std::vector<double> closes = {0.2, 0.1, 0.3, 0.2};
  // On paper the last close is the mean of the last three; in binary it falls below it, which
  // would be a cross after the rise before.
  ASSERT_LT(closes[3], (closes[1] + closes[2] + closes[3]) / 3);
  EXPECT_EQ(signalsOf(1, 3, closes), std::vector<Signal>(4, Signal::None));
}

TEST(ExactCross, shouldNotSignalBeforeThereIsADifferenceToCompareWith) {
  EXPECT_EQ(signalsOf(1, 2, {1, 2}), (std::vector<Signal>{Signal::None, Signal::None}));
}

TEST(ExactCross, shouldLetEqualMeansChangeNothing) {
  // Up, equal, up again: no cross. Up, equal, down: one, at the down.
  EXPECT_EQ(signalsOf(1, 2, {1, 2, 2, 3, 3, 2}),
            (std::vector<Signal>{Signal::None, Signal::None, Signal::None, Signal::None,
                                 Signal::None, Signal::Down}));
}

TEST(ExactCross, shouldFollowWhenLaterPricesHaveMoreDecimals) {
  EXPECT_EQ(signalsOf(1, 2, {3, 2, 2.5, 2.25, 2.2500001, 2.25}),
            expectedSignals(
                1, 2, {30'000'000, 20'000'000, 25'000'000, 22'500'000, 22'500'001, 22'500'000}));
}

TEST(ExactCross, shouldWorkBelowZero) {
  EXPECT_EQ(signalsOf(1, 2, {-37.63, -37.6, -37.65}), expectedSignals(1, 2, {-3763, -3760, -3765}));
}

TEST(ExactCross, shouldRefuseWhatHasNoExactSum) {
  ExactCross cross(1, 2);
  EXPECT_THROW(cross.add(std::numeric_limits<double>::quiet_NaN()), std::range_error);
  EXPECT_THROW(cross.add(std::numeric_limits<double>::infinity()), std::range_error);
  EXPECT_THROW(cross.add(1e30), std::range_error);
  cross.add(1e15);
  EXPECT_THROW(cross.add(1e-25), std::range_error);
}

}  // namespace
