#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "host/DataCsv.h"
#include "host/InputError.h"
#include "platform/fields/KLineView.h"
#include "platform/market/files/CacheFile.h"
#include "platform/market/files/DataFiles.h"
#include "tests/host/Program.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

using testing::HasSubstr;

DataFileRequest plainRequest(const std::string& path, DataFileRequest::Kind kind) {
  DataFileRequest request;
  request.kind = kind;
  request.paths = {path};
  return request;
}

/// Files that are converted, and what the converted ones are read as without a word on how.
class ConvertedCsv : public testing::Test {
 protected:
  /// Reads a text with options, converts it, and compares what both files hold, bit for bit.
  void expectSameBars(const std::string& name, const std::string& text,
                      const QJsonObject& description) {
    DataFileRequest request = plainRequest(folder_.write(name, text), DataFileRequest::Kind::Bars);
    request.description = description;
    DataSet data;
    data.bars = loadBars(request);
    ASSERT_EQ(data.bars.size(), 1U);
    expectSame(data);
  }
  void expectSame(const DataSet& data) {
    const std::string path = folder_ / "converted.csv";
    writeCsv(path, data);
    if (!data.bars.empty()) {
      const auto read = loadBars(plainRequest(path, DataFileRequest::Kind::Bars));
      ASSERT_EQ(read.size(), 1U);
      expectSame(data.bars.front(), read.front());
    } else {
      const auto read = loadTicks(plainRequest(path, DataFileRequest::Kind::Ticks));
      ASSERT_EQ(read.size(), 1U);
      expectSame(data.ticks.front(), read.front());
    }
  }
  static void expectSame(const LoadedBars& one, const LoadedBars& other) {
    EXPECT_EQ(one.code, other.code);
    EXPECT_EQ(one.series.timeZone, other.series.timeZone);
    EXPECT_EQ(one.series.periodMs, other.series.periodMs);
    ASSERT_EQ(one.series.bars.size(), other.series.bars.size());
    for (std::size_t i = 0; i < one.series.bars.size(); ++i)
      ASSERT_EQ(one.series.bars[i].words, other.series.bars[i].words) << "bar " << i;
    EXPECT_THAT(other.notes, testing::IsEmpty()) << "nothing is assumed";
  }
  static void expectSame(const LoadedTicks& one, const LoadedTicks& other) {
    EXPECT_EQ(one.code, other.code);
    EXPECT_EQ(one.series.timeZone, other.series.timeZone);
    EXPECT_EQ(one.series.columns, other.series.columns);
    EXPECT_EQ(one.series.times, other.series.times);
    EXPECT_EQ(one.series.tradingDays, other.series.tradingDays);
    EXPECT_EQ(one.series.cells, other.series.cells);
    EXPECT_THAT(other.notes, testing::IsEmpty());
  }

  test::TempFolder folder_;
};

TEST_F(ConvertedCsv, shouldKeepTheTimesOfDayBarsWhenReadWithoutAZone) {
  // Midnight in Shanghai is the day before in UTC.
  expectSameBars("x_day.csv",
                 "date,open,high,low,close,volume\n2015-04-16,7681,7790,7480.2,7707.8,116888\n"
                 "2015-04-17,7700,7710,7600,7650,100\n2015-04-20,7650,7660,7640,7651,5\n",
                 {{"timeZone", "Asia/Shanghai"}});
  const auto read = loadBars(plainRequest(folder_ / "converted.csv", DataFileRequest::Kind::Bars));
  const KLineView first(read[0].series.bars[0]);
  EXPECT_EQ(first.tradingDay(), 20150416);
  EXPECT_EQ(first.beginTime(), 1429113600000);
}

TEST_F(ConvertedCsv, shouldKeepWeeksOfAZoneThatChangesItsClocks) {
  expectSameBars("x_week.csv",
                 "date,open,high,low,close\n2021-03-08,1,2,1,2\n2021-03-15,2,3,1,2\n"
                 "2021-03-22,2,3,2,3\n",
                 {{"timeZone", "America/New_York"}, {"period", "week"}});
}

TEST_F(ConvertedCsv, shouldKeepBarsThatSessionsCutShortAndTradingDaysOfTheNight) {
  expectSameBars("rb_1min.csv",
                 "datetime,tradingDay,open,high,low,close,volume,code\n"
                 "2023-09-25 22:58:00,20230926,1,2,1,2,5,rb2401.SHFE\n"
                 "2023-09-25 22:59:00,20230926,1,2,1,2,5,rb2401.SHFE\n"
                 "2023-09-25 22:59:30,20230926,1,2,1,2,5,rb2401.SHFE\n"
                 "2023-09-26 09:01:00,20230926,1,2,1,2,5,rb2401.SHFE\n",
                 {{"timeZone", "Asia/Shanghai"}, {"stamp", "end"}, {"period", "1min"}});
}

TEST_F(ConvertedCsv, shouldKeepCodesOfGbkFilesAndOfPunctuation) {
  for (const std::string code : {"\xc2\xdd\xce\xc6.SHFE", "A \"b\";c,d|e"}) {
    std::string field = code;
    for (std::size_t at = 0; (at = field.find('"', at)) != std::string::npos; at += 2)
      field.insert(at, 1, '"');
    expectSameBars("gbk_1min.csv",
                   "datetime,code,open,high,low,close\n2021-01-04 09:30,\"" + field +
                       "\",1,2,1,2\n2021-01-04 09:31,\"" + field + "\",1,2,1,2\n",
                   {});
  }
}

TEST_F(ConvertedCsv, shouldKeepTicksOfOneTimeAndTheirLadder) {
  DataFileRequest request = plainRequest(
      folder_.write("t.csv",
                    "datetime,lastPrice,totalVolume,bidPrice1,bidSize1,askPrice2,code,market\n"
                    "2021-01-04 09:30:00.5,1.1,5,1.05,3,0,IF2101,CFFEX\n"
                    "2021-01-04 09:30:00.5,33.35399601000002,6,1.05,3,1.25,IF2101,CFFEX\n"),
      DataFileRequest::Kind::Ticks);
  request.description = {{"timeZone", "Asia/Shanghai"}};
  DataSet data;
  data.ticks = loadTicks(request);
  expectSame(data);
}

TEST_F(ConvertedCsv, shouldKeepEveryBitOfRandomSeries) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto below = [&random](std::uint64_t bound) { return random() % bound; };
  const auto price = [&] {
    // Of all magnitudes, and mostly with the seventeen digits that arithmetic leaves.
    const double unit = std::ldexp(1.0, static_cast<int>(below(80)) - 40);
    return static_cast<double>(below(std::uint64_t{1} << 53)) * unit;
  };
  constexpr const char* kZones[] = {"UTC", "Asia/Shanghai", "America/New_York", "UTC-05:30"};
  constexpr int64 kPeriods[] = {1, 500, 1000, 60'000, 300'000, 3'600'000, 86'400'000, 604'800'000};
  for (int run = 0; run < support::randomRuns(200); ++run) {
    LoadedBars loaded;
    loaded.code = "C" + std::to_string(below(1000));
    loaded.series.timeZone = kZones[below(std::size(kZones))];
    loaded.series.periodMs = kPeriods[below(std::size(kPeriods))];
    int64 time = static_cast<int64>(below(1'600'000'000'000)) + 315'532'800'000;
    for (std::size_t i = 0, count = below(30) + 1; i < count; ++i) {
      const int64 end =
          time + 1 + static_cast<int64>(below(static_cast<std::uint64_t>(loaded.series.periodMs)));
      IKLine bar;
      KLineWriter writer(bar);
      const double low = price(), high = low + price(), middle = low + (high - low) / 2;
      writer.setTimes(time, end);
      writer.setDayAndFlags(20200101 + static_cast<int>(below(28)), 0);
      for (const auto& [word, value] : {std::pair{kline::Open, middle},
                                        {kline::High, high},
                                        {kline::Low, low},
                                        {kline::Close, high},
                                        {kline::Volume, price()},
                                        {kline::Turnover, price()},
                                        {kline::OpenInterest, price()}})
        writer.set(word, value);
      loaded.series.bars.push_back(bar);
      time = end + static_cast<int64>(below(1000));
    }
    DataSet data;
    data.bars.push_back(std::move(loaded));
    expectSame(data);
    if (HasFatalFailure()) return;
  }
}

TEST_F(ConvertedCsv, shouldWriteNothingWhenTheDataWouldNotComeBackTheSame) {
  LoadedBars loaded;
  loaded.code = "X";
  loaded.series.timeZone = "UTC";
  loaded.series.periodMs = 60'000;
  IKLine bar;
  KLineWriter writer(bar);
  writer.setTimes(1'600'000'000'000, 1'600'000'060'000);
  writer.setDayAndFlags(20200913, 0);
  for (const auto word : {kline::Open, kline::High, kline::Close}) writer.set(word, 1);
  writer.set(kline::Low, 2);  // Kept by "tolerant".
  loaded.series.bars.push_back(bar);
  DataSet data;
  data.bars.push_back(loaded);
  const std::string path = folder_.write("kept.csv", "as it was");
  try {
    writeCsv(path, data);
    FAIL() << "was written";
  } catch (const InputError& error) {
    EXPECT_EQ(std::string(error.what()),
              path +
                  ": was not written, since CSV does not hold these data: line 2: column "
                  "\"high\": \"1\" is below the low, 2; convert them to a cache");
  }
  EXPECT_EQ(test::readFile(path), "as it was");
  const std::filesystem::directory_iterator files(folder_ / "");
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "nothing is left beside it";
}

TEST_F(ConvertedCsv, shouldWriteWhatALinkLeadsToAndKeepItsPermissions) {
  namespace fs = std::filesystem;
  const std::string target = folder_.write("target.csv", "as it was");
  constexpr auto kMode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write;
  fs::permissions(target, kMode);
  const std::string link = folder_ / "link.csv";
  fs::create_symlink("target.csv", link);
  const auto result = test::runProgram(
      {"data", "convert", folder_.write("x_1min.csv", test::barsCsv()), "--to", "csv", "-o", link});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(fs::read_symlink(link), "target.csv");
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_THAT(test::readFile(target), testing::StartsWith("openTime,until,"));
  EXPECT_EQ(fs::status(target).permissions(), kMode);
}

TEST_F(ConvertedCsv, shouldWriteTheCacheThatALinkLeadsTo) {
  namespace fs = std::filesystem;
  const std::string target = folder_.write("target.ovb", "as it was");
  const std::string link = folder_ / "link.ovb";
  fs::create_symlink("target.ovb", link);
  const auto result = test::runProgram(
      {"data", "convert", folder_.write("x_1min.csv", test::barsCsv()), "-o", link});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(fs::read_symlink(link), "target.ovb");
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_TRUE(isDataCache(link));
  EXPECT_EQ(openDataCache(link, true).bars.front().series.bars.size(), 30U);
}

TEST_F(ConvertedCsv, shouldReplaceFilesAlone) {
  namespace fs = std::filesystem;
  const std::string bars = folder_.write("x_1min.csv", test::barsCsv());
  const std::string pipe = folder_ / "pipe", piped = folder_ / "piped", dead = folder_ / "dead",
                    round = folder_ / "round";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("pipe", piped);
  fs::create_symlink("nowhere", dead);
  fs::create_symlink("round", round);
  for (const char* kind : {"csv", "cache"}) {
    const auto refusalOf = [&](const std::string& path) {
      const auto result = test::runProgram({"data", "convert", bars, "--to", kind, "-o", path});
      EXPECT_EQ(result.exitCode, kExitBadInput);
      EXPECT_EQ(result.out, "");
      return result.err;
    };
    for (const std::string& path : {pipe, piped})
      EXPECT_EQ(refusalOf(path),
                "orvane: --out: \"" + path + "\" is no ordinary file; name a file\n");
    for (const std::string& path : {dead, round})
      EXPECT_EQ(refusalOf(path),
                "orvane: --out: \"" + path + "\" is a link that leads nowhere; name a file\n");
  }
  EXPECT_TRUE(fs::is_fifo(fs::symlink_status(pipe)));
  for (const std::string& link : {piped, dead, round}) EXPECT_TRUE(fs::is_symlink(link)) << link;
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(ConvertedCsv, shouldSayWhatTheRowsAndTheOptionsContradict) {
  const std::string head = "openTime,until,open,high,low,close,tradingDay,code,period,timeZone\n";
  const std::string row = "2021-01-04T01:30:00Z,2021-01-04T01:31:00Z,1,2,1,2,20210104,X,1m,";
  const auto fault = [&](const std::string& text, const QJsonObject& description = {}) {
    DataFileRequest request =
        plainRequest(folder_.write("f.csv", head + text), DataFileRequest::Kind::Bars);
    request.description = description;
    try {
      loadBars(request);
    } catch (const DataFileError& error) {
      return std::string(error.what()).substr((folder_ / "f.csv").size());
    }
    return std::string();
  };
  EXPECT_EQ(fault(row + "Nowhere\n"), ":2: column \"timeZone\": \"Nowhere\" is no time zone");
  const std::string next = "2021-01-04T01:31:00Z,2021-01-04T01:32:00Z,1,2,1,2,20210104,X,";
  EXPECT_EQ(fault(row + "UTC\n" + next + "1m,Asia/Shanghai\n"),
            ":3: column \"timeZone\": \"Asia/Shanghai\" is another zone than \"UTC\" of the first "
            "row");
  EXPECT_EQ(fault(row + "UTC\n" + next + "5m,UTC\n"),
            ":3: column \"period\": \"5m\" is another period than \"1m\" of the first row");
  EXPECT_EQ(fault("2021-01-04T01:30:00Z,2021-01-04T01:30:00Z,1,2,1,2,20210104,X,1m,UTC\n"),
            ":2: column \"until\": \"2021-01-04T01:30:00Z\" is not after the begin of the bar");
  EXPECT_EQ(fault(row + "UTC\n", {{"timeZone", "Asia/Shanghai"}}),
            ": the file tells the zone \"UTC\", not \"Asia/Shanghai\"; leave \"timeZone\" out");
  EXPECT_EQ(fault(row + "UTC\n", {{"period", "5min"}}),
            ": the file tells a period of 1m; leave \"period\" out");
  EXPECT_THAT(fault(row + "UTC\n", {{"priceScale", 100}}), HasSubstr("no scale can change it"));
  EXPECT_EQ(fault(row + "UTC\n", {{"timeZone", "UTC"}, {"stamp", "end"}}), "") << "of no matter";
}

TEST_F(ConvertedCsv, shouldNoteWhatChangesNothing) {
  DataFileRequest request = plainRequest(
      folder_.write("f.csv",
                    "openTime,until,open,high,low,close,tradingDay,code,period,timeZone\n"
                    "2021-01-04T01:30:00Z,2021-01-04T01:31:00Z,1,2,1,2,20210104,X,1m,UTC\n"),
      DataFileRequest::Kind::Bars);
  request.description = {
      {"stamp", "end"}, {"side", "ask"}, {"date", "2021-01-05"}, {"priceTick", "0.2"}};
  EXPECT_THAT(
      loadBars(request).front().notes,
      testing::UnorderedElementsAre(
          request.paths[0] +
              ": \"stamp\", \"date\", \"priceTick\" changes nothing here, since the rows "
              "hold what was read already",
          request.paths[0] + ": \"side\" changes nothing here, since no bid and ask have columns"));
}

}  // namespace
}  // namespace orvane
