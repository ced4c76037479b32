#include "host/sweep/SweepOptions.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <limits>
#include <set>

#include "host/FileHash.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/JsonInput.h"
#include "host/OptionChecks.h"
#include "host/PlatformSetup.h"
#include "host/RunConfig.h"
#include "host/TimeArgument.h"
#include "host/Version.h"
#include "host/sweep/FigureList.h"
#include "platform/market/PeriodText.h"

namespace orvane {
namespace {

constexpr std::uint64_t kMostSeed = std::numeric_limits<std::uint64_t>::max();

/// Where the data begin and, one millisecond later, end.
TimeSpan spanOf(const DataSet& data) {
  const std::vector<SeriesSummary> all = data.summaries();
  TimeSpan span{all.front().firstTime, all.front().lastTime};
  for (const SeriesSummary& series : all) {
    span.begin = std::min(span.begin, series.firstTime);
    span.end = std::max(span.end, series.lastTime);
  }
  return {span.begin, span.end + 1};
}

/// A value of --params would be of no effect. The ranges are those of `grid`, in their order.
void refuseGivenTwice(const QJsonObject& params, const ParameterSpace& space,
                      const std::vector<std::string>& grid) {
  for (std::size_t i = 0; i < grid.size(); ++i) {
    const std::string& name = space.ranges()[i].name();
    const auto given = params.find(QString::fromStdString(name));
    if (given == params.end()) continue;
    throw InputError(
        fmt::format("--params: \"{}\" is {}, and has values by --grid {}; leave one of the two out",
                    name, jsonText(*given), grid[i]));
  }
}

/// For who writes 3m and means three months.
constexpr char kMonthsAdvice[] = "m stands for minutes; a month is told in days, as in 90d:30d";

constexpr char kLongerAdvice[] = "give longer spans";

/// The shortest period of the bars; 0 where there are ticks, which have none.
int64 shortestPeriodOf(const DataSet& data) {
  if (!data.ticks.empty()) return 0;
  int64 shortest = kUnsetTime;
  for (const LoadedBars& loaded : data.bars) shortest = std::min(shortest, loaded.series.periodMs);
  return shortest;
}

}  // namespace

void SweepOptions::addTo(CLI::App& command) {
  run_.addTo(command);
  addWhatToTry(command);
  command.add_option("--batch", batch_, "Combinations that play at once (default: by the data)")
      ->check(wholeNumber(1, 4096))
      ->group("How to play");
  addWhatComesOut(command);
}

void SweepOptions::addWhatToTry(CLI::App& command) {
  const std::string what = "What to try";
  command
      .add_option("-g,--grid", grid_,
                  "Values of a parameter: NAME=FROM:TO:STEP, both ends inclusive, or NAME=a,b,c")
      ->type_name("NAME=VALUES")
      ->group(what);
  command
      .add_option("--where", where_,
                  "Only combinations that fulfil this, such as \"fast<slow\"; may be repeated")
      ->type_name("COMPARISON")
      ->group(what);
  command.add_option("--sample", sample_, "Only some of the grid, chosen so (with --count)")
      ->check(oneOf({"random", "sobol"}))
      ->group(what);
  command.add_option("--count", count_, "How many combinations a sample has")
      ->check(wholeNumber(1, kMostCombinations))
      ->group(what);
  command.add_option("--seed", seed_, "What a sample is chosen by")
      ->default_str("1")
      ->check(wholeNumber(0, kMostSeed))
      ->group(what);
  command
      .add_option("--walk-forward", walk_,
                  "Windows such as 90d:30d or 90d:30d:30d: choose by the first span, try on the "
                  "second, go on by the third, or else by the second")
      ->type_name("IN:OUT[:STEP]")
      ->group(what);
  command.add_option("--rank", rank_, "Figure of a report that tells which combination is best")
      ->type_name("FIGURE")
      ->capture_default_str()
      ->group(what);
}

void SweepOptions::addWhatComesOut(CLI::App& command) {
  const std::string out = "What comes out";
  command
      .add_option("-o,--out", out_,
                  "Folder for results.db, results.csv and sweep.html; called again with the same "
                  "sweep, what is done is not run again")
      ->type_name("DIR")
      ->group(out);
  command.add_option("--top", top_, "Combinations that the table shows")
      ->capture_default_str()
      ->check(wholeNumber(1, kMostCombinations))
      ->group(out);
  command
      .add_flag("--digest", withDigest_,
                "Hash the call-backs of each run, as run does with --name MODULE-NUMBER")
      ->disable_flag_override()
      ->group(out);
  command
      .add_flag("--retry-crashed", retriesCrashed_,
                "Run again what ended its process in an earlier call with the same --out")
      ->disable_flag_override()
      ->group(out);
  command.add_flag("-q,--quiet", isQuiet_, "No table")->disable_flag_override()->group(out);
}

std::optional<SampleOptions> SweepOptions::sample() const {
  if (sample_.empty()) {
    if (count_ > 0)
      throw InputError(
          fmt::format("--count: \"{}\" is of a sample; give --sample random or sobol", count_));
    if (seed_)
      throw InputError(
          fmt::format("--seed: \"{}\" is of a sample; give --sample random or sobol", *seed_));
    return std::nullopt;
  }
  if (count_ == 0) throw InputError(fmt::format("--sample {}: how many? Give --count", sample_));
  return SampleOptions{
      sample_ == "sobol" ? SampleOptions::Kind::Sobol : SampleOptions::Kind::Random, count_,
      seed_.value_or(1)};
}

SweepPlan SweepOptions::plan() const {
  if (run_.strategy().empty())
    throw InputError("what to run? Give --strategy MODULE (see sweep --help)");
  if (grid_.empty())
    throw InputError("what to try? Give --grid NAME=FROM:TO:STEP or NAME=a,b,c (see sweep --help)");
  const ParameterSpace space(grid_, "--grid");
  for (const ParameterRange& range : space.ranges())
    for (const char* name : {"data", "account"})
      if (range.name() == name)
        throw InputError(fmt::format("--grid: \"{}\" is what the command tells runners", name));
  std::vector<Condition> conditions;
  for (const std::string& given : where_) conditions.emplace_back(given, space, "--where");

  RunPlan run;
  RunnerPlan runner = run_.runner(run);
  refuseGivenTwice(runner.params, space, grid_);
  if (runner.params.contains("account"))
    throw InputError("--params: \"account\": each combination has an account of its own");
  run.runners.push_back(std::move(runner));
  run_.addInputs(run);
  checkNotGivenTwice(run.instruments);
  run_.addSettings(run);
  run.withDigest = withDigest_;
  if (run.data.empty())
    throw InputError("there is no market data: give --bars FILE or --ticks FILE");
  RunPlan complete = run;
  completeRunners(complete, "--strategy");
  run.runners.front().name = complete.runners.front().name;
  run.runners.front().modulePath = complete.runners.front().modulePath;

  if (!walk_.empty()) WalkForward::parse(walk_, "--walk-forward");
  if (retriesCrashed_ && out_.empty())
    throw InputError("--retry-crashed: nothing of an earlier call is kept without --out");
  const std::size_t rank = figureNamed(rank_, "--rank");
  return {std::move(run), space, chooseCombinations(space, conditions, sample()),
          rank,           {},    static_cast<std::size_t>(batch_),
          retriesCrashed_};
}

void SweepOptions::addWindows(SweepPlan& plan, const DataSet& data) const {
  const PlatformOptions options = platformOptions(plan.run, data);
  TimeSpan whole = spanOf(data);
  const auto refuse = [&](const char* option, const std::string& given) {
    throw InputError(fmt::format("{}: \"{}\" leaves nothing to play: the data are from {} to {}",
                                 option, given, isoTime(whole.begin), isoTime(whole.end - 1)));
  };
  if (options.from != kUnsetTime && options.from >= whole.end) refuse("--from", plan.run.from);
  if (options.to != kUnsetTime && options.to <= whole.begin) refuse("--to", plan.run.to);
  if (walk_.empty()) return;
  if (options.from != kUnsetTime) whole.begin = std::max(whole.begin, options.from);
  if (options.to != kUnsetTime) whole.end = std::min(whole.end, options.to);
  const WalkForward walk = WalkForward::parse(walk_, "--walk-forward");
  if (const int64 period = shortestPeriodOf(data);
      std::min(walk.inSampleMs, walk.outOfSampleMs) < period) {
    const std::size_t middle = walk_.find(':');
    const std::size_t end = walk.inSampleMs < period ? middle : walk_.find(':', middle + 1);
    const std::string upTo = walk_.substr(0, end);
    throw InputError(
        fmt::format("--walk-forward: \"{}\" has a span that is shorter than a bar, {}; {}", walk_,
                    frequencyText(period), upTo.back() == 'm' ? kMonthsAdvice : kLongerAdvice));
  }
  plan.windows = walk.windows(whole, "--walk-forward");
  if (plan.windows.size() * plan.numbers.size() > kMostCombinations)
    throw InputError(
        fmt::format("--walk-forward: {} windows of {} combinations are more than {} runs; give "
                    "longer spans",
                    plan.windows.size(), plan.numbers.size(), kMostCombinations));
}

QJsonObject SweepOptions::identity(const CLI::App& command, const SweepPlan& plan) const {
  // What changes how a sweep is run or shown, and none of its results.
  std::set<std::string> ignored = {"--help",  "--threads",      "--batch",
                                   "--out",   "--top",          "--quiet",
                                   "--log",   "--log-level",    "--strategy-log-level",
                                   "--cache", "--retry-crashed"};
  if (walk_.empty()) ignored.insert("--rank");
  QJsonObject result{{"version", kVersion}};
  for (const CLI::Option* option : command.get_options()) {
    if (option->empty() || ignored.contains(option->get_name())) continue;
    QJsonArray given;
    for (const std::string& text : option->results()) given.append(QString::fromStdString(text));
    result[QString::fromStdString(option->get_name())] = given;
  }
  result["params"] = plan.run.runners.front().params;
  result["reading"] = run_.reading().description();

  std::vector<std::string> files = plan.run.dataFiles();
  const std::size_t ofData = files.size();
  files.push_back(plan.run.runners.front().modulePath);
  for (const ReadFile& file : plan.run.otherFiles) files.push_back(file.path);
  const std::vector<FileHash> hashes = hashesOf(files);
  for (const FileHash& hash : hashes)
    result[QString::fromStdString("file " + hash.file)] = QString::fromStdString(hash.xxh3);
  for (std::size_t i = 0; i <= ofData; ++i)
    if (std::ranges::find(hashes, files[i], &FileHash::file) == hashes.end())
      throw InputError(
          fmt::format("--out: whether results belong to \"{}\" could not be told "
                      "later, since it is no ordinary file; leave --out out",
                      files[i]));
  return result;
}

}  // namespace orvane
