#pragma once

#include <string>

#include "shared/MarketRecords.h"

namespace orvane::detail {

inline constexpr int64 kSecondMs = 1000;
inline constexpr int64 kMinuteMs = 60 * kSecondMs;
inline constexpr int64 kHourMs = 60 * kMinuteMs;
inline constexpr int64 kDayMs = 24 * kHourMs;
inline constexpr int64 kWeekMs = 7 * kDayMs;
inline constexpr int64 kMonthMs = 30 * kDayMs;  ///< Stands for a calendar month.
inline constexpr int64 kYearMs = 365 * kDayMs;  ///< Stands for a calendar year.

/// The texts of docs/services.md, such as "tick", "500ms", "5m", "4h" and "1mon". A bad one gives
/// code 17 and leaves the outputs as they are.
ResultStatus parseFrequency(const std::string& text, int64& term, bool& extraFlag);

/// The largest unit that divides a period; `Day` if none does.
ITimeType timeTypeOfTerm(int64 term);

/// The milliseconds of one unit.
int64 unitMs(ITimeType type);

/// A range as a request. `mode` 1 reads `beginTime` as the number of the newest records; any
/// other mode reads it as a time. Mode 2, or an end of 0 or less, leaves the end open.
IMDQuery queryOfRange(const OVDataRange& range);

/// A status with the table's message and what is to be said beyond it.
ResultStatus statusWith(int code, const std::string& detail);

}  // namespace orvane::detail
