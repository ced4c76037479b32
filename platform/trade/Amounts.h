#pragma once

#include <bit>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "shared/Types.h"

namespace orvane::detail {

__extension__ typedef __int128 Int128;

/// A decimal number of a fixed count of decimals, held as an integer: sums and comparisons are
/// exact. `Tag` keeps prices, volumes and money apart.
template <typename Units, int kDecimals, typename Tag>
struct Fixed {
  Units units = 0;

  friend auto operator<=>(const Fixed&, const Fixed&) = default;
  Fixed operator-() const { return {-units}; }
  Fixed& operator+=(Fixed other) { return units += other.units, *this; }
  Fixed& operator-=(Fixed other) { return units -= other.units, *this; }
  friend Fixed operator+(Fixed a, Fixed b) { return a += b; }
  friend Fixed operator-(Fixed a, Fixed b) { return a -= b; }
  bool isZero() const { return units == 0; }
  bool isPositive() const { return units > 0; }
};

/// A price, to 10 decimals: up to 9.2e8.
using Price = Fixed<int64, 10, struct PriceTag>;
/// A volume in lots, shares or coins, to 8 decimals: up to 9.2e10.
using Volume = Fixed<int64, 8, struct VolumeTag>;
/// The contract multiplier, to 4 decimals.
using Multiplier = Fixed<int64, 4, struct MultiplierTag>;
/// A share of a turnover, to 10 decimals.
using Rate = Fixed<int64, 10, struct RateTag>;
/// Money, to 22 decimals: price times volume times multiplier without any rounding, up to 1.7e16.
using Money = Fixed<Int128, 22, struct MoneyTag>;

/// The decimal text, such as "0.2" or "-1000000", of a fixed number; empty if it is none, has too
/// many decimals or is out of range.
std::optional<Price> priceOf(std::string_view decimal);
std::optional<Volume> volumeOf(std::string_view decimal);
std::optional<Multiplier> multiplierOf(std::string_view decimal);
std::optional<Rate> rateOf(std::string_view decimal);
std::optional<Money> moneyOf(std::string_view decimal);

/// A double that stands for a decimal of at most two decimals, in units of 10^-kDecimals; empty if
/// it has more of them, or is too large to tell at once.
template <int kDecimals>
std::optional<int64> ofFewDecimals(double value) {
  // Below 10^15 the integer is the only one whose quotient is this double. Adding and taking off
  // leaves no room for a fraction: rounded to the nearest integer without a call.
  constexpr double kLargest = 9e8, kNoFraction = 3 * 0x1p51;
  constexpr int64 kRest = [] {
    int64 rest = 1;
    for (int i = 2; i < kDecimals; ++i) rest *= 10;
    return rest;
  }();
  if (!(value > -kLargest && value < kLargest)) return std::nullopt;
  const double hundredths = (value * 100 + kNoFraction) - kNoFraction;
  if (hundredths / 100 != value) return std::nullopt;
  return static_cast<int64>(hundredths) * kRest;
}

/// `priceOf` and `volumeOf` of any double.
std::optional<Price> anyPriceOf(double value);
std::optional<Volume> anyVolumeOf(double value);

/// The decimal that a double stands for (the shortest one that reads back as it), rounded half
/// away from zero to the decimals of the type; empty if it is not finite or out of range.
inline std::optional<Price> priceOf(double value) {
  if (const auto units = ofFewDecimals<10>(value)) return Price{*units};
  return anyPriceOf(value);
}
inline std::optional<Volume> volumeOf(double value) {
  if (const auto units = ofFewDecimals<8>(value)) return Volume{*units};
  return anyVolumeOf(value);
}

/// A volume that market data tell; empty if they tell none, which is 0, below 0 or no number. What
/// is beyond the range counts as the largest volume.
std::optional<Volume> marketVolumeOf(double value);

/// The sum, or the end of the range that it would go beyond.
template <typename Units, int kDecimals, typename Tag>
Fixed<Units, kDecimals, Tag> cappedSum(Fixed<Units, kDecimals, Tag> a,
                                       Fixed<Units, kDecimals, Tag> b) {
  Units sum = 0;
  if (!__builtin_add_overflow(a.units, b.units, &sum)) return {sum};
  constexpr Units kHighest = static_cast<Units>(~(Units{1} << (sizeof(Units) * 8 - 1)));
  return {b.units < 0 ? -kHighest : kHighest};
}

/// The nearest double to units / 10^kDecimals, for 4, 8 and 10 decimals; of two that are as near,
/// the even one.
template <int kDecimals>
double nearestDouble(Int128 units);

/// The nearest double.
template <int kDecimals, typename Tag>
double toDouble(Fixed<int64, kDecimals, Tag> number) {
  // Integers up to here are doubles, and so are these powers of ten: a quotient of the two is
  // rounded once, and right.
  constexpr int64 kExact = int64{1} << 53;
  constexpr int64 kPower = [] {
    int64 power = 1;
    for (int i = 0; i < kDecimals; ++i) power *= 10;
    return power;
  }();
  if (number.units > -kExact && number.units < kExact)
    return static_cast<double>(number.units) / static_cast<double>(kPower);
  return nearestDouble<kDecimals>(number.units);
}
double toDouble(Money money);

/// The exact decimal text without trailing zeros.
std::string text(Price price);
std::string text(Volume volume);
std::string text(Money money);

/// Units of money times a factor; empty if they are out of range.
std::optional<Money> checkedProduct(Int128 units, int64 factor);

/// Price times volume times multiplier, exactly; empty if it is out of range.
inline std::optional<Money> turnoverOf(Price price, Volume volume, Multiplier multiplier) {
  // Twice 63 bits always fit, and with 24 more those that leave room for them.
  const Int128 units = Int128{price.units} * volume.units;
  constexpr int64 kRoom = int64{1} << 38;
  const auto high = static_cast<int64>(units >> 64);
  if (high < kRoom && high >= -kRoom && multiplier.units >= 0 && multiplier.units < (1 << 24))
    return Money{units * multiplier.units};
  return checkedProduct(units, multiplier.units);
}
/// A share of an amount, rounded half away from zero to 8 decimals; empty if it is out of range.
std::optional<Money> shareOf(Money amount, Rate rate);
/// Money for a volume at so much for each unit, rounded half away from zero to 8 decimals; empty
/// if it is out of range.
std::optional<Money> chargeOf(Money each, Volume volume);

/// A number as records carry it.
inline Word wordOf(double value) { return std::bit_cast<Word>(value); }

}  // namespace orvane::detail
