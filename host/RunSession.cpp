#include "host/RunSession.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerGlobal.h"
#include "host/FreshFiles.h"
#include "host/InputError.h"
#include "host/JsonInput.h"
#include "host/PlatformSetup.h"
#include "host/RunNotes.h"
#include "host/RunnerBoard.h"
#include "host/StopTeller.h"
#include "host/StrategyTap.h"
#include "host/watch/GlanceTaker.h"
#include "platform/EmbeddedPlatform.h"
#include "platform/fields/CapitalView.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITradeService.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// Installs a platform for its own lifetime.
class Installed {
 public:
  explicit Installed(EmbeddedPlatform& platform) { installPlatform(&platform); }
  ~Installed() { installPlatform(nullptr); }
  Installed(const Installed&) = delete;
  Installed& operator=(const Installed&) = delete;
};

/// The value of the parameter "data" that `subscribeAll` of the strategy kit reads.
QJsonArray dataParameter(const std::vector<SeriesSummary>& data) {
  QJsonArray result;
  for (const SeriesSummary& series : data) {
    QJsonObject entry{{"code", QString::fromStdString(series.code)},
                      {"kind", series.isTicks ? "ticks" : "bars"}};
    if (!series.isTicks) entry["frequency"] = QString::fromStdString(series.frequency);
    result.append(entry);
  }
  return result;
}

/// The parameters that a runner starts with. Codes that the user named must be there.
QJsonObject startParameters(const EmbeddedPlatform& platform, const RunnerPlan& plan,
                            const QJsonArray& data) {
  QJsonObject result = plan.params;
  if (!result.contains("data")) {
    result["data"] = data;
    return result;
  }
  const std::string place = fmt::format("params of \"{}\": data", plan.name);
  if (!result["data"].isArray())
    throw InputError(
        fmt::format("{}: must be an array of series, not {}", place, jsonText(result["data"])));
  const QJsonArray list = result["data"].toArray();
  for (qsizetype i = 0; i < list.size(); ++i) {
    JsonReader entry(list[i], fmt::format("{}[{}]", place, i));
    const std::string code = entry.requiredText("code");
    ICodeID found;
    if (!platform.findCode(utf8ToGbk(code), found))
      throw InputError(
          fmt::format("{}: unknown code \"{}\": neither the data nor the instruments "
                      "have it",
                      entry.place("code"), code));
  }
  return result;
}

/// What each runner did on its account, by its order source.
void addTrading(const RunPlan& plan, RunOutcome& outcome) {
  for (std::size_t i = 0; i < outcome.runners.size(); ++i) {
    RunnerOutcome& runner = outcome.runners[i];
    for (const AccountResult& account : *outcome.accounts) {
      if (gbkToUtf8(account.account.account) != plan.runners[i].account) continue;
      runner.startBalance = CapitalView(account.capital).startBalance();
      for (const SourceResult& source : account.sources)
        if (gbkToUtf8(source.source) == plan.runners[i].orderSource)
          runner.trading = {outcome.accounts, &source};
    }
  }
}

/// Server runs find the accounts of the run in the library's store: each under its own counter
/// type, and under 0 for those who name none.
void offerAccounts(EmbeddedPlatform& platform) {
  std::list<AccountRecord> records;
  for (const AccountLinks& links : platform.router()->tradeService()->accountRecords({}, 0)) {
    AccountRecord record;
    record.id = links.id;
    record.tradingAccounts = links.tradingAccounts;
    records.push_back(record);
    record.id.counterType = 0;
    records.push_back(std::move(record));
  }
  IRunnerGlobal::instance()->setAccounts(records);
}

/// What the report's charts need; a run without one keeps nothing.
CandleKeeping candlesFor(const RunPlan& plan, const RunOutcome& outcome) {
  if (plan.reportFolder.empty()) return {};
  // So that memory and the page keep a bound when many runners receive many series.
  constexpr std::size_t kMostOfAll = 400'000, kMostOfOne = 20'000, kLeastOfOne = 500;
  const std::size_t series = std::max<std::size_t>(plan.runners.size() * outcome.data.size(), 1);
  return {std::clamp(kMostOfAll / series, kLeastOfOne, kMostOfOne),
          std::make_shared<const ZoneOffsets>(outcome.timeZone)};
}

/// One runner with the ear that the host lends it.
struct LiveRunner {
  std::string name;  ///< GBK.
  std::shared_ptr<IRunner> runner;
  std::shared_ptr<RunnerWatch> watch;
  bool isOverAtStart = false, isOverEarly = false;
};

double secondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

std::uint64_t RunOutcome::events() const {
  std::uint64_t sum = 0;
  for (const RunnerOutcome& runner : runners) sum += runner.record ? runner.record->events() : 0;
  return sum;
}

std::uint64_t RunOutcome::records() const {
  std::uint64_t sum = 0;
  for (const RunnerOutcome& runner : runners)
    sum += runner.record ? runner.record->bars + runner.record->ticks : 0;
  return sum;
}

int RunOutcome::exitCode() const {
  if (isInterrupted) return kExitInterrupted;
  if (!failures.empty()) return kExitRunFailed;
  const bool isGood = std::ranges::all_of(runners, [](const RunnerOutcome& runner) {
    return runner.state.status == RunnerStopped || runner.state.status == RunnerFinished;
  });
  return isGood ? kExitSuccess : kExitRunFailed;
}

namespace {

/// What is known of a run before it begins.
RunOutcome outcomeOf(const RunPlan& plan, const PlatformOptions& options, const DataSet& data) {
  RunOutcome outcome;
  outcome.isLive = plan.isLive;
  outcome.from = options.from;
  outcome.to = options.to;
  outcome.timeZone = options.timeZone;
  outcome.reportFolder = plan.reportFolder;
  outcome.threads = plan.threads;
  outcome.speed = plan.speed;
  outcome.data = data.summaries();
  for (SeriesSummary& series : outcome.data)
    if (plan.trade.slippageTicks > 0 && !hasPriceTick(plan, series.code))
      series.notes.emplace_back("no price tick is known, so there is no slippage in ticks here");
  return outcome;
}

/// The parameters that each runner starts with.
std::vector<QJsonObject> parametersOf(const RunPlan& plan, const EmbeddedPlatform& platform,
                                      const std::vector<SeriesSummary>& data) {
  std::vector<QJsonObject> result;
  const QJsonArray offered = dataParameter(data);
  for (const RunnerPlan& runner : plan.runners) {
    result.push_back(startParameters(platform, runner, offered));
    result.back()["account"] = QString::fromStdString(runner.account);
  }
  return result;
}

/// Makes and starts a runner; `onOver` is called when its run has ended.
LiveRunner startRunner(const RunnerPlan& plan, const QJsonObject& parameters, RunnerBoard& board,
                       std::function<void()> onOver) {
  constexpr int kServerMode = 1;
  LiveRunner live;
  live.name = utf8ToGbk(plan.name);
  live.watch = std::make_shared<RunnerWatch>(std::move(onOver));
  board.add(plan.name, live.watch);
  live.runner =
      IRunnerFactory::instance()->createRunner(live.name, plan.isServer ? kServerMode : 0);
  live.runner->setStrategyPath(utf8ToGbk(plan.modulePath));
  live.runner->setOrderSource(utf8ToGbk(plan.orderSource));
  live.runner->setSpi(live.watch);
  live.runner->start(parameters);
  return live;
}

/// Ends a runner that was stopped, and tells what became of it.
RunnerOutcome endRunner(LiveRunner& live, const RunnerPlan& plan, const QJsonObject& parameters,
                        const RunRecords& records) {
  RunnerOutcome its;
  its.plan = plan;
  its.plan.params = parameters;
  its.state = live.watch->state();
  its.isOverAtStart = live.isOverAtStart;
  its.isOverEarly = live.isOverEarly;
  its.record = records.find(live.name);
  if (const auto record = records.find(live.name); record && record->digest)
    its.digest = record->digest->text();
  IRunnerFactory::instance()->destroyRunner(live.name);
  live.runner.reset();
  return its;
}

/// What could not be written in `work` is a failure of the run, told once, and no end of it.
template <typename Work>
void keepFailure(RunOutcome& outcome, Work work) {
  try {
    work();
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    if (std::ranges::find(outcome.failures, text) == outcome.failures.end())
      outcome.failures.push_back(text);
  }
}

/// What shows how a run goes on: the view, or else a line on a terminal.
class Show {
 public:
  Show(ProgressLine& line, WatchView* view, const GlanceTaker::Parts& parts)
      : line_(line), isLive_(parts.plan.isLive), interrupts_(parts.interrupts) {
    if (view != nullptr) glances_.emplace(*view, parts);
  }

  void note(const PlaybackProgress& now) {
    if (glances_)
      glances_->note(now);
    else if (interrupts_.isInterrupted())
      line_.clear();  // Lines that tell of the stop come now.
    else
      line_.showRun(now, isLive_);
  }
  void noteEnd() {
    if (glances_) glances_->noteEnd();
    line_.clear();
  }

 private:
  ProgressLine& line_;
  const bool isLive_;
  const InterruptWatcher& interrupts_;
  std::optional<GlanceTaker> glances_;
};

/// Plays the data.
void play(EmbeddedPlatform& platform, InterruptWatcher& interrupts, Show& show,
          RunOutcome& outcome) {
  keepFailure(outcome, [&] {
    platform.run([&](const PlaybackProgress& now) {
      show.note(now);
      if (interrupts.isInterrupted()) platform.cancel();
    });
  });
}

}  // namespace

void checkSession(const RunPlan& plan, DataSet data) {
  const PlatformOptions options = platformOptions(plan, data);
  const std::vector<SeriesSummary> summaries = data.summaries();
  parametersOf(plan, *makePlatform(plan, options, std::move(data)), summaries);
}

RunOutcome runSession(const RunPlan& plan, DataSet data, InterruptWatcher& interrupts,
                      ProgressLine& progress, const std::function<void()>& whenAccepted,
                      WatchView* view) {
  const PlatformOptions options = platformOptions(plan, data);
  RunOutcome outcome = outcomeOf(plan, options, data);
  RunRecords records(plan.withDigest, candlesFor(plan, outcome));
  StrategyTap tap(records);
  FreshFiles fresh({options.trade.storePath, options.dictionary.file});
  outcome.notes = notesOnRange(plan, options, data);
  std::ranges::move(notesOnTrade(plan), std::back_inserter(outcome.notes));
  const auto made = makePlatform(plan, options, std::move(data));
  EmbeddedPlatform& platform = *made;
  std::ranges::move(notesOnDictionary(plan, platform), std::back_inserter(outcome.notes));
  const std::vector<QJsonObject> parameters = parametersOf(plan, platform, outcome.data);
  platform.setSymbolHook(
      [&tap](const std::string& symbol, void* address) { return tap.hook(symbol, address); });

  whenAccepted();
  fresh.keep();
  const Installed installed(platform);
  offerAccounts(platform);
  RunnerBoard board(records);
  std::optional<StopTeller> teller(std::in_place, interrupts, board);
  Show show(progress, view, {plan, platform, board, interrupts, options.timeZone});
  interrupts.setHandler([&platform] { platform.cancel(); });
  const auto began = std::chrono::steady_clock::now();

  // Once no runner is left, the rest of the data is of no use.
  std::atomic<std::size_t> left = plan.runners.size();
  std::vector<LiveRunner> runners;
  for (std::size_t i = 0; i < plan.runners.size(); ++i)
    runners.push_back(startRunner(plan.runners[i], parameters[i], board, [&left, &platform] {
      if (--left == 0) platform.cancel();
    }));
  platform.drain();
  for (LiveRunner& live : runners) live.isOverAtStart = live.watch->state().isOver();
  if (left != 0 && !interrupts.isInterrupted()) play(platform, interrupts, show, outcome);
  outcome.elapsedSeconds = secondsSince(began);
  show.noteEnd();
  interrupts.setHandler({});

  for (LiveRunner& live : runners)
    live.isOverEarly = !live.isOverAtStart && live.watch->state().isOver();
  for (LiveRunner& live : runners) live.runner->stop();
  platform.drain();
  for (std::size_t i = 0; i < runners.size(); ++i)
    outcome.runners.push_back(endRunner(runners[i], plan.runners[i], parameters[i], records));
  platform.drain();
  // What runners did before and after the data, also where nothing was played at all.
  keepFailure(outcome, [&platform] { platform.checkWritten(); });
  if (std::string lost = EmbeddedPlatform::takeLostCalls(); !lost.empty())
    outcome.failures.push_back(std::move(lost));
  teller.reset();  // What is told from now on would not be true of the report.
  outcome.isInterrupted = interrupts.isInterrupted();
  outcome.accounts =
      std::make_shared<const std::vector<AccountResult>>(platform.takeTradeResults());
  addTrading(plan, outcome);
  std::ranges::move(notesOnRunners(outcome), std::back_inserter(outcome.notes));
  return outcome;
}

}  // namespace orvane
