#include <orvane/sdk/Strategy.h>

namespace {

class Foreign : public orvane::Strategy {};

}  // namespace

/// As a kit of another time would have it.
extern "C" __attribute__((visibility("default"))) int orvaneInterfaceVersion() { return 99; }

extern "C" __attribute__((visibility("default"))) orvane::IStrategy* createStrategy() {
  return new Foreign;
}
