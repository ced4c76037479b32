#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/core/CallRounds.h"
#include "platform/trade/conditions/GridDetail.h"
#include "services/Common/ITradeService.h"

namespace orvane::detail {

/// The condition service, as far as the library sees it: who wants to be told the details of which
/// conditions, and the telling. Any thread may subscribe; the service loop's thread tells.
///
/// Nobody waits for a call-back: whoever unsubscribes from another thread may hold the lock that it
/// wants. So one that has begun may outlast `unsubscribeDetails`; see `letGo` for what keeps the
/// library's receivers alive, and keep others until everything is quiet.
///
/// A subscription is told first the orders that are at work, then what changes. One that is made
/// again is told the orders at work again.
class DetailBook final : public ICondService {
 public:
  /// `onRequest` is called, with no lock held, when somebody waits to be told.
  explicit DetailBook(std::function<void()> onRequest) : onRequest_(std::move(onRequest)) {}

  void subscribeDetail(const CondId& condition, CondSpi* spi) override;
  void unsubscribeDetails(CondSpi* spi) override;

  /// A subscriber of the trade service is about to go. The library ends its trade subscriptions
  /// with a shared pointer to itself and then those of details with a bare one; the first is kept
  /// until the second, so that a call-back under way never outlives its receiver.
  void letGo(const std::shared_ptr<TradeEventSpi>& spi);

  // The service loop's thread.
  void setQuietWait(std::function<void()> wait) { rounds_.setQuietWait(std::move(wait)); }
  /// Whether somebody waits for the orders at work.
  bool anyWaiting() const;
  /// Tells the changes, and then those who wait the orders at work, which `picture` gives: one
  /// detail for each condition. Everything is quiet when it is called. Returns whether anybody was
  /// told.
  bool tell(const std::vector<GridDetail>& changes,
            const std::function<std::vector<GridDetail>()>& picture);

 private:
  struct Wanted {
    CondId condition;
    bool isWaiting = true;  ///< For the orders at work.
    bool isNew = true;
  };
  struct Entry {
    CondSpi* spi = nullptr;
    std::list<Wanted> wanted;
    std::uint64_t calledIn = 0;
    std::shared_ptr<TradeEventSpi> held;  ///< See `letGo`.
  };
  using Entries = std::vector<std::shared_ptr<Entry>>;
  /// The subscriptions that are told of a detail: as a change, or as the picture they wait for.
  static bool wantsChange(const Entry& entry, const GridDetail& detail);
  static bool wantsPicture(const Entry& entry, const GridDetail& detail);
  bool tellChanges(const std::vector<GridDetail>& changes);
  bool call(const std::shared_ptr<Entry>& entry, const GridDetail& detail);

  const std::function<void()> onRequest_;
  CallRounds rounds_;

  mutable std::mutex mutex_;  ///< Guards what follows; never held while a receiver is called.
  Entries entries_;           ///< In the order of their first subscription.
};

}  // namespace orvane::detail
