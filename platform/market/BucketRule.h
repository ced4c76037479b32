#pragma once

#include <memory>
#include <string>

#include "platform/core/ZoneRules.h"
#include "shared/MarketRecords.h"

namespace orvane::detail {

/// How time is cut into the intervals of one period, in one time zone.
///
/// Periods up to a day are cut from local midnight on, and the last interval of a day ends at the
/// next midnight. Longer ones are days, weeks from Monday, months and years of the calendar, and
/// a record belongs to the one of its trading day. Several of them count on from 1970, weeks from
/// Monday 1969-12-29.
class BucketRule {
 public:
  struct Bucket {
    int64 begin;  ///< UTC milliseconds.
    int64 end;    ///< Exclusive.
    int64 key;    ///< Of the trading days of the interval; 0 where periods are cut by time.
  };

  BucketRule(const TermPair& term, std::shared_ptr<const ZoneRules> zone);

  /// The interval of a record that begins at `utcMs` on a trading day (YYYYMMDD, 0 if unknown).
  Bucket bucketOf(int64 utcMs, int tradingDay) const;

  /// Whether the trading day decides.
  bool byTradingDay() const { return byTradingDay_; }
  /// The key of a trading day's interval.
  int64 keyOf(int64 utcMs, int tradingDay) const;

 private:
  int64 dayNumber(int64 utcMs, int tradingDay) const;
  int64 firstDayOf(int64 key) const;

  ITimeType unit_;
  int64 count_;
  int64 periodMs_;
  bool byTradingDay_;
  std::shared_ptr<const ZoneRules> zone_;
};

/// Whether bars of `base` can be put together to bars of `wanted`, both in milliseconds with a
/// month as 30 and a year as 365 days.
bool periodDivides(int64 baseMs, const TermPair& wanted);

/// The milliseconds of a period, reckoned so.
int64 periodMsOf(const TermPair& term);

}  // namespace orvane::detail
