// The query for past days, by spans that the service can bear.

#include <algorithm>
#include <chrono>
#include <limits>

#include "EventStrategy/Services.h"
#include "EventStrategy/TradeSrc.h"

namespace orvane {
namespace {

constexpr int64 kDayMs = 86'400'000;
constexpr int64 kMarginDays = 30;
constexpr int64 kSpanDays = 180;
constexpr std::int32_t kNoRecord = 20991231;  ///< Stands for a day that there is not.

/// The mask that asks for the days on record alone, of the same kind as a request's.
std::int32_t probeMask(std::int32_t mask) {
  if ((mask & 2) != 0) return 1042;
  if ((mask & 0x100000) != 0) return 0x100410;
  return 1041;
}

/// The smallest date of a record's first entry. A failure is an answer without records.
std::int32_t earliestDay(const HistoryQuery& query) {
  HistoryQuery probe = query;
  probe.mask = probeMask(query.mask);
  std::list<HistoryDayRecord> records;
  tradeService()->queryHistory(probe, records);
  if (records.empty()) return kNoRecord;
  std::int32_t earliest = std::numeric_limits<std::int32_t>::max();
  for (const HistoryDayRecord& record : records)
    earliest = std::min(earliest, record.entries.empty() ? kNoRecord : record.entries.front().date);
  return earliest;
}

/// The UTC time at which a day YYYYMMDD begins.
int64 timeOfDay(std::int32_t date) {
  using namespace std::chrono;
  const year_month_day day{year{date / 10000}, month{static_cast<unsigned>(date / 100 % 100)},
                           std::chrono::day{static_cast<unsigned>(date % 100)}};
  return duration_cast<milliseconds>(sys_days{day}.time_since_epoch()).count();
}

void merge(std::list<HistoryDayRecord>& from, std::list<HistoryDayRecord>& to) {
  for (HistoryDayRecord& record : from) {
    const auto same = std::ranges::find_if(
        to, [&](const HistoryDayRecord& each) { return each.account == record.account; });
    if (same == to.end())
      to.push_back(std::move(record));
    else
      same->entries.splice(same->entries.end(), record.entries);
  }
}

}  // namespace

ResultStatus TradeSrc::queryHistory(const HistoryQuery& query, std::list<HistoryDayRecord>& days) {
  int64 from = std::max(timeOfDay(earliestDay(query)) - kMarginDays * kDayMs, query.begin);
  while (from <= query.end) {
    const int64 span = kSpanDays * kDayMs;
    const int64 to = query.end - from > span ? from + span : query.end;
    HistoryQuery part = query;
    part.begin = from;
    part.end = to;
    std::list<HistoryDayRecord> found;
    if (ResultStatus status = tradeService()->queryHistory(part, found); status.code != 0)
      return status;
    merge(found, days);
    if (to == query.end) break;
    from = to + 1;
  }
  return {};
}

}  // namespace orvane
