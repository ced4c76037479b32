#include "platform/market/LongerBars.h"

#include <stdexcept>
#include <vector>

#include "platform/core/Periods.h"
#include "platform/core/ZoneRules.h"
#include "platform/market/BarBuilder.h"
#include "platform/market/files/Description.h"

namespace orvane {

BarSeries barsOfPeriod(const BarSeries& series, const std::string& period) {
  using namespace detail;
  const int64 periodMs = parsePeriod(period);
  if (periodMs == 0)
    throw std::invalid_argument("\"" + period +
                                "\" is not a period such as 5m, 30s, 1h, day or week");
  const ITimeType unit = timeTypeOfTerm(periodMs);
  const TermPair term{static_cast<std::int32_t>(unit),
                      static_cast<std::int32_t>(periodMs / unitMs(unit))};
  if (periodMs <= series.periodMs || !periodDivides(series.periodMs, term))
    throw std::invalid_argument("bars of " + period + " cannot be made of bars of " +
                                std::to_string(series.periodMs / 1000) + " s");
  auto zone = ZoneRules::find(series.timeZone);
  if (zone == nullptr)
    throw std::invalid_argument("there is no time zone \"" + series.timeZone + "\"");

  BarBuilder builder(BucketRule(term, std::move(zone)));
  std::vector<IKLine> bars;
  for (const IKLine& bar : series.bars) {
    builder.closeAt(KLineView(bar).endTime() - 1, bars);
    builder.addBar(bar, bars);
  }
  if (!series.bars.empty()) builder.closeAt(KLineView(series.bars.back()).endTime(), bars);
  BarSeries longer;
  longer.code = series.code;
  longer.periodMs = periodMs;
  longer.timeZone = series.timeZone;
  longer.origin = series.origin;
  longer.bars = bars;
  return longer;
}

}  // namespace orvane
