#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/LineAppender.h"
#include "host/sweep/BatchRunner.h"
#include "host/sweep/ForkedJobs.h"
#include "host/sweep/SweepRow.h"
#include "host/sweep/SweepStore.h"

namespace orvane {

/// What came of a batch.
struct BatchResult {
  std::vector<SweepRow> rows;  ///< In the order of their numbers; their keys have nothing else.
  bool isInterrupted = false;  ///< There are no rows then.
  std::string crash;           ///< How the batch's process ended before its time; no rows then.
};

/// Plays the batches of a sweep in processes of their own, so that a strategy that ends its process
/// takes nothing along but its batch. What they share, data above all, they have from this one.
class BatchWorker {
 public:
  explicit BatchWorker(BatchRunner& runner) : runner_(runner) {}

  /// Throws `InputError` if the plan cannot be played. Runs nothing.
  void check();

  /// What is open by now: a store, or null, and the log. Call it before `play`.
  void setOpen(SweepStore* store, std::shared_ptr<LineAppender> log);

  /// Plays the combinations over `span`, or over all that the plan plays. Throws
  /// `std::runtime_error` if not everything that happened reached the runners, or there can be no
  /// process.
  BatchResult play(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span);

  std::size_t batchSize() const { return runner_.batchSize(); }
  /// Whether the user has asked for the end.
  bool isInterrupted() { return jobs_.isInterrupted(); }
  /// What strategies wrote to the standard output and nobody took, UTF-8; empty if all was taken.
  const std::string& outputFailure() const { return outputFailure_; }

 private:
  QByteArray playHere(std::span<const std::uint64_t> numbers, const std::optional<TimeSpan>& span,
                      int stopDescriptor);

  BatchRunner& runner_;
  SweepStore* store_ = nullptr;
  std::shared_ptr<LineAppender> log_;
  ForkedJobs jobs_;
  std::string outputFailure_;
};

}  // namespace orvane
