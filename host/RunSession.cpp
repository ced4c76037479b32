#include "host/RunSession.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/JsonInput.h"
#include "host/StrategyTap.h"
#include "host/TimeArgument.h"
#include "host/TradeConfig.h"
#include "platform/EmbeddedPlatform.h"
#include "platform/fields/CapitalView.h"
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

PlatformOptions platformOptions(const RunPlan& plan, const DataSet& data) {
  PlatformOptions options;
  options.mode = plan.isLive ? PlatformOptions::Mode::Live : PlatformOptions::Mode::Playback;
  options.poolThreads = plan.threads;
  options.timeZone = plan.timeZone.empty() ? data.timeZone() : plan.timeZone;
  options.speed = plan.speed;
  if (!plan.from.empty()) options.from = parseTimeArgument(plan.from, options.timeZone, "--from");
  if (!plan.to.empty()) options.to = parseTimeArgument(plan.to, options.timeZone, "--to");
  if (options.from != kUnsetTime && options.to != kUnsetTime && options.from >= options.to)
    throw InputError(
        fmt::format("--from: \"{}\" does not lie before --to \"{}\"", plan.from, plan.to));
  options.trade = tradeOptions(plan, options.timeZone);
  return options;
}

void addInstruments(EmbeddedPlatform& platform, const RunPlan& plan) {
  for (const InstrumentInput& input : plan.instruments) {
    try {
      platform.addInstrument(input.instrument);
    } catch (const std::invalid_argument& error) {
      throw InputError(fmt::format("{}: {}", input.origin, error.what()));
    }
  }
}

/// The code of a series: a known instrument, or a new one of which nothing else is known.
ICodeID codeOf(EmbeddedPlatform& platform, const RunPlan& plan, const std::string& codeText,
               const std::string& timeZone, const std::string& origin) {
  ICodeID code;
  if (platform.findCode(utf8ToGbk(codeText), code)) return code;
  Instrument instrument;
  setCodeText(instrument, codeText);
  if (platform.findCode(instrument.code, code)) return code;
  if (plan.instrumentsAreComplete)
    throw InputError(fmt::format("{}: unknown code \"{}\": the instruments file does not have it",
                                 origin, codeText));
  instrument.timeZone = timeZone;
  try {
    return platform.addInstrument(instrument);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("{}: {}", origin, error.what()));
  }
}

void addSeries(EmbeddedPlatform& platform, const RunPlan& plan, DataSet data) {
  try {
    for (LoadedBars& loaded : data.bars) {
      auto& series = loaded.series;
      series.code = codeOf(platform, plan, loaded.code, series.timeZone, series.origin);
      platform.addBars(std::move(series));
    }
    for (LoadedTicks& loaded : data.ticks) {
      auto& series = loaded.series;
      series.code = codeOf(platform, plan, loaded.code, series.timeZone, series.origin);
      platform.addTicks(std::move(series));
    }
  } catch (const std::invalid_argument& error) {
    throw InputError(error.what());
  }
}

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
    for (const AccountResult& account : outcome.accounts) {
      if (gbkToUtf8(account.account.account) != plan.runners[i].account) continue;
      runner.startBalance = CapitalView(account.capital).startBalance();
      for (const SourceResult& source : account.sources)
        if (gbkToUtf8(source.source) == plan.runners[i].orderSource) runner.trading = source;
    }
  }
}

/// A platform whose options may be wrong.
std::unique_ptr<EmbeddedPlatform> makePlatform(const PlatformOptions& options) {
  try {
    return std::make_unique<EmbeddedPlatform>(options);
  } catch (const std::invalid_argument& error) {
    throw InputError(error.what());
  } catch (const std::runtime_error& error) {
    throw InputError(error.what());
  }
}

/// One runner with the ear that the host lends it.
struct LiveRunner {
  std::string name;  ///< GBK.
  std::shared_ptr<IRunner> runner;
  std::shared_ptr<RunnerWatch> watch;
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
  const bool isGood = std::ranges::all_of(runners, [](const RunnerOutcome& runner) {
    return runner.state.status == RunnerStopped || runner.state.status == RunnerFinished;
  });
  return isGood ? kExitSuccess : kExitRunFailed;
}

RunOutcome runSession(const RunPlan& plan, DataSet data, InterruptWatcher& interrupts,
                      ProgressLine& progress, const std::function<void()>& whenAccepted) {
  const PlatformOptions options = platformOptions(plan, data);
  RunOutcome outcome;
  outcome.isLive = plan.isLive;
  outcome.from = options.from;
  outcome.to = options.to;
  outcome.timeZone = options.timeZone;
  outcome.threads = plan.threads;
  outcome.speed = plan.speed;
  outcome.data = data.summaries();

  RunRecords records(plan.withDigest);
  StrategyTap tap(records);
  const auto made = makePlatform(options);
  EmbeddedPlatform& platform = *made;
  addInstruments(platform, plan);
  addSeries(platform, plan, std::move(data));
  std::vector<QJsonObject> parameters;
  const QJsonArray offered = dataParameter(outcome.data);
  for (const RunnerPlan& runner : plan.runners)
    parameters.push_back(startParameters(platform, runner, offered));
  for (std::size_t i = 0; i < parameters.size(); ++i)
    parameters[i]["account"] = QString::fromStdString(plan.runners[i].account);
  platform.setSymbolHook(
      [&tap](const std::string& symbol, void* address) { return tap.hook(symbol, address); });

  whenAccepted();
  const Installed installed(platform);
  interrupts.setHandler([&platform] { platform.cancel(); });
  const auto began = std::chrono::steady_clock::now();

  // Once no runner is left, the rest of the data is of no use.
  std::atomic<std::size_t> left = plan.runners.size();
  std::vector<LiveRunner> runners;
  for (std::size_t i = 0; i < plan.runners.size(); ++i) {
    const RunnerPlan& its = plan.runners[i];
    LiveRunner live;
    live.name = utf8ToGbk(its.name);
    live.watch = std::make_shared<RunnerWatch>([&left, &platform] {
      if (--left == 0) platform.cancel();
    });
    live.runner = IRunnerFactory::instance()->createRunner(live.name, 0);
    live.runner->setStrategyPath(utf8ToGbk(its.modulePath));
    live.runner->setOrderSource(utf8ToGbk(its.orderSource));
    live.runner->setSpi(live.watch);
    live.runner->start(parameters[i]);
    runners.push_back(std::move(live));
  }
  platform.drain();
  if (left != 0 && !interrupts.isInterrupted()) {
    platform.run([&](const PlaybackProgress& now) {
      progress.showRun(now, plan.isLive);
      if (interrupts.isInterrupted()) platform.cancel();
    });
  }
  outcome.elapsedSeconds = secondsSince(began);
  progress.clear();
  interrupts.setHandler({});

  for (LiveRunner& live : runners) live.runner->stop();
  platform.drain();
  for (std::size_t i = 0; i < runners.size(); ++i) {
    LiveRunner& live = runners[i];
    RunnerOutcome its;
    its.plan = plan.runners[i];
    its.plan.params = parameters[i];
    its.state = live.watch->state();
    const auto record = records.find(live.name);
    if (record && record->digest) its.digest = record->digest->text();
    its.record = record;
    IRunnerFactory::instance()->destroyRunner(live.name);
    live.runner.reset();
    outcome.runners.push_back(std::move(its));
  }
  platform.drain();
  outcome.isInterrupted = interrupts.isInterrupted();
  outcome.accounts = platform.tradeResults();
  addTrading(plan, outcome);
  return outcome;
}

}  // namespace orvane
