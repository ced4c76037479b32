#pragma once

#include <algorithm>
#include <atomic>
#include <memory>

#include "platform/core/ServiceLoop.h"
#include "platform/core/Timers.h"
#include "platform/core/WorkerPool.h"
#include "platform/dictionary/DictionaryService.h"
#include "platform/events/EventDesk.h"
#include "platform/market/Feed.h"
#include "platform/market/QuoteService.h"
#include "platform/trade/TradeDesk.h"

namespace orvane::detail {

/// What the drivers of a platform share. All belong to the platform.
struct DriverParts {
  ServiceLoop& loop;
  WorkerPool& pool;
  TimerQueue& timers;
  QuoteService& quotes;
  TradeDesk& trade;
  EventDesk& events;
  DictionaryService& dictionary;
  MarketStore& store;
  std::atomic<int64>& clock;  ///< The simulated time.
  std::atomic<bool>& cancelled;
};

/// How far a driver has come; read by any thread.
struct DriverProgress {
  std::atomic<int64> now{0}, begin{0}, end{0};
  std::atomic<std::size_t> delivered{0}, total{0};
};

/// Plays the feed in lockstep with the runners, on the thread of the service loop: after each
/// timer, each record and each bar that came to its end, it waits until all is digested and
/// serves what was asked meanwhile. Strategy tasks run on this very thread while it waits.
///
/// At one instant: first what is due on the trade side, then events, then dictionary records, then
/// timers, then market records, then bars that end by the clock alone. The exchange sees a record
/// before the runners do, and what it tells is digested first: so nothing that a runner does on a
/// record can meet that record. What runners published is told before the requests and orders that
/// they gave meanwhile.
class PlaybackDriver {
 public:
  PlaybackDriver(DriverParts parts, double speed, DriverProgress& progress);

  void run();

  /// Waits for quiet and serves requests until there are none, without playing anything.
  void settleOnly();

 private:
  class Helping;

  void play(Feed& feed);
  bool step(Feed& feed);
  bool finishInstant();
  void playRecord(Feed& feed);
  void begin();
  void end();
  void advanceTo(int64 time);
  void settle();
  void waitQuiet();
  void callMany(std::size_t count, const SharedCalls::Call& call);
  bool pace(int64 time);

  DriverParts parts_;
  const double speed_;
  DriverProgress& progress_;
  std::unique_lock<std::mutex> turn_;
  ServiceLoop::WallTime wallStart_;
  int64 dataStart_ = 0;
  bool isRunning_ = false;
  bool endsWithEvents_ = false;  ///< There are no records: the script is what is played.
};

/// Plays the feed in real time on the thread of the service loop, its first record now. Nobody is
/// waited for, and nobody keeps the feed waiting: what is served between two records has an end.
class LiveDriver {
 public:
  LiveDriver(DriverParts parts, double speed, DriverProgress& progress);

  void run();

 private:
  void play(Feed& feed, const TimeShift& shift);
  bool serve();
  int64 ownDue() const { return std::min(parts_.trade.nextDue(), parts_.events.nextDue()); }

  DriverParts parts_;
  const double speed_;
  DriverProgress& progress_;
};

}  // namespace orvane::detail
