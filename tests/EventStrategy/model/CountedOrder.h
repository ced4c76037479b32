#pragma once

#include <atomic>

#include "EventStrategy/Events.h"

namespace orvane::support {

/// An order's record that counts how many of its kind exist.
struct CountedOrder final : OrderEvent {
  CountedOrder() { ++live; }
  ~CountedOrder() override { --live; }
  CountedOrder(const CountedOrder&) = delete;
  CountedOrder& operator=(const CountedOrder&) = delete;

  inline static std::atomic<int> live{0};
};

}  // namespace orvane::support
