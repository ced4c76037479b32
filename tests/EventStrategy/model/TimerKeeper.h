#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "services/Common/ITimerNotify.h"

namespace orvane::support {

/// The owner's side of a timer source: keeps each firing as "5 777", its id and its value, in
/// order. Any thread may call it.
class TimerKeeper final : public ITimerNotify {
 public:
  void onTimer(int id, int64 value) override {
    {
      const std::lock_guard lock(mutex_);
      lines_.push_back(std::to_string(id) + " " + std::to_string(value));
    }
    if (hook) hook();
  }

  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

  /// Runs inside every firing, after the note. Set it before firings come.
  std::function<void()> hook;

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace orvane::support
