// Runners that publish, and what the command tells of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>

#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

TEST(ServerRun, shouldFindTheAccountThatTheHostOffers) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  const auto result =
      test::runProgram({"run", "-s", "sma_cross", "-p", R"({"fast": 2, "slow": 4})", "-b",
                        "A.X=" + bars, "--server", "--report", folder / "report"});
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  const QJsonObject runner = test::readReport(folder / "report")["runners"].toArray()[0].toObject();
  EXPECT_TRUE(runner["server"].toBool());
  EXPECT_GT(runner["trading"].toObject()["trades"].toArray().size(), 0);
}

TEST(ServerRun, shouldBeAskedForByAFlagWithoutAValueOrByAKey) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  for (const char* flag : {"--server=5", "--live=5", "--quiet=no", "--no-digest=maybe"}) {
    const auto result = test::runProgram({"run", "-s", "sma_cross", "-b", bars, flag});
    EXPECT_EQ(result.exitCode, kExitBadInput) << flag;
    EXPECT_THAT(result.err, HasSubstr(std::string("orvane: ") + flag + ": a flag takes no value"));
  }
  RunPlan plan;
  readRunConfig(folder.write("run.json", R"({"runners": [{"strategy": "s", "server": true},
                                                         {"strategy": "s"}]})"),
                plan);
  EXPECT_TRUE(plan.runners[0].isServer);
  EXPECT_FALSE(plan.runners[1].isServer);
  try {
    RunPlan other;
    readRunConfig(folder.write("bad.json", R"({"runners": [{"strategy": "s", "server": 1}]})"),
                  other);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(),
                HasSubstr("bad.json: runners[0].server: must be true or false, not 1"));
  }
}

}  // namespace
}  // namespace orvane
