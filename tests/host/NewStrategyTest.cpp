// What `orvane new-strategy` writes, and what it refuses. That a project builds and runs is shown
// against the installed package, in tests/package.

#include "host/NewStrategyCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "host/InputError.h"
#include "host/NewFolder.h"
#include "host/StrategyProject.h"
#include "host/StrategyTemplates.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::set<std::string> filesBelow(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file()) names.insert(fs::relative(entry.path(), folder).string());
  return names;
}

class NewStrategy : public testing::Test {
 protected:
  test::ProgramResult make(const std::string& name, const std::string& folder) {
    return test::runProgram({"new-strategy", name, "--dir", folder});
  }

  test::TempFolder folder_;
};

TEST_F(NewStrategy, shouldWriteAWholeProjectUnderItsName) {
  const auto result = make("mean_cross", folder_ / "deep/below");
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("orvane run run.json"));
  EXPECT_EQ(
      filesBelow(folder_ / "deep/below"),
      (std::set<std::string>{".gitignore", "CMakeLists.txt", "README.md", "data/IDX01.SIM_1min.csv",
                             "data/format.json", "data/instruments.json", "mean_cross.cpp",
                             "mean_cross_test.cpp", "run.json"}));
  EXPECT_THAT(test::readFile(folder_ / "deep/below/mean_cross.cpp"),
              HasSubstr("ORVANE_STRATEGY(MeanCrossStrategy)"));
  EXPECT_THAT(test::readFile(folder_ / "deep/below/CMakeLists.txt"),
              HasSubstr("add_library(MeanCrossStrategyCode OBJECT mean_cross.cpp)"));
  EXPECT_THAT(test::readFile(folder_ / "deep/below/run.json"),
              HasSubstr("\"strategy\": \"build/mean_cross.so\""));
  for (const std::string& name : filesBelow(folder_ / "deep/below"))
    EXPECT_THAT(test::readFile(folder_ / ("deep/below/" + name)), Not(HasSubstr("@"))) << name;
  EXPECT_EQ(filesBelow(folder_ / "deep").size(), 9u) << "nothing stays beside it";
}

TEST_F(NewStrategy, shouldMakeDataThatARunReads) {
  ASSERT_EQ(make("mine", folder_ / "mine").exitCode, kExitSuccess);
  const auto seen = test::runProgram({"inspect", folder_ / "mine/data/IDX01.SIM_1min.csv",
                                      "--format", folder_ / "mine/data/format.json"});
  EXPECT_EQ(seen.exitCode, kExitSuccess) << seen.err;
  EXPECT_THAT(seen.out, HasSubstr("1200"));
}

TEST_F(NewStrategy, shouldRefuseANameWithTheNameAndTheRule) {
  for (const char* name : {"my-first", "1st", "_mine", "über", "a b", "../up", "a.b"}) {
    const auto result = make(name, folder_ / "made");
    EXPECT_EQ(result.exitCode, kExitBadInput) << name;
    EXPECT_THAT(result.err, StartsWith("orvane: name: \"" + std::string(name) +
                                       "\" cannot name a strategy: letters, digits and "
                                       "underscores alone, a letter first"));
  }
  EXPECT_THAT(strategyNameFault(std::string(65, 'a')), HasSubstr("at most 64"));
  EXPECT_THAT(strategyNameFault(std::string(64, 'a')), IsEmpty());
  EXPECT_THAT(make("", folder_ / "made").err, StartsWith("orvane: name: \"\" is empty"));
  EXPECT_FALSE(fs::exists(folder_ / "made"));
}

TEST_F(NewStrategy, shouldNameTheClassSoThatItMeetsNoOtherWord) {
  EXPECT_EQ(strategyClassName("mean_cross"), "MeanCrossStrategy");
  EXPECT_EQ(strategyClassName("class"), "ClassStrategy");
  EXPECT_EQ(strategyClassName("my_strategy"), "MyStrategy");
  EXPECT_EQ(strategyClassName("strategy"), "Strategy");
  EXPECT_EQ(strategyClassName("A__b_2c_"), "AB2cStrategy");
}

TEST_F(NewStrategy, shouldLeaveAFolderAloneThatHoldsAnything) {
  fs::create_directory(folder_ / "full");
  folder_.write("full/notes.txt", "mine");
  const auto result = make("mine", folder_ / "full");
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_EQ(result.err, "orvane: --dir: the folder \"" + (folder_ / "full") +
                            "\" is not empty; name a folder that is empty, or not there yet\n");
  EXPECT_EQ(filesBelow(folder_ / "full"), (std::set<std::string>{"notes.txt"}));
}

TEST_F(NewStrategy, shouldNameWhatStandsWhereItsFolderWouldBe) {
  folder_.write("file", "mine");
  fs::create_symlink("nowhere", folder_ / "link");
  for (const char* name : {"file", "link"}) {
    const auto result = make("mine", folder_ / name);
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_THAT(result.err, StartsWith("orvane: --dir: \"" + (folder_ / name) +
                                       "\" is there, and is not a folder; name a folder"));
  }
  const auto below = make("mine", folder_ / "file/sub");
  EXPECT_EQ(below.exitCode, kExitBadInput);
  EXPECT_THAT(below.err,
              StartsWith("orvane: --dir: \"" + (folder_ / "file/sub") + "\" cannot be made: \"" +
                         (folder_ / "file") + "\" is not a folder; name a folder"));
}

TEST_F(NewStrategy, shouldNameAFolderThatTakesNoNewOnes) {
  // Even root makes no folders there.
  const auto result = make("mine", "/proc/self/mine");
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, StartsWith("orvane: --dir: \"/proc/self\" cannot be written: "));
}

TEST_F(NewStrategy, shouldSayTheNextCommandsAsAShellTakesThem) {
  const auto result = make("mine", folder_ / "it's mine");
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\n  cd '" + (folder_ / "it'\\''s mine") + "'\n"));
  EXPECT_THAT(result.out, HasSubstr("cmake -B build"));
}

TEST_F(NewStrategy, shouldFillAFolderThatIsEmpty) {
  fs::create_directory(folder_ / "empty");
  EXPECT_EQ(make("mine", folder_ / "empty/").exitCode, kExitSuccess);
  EXPECT_EQ(filesBelow(folder_ / "empty").size(), 9u);
  EXPECT_EQ(make("mine", folder_ / "new/").exitCode, kExitSuccess);
  EXPECT_EQ(filesBelow(folder_ / "new").size(), 9u);
}

TEST_F(NewStrategy, shouldLeaveNothingBehindWhereAFileCannotBeWritten) {
  test::ProgramLimits limits;
  limits.mostFileBytes = 4096;  // The sources fit, the data do not.
  const auto result =
      test::runProgram({"new-strategy", "mine", "--dir", folder_ / "a/b"}, {}, limits);
  EXPECT_EQ(result.exitCode, kExitRunFailed) << result.out;
  EXPECT_THAT(result.err, HasSubstr("data/IDX01.SIM_1min.csv\" cannot be written: "));
  EXPECT_TRUE(fs::is_empty(folder_ / "."));
  fs::create_directory(folder_ / "empty");
  EXPECT_EQ(
      test::runProgram({"new-strategy", "mine", "--dir", folder_ / "empty"}, {}, limits).exitCode,
      kExitRunFailed);
  EXPECT_TRUE(fs::is_empty(folder_ / "empty"));
}

TEST(NewFolder, shouldTakeEverythingAwayThatWasNotKept) {
  test::TempFolder folder;
  {
    NewFolder made(folder / "a/b/c", "place", "remedy");
    made.write("sub/file", "text");
    EXPECT_FALSE(fs::exists(folder / "a")) << "it appears at the end alone";
  }
  EXPECT_TRUE(fs::is_empty(folder / "."));
}

TEST(NewFolder, shouldTakeBackWhatItMovedWhereTheRestHasNoPlace) {
  test::TempFolder folder;
  NewFolder made(folder / "a", "place", "remedy");
  made.write("file", "text");
  fs::create_directory(folder / "a");
  folder.write("a/other", "of somebody else");
  EXPECT_THROW(made.keep(), InputError);
  EXPECT_EQ(filesBelow(folder / "a"), (std::set<std::string>{"other"}));
}

}  // namespace
}  // namespace orvane
