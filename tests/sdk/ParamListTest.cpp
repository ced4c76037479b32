#include "sdk/ParamList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sdk/testing/RecordingContext.h"

namespace orvane {
namespace {

using testing::HasSubstr;

/// A strategy's parameters as they would stand in it.
struct Settings {
  Settings() {
    list.integer("fast", fast, 1, 1000);
    list.integer("slow", slow, 2, 1000);
    list.number("volume", volume, 0);
    list.flag("dry", dry);
    list.text("label", label);
    list.choice("mode", mode, {"long", "short", "both"});
    list.texts("codes", codes);
    list.below("fast", fast, "slow", slow);
    list.check([this] {
      ++checks;
      return volume < 100 || dry ? "" : "a \"volume\" of 100 or more needs \"dry\"";
    });
  }

  ParamList list;
  int fast = 5;
  int64 slow = 20;
  double volume = 1;
  bool dry = false;
  std::string label = "none", mode = "long";
  std::vector<std::string> codes;
  int checks = 0;
};

TEST(ParamList, shouldPutWhatIsGivenIntoItsMembersAndLeaveTheRest) {
  Settings settings;
  RecordingContext context;
  EXPECT_TRUE(settings.list.start(&context, {{"slow", 30},
                                             {"volume", 2.5},
                                             {"dry", true},
                                             {"label", "均线"},
                                             {"mode", "both"},
                                             {"codes", QJsonArray{"A.X", "B.X"}},
                                             {"data", QJsonArray()},
                                             {"account", "main"}}));
  EXPECT_EQ(settings.fast, 5);
  EXPECT_EQ(settings.slow, 30);
  EXPECT_EQ(settings.volume, 2.5);
  EXPECT_TRUE(settings.dry);
  EXPECT_EQ(settings.label, gbk("均线"));
  EXPECT_EQ(settings.mode, "both");
  EXPECT_EQ(settings.codes, (std::vector<std::string>{"A.X", "B.X"}));
  EXPECT_FALSE(context.isSetStop());
}

TEST(ParamList, shouldEndTheRunWithEveryErrorAndChangeNothing) {
  Settings settings;
  RecordingContext context;
  EXPECT_FALSE(settings.list.start(&context, {{"fast", 0},
                                              {"slow", 7},
                                              {"volume", "2"},
                                              {"dry", 1},
                                              {"mode", "up"},
                                              {"codes", QJsonArray{"A.X", 5}},
                                              {"volme", 3}}));
  for (const char* part :
       {"\"fast\" must be from 1 to 1000, not 0", "\"volume\" must be a number, not \"2\"",
        "\"dry\" must be true or false, not 1",
        R"("mode" must be "long", "short" or "both", not "up")",
        R"("codes" must be an array of texts, not ["A.X",5])",
        R"("volme" is not known; is "volume" meant?)"})
    EXPECT_THAT(context.error, HasSubstr(part));
  EXPECT_EQ(settings.slow, 20) << "taken whole or not at all";
  EXPECT_EQ(settings.checks, 0) << "rules look at good values alone";
}

TEST(ParamList, shouldAskItsRulesWithTheNewValuesAndTakeThemBackWhereOneIsBroken) {
  Settings settings;
  RecordingContext context;
  EXPECT_FALSE(settings.list.start(&context, {{"fast", 30}, {"volume", 100}}));
  EXPECT_EQ(
      context.error,
      "parameter \"fast\" (30) must be below \"slow\" (20); a \"volume\" of 100 or more needs "
      "\"dry\"");
  EXPECT_EQ(settings.fast, 5);
  EXPECT_EQ(settings.checks, 1);
}

TEST(ParamList, shouldKeepWhatAnUpdateDoesNotName) {
  Settings settings;
  RecordingContext context;
  ASSERT_TRUE(settings.list.start(&context, {{"fast", 7}, {"slow", 30}}));
  EXPECT_EQ(settings.list.update({{"slow", 40}}), "");
  EXPECT_EQ(settings.fast, 7);
  EXPECT_EQ(settings.slow, 40);
  EXPECT_THAT(settings.list.update({{"slow", 6}}), HasSubstr("below"));
  EXPECT_EQ(settings.slow, 40);
  EXPECT_FALSE(context.isSetStop()) << "a bad update does not end a run";
}

TEST(ParamList, shouldMissWhatIsRequiredAtTheStartAlone) {
  Settings settings;
  settings.list.require("codes");
  RecordingContext context;
  EXPECT_FALSE(settings.list.start(&context, {}));
  EXPECT_EQ(context.error, "parameter \"codes\" is missing; it has no default");
  EXPECT_EQ(settings.list.update({{"dry", true}}), "");
}

TEST(ParamList, shouldHoldANumberInTheRangeOfItsMember) {
  ParamList list;
  std::uint8_t small = 1;
  list.integer("small", small, -5, 1000);
  EXPECT_THAT(list.update({{"small", 256}}), HasSubstr("must be from 0 to 255, not 256"));
  EXPECT_EQ(list.update({{"small", 255}}), "");
  EXPECT_EQ(small, 255);
}

TEST(Params, shouldNotTakeANumberForWholeThatNoWholeNumberHolds) {
  Params params({{"a", 1e300}, {"b", 9007199254740992.0}, {"c", -0.5}});
  EXPECT_EQ(params.integer("a", 3, 0), 3);
  EXPECT_EQ(params.integer("b", 3), 9007199254740992);
  EXPECT_EQ(params.integer("c", 3), 3);
  EXPECT_THAT(params.errors(), HasSubstr("\"a\" must be a whole number"));
  EXPECT_THAT(params.errors(), HasSubstr("\"c\" must be a whole number, not -0.5"));
}

TEST(Params, shouldNameAKeyThatWasNeverAskedForAndTheOneThatWasMeant) {
  Params params({{"lenght", 5}, {"x", 1}, {"data", 1}, {"account", "a"}});
  params.integer("length", 1);
  params.integer("width", 1);
  EXPECT_THAT(params.close(), HasSubstr("\"lenght\" is not known; is \"length\" meant?"));
  EXPECT_THAT(params.errors(), HasSubstr(R"("x" is not known; there are "length" and "width")"));
  Params none({{"x", 1}});
  EXPECT_EQ(none.close(), "parameter \"x\" is not known; there are none");
}

TEST(Params, shouldTellARangeOfOneEndAsOne) {
  Params params({{"a", -1}, {"b", 2.5}, {"c", 0.5}});
  params.number("a", 1, 0);
  params.number("b", 1, -std::numeric_limits<double>::infinity(), 2);
  params.number("c", 1, 1, 2);
  EXPECT_EQ(params.errors(),
            "parameter \"a\" must be at least 0, not -1; parameter \"b\" must be at most 2, not "
            "2.5; parameter \"c\" must be from 1 to 2, not 0.5");
}

TEST(Params, shouldTakeOneTextForAnArrayOfIt) {
  Params params({{"codes", "A.X"}});
  EXPECT_EQ(params.texts("codes", {}), (std::vector<std::string>{"A.X"}));
  EXPECT_EQ(params.texts("others", {"B.X"}), (std::vector<std::string>{"B.X"}));
}

}  // namespace
}  // namespace orvane
