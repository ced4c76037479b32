// What a configuration says of general events.

#include "host/EventConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

RunPlan planOf(const test::TempFolder& folder, const std::string& events) {
  RunPlan plan;
  readRunConfig(folder.write("run.json", R"({"runners": [{"strategy": "s"}], "bars": "a.csv",
      "events": )" + events + "}"),
                plan);
  return plan;
}

std::string errorOf(const std::string& events) {
  const test::TempFolder folder;
  try {
    eventOptions(planOf(folder, events), "UTC");
  } catch (const InputError& error) {
    return error.what();
  }
  return "no error";
}

TEST(EventConfig, shouldReadAScriptWithTimesInTheZoneOfTheRun) {
  const test::TempFolder folder;
  const EventOptions options = eventOptions(planOf(folder, R"([
      {"time": "2021-01-04 09:30", "target": "news", "name": "open", "key": "IF",
       "fields": {"who": "交易所"}},
      {"time": "2021-01-04T01:00:00Z", "target": "news", "name": "early"}])"),
                                            "Asia/Shanghai");
  ASSERT_EQ(options.script.size(), 2u);
  EXPECT_EQ(options.script[0].time, 1'609'723'800'000);
  EXPECT_EQ(options.script[0].target, "news");
  EXPECT_EQ(options.script[0].name, "open");
  EXPECT_EQ(options.script[0].key, "IF");
  EXPECT_EQ(options.script[0].fields.at("who"), "\xBD\xBB\xD2\xD7\xCB\xF9") << "GBK inside";
  EXPECT_EQ(options.script[1].time, 1'609'722'000'000);
  EXPECT_EQ(options.script[1].key, "");
}

TEST(EventConfig, shouldReadAScriptFromAFileBesideTheConfiguration) {
  const test::TempFolder folder;
  folder.write("events.json", R"([{"time": "2021-01-04", "target": "t", "name": "n"}])");
  const RunPlan plan = planOf(folder, R"("events.json")");
  ASSERT_EQ(plan.events.size(), 1u);
  EXPECT_EQ(plan.eventFiles, std::vector<std::string>{folder / "events.json"});
}

TEST(EventConfig, shouldNameThePlaceAndTheValueOfWhatIsWrong) {
  EXPECT_THAT(errorOf("5"), HasSubstr("run.json: events: must be an array of events or the name "
                                      "of a file that holds one, not 5"));
  EXPECT_THAT(errorOf(R"([{"target": "t", "name": "n"}])"),
              HasSubstr("run.json: events[0].time: is missing"));
  EXPECT_THAT(errorOf(R"([{"time": "soon", "target": "t", "name": "n"}])"),
              HasSubstr("run.json: events[0].time: \"soon\""));
  EXPECT_THAT(errorOf(R"([{"time": "2021-01-04", "target": "", "name": "n"}])"),
              HasSubstr("events[0].target: must not be empty, not \"\""));
  EXPECT_THAT(errorOf(R"([{"time": "2021-01-04", "target": "t", "name": "n", "topic": 1}])"),
              HasSubstr("events[0].topic: unknown key"));
  EXPECT_THAT(
      errorOf(R"([{"time": "2021-01-04", "target": "t", "name": "n", "fields": {"a": 1}}])"),
      HasSubstr("events[0].fields.a: must be a text, not 1"));
  EXPECT_THAT(errorOf(R"([{"time": "2021-01-04", "target": "t", "name": "n", "fields": ["a"]}])"),
              HasSubstr("events[0].fields: must be a JSON object, not [\"a\"]"));
}

TEST(EventConfig, shouldNameTheFileOfAScriptThatIsWrong) {
  const test::TempFolder folder;
  const auto errorOfFile = [&folder](const std::string& text) -> std::string {
    try {
      eventsOfFile(folder.write("events.json", text));
    } catch (const InputError& error) {
      return error.what();
    }
    return "no error";
  };
  EXPECT_THAT(errorOfFile("{}"), HasSubstr("events.json: must hold a JSON array of events"));
  EXPECT_THAT(errorOfFile("[{]"), HasSubstr("events.json:1:"));
  EXPECT_THAT(errorOfFile(R"([{"time": "2021-01-04", "target": 4}])"),
              StartsWith((folder / "events.json") + ": [0].target: must be a text, not 4"));
}

}  // namespace
}  // namespace orvane
