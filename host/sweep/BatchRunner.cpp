#include "host/sweep/BatchRunner.h"

#include <fmt/core.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "host/TimeArgument.h"
#include "host/TradeConfig.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// A batch keeps no more points of equity curves than that, if all hold something all the time:
/// some 2 GB.
constexpr std::uint64_t kMostPoints = 15'000'000;
/// More at once than these and two for each core only drive one another out of the caches.
constexpr std::size_t kAtOnce = 8;

}  // namespace

BatchRunner::BatchRunner(const SweepPlan& plan, DataSet data, ProgressLine& progress)
    : plan_(plan), data_(std::move(data)), progress_(progress) {}

std::size_t BatchRunner::batchSize() const {
  if (isOneByOne_) return 1;
  if (plan_.batch > 0) return plan_.batch;
  const std::uint64_t records = std::max<std::uint64_t>(data_.records(), 1);
  const auto cores = std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
  const auto most = std::max(kAtOnce, 2 * cores);
  return std::max(cores,
                  static_cast<std::size_t>(std::min<std::uint64_t>(kMostPoints / records, most)));
}

RunPlan BatchRunner::planOf(std::span<const std::uint64_t> numbers,
                            const std::optional<TimeSpan>& span) const {
  RunPlan plan = plan_.run;
  const RunnerPlan base = plan.runners.front();
  plan.runners.clear();
  for (const std::uint64_t number : numbers) {
    RunnerPlan runner = base;
    runner.name = fmt::format("{}-{}", base.name, number + 1);
    runner.params = plan_.space.paramsOf(base.params, number);
    plan.runners.push_back(std::move(runner));
  }
  if (span) {
    plan.from = isoTime(span->begin);
    plan.to = isoTime(span->end);
  }
  plan.trade.accountsShareMarket = false;
  completeTrade(plan, "--strategy");
  return plan;
}

void BatchRunner::check() const {
  checkSession(planOf({plan_.numbers.data(), 1}, std::nullopt), data_.shared());
}

void BatchRunner::trustOrder() {
  for (LoadedBars& loaded : data_.bars) loaded.series.isOrdered = true;
  for (LoadedTicks& loaded : data_.ticks) loaded.series.isOrdered = true;
}

std::vector<RunnerOutcome> BatchRunner::play(std::span<const std::uint64_t> numbers,
                                             const std::optional<TimeSpan>& span,
                                             InterruptWatcher& interrupts) {
  RunOutcome outcome =
      runSession(planOf(numbers, span), data_.shared(), interrupts, progress_, [] {});
  if (!outcome.failures.empty()) throw std::runtime_error(outcome.failures.front());
  // A runner that had an account and no order is judged by the account.
  for (std::size_t i = 0; i < outcome.runners.size(); ++i) {
    RunnerOutcome& runner = outcome.runners[i];
    if (runner.trading) continue;
    SourceResult nothing;
    for (const AccountResult& account : *outcome.accounts)
      if (gbkToUtf8(account.account.account) == runner.plan.account) nothing.curve = account.curve;
    runner.trading = std::make_shared<const SourceResult>(std::move(nothing));
  }
  return std::move(outcome.runners);
}

bool BatchRunner::repeatAlone(std::span<const std::uint64_t> numbers,
                              const std::optional<TimeSpan>& span, InterruptWatcher& interrupts,
                              std::vector<RunnerOutcome>& outcomes) {
  if (numbers.size() == 1) return true;
  const bool isAnyHeard = std::ranges::any_of(outcomes, [](const RunnerOutcome& outcome) {
    return outcome.record != nullptr && outcome.record->hasPublished;
  });
  std::size_t repeated = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!isAnyHeard && !outcomes[i].isOverEarly) continue;
    ++repeated;
    std::vector<RunnerOutcome> alone = play(numbers.subspan(i, 1), span, interrupts);
    if (interrupts.isInterrupted()) return false;
    outcomes[i] = std::move(alone.front());
  }
  if (isAnyHeard || repeated * 2 > numbers.size()) isOneByOne_ = true;
  return true;
}

bool BatchRunner::run(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span,
                      InterruptWatcher& interrupts,
                      const std::function<void(std::uint64_t number, const RunnerOutcome&)>& take) {
  std::vector<RunnerOutcome> outcomes = play(numbers, span, interrupts);
  if (interrupts.isInterrupted() || !repeatAlone(numbers, span, interrupts, outcomes)) return false;
  for (std::size_t i = 0; i < numbers.size(); ++i) take(numbers[i], outcomes[i]);
  return true;
}

Figures figuresOf(const RunnerOutcome& outcome) {
  static const SourceResult kNothing;
  const SourceResult& trading = outcome.trading ? *outcome.trading : kNothing;
  // Alone, a run that is over before anything was played has no curve at all.
  if (outcome.isOverAtStart) return makeFigures(outcome.startBalance, {}, {});
  return makeFigures(outcome.startBalance, trading.curve, trading.fills);
}

}  // namespace orvane
