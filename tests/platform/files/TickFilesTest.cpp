#include "platform/fields/QuoteView.h"
#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

TEST(TickFiles, shouldReadTradesWhenThereIsNoHeader) {
  const auto loaded = ticksOf("32400000,1815200,283,P,2000,0\n32400000,1815300,5,Q,0,0\n",
                              R"({"priceScale": 10000})", "ibm_20131206_trade.csv");
  ASSERT_EQ(loaded.series.rows(), 2U);
  EXPECT_EQ(loaded.code, "IBM");
  EXPECT_EQ(loaded.series.times[0], kNine);
  EXPECT_EQ(loaded.series.times[1], kNine);
  EXPECT_EQ(cellOf(loaded.series, 0, TickColumn::LastPrice), 181.52);
  EXPECT_EQ(cellOf(loaded.series, 1, TickColumn::LastPrice), 181.53);
  EXPECT_EQ(cellOf(loaded.series, 0, TickColumn::Volume), 283);
  EXPECT_EQ(loaded.series.tradingDays[0], 20131206);
}

TEST(TickFiles, shouldReadOneSidedQuotesWhenTheOtherSideIsZero) {
  const auto loaded = ticksOf("32400000,0,0,1836300,100,Q,1,0\n32400001,1800100,300,0,0,P,1,0\n",
                              R"({"priceScale": 10000})", "ibm_20131206_quote.csv");
  IDepthMarketData quote;
  loaded.series.fill(0, quote);
  EXPECT_FALSE(QuoteView(quote).hasBid());
  EXPECT_FALSE(QuoteView(quote).hasTrade());
  EXPECT_EQ(QuoteView(quote).askPrice(), 183.63);
  EXPECT_EQ(QuoteView(quote).askSize(), 100);
  loaded.series.fill(1, quote);
  EXPECT_EQ(QuoteView(quote).bidPrice(), 180.01);
  EXPECT_FALSE(QuoteView(quote).hasAsk());
}

TEST(TickFiles, shouldReadBidAndAskWhenTwoNumbersLieSideBySide) {
  const auto loaded =
      ticksOf("32400000,1.39101,1.39114\n32400500,1.39102,1.39116\n", "{}", "eurusd_20131206.csv");
  EXPECT_EQ(cellOf(loaded.series, 1, TickColumn::BidPrice), 1.39102);
  EXPECT_EQ(cellOf(loaded.series, 1, TickColumn::AskPrice), 1.39116);
}

TEST(TickFiles, shouldReadSizesBehindThePricesWhenFourNumbersFollow) {
  const auto loaded = ticksOf(
      "20131206 09:00:00.123,1.39101,1.39114,1.5,2\n"
      "20131206 09:00:00.456,1.39102,1.39116,3,4\n");
  EXPECT_EQ(loaded.series.times[1], kNine + 456);
  EXPECT_EQ(cellOf(loaded.series, 1, TickColumn::BidSize), 3);
  EXPECT_EQ(cellOf(loaded.series, 1, TickColumn::AskSize), 4);
}

TEST(TickFiles, shouldJoinDateTimeAndMillisecondsWhenTheyAreThreeColumns) {
  const auto loaded = ticksOf(
      "TradingDay,InstrumentID,LastPrice,Volume,UpdateTime,UpdateMillisec,BidPrice1,BidVolume1,"
      "AskPrice1,AskVolume1,ActionDay\n"
      "20131209,IF1312,2400.2,5,21:00:00,500,2400,1,1.7976931348623157e+308,0,20131206\n");
  ASSERT_EQ(loaded.series.rows(), 1U);
  EXPECT_EQ(loaded.code, "IF1312");
  EXPECT_EQ(loaded.series.times[0], kNine + 12 * kHour + 500);
  EXPECT_EQ(loaded.series.tradingDays[0], 20131209);
  EXPECT_EQ(cellOf(loaded.series, 0, TickColumn::AskPrice), 0);
}

/// Every text gives one tick at nine o'clock and 400 milliseconds.
class SameTick : public ::testing::TestWithParam<const char*> {};

TEST_P(SameTick, shouldReadTheSameTickWhateverTheShape) {
  const auto loaded = ticksOf(GetParam(), "{}", "x_20131206.csv");
  ASSERT_GE(loaded.series.rows(), 1U);
  EXPECT_EQ(loaded.series.times[0], kNine + 400);
  EXPECT_EQ(cellOf(loaded.series, 0, TickColumn::LastPrice), 10.25);
  EXPECT_EQ(cellOf(loaded.series, 0, TickColumn::Volume), 3);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, SameTick,
    ::testing::Values(
        "action_date,action_time,last_price,volume\n20131206,090000400,10.25,3\n",
        "action_date,action_time,last_price,volume\n20131206,90000400,10.25,3\n"
        "20131206,143000400,10.25,3\n",
        "date,time,price,size\n2013-12-06,32400400,10.25,3\n2013-12-06,32465000,1,1\n",
        "date,time,price,qty\n2013-12-06,09:00:00.4,10.25,3\n",
        "date,time,price,qty\n2013-12-06,09:00:00:400,10.25,3\n",
        "timestamp,price,amount\n1386320400400000000,10.25,3\n",
        "timestamp,price,amount\n1386320400400000,10.25,3\n",
        "timestamp,price,amount\n1386320400.400,10.25,3\n",
        "timestamp,price,amount\n20131206090000400,10.25,3\n",
        "time,price,volume\n09:00:00.400999999,10.25,3\n", "time,price,volume\n090000400,10.25,3\n",
        "时间,最新价,现量\n2013-12-06 09:00:00.400,10.25,3\n",
        "id,price,qty,quote_qty,time,is_buyer_maker\n1,10.25,3,30.75,1386320400400,true\n"));

TEST(TickFiles, shouldReadTenLevelsWhateverTheLevelsAreCalled) {
  struct Names {
    const char* bidPrice;
    const char* bidSize;
    const char* askPrice;
    const char* askSize;
    int from;
  };
  for (const Names& names :
       {Names{"bid_price", "bid_volume", "ask_price", "ask_volume", 1},
        Names{"bp", "bv", "ap", "av", 1}, Names{"BidPx", "BidSz", "AskPx", "AskSz", 0},
        Names{"买", "买量", "卖", "卖量", 1}}) {
    std::string header = "datetime,code";
    std::string row = "2013-12-06 09:00:00,A";
    for (int level = 0; level < 10; ++level) {
      const std::string n = std::to_string(level + names.from);
      header += "," + (names.bidPrice + n) + "," + (names.bidSize + n) + "," +
                (names.askPrice + n) + "," + (names.askSize + n);
      row += "," + std::to_string(100 - level) + "," + std::to_string(level + 1) + "," +
             std::to_string(101 + level) + "," + std::to_string(level + 11);
    }
    const auto loaded = ticksOf(header + "\n" + row + "\n");
    IDepthMarketData quote;
    loaded.series.fill(0, quote);
    const QuoteView view(quote);
    ASSERT_EQ(view.bidLevels(), 10) << names.bidPrice;
    ASSERT_EQ(view.askLevels(), 10);
    for (std::size_t level = 0; level < 10; ++level) {
      const double n = static_cast<double>(level);
      EXPECT_EQ(view.bidPrice(level), 100 - n);
      EXPECT_EQ(view.bidSize(level), n + 1);
      EXPECT_EQ(view.askPrice(level), 101 + n);
      EXPECT_EQ(view.askSize(level), n + 11);
    }
  }
}

TEST(TickFiles, shouldKeepTheFilesOrderWhenTimesAreEqual) {
  const auto loaded = ticksOf("time,price\n09:00:00,1\n09:00:00,2\n09:00:00,3\n09:00:01,4\n", "{}",
                              "x_20131206.csv");
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_EQ(cellOf(loaded.series, i, TickColumn::LastPrice), static_cast<double>(i + 1));
}

TEST(TickFiles, shouldTurnTheRowsRoundWhenTheNewestComesFirst) {
  const auto loaded = ticksOf(
      "datetime,price,size\n2013-12-06 09:00:02,3,30\n"
      "2013-12-06 09:00:01,2,20\n2013-12-06 09:00:00,1,10\n");
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(loaded.series.times[i], kNine + static_cast<int64>(i) * 1000);
    EXPECT_EQ(cellOf(loaded.series, i, TickColumn::LastPrice), static_cast<double>(i + 1));
    EXPECT_EQ(cellOf(loaded.series, i, TickColumn::Volume), static_cast<double>(10 * i + 10));
  }
}

TEST(TickFiles, shouldJoinFilesOfDifferentColumnsWhenTheyMakeOneSeries) {
  const DataFolder folder;
  const auto first = folder.write("a_20131206.csv", "time,price\n09:00:00,1\n");
  const auto second = folder.write("a_20131207.csv", "time,bid,price\n09:00:00,5,2\n");
  const auto loaded = loadTicks(requestOf({first, second}));
  ASSERT_EQ(loaded.size(), 1U);
  const TickSeries& series = loaded[0].series;
  EXPECT_EQ(cellOf(series, 0, TickColumn::LastPrice), 1);
  EXPECT_EQ(cellOf(series, 0, TickColumn::BidPrice), 0);
  EXPECT_EQ(cellOf(series, 1, TickColumn::LastPrice), 2);
  EXPECT_EQ(cellOf(series, 1, TickColumn::BidPrice), 5);
}

TEST(TickFiles, shouldTakeEmptyFieldsAsZeroWhenAQuoteHasNoTrade) {
  const auto loaded = ticksOf("datetime,price,size,bid,ask\n2013-12-06 09:00:00,,,9.5,10.5\n");
  IDepthMarketData quote;
  loaded.series.fill(0, quote);
  EXPECT_FALSE(QuoteView(quote).hasTrade());
  EXPECT_EQ(QuoteView(quote).bidPrice(), 9.5);
}

}  // namespace
}  // namespace orvane
