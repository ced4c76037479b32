#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/events/EventInbox.h"
#include "platform/events/EventOptions.h"
#include "platform/market/TimeShift.h"
#include "services/QuoteClient/IGeneralEventManager.h"

namespace orvane::detail {

/// The general events of a platform: who wants which, the script, and what was published.
///
/// The operations of the service take one short lock and may be called by any thread; an event is
/// told by whoever drives the platform, on the thread of the service loop, one at a time.
class GeneralEvents final : public IGeneralEventManager {
 public:
  /// Throws `std::invalid_argument`, in UTF-8, if an event of the script lacks target or name.
  /// `onWaiting` is called, with no lock held, when something waits for `serve`.
  GeneralEvents(EventOptions options, bool lockstep, std::function<void()> onWaiting);

  void subscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                 const std::list<std::string>& names, const std::list<std::string>& keys,
                 bool live) override;
  void unsubscribeAll(const std::shared_ptr<GeneralEventSpi>& spi) override;
  void unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>& spi,
                         const std::string& target) override;
  void unsubscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                   const std::list<std::string>& names) override;
  ResultStatus publishEvent(const std::string& topic,
                            const std::map<std::string, std::string>& fields,
                            const std::string& detail) override;

  /// Whether somebody published. Any thread may ask.
  bool anyWaiting() const { return waiting_.load(); }

  // On the service loop's thread.

  /// Whether `serve` has nothing to do.
  bool isIdle() const { return !anyWaiting() && admitted_.empty(); }
  /// Takes in what was published and tells one event. Returns whether there was one.
  bool serve();
  /// Drops what was published.
  void dropWaiting();
  /// When the script goes on, as times are shown; `kUnsetTime` if it does not.
  int64 nextDue() const;
  /// Tells the next event of the script.
  void tellNext();

  /// The time of the script's first event; `kUnsetTime` without one.
  int64 firstTime() const;
  /// The script stands at its first event from `time` on, and ends before `end`.
  void startAt(int64 time, int64 end);
  void setTimeShift(const TimeShift& shift) { shift_ = shift; }
  /// Whether the script's times mean anything; in live mode they do while the feed is played.
  void followScript(bool follows) { followsScript_ = follows; }

 private:
  struct Keys {
    bool all = false;
    std::set<std::string> some;
  };
  struct Receiver {
    std::shared_ptr<GeneralEventSpi> spi;
    std::map<std::string, std::map<std::string, Keys>> wanted;  ///< By target and name.
  };
  using Receivers = std::vector<std::shared_ptr<Receiver>>;

  Receiver* find(const GeneralEventSpi* spi) const;
  std::shared_ptr<Receiver> takeIfIdle(const GeneralEventSpi* spi);
  static bool wants(const Receiver& receiver, const EventNotice& notice);
  void tell(const EventNotice& notice);

  const bool lockstep_;
  const std::function<void()> onWaiting_;
  std::atomic<bool> waiting_{false};

  // For the service loop's thread.
  std::vector<std::pair<int64, EventNotice>> script_;  ///< By time.
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  bool followsScript_;
  TimeShift shift_;
  std::deque<EventNotice> admitted_;

  mutable std::mutex mutex_;  ///< Guards what follows; never held while a receiver is called.
  Receivers receivers_;       ///< In the order of their first subscription.
  EventInbox inbox_;
};

}  // namespace orvane::detail
