#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/trade/Amounts.h"
#include "shared/ICodeID.h"

namespace orvane::detail {

/// What the exchange knows of one code.
struct ContractTerms {
  ICodeID code;
  Price tick;  ///< 0: not known, so any price is good.
  Volume lot;  ///< Volumes are multiples of it; at least the smallest unit.
  Multiplier multiplier{10'000};
  Rate marginRate;
  Money feePerLot;
  Rate feeRate;
};

}  // namespace orvane::detail
