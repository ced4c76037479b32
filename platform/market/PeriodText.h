#pragma once

#include <string>
#include <utility>

#include "platform/core/Periods.h"

namespace orvane {

/// A period in its largest unit that divides it, such as "5m", "1h", "1d" or "500ms": a frequency
/// that `IContext::subscribeKline` understands.
inline std::string frequencyText(int64 periodMs) {
  constexpr std::pair<int64, const char*> kUnits[] = {{detail::kDayMs, "d"},
                                                      {detail::kHourMs, "h"},
                                                      {detail::kMinuteMs, "m"},
                                                      {detail::kSecondMs, "s"}};
  for (const auto& [unit, name] : kUnits)
    if (periodMs % unit == 0) return std::to_string(periodMs / unit) + name;
  return std::to_string(periodMs) + "ms";
}

}  // namespace orvane
