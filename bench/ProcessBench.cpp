// A whole run as a user starts it: the command reads a million bars from text, plays them through a
// strategy that trades, and ends.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/WalkFile.h"

extern char** environ;

namespace orvane {
namespace {

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
  // What ran before may have used all of the machine's memory and given it back, to the host of a
  // virtual machine, too: the next process waits for each page of it again. That is told by itself.
  const auto begin = std::chrono::steady_clock::now();
  bool isGood = ran(words);
  const std::chrono::duration<double> first = std::chrono::steady_clock::now() - begin;
  for (auto _ : state) isGood = isGood && ran(words);
  if (!isGood) state.SkipWithError("the command did not end well");
  state.counters["first"] = static_cast<double>(bench::WalkFile::kRows) / first.count();
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bench::WalkFile::kRows));
}

void runFromText(benchmark::State& state) { runWhole(state, bench::WalkFile::path(), 1); }
BENCHMARK(runFromText)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

/// The same without an order.
void runFromTextWithoutOrders(benchmark::State& state) {
  runWhole(state, bench::WalkFile::path(), 0);
}
BENCHMARK(runFromTextWithoutOrders)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

/// The same bars from the binary file that was made of them.
void runFromCache(benchmark::State& state) {
  static const bool isMade = ran({ORVANE_COMMAND, "data", "convert", bench::WalkFile::path(),
                                  "--code", "WALK.X", "--out", bench::WalkFile::cachePath()});
  if (!isMade) return state.SkipWithError("the file could not be converted");
  runWhole(state, bench::WalkFile::cachePath(), 1);
}
BENCHMARK(runFromCache)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
}  // namespace orvane
