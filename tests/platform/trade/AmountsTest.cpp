// Exact amounts.

#include "platform/trade/Amounts.h"
#include "tests/support/RandomRuns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace orvane::detail {
namespace {

TEST(Amounts, shouldReadDecimalsExactlyAndNothingElse) {
  EXPECT_EQ(priceOf(std::string_view("0.2"))->units, 2'000'000'000);
  EXPECT_EQ(priceOf(std::string_view("-1.5"))->units, -15'000'000'000);
  EXPECT_EQ(priceOf(std::string_view("1.10000000000000"))->units, 11'000'000'000);
  for (const char* bad :
       {"", "-", ".", "1.2.3", "1e5", " 1", "1 ", "x", "0.12345678901", "922337203.7"})
    EXPECT_FALSE(priceOf(std::string_view(bad))) << bad;
}

TEST(Amounts, shouldTakeADoubleForTheShortestDecimalThatReadsBackAsIt) {
  EXPECT_EQ(text(*priceOf(0.1)), "0.1");
  EXPECT_EQ(text(*priceOf(5230.2)), "5230.2");
  EXPECT_EQ(text(*priceOf(900000.1)), "900000.1");
  EXPECT_EQ(text(*priceOf(1.23456789)), "1.23456789");
  EXPECT_EQ(text(*priceOf(1.23456789005)), "1.2345678901");
  EXPECT_EQ(text(*priceOf(-1.23456789005)), "-1.2345678901");
  EXPECT_EQ(text(*volumeOf(0.00000001)), "0.00000001");
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e10})
    EXPECT_FALSE(priceOf(bad)) << bad;
}

TEST(Amounts, shouldGiveTheNearestDoubleBack) {
  for (const char* decimal : {"0", "0.2", "1003429.6", "-0.0000000001", "92233720.1234567891"})
    EXPECT_EQ(toDouble(*priceOf(std::string_view(decimal))), std::strtod(decimal, nullptr));
  for (const char* decimal :
       {"1000000.01", "12345678901234.0123456789", "0.0000000000000000000001"})
    EXPECT_EQ(toDouble(*moneyOf(std::string_view(decimal))), std::strtod(decimal, nullptr));
}

TEST(Amounts, shouldGiveTheNearestDoubleOfAmountsOfEverySize) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto expectNearest = [](auto amount) {
    const std::string decimal = text(amount);
    EXPECT_EQ(toDouble(amount), std::strtod(decimal.c_str(), nullptr)) << decimal;
  };
  for (int run = 0; run < 20'000; ++run) {
    const auto wide = static_cast<Int128>(random()) << 64 | random();
    expectNearest(Money{wide >> random() % 120});
    const auto units = static_cast<int64>(random()) >> random() % 63;
    expectNearest(Price{units});
    expectNearest(Volume{units});
    // What fees are rounded to.
    expectNearest(Money{Int128{units} / 10'000 * 100'000'000'000'000});
  }
}

TEST(Amounts, shouldTakeTheEvenOneOfTwoDoublesThatAreAsNear) {
  constexpr int64 kEven = int64{1} << 53;
  const Money one = *moneyOf(std::string_view("1"));
  for (const int64 whole : {kEven + 1, kEven + 3, kEven + 4095}) {
    const auto expected = static_cast<double>(whole);  // It is rounded so, too.
    EXPECT_EQ(toDouble(Money{one.units * whole}), expected) << whole;
    EXPECT_EQ(toDouble(Money{-one.units * whole}), -expected) << whole;
    // The smallest part more or less ends the tie.
    EXPECT_EQ(toDouble(Money{one.units * whole + 1}), static_cast<double>(whole + 1));
    EXPECT_EQ(toDouble(Money{one.units * whole - 1}), static_cast<double>(whole - 1));
  }
}

TEST(Amounts, shouldDecideRightBetweenTwoDoublesAlsoNextToTheirMiddle) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  Int128 unit = 1;
  for (int i = 0; i < 22; ++i) unit *= 5;
  unit <<= 22;  // What is 1.
  for (int bits = 1; bits <= 22; ++bits)
    for (int run = 0; run < 500; ++run) {
      // 54 binary digits, the last one set: as far from one double as from the next.
      const std::uint64_t middle = std::uint64_t{1} << 53 | random() >> 11 | 1;
      for (const int off : {-1000, -1, 0, 1, 1000}) {
        const Money amount{static_cast<Int128>(middle) * (unit >> bits) + off};
        const std::string decimal = text(amount);
        ASSERT_EQ(toDouble(amount), std::strtod(decimal.c_str(), nullptr)) << decimal;
        ASSERT_EQ(toDouble(-amount), -toDouble(amount)) << decimal;
      }
    }
}

TEST(Amounts, shouldTakeADoubleOfManyDecimalsForTheirShortestForm) {
  for (const char* decimal : {"1.08423", "0.000123", "67123.4567891", "0.00000001", "12.3456789",
                              "9999999.12345678", "-1.0842301", "0.1234567891"})
    EXPECT_EQ(priceOf(std::strtod(decimal, nullptr)), priceOf(std::string_view(decimal)))
        << decimal;
}

TEST(Amounts, shouldTakeADoubleOfFewDecimalsForTheSameAsAnyOther) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto expectSame = [](double value) {
    EXPECT_EQ(priceOf(value), anyPriceOf(value)) << value;
    EXPECT_EQ(volumeOf(value), anyVolumeOf(value)) << value;
  };
  for (int run = 0; run < 50'000; ++run) {
    const auto hundredths = static_cast<int64>(random()) >> random() % 63;
    const double value = static_cast<double>(hundredths) / (random() % 2 == 0 ? 100 : 10'000);
    for (const double near : {value, std::nextafter(value, 0), std::nextafter(value, 1e300)})
      expectSame(near);
  }
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  // Both sides of where the short way ends, and of the ends of the ranges.
  for (const double value :
       {0.0, 9e8, 9.2e8, 9.3e8, 9e10, 9.3e10, 0.005, 0.125, kLeast, kNone, kEndless, 0x1p53, 1e300})
    for (const double near : {value, std::nextafter(value, 0), std::nextafter(value, 1e301)})
      for (const double either : {near, -near}) expectSame(either);
  EXPECT_EQ(priceOf(-12.5), Price{-125'000'000'000});
  EXPECT_EQ(volumeOf(0.07), Volume{7'000'000});
}

TEST(Amounts, shouldMultiplyWithoutRounding) {
  const auto turnover =
      turnoverOf(*priceOf(std::string_view("3447.2")), *volumeOf(std::string_view("0.00000003")),
                 Multiplier{3'000'000});
  EXPECT_EQ(text(*turnover), "0.0310248");
}

TEST(Amounts, shouldMultiplyAlikeOnBothSidesOfWhereItMustBeChecked) {
  // Checked from 2^102 before the multiplier on, and from a multiplier of 2^24 on.
  constexpr int64 kRoot = int64{1} << 51;
  for (const int64 price : {kRoot - 1, kRoot, kRoot + 1, -kRoot - 1, -kRoot, -kRoot + 1,
                            std::numeric_limits<int64>::max(), std::numeric_limits<int64>::min()}) {
    for (const int64 volume : {kRoot - 1, kRoot, kRoot + 1, int64{1}, int64{0}}) {
      for (const int64 multiplier : {0, 1, (1 << 24) - 1, 1 << 24, (1 << 24) + 1, -1, -(1 << 24)}) {
        Int128 expected = 0;
        const bool fits =
            !__builtin_mul_overflow(Int128{price} * volume, Int128{multiplier}, &expected);
        const auto turnover = turnoverOf(Price{price}, Volume{volume}, Multiplier{multiplier});
        ASSERT_EQ(turnover.has_value(), fits) << price << " " << volume << " " << multiplier;
        ASSERT_TRUE(!fits || turnover->units == expected) << price << " " << volume;
      }
    }
  }
}

TEST(Amounts, shouldTurnIntoTheNearestDoubleOnBothSidesOfWhatIsExact) {
  constexpr int64 kExact = int64{1} << 53;
  for (const int64 units : {kExact - 1, kExact, kExact + 1, kExact + 2, kExact + 3}) {
    const std::string decimal = text(Price{units});
    EXPECT_EQ(toDouble(Price{units}), std::strtod(decimal.c_str(), nullptr)) << decimal;
    EXPECT_EQ(toDouble(Price{-units}), -toDouble(Price{units})) << decimal;
  }
}

TEST(Amounts, shouldRefuseWhatDoesNotFit) {
  EXPECT_FALSE(turnoverOf(Price{std::numeric_limits<int64>::max()},
                          Volume{std::numeric_limits<int64>::max()}, Multiplier{10'000}));
}

TEST(Amounts, shouldRoundSharesHalfAwayFromZeroToEightDecimals) {
  const auto share = [](const char* amount, const char* rate) {
    return text(*shareOf(*moneyOf(std::string_view(amount)), *rateOf(std::string_view(rate))));
  };
  EXPECT_EQ(share("1000", "0.0001"), "0.1");
  EXPECT_EQ(share("0.00000001", "0.5"), "0.00000001");
  EXPECT_EQ(share("-0.00000001", "0.5"), "-0.00000001");
  EXPECT_EQ(share("0.00000001", "0.4999999999"), "0");
  EXPECT_EQ(share("1234567890123.12345678", "1"), "1234567890123.12345678");
  EXPECT_EQ(text(*chargeOf(*moneyOf(std::string_view("1.5")), *volumeOf(std::string_view("3")))),
            "4.5");
}

TEST(Amounts, shouldReadTheVolumesOfAMarketOrThatNoneIsTold) {
  EXPECT_EQ(marketVolumeOf(1.5), Volume{150'000'000});
  for (const double none : {0.0, -0.0, -1.0, std::nan(""), -HUGE_VAL})
    EXPECT_FALSE(marketVolumeOf(none)) << none;
  for (const double many : {9.3e10, 1e300, HUGE_VAL})
    EXPECT_EQ(marketVolumeOf(many), Volume{std::numeric_limits<int64>::max()}) << many;
  EXPECT_EQ(marketVolumeOf(1e-9), Volume{});  // Told, and less than what is dealt in.
}

TEST(Amounts, shouldCapASumAtTheEndOfItsRange) {
  constexpr int64 kHighest = std::numeric_limits<int64>::max();
  EXPECT_EQ(cappedSum(Volume{1}, Volume{2}), Volume{3});
  EXPECT_EQ(cappedSum(Volume{kHighest}, Volume{1}), Volume{kHighest});
  EXPECT_EQ(cappedSum(Volume{-kHighest}, Volume{-5}), Volume{-kHighest});
  EXPECT_EQ(cappedSum(Volume{kHighest}, Volume{-5}), Volume{kHighest - 5});
  const Money most{~(Int128{1} << 127)};
  EXPECT_EQ(cappedSum(most, most), most);
  EXPECT_EQ(cappedSum(-most, -most), -most);
}

}  // namespace
}  // namespace orvane::detail
