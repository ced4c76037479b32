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
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void showReading(const std::string& path, double share);
  void showRun(const PlaybackProgress& progress, bool isLive);
  void clear();

 private:
  void show(const std::string& text);

  using Clock = std::chrono::steady_clock;

  const bool isTerminal_;
  Clock::time_point shownAt_{};
  Clock::time_point runBegan_{};
  std::size_t width_ = 0;  ///< Of what stands there now.
};

}  // namespace orvane
