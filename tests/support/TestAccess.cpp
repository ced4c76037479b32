#include "tests/support/TestAccess.h"

#include <thread>

namespace orvane::detail {

bool TestAccess::isFree(std::mutex& mutex) {
  bool free = false;
  std::thread([&] {
    free = mutex.try_lock();
    if (free) mutex.unlock();
  }).join();
  return free;
}

}  // namespace orvane::detail
