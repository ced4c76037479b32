// What `orvane data convert` makes of the end of the data, and of ticks without a last price.

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class LongerData : public testing::Test {
 protected:
  test::ProgramResult convert(const std::string& file, const std::string& period,
                              const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all = {"data", "convert", file, "--to-period", period,         "--to",
                                    "csv",  "--out",   out_, "--timezone",  "Asia/Shanghai"};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }
  /// Hourly bars of days that end at 15:00, but for the last.
  std::string hoursOf(int days, int lastHour) const {
    std::string text = "datetime,open,high,low,close,volume\n";
    for (int day = 4; day < 4 + days; ++day)
      for (int hour = 9; hour <= (day + 1 < 4 + days ? 15 : lastHour); ++hour)
        text +=
            fmt::format("2021-01-{:02} {:02}:00,{},{},1,{},10\n", day, hour, hour, hour + 1, hour);
    return folder_.write("x_1h.csv", text);
  }
  void expectRefused(const test::ProgramResult& result, const std::string& message) const {
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, EndsWith(message + "\n"));
  }

  const test::TempFolder folder_;
  const std::string out_ = folder_ / "out.csv";
  const std::string ended_ =
      "openTime,until,open,high,low,close,volume,turnover,openInterest,"
      "tradingDay,code,period,timeZone\n";
};

TEST_F(LongerData, shouldHaveTheLastDayWhereItEndsAsTheDaysBeforeIt) {
  const auto result = convert(hoursOf(5, 15), "day", {"--stamp", "end"});
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("5 bars of 1d"));
  EXPECT_THAT(result.out,
              HasSubstr("  note   the last bar of day, from 2021-01-07T16:00:00.000Z on, counts as "
                        "whole: 2021-01-08 ends at 15:00, no earlier than the 4 days before it\n"));
  EXPECT_THAT(
      test::readFile(out_),
      EndsWith("2021-01-07T16:00:00.000Z,2021-01-08T16:00:00.000Z,9,16,1,15,70,0,0,20210108,"
               "X,1d,Asia/Shanghai\n"));
}

TEST_F(LongerData, shouldLeaveOutALastDayThatEndsEarlierUnlessItIsToBeKept) {
  const std::string file = hoursOf(5, 14);
  const auto left = convert(file, "day", {"--stamp", "end"});
  EXPECT_THAT(left.out, HasSubstr("4 bars of 1d"));
  EXPECT_THAT(left.out,
              HasSubstr("  note   the last bar of day, from 2021-01-07T16:00:00.000Z on, is left "
                        "out, since the data end at 2021-01-08T06:00:00.000Z, before it does; "
                        "--keep-last keeps it\n"));
  const auto kept = convert(file, "day", {"--stamp", "end", "--keep-last"});
  EXPECT_THAT(kept.out, HasSubstr("5 bars of 1d"));
  EXPECT_THAT(kept.out, HasSubstr("is kept, though the data end at 2021-01-08T06:00:00.000Z\n"));
  EXPECT_THAT(test::readFile(out_), HasSubstr(",9,15,1,14,60,0,0,20210108,X,1d,"));
  expectRefused(
      convert(hoursOf(1, 14), "day"),
      "--to-period: the data of \"X\" make no whole bar of day; --keep-last keeps the one "
      "that they begin");
}

TEST_F(LongerData, shouldSayWhatTicksLackForBars) {
  const std::string quotes =
      folder_.write("q.csv",
                    "datetime,bid1,ask1\n2021-01-04 09:30:00.5,1.1,1.2\n"
                    "2021-01-04 09:30:01,1.3,1.6\n2021-01-04 09:31:00,2,3\n");
  expectRefused(convert(quotes, "1m"),
                "--to-period: the ticks of \"Q\" make no whole bar of 1m: bars are made of last "
                "prices, and the ticks have only bidPrice1, askPrice1; --of bid, ask or mid makes "
                "bars of quotes");
  const std::string still = folder_.write("s.csv",
                                          "datetime,last,volume\n2021-01-04 09:30:00.5,1.1,0\n"
                                          "2021-01-04 09:31:00,1.3,0\n");
  expectRefused(convert(still, "1m"),
                "no tick has a last price above 0 and a volume, or a total volume that grew");
  expectRefused(convert(still, "1m", {"--of", "mid"}),
                "--of: \"mid\" needs the column bidPrice1, and the ticks have lastPrice, volume");
}

TEST_F(LongerData, shouldMakeBarsOfQuotes) {
  const std::string quotes = folder_.write(
      "q.csv",
      "datetime,bid1,ask1\n2021-01-04 09:30:00.5,1.1,1.2\n"
      "2021-01-04 09:30:01,1.3,1.6\n2021-01-04 09:30:02,0,9\n2021-01-04 09:31:00,2,3\n");
  const std::vector<std::pair<const char*, const char*>> bars = {
      {"bid", "1.1,1.3,1.1,1.3,0"}, {"ask", "1.2,9,1.2,9,0"}, {"mid", "1.15,1.45,1.15,1.45,0"}};
  for (const auto& [side, prices] : bars) {
    const auto result = convert(quotes, "1m", {"--of", side});
    EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
    EXPECT_EQ(test::readFile(out_), ended_ + "2021-01-04T01:30:00.000Z,2021-01-04T01:31:00.000Z," +
                                        prices + ",0,0,20210104,Q,1m,Asia/Shanghai\n");
  }
}

TEST_F(LongerData, shouldHoldASideWithinItsDayWhereEachRowNamesOne) {
  const std::string quotes =
      folder_.write("q.csv",
                    "datetime,bid1,ask1\n2021-01-04 09:30:00,1,0\n2021-01-04 09:30:01,0,2\n"
                    "2021-01-04 09:30:02,0,4\n2021-01-04 09:30:03,3,0\n2021-01-05 09:30:00,0,8\n"
                    "2021-01-05 09:30:01,6,0\n2021-01-06 09:30:00,6,0\n");
  const auto result = convert(quotes, "1m", {"--of", "mid"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_EQ(test::readFile(out_),
            ended_ +
                "2021-01-04T01:30:00.000Z,2021-01-04T01:31:00.000Z,1.5,3.5,1.5,3.5,0,0,0,20210104,"
                "Q,1m,Asia/Shanghai\n"
                "2021-01-05T01:30:00.000Z,2021-01-05T01:31:00.000Z,7,7,7,7,0,0,0,20210105,Q,1m,"
                "Asia/Shanghai\n");
}

TEST_F(LongerData, shouldAskWhetherALargeMMeansMonths) {
  for (const char* period : {"1M", "M", "5 M"})
    expectRefused(convert(hoursOf(2, 15), period),
                  fmt::format("--to-period: \"{}\" may mean minutes, which are \"{}m\", or months, "
                              "of which no bars can be made",
                              period, std::string(period, std::strlen(period) - 1)));
  expectRefused(convert(hoursOf(2, 15), "1MIN"),
                "--to-period: bars of 1MIN cannot be made of bars of 1h; give a longer period that "
                "whole bars of 1h fill");
}

TEST_F(LongerData, shouldRefuseOptionsThatWouldChangeNothing) {
  const std::string hours = hoursOf(2, 15);
  const auto plain = [&](const std::vector<std::string>& more) {
    std::vector<std::string> all = {"data", "convert", hours, "-o", out_};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  };
  expectRefused(plain({"--keep-last"}),
                "--keep-last: is for bars of a longer period; give --to-period");
  expectRefused(plain({"--of", "bid"}), "--of: is for bars of a longer period; give --to-period");
  expectRefused(
      plain({"--of", "bid", "--to-period", "day"}),
      "--of: \"bid\" is for ticks, and \"X\" has bars; --side chooses for bars of bid and "
      "ask");
  expectRefused(plain({"--to-period", "1h"}),
                "--to-period: the bars are of 1h already; leave \"1h\" out");
}

}  // namespace
}  // namespace orvane
