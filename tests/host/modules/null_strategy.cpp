#include <orvane/sdk/Strategy.h>

extern "C" __attribute__((visibility("default"))) orvane::IStrategy* createStrategy() {
  return nullptr;
}
