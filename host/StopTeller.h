#pragma once

#include <string>
#include <vector>

#include "host/InterruptWatcher.h"
#include "host/RunnerBoard.h"

namespace orvane {

/// Tells the user, on the standard error, that an interrupted run stops, and, while that lasts, for
/// which runner it waits and in which call-back that is. Tells nothing any more once it is gone.
class StopTeller {
 public:
  /// Both outlive it.
  StopTeller(InterruptWatcher& interrupts, const RunnerBoard& board);
  ~StopTeller();
  StopTeller(const StopTeller&) = delete;
  StopTeller& operator=(const StopTeller&) = delete;

  /// What its texts say that a second Ctrl-C does, UTF-8; that of a run where nobody tells. For a
  /// process whose run is part of something larger: call it before one is made.
  static void setOnceMore(std::string text);

  /// What a stop that has lasted for `seconds` waits for: the runners that are still in the
  /// call-back that they were in at the look before; else those that have not ended. UTF-8.
  static std::string waitingText(const std::vector<RunnerStanding>& before,
                                 const std::vector<RunnerStanding>& now, int seconds);

 private:
  void tell(int seconds);

  InterruptWatcher& interrupts_;
  const RunnerBoard& board_;
  // For the watcher's thread alone.
  std::vector<RunnerStanding> before_;
  int next_ = 1;  ///< The second at which something is told again.
};

}  // namespace orvane
