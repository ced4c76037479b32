// What a run that goes well says on the standard error, since hardly anybody means it so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

class RunNotes : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> more) {
    std::vector<std::string> all = {"run", "--strategy-log-level", "off"};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }
  /// The run ends well and says this alone, and with --quiet nothing.
  void expectNote(const std::vector<std::string>& arguments, const std::string& note) {
    const auto result = run(arguments);
    EXPECT_EQ(result.exitCode, kExitSuccess);
    EXPECT_EQ(result.err, note.empty() ? "" : "orvane: note: " + note + "\n");
    std::vector<std::string> quiet = arguments;
    quiet.push_back("--quiet");
    EXPECT_EQ(run(quiet).err, "");
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("x_1min.csv", test::barsCsv());
};

TEST_F(RunNotes, shouldBeNoneForAnOrdinaryRun) {
  expectNote({"-s", "sma_cross", "-b", bars_, "--from", "2021-01-04T09:10"}, "");
}

TEST_F(RunNotes, shouldTellOfOptionsOnBarsThatTicksPassBy) {
  const std::string ticks =
      folder_.write("t.csv", "datetime,bid1,ask1\n2021-01-04 09:00:00,10,11\n");
  const std::string note = " changes nothing for ticks; it is for bars\n";
  const auto of = [&](std::vector<std::string> more) {
    std::vector<std::string> all = {"inspect", "--ticks", ticks};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all).out;
  };
  EXPECT_THAT(of({"--stamp", "end", "--period", "1m", "--side", "ask"}),
              HasSubstr("note   \"stamp\", \"period\", \"side\"" + note));
  EXPECT_THAT(of({"--side", "ask"}), HasSubstr("note   \"side\"" + note));
  EXPECT_THAT(of({"--timezone", "Asia/Shanghai"}), testing::Not(HasSubstr(note)));
}

TEST_F(RunNotes, shouldTellOfOptionsOnBarsAlsoWhereTicksTellTheirZone) {
  const std::string ticks =
      folder_.write("t.csv", "datetime,bid1,ask1\n2021-01-04 09:00:00,10,11\n");
  const std::string whole = folder_ / "whole.csv";
  ASSERT_EQ(
      test::runProgram({"data", "convert", "--ticks", ticks, "--to", "csv", "-o", whole}).exitCode,
      kExitSuccess);
  const auto result =
      test::runProgram({"inspect", "--ticks", whole, "--stamp", "end", "--side", "ask"});
  EXPECT_THAT(result.out, HasSubstr("\"side\" changes nothing for ticks; it is for bars\n"));
  EXPECT_THAT(result.out, HasSubstr("\"stamp\" changes nothing here"));
}

TEST_F(RunNotes, shouldBeginTheSimulatedSpanAtTheBeginOfThePlayback) {
  const auto result = run({"-s", "sma_cross", "-b", bars_, "--from", "2021-01-04T09:10"});
  EXPECT_THAT(result.out, HasSubstr("simulated span     2021-01-04T09:10:00.000Z .. "));
  EXPECT_THAT(run({"-s", "sma_cross", "-b", bars_}).out,
              HasSubstr("simulated span     2021-01-04T09:01:00.000Z .. "));
}

TEST_F(RunNotes, shouldTellThatNothingLiesBetweenFromAndTo) {
  const std::string range =
      "the data go from 2021-01-04T09:01:00.000Z to 2021-01-04T09:31:00.000Z; choose --from and "
      "--to within them";
  expectNote({"-s", "sma_cross", "-b", bars_, "--from", "2021-01-05"},
             "nothing is played from \"2021-01-05\": " + range);
  expectNote({"-s", "sma_cross", "-b", bars_, "--from", "2020-01-01", "--to", "2021-01-04"},
             "nothing is played from \"2020-01-01\" to \"2021-01-04\": " + range);
}

TEST_F(RunNotes, shouldTellThatNoDataAreOfAnInstrument) {
  expectNote({"-s", "sma_cross", "-b", "X=" + bars_, "-i", "IF,multiplier=300"},
             "--instrument IF,multiplier=300: no data are of \"IF\"; they are of X, for which its "
             "price tick, "
             "multiplier and limits do not count");
  expectNote({"-s", "sma_cross", "-b", "IF=" + bars_, "-i", "IF,multiplier=300"}, "");
}

TEST_F(RunNotes, shouldTellThatARunnerDidNothingWithTicks) {
  const auto ticks = folder_.write("t.csv",
                                   "datetime,last,bid1,ask1\n2021-01-04 09:30:00.5,1,1,2\n"
                                   "2021-01-04 09:30:01,2,1,2\n");
  expectNote({"-s", "sma_cross", "-t", ticks},
             "\"sma_cross\" was given 2 ticks and no bar, and did nothing with them; if it takes "
             "bars, make some: orvane data convert FILE --to-period 1m --to csv -o BARS.csv");
  expectNote({"-s", "print_events", "-t", ticks}, "");
}

TEST_F(RunNotes, shouldTellThatADictionaryHoldsWhatAnEarlierRunPublished) {
  const std::vector<std::string> arguments = {
      "-s", test::testModule("publishing_finisher"), "-b", bars_, "--dictionary", folder_ / "d.db"};
  const auto first = run(arguments);
  EXPECT_EQ(first.exitCode, kExitSuccess) << first.err;
  EXPECT_EQ(first.err, "");
  const auto second = run(arguments);
  EXPECT_EQ(second.exitCode, kExitSuccess);
  EXPECT_EQ(second.err, "orvane: note: " + (folder_ / "d.db") +
                            " holds 1 records that earlier runs published, which this one finds "
                            "and adds to; give another --dictionary for a run of its own\n");
}

TEST_F(RunNotes, shouldNotCountTheRecordsOfFilesAsThoseOfEarlierRuns) {
  const auto records =
      folder_.write("records.csv", "name,target,key,text\nf,A,2021-01-04 09:05,1\n");
  const std::vector<std::string> arguments = {
      "-s", "sma_cross", "-b", bars_, "--records", records, "--dictionary", folder_ / "e.db"};
  for (int i = 0; i < 2; ++i) expectNote(arguments, "");
}

TEST_F(RunNotes, shouldTellOfRecordsAndEventsThatNobodyWillSee) {
  const auto records = folder_.write("late.csv",
                                     "name,target,key,text\nf,A,2021-01-04 09:05,1\n"
                                     "f,A,2021-01-04 17:05,1\n");
  expectNote({"-s", "sma_cross", "-b", bars_, "--records", records},
             records +
                 ": 1 of 2 records are never seen, since they come after what is played, "
                 "2021-01-04T09:02:00.000Z to 2021-01-04T09:31:00.000Z; is their time zone right?");
  const auto events = folder_.write("events.json",
                                    R"([{"time": "2021-01-04 01:30", "target": "A",
                                         "name": "b"},
                                        {"time": "2021-01-04 09:30", "target": "A",
                                         "name": "b"}])");
  expectNote({"-s", "sma_cross", "-b", bars_, "--events", events},
             "1 of 2 general events are never told, since they lie outside what is played, "
             "2021-01-04T09:02:00.000Z to 2021-01-04T09:31:00.000Z; is their time zone right?");
}

TEST_F(RunNotes, shouldTellThatNobodyAskedForTheData) {
  expectNote({"-s", "grid_watcher", "-b", bars_},
             "nobody subscribed the data, so they were played to no one; does the strategy ask for "
             "them, or need other input?");
  expectNote({"-s", "print_events", "-b", bars_}, "");
}

TEST_F(RunNotes, shouldTellOfAMarginRateThatIsHardlyOne) {
  expectNote({"-s", "sma_cross", "-b", bars_, "--margin-rate", "20"},
             "the margin rate 20 is 2000 % of the turnover, more than all of it; 10 % is written "
             "0.1");
  expectNote({"-s", "sma_cross", "-b", bars_, "--margin-rate", "1"}, "");
}

TEST_F(RunNotes, shouldLeaveRecordsThatCanBeReadButOnceToTheRun) {
  const std::string pipe = folder_ / "records.csv";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // Opens once there is a reader, and whoever opened it a second time would wait for ever.
  std::thread writer(
      [&] { std::ofstream(pipe) << "name,target,key,text\nf,A,2021-01-04 17:05,1\n"; });
  const auto result = run({"-s", "sma_cross", "-b", bars_, "--records", pipe});
  writer.join();
  EXPECT_EQ(result.exitCode, kExitSuccess);
  EXPECT_EQ(result.err, "");
}

TEST_F(RunNotes, shouldTellThatACacheWasMadeOfAnOlderFile) {
  const std::vector<std::string> arguments = {"-s",  "sma_cross", "-b",
                                              bars_, "--cache",   folder_ / "caches"};
  EXPECT_THAT(run(arguments).out, testing::Not(HasSubstr("older")));
  folder_.write("x_1min.csv", test::barsCsv("2021-01-04 09:07:00,10.5,11.5,9.5,10.6,7"));
  EXPECT_THAT(run(arguments).out, HasSubstr(" was made of an older " + bars_ + ", and made anew"));
  EXPECT_THAT(run(arguments).out, testing::Not(HasSubstr("older")));
}

TEST_F(RunNotes, shouldLeaveGeneratedFilesAloneUnlessForced) {
  const std::vector<std::string> arguments = {"generate", "--out", folder_ / "g", "--minutes", "5"};
  ASSERT_EQ(test::runProgram(arguments).exitCode, kExitSuccess);
  const std::string config = test::readFile(folder_ / "g/run.json");
  folder_.write("g/run.json", "mine");
  const auto refused = test::runProgram(arguments);
  EXPECT_EQ(refused.exitCode, kExitBadInput);
  EXPECT_EQ(refused.err, "orvane: --out: " + (folder_ / "g/run.json") +
                             " is there already; choose another folder, or write over it with "
                             "--force\n");
  EXPECT_EQ(test::readFile(folder_ / "g/run.json"), "mine");
  std::vector<std::string> forced = arguments;
  forced.push_back("--force");
  EXPECT_EQ(test::runProgram(forced).exitCode, kExitSuccess);
  EXPECT_EQ(test::readFile(folder_ / "g/run.json"), config);
}

}  // namespace
}  // namespace orvane
