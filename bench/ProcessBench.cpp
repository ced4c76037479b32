// A whole run as a user starts it: the command reads a million bars from text, plays them through a
// strategy that trades, and ends. Beside it the least that reading such a file costs.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

extern char** environ;

namespace orvane {
namespace {

constexpr std::size_t kRows = 1'000'000;

/// A random walk of minute bars, the same each time, made once.
class WalkFile {
 public:
  static const std::string& path() {
    static const WalkFile file;
    return file.path_;
  }
  /// Where its binary twin belongs, which goes with it.
  static std::string cachePath() { return path() + ".ovb"; }

 private:
  WalkFile() {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the bench");
    folder_ = name;
    path_ = (folder_ / "walk_1min.csv").string();
    std::mt19937_64 random(7);
    const auto step = [&random](int most) {
      return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(2 * most + 1)) - most;
    };
    const std::chrono::sys_seconds begin =
        std::chrono::sys_days(std::chrono::year(2020) / std::chrono::January / 1);
    std::string text = "time,open,high,low,close,volume\n";
    std::int64_t cents = 100'000;
    for (std::size_t i = 0; i < kRows; ++i) {
      const auto minute = begin + std::chrono::minutes(i);
      const auto day = std::chrono::floor<std::chrono::days>(minute);
      const std::chrono::year_month_day date(day);
      const std::chrono::hh_mm_ss clock(minute - day);
      const std::int64_t open = cents;
      cents = std::max<std::int64_t>(1000, cents + step(80));
      const std::int64_t high = std::max(open, cents) + std::abs(step(20));
      const std::int64_t low = std::min(open, cents) - std::abs(step(20));
      fmt::format_to(
          std::back_inserter(text),
          "{}-{:02}-{:02} {:02}:{:02}:00,{:.2f},{:.2f},{:.2f},{:.2f},{}\n", int(date.year()),
          unsigned(date.month()), unsigned(date.day()), clock.hours().count(),
          clock.minutes().count(), static_cast<double>(open) / 100, static_cast<double>(high) / 100,
          static_cast<double>(low) / 100, static_cast<double>(cents) / 100, 1 + random() % 100);
    }
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~WalkFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::filesystem::path folder_;
  std::string path_;
};

/// Runs a program with its output thrown away. Returns whether it ended well.
bool ran(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  return failed == 0 && waitpid(child, &status, 0) == child && status == 0;
}

void runWhole(benchmark::State& state, const std::string& path, int volume) {
  const std::string parameters = fmt::format(R"({{"fast":10,"slow":30,"volume":{}}})", volume);
  const std::vector<std::string> words = {ORVANE_COMMAND,
                                          "run",
                                          "-s",
                                          ORVANE_ANY_MODULE,
                                          "-p",
                                          parameters,
                                          "-b",
                                          "WALK.X=" + path,
                                          "--strategy-log-level",
                                          "off",
                                          "--no-digest"};
  for (auto _ : state)
    if (!ran(words)) {
      state.SkipWithError("the command did not end well");
      break;
    }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRows));
}

void runFromText(benchmark::State& state) { runWhole(state, WalkFile::path(), 1); }
BENCHMARK(runFromText)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The same without an order.
void runFromTextWithoutOrders(benchmark::State& state) { runWhole(state, WalkFile::path(), 0); }
BENCHMARK(runFromTextWithoutOrders)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The same bars from the binary file that was made of them.
void runFromCache(benchmark::State& state) {
  static const bool isMade = ran({ORVANE_COMMAND, "data", "convert", WalkFile::path(), "--code",
                                  "WALK.X", "--out", WalkFile::cachePath()});
  if (!isMade) return state.SkipWithError("the file could not be converted");
  runWhole(state, WalkFile::cachePath(), 1);
}
BENCHMARK(runFromCache)->Unit(benchmark::kMillisecond)->UseRealTime();

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
  const std::string& path = WalkFile::path();
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
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRows));
}
BENCHMARK(textFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvane
