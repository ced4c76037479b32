#pragma once

#include "host/ProgressLine.h"

namespace orvane {

/// The line of a sweep: how many combinations are done, at what rate, and how long the rest will
/// take. Used from one thread.
class SweepProgress final : public ProgressLine {
 public:
  /// `total` runs are to be done, of which `done` were before.
  void begin(std::size_t total, std::size_t done);
  /// So many are about to be played at once.
  void beginBatch(std::size_t size) { playing_ = size; }
  /// So many of them are done, and the line is wiped away: it is that of another process.
  void endBatch(std::size_t done);
  /// Fewer are to be done than was thought.
  void leaveOut(std::size_t runs) { total_ -= runs; }
  /// So many of those that were done before do not count.
  void takeBack(std::size_t runs) {
    before_ -= runs;
    done_ -= runs;
  }

  void showRun(const PlaybackProgress& progress, bool isLive) override;

 private:
  std::size_t total_ = 0, before_ = 0, done_ = 0, playing_ = 0;
  Clock::time_point began_{};
};

}  // namespace orvane
