// Every real bar and tick file, row by row, against a second reading of the same text that shares
// nothing with the loader.

#include <QDateTime>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "platform/fields/QuoteView.h"
#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

std::string dataFolder() {
  const char* chosen = std::getenv("ORVANE_DATA_DIR");
  return chosen ? chosen : ORVANE_DATA_DIR;
}

#define SKIP_WITHOUT_DATA()                                  \
  if (!std::filesystem::exists(dataFolder() + "/README.md")) \
  GTEST_SKIP() << "no real market data in " << dataFolder()

/// The data rows of a file, split at commas.
std::vector<std::vector<std::string>> rowsOf(const std::string& path, bool header, bool reversed) {
  std::string text;
  const gzFile file = gzopen(path.c_str(), "rb");
  char buffer[1 << 16];
  for (int got; (got = gzread(file, buffer, sizeof(buffer))) > 0;)
    text.append(buffer, static_cast<std::size_t>(got));
  gzclose(file);
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::vector<std::string> row;
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) row.push_back(field);
    if (line.back() == ',') row.emplace_back();
    rows.push_back(row);
  }
  if (header) rows.erase(rows.begin());
  if (reversed) std::reverse(rows.begin(), rows.end());
  return rows;
}

/// The nearest double of a text with its point shifted. What a text of 16 digits or more has
/// beyond the twelfth digit is noise in these files.
double numberOf(const std::string& text, int shift) {
  if (text.empty()) return 0;
  if (text.size() > 16) {
    char rounded[64];
    std::snprintf(rounded, sizeof(rounded), "%.12g", std::strtod(text.c_str(), nullptr));
    return std::strtod(rounded, nullptr);
  }
  return std::strtod((text + "e" + std::to_string(shift)).c_str(), nullptr);
}

struct BarFile {
  const char* path;
  std::size_t rows;
  const char* description;
  const char* code;
  int64 periodMs;
  const char* firstStamp;  ///< UTC, of the begin or of the end, as the bars are stamped.
  const char* lastStamp;
  bool header;
  bool reversed;
  int columns[6];  ///< Open, high, low, close, volume, turnover; -1: none.
  int shift;
};

constexpr const char* kUs = R"({"timeZone": "America/New_York", "priceScale": 10000})";
constexpr const char* kCn = R"({"timeZone": "Asia/Shanghai", "stamp": "end"})";

const BarFile kBarFiles[] = {
    {"daily/aapl_1998_2021_day.csv",
     5849,
     kUs,
     "AAPL",
     kDay,
     "1998-01-02T05:00:00Z",
     "2021-03-31T04:00:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     -4},
    {"daily/ibm_1998_2021_day.csv",
     5849,
     kUs,
     "IBM",
     kDay,
     "1998-01-02T05:00:00Z",
     "2021-03-31T04:00:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     -4},
    {"daily/spy_1998_2021_day.csv",
     5849,
     kUs,
     "SPY",
     kDay,
     "1998-01-02T05:00:00Z",
     "2021-03-31T04:00:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     -4},
    {"daily/btcusd_coinbase_2014_2018_day.csv",
     1318,
     "{}",
     "BTCUSD_COINBASE",
     kDay,
     "2014-12-01T00:00:00Z",
     "2018-08-13T00:00:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     0},
    {"daily/cffex_ic_hot_2015_2021_day.csv",
     1447,
     R"({"timeZone": "Asia/Shanghai"})",
     "CFFEX_IC_HOT",
     kDay,
     "2015-04-15T16:00:00Z",
     "2021-03-22T16:00:00Z",
     true,
     false,
     {1, 2, 3, 4, 5, 6},
     0},
    {"daily/csi300_2013_2018_day.csv",
     1423,
     R"({"timeZone": "+08:00"})",
     "CSI300",
     kDay,
     "2013-01-03T16:00:00Z",
     "2018-11-08T16:00:00Z",
     true,
     false,
     {4, 2, 3, 1, 5, -1},
     0},
    {"daily/eurusd_fxcm_2007_2018_day_bidask.csv",
     3487,
     R"({"timeZone": "UTC-05:00"})",
     "EURUSD_FXCM",
     kDay,
     "2007-03-30T05:00:00Z",
     "2018-07-04T05:00:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, 10},
     0},
    {"daily/sse_600000_2014_2020_day.csv",
     1456,
     R"({"timeZone": "Asia/Shanghai"})",
     "600000.SH",
     kDay,
     "2014-01-01T16:00:00Z",
     "2020-02-12T16:00:00Z",
     true,
     true,
     {3, 4, 5, 6, 10, 11},
     0},
    {"minute/bb_20131206_20140102_1min.csv",
     4560,
     kCn,
     "BB",
     kMinute,
     "2013-12-06T01:01:00Z",
     "2014-01-02T07:00:00Z",
     true,
     false,
     {1, 3, 4, 2, 5, -1},
     0},
    {"minute/cffex_if_20131206_20131209_1min.csv",
     540,
     kCn,
     "CFFEX_IF",
     kMinute,
     "2013-12-06T01:16:00Z",
     "2013-12-09T07:15:00Z",
     true,
     false,
     {1, 3, 4, 2, 5, -1},
     0},
    {"minute/cffex_if_20131206_20131209_5sec.csv",
     6484,
     kCn,
     "CFFEX_IF",
     5000,
     "2013-12-06T01:15:00Z",
     "2013-12-09T07:15:00Z",
     true,
     false,
     {1, 3, 4, 2, 5, 6},
     0},
    {"minute/cffex_if_hot_2010_2022_5min.csv.gz",
     147576,
     kCn,
     "CFFEX_IF_HOT",
     5 * kMinute,
     "2010-04-16T01:20:00Z",
     "2022-03-23T07:00:00Z",
     true,
     false,
     {2, 3, 4, 5, 6, 7},
     0},
    {"minute/shfe_rb2401_2023_1min.csv",
     1835,
     kCn,
     "rb2401.SHFE",
     kMinute,
     "2023-09-25T01:01:00Z",
     "2023-10-10T07:00:00Z",
     true,
     true,
     {3, 5, 6, 4, 7, 8},
     0},
    {"minute/sse_composite_2017_1min.csv.gz",
     24000,
     kCn,
     "SSE_COMPOSITE",
     kMinute,
     "2017-03-03T05:22:00Z",
     "2017-07-31T07:00:00Z",
     true,
     false,
     {1, 2, 3, 4, -1, 5},
     0},
    {"minute/btcusd_coinbase/btcusd_20180404_1min_quote.csv",
     1437,
     "{}",
     "BTCUSD",
     kMinute,
     "2018-04-04T00:00:00Z",
     "2018-04-04T23:58:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, 10},
     0},
    {"minute/btcusd_coinbase/btcusd_20180404_1min_trade.csv",
     1007,
     "{}",
     "BTCUSD",
     kMinute,
     "2018-04-04T00:00:00Z",
     "2018-04-04T16:47:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     0},
    {"minute/btcusd_coinbase/btcusd_20180405_1min_quote.csv",
     1436,
     "{}",
     "BTCUSD",
     kMinute,
     "2018-04-05T00:00:00Z",
     "2018-04-05T23:58:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, 10},
     0},
    {"minute/btcusd_coinbase/btcusd_20180405_1min_trade.csv",
     1440,
     "{}",
     "BTCUSD",
     kMinute,
     "2018-04-05T00:00:00Z",
     "2018-04-05T23:59:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     0},
    {"minute/btcusd_coinbase/btcusd_20180406_1min_trade.csv",
     1440,
     "{}",
     "BTCUSD",
     kMinute,
     "2018-04-06T00:00:00Z",
     "2018-04-06T23:59:00Z",
     false,
     false,
     {1, 2, 3, 4, 5, -1},
     0},
#define ES(day, date, quotes, firstQuote, lastQuote, trades, firstTrade, lastTrade)               \
  {"minute/es_201312/es_201312_" day "_1min_quote.csv",                                           \
   quotes,                                                                                        \
   "{}",                                                                                          \
   "ES_201312",                                                                                   \
   kMinute,                                                                                       \
   date "T" firstQuote ":00Z",                                                                    \
   date "T" lastQuote ":00Z",                                                                     \
   false,                                                                                         \
   false,                                                                                         \
   {1, 2, 3, 4, 5, 10},                                                                           \
   0},                                                                                            \
  {                                                                                               \
    "minute/es_201312/es_201312_" day "_1min_trade.csv", trades, "{}", "ES_201312", kMinute,      \
        date "T" firstTrade ":00Z", date "T" lastTrade ":00Z", false, false, {1, 2, 3, 4, 5, -1}, \
        0                                                                                         \
  }
    ES("20131006", "2013-10-06", 155, "19:00", "23:59", 118, "22:00", "23:59"),
    ES("20131007", "2013-10-07", 1410, "00:00", "23:59", 1344, "00:00", "23:59"),
    ES("20131008", "2013-10-08", 1411, "00:00", "23:59", 1372, "00:00", "23:59"),
    ES("20131009", "2013-10-09", 1410, "00:00", "23:59", 1371, "00:00", "23:59"),
    ES("20131010", "2013-10-10", 1411, "00:00", "23:59", 1368, "00:00", "23:59"),
    ES("20131011", "2013-10-11", 1276, "00:00", "21:15", 1253, "00:00", "21:14"),
#undef ES
#define SPY(day, date, rows)                                                               \
  {                                                                                        \
    "minute/spy/spy_" day "_1min_trade.csv", rows, kUs, "SPY", kMinute, date "T08:00:00Z", \
        date "T23:59:00Z", false, false, {1, 2, 3, 4, 5, -1}, -4                           \
  }
    SPY("20131007", "2013-10-07", 828),
    SPY("20131008", "2013-10-08", 828),
    SPY("20131009", "2013-10-09", 813),
    SPY("20131010", "2013-10-10", 883),
    SPY("20131011", "2013-10-11", 776),
#undef SPY
};

int64 utcOf(const char* iso) {
  return QDateTime::fromString(QLatin1String(iso), Qt::ISODate).toMSecsSinceEpoch();
}

class RealBarFiles : public ::testing::TestWithParam<BarFile> {};

TEST_P(RealBarFiles, shouldLoadEveryRow) {
  SKIP_WITHOUT_DATA();
  const BarFile& file = GetParam();
  const std::string path = dataFolder() + "/bars/" + file.path;
  const auto loaded = loadBars(requestOf({path}, file.description));
  ASSERT_EQ(loaded.size(), 1U);
  const BarSeries& series = loaded[0].series;
  const auto rows = rowsOf(path, file.header, file.reversed);
  ASSERT_EQ(rows.size(), file.rows);
  ASSERT_EQ(series.bars.size(), file.rows);
  EXPECT_EQ(loaded[0].code, file.code);
  EXPECT_EQ(series.periodMs, file.periodMs);
  const bool ends = std::string(file.description) == kCn;
  const auto stamp = [&](const IKLine& bar) {
    return ends ? KLineView(bar).endTime() : KLineView(bar).beginTime();
  };
  EXPECT_EQ(stamp(series.bars.front()), utcOf(file.firstStamp));
  EXPECT_EQ(stamp(series.bars.back()), utcOf(file.lastStamp));

  for (std::size_t i = 0; i < rows.size(); ++i) {
    const IKLine& bar = series.bars[i];
    const KLineView view(bar);
    ASSERT_GT(view.endTime(), view.beginTime());
    if (i > 0) {
      ASSERT_GE(view.beginTime(), KLineView(series.bars[i - 1]).endTime());
    }
    // The bid's columns are empty where only the ask is there, five columns on.
    const int side = rows[i][static_cast<std::size_t>(file.columns[0])].empty() ? 5 : 0;
    ASSERT_EQ((view.flags() & kline::kBidMissing) != 0, side == 5);
    const kline::Word words[] = {kline::Open,  kline::High,   kline::Low,
                                 kline::Close, kline::Volume, kline::Turnover};
    for (std::size_t k = 0; k < 6; ++k) {
      const int column = file.columns[k] + (k < 4 ? side : 0);
      const double expected =
          file.columns[k] < 0
              ? 0
              : numberOf(rows[i][static_cast<std::size_t>(column)], k < 4 ? file.shift : 0);
      ASSERT_EQ(std::bit_cast<double>(bar.words[words[k]]), expected)
          << "row " << i << " word " << words[k];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, RealBarFiles, ::testing::ValuesIn(kBarFiles));

struct TickFile {
  const char* path;
  std::size_t rows;
  const char* description;
  const char* code;
  const char* first;
  const char* last;
  bool header;
  std::vector<std::pair<int, TickColumnId>> columns;
  int shift;
};

using enum TickColumn;
const std::vector<std::pair<int, TickColumnId>> kTrade = {{1, {LastPrice}}, {2, {Volume}}};
const std::vector<std::pair<int, TickColumnId>> kIf = {
    {5, {LastPrice}}, {6, {Open}},           {7, {High}},        {8, {Low}},
    {9, {Settle}},    {10, {UpperLimit}},    {11, {LowerLimit}}, {12, {TotalVolume}},
    {13, {Volume}},   {14, {TotalTurnover}}, {15, {Turnover}},   {16, {OpenInterest}},
    {18, {PreClose}}, {19, {PreSettle}},     {21, {BidPrice}},   {22, {BidSize}},
    {23, {AskPrice}}, {24, {AskSize}}};

const TickFile kTickFiles[] = {
    {"cffex_if2101_tick_20210104.csv.gz", 27955, kCn, "IF2101.CFFEX", "2021-01-04T01:29:00.400Z",
     "2021-01-04T07:35:19.400Z", true, kIf, 0},
    {"cffex_if2101_tick_20210105.csv.gz", 28254, kCn, "IF2101.CFFEX", "2021-01-05T01:29:00.200Z",
     "2021-01-05T07:36:15.700Z", true, kIf, 0},
    {"comex_gc_201312_20131007_trade.csv.gz", 39702, "{}", "COMEX_GC_201312",
     "2013-10-07T00:00:00.276Z", "2013-10-07T23:59:52.934Z", false, kTrade, 0},
    {"comex_gc_201312_20131008_trade.csv.gz", 52038, "{}", "COMEX_GC_201312",
     "2013-10-08T00:00:00.374Z", "2013-10-08T23:59:07.794Z", false, kTrade, 0},
    {"czce_rm705_tick_20170320.csv",
     16979,
     kCn,
     "RM705",
     "2017-03-20T01:00:00.500Z",
     "2017-03-20T06:24:27.500Z",
     true,
     {{3, {LastPrice}},
      {4, {Volume}},
      {5, {BidPrice}},
      {6, {AskPrice}},
      {7, {BidSize}},
      {8, {AskSize}}},
     0},
    {"eurusd_oanda_20140508_quote.csv.gz",
     87833,
     "{}",
     "EURUSD_OANDA",
     "2014-05-08T00:00:08.715Z",
     "2014-05-08T23:59:49.008Z",
     false,
     {{1, {BidPrice}}, {2, {AskPrice}}},
     0},
    {"ibm_20131007_quote.csv.gz",
     109067,
     kUs,
     "IBM",
     "2013-10-07T08:00:00.054Z",
     "2013-10-08T00:00:00.122Z",
     false,
     {{1, {BidPrice}}, {2, {BidSize}}, {3, {AskPrice}}, {4, {AskSize}}},
     -4},
    {"ibm_20131007_trade.csv.gz", 24293, kUs, "IBM", "2013-10-07T08:00:30.270Z",
     "2013-10-07T23:26:07.550Z", false, kTrade, -4},
};

class RealTickFiles : public ::testing::TestWithParam<TickFile> {};

TEST_P(RealTickFiles, shouldLoadEveryRow) {
  SKIP_WITHOUT_DATA();
  const TickFile& file = GetParam();
  const std::string path = dataFolder() + "/ticks/" + file.path;
  const auto loaded = loadTicks(requestOf({path}, file.description));
  ASSERT_EQ(loaded.size(), 1U);
  const TickSeries& series = loaded[0].series;
  const auto rows = rowsOf(path, file.header, false);
  ASSERT_EQ(rows.size(), file.rows);
  ASSERT_EQ(series.rows(), file.rows);
  EXPECT_EQ(loaded[0].code, file.code);
  const auto msOf = [](const char* iso) {
    return QDateTime::fromString(QLatin1String(iso), Qt::ISODateWithMs).toMSecsSinceEpoch();
  };
  EXPECT_EQ(series.times.front(), msOf(file.first));
  EXPECT_EQ(series.times.back(), msOf(file.last));
  ASSERT_EQ(series.columns.size(), file.columns.size());
  for (std::size_t k = 0; k < file.columns.size(); ++k) {
    const auto& [column, id] = file.columns[k];
    const bool price = id.column == LastPrice || id.column == BidPrice || id.column == AskPrice;
    for (std::size_t i = 0; i < rows.size(); ++i)
      ASSERT_EQ(cellOf(series, i, id.column),
                numberOf(rows[i][static_cast<std::size_t>(column)], price ? file.shift : 0))
          << "row " << i << " column " << column;
  }
  for (std::size_t i = 1; i < rows.size(); ++i) ASSERT_GE(series.times[i], series.times[i - 1]);
}

INSTANTIATE_TEST_SUITE_P(Files, RealTickFiles, ::testing::ValuesIn(kTickFiles));

TEST(RealFiles, shouldMakeOneSeriesOfTheDaysOfOneInstrument) {
  SKIP_WITHOUT_DATA();
  std::vector<std::string> paths;
  for (const char* day : {"20131011", "20131007", "20131010", "20131008", "20131009"})
    paths.push_back(dataFolder() + "/bars/minute/spy/spy_" + day + "_1min_trade.csv");
  const auto loaded = loadBars(requestOf(paths, kUs));
  ASSERT_EQ(loaded.size(), 1U);
  EXPECT_EQ(loaded[0].series.bars.size(), 828U + 828 + 813 + 883 + 776);
  EXPECT_EQ(KLineView(loaded[0].series.bars.front()).tradingDay(), 20131007);
  EXPECT_EQ(KLineView(loaded[0].series.bars.back()).tradingDay(), 20131011);
}

TEST(RealFiles, shouldRecogniseEveryFileWithoutADescription) {
  SKIP_WITHOUT_DATA();
  for (const BarFile& file : kBarFiles) {
    const auto loaded = loadBars(requestOf({dataFolder() + "/bars/" + file.path}));
    ASSERT_EQ(loaded.size(), 1U) << file.path;
    EXPECT_EQ(loaded[0].series.bars.size(), file.rows) << file.path;
    EXPECT_EQ(loaded[0].series.periodMs, file.periodMs) << file.path;
  }
  for (const TickFile& file : kTickFiles) {
    const auto loaded = loadTicks(requestOf({dataFolder() + "/ticks/" + file.path}));
    ASSERT_EQ(loaded.size(), 1U) << file.path;
    EXPECT_EQ(loaded[0].series.rows(), file.rows) << file.path;
  }
}

}  // namespace
}  // namespace orvane
