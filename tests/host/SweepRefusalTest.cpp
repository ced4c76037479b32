// Sweeps that come to nothing: what is said of them, and what is left behind.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "host/InputError.h"
#include "tests/host/Program.h"
#include "tests/host/StartedProgram.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class SweepRefusal : public testing::Test {
 protected:
  test::ProgramResult sweep(const std::string& strategy,
                            const std::vector<std::string>& more) const {
    std::vector<std::string> all = {"sweep", "-s", strategy, "-b", "A.X=" + bars_};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }
  void expectRefused(const test::ProgramResult& result, const std::string& message) const {
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("orvane: " + message));
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string swept_ = test::testModule("swept_strategy");
};

TEST_F(SweepRefusal, shouldEndEarlyWhereTheStrategyRefusesWhateverItIsGiven) {
  const std::string out = folder_ / "new/out";
  for (const char* batch : {"8", "300"}) {
    const auto many =
        sweep("sma_cross", {"--grid", "fsat=1:4000:1", "--batch", batch, "--out", out});
    expectRefused(many,
                  "the strategy refuses all 256 of 4000 combinations that were tried before "
                  "anything is played, such as fsat=");
    EXPECT_THAT(many.err, HasSubstr("; nothing is kept; if some are right, leave the others out by "
                                    "--where\n"));
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new"));
  const auto few = sweep("sma_cross", {"--grid", "fsat=1,2", "--out", out});
  expectRefused(few,
                "the strategy refuses all of 2 combinations before anything is played, such "
                "as fsat=1: ");
  EXPECT_THAT(few.err, HasSubstr("fsat"));
  EXPECT_THAT(few.err, HasSubstr("; nothing is kept\n"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new"));
}

TEST_F(SweepRefusal, shouldKeepAFolderThatWasThereAndWhatItHolds) {
  const std::string out = folder_ / "out";
  std::filesystem::create_directory(out);
  folder_.write("out/mine.txt", "mine");
  expectRefused(sweep("sma_cross", {"--grid", "fsat=1,2", "--out", out}), "the strategy refuses");
  EXPECT_EQ(test::readFile(out + "/mine.txt"), "mine");
  EXPECT_FALSE(std::filesystem::exists(out + "/results.db"));
  const auto good = sweep("sma_cross", {"--grid", "fast=1,2", "--out", out});
  EXPECT_EQ(good.exitCode, kExitSuccess) << good.err;
}

TEST_F(SweepRefusal, shouldGoOnWhereSomeCombinationIsTakenWhateverPlaysAtOnce) {
  // All but the last of 50 are refused.
  for (const char* batch : {"1", "16", "64"}) {
    const std::string out = folder_ / ("out" + std::string(batch));
    const auto result = sweep(swept_, {"--grid", "refuseBelow=51", "--grid", "every=2:51:1",
                                       "--batch", batch, "--out", out});
    EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
    EXPECT_THAT(result.err, HasSubstr("49 runs ended as an error, the first: number 1"));
    EXPECT_EQ(test::readFile(out + "/results.csv"), test::readFile(folder_ / "out1/results.csv"));
  }
}

TEST_F(SweepRefusal, shouldTryTheSameFewWhateverPlaysAtOnce) {
  // 66 of 2601 are taken, as where one average must be the shorter one.
  std::set<std::string> errors;
  for (const char* batch : {"5", "16", "512"}) {
    const auto result = sweep(swept_, {"--grid", "refuseBelow=50:100:1", "--grid", "every=10:60:1",
                                       "--batch", batch, "--quiet"});
    EXPECT_EQ(result.exitCode, kExitRunFailed);
    errors.insert(result.err);
  }
  EXPECT_EQ(errors.size(), 1U);
  EXPECT_THAT(*errors.begin(), HasSubstr("2535 runs ended as an error, the first: number 1 "));
}

TEST_F(SweepRefusal, shouldKeepNothingOfATrialThatIsInterrupted) {
  const std::string gate = folder_ / "gate", out = folder_ / "out";
  ASSERT_EQ(mkfifo(gate.c_str(), 0600), 0);
  const std::vector<std::string> arguments = {"sweep",
                                              "-s",
                                              test::testModule("waiting_strategy"),
                                              "-b",
                                              "A.X=" + bars_,
                                              "-p",
                                              R"({"refuse": true, "gate": ")" + gate + R"("})",
                                              "--grid",
                                              "n=1,2",
                                              "--batch",
                                              "1",
                                              "--out",
                                              out};
  const auto openGate = [&] { close(open(gate.c_str(), O_WRONLY)); };
  {
    test::StartedProgram program(arguments);
    ASSERT_TRUE(program.awaitOutput("waiting\n"));
    openGate();
    ASSERT_TRUE(program.awaitOutput("stopped\nwaiting\n"));
    program.send(SIGINT);
    openGate();
    const test::ProgramResult result = program.end();
    EXPECT_EQ(result.exitCode, kExitInterrupted);
    EXPECT_THAT(result.out, HasSubstr("No run was done.\n"));
  }
  test::StartedProgram again(arguments);
  for (const char* seen : {"waiting\n", "stopped\nwaiting\n"}) {
    ASSERT_TRUE(again.awaitOutput(seen));
    openGate();
  }
  const test::ProgramResult result = again.end();
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_EQ(result.out, "waiting\nstopped\nwaiting\nstopped\n") << "both are tried anew";
}

TEST_F(SweepRefusal, shouldLeaveALinkThatLeadsNowhere) {
  const std::string link = folder_ / "link";
  std::filesystem::create_symlink("nowhere", link);
  for (const std::string& out : {link, link + "/out"}) {
    const auto result = sweep("sma_cross", {"--grid", "fsat=1,2", "--out", out});
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_THAT(result.err,
                HasSubstr("--out: the folder \"" + out + "\" cannot be made: File exists\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
  }
}

TEST_F(SweepRefusal, shouldKeepRunsThatAllEndAsErrorsWhileTheyPlay) {
  const auto result =
      sweep(swept_, {"--grid", "fail=3", "--grid", "every=5,6", "--out", folder_ / "out"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.out, HasSubstr("No combination is ranked by profit: none of the 2 runs ended "
                                    "as it should.\nEach says why in results.csv of --out; "));
  EXPECT_THAT(sweep(swept_, {"--grid", "fail=3", "--grid", "every=5,6"}).out,
              HasSubstr("as it should.\norvane run with one combination shows its log.\n"));
  EXPECT_TRUE(std::filesystem::exists(folder_ / "out/results.db"));
}

TEST_F(SweepRefusal, shouldSayWhichFigureIsMissingAndWhatToRankBy) {
  const auto result = sweep(swept_, {"--grid", "every=3,4", "--rank", "sharpe"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("No combination is ranked by sharpe: no run has this figure"));
  EXPECT_THAT(result.out, HasSubstr("Choose another by --rank, such as profit"));
}

TEST_F(SweepRefusal, shouldNameBothPlacesOfAParameterThatIsGivenTwice) {
  expectRefused(sweep("sma_cross", {"--grid", "fast=2,3", "--grid", "slow=5:9:1", "-p",
                                    R"({"mode": "longShort", "slow": 20})"}),
                "--params: \"slow\" is 20, and has values by --grid slow=5:9:1; leave one of the "
                "two out\n");
}

TEST_F(SweepRefusal, shouldSayWhatToGiveInPlaceOfAConfiguration) {
  for (const std::vector<std::string>& all :
       {std::vector<std::string>{"sweep", "c.json"}, {"sweep", "c.json", "--grid", "fast=2"}})
    expectRefused(test::runProgram(all),
                  "\"c.json\" is an argument that sweep does not take: it takes no configuration; "
                  "give --strategy, --bars or --ticks, and --grid (see sweep --help)\n");
  expectRefused(test::runProgram({"run", "c.json", "d.json"}),
                "\"d.json\" is an argument that run does not take (see run --help)\n");
}

TEST_F(SweepRefusal, shouldSayThatASpanOfAWalkIsInMinutes) {
  const std::string bars = folder_.write("b.csv",
                                         "datetime,open,high,low,close\n2021-01-04 09:00,1,2,1,2\n"
                                         "2021-01-04 09:05,1,2,1,2\n2021-01-04 09:10,1,2,1,2\n");
  const auto walk = [&](const std::string& given) {
    return test::runProgram(
        {"sweep", "-s", "sma_cross", "-b", bars, "--grid", "fast=2,3", "--walk-forward", given});
  };
  expectRefused(walk("3m:1m"),
                "--walk-forward: \"3m:1m\" has a span that is shorter than a bar, 5m; m stands for "
                "minutes; a month is told in days, as in 90d:30d\n");
  expectRefused(
      walk("30s:30m"),
      "--walk-forward: \"30s:30m\" has a span that is shorter than a bar, 5m; give longer "
      "spans\n");
  expectRefused(
      walk("30m:30s"),
      "--walk-forward: \"30m:30s\" has a span that is shorter than a bar, 5m; give longer "
      "spans\n");
  expectRefused(walk("3M:1M"),
                "--walk-forward: \"3M\" in \"3M:1M\" is not a duration such as "
                "90d, 12h or 30m of at most 100 years; the units are s, m for "
                "minutes, h, d and w\n");
}

}  // namespace
}  // namespace orvane
