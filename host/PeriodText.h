#pragma once

#include <string>

namespace orvane {

/// A period such as "5m" as people call it: a week is "1w", and not "7d" as in files.
inline std::string shownPeriod(const std::string& frequency) {
  return frequency == "7d" ? "1w" : frequency;
}

}  // namespace orvane
