// The example bar_fetcher: blocking fetches inside call-backs, as the command plays them.

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <regex>
#include <sstream>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

/// What bar_fetcher logged, a line each, from the code on.
std::vector<std::string> loggedBy(const std::string& log) {
  std::vector<std::string> lines;
  std::istringstream text(log);
  for (std::string line; std::getline(text, line);)
    if (const auto at = line.find("Stg "); at != std::string::npos)
      lines.push_back(line.substr(at + 4));
  return lines;
}

class BarFetcher : public testing::Test {
 protected:
  std::vector<std::string> run(std::vector<std::string> arguments) {
    const std::string log = folder_ / fmt::format("log{}.txt", ++runs_);
    const std::vector<std::string> more = {"--report", folder_ / "report",     "--log",
                                           log,        "--strategy-log-level", "info"};
    arguments.insert(arguments.begin(), "run");
    arguments.insert(arguments.end(), more.begin(), more.end());
    const auto result = test::runProgram(arguments);
    EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
    return loggedBy(test::readFile(log));
  }

  QJsonObject runner(int which) const {
    return test::readReport(folder_ / "report")["runners"].toArray()[which].toObject();
  }

  test::TempFolder folder_;
  int runs_ = 0;
};

TEST_F(BarFetcher, shouldSetEachHourAgainstTheMeanOfTheDaysBefore) {
  // Three days of two hours each; a day closes with its last hour: 12, 22 and 32.
  std::string csv = "datetime,open,high,low,close,volume\n";
  for (int day = 1; day <= 3; ++day)
    for (int hour = 1; hour <= 2; ++hour)
      csv += fmt::format("2021-01-{:02} {:02}:00:00,10,40,10,{},1\n", day + 3, hour + 9,
                         10 * day + hour);
  const auto lines = run({"-s", "bar_fetcher", "-p", R"({"days": 2})", "-b",
                          "A.X=" + folder_.write("hours.csv", csv)});
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_THAT(lines[0], HasSubstr("close=11 before the first day's end"));
  EXPECT_THAT(lines[1], HasSubstr("close=12 before the first day's end"));
  EXPECT_THAT(lines[2], HasSubstr("close=21 mean=12 deviation=+75.00% of 1 days, the last ended "
                                  "2021-01-05 00:00:00.000Z"));
  EXPECT_THAT(lines[3], HasSubstr("close=22 mean=12 deviation=+83.33% of 1 days"));
  EXPECT_THAT(lines[4], HasSubstr("close=31 mean=17 deviation=+82.35% of 2 days, the last ended "
                                  "2021-01-06 00:00:00.000Z"));
  EXPECT_THAT(lines[5], HasSubstr("close=32 mean=17 deviation=+88.24% of 2 days"));
  EXPECT_EQ(lines[6], "bar_fetcher: 6 fetches");
  EXPECT_EQ(runner(0)["env"].toObject()["fetches"].toString(), "6");
}

TEST_F(BarFetcher, shouldNeverSeeADayThatHasNotEndedAndGiveTheSameDigestOnAnyNumberOfThreads) {
  ASSERT_EQ(test::runProgram({"generate", "--out", folder_ / "", "--minutes", "60", "--days", "3",
                              "--instruments", "1"})
                .exitCode,
            kExitSuccess);
  QJsonObject config =
      QJsonDocument::fromJson(QByteArray::fromStdString(test::readFile(folder_ / "run.json")))
          .object();
  QJsonArray runners;
  for (int i = 0; i < 4; ++i)
    runners.append(QJsonObject{{"name", QString("fetcher%1").arg(i)},
                               {"strategy", "bar_fetcher"},
                               {"params", QJsonObject{{"bars", "10m"}, {"days", 2}}}});
  config["runners"] = runners;
  const std::string path =
      folder_.write("fetchers.json", QJsonDocument(config).toJson().toStdString());

  const std::regex shape(R"(.* at (\S+ \S+Z) close=.* the last ended (\S+ \S+Z))");
  std::vector<std::string> digests;
  std::vector<std::string> first;
  for (const int threads : {1, 4}) {
    auto lines = run({path, "--threads", std::to_string(threads)});
    int seen = 0;
    for (const std::string& line : lines) {
      std::smatch found;
      if (!std::regex_match(line, found, shape)) continue;
      ++seen;
      EXPECT_LE(found[2].str(), found[1].str()) << line;
    }
    EXPECT_GE(seen, 4 * 2 * 5);
    // The runners' lines come in any order, the lines themselves are the same.
    std::sort(lines.begin(), lines.end());
    if (first.empty()) first = lines;
    EXPECT_EQ(lines, first);
    for (std::size_t i = 0; i < 4; ++i) {
      const std::string digest = runner(static_cast<int>(i))["digest"].toString().toStdString();
      if (digests.size() <= i) digests.push_back(digest);
      EXPECT_EQ(digest, digests[i]) << threads << " threads, runner " << i;
    }
  }
}

TEST_F(BarFetcher, shouldEndWithFailureWithoutDataThatItCanUse) {
  const std::string bars = folder_.write("bars.csv", test::barsCsv());
  const auto result = test::runProgram({"run", "-s", "bar_fetcher", "-p", R"({"bars": "1x"})", "-b",
                                        "A.X=" + bars, "--report", folder_ / "report"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("cannot subscribe A bars 1x"));
}

}  // namespace
}  // namespace orvane
