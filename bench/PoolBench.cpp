// Our pool against a well-kept package's, in the patterns that the platform has: one event at a
// time to one runner and to eight, each digested before the next, and floods of small tasks.

#include <benchmark/benchmark.h>

#define ASIO_STANDALONE
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/thread_pool.hpp>
#include <memory>
#include <thread>
#include <vector>

#include "platform/core/WorkerPool.h"

namespace orvane::detail {
namespace {

/// What a runner's batch costs at least.
void smallWork(std::atomic<std::int64_t>& sum) { sum.fetch_add(1, std::memory_order_relaxed); }

void oursHelped(benchmark::State& state) {
  const auto receivers = static_cast<int>(state.range(0));
  WorkerPool pool;
  pool.resize(static_cast<int>(state.range(1)));
  pool.beginHelping();
  std::atomic<std::int64_t> sum{0};
  for (auto _ : state) {
    for (int i = 0; i < receivers; ++i) pool.add([&sum] { smallWork(sum); });
    pool.helpUntilQuiet();
  }
  pool.endHelping();
  state.SetItemsProcessed(state.iterations() * receivers);
}

void oursUnhelped(benchmark::State& state) {
  const auto receivers = static_cast<int>(state.range(0));
  WorkerPool pool;
  pool.resize(static_cast<int>(state.range(1)));
  std::atomic<std::int64_t> sum{0};
  for (auto _ : state) {
    for (int i = 0; i < receivers; ++i) pool.add([&sum] { smallWork(sum); });
    pool.signal().wait([&] { return pool.signal().quiet(); });
  }
  state.SetItemsProcessed(state.iterations() * receivers);
}

/// The package's pool knows nothing of being idle, so the same signal counts around its tasks.
void asioThreadPool(benchmark::State& state) {
  const auto receivers = static_cast<int>(state.range(0));
  asio::thread_pool pool(static_cast<std::size_t>(state.range(1)));
  QuietSignal signal;
  std::atomic<std::int64_t> sum{0};
  for (auto _ : state) {
    for (int i = 0; i < receivers; ++i) {
      signal.addWork();
      asio::post(pool, [&] {
        smallWork(sum);
        signal.endWork();
      });
    }
    for (int i = 0; i < 200 && !signal.quiet(); ++i) {
    }
    signal.wait([&] { return signal.quiet(); });
  }
  pool.join();
  state.SetItemsProcessed(state.iterations() * receivers);
}

/// Its event loop can be helped: threads run it, and so does the driver while it waits.
void asioHelped(benchmark::State& state) {
  const auto receivers = static_cast<int>(state.range(0));
  asio::io_context context;
  auto guard = asio::make_work_guard(context);
  std::vector<std::thread> threads;
  for (int i = 0; i < state.range(1); ++i) threads.emplace_back([&] { context.run(); });
  QuietSignal signal;
  std::atomic<std::int64_t> sum{0};
  for (auto _ : state) {
    for (int i = 0; i < receivers; ++i) {
      signal.addWork();
      asio::post(context, [&] {
        smallWork(sum);
        signal.endWork();
      });
    }
    while (!signal.quiet()) {
      while (context.poll_one() != 0) {
      }
      for (int i = 0; i < 200 && !signal.quiet(); ++i) {
      }
      signal.wait([&] { return signal.quiet(); });
    }
  }
  guard.reset();
  context.stop();
  for (std::thread& thread : threads) thread.join();
  state.SetItemsProcessed(state.iterations() * receivers);
}

void patterns(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"tasks", "threads"})->UseRealTime();
  for (const int threads : {1, 3})
    for (const int tasks : {1, 8, 1000}) bench->Args({tasks, threads});
}

BENCHMARK(oursHelped)->Apply(patterns);
BENCHMARK(asioHelped)->Apply(patterns);
BENCHMARK(oursUnhelped)->Apply(patterns);
BENCHMARK(asioThreadPool)->Apply(patterns);

}  // namespace
}  // namespace orvane::detail
