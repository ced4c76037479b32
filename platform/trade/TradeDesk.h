#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/core/CallRounds.h"
#include "platform/trade/ReportQueue.h"
#include "platform/trade/SqliteStore.h"
#include "platform/trade/TradeFeed.h"
#include "platform/trade/TradeState.h"
#include "platform/trade/conditions/GridDesk.h"

namespace orvane::detail {

/// What happens on the trade side, and when: takes orders in, sends them on their way, lets the
/// exchange see market data, and delivers what it tells. On the service loop's thread alone.
///
/// Three things have their time: changes of connections, orders and cancels that arrive at the
/// exchange, and reports that arrive at their receivers; at one time in this order.
class TradeDesk {
 public:
  struct Parts {
    TradeState& state;
    const MarketStore& market;
    const TradeOptions& options;
    std::function<int64()> now;
    const std::atomic<bool>& cancelled;
    GridDesk& grids;
    SqliteStore* file = nullptr;  ///< May be null.
    bool isPlayback = true;
  };
  explicit TradeDesk(Parts parts);

  void setQuietWait(const std::function<void()>& wait) {
    rounds_.setQuietWait(wait);
    parts_.grids.details().setQuietWait(wait);
  }

  /// Takes in what waits and does what is due. Everything is quiet when it is called. Returns
  /// whether there was anything to do.
  bool serve() { return (anyWaiting() || nextDue_ != kUnsetTime) && serveDue(); }
  /// Whether somebody waits for `serve`. Any thread may ask.
  bool anyWaiting() const { return parts_.state.waiting.load() != 0 || parts_.grids.anyWaiting(); }
  /// When `serve` is to be called next; `kUnsetTime` if nothing is on its way.
  int64 nextDue() const { return nextDue_; }

  /// Before the next record of a stream becomes known. Returns whether `serve` has work by it.
  bool beforeRecord(const MarketStream& stream) {
    return feed_.isFed(stream) && feedRecord(stream);
  }

  /// The feed is about to be played, and was. Times of the data are shown by `shift`.
  void beginRun(const TimeShift& shift);
  void endRun();
  /// Everything as if nothing had been played, but for the subscriptions.
  void rewind();
  /// Hands what is new to the file, if it is worth while or `isEnd`.
  void persist(bool isEnd);

 private:
  bool serveDue();
  bool feedRecord(const MarketStream& stream);
  void watchNewCodes(int64 now);
  bool takeWishes(int64 now);
  bool admit(int64 now);
  void admitOrder(TradeAction action, int64 now);
  void admitCancel(TradeAction action, int64 now);
  void rejectOrder(Order order, int64 now);
  bool changeConnections(int64 now);
  bool letArrive(int64 now);
  void takeEvents(int64 now);
  void takeEvent(TradeEvent& event, int64 now);
  std::optional<StoredRun> openRun(const TimeShift& shift);
  void reportOrder(std::unique_ptr<Order> told, int64 due);
  void reportPosition(const TradeEvent::PositionChanged& changed, int64 due);
  /// Reports something, if anybody wants to hear of it; `fill` makes the record.
  /// The report is made of the arguments, then filled, and neither if nobody receives it.
  template <typename What, typename Fill, typename... Args>
  void report(TradeSubject subject, int64 due, const Fill& fill, Args&&... args);
  void reportStatus(std::int32_t account, int64 due, TradeReceivers receivers);
  bool deliver(int64 now);
  void call(TradeReceiver& receiver, const TradeReport& report);
  bool isStillWanted(const TradeReceiver& receiver, const TradeReport& report) const;
  int64 scriptTime() const;
  std::optional<StoredNews> takeNews(bool isEnd);
  void noteDue();

  const Parts parts_;
  CallRounds rounds_;
  TradeFeed feed_;
  bool admits_ = true;  ///< A run that was cancelled takes nothing more in.
  bool followsScript_;  ///< In live mode the script's times mean nothing before the run.
  int64 nextDue_ = kUnsetTime;
  std::multimap<int64, TradeAction> arriving_;  ///< By the time of arrival.
  ReportQueue reports_;
  std::vector<ReportQueue::Report>
      lost_;  ///< Let go with no lock held: they may be a receiver's last.
  std::map<int64, SourceId> cancelling_;  ///< Orders with a cancel on its way.
  std::vector<std::pair<int64, ConnectionBook::Change>> changes_;  ///< Not stored yet.
  // Room that is used again.
  TradeActions actions_;
  std::vector<TradeEvent> events_;
};

}  // namespace orvane::detail
