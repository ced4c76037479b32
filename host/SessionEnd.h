#pragma once

#include <string>

#include "platform/market/Series.h"

namespace orvane {

/// What tells that the bar of a longer period in which a series ends is whole, though its interval
/// goes on: the last trading day ends no earlier than the days before it, and, where the period is
/// a week, on no earlier weekday than the weeks before it. Up to five are looked at, and three are
/// needed. The answer is a UTF-8 text such as "2021-01-08 ends at 15:00, no earlier than the 5
/// days before it"; empty where nothing tells so.
///
/// Times are those of the series' zone. The time of a tick counts to the minute: the last one comes
/// some moments before or after the session's end.
std::string sessionEndOf(const BarSeries& series, int64 periodMs);
std::string sessionEndOf(const TickSeries& series, int64 periodMs);

}  // namespace orvane
