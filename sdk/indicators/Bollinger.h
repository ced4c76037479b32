#pragma once

#include <cmath>

#include "sdk/indicators/RollingFold.h"

namespace orvane {

/// Bollinger's bands: the mean of the last `length` values, and `width` standard deviations above
/// and below it. The deviation is that of a whole population: divided by `length`, not by one less
/// (John Bollinger, "Bollinger on Bollinger Bands", 2001).
///
/// O(1) amortised for each value. Means and squares are merged by parts (Chan, Golub and LeVeque,
/// "Updating Formulae and a Pairwise Algorithm for Computing Sample Variances", 1979), so that
/// nothing cancels out where prices are large and their spread is small.
class Bollinger {
 public:
  /// `length` is at least 1 and `width` finite, else `std::invalid_argument`.
  explicit Bollinger(int length = 20, double width = 2)
      : length_(length), width_(detail::indicatorInput(width)), moments_(length) {}

  /// Takes the next value, a finite number (else `std::invalid_argument`, and it is not taken).
  void add(double value) { moments_.add(value); }

  /// Whether `length` values were taken.
  bool isReady() const { return moments_.isFull(); }

  // Not numbers before it is ready.

  /// The mean.
  double middle() const { return isReady() ? moments_.whole().mean : detail::kNotReady; }
  /// The deviation from the mean, that of a whole population.
  double deviation() const {
    return isReady() ? std::sqrt(moments_.whole().squares / length_) : detail::kNotReady;
  }
  /// So many deviations above the mean.
  double upper() const { return middle() + width_ * deviation(); }
  /// So many below it.
  double lower() const { return middle() - width_ * deviation(); }

 private:
  struct Moments {
    Moments() = default;
    explicit Moments(double value) : count(1), mean(value) {}
    static Moments merged(const Moments& a, const Moments& b) {
      Moments both;
      both.count = a.count + b.count;
      const double apart = b.mean - a.mean;
      both.mean = a.mean + apart * (b.count / both.count);
      both.squares = a.squares + b.squares + apart * apart * (a.count * b.count / both.count);
      return both;
    }
    double count = 0, mean = 0;
    double squares = 0;  ///< Sum of the squared distances from the mean.
  };

  double length_, width_;
  detail::RollingFold<Moments> moments_;
};

}  // namespace orvane
