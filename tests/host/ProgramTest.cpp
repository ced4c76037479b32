#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <algorithm>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Thirty bars and a way to run a strategy over them.
class Program : public testing::Test {
 protected:
  test::ProgramResult run(const std::string& strategy, std::vector<std::string> more = {}) {
    std::vector<std::string> all = {"run",          "-s",       strategy,          "-b",
                                    "A.X=" + bars_, "--report", folder_ / "report"};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }

  QJsonObject report() const { return test::readReport(folder_ / "report"); }
  QJsonObject runner() const { return report()["runners"].toArray()[0].toObject(); }

  test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
};

TEST_F(Program, shouldShowHelpAndVersion) {
  const auto help = test::runProgram({"run", "--help"});
  EXPECT_EQ(help.exitCode, kExitSuccess);
  for (const char* option : {"--strategy", "--bars", "--ticks", "--instrument", "--params",
                             "--from", "--to", "--speed", "--report", "--live", "--no-digest"})
    EXPECT_THAT(help.out, HasSubstr(option));
  EXPECT_EQ(test::runProgram({"--version"}).exitCode, kExitSuccess);
  EXPECT_EQ(test::runProgram({}).exitCode, kExitBadInput);
}

TEST_F(Program, shouldEndWithSuccessAndASummaryWhenARunIsStoppedAtTheEndOfTheData) {
  const auto result = run("sma_cross", {"-p", R"({"fast": 2, "slow": 4})"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("runner sma_cross (sma_cross): Stopped"));
  EXPECT_THAT(result.out, HasSubstr("30 bars 1m of A.X"));
  EXPECT_THAT(result.out, HasSubstr("digest"));
  EXPECT_THAT(result.out, HasSubstr("events/s"));
  EXPECT_THAT(result.err, Not(HasSubstr("\r"))) << "progress belongs on a terminal";
}

TEST_F(Program, shouldWriteAllDocumentedKeysOfTheReport) {
  ASSERT_EQ(run("sma_cross", {"-p", R"({"fast": 2, "slow": 4})"}).exitCode, kExitSuccess);
  EXPECT_EQ(report().keys(),
            (QStringList{"accounts", "data", "failures", "format", "from", "mode", "outcome",
                         "runners", "timeZone", "timing", "to", "total", "version"}));
  EXPECT_EQ(report()["format"].toInt(), 2);
  EXPECT_EQ(report()["outcome"].toString(), "completed");
  EXPECT_EQ(report()["mode"].toString(), "playback");
  EXPECT_EQ(report()["timing"].toObject().keys(),
            (QStringList{"elapsedSeconds", "eventsPerSecond", "loadSeconds", "recordsPerSecond",
                         "speed", "threads"}));
  EXPECT_EQ(runner().keys(),
            (QStringList{"bars", "digest", "env", "eventCount", "events", "exceptions", "message",
                         "name", "notifications", "params", "published", "records", "series",
                         "server", "span", "status", "strategy", "ticks", "trading"}));
  EXPECT_TRUE(runner()["published"].isNull());
  EXPECT_EQ(runner()["records"].toArray().size(), 0);
  EXPECT_EQ(report()["failures"].toArray().size(), 0);
  EXPECT_EQ(runner()["bars"].toInt(), 30);
  EXPECT_EQ(runner()["env"].toObject()["bars"].toString(), "30");
  EXPECT_EQ(runner()["digest"].toString().size(), 32);
  const QJsonObject series = runner()["series"].toArray()[0].toObject();
  EXPECT_EQ(series["code"].toString(), "A.X");
  EXPECT_EQ(series["first"].toObject()["open"].toDouble(), 10.1);
  EXPECT_EQ(series["last"].toObject()["close"].toDouble(), 10.1);
}

TEST_F(Program, shouldEndWithFailureAndShowTheTextWhenARunEndsAsAnError) {
  const auto result = run(test::testModule("erring_strategy"));
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("出错了: no luck"));
  EXPECT_EQ(report()["outcome"].toString(), "failed");
  EXPECT_EQ(runner()["status"].toString(), "Error");
  EXPECT_EQ(runner()["message"].toString(), "出错了: no luck");
}

TEST_F(Program, shouldEndWithFailureWhenAModuleGivesNoStrategy) {
  const auto result = run(test::testModule("null_strategy"));
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("createStrategy returned no object"));
}

TEST_F(Program, shouldEndWithFailureAndNameEveryWrongParameter) {
  const auto result = run("sma_cross", {"-p", R"({"fast": "x", "slow": 0, "volme": 1})"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  for (const char* part : {"\"fast\" must be a whole number, not \"x\"",
                           "\"slow\" must be from 2 to 100000, not 0", "\"volme\" is not known"})
    EXPECT_THAT(result.err, HasSubstr(part));
}

TEST_F(Program, shouldStopPlayingWhenTheOnlyRunnerHasFinished) {
  EXPECT_EQ(run(test::testModule("finishing_strategy")).exitCode, kExitSuccess);
  EXPECT_EQ(runner()["status"].toString(), "Finished");
  EXPECT_EQ(runner()["bars"].toInt(), 10);
}

TEST_F(Program, shouldCountExceptionsAndGoOn) {
  const auto result = run(test::testModule("throwing_strategy"));
  EXPECT_EQ(result.exitCode, kExitSuccess);
  EXPECT_EQ(runner()["bars"].toInt(), 30);
  const QJsonObject exceptions = runner()["exceptions"].toObject();
  EXPECT_EQ(exceptions["count"].toInt(), 30);
  EXPECT_EQ(exceptions["first"].toString(), "onBarSeries: not this bar");
  EXPECT_THAT(result.err, HasSubstr("not this bar"));
}

TEST_F(Program, shouldTakeNoExitOfAStrategyForARunThatWentWell) {
  for (const std::string how : {"exit", "quick_exit"}) {
    const auto result = run(test::testModule("crashing_strategy"),
                            {"--params", R"({"gate": "/dev/null", "how": ")" + how + "\"}"});
    EXPECT_EQ(result.exitCode, kExitRunFailed) << how;
    EXPECT_EQ(result.out, "last words\n") << how;
    EXPECT_THAT(result.err, HasSubstr("orvane: a strategy ended the process by exit, before "
                                      "summary and report were complete\n"))
        << how;
  }
}

TEST_F(Program, shouldLoseNothingThatAStrategyWroteBeforeItExits) {
  const std::string file = folder_ / "kept.txt";
  run(test::testModule("crashing_strategy"),
      {"--params", R"({"gate": "/dev/null", "how": "exit", "file": ")" + file + "\"}"});
  EXPECT_EQ(test::readFile(file), "kept");
}

TEST_F(Program, shouldLeaveTheDigestOutWhenItIsSwitchedOff) {
  EXPECT_THAT(run("sma_cross", {"--no-digest"}).out, Not(HasSubstr("digest")));
  EXPECT_TRUE(runner()["digest"].isNull());
}

TEST_F(Program, shouldPlayBetweenFromAndToAndGiveWhatLiesBeforeAsHistory) {
  ASSERT_EQ(run("print_events", {"-p", R"({"stdout": true})", "--from", "2021-01-04 09:11", "--to",
                                 "2021-01-04 09:21"})
                .exitCode,
            kExitSuccess);
  // 09:01 to 09:20 by the times of the bars' begins or ends; ten of them are played.
  const int events = runner()["events"].toObject()["onBarSeries"].toInt();
  EXPECT_EQ(events, 1 + 10);
  const QJsonObject last = runner()["series"].toArray()[0].toObject()["last"].toObject();
  EXPECT_LT(last["end"].toString().toStdString(), "2021-01-04T09:21:00.000Z");
}

TEST_F(Program, shouldShowEveryBarThroughPrintEvents) {
  const auto result = run("print_events", {"-q", "-p", R"({"stdout": true, "timer": 600000})"});
  EXPECT_EQ(result.exitCode, kExitSuccess);
  const auto lines = [&](const std::string& start) {
    int count = 0;
    for (auto at = result.out.find(start); at != std::string::npos;
         at = result.out.find(start, at + 1))
      ++count;
    return count;
  };
  EXPECT_EQ(lines("print_events: onStart "), 1);
  EXPECT_EQ(lines("print_events: onBarSeries A 1m 2021-01-04 09:"), 30);
  EXPECT_GE(lines("print_events: onTimer "), 2);
  EXPECT_EQ(lines("print_events: onStop"), 1);
}

TEST_F(Program, shouldWriteStrategyLinesToTheLogInUtf8WhateverTheLocale) {
  const std::string log = folder_ / "log.txt";
  EXPECT_EQ(run("sma_cross", {"--log", log, "--name", "均线", "--log-level", "info"}).exitCode,
            kExitSuccess);
  EXPECT_THAT(test::readFile(log), HasSubstr("均线,start"));
  EXPECT_THAT(test::readFile(log), HasSubstr("Stg sma_cross: 30 bars, 0 ticks"));
}

TEST_F(Program, shouldRunSeveralRunnersOfAConfigurationOverGeneratedData) {
  const std::string session = folder_ / "session";
  ASSERT_EQ(test::runProgram({"generate", "--out", session, "--minutes", "30"}).exitCode,
            kExitSuccess);
  const auto result =
      test::runProgram({"run", session + "/run.json", "--report", folder_ / "report"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_EQ(runner()["bars"].toInt(), 3 * 30);
  qint64 ticks = 0;
  const QJsonArray data = report()["data"].toArray();
  for (const auto& series : data)
    if (series.toObject()["kind"].toString() == "ticks")
      ticks += series.toObject()["records"].toInteger();
  EXPECT_GT(ticks, 0);
  EXPECT_EQ(runner()["ticks"].toInteger(), ticks);
}

TEST_F(Program, shouldShowWhatItRecognisesOfAFile) {
  // Two bars of one time can be read as ticks, but that is not what they are.
  const auto twice = folder_.write("twice.csv",
                                   "datetime,open,high,low,close,volume\n"
                                   "2021-01-04 09:30,1,2,1,2,5\n2021-01-04 09:30,1,2,1,2,5\n");
  const auto faulty = test::runProgram({"inspect", twice});
  EXPECT_EQ(faulty.exitCode, kExitBadInput);
  EXPECT_EQ(faulty.out, "");
  EXPECT_EQ(faulty.err, "orvane: " + twice +
                            ":3: column \"datetime\": \"2021-01-04 09:30\" repeats the time of an "
                            "earlier row\n");

  const auto result = test::runProgram({"inspect", folder_.write("zz_1min.csv", test::barsCsv())});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("bars of ZZ, period 1m"));
  EXPECT_THAT(result.out, HasSubstr("30 rows"));
}

TEST_F(Program, shouldTellHowManyOrdersWereRejectedAndWhyTheFirstWas) {
  const auto result = run("sma_cross", {"--capital", "1", "--margin-rate", "1", "--params",
                                        R"({"fast": 2, "slow": 3})"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr(" orders rejected, the first: not enough money: needs "));
}

TEST_F(Program, shouldPlayTheSameRecordsInLiveMode) {
  // A session of half an hour in a few hundredths of a second.
  const auto result = run("sma_cross", {"--live", "--speed", "100000x"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_EQ(report()["mode"].toString(), "live");
  EXPECT_EQ(runner()["bars"].toInt(), 30);
}

TEST_F(Program, shouldStopTheRunAndReportWhatThereIsWhenInterrupted) {
  // At this pace the data would take an hour.
  const auto result =
      test::runProgram({"run", "-s", "print_events", "-p", R"({"stdout": true})", "-b", bars_,
                        "--speed", "0.5x", "--report", folder_ / "report"},
                       "onStart");
  EXPECT_EQ(result.exitCode, kExitInterrupted) << result.err;
  EXPECT_THAT(result.out, HasSubstr("onStop"));
  EXPECT_THAT(result.out, HasSubstr("interrupted: "));
  EXPECT_EQ(report()["outcome"].toString(), "interrupted");
  EXPECT_LT(runner()["bars"].toInt(), 30);
}

}  // namespace
}  // namespace orvane
