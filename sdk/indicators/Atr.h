#pragma once

#include <algorithm>
#include <cmath>

#include "platform/fields/KLineView.h"
#include "sdk/indicators/WilderAverage.h"

namespace orvane {

/// The average true range (J. Welles Wilder, "New Concepts in Technical Trading Systems", 1978).
/// The true range of a bar is the largest of
///
///     high - low, |high - close before|, |low - close before|
///
/// and of the first bar high - low; its mean is smoothed as Wilder does. O(1) for each bar.
class Atr {
 public:
  /// `length` is at least 1, else `std::invalid_argument`.
  explicit Atr(int length = 14) : ranges_(length) {}

  /// Takes the next bar, finite numbers (else `std::invalid_argument`, and it is not taken);
  /// answers `value()`.
  double add(double high, double low, double close) {
    for (const double price : {high, low, close}) detail::indicatorInput(price);
    double range = high - low;
    if (hasLast_)
      range = std::max({range, std::abs(high - lastClose_), std::abs(low - lastClose_)});
    ranges_.add(range);
    lastClose_ = close;
    hasLast_ = true;
    return value();
  }
  /// The same of a bar record.
  double add(const KLineView& bar) { return add(bar.high(), bar.low(), bar.close()); }

  /// Whether `length` bars were taken.
  bool isReady() const { return ranges_.isReady(); }
  /// Not a number before it is ready.
  double value() const { return isReady() ? ranges_.value() : detail::kNotReady; }

 private:
  detail::WilderAverage ranges_;
  double lastClose_ = 0;
  bool hasLast_ = false;
};

}  // namespace orvane
