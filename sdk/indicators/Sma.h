#pragma once

#include "sdk/indicators/RollingFold.h"

namespace orvane {

/// The simple moving average: the mean of the last `length` values (NIST/SEMATECH e-Handbook of
/// Statistical Methods, 6.4.2.1, "single moving average").
///
/// O(1) amortised for each value. Its rounding is that of `length` additions, however long it runs;
/// where two means are compared for equality, add integers instead.
class Sma {
 public:
  /// `length` is at least 1, else `std::invalid_argument`.
  explicit Sma(int length) : length_(length), sums_(length) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken);
  /// answers `value()`.
  double add(double value) {
    sums_.add(value);
    return this->value();
  }

  /// Whether `length` values were taken.
  bool isReady() const { return sums_.isFull(); }
  /// Not a number before it is ready.
  double value() const { return isReady() ? sums_.whole().sum / length_ : detail::kNotReady; }

 private:
  struct Sum {
    Sum() = default;
    explicit Sum(double value) : sum(value) {}
    static Sum merged(const Sum& a, const Sum& b) { return Sum(a.sum + b.sum); }
    double sum = 0;
  };

  double length_;
  detail::RollingFold<Sum> sums_;
};

}  // namespace orvane
