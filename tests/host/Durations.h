#pragma once

#include "shared/Types.h"

namespace orvane::test {

// In milliseconds.
inline constexpr int64 kMinute = 60'000;
inline constexpr int64 kHour = 60 * kMinute;
inline constexpr int64 kDay = 24 * kHour;

}  // namespace orvane::test
