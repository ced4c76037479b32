#include "host/FileAudit.h"

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FileAudit : public testing::Test {
 protected:
  orvane::FileAudit audit(const std::string& name, const std::string& text,
                          const QJsonObject& description = {}, double jump = 20) {
    DataFileRequest request;
    request.paths = {folder_.write(name, text)};
    request.description = description;
    return auditFile(request, false, jump);
  }
  /// Bars of four days with a break at noon; the lines of `left` are not there.
  static std::string fourDays(const std::vector<std::string>& left) {
    std::string text = "datetime,open,high,low,close,volume\n";
    for (int day = 4; day <= 7; ++day)
      for (const int minute : {570, 571, 572, 573, 780, 781, 782}) {
        const auto time = fmt::format("2021-01-{:02} {:02}:{:02}", day, minute / 60, minute % 60);
        if (std::find(left.begin(), left.end(), time) == left.end())
          text += time + ",10,11,9,10,5\n";
      }
    return text;
  }

  const test::TempFolder folder_;
};

TEST_F(FileAudit, shouldTellSessionsAndTheBarsThatAreMissingInThem) {
  const auto whole = audit("x_1min.csv", fourDays({}));
  ASSERT_EQ(whole.series.size(), 1U);
  EXPECT_EQ(whole.series[0].rows, 28U);
  EXPECT_EQ(whole.series[0].tradingDays, 4U);
  EXPECT_EQ(whole.series[0].sessions, "09:30-09:34,13:00-13:03");
  EXPECT_EQ(whole.series[0].holeCount, 0U) << "a break of every day is none";
  const auto holed = audit("x_1min.csv", fourDays({"2021-01-05 09:31", "2021-01-05 09:32"}));
  ASSERT_EQ(holed.series[0].holes.size(), 1U);
  EXPECT_EQ(holed.series[0].holes[0].from, 1609839060000) << "2021-01-05 09:31";
  EXPECT_EQ(holed.series[0].holes[0].missing, 2U);
  EXPECT_EQ(holed.series[0].missingBars, 2U);
}

TEST_F(FileAudit, shouldReadOnBehindRowsWithFaultsAndNameEach) {
  const auto its = audit("b_1min.csv",
                         "datetime,open,high,low,close,volume\n2021-01-04 09:30,1,2,1,2,5\n"
                         "2021-01-04 09:31,1,0.5,1,2,5\n2021-01-04 09:32,1,2,1,x,5\n"
                         "2021-01-04 09:33,1,2,1,2,5\n2021-01-04 09:33,1,2,1,2,5\n"
                         "2021-01-04 09:34,1,2,1,2,5,8,9\n2021-01-04 09:20,1,2,1,2,5\n"
                         "2021-01-04 09:36,1,2,0,2,0\n");
  EXPECT_EQ(its.unread, "");
  EXPECT_EQ(its.faults.count, 5U);
  EXPECT_THAT(its.faults.first,
              ElementsAre(HasSubstr("b_1min.csv:3: column \"high\": \"0.5\" is below the low, 1"),
                          HasSubstr(":4: column \"close\": \"x\" is not a number"),
                          HasSubstr(":6: column \"datetime\": \"2021-01-04 09:33\" repeats"),
                          HasSubstr(":7: 8 fields, but there are 6 columns"),
                          HasSubstr(":8: column \"datetime\": \"2021-01-04 09:20\" runs back")));
  EXPECT_EQ(its.duplicates, 1U);
  ASSERT_EQ(its.series.size(), 1U);
  EXPECT_EQ(its.series[0].rows, 3U);
  EXPECT_THAT(its.series[0].suspicious.at("price 0").first,
              ElementsAre("2021-01-04T09:36:00.000Z"));
  EXPECT_EQ(its.series[0].suspicious.at("volume 0").count, 1U);
}

TEST_F(FileAudit, shouldPassOverFaultyTicksAndCountRepeatedOnes) {
  const auto its = audit("t.csv",
                         "datetime,last,volume\n2021-01-04 09:30:00.5,1,1\n"
                         "2021-01-04 09:30:00.5,1,1\n2021-01-04 09:30:01,2,-1\n"
                         "2021-01-04 09:45:02,2,1\n");
  EXPECT_EQ(its.faults.count, 1U);
  EXPECT_EQ(its.duplicates, 1U);
  ASSERT_EQ(its.series.size(), 1U);
  EXPECT_TRUE(its.series[0].isTicks);
  EXPECT_EQ(its.series[0].rows, 3U);
  EXPECT_EQ(its.series[0].holeCount, 1U) << "a quarter of an hour";
}

TEST_F(FileAudit, shouldFindPricesThatJump) {
  std::string text = "date,open,high,low,close\n";
  for (int day = 1; day <= 20; ++day)
    text += fmt::format("2021-01-{:02},{},{},{},{}\n", day, day == 9 ? 100 : 10,
                        day == 9 ? 101 : 11, day == 9 ? 100 : 10, day == 9 ? 101 : 11);
  const auto its = audit("x_day.csv", text);
  EXPECT_THAT(its.series[0].suspicious.at("price jump").first,
              ElementsAre("2021-01-09T00:00:00.000Z from 11 to 100",
                          "2021-01-10T00:00:00.000Z from 101 to 10"));
  EXPECT_TRUE(audit("x_day.csv", text, {}, 200).series[0].suspicious.empty());
}

TEST_F(FileAudit, shouldTellWhetherNightSessionsWereRecognised) {
  const std::string rows =
      "2021-01-04 21:00,20210105,1,2,1,2\n2021-01-04 21:01,20210105,1,2,1,2\n"
      "2021-01-05 09:00,20210105,1,2,1,2\n2021-01-05 09:01,20210105,1,2,1,2\n";
  const auto known = audit("n_1min.csv", "datetime,tradingDay,open,high,low,close\n" + rows);
  EXPECT_EQ(known.series[0].nightDays, 1U);
  EXPECT_FALSE(known.series[0].hasLateRows);
  const auto unknown = audit("n_1min.csv", "datetime,something,open,high,low,close\n" + rows);
  EXPECT_EQ(unknown.series[0].nightDays, 0U);
  EXPECT_TRUE(unknown.series[0].hasLateRows);
  EXPECT_THAT(auditText(unknown, false), HasSubstr("night sessions: not recognised"));
  EXPECT_THAT(auditText(unknown, false), HasSubstr("passed over: something\n"));
}

TEST_F(FileAudit, shouldDrawInPlainCharactersWhereTheLocaleHasNoOthers) {
  const auto its = audit("p_day.csv",
                         "date,open,high,low,close\n2021-01-01,1,1,1,1\n2021-01-02,5,5,5,5\n"
                         "2021-01-03,9,9,9,9\n");
  const std::string plain = auditText(its, false);
  EXPECT_THAT(plain, HasSubstr("           9   |\n"));
  EXPECT_TRUE(std::all_of(plain.begin(), plain.end(), [](char c) { return c > 0; }));
  EXPECT_THAT(auditText(its, true), HasSubstr("█"));
}

TEST_F(FileAudit, shouldTellTheStateOfACache) {
  const auto bars = folder_.write("c_1min.csv", test::barsCsv());
  const std::vector<std::string> look = {"data", "inspect", bars};
  EXPECT_THAT(test::runProgram(look).out, HasSubstr("  cache: none\n"));
  ASSERT_EQ(test::runProgram({"data", "convert", bars, "-o", folder_ / "c_1min.ovb"}).exitCode, 0);
  EXPECT_THAT(test::runProgram(look).out,
              HasSubstr("  cache: " + (folder_ / "c_1min.ovb") + ": fresh\n"));
  folder_.write("c_1min.csv", test::barsCsv("2021-01-04 09:07:00,10.5,11.5,9.5,10.6,7"));
  EXPECT_THAT(test::runProgram(look).out,
              HasSubstr("c_1min.ovb: its source " + bars + " has changed"));
  EXPECT_THAT(test::runProgram({"data", "inspect", folder_ / "c_1min.ovb"}).out,
              HasSubstr("  cache: its source " + bars + " has changed\n"));
}

TEST_F(FileAudit, shouldLookForTheCacheOfACodeWithItsMarket) {
  const auto bars = folder_.write("IF2101.CFFEX.csv", test::barsCsv());
  const std::string cache = folder_ / "IF2101.CFFEX.ovb";
  ASSERT_EQ(test::runProgram({"data", "convert", bars, "-o", cache}).exitCode, 0);
  EXPECT_THAT(test::runProgram({"data", "inspect", bars}).out,
              HasSubstr("  cache: " + cache + ": fresh\n"));
}

TEST_F(FileAudit, shouldBeJsonForPrograms) {
  const auto bars = folder_.write("j_1min.csv", test::barsCsv());
  const auto result = test::runProgram({"data", "inspect", bars, "--json"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  const QJsonArray all = QJsonDocument::fromJson(QByteArray::fromStdString(result.out)).array();
  ASSERT_EQ(all.size(), 1);
  const QJsonObject series = all[0].toObject()["series"].toArray()[0].toObject();
  EXPECT_EQ(series["rows"].toInt(), 30);
  EXPECT_EQ(series["period"].toString(), "1m");
  EXPECT_EQ(series["first"].toString(), "2021-01-04T09:01:00.000Z");
  const auto missing = test::runProgram({"data", "inspect", folder_ / "none.csv"});
  EXPECT_EQ(missing.exitCode, kExitBadInput);
  EXPECT_THAT(missing.out, HasSubstr("cannot be read: " + (folder_ / "none.csv")));
}

}  // namespace
}  // namespace orvane
