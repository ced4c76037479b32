#include "platform/market/Rows.h"

#include <sys/mman.h>

#include <cstdlib>

namespace orvane::detail {

std::shared_ptr<void> memoryForRows(std::size_t bytes) {
  constexpr std::size_t kLargePage = std::size_t{2} << 20;
  void* memory = nullptr;
  if (bytes < 2 * kLargePage) {
    memory = std::malloc(std::max<std::size_t>(bytes, 1));
  } else {
    // The first touch of each page costs as much as parsing the rows on it; large pages are few.
    const std::size_t whole = (bytes + kLargePage - 1) / kLargePage * kLargePage;
    memory = std::aligned_alloc(kLargePage, whole);
#ifdef MADV_HUGEPAGE
    if (memory != nullptr) madvise(memory, whole, MADV_HUGEPAGE);
#endif
  }
  if (memory == nullptr) throw std::bad_alloc();
  return {memory, &std::free};
}

}  // namespace orvane::detail
