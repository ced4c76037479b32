#include "platform/trade/ChunkedList.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace orvane::detail {

void makeReady(void* memory, std::size_t bytes) noexcept {
#ifdef MADV_POPULATE_WRITE
  static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / page * page;
  if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
  static_cast<void>(memory);
  static_cast<void>(bytes);
#endif
}

}  // namespace orvane::detail
