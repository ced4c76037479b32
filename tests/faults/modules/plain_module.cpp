#include <fcntl.h>
#include <orvane/sdk/Strategy.h>
#include <unistd.h>

#include <cstdlib>

namespace {

/// Writes a byte to a file each time that the module is loaded, if somebody wants to know.
struct LoadCount {
  LoadCount() {
    const char* const path = std::getenv("ORVANE_TEST_LOADS");
    if (path == nullptr) return;
    const int file = open(path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    if (write(file, "x", 1) == 1) close(file);
  }
};
const LoadCount count;

class Plain : public orvane::Strategy {};

}  // namespace

/// All that a module must export; nothing is said of versions.
extern "C" __attribute__((visibility("default"))) orvane::IStrategy* createStrategy() {
  return new Plain;
}
