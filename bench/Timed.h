#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

namespace orvane::bench {

/// Runs the part of an iteration that counts, for benchmarks that use manual time. What stands
/// around it is not timed: neither how a platform is made nor how it ends, which joins threads and
/// lets go of every order of the run.
template <typename Part>
auto timed(benchmark::State& state, Part part) {
  class Timer {
   public:
    explicit Timer(benchmark::State& of) : of_(of) {}
    ~Timer() {
      const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin_;
      of_.SetIterationTime(passed.count());
    }

   private:
    benchmark::State& of_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  };
  const Timer timer(state);
  return part();
}

}  // namespace orvane::bench
