#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/trade/ContractTerms.h"
#include "platform/trade/conditions/GridOptions.h"

namespace orvane::detail {

/// The range of a grid as exact numbers. Cell k buys at level k and sells at level k + 1.
struct GridTerms {
  static constexpr int64 kMostCells = 1000;

  Price lower, step;
  Volume volume;
  std::size_t cells = 0;

  Price level(std::size_t at) const { return {lower.units + static_cast<int64>(at) * step.units}; }
  Price upper() const { return level(cells); }
  /// How many levels, 0 to cells + 1, lie below a price.
  std::size_t levelsBelow(Price price) const;
};

/// Reads a range; where it is wrong `fault` names field and value, GBK.
std::optional<GridTerms> readGridTerms(const GridOptions& options, std::string& fault);

/// What of the range the code does not allow, with field and value, GBK; empty if all is well.
std::string faultAgainst(const GridTerms& terms, const ContractTerms& contract);

}  // namespace orvane::detail
