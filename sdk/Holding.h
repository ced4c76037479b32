#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <list>
#include <optional>
#include <vector>

#include "platform/fields/OrderView.h"
#include "platform/fields/PositionView.h"
#include "sdk/Orders.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// How a side that has a part of today and one of before is closed.
enum class CloseParts {
  /// By one order `Close`, which takes the older part first, then today's: as the paper exchange
  /// does. Such an order outlives its day.
  Together,
  /// The older part by `Close`, today's by `CloseToday`: for an exchange where each closes one part
  /// alone. An order `CloseToday` ends with the day.
  Apart,
};

/// What one create source holds of a code, and what its orders at work will make of it once they
/// fill. Volumes are not negative, in the unit of orders. A value type.
struct Holding {
  /// The two parts of a side that no closing order at work takes.
  struct Side {
    double older = 0;    ///< Opened before the present trading day.
    double today = 0;    ///< Opened on it.
    double opening = 0;  ///< Of opening orders at work.

    /// Both parts.
    double free() const { return older + today; }
  };

  Side longSide;   ///< What was bought to open.
  Side shortSide;  ///< What was sold to open.

  /// Long minus short, if everything at work fills.
  double expected() const {
    return exact(longSide.free() + longSide.opening - shortSide.free() - shortSide.opening);
  }

  /// Of a position and the orders at work in the same code; orders that are over count for nothing.
  static Holding of(const Position& position, const std::list<Order>& working) {
    Holding result;
    const PositionView view(position);
    result.longSide = partsOf(view.longSide());
    result.shortSide = partsOf(view.shortSide());
    // What takes today's part alone comes first: the others then find what it leaves.
    for (const bool ofToday : {true, false})
      for (const Order& order : working) result.expect(OrderView(order), ofToday);
    return result;
  }

  /// A sum of volumes without the binary rest that sums such as 0.1 + 0.2 - 0.3 leave: to 8
  /// decimals, which is what the exchange reckons with.
  static double exact(double volume) {
    const double units = std::nearbyint(volume * 1e8);
    return std::abs(units) < 9e15 ? units / 1e8 : volume;
  }

 private:
  static Side partsOf(const PositionView::Side& side) {
    return {exact(side.volume() - side.todayVolume()), side.todayVolume(), 0};
  }

  void expect(const OrderView& order, bool ofToday) {
    const bool isForToday = order.offset() == order::Offset::CloseToday;
    if (order.isFinal() || isForToday != ofToday) return;
    const double left = order.remainingVolume();
    if (order.offset() == order::Offset::Open) {
      Side& side = order.isBuy() ? longSide : shortSide;
      side.opening = exact(side.opening + left);
      return;
    }
    // A buy closes the short side.
    Side& side = order.isBuy() ? shortSide : longSide;
    const double fromOlder = isForToday ? 0 : std::min(left, side.older);
    side.older = exact(side.older - fromOlder);
    side.today = exact(std::max(side.today - (left - fromOlder), 0.0));
  }
};

/// The orders that close up to `volume` of one side (the long one if `isLong`), of what no order at
/// work closes already; none if there is nothing.
inline std::vector<OrderRequest> closeSide(const TradingAccountID& account, const ICodeID& code,
                                           const Holding& holding, bool isLong, double volume,
                                           std::optional<double> limit = {},
                                           CloseParts parts = CloseParts::Together) {
  std::vector<OrderRequest> requests;
  const auto add = [&](order::Offset offset, double part) {
    if (!(part > 0)) return;
    requests.push_back(isLong ? sell(account, code, part, limit) : buy(account, code, part, limit));
    OrderWriter(requests.back()).setOffset(offset);
  };
  const Holding::Side& side = isLong ? holding.longSide : holding.shortSide;
  const double wanted = Holding::exact(std::min(volume, side.free()));
  if (parts == CloseParts::Together) {
    add(order::Offset::Close, wanted);
    return requests;
  }
  const double older = std::min(wanted, side.older);
  add(order::Offset::Close, older);
  add(order::Offset::CloseToday, Holding::exact(wanted - older));
  return requests;
}

/// The orders that bring a holding to `target` (above 0 long, below 0 short), in the order to send
/// them: what closes comes before what opens. What is at work counts as filled, so that asking
/// twice for a target sends nothing the second time. None if the target is there.
inline std::vector<OrderRequest> ordersToTarget(const TradingAccountID& account,
                                                const ICodeID& code, const Holding& holding,
                                                double target, std::optional<double> limit = {},
                                                CloseParts parts = CloseParts::Together) {
  const double missing = Holding::exact(target - holding.expected());
  const bool isUp = missing > 0;
  const double volume = std::abs(missing);
  auto requests = closeSide(account, code, holding, !isUp, volume, limit, parts);
  double closed = 0;
  for (const OrderRequest& request : requests)
    closed += std::bit_cast<double>(request.values[order::Volume]);
  const double rest = Holding::exact(volume - closed);
  if (rest > 0)
    requests.push_back(isUp ? buy(account, code, rest, limit) : sell(account, code, rest, limit));
  return requests;
}

}  // namespace orvane
