#pragma once

#include <chrono>
#include <optional>

#include "shared/MarketRecords.h"

namespace orvane::detail {

/// The number of a trading day (YYYYMMDD), counted from 1970-01-01; empty if it is no date.
inline std::optional<int64> numberOfTradingDay(int tradingDay) {
  const std::chrono::year_month_day date(
      std::chrono::year(tradingDay / 10000),
      std::chrono::month(static_cast<unsigned>(tradingDay / 100 % 100)),
      std::chrono::day(static_cast<unsigned>(tradingDay % 100)));
  if (tradingDay <= 0 || !date.ok()) return std::nullopt;
  return std::chrono::sys_days(date).time_since_epoch().count();
}

}  // namespace orvane::detail
