#include "ExactCross.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string_view>

namespace {

constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct Decimal {
  long long digits = 0;
  int decimals = 0;  ///< Not negative.
};

/// The shortest decimal that reads back as this double.
Decimal shortestDecimal(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  const std::string_view all(text, static_cast<std::size_t>(end - text));
  Decimal result;
  bool behindPoint = false;
  for (const char c : all) {
    if (c == '-') continue;
    if (c == '.') {
      behindPoint = true;
      continue;
    }
    if (result.digits > 900'000'000'000'000'000)
      throw std::range_error("price has too many digits");
    result.digits = result.digits * 10 + (c - '0');
    if (behindPoint) ++result.decimals;
  }
  if (value < 0) result.digits = -result.digits;
  return result;
}

}  // namespace

ExactCross::Signal ExactCross::add(double close) {
  const Wide value = scaled(close);
  Wide& oldest = ring_[next_];
  if (count_ >= slow_) slowSum_ -= oldest;
  if (count_ >= fast_) fastSum_ -= ring_[next_ >= fast_ ? next_ - fast_ : next_ + slow_ - fast_];
  oldest = value;
  if (++next_ == slow_) next_ = 0;
  slowSum_ += value;
  fastSum_ += value;
  ++count_;
  if (!isReady()) return Signal::None;

  const Wide difference = fastSum_ * static_cast<Wide>(slow_) - slowSum_ * static_cast<Wide>(fast_);
  const int sign = difference > 0 ? 1 : difference < 0 ? -1 : 0;
  if (sign == 0) return Signal::None;
  const int before = lastSign_;
  lastSign_ = sign;
  if (before < 0 && sign > 0) return Signal::Up;
  if (before > 0 && sign < 0) return Signal::Down;
  return Signal::None;
}

ExactCross::Wide ExactCross::scaled(double close) {
  if (!std::isfinite(close)) throw std::range_error("price is not a finite number");
  // The common case is cheap: a price of the decimals seen so far. Below 10^15 the integer is the
  // only one whose quotient is this double, so the test is exact.
  if (decimals_ < 16) {
    const double moved = close * kPowers[decimals_];
    // Adding it leaves no room for a fraction: rounded to the nearest integer without a call.
    constexpr double kNoFraction = 3 * 0x1p51;
    const double units = (moved + kNoFraction) - kNoFraction;
    if (std::abs(moved) < 1e15 && units / kPowers[decimals_] == close)
      return static_cast<Wide>(static_cast<long long>(units));
  }
  const Decimal decimal = shortestDecimal(close);
  widen(decimal.decimals);
  const auto weight = static_cast<double>(fast_) * static_cast<double>(slow_);
  if (std::abs(close) * std::pow(10.0, decimals_) * weight > 1e36)
    throw std::range_error("prices are too wide for an exact sum");
  Wide value = decimal.digits;
  for (int i = decimal.decimals; i < decimals_; ++i) value *= 10;
  return value;
}

void ExactCross::widen(int decimals) {
  if (decimals <= decimals_) return;
  if (decimals - decimals_ > 30) throw std::range_error("price has too many decimals");
  double largest = 0;
  for (const Wide value : ring_) largest = std::max(largest, std::abs(static_cast<double>(value)));
  Wide factor = 1;
  for (int i = decimals_; i < decimals; ++i) factor *= 10;
  const auto weight = static_cast<double>(fast_) * static_cast<double>(slow_);
  if (largest * static_cast<double>(factor) * weight > 1e36)
    throw std::range_error("prices are too wide for an exact sum");
  for (Wide& value : ring_) value *= factor;
  fastSum_ *= factor;
  slowSum_ *= factor;
  decimals_ = decimals;
}

double ExactCross::mean(Wide sum, std::size_t count) const {
  return static_cast<double>(sum) / std::pow(10.0, decimals_) / static_cast<double>(count);
}
