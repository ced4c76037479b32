// Sweeps that come to nothing: what is said of them, and what is left behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/InputError.h"
#include "tests/host/Program.h"

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
  expectRefused(sweep("sma_cross", {"--grid", "fsat=1:4000:1", "--batch", "8", "--out", out}),
                "the strategy refuses all 24 of 4000 combinations that were tried before anything "
                "is played, such as fsat=1: ");
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

TEST_F(SweepRefusal, shouldGoOnWhereSomeCombinationIsTaken) {
  // All of the first batch is refused, and half of the whole.
  const auto result = sweep(swept_, {"--grid", "refuse=true,false", "--grid", "every=2:9:1",
                                     "--batch", "4", "--out", folder_ / "out"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("8 runs ended as an error, the first: number 1"));
  EXPECT_TRUE(std::filesystem::exists(folder_ / "out/results.csv"));
}

TEST_F(SweepRefusal, shouldKeepRunsThatAllEndAsErrorsWhileTheyPlay) {
  const auto result =
      sweep(swept_, {"--grid", "fail=3", "--grid", "every=5,6", "--out", folder_ / "out"});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.out, HasSubstr("No combination is ranked by profit: none of the 2 runs ended "
                                    "as it should."));
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
  expectRefused(walk("3M:1M"),
                "--walk-forward: \"3M\" in \"3M:1M\" is not a duration such as "
                "90d, 12h or 30m of at most 100 years; the units are s, m for "
                "minutes, h, d and w\n");
}

}  // namespace
}  // namespace orvane
