#pragma once

#include <functional>

#include "sdk/indicators/RollingFold.h"

namespace orvane {

/// The highest or the lowest of the last `length` values, which is what a channel of Donchian's is
/// made of: feed one with the highs of the bars and one with the lows. O(1) amortised for each
/// value, and exact.
///
/// To ask whether a bar breaks out of those before it, look at `value()` before you add it.
template <typename Better>
class RollingExtreme {
 public:
  /// `length` is at least 1, else `std::invalid_argument`.
  explicit RollingExtreme(int length) : best_(length) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken);
  /// answers `value()`.
  double add(double value) {
    best_.add(value);
    return this->value();
  }

  /// Whether `length` values were taken.
  bool isReady() const { return best_.isFull(); }
  /// Not a number before it is ready.
  double value() const { return isReady() ? best_.whole().value : detail::kNotReady; }

 private:
  struct Best {
    Best() = default;
    explicit Best(double its) : value(its) {}
    static Best merged(const Best& a, const Best& b) { return Better()(b.value, a.value) ? b : a; }
    double value = 0;
  };

  detail::RollingFold<Best> best_;
};

using RollingHigh = RollingExtreme<std::greater<double>>;
using RollingLow = RollingExtreme<std::less<double>>;

}  // namespace orvane
