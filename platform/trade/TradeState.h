#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/trade/AccountBook.h"
#include "platform/trade/ConnectionBook.h"
#include "platform/trade/EquityBook.h"
#include "platform/trade/OrderInbox.h"
#include "platform/trade/PaperExchange.h"
#include "platform/trade/PostponedBars.h"
#include "platform/trade/SubscriptionBook.h"
#include "platform/trade/TradeStore.h"
#include "platform/trade/conditions/GridSource.h"

namespace orvane::detail {

/// All that the trade side knows. The mutex guards everything but `accounts`, `waiting` and what
/// is added to `postponed`, is held for short work only, and never while a receiver is called.
struct TradeState {
  explicit TradeState(const TradeOptions& options)
      : accounts(options.accounts),
        connections(accounts, options.script),
        inbox(sourcesOf(options)),
        store(accounts.all().size(), !options.storePath.empty()),
        exchange_(options),
        equity_(exchange_, accounts.all().size()) {
    for (std::size_t i = 0; i < options.accounts.size(); ++i)
      exchange_.addAccount(accounts.all()[i], options.accounts[i].startBalance);
  }

  /// The create sources that are numbered beforehand.
  static std::vector<std::string> sourcesOf(const TradeOptions& options) {
    std::vector<std::string> sources = options.sources;
    if (!options.grids.empty()) sources.emplace_back(kGridSource);
    return sources;
  }

  /// A receiver that is to be told an account's present status.
  struct StatusWish {
    std::weak_ptr<TradeReceiver> receiver;
    std::int32_t account = 0;
  };

  const AccountBook accounts;
  /// How many orders, cancels and wishes wait to be taken; for a look without the lock.
  std::atomic<int> waiting{0};

  mutable std::mutex mutex;
  ConnectionBook connections;
  OrderInbox inbox;
  SubscriptionBook subscriptions;
  std::vector<StatusWish> statusWishes;
  TradeStore store;
  /// Bars that `exchange` and `equity` have not been told yet; added to without the lock, by the
  /// thread that plays.
  PostponedBars postponed;
  /// Is told, with no lock held, who ends all its subscriptions. Set while the platform is made.
  std::function<void(const std::shared_ptr<TradeEventSpi>&)> onLetGo;
  std::uint64_t number = 0;  ///< Counts subscriptions and what was told; see `SubscriptionBook`.

  struct Books {
    PaperExchange& exchange;
    EquityBook& equity;
  };
  /// The exchange and the curves as they stand by all that was played. Whoever wants to see one
  /// moment asks once: the next answer may know of more, though the lock was held all along.
  Books books() {
    if (!postponed.isEmpty()) makeUpForPostponed();
    return {exchange_, equity_};
  }
  PaperExchange& exchange() { return books().exchange; }
  EquityBook& equity() { return books().equity; }

  // Of what is to be forgotten nothing is made up for, so that these need no memory. While nobody
  // plays.

  void resetExchange() {
    postponed.drop();
    exchange_.reset();
  }
  void forgetCurves() {
    postponed.drop();
    equity_.clear();
  }

 private:
  void makeUpForPostponed();

  PaperExchange exchange_;
  EquityBook equity_;
};

}  // namespace orvane::detail
