#pragma once

#include <cstdint>
#include <deque>

namespace orvane {

/// How fast a count grows, over about the last second and a half.
class RateMeter {
 public:
  /// Takes the count at a time, in seconds, that is not before the last one; answers the growth per
  /// second.
  double note(double seconds, std::uint64_t count) {
    constexpr double kWindow = 1.5;
    samples_.push_back({seconds, count});
    while (samples_.size() > 2 && samples_[1].seconds <= seconds - kWindow) samples_.pop_front();
    const Sample& first = samples_.front();
    const bool isKnown = seconds > first.seconds && count >= first.count;
    return isKnown ? static_cast<double>(count - first.count) / (seconds - first.seconds) : 0;
  }

 private:
  struct Sample {
    double seconds;
    std::uint64_t count;
  };
  std::deque<Sample> samples_;
};

}  // namespace orvane
