// Rows a second of reading market data: text on one and on all threads, and a cache.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/BenchBars.h"
#include "platform/market/files/CacheFile.h"
#include "platform/market/files/DataFiles.h"

namespace orvane {
namespace {

/// The files of the benchmarks, made once: minute bars as CSV and the same as a cache.
class Files {
 public:
  static const Files& of(std::size_t rows) {
    static const Files files(rows);
    if (files.rows_ != rows) throw std::logic_error("all benchmarks of files have one size");
    return files;
  }

  std::string csv() const { return (folder_ / "bench_1min.csv").string(); }
  std::string cache() const { return (folder_ / "bench.ovb").string(); }

  std::vector<LoadedBars> load(int threads) const {
    DataFileRequest request;
    request.paths = {csv()};
    request.pace.threads = threads;
    return loadBars(request);
  }

 private:
  explicit Files(std::size_t rows) : rows_(rows) {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the bench");
    folder_ = name;
    std::string text = "datetime,open,high,low,close,volume,turnover,open_interest\n";
    for (std::size_t i = 0; i < rows; ++i) {
      const auto minute = std::chrono::sys_seconds(
          std::chrono::seconds(bench::kStart / 1000 + 60 * std::int64_t(i)));
      const auto day = std::chrono::floor<std::chrono::days>(minute);
      const std::chrono::year_month_day date(day);
      const std::chrono::hh_mm_ss clock(minute - day);
      const double price = 4000 + static_cast<double>(i % 499) / 5;
      fmt::format_to(std::back_inserter(text),
                     "{}-{:02}-{:02} {:02}:{:02}:00,{:.1f},{:.1f},{:.1f},{:.1f},{},{:.1f},{}\n",
                     int(date.year()), unsigned(date.month()), unsigned(date.day()),
                     clock.hours().count(), clock.minutes().count(), price, price + 1.2,
                     price - 0.8, price + 0.4, i % 900, static_cast<double>(i % 900) * price * 300,
                     100000 + i % 900);
    }
    std::ofstream(csv(), std::ios::binary) << text;
    DataCache made;
    made.bars = load(0);
    writeDataCache(cache(), made);
  }
  ~Files() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::size_t rows_;
  std::filesystem::path folder_;
};

/// The second argument is the number of threads; 0: as many as is usual.
void csvParsing(benchmark::State& state) {
  const Files& files = Files::of(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(files.load(static_cast<int>(state.range(1))));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(csvParsing)
    ->Args({200000, 1})
    ->Args({200000, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void cacheOpening(benchmark::State& state) {
  const Files& files = Files::of(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(openDataCache(files.cache()));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(cacheOpening)->Arg(200000)->Unit(benchmark::kMicrosecond)->UseRealTime();

void cacheCheckingAll(benchmark::State& state) {
  const Files& files = Files::of(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(openDataCache(files.cache(), true));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(cacheCheckingAll)->Arg(200000)->Unit(benchmark::kMillisecond)->UseRealTime();

/// From the file's name to the last of its rows, all words of each.
void cacheWalking(benchmark::State& state) {
  const Files& files = Files::of(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    const DataCache cache = openDataCache(files.cache());
    Word sum = 0;
    for (const IKLine& bar : cache.bars.front().series.bars)
      for (const Word word : bar.words) sum ^= word;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(cacheWalking)->Arg(200000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvane
