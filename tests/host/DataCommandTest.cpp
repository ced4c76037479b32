#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <algorithm>
#include <filesystem>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A generated session, and what a run of it leaves behind.
class DataCommand : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(test::runProgram(
                  {"generate", "--out", folder_ / "", "--minutes", "20", "--instruments", "1"})
                  .exitCode,
              0);
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "")) {
      const std::string name = entry.path().filename().string();
      if (name.ends_with("_1min.csv")) bars_ = entry.path().string();
      if (name.ends_with("_ticks.csv")) ticks_ = entry.path().string();
    }
    code_ = std::filesystem::path(bars_).stem().string();
    code_ = code_.substr(0, code_.find("_1min"));
  }

  /// The report of a run over some files, without what differs from run to run.
  QJsonObject run(const std::string& bars, const std::string& ticks,
                  std::vector<std::string> more = {}) {
    const std::string report = folder_ / "report" + std::to_string(++runs_);
    std::vector<std::string> all = {"run",
                                    "-s",
                                    "sma_cross",
                                    "-p",
                                    R"({"fast": 2, "slow": 4})",
                                    "-b",
                                    code_ + "=" + bars,
                                    "-t",
                                    code_ + "=" + ticks,
                                    "-r",
                                    report,
                                    "--strategy-log-level",
                                    "off"};
    all.insert(all.end(), more.begin(), more.end());
    const auto result = test::runProgram(all);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    QJsonObject json = test::readReport(report);
    json.remove("timing");
    return json;
  }
  /// Without what tells the files that were read.
  static QJsonObject withoutFiles(QJsonObject report) {
    QJsonArray data = report["data"].toArray();
    for (auto series : data) {
      QJsonObject object = series.toObject();
      for (const char* key : {"files", "hashes"}) object.remove(key);
      series = object;
    }
    report["data"] = data;
    return report;
  }
  static QString digestOf(const QJsonObject& report) {
    return report["runners"].toArray()[0].toObject()["digest"].toString();
  }
  test::ProgramResult convert(const std::string& file, const std::string& out,
                              std::vector<std::string> more = {}) {
    std::vector<std::string> all = {"data", "convert", file, "-o", out};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }
  const std::vector<std::string> reading_ = {"--timezone", "Asia/Shanghai", "--stamp", "end"};

  test::TempFolder folder_;
  std::string bars_, ticks_, code_;
  int runs_ = 0;
};

TEST_F(DataCommand, shouldGiveTheSameRunFromFilesFromCachesAndWithAFolderOfCaches) {
  const QJsonObject plain = run(bars_, ticks_, reading_);
  ASSERT_EQ(digestOf(plain).size(), 32);
  std::vector<std::string> cached = reading_;
  cached.insert(cached.end(), {"--cache", folder_ / "caches"});
  EXPECT_EQ(run(bars_, ticks_, cached), plain) << "the first makes them";
  EXPECT_EQ(run(bars_, ticks_, cached), plain) << "the second maps them";
  const std::filesystem::directory_iterator files(folder_ / "caches");
  EXPECT_EQ(std::distance(begin(files), end(files)), 2);

  ASSERT_EQ(convert(bars_, folder_ / "b.ovb", reading_).exitCode, 0);
  std::vector<std::string> asTicks = reading_;  // They have all that bars need, too.
  asTicks.push_back("--ticks");
  ASSERT_EQ(convert(ticks_, folder_ / "t.ovb", asTicks).exitCode, 0);
  const QJsonObject fromCaches = run(folder_ / "b.ovb", folder_ / "t.ovb");
  EXPECT_EQ(digestOf(fromCaches), digestOf(plain));
  EXPECT_EQ(withoutFiles(fromCaches), withoutFiles(plain));
  const QJsonObject bars = fromCaches["data"].toArray()[0].toObject();
  EXPECT_EQ(bars["files"].toString().toStdString(), folder_ / "b.ovb");
  EXPECT_EQ(bars["hashes"].toArray()[0].toObject()["file"].toString().toStdString(),
            folder_ / "b.ovb");
}

TEST_F(DataCommand, shouldTakeTheFolderOfCachesFromAConfiguration) {
  std::string config = test::readFile(folder_ / "run.json");
  config.insert(config.find('{') + 1, "\"cache\": \"caches\",");
  const std::string path = folder_.write("cached.json", config);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(test::runProgram({"run", path, "--strategy-log-level", "off"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "caches"));
}

TEST_F(DataCommand, shouldWriteACsvThatIsReadAsTheSame) {
  for (const std::string kind : {"--bars", "--ticks"}) {
    const std::string& file = kind == "--bars" ? bars_ : ticks_;
    std::vector<std::string> first = reading_, again = {"--timezone", "Asia/Shanghai", kind};
    first.push_back(kind);
    ASSERT_EQ(convert(file, folder_ / "1.ovb", first).exitCode, 0);
    ASSERT_EQ(convert(folder_ / "1.ovb", folder_ / "x_1min.csv", {"--to", "csv", kind}).exitCode,
              0);
    const auto result = convert(folder_ / "x_1min.csv", folder_ / "2.ovb", again);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    ASSERT_EQ(convert(folder_ / "2.ovb", folder_ / "y.csv", {"--to", "csv", kind}).exitCode, 0);
    EXPECT_EQ(test::readFile(folder_ / "x_1min.csv"), test::readFile(folder_ / "y.csv"));
    EXPECT_GT(test::readFile(folder_ / "y.csv").size(), 1000U);
  }
}

TEST_F(DataCommand, shouldPutBarsTogetherToALongerPeriod) {
  std::vector<std::string> more = reading_;
  more.insert(more.end(), {"--to-period", "5m"});
  const auto result = convert(bars_, folder_ / "b.ovb", more);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("4 bars of 5m"));
  EXPECT_THAT(result.out, Not(HasSubstr("note")));
  more.back() = "15m";
  EXPECT_THAT(
      convert(bars_, folder_ / "b15.ovb", more).out,
      HasSubstr(
          "  note   the last bar of 15m, from 2026-01-05T01:45:00.000Z on, is left out, since "
          "the data end at 2026-01-05T01:50:00.000Z, before it does; --keep-last keeps it\n"));
  more.back() = "30s";
  const auto shorter = convert(bars_, folder_ / "c.ovb", more);
  EXPECT_EQ(shorter.exitCode, kExitBadInput);
  EXPECT_THAT(shorter.err,
              HasSubstr("--to-period: bars of 30s cannot be made of bars of 1m; give a longer "
                        "period that whole bars of 1m fill"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "c.ovb"));
}

TEST_F(DataCommand, shouldRefuseWhatItCannotDo) {
  const auto same = convert(bars_, bars_);
  EXPECT_EQ(same.exitCode, kExitBadInput);
  EXPECT_THAT(same.err, HasSubstr("--out: "));
  const auto nowhere = convert(bars_, folder_ / "none/b.ovb");
  EXPECT_EQ(nowhere.exitCode, kExitBadInput);
  EXPECT_EQ(nowhere.out, "");
  EXPECT_EQ(nowhere.err, "orvane: --out: \"" + (folder_ / "none/b.ovb") +
                             "\" cannot be written: there is no folder \"" + (folder_ / "none") +
                             "\"; make it first\n");
  const auto folder = convert(bars_, folder_ / "");
  EXPECT_EQ(folder.exitCode, kExitBadInput);
  EXPECT_THAT(folder.err, HasSubstr("\" is a folder; name a file in it\n"));
  const auto alone = test::runProgram({"data"});
  EXPECT_EQ(alone.exitCode, kExitSuccess);
  EXPECT_THAT(alone.out, HasSubstr("convert"));
  EXPECT_THAT(alone.out, HasSubstr("inspect"));
  const auto missing = convert(folder_ / "none.csv", folder_ / "b.ovb");
  EXPECT_EQ(missing.exitCode, kExitBadInput);
  EXPECT_THAT(missing.err, HasSubstr("none.csv: cannot be read"));
}

TEST_F(DataCommand, shouldNameTheCacheThatWasGivenAndNotItsSource) {
  const std::string cache = folder_ / "b.ovb";
  ASSERT_EQ(convert(bars_, cache, reading_).exitCode, 0);
  const auto twice = test::runProgram({"run", "-s", "sma_cross", "-b", cache, cache});
  EXPECT_EQ(twice.exitCode, kExitBadInput);
  EXPECT_THAT(twice.err, testing::StartsWith("orvane: " + cache + ": its first row ("));
  EXPECT_THAT(twice.err, Not(HasSubstr(bars_)));
  const auto unknown = test::runProgram({"run", "-s", "sma_cross", "-b", cache, "-i",
                                         folder_.write("i.json", R"([{"code": "OTHER"}])")});
  EXPECT_THAT(unknown.err, testing::StartsWith("orvane: " + cache + ": unknown code \""));
}

TEST_F(DataCommand, shouldShowWhatACacheHolds) {
  ASSERT_EQ(convert(bars_, folder_ / "b.ovb", reading_).exitCode, 0);
  const auto shown = test::runProgram({"inspect", folder_ / "b.ovb"});
  EXPECT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("20 "));
  const std::string bytes = test::readFile(folder_ / "b.ovb");
  folder_.write("b.ovb", bytes.substr(0, bytes.size() / 2));
  const auto refused = test::runProgram({"inspect", "--bars", folder_ / "b.ovb"});
  EXPECT_EQ(refused.exitCode, kExitBadInput);
  EXPECT_THAT(refused.err, HasSubstr("b.ovb: is cut short: "));
}

}  // namespace
}  // namespace orvane
