#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "shared/Export.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// What an order has for itself, as a `RecordList` keeps it.
struct ORVANE_API OrderPart {
  int64 id = 0;
  double value1 = 0;  ///< When it was sent.
  std::array<Word, 11> values{};
  std::array<std::int32_t, 11> ints{};
  Word value2 = 0, value3 = 0, value4 = 0;
  double value5 = 0;
  std::string key;  ///< The first of the pair.
  std::string orderRef;

  OrderPart() = default;
  explicit OrderPart(const Order& order);

  int64 insertTime() const { return static_cast<int64>(value1); }
  void putInto(Order& order) const;
  /// Takes an order's numbers; id and texts stay.
  void takeNumbers(const Order& order);
  static bool hasSameRest(const Order& a, const Order& b);
  static std::size_t hashOfRest(const Order& of) noexcept;
};

}  // namespace orvane
