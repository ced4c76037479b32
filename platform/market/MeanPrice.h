#pragma once

#include <cmath>

namespace orvane::detail {

/// The double nearest to the mean of two decimals of at most eight places.
inline double meanPrice(double a, double b) {
  constexpr double kWhole = 1e8;
  if (std::abs(a) > 4e7 || std::abs(b) > 4e7) return a / 2 + b / 2;
  return (std::round(a * kWhole) + std::round(b * kWhole)) / (2 * kWhole);
}

}  // namespace orvane::detail
