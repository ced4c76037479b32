#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane::detail {

/// The length of an indicator, checked. Throws `std::invalid_argument` below 1.
inline std::size_t indicatorLength(int length) {
  if (length < 1)
    throw std::invalid_argument("length of an indicator: " + std::to_string(length) +
                                ", must be at least 1");
  return static_cast<std::size_t>(length);
}

/// A value that an indicator takes, checked: one that is not a number would stay in it for good.
/// Throws `std::invalid_argument`.
inline double indicatorInput(double value) {
  if (!std::isfinite(value))
    throw std::invalid_argument("value of an indicator: " + std::to_string(value) +
                                ", must be a finite number");
  return value;
}

inline constexpr double kNotReady = std::numeric_limits<double>::quiet_NaN();

/// A summary of the last `length` values, each new one in O(1) amortised: `Summary` is made of one
/// value and has `merged(earlier, later)`, which must be associative.
///
/// Nothing is ever taken out of a summary, so nothing of a value stays once it has left the window:
/// no drift, and no digits lost behind a large value that passed. It cuts the values into blocks of
/// `length`; the window is a tail of the block before and a head of the present one. The tails are
/// made when a block is full, from its end to its begin, in place.
template <typename Summary>
class RollingFold {
 public:
  /// For a window of so many values, at least 1 (else `std::invalid_argument`).
  explicit RollingFold(int length) : tails_(indicatorLength(length)) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken).
  void add(double value) {
    const Summary one(indicatorInput(value));
    head_ = at_ == 0 ? one : Summary::merged(head_, one);
    tails_[at_++] = one;  // The tail that stood there lies outside the window from now on.
    if (at_ < tails_.size()) return;
    for (std::size_t i = tails_.size() - 1; i-- > 0;)
      tails_[i] = Summary::merged(tails_[i], tails_[i + 1]);
    at_ = 0;
    isFull_ = true;
  }

  /// Whether `length` values were taken.
  bool isFull() const { return isFull_; }
  /// Of the window; once it is full.
  Summary whole() const { return at_ == 0 ? tails_.front() : Summary::merged(tails_[at_], head_); }

 private:
  std::vector<Summary> tails_;
  Summary head_;
  std::size_t at_ = 0;  ///< Values in the present block.
  bool isFull_ = false;
};

}  // namespace orvane::detail
