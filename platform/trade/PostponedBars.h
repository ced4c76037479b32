#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "platform/market/MarketStore.h"

namespace orvane::detail {

/// Bars that nobody needs to know of yet. While a code is held and no order in it is at work, its
/// bars change what the position is worth, and the curves, and nothing else; so they are reckoned
/// with once somebody looks, many in a row, which costs less than each between other work.
///
/// One thread adds them. Whoever looks takes them, under the lock of what they change.
class PostponedBars {
 public:
  /// There is room for so many, and a look takes no longer than they do.
  static constexpr std::size_t kMost = 64;

  bool isEmpty() const { return taken_.load(std::memory_order_relaxed) == added_.load(); }
  bool isFull() const { return added_.load(std::memory_order_relaxed) - taken_.load() == kMost; }

  /// Only if there is room. The stream stays where it is, and the row as it is.
  void add(const MarketStream& stream, std::size_t row) {
    const std::size_t at = added_.load(std::memory_order_relaxed);
    bars_[at % kMost] = {&stream, row};
    added_.store(at + 1, std::memory_order_release);
  }

  /// Lets go of them all. Under that lock, and while nobody adds.
  void drop() { taken_.store(added_.load()); }

  /// Calls `use` with each, in the order they were added. If it throws, that bar and those behind
  /// it stay.
  template <typename Use>
  void takeAll(const Use& use) {
    const std::size_t end = added_.load(std::memory_order_acquire);
    for (std::size_t at = taken_.load(std::memory_order_relaxed); at != end; ++at) {
      const auto& [stream, row] = bars_[at % kMost];
      use(*stream, row);
      taken_.store(at + 1, std::memory_order_release);
    }
  }

 private:
  struct Bar {
    const MarketStream* stream = nullptr;
    std::size_t row = 0;
  };

  std::array<Bar, kMost> bars_;
  std::atomic<std::size_t> added_{0};
  std::atomic<std::size_t> taken_{0};
};

}  // namespace orvane::detail
