#pragma once

#include <string>

#include "platform/market/Series.h"
#include "shared/Export.h"

namespace orvane {

/// The bars of a longer period that the platform makes of a series while it plays it, such as "5m",
/// "1h", "day" or "week"; one that is not complete at the end of the series is left out. Throws
/// `std::invalid_argument` if the text is no period, or not one that these bars make.
ORVANE_API BarSeries barsOfPeriod(const BarSeries& series, const std::string& period);

/// The same of ticks: the bars that the platform makes of them while it plays them.
ORVANE_API BarSeries barsOfPeriod(const TickSeries& series, const std::string& period);

}  // namespace orvane
