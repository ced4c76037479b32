#include "platform/trade/Amounts.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace orvane::detail {
namespace {

__extension__ typedef unsigned __int128 UInt128;

constexpr int kMoneyDecimals = 22;
constexpr int kRoundedDecimals = 8;
/// Integers up to here are doubles, and so are the powers of ten up to 10^22: a quotient of the two
/// is rounded once, and right.
constexpr Int128 kExactInteger = Int128{1} << 53;
constexpr int kDoubleDigits = std::numeric_limits<double>::digits;

constexpr Int128 powerOf(int base, int exponent) {
  Int128 result = 1;
  for (int i = 0; i < exponent; ++i) result *= base;
  return result;
}
constexpr Int128 powerOfTen(int exponent) { return powerOf(10, exponent); }

constexpr Int128 kMaxInt128 = ~(Int128{1} << 127);

template <typename Units>
constexpr Int128 limitOf() {
  if constexpr (sizeof(Units) == sizeof(Int128)) return kMaxInt128;
  return std::numeric_limits<int64>::max();
}

std::optional<Int128> multiplied(Int128 a, Int128 b) {
  Int128 result = 0;
  if (__builtin_mul_overflow(a, b, &result)) return std::nullopt;
  return result;
}

/// "[-]digits[.digits]", and nothing else.
template <typename Number, int kDecimals>
std::optional<Number> parse(std::string_view decimal) {
  const bool isNegative = decimal.starts_with('-');
  if (isNegative) decimal.remove_prefix(1);
  Int128 units = 0;
  int digits = 0;
  int decimals = -1;  // -1 before the point.
  for (const char c : decimal) {
    if (c == '.' && decimals < 0) {
      decimals = 0;
      continue;
    }
    if (c < '0' || c > '9') return std::nullopt;
    ++digits;
    if (decimals >= kDecimals && c != '0') return std::nullopt;
    if (decimals >= kDecimals) continue;
    if (decimals >= 0) ++decimals;
    const auto shifted = multiplied(units, 10);
    if (!shifted || *shifted > kMaxInt128 - (c - '0')) return std::nullopt;
    units = *shifted + (c - '0');
  }
  if (digits == 0) return std::nullopt;
  const auto scaled = multiplied(units, powerOfTen(kDecimals - (decimals < 0 ? 0 : decimals)));
  using Units = decltype(Number::units);
  if (!scaled || *scaled > limitOf<Units>()) return std::nullopt;
  return Number{static_cast<Units>(isNegative ? -*scaled : *scaled)};
}

/// The decimal that a double stands for, in units of 10^-kDecimals.
template <typename Number, int kDecimals>
std::optional<Number> nearest(double value) {
  constexpr auto scale = static_cast<double>(powerOfTen(kDecimals));
  if (!std::isfinite(value) || std::abs(value) >= 9.2e18 / scale) return std::nullopt;
  // Most have few decimals. Below 10^15 the integer is the only one whose quotient is this double.
  struct Few {
    double power;
    int64 rest;
  };
  constexpr auto few = [](int decimals) {
    return Few{static_cast<double>(powerOfTen(decimals)),
               static_cast<int64>(powerOfTen(kDecimals - decimals))};
  };
  // Nearly all of two decimals or none were met before.
  constexpr std::array kFew{few(2), few(4), few(6), few(8)};
  for (const auto& [power, rest] : kFew) {
    const double moved = value * power;
    if (!(std::abs(moved) < 1e15)) continue;
    // Adding it leaves no room for a fraction: rounded to the nearest integer without a call.
    constexpr double kNoFraction = 3 * 0x1p51;
    const double units = (moved + kNoFraction) - kNoFraction;
    if (units / power == value) return Number{static_cast<int64>(units) * rest};
  }
  std::array<char, 400> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr;
  std::string_view all(text.data(), static_cast<std::size_t>(end - text.data()));
  const auto point = all.find('.');
  if (point == std::string_view::npos || all.size() - point - 1 <= kDecimals)
    return parse<Number, kDecimals>(all);
  const bool roundsUp = all[point + 1 + kDecimals] >= '5';
  auto cut = parse<Number, kDecimals>(all.substr(0, point + 1 + kDecimals));
  if (cut && roundsUp) cut->units += value < 0 ? -1 : 1;
  return cut;
}

std::string decimalText(Int128 units, int decimals) {
  const bool isNegative = units < 0;
  // The lowest value has no counterpart; no amount is that low.
  Int128 rest = isNegative ? -units : units;
  std::string reversed;
  for (int place = 0; place < decimals; ++place, rest /= 10) {
    const char digit = static_cast<char>('0' + static_cast<int>(rest % 10));
    if (digit != '0' || !reversed.empty()) reversed.push_back(digit);
  }
  if (!reversed.empty()) reversed.push_back('.');
  do {
    reversed.push_back(static_cast<char>('0' + static_cast<int>(rest % 10)));
    rest /= 10;
  } while (rest != 0);
  if (isNegative) reversed.push_back('-');
  return {reversed.rbegin(), reversed.rend()};
}

constexpr int leadingZeros(UInt128 value) {
  const auto high = static_cast<std::uint64_t>(value >> 64);
  return high != 0 ? std::countl_zero(high)
                   : 64 + std::countl_zero(static_cast<std::uint64_t>(value));
}

/// digits x 2^exponent, where that is a normal double and `digits` are at most 2^53.
double scaled(std::uint64_t digits, int exponent) {
  constexpr int kBias = std::numeric_limits<double>::max_exponent - 1;
  const auto power = static_cast<std::uint64_t>(exponent + kBias) << (kDoubleDigits - 1);
  return static_cast<double>(digits) * std::bit_cast<double>(power);
}

/// The nearest double to dividend / (5^kDecimals x 2^twos); the dividend's first bit is set.
template <int kDecimals>
double longQuotient(UInt128 dividend, int twos) {
  // The quotient has more bits than a double, whose last one it decides together with whether
  // anything is left over.
  constexpr auto fives = static_cast<std::uint64_t>(powerOf(5, kDecimals));
  const UInt128 quotient = dividend / fives;
  const bool isWhole = quotient * fives == dividend;
  const int surplus = 128 - leadingZeros(quotient) - kDoubleDigits;
  const UInt128 half = UInt128{1} << (surplus - 1);
  const UInt128 rest = quotient & (half + half - 1);
  auto kept = static_cast<std::uint64_t>(quotient >> surplus);
  if (rest > half || (rest == half && (!isWhole || (kept & 1) != 0))) ++kept;
  return scaled(kept, surplus - twos);
}

/// The same; a multiplication by the inverse decides nearly always.
template <int kDecimals>
double quotientOf(UInt128 dividend, int twos) {
  constexpr auto fives = static_cast<UInt128>(powerOf(5, kDecimals));
  constexpr int moved = leadingZeros(fives) - 64;
  constexpr auto inverse = static_cast<std::uint64_t>((UInt128{1} << 127) / (fives << moved));
  const UInt128 product = UInt128{static_cast<std::uint64_t>(dividend >> 64)} * inverse;
  const int shift = leadingZeros(product);
  const auto top = static_cast<std::uint64_t>((product << shift) >> 64);
  // What was cut off, of the dividend, the inverse and the product, is less than this in all.
  constexpr std::uint64_t kCut = 8;
  constexpr int kSurplus = 64 - kDoubleDigits;
  constexpr std::uint64_t half = std::uint64_t{1} << (kSurplus - 1);
  const std::uint64_t rest = top & (half + half - 1);
  if (rest <= half && rest + kCut >= half) return longQuotient<kDecimals>(dividend, twos);
  const std::uint64_t kept = (top >> kSurplus) + (rest > half ? 1 : 0);
  return scaled(kept, kSurplus + 64 - shift - 127 + 64 + moved - twos);
}

/// amount x factor / 10^kDecimals, rounded to 8 decimals of money. Split in two, since the product
/// alone would not fit.
template <int kDecimals>
std::optional<Money> roundedProduct(Money amount, int64 factor) {
  if (amount.isZero() || factor == 0) return Money{};
  const bool isNegative = (amount.units < 0) != (factor < 0);
  const Int128 size = amount.units < 0 ? -amount.units : amount.units;
  const Int128 count = factor < 0 ? -Int128{factor} : Int128{factor};
  constexpr Int128 unit = powerOfTen(kMoneyDecimals - kRoundedDecimals);
  constexpr Int128 scale = powerOfTen(kDecimals);
  constexpr Int128 whole = scale * unit;
  const Int128 units = size / unit;
  const auto high = multiplied(units, count);
  const auto low = multiplied(size - units * unit, count);
  if (!high || !low) return std::nullopt;
  const Int128 wholes = *high / scale;
  const Int128 rest = (*high - wholes * scale) * unit + *low;
  const auto rounded = multiplied(wholes + (rest + whole / 2) / whole, unit);
  if (!rounded) return std::nullopt;
  return Money{isNegative ? -*rounded : *rounded};
}

}  // namespace

template <int kDecimals>
double nearestDouble(Int128 units) {
  if (units > -kExactInteger && units < kExactInteger) {
    constexpr auto power = static_cast<double>(powerOfTen(kDecimals));
    return static_cast<double>(static_cast<int64>(units)) / power;
  }
  // Ten is two times five, and twos only move the point.
  const UInt128 size =
      units < 0 ? UInt128{0} - static_cast<UInt128>(units) : static_cast<UInt128>(units);
  const int shift = leadingZeros(size);
  const double result = quotientOf<kDecimals>(size << shift, shift + kDecimals);
  return units < 0 ? -result : result;
}

template double nearestDouble<4>(Int128 units);
template double nearestDouble<8>(Int128 units);
template double nearestDouble<10>(Int128 units);

std::optional<Price> priceOf(std::string_view decimal) { return parse<Price, 10>(decimal); }
std::optional<Volume> volumeOf(std::string_view decimal) { return parse<Volume, 8>(decimal); }
std::optional<Multiplier> multiplierOf(std::string_view decimal) {
  return parse<Multiplier, 4>(decimal);
}
std::optional<Rate> rateOf(std::string_view decimal) { return parse<Rate, 10>(decimal); }
std::optional<Money> moneyOf(std::string_view decimal) {
  return parse<Money, kMoneyDecimals>(decimal);
}

std::optional<Price> anyPriceOf(double value) { return nearest<Price, 10>(value); }
std::optional<Volume> anyVolumeOf(double value) { return nearest<Volume, 8>(value); }

std::optional<Volume> marketVolumeOf(double value) {
  if (!(value > 0)) return std::nullopt;
  return volumeOf(value).value_or(Volume{std::numeric_limits<int64>::max()});
}

double toDouble(Money money) { return nearestDouble<kMoneyDecimals>(money.units); }

std::string text(Price price) { return decimalText(price.units, 10); }
std::string text(Volume volume) { return decimalText(volume.units, 8); }
std::string text(Money money) { return decimalText(money.units, kMoneyDecimals); }

std::optional<Money> checkedProduct(Int128 units, int64 factor) {
  const auto product = multiplied(units, factor);
  if (!product) return std::nullopt;
  return Money{*product};
}

std::optional<Money> shareOf(Money amount, Rate rate) {
  return roundedProduct<10>(amount, rate.units);
}

std::optional<Money> chargeOf(Money each, Volume volume) {
  return roundedProduct<8>(each, volume.units);
}

}  // namespace orvane::detail
