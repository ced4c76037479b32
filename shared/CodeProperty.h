#pragma once

#include <string>

#include "shared/ICodeID.h"
#include "shared/Types.h"

namespace orvane {

/// The properties of one instrument, as the code service fills them. The library passes them on
/// and touches only `time`, the last field.
struct ICodeProperty {
  ICodeID code;
  std::string name;           ///< Display name, GBK.
  std::string timeZone;       ///< IANA name of the exchange's zone, such as "Asia/Shanghai".
  std::string sessions;       ///< Trading sessions, such as "09:30-11:30,13:00-15:00".
  std::string currency;       ///< A name of `currencyNames`.
  double priceTick = 0;       ///< Smallest price step; 0 where it is not known.
  double multiplier = 1;      ///< Money per point and unit of volume.
  double lotSize = 1;         ///< Smallest step of an order's volume.
  double marginRate = 0;      ///< Share of the turnover that is held as margin.
  double feePerLot = 0;       ///< Fee in money for each unit of volume.
  double feeRate = 0;         ///< Fee as a share of the turnover.
  std::int32_t decimals = 0;  ///< Decimals of a price.
  int64 time = 0;             ///< The time that the answer stands for; 0 is the present.
};

/// The properties that hold from `time` on.
struct ITimeCodeProp {
  int64 time = 0;  ///< UTC milliseconds.
  ICodeProperty property;
};

}  // namespace orvane
