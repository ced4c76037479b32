#include "platform/trade/ReportQueue.h"

#include <algorithm>
#include <utility>

namespace orvane::detail {

ReportQueue::Report ReportQueue::blank() {
  if (blanks_.empty()) return std::make_unique<TradeReport>();
  Report report = std::move(blanks_.back());
  blanks_.pop_back();
  return report;
}

void ReportQueue::giveBack(Report report) {
  report->receivers.clear();
  if (blanks_.size() < kMostBlanks) blanks_.push_back(std::move(report));
}

void ReportQueue::put(Report report) {
  const auto after =
      std::upper_bound(reports_.begin(), reports_.end(), report->due,
                       [](int64 due, const Report& each) { return due < each->due; });
  reports_.insert(after, std::move(report));
}

ReportQueue::Report ReportQueue::takeNext() {
  Report report = std::move(reports_.front());
  reports_.pop_front();
  return report;
}

}  // namespace orvane::detail
