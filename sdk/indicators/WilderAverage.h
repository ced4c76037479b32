#pragma once

#include "sdk/indicators/RollingFold.h"

namespace orvane::detail {

/// Wilder's smoothing: the mean of the first `length` values, and from then on
///
///     value = (before * (length - 1) + new) / length
class WilderAverage {
 public:
  /// Of so many values, at least 1 (else `std::invalid_argument`).
  explicit WilderAverage(int length) : length_(indicatorLength(length)) {}

  /// Takes the next value.
  void add(double value) {
    const auto length = static_cast<double>(length_);
    if (isReady()) {
      value_ = (value_ * (length - 1) + value) / length;
    } else {
      value_ += value;  // A sum so far.
      if (++count_ == length_) value_ /= length;
    }
  }

  /// Whether `length` values were taken.
  bool isReady() const { return count_ == length_; }
  /// Means something once it is ready.
  double value() const { return value_; }

 private:
  std::size_t length_;
  std::size_t count_ = 0;  ///< Values taken, up to `length_`.
  double value_ = 0;
};

}  // namespace orvane::detail
