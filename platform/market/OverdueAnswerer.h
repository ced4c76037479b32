#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/market/QuoteService.h"

namespace orvane::detail {

/// Answers the requests of strategies that block inside a call-back until their answer is there.
///
/// In playback requests are served when all runners are quiet; a runner that blocks for an answer
/// never becomes so. This thread serves, at once, those whose receiver says that somebody blocks
/// for it, and whatever else waited for more than `kPatience`. The market stands still meanwhile,
/// so an answer is the same whenever it is given.
class OverdueAnswerer {
 public:
  static constexpr std::chrono::milliseconds kPatience{100};

  explicit OverdueAnswerer(QuoteService& quotes);
  ~OverdueAnswerer();
  OverdueAnswerer(const OverdueAnswerer&) = delete;
  OverdueAnswerer& operator=(const OverdueAnswerer&) = delete;

  /// A request was made or ended. Cheap while the thread is watching anyhow.
  void noteRequest();

 private:
  void work();
  /// Whether anything was served.
  bool answer();

  QuoteService& quotes_;
  std::atomic<bool> watching_{false};
  std::mutex mutex_;  ///< Guards what follows.
  std::condition_variable changed_;
  bool closing_ = false;
  std::thread thread_;
};

}  // namespace orvane::detail
