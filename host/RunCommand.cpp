#include "host/RunCommand.h"

#include <fmt/core.h>

#include <chrono>
#include <filesystem>
#include <limits>

#include "host/Console.h"
#include "host/DataSet.h"
#include "host/EventConfig.h"
#include "host/FileHash.h"
#include "host/FileRoles.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/InterruptWatcher.h"
#include "host/JsonInput.h"
#include "host/LineAppender.h"
#include "host/OptionChecks.h"
#include "host/ProgressLine.h"
#include "host/Report.h"
#include "host/RunConfig.h"
#include "host/RunSession.h"

namespace orvane {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  orvane run --strategy sma_cross --params '{\"fast\":5,\"slow\":20}' --bars IF=if_1min.csv\n"
    "  orvane run --strategy ./my.so --ticks IF2101.CFFEX=day1.csv.gz IF2101.CFFEX=day2.csv.gz\n"
    "  orvane run --strategy print_events --bars spy.csv --price-scale 10000 --from 2013-10-08\n"
    "  orvane run several.json --report out\n"
    "\n"
    "Exit codes: 0 every run ended as Stopped or Finished; 1 a run ended as an error;\n"
    "2 the input was wrong and nothing ran; 130 interrupted.";

constexpr std::uint64_t kLargest = std::numeric_limits<int>::max();

/// Splits "CODE=FILE"; a name that has "=" in it and is a file stays whole.
std::pair<std::string, std::string> splitCode(const std::string& argument) {
  const auto equals = argument.find('=');
  const bool hasCode = equals != std::string::npos && equals != 0 && argument.find('/') > equals &&
                       !std::filesystem::exists(argument);
  if (!hasCode) return {{}, argument};
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

}  // namespace

RunCommand::RunCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("run", "Play market data through strategies");
  command_->footer(kExamples);
  command_
      ->add_option("config", config_,
                   "Configuration of a run, for several runners at once; see docs/host.md")
      ->type_name("CONFIG.json");

  const std::string what = "What to run";
  command_
      ->add_option("-s,--strategy", strategy_,
                   "Strategy module: a file, or a bare name such as sma_cross")
      ->type_name("MODULE")
      ->group(what);
  command_->add_option("-p,--params", params_, "Parameters of the strategy: {...} or a file")
      ->type_name("JSON")
      ->group(what);
  command_->add_option("--name", name_, "Name of the runner (default: the module's)")->group(what);
  command_->add_option("--order-source", orderSource_, "Create source of its orders")->group(what);
  command_
      ->add_flag("--server", isServer_,
                 "Server run: it counts what it does and can attach the accounts of the host")
      ->disable_flag_override()
      ->group(what);

  const std::string data = "Market data";
  command_->add_option("-b,--bars", bars_, "Bar files; those of one code make one series")
      ->type_name("[CODE=]FILE")
      ->group(data);
  command_->add_option("-t,--ticks", ticks_, "Tick files; those of one code make one series")
      ->type_name("[CODE=]FILE")
      ->group(data);
  command_
      ->add_option("-i,--instrument", instruments_,
                   "Instrument as CODE[.MARKET],priceTick=0.2,..., or instruments.json")
      ->type_name("INSTRUMENT")
      ->group(data);
  command_
      ->add_option("--cache", cache_,
                   "Folder of caches: the first run makes them, later ones begin at once")
      ->type_name("DIR")
      ->group(data);
  reading_.addTo(*command_);
  command_
      ->add_option("--records", recordFiles_, "Dictionary records that are there from the start")
      ->type_name("FILE")
      ->group(data);
  command_
      ->add_option("--published", published_,
                   "Code whose quotes (or bars of a frequency) the strategy publishes")
      ->type_name("CODE[=FREQUENCY]")
      ->group(data);
  command_->add_option("--indexes", indexFiles_, "What indexes are made of, and from when on")
      ->type_name("FILE")
      ->group(data);
  command_->add_option("--events", events_, "Script of general events")
      ->type_name("FILE.json")
      ->group(data);

  const std::string how = "How to play";
  command_->add_option("--from", from_, "Begin here; what lies before is history")
      ->type_name("TIME")
      ->group(how);
  command_->add_option("--to", to_, "End before this time")->type_name("TIME")->group(how);
  command_->add_option("--speed", speed_, "Pace, such as 10x (default: as fast as it can)")
      ->type_name("N[x]")
      ->group(how);
  command_->add_flag("--live", isLive_, "Live mode: the system's clock, the feed in real time")
      ->disable_flag_override()
      ->group(how);
  command_
      ->add_option("--threads", threads_, "Threads that run strategies (default: by the machine)")
      ->check(wholeNumber(1, 1024))
      ->group(how);

  const std::string trade = "How to trade";
  command_->add_option("--capital", capital_, "Start balance of each runner's account")
      ->type_name("MONEY")
      ->default_str("1000000")
      ->group(trade);
  command_->add_option("--fee-per-lot", feePerLot_, "Fee for each unit of volume")
      ->type_name("MONEY")
      ->group(trade);
  command_->add_option("--fee-rate", feeRate_, "Fee as a share of the turnover, such as 0.0001")
      ->type_name("RATE")
      ->group(trade);
  command_->add_option("--margin-rate", marginRate_, "Margin as a share of the turnover")
      ->type_name("RATE")
      ->group(trade);
  command_->add_option("--slippage", slippage_, "Price amount against market and stop orders")
      ->type_name("PRICE")
      ->group(trade);
  command_->add_option("--slippage-ticks", slippageTicks_, "The same in price ticks")
      ->check(wholeNumber(0, kLargest))
      ->group(trade);
  command_->add_option("--entry-latency", entryLatencyMs_, "From an order to the exchange, in ms")
      ->check(wholeNumber(0, kLargest))
      ->type_name("MS")
      ->group(trade);
  command_
      ->add_option("--report-latency", reportLatencyMs_, "From the exchange to the strategy, in ms")
      ->check(wholeNumber(0, kLargest))
      ->type_name("MS")
      ->group(trade);

  const std::string out = "What comes out";
  command_
      ->add_option("-r,--report", report_,
                   "Folder to write report.html, report.json, trades.csv, equity.csv into")
      ->type_name("DIR")
      ->group(out);
  command_->add_option("--store", store_, "SQLite database to keep orders, fills and equity in")
      ->type_name("FILE")
      ->group(out);
  command_
      ->add_option("--dictionary", dictionary_, "Database to keep published dictionary records in")
      ->type_name("FILE")
      ->group(out);
  command_->add_flag("--no-digest", noDigest_, "Do not hash the call-backs")
      ->disable_flag_override()
      ->group(out);
  command_->add_flag("-q,--quiet", isQuiet_, "No summary and no notes")
      ->disable_flag_override()
      ->group(out);
  command_->add_option("--log", log_.file, "Write log lines to a file and not to standard error")
      ->type_name("FILE")
      ->group(out);
  const CLI::IsMember levels({"trace", "debug", "info", "warn", "error", "off"});
  command_->add_option("--log-level", log_.level, "Level of the system's lines")
      ->check(levels)
      ->capture_default_str()
      ->group(out);
  command_->add_option("--strategy-log-level", log_.strategyLevel, "Level of the strategies' lines")
      ->check(levels)
      ->capture_default_str()
      ->group(out);
}

void RunCommand::addData(RunPlan& plan, const std::vector<std::string>& files,
                         DataFileRequest::Kind kind) const {
  const QJsonObject description = reading_.description();
  // One instrument and nothing said about codes: the files are of it.
  const bool isOnlyOne = plan.instruments.size() == 1 && !plan.instrumentsAreComplete;
  for (const std::string& argument : files) {
    const auto [code, path] = splitCode(argument);
    if (path.empty())
      throw InputError(fmt::format("{}: \"{}\" names no file",
                                   kind == DataFileRequest::Kind::Bars ? "--bars" : "--ticks",
                                   argument));
    DataInput input;
    input.kind = kind;
    input.code = !code.empty() ? code
                 : isOnlyOne   ? instrumentText(plan.instruments.front().instrument)
                               : std::string();
    input.description = description;
    input.places = reading_.places();
    DataInput* same = nullptr;
    for (DataInput& other : plan.data)
      if (other.kind == kind && other.code == input.code) same = &other;
    if (same == nullptr) same = &plan.data.emplace_back(std::move(input));
    same->paths.push_back(path);
  }
}

RunPlan RunCommand::makePlan() const {
  RunPlan plan;
  if (!config_.empty()) {
    for (const auto& [given, option] : {std::pair{!strategy_.empty(), "--strategy"},
                                        {!params_.empty(), "--params"},
                                        {!name_.empty(), "--name"},
                                        {!bars_.empty(), "--bars"},
                                        {!ticks_.empty(), "--ticks"},
                                        {!instruments_.empty(), "--instrument"},
                                        {!orderSource_.empty(), "--order-source"},
                                        {isServer_, "--server"},
                                        {!recordFiles_.empty(), "--records"},
                                        {!indexFiles_.empty(), "--indexes"},
                                        {!published_.empty(), "--published"},
                                        {!events_.empty(), "--events"}})
      if (given)
        throw InputError(fmt::format(
            "{} cannot be given together with a configuration; put it into {}", option, config_));
    if (const QJsonObject reading = reading_.description(); !reading.isEmpty())
      throw InputError(
          fmt::format("options on how to read files ({}) cannot be given together with a "
                      "configuration; put them into a \"format\" in {}",
                      reading.keys().join(", ").toStdString(), config_));
    readRunConfig(config_, plan);
  } else {
    if (strategy_.empty())
      throw InputError("what to run? Give --strategy MODULE, or a CONFIG.json (see run --help)");
    RunnerPlan runner;
    runner.strategy = strategy_;
    runner.name = name_;
    runner.orderSource = orderSource_;
    runner.isServer = isServer_;
    if (!params_.empty()) {
      runner.params = jsonObjectArgument(params_, "--params");
      plan.otherFiles.push_back({"--params", params_});
    }
    plan.runners.push_back(std::move(runner));
    for (const std::string& given : instruments_) {
      if (given.ends_with(".json")) {
        const auto list = instrumentsOfFile(given);
        plan.instruments.insert(plan.instruments.end(), list.begin(), list.end());
        plan.instrumentsAreComplete = true;
        plan.otherFiles.push_back({"--instrument", given});
      } else {
        plan.instruments.push_back(instrumentOf(given, "--instrument"));
      }
    }
    addData(plan, bars_, DataFileRequest::Kind::Bars);
    addData(plan, ticks_, DataFileRequest::Kind::Ticks);
    for (const std::string& given : published_) {
      const auto equals = given.find('=');
      PublishedPlan series{"--published " + given, given.substr(0, equals)};
      if (equals != std::string::npos) series.frequency = given.substr(equals + 1);
      plan.published.push_back(std::move(series));
    }
    plan.recordFiles = recordFiles_;
    plan.indexFiles = indexFiles_;
    if (!events_.empty()) {
      plan.events = eventsOfFile(events_);
      plan.eventFiles.push_back(events_);
    }
  }
  checkNotGivenTwice(plan.instruments);
  addOptions(plan);
  if (plan.data.empty())
    throw InputError("there is no market data: give --bars FILE or --ticks FILE");
  completeRunners(plan, config_.empty() ? "--strategy" : config_);
  return plan;
}

void RunCommand::addOptions(RunPlan& plan) const {
  const auto take = [&plan](const std::string& given, std::string& target, const char* field,
                            const char* option) {
    if (given.empty()) return;
    target = given;
    plan.places[field] = option;
  };
  take(from_, plan.from, "from", "--from");
  take(to_, plan.to, "to", "--to");
  if (!speed_.empty()) plan.speed = parseSpeed(speed_, "--speed");
  if (isLive_) plan.isLive = true;
  if (threads_ > 0) plan.threads = threads_;
  if (!report_.empty()) plan.reportFolder = report_;
  if (noDigest_) plan.withDigest = false;
  take(capital_, plan.startBalance, "startBalance", "--capital");
  if (!cache_.empty()) plan.cacheFolder = cache_;
  if (!store_.empty()) plan.trade.storePath = store_;
  if (!dictionary_.empty()) plan.dictionaryFile = dictionary_;
  TradeOptions& trade = plan.trade;
  take(feePerLot_, trade.feePerLot, "feePerLot", "--fee-per-lot");
  take(feeRate_, trade.feeRate, "feeRate", "--fee-rate");
  take(marginRate_, trade.marginRate, "marginRate", "--margin-rate");
  take(slippage_, trade.slippage, "slippage", "--slippage");
  if (slippageTicks_ > 0) {
    trade.slippageTicks = slippageTicks_;
    plan.places["slippageTicks"] = "--slippage-ticks";
  }
  if (entryLatencyMs_ > 0) trade.entryLatencyMs = entryLatencyMs_;
  if (reportLatencyMs_ > 0) trade.reportLatencyMs = reportLatencyMs_;
}

void RunCommand::checkFiles(const RunPlan& plan) const {
  const auto role = [this](const std::string& key, bool isOption) {
    return isOption ? "--" + key : config_ + ": " + key;
  };
  std::vector<FileRole> written = {{"--log", log_.file},
                                   {role("store", !store_.empty()), plan.trade.storePath},
                                   {role("dictionary", !dictionary_.empty()), plan.dictionaryFile}};
  // The files that a database keeps beside its own while it is open.
  for (const std::size_t at : {1U, 2U})
    if (const FileRole database = written[at]; !database.path.empty())
      for (const char* ending : {"-wal", "-shm", "-journal"})
        written.push_back({database.role + "'s " + ending, database.path + ending});
  if (!plan.reportFolder.empty())
    for (const char* name : kReportFiles)
      written.push_back(
          {role("report", !report_.empty()) + "'s " + name, plan.reportFolder + "/" + name});
  std::vector<FileRole> read = {{"the configuration", config_}, {"--format", reading_.format()}};
  for (const DataInput& input : plan.data)
    for (const std::string& path : input.paths) read.push_back({"the market data", path});
  for (const std::string& path : plan.recordFiles) read.push_back({"the records", path});
  for (const std::string& path : plan.indexFiles) read.push_back({"the indexes", path});
  for (const std::string& path : plan.eventFiles) read.push_back({"the events", path});
  for (const ReadFile& file : plan.otherFiles) read.push_back({file.role, file.path});
  for (const RunnerPlan& runner : plan.runners) read.push_back({"the strategy", runner.modulePath});
  checkFileRoles(written, read);
  if (!plan.reportFolder.empty()) checkReportFolder(plan.reportFolder);
  checkLogFile(log_);
}

namespace {

std::vector<std::string> dataFilesOf(const RunPlan& plan) {
  std::vector<std::string> result;
  for (const DataInput& input : plan.data)
    result.insert(result.end(), input.paths.begin(), input.paths.end());
  return result;
}

}  // namespace

int RunCommand::execute() {
  refuseEmptyTexts(*command_);
  const RunPlan plan = makePlan();
  checkFiles(plan);
  ProgressLine progress;
  const auto began = std::chrono::steady_clock::now();
  DataSet data = loadDataSet(
      plan, [&](const std::string& path, double share) { progress.showReading(path, share); });
  const double loadSeconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  progress.clear();
  // At once: by the end of the run somebody may have changed them.
  std::vector<FileHash> hashes;
  if (!plan.reportFolder.empty()) hashes = hashesOf(dataFilesOf(plan));

  InterruptWatcher interrupts;
  std::shared_ptr<const LineAppender> log;
  RunOutcome outcome = runSession(plan, std::move(data), interrupts, progress, [&] {
    // The log of an earlier run stays as it is when this one is refused.
    if (!plan.reportFolder.empty()) makeReportFolder(plan.reportFolder);
    log = setUpLog(log_);
  });
  outcome.loadSeconds = loadSeconds;
  outcome.files = std::move(hashes);
  if (std::string lost = log->failure(); !lost.empty()) outcome.failures.push_back(lost);
  // Before anything is shown: who reads the summary may go away in its midst.
  if (!plan.reportFolder.empty()) writeReport(plan.reportFolder, outcome);
  tell(outcome);
  return outcome.exitCode();
}

void RunCommand::tell(RunOutcome& outcome) const {
  for (const RunnerOutcome& runner : outcome.runners)
    if (runner.state.status == RunnerError)
      complain(runner.plan.name + ": " + runner.state.message);
  if (!isQuiet_) {
    for (const std::string& note : outcome.notes) remark(note);
    say(summaryText(outcome));
  }
  if (std::string failure = outputFailure(); !failure.empty())
    outcome.failures.push_back(std::move(failure));
  for (const std::string& failure : outcome.failures) complain(failure);
}

}  // namespace orvane
