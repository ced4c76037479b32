#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "shared/Export.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// What a fill has for itself, as a `RecordList` keeps it.
struct ORVANE_API FillPart {
  int64 id = 0;
  std::int32_t value1 = 0;
  std::array<std::int32_t, 4> ints{};
  std::array<Word, 7> numbers{};
  std::array<Word, 4> values{};
  std::string key;  ///< The first of the pair.
  std::string orderRef;
  std::string fillText;

  FillPart() = default;
  explicit FillPart(const OrderFill& fill);

  int64 fillTime() const { return values[0]; }
  void putInto(OrderFill& fill) const;
  static bool hasSameRest(const OrderFill& a, const OrderFill& b);
  static std::size_t hashOfRest(const OrderFill& of) noexcept;
};

}  // namespace orvane
