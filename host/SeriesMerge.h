#pragma once

#include <vector>

#include "platform/market/files/DataFiles.h"

namespace orvane {

/// Joins series of one code (and, for bars, one period) that came from different files, in time
/// order. Throws `InputError` if two of them overlap: their files are then not parts of one series.
std::vector<LoadedBars> mergeBars(std::vector<LoadedBars> parts);
std::vector<LoadedTicks> mergeTicks(std::vector<LoadedTicks> parts);

}  // namespace orvane
