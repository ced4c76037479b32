#include "host/RunConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

std::string refusalOf(const std::string& json) {
  const test::TempFolder folder;
  RunPlan plan;
  try {
    readRunConfig(folder.write("run.json", json), plan);
  } catch (const InputError& error) {
    return error.what();
  }
  return "no error";
}

TEST(RunConfig, shouldReadEverythingAndFindFilesBesideItself) {
  const test::TempFolder folder;
  folder.write("params.json", R"({"fast": 3})");
  folder.write("format.json", R"({"stamp": "end"})");
  folder.write("instruments.json", R"([{"code": "A", "market": "X", "priceTick": 0.2}])");
  const std::string path = folder.write("run.json", R"({
      "runners": [{"strategy": "sma_cross", "name": "one", "params": "params.json",
                   "orderSource": "desk"},
                  {"strategy": "print_events", "params": {"stdout": true}}],
      "bars": ["a.csv", {"code": "A.X", "files": ["b.csv", "/c.csv"], "format": "format.json"}],
      "ticks": {"file": "t.csv"},
      "instruments": "instruments.json",
      "from": "2021-01-04", "to": "2021-01-05", "speed": "10x", "threads": 2, "live": true,
      "digest": false, "report": "out", "timeZone": "Asia/Shanghai"})");
  RunPlan plan;
  readRunConfig(path, plan);
  ASSERT_EQ(plan.runners.size(), 2u);
  EXPECT_EQ(plan.runners[0].name, "one");
  EXPECT_EQ(plan.runners[0].orderSource, "desk");
  EXPECT_EQ(plan.runners[0].params["fast"].toInt(), 3);
  EXPECT_TRUE(plan.runners[1].params["stdout"].toBool());
  ASSERT_EQ(plan.data.size(), 3u);
  EXPECT_EQ(plan.data[0].paths, std::vector<std::string>{folder / "a.csv"});
  EXPECT_EQ(plan.data[1].code, "A.X");
  EXPECT_EQ(plan.data[1].paths, (std::vector<std::string>{folder / "b.csv", "/c.csv"}));
  EXPECT_EQ(plan.data[1].description["stamp"].toString(), "end");
  EXPECT_EQ(plan.data[2].kind, DataFileRequest::Kind::Ticks);
  ASSERT_EQ(plan.instruments.size(), 1u);
  EXPECT_EQ(plan.instruments[0].instrument.priceTick, "0.2");
  EXPECT_TRUE(plan.instrumentsAreComplete);
  EXPECT_EQ(plan.from, "2021-01-04");
  EXPECT_EQ(plan.to, "2021-01-05");
  EXPECT_EQ(plan.speed, 10);
  EXPECT_EQ(plan.threads, 2);
  EXPECT_TRUE(plan.isLive);
  EXPECT_FALSE(plan.withDigest);
  EXPECT_EQ(plan.reportFolder, folder / "out");
  EXPECT_EQ(plan.timeZone, "Asia/Shanghai");
}

TEST(RunConfig, shouldNameLineAndColumnOfBadJson) {
  EXPECT_THAT(refusalOf("{\n  \"runners\": [\n    {,}\n  ]\n}"), HasSubstr("run.json:3:"));
}

TEST(RunConfig, shouldNameTheKeyThatItDoesNotKnow) {
  const std::string error = refusalOf(R"({"runners": [{"strategy": "x", "parms": {}}]})");
  EXPECT_THAT(error, HasSubstr("run.json: runners[0].parms: unknown key"));
  EXPECT_THAT(error, HasSubstr("is \"params\" meant?"));
  EXPECT_THAT(refusalOf(R"({"runners": [{"strategy": "x", "zzzzzz": {}}]})"),
              HasSubstr("zzzzzz: unknown key; the keys here are strategy, name"));
}

TEST(RunConfig, shouldNameFieldAndValueOfAWrongType) {
  EXPECT_THAT(refusalOf(R"({"runners": [{"strategy": 5}]})"),
              HasSubstr("run.json: runners[0].strategy: must be a text, not 5"));
  EXPECT_THAT(refusalOf(R"({"runners": {}})"), HasSubstr("run.json: runners: must be an array"));
  EXPECT_THAT(refusalOf(R"({"runners": [{"strategy": "x"}], "threads": 1.5})"),
              HasSubstr("run.json: threads: must be a whole number from 1 to 1024, not 1.5"));
  EXPECT_THAT(refusalOf(R"({"runners": [{"strategy": "x"}], "speed": "fast"})"),
              HasSubstr("run.json: speed: \"fast\" is not a speed"));
}

TEST(RunConfig, shouldNameTheFieldThatIsMissing) {
  EXPECT_THAT(refusalOf(R"({"bars": "a.csv"})"), HasSubstr("run.json: runners: is missing"));
  EXPECT_THAT(refusalOf(R"({"runners": [{"name": "x"}]})"),
              HasSubstr("run.json: runners[0].strategy: is missing"));
  EXPECT_THAT(refusalOf(R"({"runners": [{"strategy": "x"}], "bars": [{"code": "A"}]})"),
              HasSubstr("run.json: bars[0]: names no file"));
}

TEST(RunConfig, shouldRefuseTwoRunnersOfOneName) {
  RunPlan plan;
  plan.runners.resize(2);
  for (RunnerPlan& runner : plan.runners) runner.strategy = test::testModule("timer_strategy");
  try {
    completeRunners(plan, "run.json");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(), HasSubstr("run.json: runners[1].name"));
    EXPECT_THAT(error.what(), HasSubstr("timer_strategy"));
  }
}

TEST(RunConfig, shouldReadASpeedWithAndWithoutItsX) {
  EXPECT_EQ(parseSpeed("10x", "--speed"), 10);
  EXPECT_EQ(parseSpeed("0.5", "--speed"), 0.5);
  for (const char* text : {"0x", "-1", "x", "", "1 0", "nan", "inf"})
    EXPECT_THROW(parseSpeed(text, "--speed"), InputError) << text;
}

}  // namespace
}  // namespace orvane
