#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

namespace orvane::detail {

/// Sees to it, in lockstep, that no receiver is called twice without quiet between the two calls:
/// else what a strategy finds in one batch would depend on how fast it was. The calls between two
/// waits are a round; different receivers of one round may run side by side. For one thread at a
/// time.
class CallRounds {
 public:
  /// `wait` returns once every receiver has digested what it was given; null where nobody waits.
  void setQuietWait(std::function<void()> wait) { quietWait_ = std::move(wait); }

  /// How several calls are made at once; null where they are made one after the other. It returns
  /// once every receiver has digested what it was given.
  using ManyCalls = std::function<void(std::size_t, const std::function<void(std::size_t)>&)>;
  void setManyCalls(ManyCalls make) { manyCalls_ = std::move(make); }
  /// Whether so many calls are worth several threads.
  bool sharesCalls(std::size_t count) const { return manyCalls_ != nullptr && count >= kMany; }

  /// Whether `enter` would not wait. Notes the receiver's call as `enter` does.
  bool isNew(std::uint64_t& calledIn) const { return std::exchange(calledIn, round_) != round_; }
  /// Calls receivers that are all new to this round, and lets the next begin.
  void callAll(std::size_t count, const std::function<void(std::size_t)>& call) {
    manyCalls_(count, call);
    ++round_;
  }

  /// Everything is quiet: a new round begins.
  void begin() { ++round_; }

  /// Before a receiver is called. `calledIn` is the receiver's own, 0 at first: the round in which
  /// it was called last.
  void enter(std::uint64_t& calledIn) {
    if (quietWait_ == nullptr) return;
    if (calledIn == round_) {
      quietWait_();
      ++round_;
    }
    calledIn = round_;
  }

 private:
  /// Fewer calls take less time than telling another thread of them.
  static constexpr std::size_t kMany = 16;

  std::function<void()> quietWait_;
  ManyCalls manyCalls_;
  std::uint64_t round_ = 1;
};

}  // namespace orvane::detail
