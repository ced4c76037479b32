// A strategy that finds no memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

TEST(StarvingStrategy, shouldLoseTheCallsAloneInWhichItFindsNoMemory) {
  const test::TempFolder folder;
  const std::string bars = folder.write("bars.csv", test::barsCsv());
  const auto result = test::runProgram({"run", "-s", test::testModule("starving_strategy"), "-b",
                                        "A.X=" + bars, "--report", folder / "report"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  const QJsonObject runner = test::readReport(folder / "report")["runners"].toArray()[0].toObject();
  EXPECT_EQ(runner["status"].toString(), "Stopped");
  EXPECT_EQ(runner["bars"].toInt(), 30);
  EXPECT_EQ(runner["exceptions"].toObject()["count"].toInt(), 10);
  EXPECT_EQ(runner["env"].toObject()["taken"].toString(), "20");
}

}  // namespace
}  // namespace orvane
