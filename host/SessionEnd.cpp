#include "host/SessionEnd.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "host/ZoneOffsets.h"
#include "platform/fields/KLineView.h"
#include "platform/market/TradingDays.h"

namespace orvane {
namespace {

constexpr int64 kMinute = 60'000, kDay = 86'400'000, kWeek = 7 * kDay;
constexpr std::size_t kMostBefore = 5, kLeastBefore = 3;

/// Where a trading day ends.
struct DayEnd {
  int64 day = 0;   ///< Of the trading day, counted from 1970-01-01.
  int64 time = 0;  ///< From that day's midnight on, in the zone of the series.

  int64 week() const { return (day + 3) / 7; }  ///< Weeks begin on Monday.
  int64 weekday() const { return (day + 3) % 7; }
};

int64 endOf(const BarSeries& series, std::size_t row) {
  return KLineView(series.bars[row]).endTime();
}
int64 endOf(const TickSeries& series, std::size_t row) {
  return (series.times[row] + kMinute / 2) / kMinute * kMinute;
}
int tradingDayOf(const BarSeries& series, std::size_t row) {
  return KLineView(series.bars[row]).tradingDay();
}
int tradingDayOf(const TickSeries& series, std::size_t row) { return series.tradingDays[row]; }
std::size_t rowsOf(const BarSeries& series) { return series.bars.size(); }
std::size_t rowsOf(const TickSeries& series) { return series.rows(); }

/// The ends of the last trading days, the newest first: of so many weeks if `byWeek`, or else of so
/// many days.
template <typename Series>
std::vector<DayEnd> lastDays(const Series& series, bool byWeek) {
  const ZoneOffsets zone(series.timeZone);
  std::vector<DayEnd> ends;
  std::size_t weeks = 0;
  int last = 0;
  for (std::size_t row = rowsOf(series); row-- > 0;) {
    const int tradingDay = tradingDayOf(series, row);
    if (tradingDay == last) continue;
    last = tradingDay;
    const int64 time = zone.toLocal(endOf(series, row));
    const int64 day = detail::numberOfTradingDay(tradingDay).value_or((time - 1) / kDay);
    const DayEnd end{day, time - day * kDay};
    weeks += ends.empty() || end.week() != ends.back().week() ? 1 : 0;
    if ((byWeek ? weeks : ends.size() + 1) > kMostBefore + 1) break;
    ends.push_back(end);
  }
  return ends;
}

std::string dateText(int64 day) {
  const std::chrono::year_month_day date{
      std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
  return fmt::format("{}-{:02}-{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

/// A day may begin on the evening before its date; where it ends at midnight, that is the day's
/// end.
std::string clockText(int64 time) {
  if (time == kDay) return "24:00";
  const int64 minutes = (time + kDay) / kMinute % (kDay / kMinute);
  return fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
}

/// Of each week its last day alone.
std::vector<DayEnd> lastOfWeeks(const std::vector<DayEnd>& days) {
  std::vector<DayEnd> weeks;
  for (const DayEnd& day : days)
    if (weeks.empty() || day.week() != weeks.back().week()) weeks.push_back(day);
  return weeks;
}

template <typename Value>
bool isNoEarlier(const std::vector<DayEnd>& ends, std::size_t before, Value value) {
  return std::all_of(ends.begin() + 1, ends.begin() + 1 + static_cast<std::ptrdiff_t>(before),
                     [&](const DayEnd& other) { return value(ends.front()) >= value(other); });
}

template <typename Series>
std::string endText(const Series& series, int64 periodMs) {
  const bool byWeek = periodMs >= kWeek;
  const std::vector<DayEnd> days = lastDays(series, byWeek);
  if (days.size() < kLeastBefore + 1) return {};
  const std::size_t before = std::min(days.size() - 1, kMostBefore);
  if (!isNoEarlier(days, before, [](const DayEnd& end) { return end.time; })) return {};
  std::string text = fmt::format("{} ends at {}, no earlier than the {} days before it",
                                 dateText(days.front().day), clockText(days.front().time), before);
  if (!byWeek) return text;
  const std::vector<DayEnd> weeks = lastOfWeeks(days);
  if (weeks.size() < kLeastBefore + 1) return {};
  if (!isNoEarlier(weeks, weeks.size() - 1, [](const DayEnd& end) { return end.weekday(); }))
    return {};
  return text + fmt::format(", on no earlier weekday than the {} weeks before", weeks.size() - 1);
}

}  // namespace

std::string sessionEndOf(const BarSeries& series, int64 periodMs) {
  return endText(series, periodMs);
}

std::string sessionEndOf(const TickSeries& series, int64 periodMs) {
  return endText(series, periodMs);
}

}  // namespace orvane
