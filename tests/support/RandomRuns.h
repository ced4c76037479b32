#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>

namespace orvane::support {

#if defined(__has_feature)
#define ORVANE_TEST_HAS(feature) __has_feature(feature)
#else
#define ORVANE_TEST_HAS(feature) 0
#endif
/// A sanitizer makes each sequence several times slower; it looks for other things.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    ORVANE_TEST_HAS(address_sanitizer) || ORVANE_TEST_HAS(thread_sanitizer)
inline constexpr int kSanitizerDivisor = 10;
#else
inline constexpr int kSanitizerDivisor = 1;
#endif
#undef ORVANE_TEST_HAS

/// The fewest sequences that a random test tries: it can always say whether it saw enough.
inline constexpr int kFewestRuns = 40;

/// How many sequences a random test tries: what ORVANE_RANDOM_RUNS says, or else `usual`, a tenth
/// of it under a sanitizer.
inline int randomRuns(int usual) {
  const char* const wanted = std::getenv("ORVANE_RANDOM_RUNS");
  const int runs = wanted != nullptr ? std::atoi(wanted) : usual / kSanitizerDivisor;
  return std::max(runs, kFewestRuns);
}

/// Where a random test begins: what ORVANE_RANDOM_SEED says, to repeat a run, or else any number.
inline std::uint64_t randomSeed() {
  const char* const wanted = std::getenv("ORVANE_RANDOM_SEED");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : std::random_device{}();
}

}  // namespace orvane::support
