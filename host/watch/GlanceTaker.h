#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/InterruptWatcher.h"
#include "host/RunPlan.h"
#include "host/RunnerBoard.h"
#include "host/watch/Glance.h"
#include "host/watch/RateMeter.h"
#include "host/watch/WatchView.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane {

/// Looks at a run that is under way, for a view, and is the view's source for as long as it lives.
/// What it reads is counted anyway or stands under short locks that no call-back is made under, so
/// a glance changes nothing.
class GlanceTaker {
 public:
  struct Parts {
    const RunPlan& plan;
    EmbeddedPlatform& platform;
    const RunnerBoard& board;
    const InterruptWatcher& interrupts;
    std::string timeZone;  ///< UTF-8.
  };
  /// All of the parts outlive it, and so does the view.
  GlanceTaker(WatchView& view, Parts parts);
  ~GlanceTaker() { view_.setSource({}); }
  GlanceTaker(const GlanceTaker&) = delete;
  GlanceTaker& operator=(const GlanceTaker&) = delete;

  /// Takes how far the run has come.
  void note(const PlaybackProgress& progress);
  /// The data are played.
  void noteEnd();

 private:
  using Clock = std::chrono::steady_clock;

  Glance take();
  void addProgress(double seconds, Glance& glance);
  void addRunners(double seconds, Glance& glance);
  void addTrading(Glance& glance) const;
  std::string timeText(int64 utcMs) const;

  WatchView& view_;
  const Parts parts_;
  const Clock::time_point began_ = Clock::now();
  std::mutex mutex_;
  PlaybackProgress progress_;
  bool hasProgress_ = false, isOver_ = false;
  // For the view's thread alone.
  RateMeter recordRate_;
  std::vector<RateMeter> callRates_;
  /// Where each runner stood, and since when it has been in one call-back.
  struct Stay {
    std::uint64_t calls = 0;
    int inside = RunPulse::kOutside;
    double since = 0;
  };
  std::vector<Stay> stays_;
};

}  // namespace orvane
