#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

namespace orvane::detail {

/// How often each distance between the stamps of neighbours occurs, counted as they are read. Not
/// thread-safe.
class StampDistances {
 public:
  void note(std::int64_t distance) {
    // Mostly one follows the other, so the run alone is counted.
    if (distance != last_) {
      if (run_ != 0) counts_[last_] += run_;
      last_ = distance;
      run_ = 0;
    }
    ++run_;
  }

  /// Adds those of another part.
  void add(const StampDistances& more) {
    for (const auto& [distance, times] : more.counts_) counts_[distance] += times;
    if (more.run_ != 0) counts_[more.last_] += more.run_;
  }

  /// All of them.
  std::map<std::int64_t, std::size_t> counts() const {
    auto all = counts_;
    if (run_ != 0) all[last_] += run_;
    return all;
  }

 private:
  std::map<std::int64_t, std::size_t> counts_;  ///< Without the last run.
  std::int64_t last_ = 0;
  std::size_t run_ = 0;
};

}  // namespace orvane::detail
