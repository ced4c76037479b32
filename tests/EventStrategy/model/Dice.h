#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace orvane::support {

/// What a schedule draws at random. One seed gives one sequence.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : random_(seed) {}

  int below(int end) { return static_cast<int>(random_() % static_cast<std::uint64_t>(end)); }
  bool oneIn(int n) { return below(n) == 0; }
  std::uint64_t any() { return random_(); }

  template <typename T>
  const T& oneOf(const std::vector<T>& things) {
    return things[static_cast<std::size_t>(below(static_cast<int>(things.size())))];
  }

 private:
  std::mt19937_64 random_;
};

}  // namespace orvane::support
