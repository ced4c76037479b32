#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "platform/trade/Ledger.h"

namespace orvane::detail {

/// An order at the exchange: the record that is told, and the same as exact numbers.
struct WorkingOrder {
  explicit WorkingOrder(std::unique_ptr<Order> of) : owned(std::move(of)), record(*owned) {}

  const std::unique_ptr<Order> owned;
  Order& record;
  Ledger* ledger = nullptr;
  const ContractTerms* terms = nullptr;
  order::Type type{};
  order::TimeInForce timeInForce{};
  order::Direction direction{};
  order::Offset offset{};
  Volume volume, filled;
  Price limit, stop;
  Money turnover, fee;
  int64 arrival = 0;
  int day = 0;               ///< The trading day of the first event that it met; 0 before.
  bool isTriggered = false;  ///< A stop order whose price was reached.
  bool isOver = false;
  int fills = 0;

  // In a ladder.
  bool hasRested = false;
  std::optional<Volume> ahead;  ///< What stands before it at its price; empty: not known.

  bool isBuy() const { return direction == order::Direction::Buy; }
  /// Takes whatever price there is.
  bool takesAnyPrice() const { return type == order::Type::Market || isTriggered; }
  Volume left() const { return volume - filled; }
};

}  // namespace orvane::detail
