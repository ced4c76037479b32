#pragma once

#include <cstdint>
#include <limits>

namespace orvane {

using int64 = std::int64_t;
using uint32 = std::uint32_t;

/// A carried 64-bit word of a record: an integer, or the bits of a double. Which it is, the
/// service that fills the record defines.
using Word = std::int64_t;

/// A time argument that was not given.
inline constexpr int64 kUnsetTime = std::numeric_limits<int64>::max();

/// A count without a limit.
inline constexpr std::int32_t kNoLimit = std::numeric_limits<std::int32_t>::max();

/// Flag bits of a run's mode. Bit 0 asks for server behaviour; the values 2 and 4 choose the
/// publisher's mode.
using RunnerModeFlag = int;

}  // namespace orvane
