#pragma once

#include <chrono>
#include <string>

#include "platform/EmbeddedPlatform.h"

namespace orvane {

/// One line on a terminal that is rewritten as the work goes on; nothing where the standard error
/// is no terminal. Used from one thread.
class ProgressLine {
 public:
  ProgressLine();
  virtual ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void showReading(const std::string& path, double share);
  virtual void showRun(const PlaybackProgress& progress, bool isLive);
  void clear();

 protected:
  using Clock = std::chrono::steady_clock;

  /// Whether the line is to be written anew: on a terminal, and not again at once.
  bool isDue(Clock::time_point now);
  void show(const std::string& text);
  /// Clears a line that another process may have left there.
  void wipe();

 private:
  const bool isTerminal_;
  Clock::time_point shownAt_{};
  Clock::time_point runBegan_{};
  std::size_t width_ = 0;  ///< Of what stands there now.
};

}  // namespace orvane
