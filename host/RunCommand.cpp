#include "host/RunCommand.h"

#include <fmt/core.h>

#include <chrono>
#include <optional>

#include "host/ConfigMistakes.h"
#include "host/Console.h"
#include "host/DataSet.h"
#include "host/EventConfig.h"
#include "host/ExitTeller.h"
#include "host/FileHash.h"
#include "host/FileRoles.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/InterruptWatcher.h"
#include "host/LineAppender.h"
#include "host/OptionChecks.h"
#include "host/ProgressLine.h"
#include "host/Report.h"
#include "host/ReportFolder.h"
#include "host/RunConfig.h"
#include "host/RunSession.h"
#include "host/watch/WatchView.h"

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

}  // namespace

RunCommand::RunCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("run", "Play market data through strategies");
  command_->footer(kExamples);
  command_
      ->add_option("config", config_,
                   "Configuration of a run, for several runners at once; see docs/host.md")
      ->type_name("CONFIG.json");

  options_.addTo(*command_);

  const std::string what = "What to run";
  command_->add_option("--name", name_, "Name of the runner (default: the module's)")->group(what);
  command_->add_option("--order-source", orderSource_, "Create source of its orders")->group(what);
  command_
      ->add_flag("--server", isServer_,
                 "Server run: it counts what it does and can attach the accounts of the host")
      ->disable_flag_override()
      ->group(what);

  const std::string data = "Market data";
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
  command_->add_option("--speed", speed_, "Pace, such as 10x (default: as fast as it can)")
      ->type_name("N[x]")
      ->group(how);
  command_->add_flag("--live", isLive_, "Live mode: the system's clock, the feed in real time")
      ->disable_flag_override()
      ->group(how);

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
  command_
      ->add_flag("-w,--watch", isWatched_,
                 "Show the run on the terminal while it goes on: runners, rates, equity, log")
      ->disable_flag_override()
      ->group(out);
  command_->add_flag("-q,--quiet", isQuiet_, "No summary and no notes")
      ->disable_flag_override()
      ->group(out);
}

RunPlan RunCommand::makePlan() const {
  RunPlan plan;
  if (!config_.empty()) {
    refuseWhatIsNoConfig(config_);
    std::vector<std::pair<bool, const char*>> inputs = options_.inputs();
    inputs.insert(inputs.end(), {{!name_.empty(), "--name"},
                                 {!orderSource_.empty(), "--order-source"},
                                 {isServer_, "--server"},
                                 {!recordFiles_.empty(), "--records"},
                                 {!indexFiles_.empty(), "--indexes"},
                                 {!published_.empty(), "--published"},
                                 {!events_.empty(), "--events"}});
    for (const auto& [given, option] : inputs)
      if (given)
        throw InputError(fmt::format(
            "{} cannot be given together with a configuration; put it into {}", option, config_));
    if (const QJsonObject reading = options_.reading().description(); !reading.isEmpty())
      throw InputError(
          fmt::format("options on how to read files ({}) cannot be given together with a "
                      "configuration; put them into a \"format\" in {}",
                      reading.keys().join(", ").toStdString(), config_));
    readRunConfig(config_, plan);
  } else {
    if (options_.strategy().empty())
      throw InputError("what to run? Give --strategy MODULE, or a CONFIG.json (see run --help)");
    RunnerPlan runner = options_.runner(plan);
    runner.name = name_;
    runner.orderSource = orderSource_;
    runner.isServer = isServer_;
    plan.runners.push_back(std::move(runner));
    options_.addInputs(plan);
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
  options_.addSettings(plan);
  if (!speed_.empty()) plan.speed = parseSpeed(speed_, "--speed");
  if (isLive_) plan.isLive = true;
  if (!report_.empty()) plan.reportFolder = report_;
  if (noDigest_) plan.withDigest = false;
  if (!store_.empty()) plan.trade.storePath = store_;
  if (!dictionary_.empty()) plan.dictionaryFile = dictionary_;
}

void RunCommand::checkFiles(const RunPlan& plan) const {
  const auto role = [this](const std::string& key, bool isOption) {
    return isOption ? "--" + key : config_ + ": " + key;
  };
  std::vector<FileRole> written = {{"--log", options_.log().file},
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
  std::vector<FileRole> read = {{"the configuration", config_},
                                {"--format", options_.reading().format()}};
  for (const DataInput& input : plan.data)
    for (const std::string& path : input.paths) read.push_back({"the market data", path});
  for (const std::string& path : plan.recordFiles) read.push_back({"the records", path});
  for (const std::string& path : plan.indexFiles) read.push_back({"the indexes", path});
  for (const std::string& path : plan.eventFiles) read.push_back({"the events", path});
  for (const ReadFile& file : plan.otherFiles) read.push_back({file.role, file.path});
  for (const RunnerPlan& runner : plan.runners) read.push_back({"the strategy", runner.modulePath});
  checkFileRoles(written, read);
  if (!plan.reportFolder.empty()) checkReportFolder(plan.reportFolder);
  checkLogFile(options_.log());
}

int RunCommand::execute() {
  refuseEmptyTexts(*command_);
  if (isWatched_) WatchView::checkTerminal();
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
  if (!plan.reportFolder.empty()) hashes = hashesOf(plan.dataFiles());

  const ExitTeller exits;
  InterruptWatcher interrupts(isWatched_ ? std::initializer_list<int>{WatchView::kHeldSignal}
                                         : std::initializer_list<int>{});
  std::optional<WatchView> view;
  if (isWatched_) view.emplace(interrupts);
  std::shared_ptr<const LineAppender> log;
  std::optional<ReportFolder> folder;
  RunOutcome outcome = runSession(
      plan, std::move(data), interrupts, progress,
      [&] {
        // The log of an earlier run stays as it is when this one is refused.
        if (!plan.reportFolder.empty()) folder.emplace(plan.reportFolder);
        if (view) view->begin();
        log = setUpLog(options_.log(), view ? view->log() : nullptr);
      },
      view ? &*view : nullptr);
  view.reset();
  outcome.loadSeconds = loadSeconds;
  outcome.files = std::move(hashes);
  if (std::string lost = log->failure(); !lost.empty()) outcome.failures.push_back(lost);
  // Before anything is shown: who reads the summary may go away in its midst.
  if (!plan.reportFolder.empty()) writeReport(plan.reportFolder, outcome);
  tell(outcome);
  const int code = outcome.exitCode();
  // The process ends next. What it holds goes at once then, not record by record.
  [[maybe_unused]] static const RunOutcome* const kept = new RunOutcome(std::move(outcome));
  return code;
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
  if (outcome.isInterrupted && !outcome.reportFolder.empty())
    complain("interrupted: the report so far is in " + outcome.reportFolder);
}

}  // namespace orvane
