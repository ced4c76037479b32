#pragma once

#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "host/DataSet.h"
#include "host/Figures.h"
#include "host/InterruptWatcher.h"
#include "host/ProgressLine.h"
#include "host/RunSession.h"
#include "host/sweep/SweepPlan.h"

namespace orvane {

/// Runs combinations of a sweep, many at once, so that each has the very results that it has alone.
///
/// A batch plays on one platform after another over the same rows. Each combination has a runner
/// and an account of its own, and meets the market as if it were alone. Two kinds of runs could
/// still feel their neighbours, and are repeated alone: one that ends by itself while others go on,
/// since alone the play would end with it; and all of a batch in which one publishes, since its
/// neighbours could hear it, or asks how many accounts there are. One sweep at a time in a process.
class BatchRunner {
 public:
  BatchRunner(const SweepPlan& plan, DataSet data, ProgressLine& progress);

  /// Throws `InputError` if the plan cannot be played. Runs nothing.
  void check() const;
  /// The rows were looked through: no platform needs to do it again.
  void trustOrder();

  /// Plays the combinations over `span`, or over all that the plan plays, and hands each outcome
  /// that counts to `take`, in their order. Answers false, and has handed out nothing, if it was
  /// interrupted. Throws `std::runtime_error`, having handed out nothing, if not everything that
  /// happened reached the runners.
  bool run(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span,
           InterruptWatcher& interrupts,
           const std::function<void(std::uint64_t number, const RunnerOutcome&)>& take);

  /// How many combinations are to be given to `run` at once.
  std::size_t batchSize() const;
  /// Whether playing many at once has not paid, so that each is played for itself.
  bool isOneByOne() const { return isOneByOne_; }
  void setOneByOne() { isOneByOne_ = true; }

  const DataSet& data() const { return data_; }

  /// The plan that `orvane run` makes of some combinations.
  RunPlan planOf(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span) const;

 private:
  std::vector<RunnerOutcome> play(std::span<const std::uint64_t> numbers,
                                  const std::optional<TimeSpan>& span,
                                  InterruptWatcher& interrupts);
  bool repeatAlone(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span,
                   InterruptWatcher& interrupts, std::vector<RunnerOutcome>& outcomes);

  const SweepPlan& plan_;
  DataSet data_;
  ProgressLine& progress_;
  bool isOneByOne_ = false;
};

/// The figures of a runner that had its account to itself.
Figures figuresOf(const RunnerOutcome& outcome);

}  // namespace orvane
