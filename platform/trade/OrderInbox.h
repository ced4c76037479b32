#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shared/TradeRecords.h"

namespace orvane::detail {

/// An order or a cancel as it was given, before anybody acted on it.
struct TradeAction {
  bool isCancel = false;
  std::unique_ptr<Order> order;  ///< Of a cancel: the id of the order and the source that cancels.
  int sourceNumber = 0;
  int64 sequence = 0;  ///< Counts the actions of its source.
  int64 sentAt = 0;    ///< UTC milliseconds.
};
using TradeActions = std::vector<TradeAction>;

/// Orders and cancels that nobody has taken yet, and the numbers of orders.
///
/// Each create source has a number, counts its own orders and its own actions: so what an order is
/// called, and the order in which actions are taken, does not depend on how threads raced, as long
/// as each source's strategy acts on one thread at a time. Sources that the options do not name are
/// numbered as they come. Guarded by its owner.
class OrderInbox {
 public:
  /// An order's id is the number of its source times this, plus its number in the source.
  static constexpr int64 kIdsPerSource = 1'000'000'000;

  explicit OrderInbox(std::vector<std::string> sources);

  /// Takes the next number of the order's create source for its id.
  void number(Order& order);
  /// Takes an order with its number.
  void putOrder(std::unique_ptr<Order> order, int64 now);
  void putCancel(int64 orderId, const TradingAccountID& account, const SourceId& by, int64 now);

  bool empty() const { return waiting_.empty(); }
  /// The order of an id that waits; empty if there is none.
  std::optional<Order> waitingOrder(int64 orderId) const;
  /// Makes `taken` all that waits, by number of the source and then as each source gave it; its
  /// room is used again.
  void takeAll(TradeActions& taken);

  /// Drops what waits and counts from the start again.
  void reset();

 private:
  struct Source {
    int number = 0;
    int64 orders = 0;
    int64 actions = 0;
  };
  void put(bool isCancel, std::unique_ptr<Order> order, Source& source, int64 now);
  Source& sourceOf(const std::string& createSource);

  const std::vector<std::string> named_;
  std::map<std::string, Source> sources_;
  TradeActions waiting_;
};

}  // namespace orvane::detail
