#pragma once

#include <cstdint>

namespace orvane::support {

/// A few numbers drawn from one: what a step of a schedule decides with, whatever stands before it.
class Draw {
 public:
  explicit Draw(std::uint64_t dice) : state_(dice) {}

  std::uint64_t number() {
    std::uint64_t z = (state_ += 0x9e3779b97f4a7c15U);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31);
  }
  int below(int end) { return static_cast<int>(number() % static_cast<std::uint64_t>(end)); }
  bool oneIn(int n) { return below(n) == 0; }

 private:
  std::uint64_t state_;
};

}  // namespace orvane::support
