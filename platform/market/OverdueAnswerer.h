#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/core/StallWatch.h"
#include "platform/market/QuoteService.h"

namespace orvane::detail {

/// Answers the requests of strategies that block inside a call-back until their answer is there.
///
/// In playback requests are served when all runners are quiet; a runner that blocks for an answer
/// never becomes so. This thread serves, at once, those whose receiver says that somebody blocks
/// for it. The market stands still meanwhile, so an answer is the same whenever it is given.
///
/// Nobody says so of a receiver of a host's own. What a thread of the host's asked for is served
/// once it has waited for `kPatience`. What a runner asked for is served early only where all
/// runners stand still, as they do where one blocks that nobody knows of: what its call-backs find
/// must not depend on how long others take.
class OverdueAnswerer {
 public:
  static constexpr std::chrono::milliseconds kPatience{100};

  /// After so many turns of 10 ms without a move, three seconds, runners are taken to block. A
  /// call-back that takes longer than that while another's request waits is rare, and so is one
  /// that blocks.
  static constexpr int kStillTurns = 300;

  OverdueAnswerer(QuoteService& quotes, const QuietSignal& runners, int stillTurns = kStillTurns);
  ~OverdueAnswerer();
  OverdueAnswerer(const OverdueAnswerer&) = delete;
  OverdueAnswerer& operator=(const OverdueAnswerer&) = delete;

  /// A request was made or ended. Cheap while the thread is watching anyhow.
  void noteRequest();

 private:
  void work();
  /// `isTurn`: a turn's time is over, and nobody came before. Whether anything was served.
  bool answer(bool isTurn);

  QuoteService& quotes_;
  StallWatch stall_;  ///< The thread's.
  std::atomic<bool> watching_{false};
  std::mutex mutex_;  ///< Guards what follows.
  std::condition_variable changed_;
  bool closing_ = false;
  std::thread thread_;
};

}  // namespace orvane::detail
