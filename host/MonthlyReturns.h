#pragma once

#include <vector>

#include "host/ZoneOffsets.h"
#include "platform/trade/TradeResults.h"

namespace orvane {

/// The return of one month.
struct MonthlyReturn {
  int year = 0;
  int month = 0;  ///< 1 to 12.
  double value = 0;
};

/// Returns between the last equities of the months of a curve, the first against the start. Months
/// are those of the zone's calendar; those without a point are left out, since nothing was held
/// then. Ends before a month that begins without money.
std::vector<MonthlyReturn> monthlyReturns(double startBalance, const EquityCurve& curve,
                                          const ZoneOffsets& zone);

}  // namespace orvane
