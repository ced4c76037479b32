// Files of dictionary records and of indexes on the command line and in a configuration.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <filesystem>

#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

class ServiceInputs : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> more) {
    std::vector<std::string> all = {"run",          "-s",       "dic_reader",      "-b",
                                    "A.X=" + bars_, "--report", folder_ / "report"};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }

  void expectRefused(std::vector<std::string> more, const std::vector<std::string>& parts) {
    const auto result = run(std::move(more));
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    for (const std::string& part : parts) EXPECT_THAT(result.err, HasSubstr(part));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "report"));
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
};

TEST_F(ServiceInputs, shouldGiveARunnerTheRecordsOfAFileEachFromItsTimeOn) {
  const auto records = folder_.write("records.csv",
                                     "name,target,key,text\n"
                                     "means,A.X,2021-01-04 09:10,\"{\"\"mean\"\":4}\"\n"
                                     "means,A.X,2021-01-04 09:20,\"{\"\"mean\"\":5.5}\"\n"
                                     "means,A.X,2021-01-05 00:00,\"{\"\"mean\"\":6}\"\n");
  const auto result = run({"--records", records});
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  const QJsonObject runner =
      test::readReport(folder_ / "report")["runners"].toArray()[0].toObject();
  EXPECT_EQ(runner["records"].toArray()[0].toObject()["records"].toInt(), 2)
      << "the third comes after the data";
  EXPECT_EQ(runner["env"].toObject()["last"].toString(), "5.5");
}

TEST_F(ServiceInputs, shouldTellEventsOfAScriptAndChangesOfAnIndexToWhoeverListens) {
  const auto events = folder_.write("events.json",
                                    R"([{"time": "2021-01-04 09:10", "target": "news",
      "name": "open", "fields": {"who": "X"}},
      {"time": "2021-01-04 09:12", "target": "news", "name": "close"}])");
  const auto indexes = folder_.write("indexes.csv",
                                     "index,time,element\nI.X,,A.X\n"
                                     "I.X,2021-01-04 09:15,A.X\nI.X,2021-01-04 09:15,B.X\n");
  const auto result = test::runProgram(
      {"run", "-s", test::testModule("event_listener"), "-b", "A.X=" + bars_, "-i", "I.X", "-i",
       "B.X", "--events", events, "--indexes", indexes, "--report", folder_ / "report"});
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  const QJsonObject runner =
      test::readReport(folder_ / "report")["runners"].toArray()[0].toObject();
  EXPECT_EQ(runner["env"].toObject()["heard"].toString(), "news who=X;I: A B;");
}

TEST_F(ServiceInputs, shouldNameFileLineFieldAndValueOfABadRecord) {
  const auto records = folder_.write("records.csv",
                                     "name,target,key,text\n"
                                     "means,A.X,2021-01-04 09:10,a\n"
                                     "means,A.X,soon,b\n");
  expectRefused({"--records", records}, {"records.csv:3", "key", "\"soon\""});
  expectRefused({"--records", "/nowhere/records.csv"}, {"/nowhere/records.csv"});
}

TEST_F(ServiceInputs, shouldLeaveNoDictionaryBehindWhenRecordsAreRefused) {
  const auto records = folder_.write("records.csv", "name,target,key,text\nd,t,soon,x\n");
  expectRefused({"--records", records, "--dictionary", folder_ / "d.db"}, {"\"soon\""});
  EXPECT_FALSE(std::filesystem::exists(folder_ / "d.db"));
  expectRefused({"--records", records, "--dictionary", records}, {"the records too"});
  EXPECT_THAT(test::readFile(records), HasSubstr("d,t,soon,x"));
}

TEST_F(ServiceInputs, shouldTakeIndexesWhoseCodesAreThereAndRefuseOthers) {
  const auto indexes = folder_.write("indexes.csv", "index,element\nI.X,A.X\n");
  EXPECT_EQ(run({"-i", "I.X", "-i", "A.X", "--indexes", indexes}).exitCode, kExitSuccess);
  std::filesystem::remove_all(folder_ / "report");
  expectRefused({"--indexes", indexes}, {"indexes.csv", "I.X"});
  expectRefused({"--indexes", folder_.write("bad.csv", "index,element\n,A.X\n")}, {"bad.csv:2:"});
}

TEST_F(ServiceInputs, shouldLetAPublishedSeriesBeSubscribedBeforeItsFirstRecord) {
  const std::vector<std::string> wants = {"-p", R"({"quotes": "M.X"})"};
  EXPECT_EQ(run({wants[0], wants[1]}).exitCode, kExitRunFailed);
  EXPECT_EQ(run({wants[0], wants[1], "--published", "M.X"}).exitCode, kExitSuccess);
  std::filesystem::remove_all(folder_ / "report");
  expectRefused({"--published", "A.X=1m"}, {"--published A.X=1m: "});
  expectRefused({"--published", "M.X=soon"}, {"--published M.X=soon: ", "soon"});
}

TEST_F(ServiceInputs, shouldFindTheFilesBesideTheConfiguration) {
  RunPlan plan;
  readRunConfig(folder_.write("run.json", R"({"runners": [{"strategy": "s"}],
      "records": ["a.csv", "/b.json"], "indexes": "i.json", "dictionary": "d.db",
      "published": ["M.X", {"code": "N.X", "frequency": "1m"}]})"),
                plan);
  ASSERT_EQ(plan.published.size(), 2u);
  EXPECT_EQ(plan.published[0].code, "M.X");
  EXPECT_EQ(plan.published[0].frequency, "tick");
  EXPECT_EQ(plan.published[1].frequency, "1m");
  EXPECT_EQ(plan.recordFiles, (std::vector<std::string>{folder_ / "a.csv", "/b.json"}));
  EXPECT_EQ(plan.indexFiles, std::vector<std::string>{folder_ / "i.json"});
  EXPECT_EQ(plan.dictionaryFile, folder_ / "d.db");
  try {
    RunPlan other;
    readRunConfig(folder_.write("bad.json", R"({"runners": [{"strategy": "s"}], "records": [5]})"),
                  other);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(),
                HasSubstr("bad.json: records: must be a text or an array of texts, not [5]"));
  }
}

}  // namespace
}  // namespace orvane
