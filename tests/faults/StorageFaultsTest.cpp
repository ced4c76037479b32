// Disks that are full or must not be written, and files that are not what they should be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "host/InputError.h"
#include "platform/market/files/DataFiles.h"
#include "tests/host/Program.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::Eq;
using testing::HasSubstr;

class StorageFaults : public testing::Test {
 protected:
  StorageFaults() { fs::create_directories(disk_); }

  test::ProgramResult run(std::vector<std::string> more, const test::ProgramLimits& limits = {},
                          const std::string& strategy = "sma_cross") const {
    std::vector<std::string> all = {"run", "-s", strategy, "-b", "A.X=" + bars_};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all, {}, limits);
  }

  /// Runs the command with a small disk of its own in `disk_`.
  test::ProgramResult runOnDisk(std::vector<std::string> more, long bytes, bool isReadOnly = false,
                                const std::string& strategy = "sma_cross") const {
    return run(std::move(more), {{}, 0, disk_, bytes, isReadOnly}, strategy);
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string disk_ = folder_ / "disk";
  const std::string report_ = folder_ / "report";
};

constexpr long kTinyDisk = 4096;
constexpr long kSmallDisk = 65536;

#define ORVANE_SKIP_WITHOUT_DISK(result) \
  if ((result).exitCode == test::kNoDisk) GTEST_SKIP() << "no disk may be mounted here"

TEST_F(StorageFaults, shouldTellOfEachReportFileThatFindsNoRoomAndEndTheRunInOrder) {
  const auto result = runOnDisk({"--report", disk_}, kTinyDisk);
  ORVANE_SKIP_WITHOUT_DISK(result);
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
  EXPECT_THAT(result.err, HasSubstr("report.json: cannot be written: No space left on device"));
  EXPECT_THAT(result.out, HasSubstr("runner sma_cross (sma_cross): Stopped"));
}

TEST_F(StorageFaults, shouldSayWhatIsAmissWhenASweepFindsNoRoomForItsFirstTable) {
  const auto result = test::runProgram({"sweep", "-s", "sma_cross", "-b", "A.X=" + bars_, "--grid",
                                        "fast=1,2", "--out", disk_ + "/sweep"},
                                       {}, {{}, 0, disk_, kTinyDisk});
  ORVANE_SKIP_WITHOUT_DISK(result);
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
  EXPECT_THAT(result.err, HasSubstr("orvane: --out: \"" + disk_ + "/sweep"));
  EXPECT_THAT(result.err, HasSubstr("disk"));
  EXPECT_THAT(result.err, HasSubstr("full"));
}

TEST_F(StorageFaults, shouldWriteTheReportWhenTheDiskOfTheStoreIsFull) {
  const std::string store = disk_ + "/store.db";
  const auto result = runOnDisk({"--store", store, "--report", report_}, kSmallDisk);
  ORVANE_SKIP_WITHOUT_DISK(result);
  // Where already the tables find no room, the run is refused.
  EXPECT_THAT(result.exitCode, AnyOf(Eq(kExitRunFailed), Eq(kExitBadInput))) << result.err;
  EXPECT_THAT(result.err, HasSubstr("store " + store));
  EXPECT_THAT(result.err, AnyOf(HasSubstr("disk is full"), HasSubstr("disk I/O error")));
  EXPECT_EQ(fs::exists(report_ + "/report.json"), result.exitCode == kExitRunFailed);
}

TEST_F(StorageFaults, shouldWriteTheReportWhenTheDiskOfTheDictionaryIsFull) {
  const std::string dictionary = disk_ + "/d.db";
  const auto result = runOnDisk({"--server", "--dictionary", dictionary, "--report", report_},
                                kSmallDisk, false, "publisher_server");
  ORVANE_SKIP_WITHOUT_DISK(result);
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.err;
  EXPECT_THAT(result.err, HasSubstr("dictionary " + dictionary));
  EXPECT_THAT(result.err, AnyOf(HasSubstr("disk is full"), HasSubstr("disk I/O error")));
  // Whether there is room for the beginning of one depends on the system's disk of memory.
  const bool isFullAtOnce = result.out.empty();
  EXPECT_EQ(fs::exists(report_ + "/report.json"), !isFullAtOnce);
}

TEST_F(StorageFaults, shouldRefuseAReportFolderThatMustNotBeWrittenBeforeAnythingRuns) {
  const auto result = runOnDisk({"--report", disk_ + "/report"}, kSmallDisk, true);
  ORVANE_SKIP_WITHOUT_DISK(result);
  EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
  EXPECT_THAT(result.err, HasSubstr("--report: the folder"));
  EXPECT_EQ(result.out, "");
}

TEST_F(StorageFaults, shouldRefuseDatabasesOnADiskThatMustNotBeWrittenBeforeAnythingRuns) {
  for (const std::string option : {"--store", "--dictionary"}) {
    const auto result = runOnDisk({option, disk_ + "/x.db"}, kSmallDisk, true);
    ORVANE_SKIP_WITHOUT_DISK(result);
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    EXPECT_THAT(result.err, HasSubstr(disk_ + "/x.db: its folder cannot be written"));
    EXPECT_EQ(result.out, "");
  }
}

TEST_F(StorageFaults, shouldRefuseADatabaseThatIsGarbageOrAFolderAndLeaveItAsItIs) {
  const std::string garbage(5000, '\x5A');
  const std::string headOnly = std::string("SQLite format 3\0", 16) + garbage;
  for (const std::string option : {"--store", "--dictionary"}) {
    for (const std::string& bytes : {garbage, headOnly, std::string("short")}) {
      const std::string path = folder_.write("x.db", bytes);
      const auto result = run({option, path, "--report", report_});
      EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
      EXPECT_THAT(result.err, HasSubstr(path));
      EXPECT_EQ(test::readFile(path), bytes);
      EXPECT_FALSE(fs::exists(report_));
    }
    const auto result = run({option, disk_});
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    EXPECT_THAT(result.err, HasSubstr(disk_ + ": it is a folder"));
  }
}

TEST_F(StorageFaults, shouldEndInOrderWhateverBytesOfADatabaseAreBroken) {
  const auto seed = static_cast<unsigned>(support::randomSeed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const std::string store = folder_ / "store.db", dictionary = folder_ / "d.db";
  const std::vector<std::string> options = {"--server",     "--store",  store,
                                            "--dictionary", dictionary, "--quiet"};
  ASSERT_EQ(run(options, {}, "publisher_server").exitCode, kExitSuccess);
  for (int round = 0; round < 4; ++round) {
    const std::string& path = round % 2 == 0 ? store : dictionary;
    std::string bytes = test::readFile(path);
    for (int i = 0; i < 200; ++i)
      bytes[std::uniform_int_distribution<std::size_t>(100, bytes.size() - 1)(random)] =
          static_cast<char>(random());
    const std::string good = test::readFile(path);
    std::ofstream(path, std::ios::binary) << bytes;
    const auto result = run(options, {}, "publisher_server");
    EXPECT_THAT(result.exitCode, AnyOf(Eq(kExitSuccess), Eq(kExitRunFailed), Eq(kExitBadInput)));
    if (result.exitCode != kExitSuccess) {
      EXPECT_THAT(result.err, HasSubstr(path));
    }
    for (const char* ending : {"", "-wal", "-shm"}) fs::remove(path + ending);
    std::ofstream(path, std::ios::binary) << good;
  }
}

TEST_F(StorageFaults, shouldRefuseADataFileThatGivesLessThanItsSizeSaid) {
  // Such a file never gives as many bytes as its size tells, like one that is cut short meanwhile.
  const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
  std::error_code error;
  if (!fs::is_regular_file(path, error) || fs::file_size(path, error) < 4096)
    GTEST_SKIP() << "there is no such file here";
  try {
    DataFileRequest request;
    request.paths = {path};
    loadBars(request);
    ADD_FAILURE() << "it was read";
  } catch (const DataFileError& refusal) {
    EXPECT_EQ(std::string(refusal.what()), path + ": was cut short while it was read");
  }
}

}  // namespace
}  // namespace orvane
