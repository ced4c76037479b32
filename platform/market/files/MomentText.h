#pragma once

#include <cstdint>
#include <string_view>

#include "platform/core/Periods.h"

namespace orvane::detail {

/// The order of day, month and year in a date whose year does not come first.
enum class DateOrder : std::uint8_t { Unknown, DayFirst, MonthFirst };

enum class DateResult : std::uint8_t {
  Good,
  Bad,
  Ambiguous,  ///< Day or month first: needs a `DateOrder`.
};

/// What a text says about a moment.
struct MomentText {
  bool hasDate = false;
  bool hasTime = false;
  bool hasOffset = false;     ///< `offsetMs` was written beside it, as in "+08:00" or "Z".
  std::int64_t day = 0;       ///< Days since 1970-01-01.
  std::int64_t msOfDay = 0;   ///< 0 to `kDayMs`; the end of the day may be written as 24:00.
  std::int64_t offsetMs = 0;  ///< East of UTC.
  std::size_t datePart = 0;   ///< Bytes of the text before its time of day.
};

/// Reads "20131206", "2013-12-06", "2013/1/6", "2013.01.06", "2013年1月6日", "6-Jan-2013",
/// "Jan 6, 2013", and with an order "06/01/2013".
DateResult parseDate(std::string_view text, DateOrder order, std::int64_t& day);

/// Reads "9:30", "09:30:00", "13:22:0", "09:30:00.5", "09:30:00,123456789", "9:30:00 PM" to
/// milliseconds; what is finer is cut off.
bool parseClockTime(std::string_view text, std::int64_t& msOfDay);

/// The same of "09:30" and "09:30:00" alone, the forms that nearly every row has.
bool parsePlainClock(std::string_view text, std::int64_t& msOfDay);

/// A longer text is no moment.
inline constexpr std::size_t kMostMomentBytes = 80;

/// Reads a date, a time of day with colons, or both, with or without an offset to UTC. A text of
/// digits alone is a date of 8 digits or a moment of 12, 14 or 17.
DateResult parseMoment(std::string_view text, DateOrder order, MomentText& out);

/// Reads "+08:00", "-0530", "+8", "Z", "UTC", "UTC+8" or "GMT-05:00".
bool parseOffset(std::string_view text, std::int64_t& offsetMs);

/// Days since 1970-01-01 of YYYYMMDD; false if there is no such day from 1800 to 2200.
bool dayOfNumber(std::int64_t yyyymmdd, std::int64_t& day);
std::int32_t numberOfDay(std::int64_t day);

/// The whole of a text as a number without a sign; false if it is anything else or above 10^18.
bool wholeNumber(std::string_view text, std::int64_t& out);

}  // namespace orvane::detail
