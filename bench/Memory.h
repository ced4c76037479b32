#pragma once

#include <jemalloc/jemalloc.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>

namespace orvane::bench {

/// What of the process stands in memory now. What the allocator keeps of earlier memory is given
/// back first: it would be used again, and what is measured seem to cost less or nothing.
inline std::int64_t residentBytes() {
  mallctl("thread.tcache.flush", nullptr, nullptr, nullptr, 0);
  mallctl("arena.4096.purge", nullptr, nullptr, nullptr, 0);  // MALLCTL_ARENAS_ALL.
  std::ifstream file("/proc/self/statm");
  std::int64_t size = 0, resident = 0;
  file >> size >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace orvane::bench
