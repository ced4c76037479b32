#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"
#include "platform/market/files/DataFiles.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

/// Whether a file is taken for one of bars or of ticks, if nobody says so.
class FileKind : public testing::Test {
 protected:
  std::string kindOf(const std::string& text) {
    DataFileRequest request;
    request.paths = {folder_.write("f_20210104.csv", text)};
    try {
      loadBars(request);
    } catch (const OtherKindError&) {
      return "ticks";
    } catch (const DataFileError& error) {
      return error.what();
    }
    return "bars";
  }
  test::TempFolder folder_;
};

TEST_F(FileKind, shouldBeTicksWhenTheColumnsAreThoseOfAQuoteOrATrade) {
  EXPECT_EQ(kindOf("time,price,size\n09:30:00.5,1,2\n09:30:01,1,2\n"), "ticks");
  EXPECT_EQ(kindOf("time,bid,ask\n09:30:00.5,1,2\n09:30:01,1,2\n"), "ticks");
  EXPECT_EQ(kindOf("datetime,last,open,high,low,volume,bid1,ask1\n"
                   "2021-01-04 09:30:00.5,1,1,2,1,5,1,2\n2021-01-04 09:30:01,1,1,2,1,5,1,2\n"),
            "ticks")
      << "open, high and low are those of the day so far";
  EXPECT_EQ(kindOf("34200500,100.5,10,101,20\n34200900,100.5,1,101,7\n34201000,100,90,101,7\n"),
            "ticks")
      << "bid, bid size, ask, ask size";
  EXPECT_EQ(kindOf("34200500,100,101,3,5\n34200900,100,101,4,9\n34201000,100,101,4,4\n"), "ticks")
      << "bid, ask, bid size, ask size";
  EXPECT_EQ(kindOf("34200500,100.5,10\n34200900,100.5,1\n"), "ticks");
}

TEST_F(FileKind, shouldBeBarsWhenTheColumnsAreThoseOfABar) {
  EXPECT_EQ(kindOf("time,open,high,low,close\n09:30,1,2,1,2\n09:31,1,2,1,2\n"), "bars");
  EXPECT_EQ(kindOf("time,open,high,low,last,volume\n09:30,1,2,1,2,3\n09:31,1,2,1,2,3\n"), "bars");
  EXPECT_EQ(kindOf("date,open,high,low,last,bid,ask\n2021-01-04,1,2,1,2,2,3\n"
                   "2021-01-05,1,2,1,2,2,3\n"),
            "bars")
      << "days have the last quote, too";
  EXPECT_EQ(kindOf("34200000,1,2,1,2,5\n34260000,1,2,1,2,5\n"), "bars");
}

TEST_F(FileKind, shouldStayBarsWhenSomeRowsHaveFaults) {
  EXPECT_THAT(kindOf("34200000,1,2,1,2,5\n34260000,1,0.5,1,2,5\n34320000,1,2,1,2,5\n"),
              HasSubstr("f_20210104.csv:2: column \"3 (high)\": \"0.5\" is below the low, 1"));
  EXPECT_THAT(kindOf("time,open,high,low,volume\n09:30,1,2,1,2\n"),
              HasSubstr("no column for \"close\""));
}

TEST_F(FileKind, shouldBeToldToWhoeverPlaysTicksAsBars) {
  const auto path = folder_.write("t.csv",
                                  "datetime,last,bid1,ask1\n2021-01-04 09:30:00.5,1,1,2\n"
                                  "2021-01-04 09:30:01,2,1,2\n2021-01-04 09:31:01,3,1,2\n"
                                  "2021-01-04 09:32:00,3,1,2\n");
  const auto refused = test::runProgram({"run", "-s", "sma_cross", "--bars", path});
  EXPECT_EQ(refused.exitCode, kExitBadInput);
  EXPECT_EQ(refused.err, "orvane: " + path +
                             ": is a file of ticks, by its columns last, bid1, ask1; use --ticks "
                             "for it, or say \"kind\": \"bars\" if it is one of bars\n");
  const auto shown = test::runProgram({"inspect", path});
  EXPECT_EQ(shown.exitCode, kExitSuccess);
  EXPECT_THAT(shown.out, HasSubstr("ticks of T"));
  const auto bars = test::runProgram(
      {"data", "convert", path, "--to-period", "1m", "--to", "csv", "-o", folder_ / "b.csv"});
  EXPECT_EQ(bars.exitCode, kExitSuccess) << bars.err;
  EXPECT_THAT(bars.out, HasSubstr("2 bars of 1m"));
  EXPECT_THAT(test::readFile(folder_ / "b.csv"),
              HasSubstr("2021-01-04T09:30:00.000Z,2021-01-04T09:31:00.000Z,1,2,1,2,0,0,0,20210104,"
                        "T,1m,UTC\n2021-01-04T09:31:00.000Z,2021-01-04T09:32:00.000Z,3,3,3,3,"));
  EXPECT_EQ(test::runProgram({"run", "-s", "sma_cross", "-q", "--bars", folder_ / "b.csv",
                              "--strategy-log-level", "off"})
                .exitCode,
            kExitSuccess);
}

TEST_F(FileKind, shouldNotTakeBarsForTicksBesideAFileOfTicks) {
  const auto bars = folder_.write("b_1min.csv", test::barsCsv());
  const auto ticks = folder_.write("t.csv", "datetime,last\n2021-01-04 09:30:00.5,1\n");
  const auto result = test::runProgram({"data", "convert", bars, ticks, "-o", folder_ / "o.ovb"});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_EQ(result.err, "orvane: " + bars + " is a file of bars, but " + ticks +
                            ": is a file of ticks, by its columns last; convert them one by one\n");
}

}  // namespace
}  // namespace orvane
