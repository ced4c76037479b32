// What happens while a run is under way: a strategy holds it in one call-back meanwhile.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QJsonArray>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>
#include <utility>

#include "host/InputError.h"
#include "tests/host/StartedProgram.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

class RunUnderWay : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(mkfifo(gate_.c_str(), 0600), 0);
    ASSERT_EQ(pipe2(errors_, O_CLOEXEC), 0);
    program_.emplace(
        std::vector<std::string>{"run", "-s", test::testModule("waiting_strategy"), "-b",
                                 "A.X=" + bars_, "-p", R"({"gate": ")" + gate_ + R"("})",
                                 "--report", folder_ / "report", "--store", store_, "--dictionary",
                                 dictionary_},
        errors_[1]);
    ASSERT_TRUE(program_->awaitOutput("waiting"));
  }
  void TearDown() override {
    for (const int end : errors_) close(end);
  }
  /// Fills the pipe that is the standard error of the run, from which nobody reads.
  void fillErrors() const {
    const int flags = fcntl(errors_[1], F_GETFL);
    fcntl(errors_[1], F_SETFL, flags | O_NONBLOCK);
    while (write(errors_[1], "x", 1) == 1) {
    }
    ASSERT_EQ(errno, EAGAIN);
    // The run shares the description, and is to meet a pipe that makes it wait.
    fcntl(errors_[1], F_SETFL, flags);
  }
  /// Lets the strategy go on.
  void openGate() const { close(open(gate_.c_str(), O_WRONLY)); }

  const test::TempFolder folder_;
  const std::string gate_ = folder_ / "gate";
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string store_ = folder_ / "s.db", dictionary_ = folder_ / "d.db";
  int errors_[2] = {-1, -1};
  std::optional<test::StartedProgram> program_;
};

TEST_F(RunUnderWay, shouldStopInOrderHoweverOftenItIsAskedToTerminate) {
  for (int i = 0; i < 3; ++i) program_->send(SIGTERM);
  program_->send(SIGINT);
  openGate();
  const test::ProgramResult result = program_->end();
  EXPECT_EQ(result.exitCode, kExitInterrupted);
  EXPECT_THAT(result.out, HasSubstr("stopped"));
  EXPECT_THAT(result.out, HasSubstr("interrupted: "));
  EXPECT_EQ(test::readReport(folder_ / "report")["outcome"].toString(), "interrupted");
}

TEST_F(RunUnderWay, shouldEndAtOnceWhenTheUserPressesTwice) {
  program_->send(SIGINT);
  program_->send(SIGINT);
  const test::ProgramResult result = program_->end();
  EXPECT_EQ(result.exitCode, kExitInterrupted);
  EXPECT_THAT(result.out, Not(HasSubstr("stopped")));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "report/report.json"));
}

TEST_F(RunUnderWay, shouldEndAtOnceAlsoWhenNobodyReadsItsErrors) {
  fillErrors();
  program_->send(SIGINT);
  program_->send(SIGINT);
  const test::ProgramResult result = program_->end();
  EXPECT_EQ(result.exitCode, kExitInterrupted);
  EXPECT_THAT(result.out, Not(HasSubstr("stopped")));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "report/report.json"));
}

TEST_F(RunUnderWay, shouldKeepItsReportFolderFromASecondRun) {
  const std::string report = folder_ / "report";
  const std::vector<std::string> arguments = {
      "run", "-s", "sma_cross", "-b", "A.X=" + bars_, "--name", "second", "--report", report};
  const auto second = test::runProgram(arguments);
  EXPECT_EQ(second.exitCode, kExitBadInput);
  EXPECT_EQ(second.err, "orvane: --report: \"" + report +
                            "\": it is in use by another run; take another folder, or wait for "
                            "its end\n");
  EXPECT_TRUE(std::filesystem::is_empty(report));
  openGate();
  EXPECT_EQ(program_->end().exitCode, kExitSuccess);
  EXPECT_EQ(test::readReport(report)["runners"].toArray()[0].toObject()["name"].toString(),
            "waiting_strategy");
  EXPECT_EQ(test::runProgram(arguments).exitCode, kExitSuccess);
}

TEST_F(RunUnderWay, shouldKeepItsDatabasesFromASecondRun) {
  for (const auto& [option, path] :
       {std::pair{"store", &store_}, std::pair{"dictionary", &dictionary_}}) {
    const auto second = test::runProgram(
        {"run", "-s", "sma_cross", "-b", "A.X=" + bars_, std::string("--") + option, *path});
    EXPECT_EQ(second.exitCode, kExitBadInput);
    EXPECT_THAT(second.err,
                HasSubstr(std::string("orvane: ") + option + " " + *path + ": it is in use"));
    EXPECT_TRUE(std::filesystem::exists(*path));
  }
  openGate();
  EXPECT_EQ(program_->end().exitCode, kExitSuccess);
  EXPECT_EQ(test::runProgram({"run", "-s", "sma_cross", "-b", "A.X=" + bars_, "--store", store_,
                              "--dictionary", dictionary_})
                .exitCode,
            kExitSuccess);
}

}  // namespace
}  // namespace orvane
