// What cannot be written is told, and takes nothing else along.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QJsonArray>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class FailedWrite : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> more, const test::ProgramLimits& limits = {}) {
    std::vector<std::string> all = {
        "run", "-s",           "sma_cross", "-p",   R"({"fast": 2, "slow": 4})",
        "-b",  "A.X=" + bars_, "--report",  report_};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all, {}, limits);
  }

  /// The report tells of the failure, and the rest of it stands there as ever.
  void expectReported(const std::string& failure) const {
    const QJsonObject report = test::readReport(report_);
    EXPECT_EQ(report["outcome"].toString(), "failed");
    EXPECT_THAT(report["failures"].toArray()[0].toString().toStdString(), HasSubstr(failure));
    EXPECT_EQ(report["runners"].toArray()[0].toObject()["bars"].toInt(), 30);
    EXPECT_TRUE(fs::exists(report_ + "/trades.csv"));
    EXPECT_TRUE(fs::exists(report_ + "/equity.csv"));
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string report_ = folder_ / "report";
};

TEST_F(FailedWrite, shouldPlayOnAndReportWhenTheLogIsFull) {
  const auto result = run({"--log", "/dev/full"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("orvane: --log /dev/full: "));
  EXPECT_THAT(result.err, HasSubstr("could not be written: No space left on device"));
  EXPECT_THAT(result.out, HasSubstr("runner sma_cross (sma_cross): Stopped"));
  expectReported("/dev/full");
}

TEST_F(FailedWrite, shouldPlayOnAndReportWhenTheStoreCannotGrow) {
  const std::string store = folder_ / "store.db";
  ASSERT_EQ(run({"--store", store}).exitCode, kExitSuccess);
  const auto size = static_cast<long>(fs::file_size(store));
  ASSERT_GT(size, static_cast<long>(fs::file_size(report_ + "/report.json")));
  fs::remove_all(report_);
  const auto result = run({"--store", store}, {{}, size});
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
  EXPECT_THAT(result.err, HasSubstr("orvane: store " + store));
  expectReported(store);
}

TEST_F(FailedWrite, shouldPlayOnAndReportWhenTheDictionaryCannotGrow) {
  const std::string dictionary = folder_ / "dictionary.db";
  const std::vector<std::string> arguments = {
      "run",          "-s",           "publisher_server", "--server", "-b",
      "A.X=" + bars_, "--dictionary", dictionary,         "--report", report_};
  ASSERT_EQ(test::runProgram(arguments).exitCode, kExitSuccess);
  const auto size = static_cast<long>(fs::file_size(dictionary));
  ASSERT_GT(size, static_cast<long>(fs::file_size(report_ + "/report.json")));
  fs::remove_all(report_);
  const auto result = test::runProgram(arguments, {}, {{}, size});
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
  EXPECT_THAT(result.err, HasSubstr("orvane: dictionary " + dictionary));
  expectReported(dictionary);
}

TEST_F(FailedWrite, shouldCallNoInputWrongWhenADatabaseFindsNoRoomAtTheStart) {
  for (const std::string kind : {"store", "dictionary"}) {
    const std::string path = folder_ / (kind + ".db");
    const auto result = run({"--" + kind, path}, {{}, 1024});
    EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
    EXPECT_THAT(result.err, testing::StartsWith("orvane: " + kind + " " + path + ": "));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(fs::exists(report_));
  }
}

TEST_F(FailedWrite, shouldTellOfADictionaryThatCannotGrowWhenNothingIsPlayed) {
  const std::string dictionary = folder_ / "dictionary.db";
  const auto result =
      test::runProgram({"run", "-s", test::testModule("publishing_finisher"), "-b", "A.X=" + bars_,
                        "--dictionary", dictionary, "--report", report_},
                       {}, {{}, 500'000});
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
  EXPECT_THAT(result.err, HasSubstr("orvane: dictionary " + dictionary));
  const QJsonObject report = test::readReport(report_);
  EXPECT_EQ(report["failures"].toArray().size(), 1);
  EXPECT_EQ(report["runners"].toArray()[0].toObject()["status"].toString(), "Finished");
}

TEST_F(FailedWrite, shouldWriteTheOtherFilesWhenOneOfTheReportCannotBeWritten) {
  fs::create_directories(report_ + "/trades.csv");
  const auto result = run({});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("trades.csv: cannot be written"));
  EXPECT_THAT(result.out, HasSubstr("Stopped"));
  expectReported("trades.csv");
}

TEST_F(FailedWrite, shouldPutNoReportIntoThePlaceOfAPipe) {
  fs::create_directories(report_);
  ASSERT_EQ(mkfifo((report_ + "/trades.csv").c_str(), 0600), 0);
  const auto result = run({});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("trades.csv: cannot be written: it is no ordinary file\n"));
  EXPECT_TRUE(fs::is_fifo(report_ + "/trades.csv"));
  expectReported("trades.csv");
}

TEST_F(FailedWrite, shouldPutNoSessionIntoThePlaceOfAPipe) {
  fs::create_directories(folder_ / "session");
  const std::string pipe = folder_ / "session/format.json";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto result = test::runProgram(
      {"generate", "--force", "--instruments", "1", "--minutes", "1", "-o", folder_ / "session"});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, HasSubstr(pipe + ": cannot be written: it is no ordinary file\n"));
  EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST_F(FailedWrite, shouldWriteTheReportWhenNobodyTakesTheSummary) {
  const auto result = run({}, {"/dev/full", 0});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("the standard output could not be written"));
  EXPECT_EQ(test::readReport(report_)["runners"].toArray().size(), 1);
}

TEST_F(FailedWrite, shouldFailEveryCommandWhoseOutputIsLost) {
  const auto result = test::runProgram({"inspect", bars_}, {}, {"/dev/full", 0});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("orvane: "));
}

TEST_F(FailedWrite, shouldFailHelpThatIsLost) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                    {"--version"},
                                                    {"--modules"},
                                                    {"--page", "bash"},
                                                    {"run", "--help"}}) {
    const auto result = test::runProgram(arguments, {}, {"/dev/full", 0});
    EXPECT_EQ(result.exitCode, kExitRunFailed) << arguments.front();
    EXPECT_THAT(result.err, HasSubstr("the standard output could not be written")) << arguments[0];
  }
}

TEST_F(FailedWrite, shouldRunWhicheverStandardStreamsAreClosed) {
  for (const std::vector<int>& closed :
       {std::vector<int>{0}, {1}, {2}, {0, 1}, {1, 2}, {0, 1, 2}}) {
    test::ProgramLimits limits;
    limits.closed = closed;
    const auto result = run({}, limits);
    SCOPED_TRACE(testing::PrintToString(closed));
    const bool isOutputLost = std::ranges::count(closed, 1) != 0;
    EXPECT_EQ(result.exitCode, isOutputLost ? kExitRunFailed : kExitSuccess);
    if (isOutputLost && std::ranges::count(closed, 2) == 0) {
      EXPECT_THAT(result.err, HasSubstr("the standard output could not be written: Bad file"));
    }
    EXPECT_EQ(test::readReport(report_)["runners"].toArray().size(), 1);
    // Nothing of what was said went into a file.
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / ".")) {
      if (!entry.is_regular_file()) continue;
      EXPECT_THAT(test::readFile(entry.path()), testing::Not(HasSubstr("orvane: ")));
    }
    fs::remove_all(report_);
  }
}

TEST_F(FailedWrite, shouldRefuseALogThatNobodyReadsAndNotWaitForAReader) {
  const std::string pipe = folder_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto result = run({"--log", pipe});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, HasSubstr("--log: \"" + pipe + "\" cannot be written"));
}

TEST_F(FailedWrite, shouldRefuseAReportFolderThatCannotBeMadeBeforeAnythingRuns) {
  const auto result =
      test::runProgram({"run", "-s", "sma_cross", "-b", bars_, "--report", "/proc/orvane/report"});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, HasSubstr("--report"));
  EXPECT_EQ(result.out, "");
}

TEST_F(FailedWrite, shouldLeaveNoDatabaseOfARunThatIsRefused) {
  const std::string store = folder_ / "store.db";
  const auto result = run({"--store", store, "--params", R"({"data": [{"code": "NOPE"}]})"});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_FALSE(fs::exists(store));
}

TEST_F(FailedWrite, shouldRefuseOneFileForTwoThings) {
  const std::string file = folder_ / "one.db";
  const auto expectRefused = [&](const std::vector<std::string>& more, const std::string& text) {
    const auto result = run(more);
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_THAT(result.err, HasSubstr(text));
    EXPECT_FALSE(fs::exists(report_));
  };
  expectRefused({"--store", file, "--dictionary", (folder_ / "x/../one.db")},
                "--store: \"" + file + "\" is the file of --dictionary too");
  expectRefused({"--store", file, "--log", file}, "is the file of --store too");
  expectRefused({"--log", bars_}, "is the file of the market data too");
  const std::string other = folder_.write("other.csv", "datetime,close\n2021-01-04,1\n");
  expectRefused({"--log", other}, "holds something other than log lines");
  EXPECT_EQ(test::readFile(other), "datetime,close\n2021-01-04,1\n");
  const std::string params = folder_.write("params.json", "{}");
  const auto given = test::runProgram(
      {"run", "-s", "print_events", "-b", "A.X=" + bars_, "--params", params, "--log", params});
  EXPECT_EQ(given.exitCode, kExitBadInput);
  EXPECT_THAT(given.err, HasSubstr("is the file of --params too"));
  const std::string format = folder_.write("format.json", "{}");
  expectRefused({"--format", format, "--log", format}, "is the file of --format too");
  const std::string known = folder_.write("known.json", R"([{"code": "A", "market": "X"}])");
  expectRefused({"--instrument", known, "--log", known}, "is the file of --instrument too");
  expectRefused({"--dictionary", file, "--log", file + "-wal"},
                "is the file of --dictionary's -wal too");
  expectRefused({"--log", report_ + "/report.json"}, "is the file of --report's report.json too");
  fs::create_symlink(bars_, folder_ / "link");
  expectRefused({"--store", folder_ / "link"}, "is the file of the market data too");
  EXPECT_EQ(test::readFile(bars_), test::barsCsv());
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(FailedWrite, shouldTellOfAReportThatDoesNotFitAndLeaveNoPartOfIt) {
  const auto result = run({}, {{}, 1000});
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
  EXPECT_THAT(result.err, HasSubstr("report.json: cannot be written"));
  EXPECT_FALSE(fs::exists(report_ + "/report.json"));
}

TEST_F(FailedWrite, shouldLeaveAnOlderReportAsItIsWhereANewOneCannotBeWrittenWhole) {
  ASSERT_EQ(run({}).exitCode, kExitSuccess);
  std::map<std::string, std::string> before;
  for (const auto& entry : fs::directory_iterator(report_))
    before[entry.path().filename().string()] = test::readFile(entry.path().string());
  ASSERT_EQ(before.size(), 4u);
  // The tables fit, the page does not.
  const auto most = static_cast<long>(fs::file_size(report_ + "/equity.csv")) + 4096;
  ASSERT_LT(most, static_cast<long>(fs::file_size(report_ + "/report.html")));
  const auto result = run({"--name", "other"}, {{}, most});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("/report.html: cannot be written: File too large"));
  EXPECT_THAT(result.err, HasSubstr(report_ + ": the report that was there stays as it was"));
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(report_)) {
    EXPECT_EQ(test::readFile(entry.path().string()), before[entry.path().filename().string()]);
    ++files;
  }
  EXPECT_EQ(files, before.size());
  EXPECT_EQ(run({"--name", "other"}).exitCode, kExitSuccess);
  EXPECT_NE(test::readFile(report_ + "/report.json"), before["report.json"]);
}

TEST_F(FailedWrite, shouldTakeAwayWhatARunLeftThatWasKilledWhileItWrote) {
  fs::create_directories(report_);
  folder_.write("report/report.html.new-17", "half");
  folder_.write("report/notes.new-17", "of the user");
  ASSERT_EQ(run({}).exitCode, kExitSuccess);
  EXPECT_FALSE(fs::exists(report_ + "/report.html.new-17"));
  EXPECT_TRUE(fs::exists(report_ + "/notes.new-17"));
}

TEST_F(FailedWrite, shouldTellWhyConvertedDataCannotBeWritten) {
  for (const std::string to : {"csv", "cache"}) {
    const std::string out = folder_.write("out." + to, "older");
    const auto result = test::runProgram(
        {"data", "convert", bars_, "--code", "A.X", "--to", to, "--out", out}, {}, {{}, 500});
    EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
    EXPECT_EQ(result.err, "orvane: " + out + ": cannot be written: File too large\n");
    EXPECT_EQ(test::readFile(out), "older");
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "."), fs::directory_iterator()), 3);
  const auto noFile = test::runProgram(
      {"data", "convert", bars_, "--code", "A.X", "--to", "csv", "--out", "/dev/null"});
  EXPECT_EQ(noFile.exitCode, kExitBadInput);
  EXPECT_THAT(noFile.err, HasSubstr("--out: \"/dev/null\" is no ordinary file; name a file"));
}

TEST_F(FailedWrite, shouldLeaveNoPartOfASessionThatCannotBeWritten) {
  const auto result =
      test::runProgram({"generate", "--out", folder_ / "a/session"}, {}, {{}, 20'000});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr(".csv: cannot be written: File too large"));
  EXPECT_FALSE(fs::exists(folder_ / "a"));
}

}  // namespace
}  // namespace orvane
