#include "platform/market/Series.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TickSeries oneRow(std::vector<TickColumnId> columns, std::vector<double> cells) {
  TickSeries series;
  series.code.id = 7;
  series.code.code = "IF2101";
  series.columns = std::move(columns);
  series.times = {1234};
  series.tradingDays = {20210104};
  series.cells = std::move(cells);
  return series;
}

TEST(TickSeries, shouldFillEveryCarriedFieldWhenTheRecordHeldAnotherRow) {
  IDepthMarketData record;
  record.block1.fill(99);
  record.block2.fill(99);
  record.block3.fill(99);
  record.levels.fill({99, 99, 99});
  record.extras[1] = "old";
  oneRow({{TickColumn::LastPrice}}, {10.5}).fill(0, record);

  EXPECT_EQ(record.code.id, 7);
  EXPECT_EQ(record.code.code, "IF2101");
  const QuoteView view(record);
  EXPECT_EQ(view.time(), 1234);
  EXPECT_EQ(view.tradingDay(), 20210104);
  EXPECT_EQ(view.lastPrice(), 10.5);
  EXPECT_EQ(view.flags(), quote::kHasTrade);
  EXPECT_EQ(view.bidLevels(), 0);
  EXPECT_EQ(view.askLevels(), 0);
  for (std::size_t i = quote::Open; i < record.block1.size(); ++i) EXPECT_EQ(record.block1[i], 0);
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(record.block3[i], 0);
  EXPECT_EQ(std::bit_cast<double>(record.block3[7]), 1.0);
  for (const DepthLevel& level : record.levels) EXPECT_EQ(level, DepthLevel{});
  EXPECT_TRUE(record.extras.empty());
}

TEST(TickSeries, shouldKeepBothLaddersWhenTenLevelsAreGiven) {
  std::vector<TickColumnId> columns;
  std::vector<double> cells;
  for (std::uint8_t level = 0; level < 10; ++level) {
    for (TickColumn column :
         {TickColumn::BidPrice, TickColumn::BidSize, TickColumn::AskPrice, TickColumn::AskSize}) {
      columns.push_back({column, level});
      cells.push_back(100.0 * static_cast<int>(column) + level + 1);
    }
  }
  IDepthMarketData record;
  oneRow(columns, cells).fill(0, record);
  const QuoteView view(record);
  EXPECT_EQ(view.bidLevels(), 10);
  EXPECT_EQ(view.askLevels(), 10);
  EXPECT_TRUE(view.hasBid() && view.hasAsk() && !view.hasTrade());
  for (std::size_t level = 0; level < 10; ++level) {
    const double n = static_cast<double>(level) + 1;
    EXPECT_EQ(view.bidPrice(level), 100.0 * static_cast<int>(TickColumn::BidPrice) + n);
    EXPECT_EQ(view.bidSize(level), 100.0 * static_cast<int>(TickColumn::BidSize) + n);
    EXPECT_EQ(view.askPrice(level), 100.0 * static_cast<int>(TickColumn::AskPrice) + n);
    EXPECT_EQ(view.askSize(level), 100.0 * static_cast<int>(TickColumn::AskSize) + n);
  }
}

TEST(TickSeries, shouldCountASideAsMissingWhenItsBestPriceIsZero) {
  IDepthMarketData record;
  oneRow({{TickColumn::BidPrice}, {TickColumn::AskPrice}}, {0, 10.2}).fill(0, record);
  const QuoteView view(record);
  EXPECT_FALSE(view.hasBid());
  EXPECT_TRUE(view.hasAsk());
  EXPECT_EQ(view.bidLevels(), 0);
  EXPECT_EQ(view.askLevels(), 1);
}

}  // namespace
}  // namespace orvane
