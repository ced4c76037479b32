// The signals of sma_cross in the log: at which level they are told, and that they are counted
// whether or not anybody reads them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <sstream>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SmaCrossLog : public testing::Test {
 protected:
  /// The lines about signals that a run with so much volume an order logs at a level.
  std::vector<std::string> signalsOf(const std::string& volume, const std::string& level) {
    const std::string log = folder_ / ("log-" + volume + "-" + level + ".txt");
    const std::string report = folder_ / "report";
    const auto result = test::runProgram({"run", "-s", "sma_cross", "-p",
                                          R"({"fast": 1, "slow": 2, "volume": )" + volume + "}",
                                          "-b", "A.X=" + folder_.write("bars.csv", kBars), "--log",
                                          log, "--strategy-log-level", level, "--report", report});
    EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
    const auto runner = test::readReport(report)["runners"].toArray()[0].toObject();
    EXPECT_EQ(runner["env"].toObject()["signals"].toString(), "2");
    std::vector<std::string> lines;
    std::istringstream text(test::readFile(log));
    for (std::string line; std::getline(text, line);)
      if (line.find("signal ") != line.npos) lines.push_back(line.substr(line.find('[')));
    return lines;
  }

  // A close below the mean of two, then one above it, then one below it again.
  static constexpr const char* kBars =
      "datetime,open,high,low,close,volume\n"
      "2021-01-04 09:00,10,12,8,10,5\n"
      "2021-01-04 09:01,10,12,8,8,5\n"
      "2021-01-04 09:02,10,12,8,12,5\n"
      "2021-01-04 09:03,10,12,8,8,5\n"
      "2021-01-04 09:04,10,12,8,8,5\n";

  test::TempFolder folder_;
};

TEST_F(SmaCrossLog, shouldTellItsSignalsAtInfoWhereItDoesNotTrade) {
  EXPECT_THAT(
      signalsOf("0", "info"),
      ElementsAre(
          HasSubstr("[INFO ] Stg signal buy 0 A 1m at 2021-01-04 09:03:00.000Z close=12 fast=12 "
                    "slow=10"),
          HasSubstr("[INFO ] Stg signal sell 0 A 1m at 2021-01-04 09:04:00.000Z close=8 fast=8 "
                    "slow=10")));
  EXPECT_THAT(signalsOf("0", "warn"), IsEmpty());
}

TEST_F(SmaCrossLog, shouldTellItsSignalsAtDebugWhereItTrades) {
  EXPECT_THAT(signalsOf("1", "debug"), ElementsAre(HasSubstr("[DEBUG] Stg signal buy 1 A 1m at"),
                                                   HasSubstr("[DEBUG] Stg signal sell 1 A 1m at")));
  EXPECT_THAT(signalsOf("1", "info"), IsEmpty());
}

}  // namespace
}  // namespace orvane
