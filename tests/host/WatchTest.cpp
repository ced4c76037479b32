// The view of a run, on real terminals. A strategy holds the run in one call-back where something
// is to happen meanwhile; whether the view is there is seen by what it writes.

#include <fcntl.h>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QJsonArray>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "host/InputError.h"
#include "tests/host/Program.h"
#include "tests/host/TerminalProgram.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

using test::TerminalProgram;
using test::TerminalSetting;
using testing::HasSubstr;
using testing::Not;

class Watch : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(mkfifo(gate_.c_str(), 0600), 0); }

  /// The arguments of a run that waits at its first bar until the gate is opened.
  std::vector<std::string> held(const std::string& module = "waiting_strategy",
                                const std::string& how = {}) const {
    return {"run",      "--watch",
            "--name",   "held",
            "-s",       test::testModule(module),
            "-b",       "A.X=" + bars_,
            "-p",       fmt::format(R"({{"gate": "{}", "how": "{}"}})", gate_, how),
            "--report", report_};
  }
  /// Lets the strategy go on.
  void openGate() const { close(open(gate_.c_str(), O_WRONLY)); }
  static void expectTerminalAsBefore(const TerminalProgram& program) {
    EXPECT_TRUE(program.hasModesOfBefore());
    EXPECT_TRUE(program.showsUsualScreen());
  }
  /// A strategy ends the process: the terminal is as before, and nothing that was said is lost.
  void expectTerminalBack(const std::string& how, int code, const std::string& said = {}) const {
    TerminalProgram program(held("crashing_strategy", how));
    ASSERT_TRUE(program.awaitOutput("last words"));
    openGate();
    EXPECT_EQ(program.end(), code);
    expectTerminalAsBefore(program);
    EXPECT_THAT(program.afterView(), HasSubstr("last words\r\n"));
    EXPECT_THAT(program.afterView(), HasSubstr(said));
  }
  static std::string digestOf(const std::string& folder) {
    return test::readReport(folder)["runners"]
        .toArray()[0]
        .toObject()["digest"]
        .toString()
        .toStdString();
  }

  const test::TempFolder folder_;
  const std::string gate_ = folder_ / "gate", report_ = folder_ / "report";
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
};

TEST_F(Watch, shouldShowARunAndPrintTheSummaryAfterwards) {
  TerminalProgram program(held());
  ASSERT_TRUE(program.awaitOutput("waiting"));  // What the strategy prints is shown as a log line.
  ASSERT_TRUE(program.awaitOutput("STARTING"));
  ASSERT_TRUE(program.awaitOutput("Running"));
  openGate();
  EXPECT_EQ(program.end(), kExitSuccess);
  expectTerminalAsBefore(program);
  EXPECT_THAT(program.afterView(), HasSubstr("waiting\r\n"));
  EXPECT_THAT(program.afterView(), HasSubstr("stopped\r\n"));
  EXPECT_THAT(program.afterView(), HasSubstr("playback: "));
}

TEST_F(Watch, shouldGiveTheSameDigestAsWithoutIt) {
  const auto arguments = [this](const std::string& report) {
    return std::vector<std::string>{
        "run",          "-s",       "sma_cross",     "-p", R"({"fast": 2, "slow": 4})", "-b",
        "A.X=" + bars_, "--report", folder_ / report};
  };
  auto watched = arguments("watched");
  watched.push_back("--watch");
  TerminalProgram program(watched);
  EXPECT_EQ(program.end(), kExitSuccess);
  EXPECT_EQ(test::runProgram(arguments("plain")).exitCode, kExitSuccess);
  EXPECT_FALSE(digestOf(folder_ / "plain").empty());
  EXPECT_EQ(digestOf(folder_ / "watched"), digestOf(folder_ / "plain"));
}

TEST_F(Watch, shouldStopInOrderOnTheFirstPressAndOnQ) {
  for (const char* key : {"\x03", "q"}) {
    TerminalProgram program(held());
    ASSERT_TRUE(program.awaitOutput("waiting"));
    program.type(key);
    ASSERT_TRUE(program.awaitOutput("stopped in order"));
    openGate();
    EXPECT_EQ(program.end(), kExitInterrupted);
    expectTerminalAsBefore(program);
    EXPECT_THAT(program.afterView(), HasSubstr("stopped\r\n"));
    EXPECT_THAT(program.afterView(), HasSubstr("the report so far is in " + report_));
    EXPECT_EQ(test::readReport(report_)["outcome"].toString(), "interrupted");
  }
}

TEST_F(Watch, shouldSayWhichRunnerHoldsTheStopUpAndEndAtOnceOnTheSecondPress) {
  // A process that ends at once joins no thread, which is no leak.
  const std::string options = std::getenv("TSAN_OPTIONS") ? std::getenv("TSAN_OPTIONS") : "";
  setenv("TSAN_OPTIONS", (options + " report_thread_leaks=0").c_str(), 1);
  TerminalProgram program(held());
  setenv("TSAN_OPTIONS", options.c_str(), 1);
  ASSERT_TRUE(program.awaitOutput("waiting"));
  program.type("\x03");
  ASSERT_TRUE(program.awaitOutput("\"held\" is in onBarSeries"));
  program.type("\x03");
  EXPECT_EQ(program.end(), kExitInterrupted);
  expectTerminalAsBefore(program);
  EXPECT_THAT(program.afterView(), HasSubstr("waiting\r\n"));
  EXPECT_THAT(program.afterView(), HasSubstr("orvane: ended at once"));
  EXPECT_FALSE(std::filesystem::exists(report_ + "/report.json"));
}

TEST_F(Watch, shouldStopInOrderOnSignalsThatAskForIt) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    TerminalProgram program(held());
    ASSERT_TRUE(program.awaitOutput("waiting"));
    program.send(signal);
    ASSERT_TRUE(program.awaitOutput("stopped in order"));
    program.send(signal);
    openGate();
    EXPECT_EQ(program.end(), kExitInterrupted);
    expectTerminalAsBefore(program);
    EXPECT_THAT(program.afterView(), HasSubstr("stopped\r\n"));
  }
}

TEST_F(Watch, shouldGoOnAfterAHangUpThatIsIgnored) {
  TerminalProgram program(held(), {.ignoresHangUp = true});
  ASSERT_TRUE(program.awaitOutput("waiting"));
  program.send(SIGHUP);
  openGate();
  EXPECT_EQ(program.end(), kExitSuccess);
  EXPECT_THAT(program.output(), Not(HasSubstr("stopped in order")));
}

TEST_F(Watch, shouldGiveTheTerminalBackWhenAStrategyAborts) {
  expectTerminalBack("abort", 1000 + SIGABRT);
}

TEST_F(Watch, shouldGiveTheTerminalBackWhenAStrategyEndsTheProcess) {
  if (support::kSanitizerDivisor != 1)
    GTEST_SKIP() << "a sanitizer takes threads that exit() leaves behind for leaks";
  expectTerminalBack("exit", kExitRunFailed, "orvane: a strategy ended the process by exit, ");
}

TEST_F(Watch, shouldGiveTheTerminalBackAfterAFault) {
  if (support::kSanitizerDivisor != 1)
    GTEST_SKIP() << "a sanitizer tells of the fault itself and ends the process in its own way";
  expectTerminalBack("fault", 1000 + SIGSEGV);
}

TEST_F(Watch, shouldGiveTheTerminalBackWhenTheRunEndsAsAnError) {
  TerminalProgram program(
      {"run", "--watch", "-s", test::testModule("erring_strategy"), "-b", "A.X=" + bars_});
  EXPECT_EQ(program.end(), kExitRunFailed);
  expectTerminalAsBefore(program);
}

TEST_F(Watch, shouldFollowTheSizeOfTheTerminal) {
  TerminalProgram program(held(), {.columns = 20, .rows = 5});
  ASSERT_TRUE(program.awaitOutput("starting"));
  EXPECT_THAT(program.output(), Not(HasSubstr("CALL-BACKS")));
  program.resize(120, 30);
  ASSERT_TRUE(program.awaitOutput("CALL-BACKS"));
  program.type("?");
  ASSERT_TRUE(program.awaitOutput("suspend"));
  openGate();
  EXPECT_EQ(program.end(), kExitSuccess);
  expectTerminalAsBefore(program);
}

TEST_F(Watch, shouldWriteLogLinesToTheirFileAndShowThem) {
  const std::string log = folder_ / "log";
  auto arguments = held();
  arguments.insert(arguments.end(), {"--log", log, "--log-level", "info"});
  TerminalProgram program(arguments);
  ASSERT_TRUE(program.awaitOutput("INFO"));
  openGate();
  EXPECT_EQ(program.end(), kExitSuccess);
  EXPECT_THAT(test::readFile(log), HasSubstr("INFO"));
  EXPECT_THAT(program.afterView(), Not(HasSubstr("INFO")));
}

TEST_F(Watch, shouldPrintNoSummaryWhenItIsToBeQuiet) {
  TerminalProgram program({"run", "--watch", "--quiet", "-s", "sma_cross", "-b", "A.X=" + bars_});
  EXPECT_EQ(program.end(), kExitSuccess);
  expectTerminalAsBefore(program);
  EXPECT_THAT(program.afterView(), Not(HasSubstr("playback: ")));
}

TEST_F(Watch, shouldBeRefusedWhereNothingCanBeDrawn) {
  const auto piped = test::runProgram(held());
  EXPECT_EQ(piped.exitCode, kExitBadInput);
  EXPECT_THAT(piped.err, HasSubstr("orvane: --watch: the standard output is no terminal"));
  for (const auto& [kind, text] :
       {std::pair{"", "TERM is not set"}, std::pair{"dumb", "cannot move its cursor"},
        std::pair{"no-such-terminal", "is not known here"}}) {
    TerminalProgram program(held(), {.kind = kind});
    EXPECT_EQ(program.end(), kExitBadInput) << kind;
    EXPECT_THAT(program.output(), HasSubstr(text));
    EXPECT_THAT(program.output(), HasSubstr("leave --watch away"));
    EXPECT_TRUE(program.hasModesOfBefore());
  }
  EXPECT_FALSE(std::filesystem::exists(report_));
}

// Without the view.

TEST_F(Watch, shouldSayWithoutTheViewTooWhichRunnerHoldsTheStopUp) {
  auto arguments = held();
  std::erase(arguments, "--watch");
  TerminalProgram program(arguments);
  ASSERT_TRUE(program.awaitOutput("waiting"));
  program.send(SIGINT);  // A key would have the terminal throw away what comes at once.
  ASSERT_TRUE(program.awaitOutput("orvane: interrupted: the runners are stopped in order"));
  ASSERT_TRUE(program.awaitOutput("\"held\" is in onBarSeries"));
  openGate();
  EXPECT_EQ(program.end(), kExitInterrupted);
  EXPECT_THAT(program.output(), HasSubstr("stopped\r\n"));
  EXPECT_THAT(program.output(), HasSubstr("the report so far is in " + report_));
}

TEST_F(Watch, shouldStopInOrderWithoutTheViewWhenTheTerminalHangsUp) {
  auto arguments = held();
  std::erase(arguments, "--watch");
  TerminalProgram program(arguments);
  ASSERT_TRUE(program.awaitOutput("waiting"));
  program.send(SIGHUP);
  ASSERT_TRUE(program.awaitOutput("stopped in order"));
  openGate();
  EXPECT_EQ(program.end(), kExitInterrupted);
  EXPECT_THAT(program.output(), HasSubstr("stopped\r\n"));
}

}  // namespace
}  // namespace orvane
