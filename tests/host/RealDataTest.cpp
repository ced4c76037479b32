#include <gtest/gtest.h>
#include <zlib.h>

#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <tuple>

#include "tests/host/Program.h"

namespace orvane {
namespace {

constexpr bool kBars = true, kTicks = false;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// A file of the real data as its own README describes it, with its first and last row.
struct RealFile {
  const char* path;
  bool isBars;
  int headerLines;
  const char* timeZone;
  const char* priceScale;
  const char* stampKey;  ///< Which time of a record the file's own one is.
  const char* firstTime;
  const char* lastTime;
  double firstPrice, lastPrice;  ///< Close or last price; `kNone` where a row has none.
};

const RealFile kFiles[] = {
    {"bars/daily/aapl_1998_2021_day.csv", kBars, 0, "America/New_York", "10000", "begin",
     "1998-01-02T05:00:00.000Z", "2021-03-31T04:00:00.000Z", 16.25, 122.15},
    {"bars/daily/ibm_1998_2021_day.csv", kBars, 0, "America/New_York", "10000", "begin",
     "1998-01-02T05:00:00.000Z", "2021-03-31T04:00:00.000Z", 105.75, 133.26},
    {"bars/daily/spy_1998_2021_day.csv", kBars, 0, "America/New_York", "10000", "begin",
     "1998-01-02T05:00:00.000Z", "2021-03-31T04:00:00.000Z", 97.36, 396.33},
    {"bars/daily/btcusd_coinbase_2014_2018_day.csv", kBars, 0, "UTC", "", "begin",
     "2014-12-01T00:00:00.000Z", "2018-08-13T00:00:00.000Z", 370.0, 6253.67},
    {"bars/daily/cffex_ic_hot_2015_2021_day.csv", kBars, 1, "Asia/Shanghai", "", "begin",
     "2015-04-15T16:00:00.000Z", "2021-03-22T16:00:00.000Z", 7707.8, 6188.0},
    {"bars/daily/csi300_2013_2018_day.csv", kBars, 1, "Asia/Shanghai", "", "begin",
     "2013-01-03T16:00:00.000Z", "2018-11-08T16:00:00.000Z", 2524.409, 3167.4442},
    {"bars/daily/eurusd_fxcm_2007_2018_day_bidask.csv", kBars, 0, "UTC-05:00", "", "begin",
     "2007-03-30T05:00:00.000Z", "2018-07-04T05:00:00.000Z", 1.33581, 1.16559},
    {"bars/daily/sse_600000_2014_2020_day.csv", kBars, 1, "Asia/Shanghai", "", "begin",
     "2014-01-01T16:00:00.000Z", "2020-02-12T16:00:00.000Z", 5.3472, 10.76},
    {"bars/minute/bb_20131206_20140102_1min.csv", kBars, 1, "Asia/Shanghai", "", "end",
     "2013-12-06T01:01:00.000Z", "2014-01-02T07:00:00.000Z", 124.15, 121.55},
    {"bars/minute/cffex_if_20131206_20131209_1min.csv", kBars, 1, "Asia/Shanghai", "", "end",
     "2013-12-06T01:16:00.000Z", "2013-12-09T07:15:00.000Z", 2476.6, 2461.4},
    {"bars/minute/cffex_if_20131206_20131209_5sec.csv", kBars, 1, "Asia/Shanghai", "", "end",
     "2013-12-06T01:15:00.000Z", "2013-12-09T07:15:00.000Z", 2482.2, 2461.4},
    {"bars/minute/cffex_if_hot_2010_2022_5min.csv.gz", kBars, 1, "Asia/Shanghai", "", "end",
     "2010-04-16T01:20:00.000Z", "2022-03-23T07:00:00.000Z", 3454.0, 4241.2},
    {"bars/minute/shfe_rb2401_2023_1min.csv", kBars, 1, "Asia/Shanghai", "", "end",
     "2023-09-25T01:01:00.000Z", "2023-10-10T07:00:00.000Z", 3779.0, 3610.0},
    {"bars/minute/sse_composite_2017_1min.csv.gz", kBars, 1, "Asia/Shanghai", "", "end",
     "2017-03-03T05:22:00.000Z", "2017-07-31T07:00:00.000Z", 3215.12, 3273.02},
    {"bars/minute/spy/spy_20131007_1min_trade.csv", kBars, 0, "America/New_York", "10000", "begin",
     "2013-10-07T08:00:00.000Z", "2013-10-07T23:59:00.000Z", 167.27, 167.3},
    {"bars/minute/spy/spy_20131008_1min_trade.csv", kBars, 0, "America/New_York", "10000", "begin",
     "2013-10-08T08:00:00.000Z", "2013-10-08T23:59:00.000Z", 167.42, 165.95},
    {"bars/minute/spy/spy_20131009_1min_trade.csv", kBars, 0, "America/New_York", "10000", "begin",
     "2013-10-09T08:00:00.000Z", "2013-10-09T23:59:00.000Z", 165.99, 165.72},
    {"bars/minute/spy/spy_20131010_1min_trade.csv", kBars, 0, "America/New_York", "10000", "begin",
     "2013-10-10T08:00:00.000Z", "2013-10-10T23:59:00.000Z", 166.5, 168.75},
    {"bars/minute/spy/spy_20131011_1min_trade.csv", kBars, 0, "America/New_York", "10000", "begin",
     "2013-10-11T08:00:00.000Z", "2013-10-11T23:59:00.000Z", 168.98, 170.41},
    {"bars/minute/es_201312/es_201312_20131006_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-06T22:00:00.000Z", "2013-10-06T23:59:00.000Z", 1675.25, 1676.5},
    {"bars/minute/es_201312/es_201312_20131006_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-06T19:00:00.000Z", "2013-10-06T23:59:00.000Z", 1681.5, 1676.5},
    {"bars/minute/es_201312/es_201312_20131007_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-07T00:00:00.000Z", "2013-10-07T23:59:00.000Z", 1676.5, 1667.75},
    {"bars/minute/es_201312/es_201312_20131007_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-07T00:00:00.000Z", "2013-10-07T23:59:00.000Z", 1676.5, 1667.5},
    {"bars/minute/es_201312/es_201312_20131008_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-08T00:00:00.000Z", "2013-10-08T23:59:00.000Z", 1667.5, 1654.5},
    {"bars/minute/es_201312/es_201312_20131008_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-08T00:00:00.000Z", "2013-10-08T23:59:00.000Z", 1667.25, 1654.5},
    {"bars/minute/es_201312/es_201312_20131009_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-09T00:00:00.000Z", "2013-10-09T23:59:00.000Z", 1654.5, 1652.0},
    {"bars/minute/es_201312/es_201312_20131009_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-09T00:00:00.000Z", "2013-10-09T23:59:00.000Z", 1654.5, 1651.75},
    {"bars/minute/es_201312/es_201312_20131010_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-10T00:00:00.000Z", "2013-10-10T23:59:00.000Z", 1651.75, 1682.0},
    {"bars/minute/es_201312/es_201312_20131010_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-10T00:00:00.000Z", "2013-10-10T23:59:00.000Z", 1651.75, 1682.0},
    {"bars/minute/es_201312/es_201312_20131011_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-11T00:00:00.000Z", "2013-10-11T21:14:00.000Z", 1683.0, 1700.0},
    {"bars/minute/es_201312/es_201312_20131011_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2013-10-11T00:00:00.000Z", "2013-10-11T21:15:00.000Z", 1682.75, kNone},
    {"bars/minute/btcusd_coinbase/btcusd_20180404_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2018-04-04T00:00:00.000Z", "2018-04-04T23:58:00.000Z", 7424.9, 6791.67},
    {"bars/minute/btcusd_coinbase/btcusd_20180404_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2018-04-04T00:00:00.000Z", "2018-04-04T16:47:00.000Z", 7422.0, 6894.01},
    {"bars/minute/btcusd_coinbase/btcusd_20180405_1min_quote.csv", kBars, 0, "UTC", "", "begin",
     "2018-04-05T00:00:00.000Z", "2018-04-05T23:58:00.000Z", 6778.0, 6782.6},
    {"bars/minute/btcusd_coinbase/btcusd_20180405_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2018-04-05T00:00:00.000Z", "2018-04-05T23:59:00.000Z", 6778.01, 6785.85},
    {"bars/minute/btcusd_coinbase/btcusd_20180406_1min_trade.csv", kBars, 0, "UTC", "", "begin",
     "2018-04-06T00:00:00.000Z", "2018-04-06T23:59:00.000Z", 6785.85, 6619.01},
    {"ticks/cffex_if2101_tick_20210104.csv.gz", kTicks, 1, "Asia/Shanghai", "", "time",
     "2021-01-04T01:29:00.400Z", "2021-01-04T07:35:19.400Z", 5230.0, 5260.0},
    {"ticks/cffex_if2101_tick_20210105.csv.gz", kTicks, 1, "Asia/Shanghai", "", "time",
     "2021-01-05T01:29:00.200Z", "2021-01-05T07:36:15.700Z", 5250.0, 5359.8},
    {"ticks/comex_gc_201312_20131007_trade.csv.gz", kTicks, 0, "UTC", "", "time",
     "2013-10-07T00:00:00.276Z", "2013-10-07T23:59:52.934Z", 1313.7, 1323.4},
    {"ticks/comex_gc_201312_20131008_trade.csv.gz", kTicks, 0, "UTC", "", "time",
     "2013-10-08T00:00:00.374Z", "2013-10-08T23:59:07.794Z", 1323.4, 1320.6},
    {"ticks/czce_rm705_tick_20170320.csv", kTicks, 1, "Asia/Shanghai", "", "time",
     "2017-03-20T01:00:00.500Z", "2017-03-20T06:24:27.500Z", 2374.0, 2412.0},
    {"ticks/eurusd_oanda_20140508_quote.csv.gz", kTicks, 0, "UTC", "", "time",
     "2014-05-08T00:00:08.715Z", "2014-05-08T23:59:49.008Z", kNone, kNone},
    {"ticks/ibm_20131007_quote.csv.gz", kTicks, 0, "America/New_York", "10000", "time",
     "2013-10-07T08:00:00.054Z", "2013-10-08T00:00:00.122Z", kNone, kNone},
    {"ticks/ibm_20131007_trade.csv.gz", kTicks, 0, "America/New_York", "10000", "time",
     "2013-10-07T08:00:30.270Z", "2013-10-07T23:26:07.550Z", 181.52, 181.99},
};

void PrintTo(const RealFile& file, std::ostream* out) { *out << file.path; }

std::filesystem::path dataFolder() {
  const char* given = std::getenv("ORVANE_DATA_DIR");
  return given != nullptr ? given : ORVANE_TEST_DATA;
}

/// Lines with anything on them, counted without the reader that is tested.
std::int64_t linesOf(const std::string& path) {
  const gzFile file = gzopen(path.c_str(), "rb");
  std::int64_t lines = 0;
  bool isEmpty = true;
  for (int c = gzgetc(file); c >= 0; c = gzgetc(file)) {
    if (c == '\n') {
      lines += isEmpty ? 0 : 1;
      isEmpty = true;
    } else if (c != '\r') {
      isEmpty = false;
    }
  }
  gzclose(file);
  return lines + (isEmpty ? 0 : 1);
}

std::vector<std::string> argumentsFor(const RealFile& file) {
  std::vector<std::string> result = {"run",
                                     "-s",
                                     "sma_cross",
                                     "--strategy-log-level",
                                     "off",
                                     file.isBars ? "--bars" : "--ticks",
                                     (dataFolder() / file.path).string(),
                                     "--timezone",
                                     file.timeZone};
  if (*file.priceScale != 0) result.insert(result.end(), {"--price-scale", file.priceScale});
  if (file.isBars && std::string(file.path).find("day") == std::string::npos)
    result.insert(result.end(), {"--stamp", std::string(file.stampKey) == "end" ? "end" : "start"});
  return result;
}

class RealData : public testing::TestWithParam<RealFile> {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(dataFolder() / GetParam().path))
      GTEST_SKIP() << "no real data at " << dataFolder();
  }

  QJsonObject run(const std::string& report) const {
    auto arguments = argumentsFor(GetParam());
    arguments.insert(arguments.end(), {"--report", folder_ / report});
    const auto result = test::runProgram(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return test::readReport(folder_ / report);
  }

  test::TempFolder folder_;
};

TEST_P(RealData, shouldReachTheStrategyRowForRow) {
  const RealFile& file = GetParam();
  const QJsonObject runner = run("report")["runners"].toArray()[0].toObject();
  const std::int64_t rows = linesOf((dataFolder() / file.path).string()) - file.headerLines;
  EXPECT_EQ(runner[file.isBars ? "bars" : "ticks"].toInteger(), rows);
  EXPECT_EQ(runner["env"].toObject()[file.isBars ? "bars" : "ticks"].toString().toStdString(),
            std::to_string(rows));
  const QJsonArray list = runner["series"].toArray();
  ASSERT_EQ(list.size(), 1);
  const QJsonObject series = list[0].toObject();
  for (const auto& [key, time, price] : {std::tuple{"first", file.firstTime, file.firstPrice},
                                         {"last", file.lastTime, file.lastPrice}}) {
    const QJsonObject record = series[key].toObject();
    EXPECT_EQ(record[file.stampKey].toString().toStdString(), time) << key;
    if (std::isnan(price)) continue;
    EXPECT_EQ(record[file.isBars ? "close" : "last"].toDouble(), price) << key;
  }
}

TEST_P(RealData, shouldGiveTheSameReportTwiceButForItsTimings) {
  QJsonObject one = run("one"), other = run("other");
  EXPECT_EQ(one["runners"].toArray()[0].toObject()["digest"].toString().size(), 32);
  one.remove("timing");
  other.remove("timing");
  EXPECT_EQ(one, other);
}

INSTANTIATE_TEST_SUITE_P(Files, RealData, testing::ValuesIn(kFiles), [](const auto& instance) {
  std::string name = std::filesystem::path(instance.param.path).filename().string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); },
      '_');
  return name;
});

TEST(RealDataSeries, shouldJoinTheFilesOfOneCodeInTimeOrder) {
  const auto folder = dataFolder() / "bars/minute/spy";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no real data at " << dataFolder();
  std::vector<std::string> arguments = {
      "run",   "-s",         "sma_cross",        "--strategy-log-level",
      "off",   "--timezone", "America/New_York", "--price-scale",
      "10000", "--bars"};
  std::int64_t rows = 0;
  // Newest file first: the order on the command line must not matter.
  for (const char* day : {"11", "10", "09", "08", "07"}) {
    arguments.push_back((folder / (std::string("spy_201310") + day + "_1min_trade.csv")).string());
    rows += linesOf(arguments.back());
  }
  const test::TempFolder temp;
  arguments.insert(arguments.end(), {"--report", temp / "report"});
  const auto result = test::runProgram(arguments);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const QJsonObject runner = test::readReport(temp / "report")["runners"].toArray()[0].toObject();
  ASSERT_EQ(runner["series"].toArray().size(), 1);
  EXPECT_EQ(runner["bars"].toInteger(), rows);
}

}  // namespace
}  // namespace orvane
