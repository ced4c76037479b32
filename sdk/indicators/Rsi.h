#pragma once

#include <algorithm>

#include "sdk/indicators/WilderAverage.h"

namespace orvane {

/// The relative strength index, 0 to 100 (J. Welles Wilder, "New Concepts in Technical Trading
/// Systems", 1978):
///
///     100 - 100 / (1 + mean gain / mean loss)
///
/// over the steps from value to value, both means smoothed as Wilder does. Without a loss it is
/// 100; where nothing moved at all, 50. O(1) for each value.
class Rsi {
 public:
  /// `length` is at least 1, else `std::invalid_argument`.
  explicit Rsi(int length = 14) : gains_(length), losses_(length) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken);
  /// answers `value()`.
  double add(double value) {
    detail::indicatorInput(value);
    if (hasLast_) {
      gains_.add(std::max(value - last_, 0.0));
      losses_.add(std::max(last_ - value, 0.0));
    }
    last_ = value;
    hasLast_ = true;
    return this->value();
  }

  /// Whether `length` steps, so one value more, were taken.
  bool isReady() const { return gains_.isReady(); }
  /// Not a number before it is ready.
  double value() const {
    if (!isReady()) return detail::kNotReady;
    const double both = gains_.value() + losses_.value();
    return both == 0 ? 50 : 100 * (gains_.value() / both);
  }

 private:
  detail::WilderAverage gains_, losses_;
  double last_ = 0;
  bool hasLast_ = false;
};

}  // namespace orvane
