#pragma once

#include <string>
#include <vector>

#include "services/Common/CmnFactory.h"
#include "shared/TradeRecords.h"

namespace orvane::detail {

/// What became of the orders of one condition, on its way to whoever asked for its details.
struct GridDetail {
  int64 conditionId = 0;
  std::int32_t account = 0;  ///< Its key.
  int64 codeId = 0;
  std::string name;                 ///< The condition's, GBK.
  std::vector<Order> orders;        ///< Those that changed, in their last state.
  std::vector<OrderFill> fills;     ///< New ones.
  std::vector<std::int32_t> cells;  ///< The cell of each fill, which a fill does not carry.
};

/// Whether a key names a condition: each of its fields that is not 0 or empty must fit. Its first
/// number is the condition's id, the second the code's; the third is the account's key, the text
/// the condition's name.
bool isNamedBy(const GridDetail& detail, const CondId& key);

/// Hands a detail over in the records of the condition service.
void tellDetail(CondSpi& spi, const GridDetail& detail);

}  // namespace orvane::detail
