#include "services/IPlatform.h"

#include <atomic>
#include <stdexcept>

namespace orvane {
namespace {

std::atomic<IPlatform*> installed{nullptr};

}  // namespace

IPlatform::~IPlatform() = default;

IPlatform* installPlatform(IPlatform* platform) { return installed.exchange(platform); }

IPlatform& installedPlatform() {
  IPlatform* platform = installed.load(std::memory_order_acquire);
  if (platform == nullptr) throw std::logic_error("no platform is installed");
  return *platform;
}

}  // namespace orvane
