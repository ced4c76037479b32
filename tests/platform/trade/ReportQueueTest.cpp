#include "platform/trade/ReportQueue.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

/// A report of an order, told apart by the order's id.
void put(ReportQueue& queue, int64 due, int64 id, std::int32_t account = 1) {
  ReportQueue::Report report = queue.blank();
  report->due = due;
  report->subject.account = account;
  report->what = std::make_unique<Order>();
  std::get<std::unique_ptr<Order>>(report->what)->id = id;
  queue.put(std::move(report));
}

std::vector<int64> takeAll(ReportQueue& queue) {
  std::vector<int64> ids;
  while (!queue.empty())
    ids.push_back(std::get<std::unique_ptr<Order>>(queue.takeNext()->what)->id);
  return ids;
}

TEST(ReportQueue, shouldTakeReportsByTimeAndThenAsTheyCame) {
  ReportQueue queue;
  put(queue, 20, 1);
  put(queue, 20, 2);
  put(queue, 10, 3);
  put(queue, 20, 4);
  put(queue, 10, 5);
  EXPECT_EQ(queue.nextDue(), 10);
  EXPECT_EQ(takeAll(queue), (std::vector<int64>{3, 5, 1, 2, 4}));
}

TEST(ReportQueue, shouldKeepTheOthersInOrderWhenSomeAreLost) {
  ReportQueue queue;
  for (int id = 1; id <= 6; ++id) put(queue, 10, id, id % 2);
  const auto lost =
      queue.takeIf([](const TradeReport& report) { return report.subject.account == 0; });
  EXPECT_EQ(lost.size(), 3u);
  EXPECT_EQ(takeAll(queue), (std::vector<int64>{1, 3, 5}));
}

TEST(ReportQueue, shouldHoldNoReceiverOfAReportThatWasGivenBack) {
  ReportQueue queue;
  const auto receiver = std::make_shared<TradeReceiver>();
  for (int i = 0; i < 100; ++i) {
    ReportQueue::Report report = queue.blank();
    EXPECT_TRUE(report->receivers.empty());
    report->receivers = {receiver};
    queue.giveBack(std::move(report));
    EXPECT_EQ(receiver.use_count(), 1);
  }
}

}  // namespace
}  // namespace orvane::detail
