#pragma once

#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace orvane::bench {

/// What of the process stands in memory now.
inline std::size_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t size = 0, resident = 0;
  file >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace orvane::bench
