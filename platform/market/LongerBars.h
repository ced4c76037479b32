#pragma once

#include <string>

#include "platform/market/Series.h"
#include "shared/Export.h"

namespace orvane {

/// What becomes of a bar whose interval goes on where the series ends.
enum class OpenBar {
  LeftOut,  ///< The platform never shows it: more data could change it.
  Kept,     ///< It counts as whole, for whoever knows that nothing more comes.
};

/// The bars of a longer period that the platform makes of a series while it plays it, such as "5m",
/// "1h", "day" or "week". Throws `std::invalid_argument` if the text is no period, or not one that
/// these bars make.
ORVANE_API BarSeries barsOfPeriod(const BarSeries& series, const std::string& period,
                                  OpenBar open = OpenBar::LeftOut);

/// The same of ticks: the bars that the platform makes of them while it plays them.
ORVANE_API BarSeries barsOfPeriod(const TickSeries& series, const std::string& period,
                                  OpenBar open = OpenBar::LeftOut);

}  // namespace orvane
