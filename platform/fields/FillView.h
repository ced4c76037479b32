#pragma once

#include <bit>

#include "platform/fields/OrderView.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// The positions of the carried fields of an `OrderFill`, as the embedded platform fills them.
namespace fill {

/// Positions in `ints`; the fourth is the direction.
enum Ints : std::size_t {
  OffsetAt = 1,     ///< `order::Offset`.
  LiquidityAt = 2,  ///< 0: it took what was shown, 1: it had rested.
};

/// Positions in `values`; the first is the time, the third the price.
enum Values : std::size_t {
  Volume = 1,  ///< Double.
  Fee = 3,     ///< Double.
};

/// Positions in `numbers`.
enum Numbers : std::size_t {
  OrderTime = 0,          ///< Integer: when the order was sent, UTC milliseconds.
  OrderVolume = 1,        ///< Double.
  OrderFilledVolume = 2,  ///< Double: with this fill.
  Turnover = 3,           ///< Double: price times volume times multiplier.
  Profit = 4,             ///< Double: of what it closed, before fees; 0 of an opening fill.
  TradingDay = 5,         ///< Integer: YYYYMMDD.
  OrderId = 6,            ///< Integer.
};

}  // namespace fill

/// Reads a fill by name. Holds a reference; make it where you use it.
class FillView {
 public:
  explicit FillView(const OrderFill& record) : fill_(record) {}

  int64 time() const { return fill_.fillTime(); }
  double price() const { return fill_.price(); }
  double volume() const { return std::bit_cast<double>(fill_.values[fill::Volume]); }
  double fee() const { return std::bit_cast<double>(fill_.values[fill::Fee]); }
  order::Direction direction() const { return static_cast<order::Direction>(fill_.direction()); }
  order::Offset offset() const { return static_cast<order::Offset>(fill_.ints[fill::OffsetAt]); }
  bool isBuy() const { return direction() == order::Direction::Buy; }
  bool hadRested() const { return fill_.ints[fill::LiquidityAt] != 0; }
  double turnover() const { return number(fill::Turnover); }
  double profit() const { return number(fill::Profit); }
  int tradingDay() const { return static_cast<int>(fill_.numbers[fill::TradingDay]); }
  int64 orderId() const { return fill_.numbers[fill::OrderId]; }
  int64 orderTime() const { return fill_.numbers[fill::OrderTime]; }

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(fill_.numbers[at]); }

  const OrderFill& fill_;
};

}  // namespace orvane
