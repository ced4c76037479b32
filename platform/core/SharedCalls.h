#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace orvane::detail {

/// Calls, numbered from 0, that several threads make together, each once.
///
/// They are split into lanes, one a thread: whoever has a lane takes its calls from the front, and
/// then what others have not taken yet, from the back. So, record after record, a thread makes the
/// same calls as a rule, and what belongs to them stays in its processor's cache; and a call that
/// takes long keeps no other waiting.
class SharedCalls {
 public:
  using Call = std::function<void(std::size_t)>;
  static constexpr std::size_t kMostLanes = 8;

  /// New calls, `call(0)` to `call(count - 1)`, for so many lanes. Only when all earlier ones have
  /// ended; `call` must stay until these have.
  void open(std::size_t count, std::size_t lanes, const Call& call) {
    call_ = &call;
    const std::size_t each = (count + lanes - 1) / lanes;
    for (std::size_t lane = 0; lane < kMostLanes; ++lane) {
      const std::size_t begin = std::min(count, lane * each);
      const std::size_t end = std::min(count, begin + each);
      if (begin < end) lanes_[lane].span.store(pack(begin, end), std::memory_order_release);
    }
  }

  /// Whether there are calls that nobody has taken.
  bool any() const {
    return std::any_of(lanes_.begin(), lanes_.end(), [](const Lane& lane) {
      return !isEmpty(lane.span.load(std::memory_order_relaxed));
    });
  }

  /// Takes a call for whoever has this lane. False if there is none left.
  bool take(std::size_t lane, std::size_t& at) {
    if (takeOf(lanes_[lane], true, at)) return true;
    return std::any_of(lanes_.begin(), lanes_.end(),
                       [&at](Lane& other) { return takeOf(other, false, at); });
  }

  /// Makes a call that was taken.
  void make(std::size_t at) const { (*call_)(at); }

 private:
  /// The calls that are left, first and behind the last, in one word.
  struct alignas(64) Lane {
    std::atomic<std::uint64_t> span{0};
  };

  static std::uint64_t pack(std::size_t begin, std::size_t end) {
    return static_cast<std::uint64_t>(begin) << 32U | static_cast<std::uint64_t>(end);
  }
  static std::size_t beginOf(std::uint64_t span) { return static_cast<std::size_t>(span >> 32U); }
  static std::size_t endOf(std::uint64_t span) {
    return static_cast<std::size_t>(span & 0xffffffffU);
  }
  static bool isEmpty(std::uint64_t span) { return beginOf(span) == endOf(span); }

  static bool takeOf(Lane& lane, bool fromFront, std::size_t& at) {
    // Who finds nothing left sees what those did who took it: that they are counted as at work.
    std::uint64_t span = lane.span.load(std::memory_order_acquire);
    while (!isEmpty(span)) {
      at = fromFront ? beginOf(span) : endOf(span) - 1;
      const std::uint64_t left = fromFront ? pack(at + 1, endOf(span)) : pack(beginOf(span), at);
      if (lane.span.compare_exchange_weak(span, left, std::memory_order_acq_rel,
                                          std::memory_order_acquire))
        return true;
    }
    return false;
  }

  std::array<Lane, kMostLanes> lanes_;
  const Call* call_ = nullptr;  ///< Told by the lanes' spans.
};

}  // namespace orvane::detail
