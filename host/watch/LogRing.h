#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// The last log lines, UTF-8. Any thread may call it.
class LogRing {
 public:
  static constexpr std::size_t kMost = 500;

  void add(std::string line) {
    const std::lock_guard lock(mutex_);
    if (lines_.size() == kMost) lines_.pop_front();
    lines_.push_back(std::move(line));
  }

  /// The last `most` of them, the oldest first.
  std::vector<std::string> last(std::size_t most) const {
    const std::lock_guard lock(mutex_);
    const std::size_t count = std::min(most, lines_.size());
    return {std::prev(lines_.end(), static_cast<std::ptrdiff_t>(count)), lines_.end()};
  }

 private:
  mutable std::mutex mutex_;
  std::deque<std::string> lines_;
};

}  // namespace orvane
