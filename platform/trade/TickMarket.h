#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/trade/TradeOptions.h"
#include "platform/trade/WorkingOrder.h"
#include "shared/MarketRecords.h"

namespace orvane::detail {

/// What a tick fills of an order, in one piece.
struct TickMatch {
  static constexpr std::size_t kByTrade = 99;
  static constexpr std::size_t kThroughAll = 100;

  Price price;
  Volume volume;
  bool hadRested = false;
  /// The number of the level it came from, or by the trade at its price, or by one that uses
  /// nothing up.
  std::size_t from = kThroughAll;
};

/// One tick as a market to trade in: the levels shown and the volume traded. What one order takes
/// is gone for the next.
///
/// Market orders walk the levels of the other side, and so does the part of a limit order that
/// meets them. What is left of a limit order rests behind what is shown at its price; trades at
/// its price eat what stands before it, and a trade beyond its price, or the other side coming to
/// it, fills it at its limit. A tick that shows no depth at all fills by its trade.
class TickMarket {
 public:
  /// Without `isTraded`, where no order is at work, nothing but the mark will be asked for.
  TickMarket(const IDepthMarketData& tick, TradeOptions::Queue queue, bool isTraded = true);

  /// The last price, or the middle of the best bid and ask, or the one side there is.
  std::optional<Price> mark() const;
  bool triggers(const WorkingOrder& order) const;

  /// What the tick fills now of an order that comes to the market or rests, and how it stands in
  /// the queue afterwards. Nothing is taken unless the order is filled whole if `wholeOnly`.
  std::vector<TickMatch> match(WorkingOrder& order, Price slippage, bool wholeOnly);
  /// Gives back what an order does not take after all.
  void giveBack(const WorkingOrder& order, const TickMatch& match);

 private:
  struct Level {
    Price price;
    std::optional<Volume> volume;  ///< Empty: not told, as much as anybody wants.
  };
  using Ladder = std::vector<Level>;

  template <typename PriceOf, typename SizeOf>
  static void addLevels(Ladder& ladder, int count, bool bestAlone, PriceOf price, SizeOf size);
  /// Takes what there is, in whole lots, up to `wanted`.
  static Volume take(Level& level, Volume wanted, const ContractTerms& terms);

  bool hasDepth() const { return !bids_.empty() || !asks_.empty(); }
  Ladder& otherSide(const WorkingOrder& order) { return order.isBuy() ? asks_ : bids_; }
  const Ladder& ownSide(const WorkingOrder& order) const { return order.isBuy() ? bids_ : asks_; }
  std::vector<TickMatch> walk(WorkingOrder& order, Price slippage, Volume& left);
  void matchResting(const WorkingOrder& order, Volume& left, std::vector<TickMatch>& matches);
  void eatQueue(WorkingOrder& order, Volume& left, std::vector<TickMatch>& matches);
  void takePlace(WorkingOrder& order) const;

  TradeOptions::Queue queue_;
  Ladder bids_, asks_;         ///< Best first.
  std::optional<Price> last_;  ///< Of a trade in this very tick.
  Volume traded_;              ///< Not yet taken by own orders.
};

}  // namespace orvane::detail
