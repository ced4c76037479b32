#pragma once

#include <mutex>

namespace orvane::detail {

/// Rounds of doing nothing, which let a processor's other thread and its memory go on.
inline void pauseFor(int rounds) {
#if defined(__x86_64__)
  for (int i = 0; i < rounds; ++i) __builtin_ia32_pause();
#elif defined(__aarch64__)
  for (int i = 0; i < rounds; ++i) asm volatile("isb");
#else
  static_cast<void>(rounds);
#endif
}

/// Locks a mutex that others hold for moments only. Falling asleep for it and being woken takes
/// many times as long, so it is tried a few times first, ever more rarely: each try disturbs the
/// holder.
inline std::unique_lock<std::mutex> lockSoon(std::mutex& mutex) {
  for (int rounds = 4; rounds <= 64; rounds *= 2) {
    if (mutex.try_lock()) return {mutex, std::adopt_lock};
    pauseFor(rounds);
  }
  return std::unique_lock(mutex);
}

}  // namespace orvane::detail
