#pragma once

#include <cstddef>
#include <vector>

/// Tells where the mean of the last `fast` closes crosses that of the last `slow`.
///
/// The means are compared exactly: each close is taken as the decimal number that its double
/// stands for, an integer of 10^-decimals, and the two sums are compared cross-multiplied in 128
/// bits. So two means that are equal on paper are equal here, whatever the price tick, which
/// binary sums of prices such as 0.2 or 0.05 do not give.
///
/// A cross is a change of the sign of the difference. Equal means change nothing: the sign of the
/// last difference that was not zero counts.
class ExactCross {
 public:
  enum class Signal { None, Up, Down };

  /// `fast` is at least 1 and below `slow`.
  ExactCross(std::size_t fast, std::size_t slow) : fast_(fast), slow_(slow), ring_(slow) {}

  /// Takes the next close. Throws `std::range_error` if it is not finite, or if the numbers have
  /// grown too wide for an exact sum.
  Signal add(double close);

  /// Whether `slow` closes were taken, so that there is a difference.
  bool isReady() const { return count_ >= slow_; }

  double fastMean() const { return mean(fastSum_, fast_); }
  double slowMean() const { return mean(slowSum_, slow_); }

 private:
  __extension__ using Wide = __int128;

  Wide scaled(double close);
  void widen(int decimals);
  double mean(Wide sum, std::size_t count) const;

  std::size_t fast_, slow_;
  std::vector<Wide> ring_;  ///< The last `slow_` closes, in units of 10^-`decimals_`.
  std::size_t next_ = 0;    ///< Where the next close goes.
  std::size_t count_ = 0;   ///< Closes taken so far.
  int decimals_ = 0;        ///< The most decimals that any close had so far.
  Wide fastSum_ = 0, slowSum_ = 0;
  int lastSign_ = 0;  ///< Of the last difference that was not zero.
};
