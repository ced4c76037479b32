#include "platform/market/BucketRule.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/market/TradingDays.h"

namespace orvane::detail {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

int64 floorDiv(int64 a, int64 b) { return a / b - (a % b < 0 ? 1 : 0); }

year_month_day dateOf(int64 dayNumber) {
  return year_month_day(sys_days(days(static_cast<int>(dayNumber))));
}

int64 dayOf(year_month_day date) { return sys_days(date).time_since_epoch().count(); }

constexpr int64 kMondayBefore1970 = -3;

}  // namespace

int64 periodMsOf(const TermPair& term) {
  return unitMs(static_cast<ITimeType>(term.timeType)) * term.count;
}

bool periodDivides(int64 baseMs, const TermPair& wanted) {
  const int64 wantedMs = periodMsOf(wanted);
  if (baseMs <= 0 || baseMs >= wantedMs) return false;
  switch (static_cast<ITimeType>(wanted.timeType)) {
    case ITimeType::Year:
      if (baseMs == kMonthMs || baseMs == kYearMs) return true;
      [[fallthrough]];
    case ITimeType::Month:
      // Weeks run across the ends of months.
      return kDayMs % baseMs == 0 || (baseMs == kMonthMs && wanted.count > 1);
    case ITimeType::Week:
      return kDayMs % baseMs == 0 || baseMs == kWeekMs;
    case ITimeType::Day:
      return kDayMs % baseMs == 0;
    default:
      return wantedMs % baseMs == 0;
  }
}

BucketRule::BucketRule(const TermPair& term, std::shared_ptr<const ZoneRules> zone)
    : unit_(static_cast<ITimeType>(term.timeType)),
      count_(std::max<int64>(1, term.count)),
      periodMs_(unitMs(unit_) * count_),
      byTradingDay_(unit_ >= ITimeType::Day),
      zone_(std::move(zone)) {}

BucketRule::Bucket BucketRule::bucketOf(int64 utcMs, int tradingDay) const {
  if (byTradingDay_) {
    const int64 key = keyOf(utcMs, tradingDay);
    return {zone_->toUtc(firstDayOf(key) * kDayMs), zone_->toUtc(firstDayOf(key + 1) * kDayMs),
            key};
  }
  const int64 local = zone_->toLocal(utcMs);
  if (periodMs_ > kDayMs) {
    const int64 begin = floorDiv(local, periodMs_) * periodMs_;
    return {zone_->toUtc(begin), zone_->toUtc(begin + periodMs_), 0};
  }
  const int64 day = floorDiv(local, kDayMs);
  const int64 begin = utcMs - (local - day * kDayMs) % periodMs_;
  return {begin, std::min(begin + periodMs_, zone_->toUtc((day + 1) * kDayMs)), 0};
}

int64 BucketRule::keyOf(int64 utcMs, int tradingDay) const {
  const int64 day = dayNumber(utcMs, tradingDay);
  if (unit_ == ITimeType::Day) return floorDiv(day, count_);
  if (unit_ == ITimeType::Week) return floorDiv(day - kMondayBefore1970, 7 * count_);
  const year_month_day date = dateOf(day);
  const int64 year = static_cast<int>(date.year());
  if (unit_ == ITimeType::Year) return floorDiv(year, count_);
  return floorDiv(year * 12 + static_cast<unsigned>(date.month()) - 1, count_);
}

int64 BucketRule::dayNumber(int64 utcMs, int tradingDay) const {
  const std::optional<int64> day = numberOfTradingDay(tradingDay);
  return day ? *day : floorDiv(zone_->toLocal(utcMs), kDayMs);
}

int64 BucketRule::firstDayOf(int64 key) const {
  using std::chrono::month;
  using std::chrono::year;
  if (unit_ == ITimeType::Day) return key * count_;
  if (unit_ == ITimeType::Week) return key * 7 * count_ + kMondayBefore1970;
  const int64 months = unit_ == ITimeType::Year ? key * count_ * 12 : key * count_;
  return dayOf(year(static_cast<int>(floorDiv(months, 12))) /
               month(static_cast<unsigned>(months - floorDiv(months, 12) * 12) + 1) / 1);
}

}  // namespace orvane::detail
