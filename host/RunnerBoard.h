#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/RunRecord.h"
#include "host/RunnerWatch.h"

namespace orvane {

/// Where one runner stands at one moment. Texts are UTF-8.
struct RunnerStanding {
  std::string name;
  int status = -1;  ///< As `RunnerWatch::State` has it.
  std::string message;
  std::uint64_t calls = 0;          ///< Call-backs so far.
  int inside = RunPulse::kOutside;  ///< As `RunPulse` has it.

  bool isOver() const { return status >= 0 && status != RunnerRunning; }
  /// The call-back that the strategy is in; empty if it is in none.
  std::string callback() const;
};

/// The runners of a run, for those who look at them while it goes on. Any thread may call it.
class RunnerBoard {
 public:
  /// `records` outlives the board.
  explicit RunnerBoard(const RunRecords& records) : records_(records) {}

  /// `name` is UTF-8.
  void add(const std::string& name, std::shared_ptr<const RunnerWatch> watch);
  /// Where they stand, in the order in which they were added.
  std::vector<RunnerStanding> look() const;

 private:
  struct Entry {
    std::string name;     ///< UTF-8.
    std::string gbkName;  ///< As the records have it.
    std::shared_ptr<const RunnerWatch> watch;
  };

  const RunRecords& records_;
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace orvane
