#include "platform/market/DecimalSum.h"

#include <cmath>

namespace orvane::detail {
namespace {

constexpr double kPowersOf10[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
constexpr int kDecimals = 8;
constexpr int64 kUnit = 100'000'000;

}  // namespace

void DecimalSum::add(double value) {
  constexpr double kExactIntegers = 9007199254740992.0;
  const double size = std::fabs(value);
  if (!(size < 1e18)) return;
  if (size >= kExactIntegers || value == std::floor(value)) {
    units_ += static_cast<Units>(value) * kUnit;
    return;
  }
  // As many decimals as leave 15 digits in all: a double tells no more apart.
  int decimals = kDecimals;
  for (double limit = 1e7; decimals > 0 && size >= limit; limit *= 10) --decimals;
  const double scaled = std::nearbyint(value * kPowersOf10[decimals]);
  units_ += static_cast<Units>(scaled) * static_cast<int64>(kPowersOf10[kDecimals - decimals]);
}

double DecimalSum::value() const {
  if (units_ % kUnit == 0) {
    const auto whole = units_ / kUnit;
    return static_cast<double>(whole);
  }
  // With few digits both numbers are exact, and the division gives the nearest double.
  Units units = units_;
  int decimals = kDecimals;
  for (; units % 10 == 0; units /= 10) --decimals;
  return static_cast<double>(static_cast<long double>(units) /
                             static_cast<long double>(kPowersOf10[decimals]));
}

}  // namespace orvane::detail
