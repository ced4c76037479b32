#pragma once

#include <algorithm>
#include <deque>
#include <iterator>
#include <memory>
#include <vector>

#include "platform/trade/TradeReport.h"

namespace orvane::detail {

/// Reports on their way, by the time they are due; those of one time in the order they came. They
/// are large, so that a few are kept to be made the next ones. For one thread at a time.
class ReportQueue {
 public:
  using Report = std::unique_ptr<TradeReport>;

  ReportQueue() { blanks_.reserve(kMostBlanks); }

  /// A report without receivers, to be filled; the rest may be another's.
  Report blank();
  /// Takes a report that nobody needs any more, and lets go of its receivers.
  void giveBack(Report report);

  void put(Report report);
  bool empty() const { return reports_.empty(); }
  /// When the next one is due. Only if there is one.
  int64 nextDue() const { return reports_.front()->due; }
  Report takeNext();

  /// Takes out what `isLost` says; the rest stays as it was.
  template <typename IsLost>
  std::vector<Report> takeIf(IsLost isLost) {
    const auto lost = std::stable_partition(reports_.begin(), reports_.end(),
                                            [&](const Report& each) { return !isLost(*each); });
    std::vector<Report> taken(std::make_move_iterator(lost),
                              std::make_move_iterator(reports_.end()));
    reports_.erase(lost, reports_.end());
    return taken;
  }

 private:
  static constexpr std::size_t kMostBlanks = 64;

  std::deque<Report> reports_;
  std::vector<Report> blanks_;
};

}  // namespace orvane::detail
