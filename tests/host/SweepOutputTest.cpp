// `orvane sweep` from outside: what it tells where runs are alike, odd or dead.

#include <fcntl.h>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "host/InputError.h"
#include "tests/host/StartedProgram.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class SweepOutput : public testing::Test {
 protected:
  test::ProgramResult sweep(const std::vector<std::string>& more,
                            const test::ProgramLimits& limits = {}) const {
    std::vector<std::string> all = {"sweep", "-s", test::testModule("swept_strategy"), "-b",
                                    "A.X=" + bars_};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all, {}, limits);
  }
  std::vector<std::string> lines() const {
    std::vector<std::string> all(1);
    for (const char c : test::readFile(out_ + "/results.csv")) {
      if (c == '\n')
        all.emplace_back();
      else
        all.back() += c;
    }
    all.pop_back();
    return all;
  }
  /// The begins of all lines of the table but the head, up to so many commas.
  std::vector<std::string> begins(int commas) const {
    std::vector<std::string> result;
    for (const std::string& line : lines()) {
      std::size_t end = 0;
      for (int i = 0; i < commas; ++i) end = line.find(',', end) + 1;
      result.push_back(line.substr(0, end - 1));
    }
    result.erase(result.begin());
    return result;
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string out_ = folder_ / "out";
};

TEST_F(SweepOutput, shouldGiveTheSameBytesOnAnyNumberOfThreadsAndInAnyBatches) {
  const std::vector<std::string> grid = {"--grid",     "every=2:9:1", "--grid",
                                         "volume=1,3", "--digest",    "--out"};
  std::string first;
  for (const auto& [threads, batch] : {std::pair{"1", "1"}, {"1", "16"}, {"4", "3"}, {"4", "16"}}) {
    std::filesystem::remove_all(out_);
    std::vector<std::string> all = grid;
    all.insert(all.end(), {out_, "--threads", threads, "--batch", batch});
    ASSERT_EQ(sweep(all).exitCode, 0);
    const std::string csv = test::readFile(out_ + "/results.csv");
    if (first.empty()) first = csv;
    EXPECT_EQ(csv, first) << threads << " " << batch;
  }
  EXPECT_EQ(lines().size(), 17);
}

TEST_F(SweepOutput, shouldRankEqualOnesByTheirNumberAndAskWhatAParameterIsFor) {
  const auto result = sweep({"--grid", "every=4,3", "--grid", "evry=5,x,1", "--out", out_});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("--grid evry: all its values gave the same figures; does"));
  EXPECT_THAT(result.err, Not(HasSubstr("--grid every")));
  // Sample, window, from, to, rank, number: those with equal figures by their numbers.
  EXPECT_THAT(begins(6),
              testing::AnyOf(ElementsAre("whole,,,,1,1", "whole,,,,2,2", "whole,,,,3,3",
                                         "whole,,,,4,4", "whole,,,,5,5", "whole,,,,6,6"),
                             ElementsAre("whole,,,,1,4", "whole,,,,2,5", "whole,,,,3,6",
                                         "whole,,,,4,1", "whole,,,,5,2", "whole,,,,6,3")));
}

TEST_F(SweepOutput, shouldPutQuotesAroundWhatWouldNotBeOneField) {
  const auto result =
      sweep({"--grid", R"(note="a,b","say ""x",plain)", "--grid", "refuse=true", "--out", out_});
  EXPECT_EQ(result.exitCode, kExitBadInput) << "these quotes do not close";
  ASSERT_EQ(sweep({"--grid", R"(note="a,b","say \"x\"",plain)", "--grid", "refuse=false,true",
                   "--grid", "profit=1", "--out", out_})
                .exitCode,
            kExitRunFailed);
  EXPECT_THAT(lines().front(),
              HasSubstr("rank,number,note,refuse,param.profit,status,message,profit,"));
  EXPECT_THAT(lines()[1], HasSubstr(R"(,1,1,"a,b",false,1,Stopped,,)"));
  EXPECT_THAT(lines()[2], HasSubstr(R"(,2,3,"say ""x""",false,1,Stopped,,)"));
  EXPECT_THAT(lines()[3], HasSubstr(",3,5,plain,false,1,Stopped,,"));
  EXPECT_THAT(lines()[4], HasSubstr(R"(,,2,"a,b",true,1,Error,"不要 ""these"", no",0,0,)"));
}

TEST_F(SweepOutput, shouldShowNoSignAtWhatRoundsToZero) {
  const auto result = sweep({"--grid", "every=3:5:1", "--capital", "1000000000"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr(" 0.00%"));
  EXPECT_THAT(result.out, Not(HasSubstr("-0.00")));
  EXPECT_THAT(result.out, HasSubstr("  -")) << "none of them lost";
}

TEST_F(SweepOutput, shouldGoOnWhereACombinationEndsItsProcess) {
  const std::vector<std::string> grid = {
      "--grid", "every=3,4", "--grid", "die=no,abort,kill,exit,exit well", "--out", out_};
  const auto result = sweep(grid);
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("orvane: 8 runs crashed, the first: number 2 (every=3, "
                                    "die=abort): signal SIGABRT (Aborted) ended its process"));
  const auto all = lines();
  ASSERT_EQ(all.size(), 11);
  for (std::size_t i = 1; i <= 2; ++i) EXPECT_THAT(all[i], HasSubstr(",no,Stopped,,"));
  for (const auto& [way, end] :
       {std::pair{"abort", "signal SIGABRT (Aborted) ended its process"},
        {"kill",
         "\"signal SIGKILL (Killed) ended its process, as the system does where memory is "
         "out\""},
        {"exit", "\"it ended its process, exit code 3\""},
        {"exit well", "\"it ended its process, exit code 0\""}}) {
    // No figure and no digest.
    const std::string wanted = fmt::format(",{},Crashed,{}{}", way, end, std::string(20, ','));
    EXPECT_EQ(
        std::ranges::count_if(all, [&](const std::string& line) { return line.ends_with(wanted); }),
        2)
        << wanted;
  }
  const std::string csv = test::readFile(out_ + "/results.csv");
  const auto again = sweep(grid);
  EXPECT_EQ(again.exitCode, kExitRunFailed);
  EXPECT_THAT(again.out, HasSubstr("; 10 runs were done before"));
  std::vector<std::string> retry = grid;
  retry.emplace_back("--retry-crashed");
  EXPECT_THAT(sweep(retry).out, HasSubstr("; 2 runs were done before"));
  EXPECT_EQ(test::readFile(out_ + "/results.csv"), csv);
}

TEST_F(SweepOutput, shouldNotCountACrashOutOfSampleAsAProfit) {
  // It sees 20 records only where the window is long.
  const auto result = sweep(
      {"--grid", "every=3,4", "--grid", "die=exit", "--walk-forward", "15m:15m", "--out", out_});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.out,
              HasSubstr("out-of-sample: 1 windows, 0 with a profit, 1 that ended as an error; the "
                        "sum of their profits is 0.00"));
  EXPECT_THAT(begins(2), ElementsAre("in-sample,1", "in-sample,1", "out-of-sample,1"));
}

TEST_F(SweepOutput, shouldTryNothingButTheChosenOneWhereWhatCrashedIsRunAgain) {
  const std::vector<std::string> walk = {
      "--grid",          "die=marked,no",
      "--params",        R"({"mark": ")" + folder_.write("mark", "") + R"("})",
      "--walk-forward",  "22m:8m",
      "--retry-crashed", "--out"};
  const auto walkInto = [&](const std::string& out) {
    std::vector<std::string> all = walk;
    all.push_back(out);
    return sweep(all);
  };
  // Of two that are equal the first one is chosen, unless it crashes.
  EXPECT_EQ(walkInto(out_).exitCode, kExitRunFailed);
  EXPECT_THAT(begins(6), ElementsAre(HasSubstr(",1,2"), HasSubstr("in-sample,1,"),
                                     testing::AllOf(HasSubstr("out-of-sample,1,"),
                                                    testing::EndsWith(",1,2"))));
  std::filesystem::remove(folder_ / "mark");
  const auto again = walkInto(out_);
  EXPECT_EQ(again.exitCode, 0) << again.err;
  EXPECT_THAT(again.out, HasSubstr("; 1 run was done before"));
  EXPECT_THAT(again.out, HasSubstr("out-of-sample: 1 windows"));
  ASSERT_EQ(lines().size(), 4);
  EXPECT_THAT(begins(6).back(), testing::EndsWith(",1,1"));
  // Nor does the store have the other one any more.
  EXPECT_THAT(walkInto(out_).out, HasSubstr("; 3 runs were done before"));
  ASSERT_EQ(walkInto(folder_ / "whole").exitCode, 0);
  for (const char* name : {"/results.csv", "/sweep.html"})
    EXPECT_EQ(test::readFile(out_ + name), test::readFile(folder_ / "whole" + name)) << name;
}

/// A sweep of four combinations, one after the other, each of which waits until its gate opens.
class SweepAtAGate : public SweepOutput {
 protected:
  SweepAtAGate() { EXPECT_EQ(mkfifo(gate_.c_str(), 0600), 0); }
  std::vector<std::string> arguments() const {
    return {"sweep",
            "-s",
            test::testModule("waiting_strategy"),
            "-b",
            "A.X=" + bars_,
            "-p",
            R"({"gate": ")" + gate_ + R"("})",
            "--grid",
            "n=1:4:1",
            "--batch",
            "1",
            "--out",
            out_};
  }
  void openGate() const { close(open(gate_.c_str(), O_WRONLY)); }
  /// Whether any process waits at the gate.
  bool isAnyoneThere() const {
    const int gate = open(gate_.c_str(), O_WRONLY | O_NONBLOCK);
    if (gate >= 0) close(gate);
    return gate >= 0;
  }
  /// Calls the same sweep again and answers what it tells, interrupted in its first batch.
  std::string goOn() const {
    test::StartedProgram program(arguments());
    EXPECT_TRUE(program.awaitOutput("waiting\n"));
    program.send(SIGINT);
    openGate();
    const test::ProgramResult result = program.end();
    EXPECT_EQ(result.exitCode, kExitInterrupted);
    return result.out;
  }

  const std::string gate_ = folder_ / "gate";
};

TEST_F(SweepAtAGate, shouldKeepWhatIsDoneAndLeaveNoProcessOnTheSecondInterrupt) {
  test::StartedProgram program(arguments());
  ASSERT_TRUE(program.awaitOutput("waiting\n"));
  openGate();
  ASSERT_TRUE(program.awaitOutput("stopped\nwaiting\n"));
  program.send(SIGINT);
  program.send(SIGINT);
  // This waits until nobody can write to the standard output any more, which the process of the
  // batch could, for as long as it lives.
  EXPECT_EQ(program.end().exitCode, kExitInterrupted);
  EXPECT_FALSE(isAnyoneThere());
  EXPECT_FALSE(std::filesystem::exists(out_ + "/results.csv")) << "it did not end at once";
  EXPECT_THAT(goOn(), HasSubstr("; 1 run was done before"));
  EXPECT_EQ(lines().size(), 2);
}

TEST_F(SweepAtAGate, shouldEndInOrderWhereItsTerminalGoes) {
  test::StartedProgram program(arguments());
  ASSERT_TRUE(program.awaitOutput("waiting\n"));
  openGate();
  ASSERT_TRUE(program.awaitOutput("stopped\nwaiting\n"));
  for (int i = 0; i < 2; ++i) program.send(SIGHUP);
  // Open for whoever comes, and waits for nobody where all are gone.
  const int gate = open(gate_.c_str(), O_RDWR);
  EXPECT_EQ(program.end().exitCode, kExitInterrupted);
  close(gate);
  EXPECT_EQ(lines().size(), 2);
}

TEST_F(SweepOutput, shouldSeeTheEndOfABatchThoughItsParentIgnoredTheEndsOfChildren) {
  const std::string command = fmt::format(
      "trap '' CHLD; exec '{}' sweep -s '{}' -b 'A.X={}' --grid die=no,exit -q --out '{}' "
      "2>'{}'",
      ORVANE_TEST_PROGRAM, test::testModule("swept_strategy"), bars_, out_, folder_ / "err");
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), kExitRunFailed) << test::readFile(folder_ / "err");
  ASSERT_EQ(lines().size(), 3);
  EXPECT_THAT(lines().back(), HasSubstr("\"it ended its process, exit code 3\""));
}

TEST_F(SweepOutput, shouldSayWhatIsKeptWhenTheDiskIsFull) {
  std::filesystem::create_directory(folder_ / "disk");
  std::vector<std::string> grid = {
      "--grid", "every=1:20:1", "--grid",           "quit=0:18:1", "--batch",
      "20",     "--params",     R"({"note": "x"})", "--out",       folder_ / "disk/out"};
  const auto result = sweep(grid, {{}, 0, folder_ / "disk", 180'000});
  if (result.exitCode == test::kNoDisk) GTEST_SKIP() << "nobody may mount a disk here";
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
  EXPECT_THAT(result.err, HasSubstr("results.db: "));
  EXPECT_THAT(result.err, HasSubstr("of 380 runs done; they are kept in "));
}

TEST_F(SweepOutput, shouldRefuseAFolderThatCannotBeWritten) {
  std::filesystem::create_directory(folder_ / "disk");
  const auto result = sweep({"--grid", "every=3,4", "--out", folder_ / "disk/out"},
                            {{}, 0, folder_ / "disk", 100'000, true});
  if (result.exitCode == test::kNoDisk) GTEST_SKIP() << "nobody may mount a disk here";
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, HasSubstr("orvane: --out: "));
  EXPECT_THAT(result.err, HasSubstr((folder_ / "disk/out")));
}

}  // namespace
}  // namespace orvane
