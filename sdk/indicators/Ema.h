#pragma once

#include "sdk/indicators/RollingFold.h"

namespace orvane {

/// The exponential moving average of `length`:
///
///     value = before + 2 / (length + 1) * (new - before)
///
/// and the mean of the first `length` values to begin with (NIST/SEMATECH e-Handbook of Statistical
/// Methods, 6.4.3.1, for the recursion; StockCharts ChartSchool, "Moving Averages - Simple and
/// Exponential", for weight and begin). O(1) for each value.
class Ema {
 public:
  /// `length` is at least 1, else `std::invalid_argument`.
  explicit Ema(int length) : length_(detail::indicatorLength(length)) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken);
  /// answers `value()`.
  double add(double value) {
    detail::indicatorInput(value);
    if (isReady()) {
      value_ += 2.0 / (static_cast<double>(length_) + 1) * (value - value_);
    } else {
      value_ += value;  // A sum so far.
      if (++count_ == length_) value_ /= static_cast<double>(length_);
    }
    return this->value();
  }

  /// Whether `length` values were taken.
  bool isReady() const { return count_ == length_; }
  /// Not a number before it is ready.
  double value() const { return isReady() ? value_ : detail::kNotReady; }

 private:
  std::size_t length_;
  std::size_t count_ = 0;  ///< Values taken, up to `length_`.
  double value_ = 0;
};

}  // namespace orvane
