#include "host/sweep/SweepCommand.h"

#include <fmt/core.h>

#include <filesystem>

#include "host/Console.h"
#include "host/FileRoles.h"
#include "host/InputError.h"
#include "host/LineAppender.h"
#include "host/OptionChecks.h"
#include "host/WholeFile.h"
#include "host/sweep/SweepPage.h"
#include "host/sweep/SweepTable.h"

namespace orvane {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  orvane sweep -s sma_cross -b IF=if_1min.csv --grid fast=5:50:5 --grid slow=20:200:10 \\\n"
    "      --where 'fast<slow' --out sweep\n"
    "  orvane sweep -s sma_cross -b IF=if_1min.csv --grid fast=2:100:1 --grid slow=5:500:5 \\\n"
    "      --sample sobol --count 200 --rank sharpe --walk-forward 90d:30d --out walk\n"
    "\n"
    "Exit codes: 0 every run ended as Stopped or Finished; 1 a run ended as an error;\n"
    "2 the input was wrong and nothing ran; 130 interrupted: the same command goes on.";

constexpr const char* kDatabase = "results.db";
constexpr const char* kOutFiles[] = {kDatabase,        "results.db-wal",
                                     "results.db-shm", "results.db-journal",
                                     "results.csv",    "sweep.html"};

std::string plural(std::size_t count, const char* noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string headText(const SweepPlan& plan, const SweepOutcome& outcome) {
  std::string text = fmt::format("sweep of {} of {}", plural(plan.numbers.size(), "combination"),
                                 plan.run.runners.front().name);
  if (plan.numbers.size() < plan.space.size())
    text += fmt::format(" (the grid has {})", plan.space.size());
  if (!plan.windows.empty()) text += ", " + plural(plan.windows.size(), "window");
  if (outcome.earlier > 0)
    text += fmt::format("; {} were done before", plural(outcome.earlier, "run"));
  return text + "\n";
}

}  // namespace

SweepCommand::SweepCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("sweep", "Try many combinations of a strategy's parameters");
  command_->footer(kExamples);
  options_.addTo(*command_);
}

void SweepCommand::checkFiles(const SweepPlan& plan) const {
  std::vector<FileRole> written = {{"--log", options_.run().log().file}};
  if (!options_.out().empty())
    for (const char* name : kOutFiles)
      written.push_back({fmt::format("--out's {}", name), options_.out() + "/" + name});
  std::vector<FileRole> read = {{"--format", options_.run().reading().format()},
                                {"the strategy", plan.run.runners.front().modulePath}};
  for (const std::string& path : plan.run.dataFiles()) read.push_back({"the market data", path});
  for (const ReadFile& file : plan.run.otherFiles) read.push_back({file.role, file.path});
  checkFileRoles(written, read);
  if (!options_.out().empty()) checkFolder(options_.out(), "--out");
  checkLogFile(options_.run().log());
}

int SweepCommand::execute() {
  refuseEmptyTexts(*command_);
  SweepPlan plan = options_.plan();
  checkFiles(plan);
  SweepProgress progress;
  DataSet data = loadDataSet(
      plan.run, [&](const std::string& path, double share) { progress.showReading(path, share); });
  progress.clear();
  // At once: by the end of the sweep somebody may have changed them.
  QJsonObject identity;
  if (!options_.out().empty()) identity = options_.identity(*command_, plan);
  options_.addWindows(plan, data);

  InterruptWatcher interrupts;
  BatchRunner runner(plan, std::move(data), interrupts, progress);
  runner.check();
  std::unique_ptr<SweepStore> store;
  if (!options_.out().empty()) {
    makeFolder(options_.out(), "--out");
    store = std::make_unique<SweepStore>(options_.out() + "/" + kDatabase, identity, "--out");
  }
  const std::shared_ptr<const LineAppender> log = setUpLog(options_.run().log());
  const SweepOutcome outcome = Sweep(plan, runner, store.get(), progress).run();
  std::vector<std::string> failures;
  if (!options_.out().empty()) failures = write(plan, outcome, runner.data());
  if (!outcome.failure.empty()) failures.push_back(outcome.failure);
  if (std::string lost = log->failure(); !lost.empty()) failures.push_back(std::move(lost));
  return tell(plan, outcome, std::move(failures));
}

std::vector<std::string> SweepCommand::write(const SweepPlan& plan, const SweepOutcome& outcome,
                                             const DataSet& data) const {
  std::vector<std::string> failures;
  const auto add = [&](const char* name, const QByteArray& text) {
    std::string failure = writeWholeFile(options_.out() + "/" + name, text);
    if (!failure.empty()) failures.push_back(std::move(failure));
  };
  add("results.csv", QByteArray::fromStdString(sweepCsv(plan, outcome)));
  add("sweep.html", sweepPage(plan, outcome, data));
  return failures;
}

int SweepCommand::tell(const SweepPlan& plan, const SweepOutcome& outcome,
                       std::vector<std::string> failures) const {
  if (!options_.isQuiet())
    say(headText(plan, outcome) + "\n" + sweepText(plan, outcome, options_.top()));
  if (std::string failure = outputFailure(); !failure.empty())
    failures.push_back(std::move(failure));
  for (const SweepRow& row : outcome.rows) {
    if (row.isGood()) continue;
    complain(fmt::format("{} ended as an error, the first: number {}: {}",
                         plural(outcome.errors(), "run"), row.key.number + 1, row.message));
    break;
  }
  for (const std::string& failure : failures) complain(failure);
  if (outcome.isInterrupted || !outcome.failure.empty()) {
    const std::string kept =
        options_.out().empty()
            ? std::string("nothing is kept without --out")
            : fmt::format("they are kept in {}/{}; the same command goes on from there",
                          options_.out(), kDatabase);
    complain(fmt::format("{}: {} of {} done; {}",
                         outcome.isInterrupted ? "interrupted" : "ended early", outcome.rows.size(),
                         plural(outcome.expected, "run"), kept));
  }
  if (outcome.isInterrupted) return kExitInterrupted;
  return failures.empty() ? outcome.exitCode() : static_cast<int>(kExitRunFailed);
}

}  // namespace orvane
