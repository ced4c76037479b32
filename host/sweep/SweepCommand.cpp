#include "host/sweep/SweepCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "host/Console.h"
#include "host/FileRoles.h"
#include "host/FreshFiles.h"
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
    "Exit codes: 0 every run ended as Stopped or Finished; 1 a run ended as an error or crashed,\n"
    "which harms no other; 2 the input was wrong and nothing ran; 130 interrupted: the same "
    "command\n"
    "goes on with what is missing.";

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
    text += fmt::format("; {} {} done before", plural(outcome.earlier, "run"),
                        outcome.earlier == 1 ? "was" : "were");
  return text + "\n";
}

std::string paramsText(const SweepPlan& plan, std::uint64_t number) {
  std::string text;
  const std::vector<std::string> values = plan.space.textsOf(number);
  for (std::size_t i = 0; i < values.size(); ++i)
    text += fmt::format("{}{}={}", i == 0 ? "" : ", ", plan.space.ranges()[i].name(), values[i]);
  return text;
}

/// Tells how many runs of a kind there are, with the first of them.
void complainOf(const SweepPlan& plan, const SweepOutcome& outcome, const char* what,
                const std::function<bool(const SweepRow&)>& isOne) {
  const auto count = static_cast<std::size_t>(std::ranges::count_if(outcome.rows, isOne));
  if (count == 0) return;
  const SweepRow& row = *std::ranges::find_if(outcome.rows, isOne);
  complain(fmt::format("{} {}, the first: number {} ({}): {}", plural(count, "run"), what,
                       row.key.number + 1, paramsText(plan, row.key.number), row.message));
}

void complainOfErrors(const SweepPlan& plan, const SweepOutcome& outcome) {
  complainOf(plan, outcome, "ended as an error",
             [](const SweepRow& row) { return !row.isGood() && !row.isCrashed(); });
  complainOf(plan, outcome, "crashed", &SweepRow::isCrashed);
}

/// Nothing of such a sweep is of use, and the same command would find it done.
void refuseWhatIsRefused(const SweepPlan& plan, const SweepOutcome& outcome) {
  if (outcome.refusal.empty()) return;
  const std::size_t tried = outcome.rows.size(), all = plan.numbers.size();
  const std::string which =
      tried == all ? fmt::format("all of {}", plural(all, "combination"))
                   : fmt::format("all {} of {} that were tried", tried, plural(all, "combination"));
  const char* const advice =
      tried == all ? "" : "; if some are right, leave the others out by --where";
  throw InputError(fmt::format(
      "the strategy refuses {} before anything is played, such as {}: {}; nothing is kept{}", which,
      paramsText(plan, outcome.rows.front().key.number), outcome.refusal, advice));
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

  BatchRunner runner(plan, std::move(data), progress);
  std::vector<std::string> failures;
  const SweepOutcome outcome = sweep(plan, runner, identity, progress, failures);
  if (!options_.out().empty()) write(plan, outcome, runner.data(), failures);
  return tell(plan, outcome, std::move(failures));
}

SweepOutcome SweepCommand::sweep(const SweepPlan& plan, BatchRunner& runner,
                                 const QJsonObject& identity, SweepProgress& progress,
                                 std::vector<std::string>& failures) const {
  BatchWorker worker(runner);
  worker.check();
  const std::string database = options_.out().empty() ? "" : options_.out() + "/" + kDatabase;
  FreshFiles fresh({database}, options_.out());
  std::unique_ptr<SweepStore> store;
  if (!database.empty()) {
    makeFolder(options_.out(), "--out");
    store = std::make_unique<SweepStore>(database, identity, "--out");
  }
  const std::shared_ptr<LineAppender> log = setUpLog(options_.run().log());
  worker.setOpen(store.get(), log);
  // From here on there may be results of hours: whatever happens, they stay.
  fresh.keep();
  SweepOutcome outcome = Sweep(plan, worker, store.get(), progress).run();
  if (!outcome.refusal.empty()) fresh.takeAway();
  refuseWhatIsRefused(plan, outcome);
  for (const std::string& failure : {outcome.failure, log->failure(), worker.outputFailure()})
    if (!failure.empty()) failures.push_back(failure);
  return outcome;
}

void SweepCommand::write(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data,
                         std::vector<std::string>& failures) const {
  const auto add = [&](const char* name, const QByteArray& text) {
    std::string failure = writeWholeFile(options_.out() + "/" + name, text);
    if (!failure.empty()) failures.push_back(std::move(failure));
  };
  add("results.csv", QByteArray::fromStdString(sweepCsv(plan, outcome)));
  add("sweep.html", sweepPage(plan, outcome, data));
}

int SweepCommand::tell(const SweepPlan& plan, const SweepOutcome& outcome,
                       std::vector<std::string> failures) const {
  if (!options_.isQuiet())
    say(headText(plan, outcome) + "\n" +
        sweepText(plan, outcome, options_.top(), !options_.out().empty()));
  if (std::string failure = outputFailure(); !failure.empty())
    failures.push_back(std::move(failure));
  complainOfErrors(plan, outcome);
  if (outcome.exitCode() != kExitInterrupted && outcome.failure.empty())
    for (const std::string& name : unusedParameters(plan, outcome))
      complain(
          fmt::format("--grid {}: all its values gave the same figures; does the strategy read "
                      "a parameter of this name?",
                      name));
  for (const std::string& failure : failures) complain(failure);
  if (outcome.isInterrupted || !outcome.failure.empty()) {
    std::string kept = "the same command begins anew";
    if (!outcome.rows.empty())
      kept = options_.out().empty()
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
