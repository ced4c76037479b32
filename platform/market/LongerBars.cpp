#include "platform/market/LongerBars.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include "platform/core/Periods.h"
#include "platform/core/ZoneRules.h"
#include "platform/market/BarBuilder.h"
#include "platform/market/MarketStore.h"
#include "platform/market/PeriodText.h"
#include "platform/market/files/Description.h"

namespace orvane {
namespace {

using namespace detail;

TermPair termOf(const std::string& period, int64& periodMs) {
  periodMs = parsePeriod(period);
  if (periodMs == 0)
    throw std::invalid_argument("\"" + period +
                                "\" is not a period such as 5m, 30s, 1h, day or week");
  const ITimeType unit = timeTypeOfTerm(periodMs);
  return {static_cast<std::int32_t>(unit), static_cast<std::int32_t>(periodMs / unitMs(unit))};
}

std::shared_ptr<const ZoneRules> zoneOf(const std::string& name) {
  auto zone = ZoneRules::find(name);
  if (zone == nullptr) throw std::invalid_argument("there is no time zone \"" + name + "\"");
  return zone;
}

void checkLonger(int64 haveMs, const std::string& period, int64 periodMs, const TermPair& term) {
  const std::string have = frequencyText(haveMs);
  if (periodMs == haveMs)
    throw std::invalid_argument("the bars are of " + have + " already; leave \"" + period +
                                "\" out");
  if (periodMs > haveMs && periodDivides(haveMs, term)) return;
  throw std::invalid_argument("bars of " + period + " cannot be made of bars of " + have +
                              "; give a longer period that whole bars of " + have + " fill");
}

/// Until when bars are closed.
int64 endOf(OpenBar open, int64 dataEnd) { return open == OpenBar::Kept ? kUnsetTime : dataEnd; }

}  // namespace

BarSeries barsOfPeriod(const BarSeries& series, const std::string& period, OpenBar open) {
  int64 periodMs = 0;
  const TermPair term = termOf(period, periodMs);
  checkLonger(series.periodMs, period, periodMs, term);
  BarBuilder builder(BucketRule(term, zoneOf(series.timeZone)));
  std::vector<IKLine> bars;
  for (const IKLine& bar : series.bars) {
    builder.closeAt(KLineView(bar).endTime() - 1, bars);
    builder.addBar(bar, bars);
  }
  if (!series.bars.empty())
    builder.closeAt(endOf(open, KLineView(series.bars.back()).endTime()), bars);
  BarSeries longer;
  longer.code = series.code;
  longer.periodMs = periodMs;
  longer.timeZone = series.timeZone;
  longer.origin = series.origin;
  longer.bars = bars;
  return longer;
}

BarSeries barsOfPeriod(const TickSeries& series, const std::string& period, OpenBar open) {
  int64 periodMs = 0;
  const TermPair term = termOf(period, periodMs);
  // The stream lives no longer than this call, so it need not own the series.
  MarketStream stream(std::shared_ptr<const TickSeries>(std::shared_ptr<void>(), &series), 0);
  stream.known = series.rows();
  DerivedSeries derived(stream, term, zoneOf(series.timeZone));
  derived.catchUp(series.times.empty() ? 0 : endOf(open, series.times.back()));
  BarSeries bars;
  bars.code = series.code;
  bars.periodMs = periodMs;
  bars.timeZone = series.timeZone;
  bars.origin = series.origin;
  bars.bars = derived.bars();
  return bars;
}

}  // namespace orvane
