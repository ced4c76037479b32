#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "platform/market/MarketRequest.h"

namespace orvane::detail {

/// Which requests have waited too long, though nobody said that they block for them.
struct Overdue {
  std::chrono::steady_clock::time_point latest;  ///< Those of the host's threads made until then.
  bool withTasks = false;                        ///< And all that runners made.
};

/// The requests that stand and those that wait to be served, in the order they came. Any thread
/// may call any operation; none blocks or calls out but for the hook.
///
/// Request ids are chosen by strategies, so two receivers may hold one id. A receiver that uses an
/// id again gives up its older request. A cancel says only the id: with several holders it is
/// remembered, and ends them all once as many cancels came as there are holders. What is delivered
/// to a holder that cancelled, the holder's own books drop.
class RequestBook {
 public:
  /// `onChange` is called, with no lock held, after something was added or ended.
  explicit RequestBook(std::function<void()> onChange) : onChange_(std::move(onChange)) {}

  void add(std::shared_ptr<MarketRequest> request, const std::shared_ptr<QuoteSpi>& spi);
  /// Whether a quote subscription of the spi stands.
  bool hasQuote(int64 codeId, const QuoteSpi* spi) const;

  void cancel(int requestId);
  void cancelQuote(int64 codeId, const QuoteSpi* spi);
  void cancelSpi(const QuoteSpi* spi);

  /// Takes a request out of the books that has nothing more to come.
  void finish(const std::shared_ptr<MarketRequest>& request);

  bool anyWaiting() const { return waitingCount_.load() != 0; }
  /// Whether a request waits that somebody blocks for.
  bool anyBlocking() const { return blockingCount_.load() != 0; }
  /// The oldest waiting request; null without one.
  std::shared_ptr<MarketRequest> takeNext();
  /// The oldest waiting request that somebody blocks for or that has waited too long, and whose
  /// receiver is not being served and has no older one waiting.
  std::shared_ptr<MarketRequest> takeOverdue(const Overdue& overdue);

  /// Whether requests were ended since the last call, so that lists are to be swept.
  bool takeEndedMark() { return endedSome_.exchange(false); }
  bool endedMark() const { return endedSome_.load(); }

 private:
  struct Holder {
    std::shared_ptr<Subscriber> who;
    RequestList requests;
  };
  struct IdSlot {
    RequestList holders;
    std::size_t cancels = 0;
  };
  void endLocked(const std::shared_ptr<MarketRequest>& request);
  std::shared_ptr<MarketRequest> takeLocked(
      const std::deque<std::shared_ptr<MarketRequest>>::iterator& at);

  const std::function<void()> onChange_;
  std::atomic<std::size_t> waitingCount_{0};
  std::atomic<std::size_t> blockingCount_{0};  ///< Of those that wait.
  std::atomic<bool> endedSome_{false};
  mutable std::mutex mutex_;  ///< Guards what follows.
  std::deque<std::shared_ptr<MarketRequest>> waiting_;
  std::map<const QuoteSpi*, Holder> bySpi_;
  std::map<int, IdSlot> byId_;
};

}  // namespace orvane::detail
