// What a whole run over a file is measured against: reading its numbers with the standard library,
// and what the library's contract names on the way of its bars and of the orders that they call
// for.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/BareRoad.h"
#include "bench/BareStrategy.h"
#include "bench/BareTrade.h"
#include "bench/BenchBars.h"
#include "bench/Timed.h"
#include "bench/WalkFile.h"
#include "platform/market/Rows.h"

namespace orvane {
namespace {

/// Takes a row's numbers, seen through a virtual call.
class Taker {
 public:
  virtual ~Taker() = default;
  virtual void take(const std::array<double, 5>& row) = 0;
};

class Summing final : public Taker {
 public:
  void take(const std::array<double, 5>& row) override { benchmark::DoNotOptimize(sum_ += row[3]); }

 private:
  double sum_ = 0;
};

/// Reads the file into memory, turns each row's numbers into doubles on one thread, and makes one
/// virtual call a row; times are passed over.
void textFloor(benchmark::State& state) {
  const std::string& path = bench::WalkFile::path();
  const std::unique_ptr<Taker> taker = std::make_unique<Summing>();
  for (auto _ : state) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::filesystem::file_size(path), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    std::array<double, 5> row{};
    for (std::size_t line = text.find('\n') + 1; line < text.size();) {
      const char* at = text.data() + text.find(',', line);
      const char* const end = text.data() + text.size();
      for (double& value : row) at = std::from_chars(at + 1, end, value).ptr;
      taker->take(row);
      line = static_cast<std::size_t>(at - text.data()) + 1;
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bench::WalkFile::kRows));
}
BENCHMARK(textFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Half of a text's lines, read and turned into bars on one of two threads; times are counted.
class Half {
 public:
  /// Reads what stands from `begin` to `end` in the file into its place in the text.
  void read(const std::string& path, std::size_t begin, std::size_t end, char* text) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(begin));
    file.read(text + begin, static_cast<std::streamsize>(end - begin));
  }
  void count(const char* begin, const char* end) {
    begin_ = begin;
    end_ = end;
    lines_ = static_cast<std::size_t>(std::count(begin, end, '\n'));
  }
  void parse(IKLine* bars, std::size_t first) const {
    const char* at = begin_;
    for (std::size_t i = first; i < first + lines_; ++i) {
      bars[i] = {};
      KLineWriter writer(bars[i]);
      const int64 begin = bench::kStart + static_cast<int64>(i) * bench::kMinuteMs;
      writer.setTimes(begin, begin + bench::kMinuteMs);
      at = std::find(at, end_, ',');
      for (const auto field : {kline::Open, kline::High, kline::Low, kline::Close, kline::Volume}) {
        double value = 0;
        at = std::from_chars(at + 1, end_, value).ptr;
        writer.set(field, value);
      }
    }
  }
  std::size_t lines() const { return lines_; }

 private:
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  std::size_t lines_ = 0;
};

template <typename Work>
void onTwoThreads(const Work& work) {
  std::thread other([&work] { work(1); });
  work(0);
  other.join();
}

Rows<IKLine> readBars(const std::string& path) {
  Rows<char> text;
  text.resizeForWriting(std::filesystem::file_size(path));
  const std::size_t middle = text.size() / 2;
  std::array<Half, 2> halves;
  onTwoThreads([&](int i) {
    halves[i].read(path, i == 0 ? 0 : middle, i == 0 ? middle : text.size(), text.data());
  });
  const char* const header = std::find(text.begin(), text.end(), '\n') + 1;
  const char* const between = std::find(text.begin() + middle, text.end(), '\n') + 1;
  onTwoThreads(
      [&](int i) { halves[i].count(i == 0 ? header : between, i == 0 ? between : text.end()); });
  Rows<IKLine> bars;
  bars.resizeForWriting(halves[0].lines() + halves[1].lines());
  onTwoThreads([&](int i) { halves[i].parse(bars.data(), i == 0 ? 0 : halves[0].lines()); });
  return bars;
}

/// Sees where the mean of the last ten closes crosses that of the last thirty.
class Crossing final : public bench::BareCounting {
 public:
  using BareCounting::take;
  void take(const std::vector<IKLine>& bars) override {
    for (const IKLine& bar : bars) addClose(KLineView(bar).close());
  }
  bool hasCrossed() { return std::exchange(hasCrossed_, false); }

 private:
  static constexpr std::size_t kFast = 10, kSlow = 30;

  void addClose(double close) {
    fast_ += close - closes_[(at_ + kSlow - kFast) % kSlow];
    slow_ += close - closes_[at_];
    closes_[at_] = close;
    at_ = (at_ + 1) % kSlow;
    if (++count_ < kSlow) return;
    const bool isUp = fast_ * kSlow > slow_ * kFast;
    hasCrossed_ = count_ > kSlow && isUp != wasUp_;
    wasUp_ = isUp;
  }

  std::array<double, kSlow> closes_{};
  std::size_t at_ = 0, count_ = 0;
  double fast_ = 0, slow_ = 0;
  bool wasUp_ = false, hasCrossed_ = false;
};

/// Reads the file on two threads, then passes its bars to a strategy one by one, and an order with
/// its fill wherever the means cross. There are no books, no times, no start of a process and no
/// end of one.
void wholeFloor(benchmark::State& state) {
  const std::string& path = bench::WalkFile::path();
  std::vector<IKLine> one(1);
  const auto play = [&](const auto& clocked) {
    auto made = std::make_unique<Crossing>();
    Crossing& strategy = *made;
    const auto road = std::make_shared<bench::BareRoad>(std::move(made));
    bench::BareTrade trade(*road);
    Rows<IKLine> bars;
    clocked([&] {
      bars = readBars(path);
      road->begin();
      for (const IKLine& bar : bars) {
        one.front() = bar;
        road->pass(one);
        if (strategy.hasCrossed()) trade.pass();
      }
      road->end();
    });
    return bars.size() == bench::WalkFile::kRows && trade.count() > 0;
  };
  // Once before, as the process that it stands beside.
  bool isGood = play([](const auto& part) { part(); });
  for (auto _ : state)
    isGood = isGood && play([&state](const auto& part) { bench::timed(state, part); });
  if (!isGood) state.SkipWithError("bars or orders are missing");
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bench::WalkFile::kRows));
}
BENCHMARK(wholeFloor)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace orvane
