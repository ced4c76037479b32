#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/sweep/BatchWorker.h"
#include "host/sweep/SweepPlan.h"
#include "host/sweep/SweepProgress.h"
#include "host/sweep/SweepRow.h"
#include "host/sweep/SweepStore.h"

namespace orvane {

/// What became of a sweep.
struct SweepOutcome {
  std::vector<SweepRow> rows;  ///< By their keys: those that are done.
  std::size_t expected = 0;    ///< How many there are when all is done.
  std::size_t earlier = 0;     ///< Of the rows, those that were in the store before.
  bool isInterrupted = false;
  std::string failure;  ///< Why it ended before its time, UTF-8; empty if it did not.
  /// What the strategy said to all combinations that were tried, before anything was played, so
  /// that no other was; empty where it takes some.
  std::string refusal;

  std::size_t errors() const;   ///< Rows whose run did not end as it should, crashed ones included.
  std::size_t crashes() const;  ///< Rows whose run ended its process.
  /// An `ExitCode`.
  int exitCode() const;
};

/// Carries out a sweep: all combinations over what is played or, walking forward, over the
/// in-sample span of each window, and then the one that was best there over the span after it. The
/// choice sees in-sample figures alone.
///
/// Where a batch's process ends before its time, its halves are run, and theirs, down to the single
/// combinations that end a process even alone; those get a row that says so. Each part is smaller
/// than the whole, so this comes to an end whatever strategies do.
class Sweep {
 public:
  /// `store` may be null: nothing is kept then, and nothing was there before.
  Sweep(const SweepPlan& plan, BatchWorker& worker, SweepStore* store, SweepProgress& progress);

  SweepOutcome run();

 private:
  /// Answers false if the sweep ends here.
  bool runPart(std::int32_t window, SweepSample sample, const std::vector<std::uint64_t>& numbers,
               const std::optional<TimeSpan>& span);
  /// The same of these numbers, in batches.
  bool runAll(std::int32_t window, SweepSample sample, std::span<const std::uint64_t> numbers,
              const std::optional<TimeSpan>& span);
  /// Runs some combinations, until the strategy takes one or refuses one in other words: a
  /// parameter that it does not know is refused in all, and there may be many. Their rows are
  /// stored once that is known. Answers false if the sweep ends here.
  bool tryFew(std::int32_t window, SweepSample sample, const std::vector<std::uint64_t>& numbers,
              const std::optional<TimeSpan>& span);
  /// What all rows so far were refused with; empty if any was not, or with another text.
  std::string commonRefusal() const;
  bool runBatch(std::int32_t window, SweepSample sample, std::span<const std::uint64_t> numbers,
                const std::optional<TimeSpan>& span);
  void keep(std::int32_t window, SweepSample sample, std::vector<SweepRow> rows);
  bool walk();
  /// The row that is best in the window's in-sample span; null if none has the figure.
  const SweepRow* chosenIn(std::int32_t window) const;
  /// Forgets what was tried out of sample while another row was the best: a row that crashed in an
  /// earlier call may have changed the choice.
  void forgetUnchosen(std::int32_t window, const SweepRow* chosen);

  const SweepPlan& plan_;
  BatchWorker& worker_;
  SweepStore* const store_;
  SweepProgress& progress_;
  std::map<SweepKey, SweepRow> rows_;
  SweepOutcome outcome_;
  bool isTrial_ = false;  ///< Rows are not stored yet: the strategy may refuse everything.
};

/// The rows of one window and sample, best first: those that have a figure, then the others; equal
/// ones by their number.
struct SweepRanking {
  std::vector<const SweepRow*> rows;
  std::size_t ranked = 0;  ///< How many have the figure and ended as they should.
};
/// `rows` are in the order of their keys.
SweepRanking rankingOf(const std::vector<SweepRow>& rows, std::int32_t window, SweepSample sample,
                       std::size_t figure);

}  // namespace orvane
