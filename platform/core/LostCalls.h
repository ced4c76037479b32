#pragma once

#include <mutex>
#include <string>
#include <utility>

namespace orvane::detail {

/// What was lost because a receiver, a task or we ourselves threw. Each loss is told on standard
/// error at once; how many there were, and the first, is kept until somebody asks, so that a run
/// does not end as if nothing had been. One object for the process, as there is one pool.
///
/// Any thread may call any operation. `note` needs no memory: want of it is the usual reason.
class LostCalls {
 public:
  static LostCalls& shared();

  /// Only while an exception is handled, which it tells. `what`: such as "a trade call-back threw".
  void note(const char* what) noexcept;

  /// Such as "2 calls were lost, the first: a trade call-back threw: std::bad_alloc", of what was
  /// noted since the last time; empty if nothing was.
  std::string take();

 private:
  std::mutex mutex_;
  int count_ = 0;
  char first_[256] = {};
};

/// Runs `work`; what it throws is noted and ends here. False if it threw.
template <typename Work>
bool guarded(const char* what, Work&& work) {
  try {
    std::forward<Work>(work)();
    return true;
  } catch (...) {
    LostCalls::shared().note(what);
    return false;
  }
}

}  // namespace orvane::detail
