#pragma once

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
  std::function<void()> quietWait_;
  std::uint64_t round_ = 1;
};

}  // namespace orvane::detail
