#pragma once

#include <atomic>
#include <functional>

#include "platform/events/GeneralEvents.h"
#include "platform/events/IndexService.h"
#include "platform/events/Publications.h"
#include "platform/market/TimeShift.h"

namespace orvane::detail {

class CodeService;
class QuoteService;
class TradeDesk;

/// What happens beside the market and the trade side, and when: general events, changes of
/// indexes, and what runners publish. On the service loop's thread alone and with the turn of the
/// quote service, but for `anyWaiting`.
///
/// It tells one thing at a time, and in lockstep its driver waits for quiet after each.
class EventDesk {
 public:
  struct Parts {
    GeneralEvents& events;
    IndexService& index;
    Publications& publications;
    CodeService& codes;
    QuoteService& quotes;
    TradeDesk& trade;
    const std::atomic<bool>& cancelled;
  };
  explicit EventDesk(Parts parts) : parts_(parts) {}

  /// Delivers what the exchange tells of a published record, and returns once it is digested; null
  /// where nobody waits.
  void setReportsWait(std::function<void()> wait) { reportsWait_ = std::move(wait); }

  /// Whether somebody waits for `serve`. Any thread may ask.
  bool anyWaiting() const;

  /// Takes in what was published meanwhile, and tells one thing of it: code properties before
  /// market data, and market data before general events. Everything is quiet when it is called in
  /// lockstep. Returns whether there was anything. A run that was cancelled takes nothing in, so
  /// that publishers who answer one another come to an end.
  bool serve();

  /// Serves until there is nothing, but no longer than one turn takes: receivers that answer one
  /// another would keep the thread from all else. Returns whether something may be left.
  bool serveTurn();

  /// When the next thing happens by itself; `kUnsetTime` if nothing does.
  int64 nextDue() const;
  /// Lets the next thing happen; general events before changes of indexes.
  void tellNext();

  /// The clock stands at `begin`, and nothing from `end` on is told.
  void startAt(int64 begin, int64 end);
  /// The feed is about to be played. Times of the data are shown by `shift`.
  void beginRun(const TimeShift& shift);
  /// Drops what waits.
  void dropWaiting();

 private:
  void play(MarketStream& stream);

  const Parts parts_;
  std::function<void()> reportsWait_;
};

}  // namespace orvane::detail
