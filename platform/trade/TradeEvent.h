#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "shared/TradeRecords.h"

namespace orvane::detail {

/// One thing that the exchange has to tell, in the order in which it happened. Orders and fills are
/// large: whoever tells them on takes them from here.
struct TradeEvent {
  struct PositionChanged {
    std::int32_t accountKey = 0;
    int64 codeId = 0;
    std::string source;  ///< Whose part changed.
  };
  struct CapitalChanged {
    std::int32_t accountKey = 0;
  };
  using What = std::variant<std::unique_ptr<Order>, std::unique_ptr<OrderFill>, PositionChanged,
                            CapitalChanged>;

  int64 time = 0;  ///< When it happened, UTC milliseconds.
  What what;

  template <typename Thing>
  TradeEvent(int64 at, Thing&& thing)
      : time(at),
        what(std::in_place_type<std::remove_cvref_t<Thing>>, std::forward<Thing>(thing)) {}

  /// The order, or the fill, that is told, as long as it was not taken; else null.
  const Order* order() const { return recordOf<Order>(); }
  const OrderFill* fill() const { return recordOf<OrderFill>(); }

 private:
  template <typename T>
  const T* recordOf() const {
    const auto* const held = std::get_if<std::unique_ptr<T>>(&what);
    return held == nullptr ? nullptr : held->get();
  }
};

}  // namespace orvane::detail
