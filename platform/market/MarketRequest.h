#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "services/Common/IBlockingReceiver.h"
#include "services/Common/IRealtimeQuoteService.h"

namespace orvane::detail {

/// One receiver of call-backs, with what its requests have in common. `round` and `serving` are
/// for whoever has the turn.
struct Subscriber {
  explicit Subscriber(std::shared_ptr<QuoteSpi> receiver)
      : spi(std::move(receiver)),
        blocks(dynamic_cast<const IBlockingReceiver*>(spi.get()) != nullptr) {}

  const std::shared_ptr<QuoteSpi> spi;
  const bool blocks;        ///< Somebody waits for it, so nothing may wait for quiet first.
  std::uint64_t round = 0;  ///< The round in which it was called last; see `CallRounds`.
  bool serving = false;     ///< The history of one of its requests is being delivered.
  /// Held around a call where the turn is not: while calls are shared, and where somebody answers
  /// meanwhile. So it is called by one thread at a time.
  std::mutex calling;
};

/// One standing request. Immutable but for the mark.
struct MarketRequest {
  enum class Kind { Quote, Ticks, Bars };

  Kind kind = Kind::Quote;
  int id = 0;
  std::shared_ptr<Subscriber> who;
  IMDQuery query;
  TermPair term;  ///< In the largest unit that divides it.
  std::chrono::steady_clock::time_point posted;
  bool isOfTask = false;  ///< Made by a runner's call-back, and not by a thread of the host's.
  /// Set by whoever ends it; no call-back of it starts after that, but one may be under way.
  std::atomic<bool> ended{false};
};

using RequestList = std::vector<std::shared_ptr<MarketRequest>>;

}  // namespace orvane::detail
