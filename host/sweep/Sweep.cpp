#include "host/sweep/Sweep.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <utility>

#include "host/InputError.h"

namespace orvane {
namespace {

bool isRanked(const SweepRow& row, std::size_t figure) {
  return row.isGood() && row.figures[figure].has_value();
}

/// Whether one row stands before another of its window and sample.
bool standsBefore(const SweepRow& one, const SweepRow& other, std::size_t figure) {
  const bool isOne = isRanked(one, figure), isOther = isRanked(other, figure);
  if (isOne != isOther) return isOne;
  if (isOne && ranksBefore(figure, one.figures[figure], other.figures[figure])) return true;
  if (isOne && ranksBefore(figure, other.figures[figure], one.figures[figure])) return false;
  return one.key.number < other.key.number;
}

}  // namespace

std::size_t SweepOutcome::errors() const {
  return static_cast<std::size_t>(
      std::ranges::count_if(rows, [](const SweepRow& row) { return !row.isGood(); }));
}

std::size_t SweepOutcome::crashes() const {
  return static_cast<std::size_t>(std::ranges::count_if(rows, &SweepRow::isCrashed));
}

int SweepOutcome::exitCode() const {
  if (isInterrupted) return kExitInterrupted;
  return failure.empty() && errors() == 0 ? kExitSuccess : kExitRunFailed;
}

SweepRanking rankingOf(const std::vector<SweepRow>& rows, std::int32_t window, SweepSample sample,
                       std::size_t figure) {
  SweepRanking ranking;
  const auto first =
      std::ranges::lower_bound(rows, SweepKey{window, sample, 0}, {}, &SweepRow::key);
  for (auto at = first; at != rows.end(); ++at) {
    if (at->key.window != window || at->key.sample != sample) break;
    ranking.rows.push_back(&*at);
    if (isRanked(*at, figure)) ++ranking.ranked;
  }
  std::ranges::sort(ranking.rows, [figure](const SweepRow* one, const SweepRow* other) {
    return standsBefore(*one, *other, figure);
  });
  return ranking;
}

Sweep::Sweep(const SweepPlan& plan, BatchWorker& worker, SweepStore* store, SweepProgress& progress)
    : plan_(plan), worker_(worker), store_(store), progress_(progress) {}

SweepOutcome Sweep::run() {
  const std::size_t windows = plan_.windows.size();
  outcome_.expected = windows == 0 ? plan_.numbers.size() : windows * (plan_.numbers.size() + 1);
  try {
    if (store_ != nullptr)
      for (SweepRow& row : store_->rows())
        if (!plan_.retriesCrashed || !row.isCrashed()) rows_[row.key] = std::move(row);
    outcome_.earlier = rows_.size();
    progress_.begin(outcome_.expected, outcome_.earlier);
    if (windows == 0)
      runPart(0, SweepSample::Whole, plan_.numbers, std::nullopt);
    else
      walk();
  } catch (const std::runtime_error& error) {
    outcome_.failure = error.what();
  }
  progress_.clear();
  // Of a trial that was broken off nothing is known, nor kept: it begins anew.
  if (isTrial_ && outcome_.refusal.empty()) rows_.clear();
  for (auto& [key, row] : rows_) outcome_.rows.push_back(std::move(row));
  return std::move(outcome_);
}

bool Sweep::walk() {
  for (std::size_t i = 0; i < plan_.windows.size(); ++i) {
    const auto window = static_cast<std::int32_t>(i + 1);
    const bool isWhole =
        runPart(window, SweepSample::InSample, plan_.numbers, plan_.windows[i].inSample);
    const SweepRow* const chosen = chosenIn(window);
    forgetUnchosen(window, chosen);
    if (!isWhole) return false;
    if (chosen == nullptr) {
      // There is nothing to choose by.
      --outcome_.expected;
      progress_.leaveOut(1);
      continue;
    }
    if (!runPart(window, SweepSample::OutOfSample, {chosen->key.number},
                 plan_.windows[i].outOfSample))
      return false;
  }
  return true;
}

const SweepRow* Sweep::chosenIn(std::int32_t window) const {
  const SweepRow* best = nullptr;
  for (auto at = rows_.lower_bound({window, SweepSample::InSample, 0});
       at != rows_.end() && at->first.window == window; ++at) {
    if (at->first.sample != SweepSample::InSample) break;
    if (best == nullptr || standsBefore(at->second, *best, plan_.rank)) best = &at->second;
  }
  return best != nullptr && isRanked(*best, plan_.rank) ? best : nullptr;
}

void Sweep::forgetUnchosen(std::int32_t window, const SweepRow* chosen) {
  std::optional<std::uint64_t> number;
  if (chosen != nullptr) number = chosen->key.number;
  if (store_ != nullptr) store_->keepOnly(window, SweepSample::OutOfSample, number);
  // All of these were there before: this call has not tried anything in the window yet.
  const std::size_t forgotten = std::erase_if(rows_, [&](const auto& entry) {
    const SweepKey& key = entry.first;
    return key.window == window && key.sample == SweepSample::OutOfSample && key.number != number;
  });
  outcome_.earlier -= forgotten;
  progress_.takeBack(forgotten);
}

bool Sweep::runPart(std::int32_t window, SweepSample sample,
                    const std::vector<std::uint64_t>& numbers,
                    const std::optional<TimeSpan>& span) {
  if (rows_.empty() && !numbers.empty() && !tryFew(window, sample, numbers, span)) return false;
  std::vector<std::uint64_t> left;
  for (const std::uint64_t number : numbers)
    if (!rows_.contains({window, sample, number})) left.push_back(number);
  return runAll(window, sample, left, span);
}

bool Sweep::runAll(std::int32_t window, SweepSample sample, std::span<const std::uint64_t> numbers,
                   const std::optional<TimeSpan>& span) {
  while (!numbers.empty()) {
    const std::size_t size = std::min(worker_.batchSize(), numbers.size());
    if (!runBatch(window, sample, numbers.first(size), span)) {
      outcome_.isInterrupted = true;
      return false;
    }
    numbers = numbers.subspan(size);
  }
  return true;
}

bool Sweep::tryFew(std::int32_t window, SweepSample sample,
                   const std::vector<std::uint64_t>& numbers, const std::optional<TimeSpan>& span) {
  // From all over the grid, of which a strategy may well refuse most; and the same ones whatever
  // plays at once, or the answer would depend on the machine.
  constexpr std::size_t kMostTried = 256;
  std::vector<std::uint64_t> few;
  std::ranges::sample(numbers, std::back_inserter(few), kMostTried, std::mt19937_64(1));
  isTrial_ = true;
  std::span<const std::uint64_t> left = few;
  std::string refusal;
  do {
    const std::size_t size = std::min(worker_.batchSize(), left.size());
    if (!runAll(window, sample, left.first(size), span)) return false;
    left = left.subspan(size);
    refusal = commonRefusal();
  } while (!left.empty() && !refusal.empty());
  outcome_.refusal = std::move(refusal);
  if (!outcome_.refusal.empty()) return false;
  isTrial_ = false;
  std::vector<SweepRow> rows;
  for (const auto& [key, row] : rows_) rows.push_back(row);
  if (store_ != nullptr) store_->add(rows, plan_.space);
  return true;
}

std::string Sweep::commonRefusal() const {
  const bool isCommon = std::ranges::all_of(rows_, [this](const auto& entry) {
    return entry.second.isRefused && entry.second.message == rows_.begin()->second.message;
  });
  return isCommon && !rows_.empty() ? rows_.begin()->second.message : std::string();
}

bool Sweep::runBatch(std::int32_t window, SweepSample sample,
                     std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span) {
  if (worker_.isInterrupted()) return false;
  progress_.beginBatch(numbers.size());
  BatchResult result = worker_.play(numbers, span);
  if (result.isInterrupted) return false;
  if (!result.crash.empty()) {
    progress_.endBatch(0);
    const std::size_t half = numbers.size() / 2;
    if (half > 0)
      return runBatch(window, sample, numbers.first(half), span) &&
             runBatch(window, sample, numbers.subspan(half), span);
    result.rows = {{{window, sample, numbers.front()}, kCrashed, result.crash, {}, {}, false}};
  }
  keep(window, sample, std::move(result.rows));
  progress_.endBatch(numbers.size());
  return true;
}

void Sweep::keep(std::int32_t window, SweepSample sample, std::vector<SweepRow> rows) {
  for (SweepRow& row : rows) row.key = {window, sample, row.key.number};
  if (store_ != nullptr && !isTrial_) store_->add(rows, plan_.space);
  for (SweepRow& row : rows) rows_[row.key] = std::move(row);
}

}  // namespace orvane
