// What --grid, --where and --sample make of their texts.

#include "host/sweep/ParameterSpace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>

#include "host/InputError.h"
#include "host/sweep/Sampling.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> textsOf(const std::string& given) {
  const ParameterRange range = ParameterRange::parse(given, "--grid");
  std::vector<std::string> texts;
  for (std::uint64_t i = 0; i < range.size(); ++i) texts.push_back(range.text(i));
  return texts;
}

std::string refusalOf(const std::vector<std::string>& grid,
                      const std::vector<std::string>& where = {},
                      const std::optional<SampleOptions>& sample = {}) {
  try {
    const ParameterSpace space(grid, "--grid");
    std::vector<Condition> conditions;
    for (const std::string& given : where) conditions.emplace_back(given, space, "--where");
    chooseCombinations(space, conditions, sample);
    return {};
  } catch (const InputError& error) {
    return error.what();
  }
}

std::vector<std::uint64_t> chosen(const std::vector<std::string>& grid,
                                  const std::vector<std::string>& where,
                                  const std::optional<SampleOptions>& sample = {}) {
  const ParameterSpace space(grid, "--grid");
  std::vector<Condition> conditions;
  for (const std::string& given : where) conditions.emplace_back(given, space, "--where");
  return chooseCombinations(space, conditions, sample);
}

TEST(ParameterRange, shouldCountInExactDecimalsWithBothEndsInIt) {
  EXPECT_THAT(textsOf("x=5:20:5"), ElementsAre("5", "10", "15", "20"));
  EXPECT_THAT(textsOf("x=0.1:0.7:0.2"), ElementsAre("0.1", "0.3", "0.5", "0.7"));
  EXPECT_THAT(textsOf("x=-1:1:0.50"), ElementsAre("-1", "-0.5", "0", "0.5", "1"));
  EXPECT_THAT(textsOf("x=1:2:0.4"), ElementsAre("1", "1.4", "1.8"));
  EXPECT_THAT(textsOf("x=3:3:1"), ElementsAre("3"));
  // A sum of doubles would have come to 0.30000000000000004 on its way here.
  const ParameterRange range = ParameterRange::parse("x=0:100:0.1", "--grid");
  EXPECT_EQ(range.size(), 1001);
  EXPECT_EQ(range.value(3).toDouble(), 0.3);
  EXPECT_EQ(range.value(1000).toDouble(), 100);
}

TEST(ParameterRange, shouldReadTheValuesOfAListAsTheParametersWouldHaveThem) {
  const ParameterRange range =
      ParameterRange::parse(R"(x=1,0.50,true,longOnly,"7","a,b")", "--grid");
  ASSERT_EQ(range.size(), 6);
  EXPECT_EQ(range.value(0), QJsonValue(1));
  EXPECT_EQ(range.value(1), QJsonValue(0.5));
  EXPECT_EQ(range.value(2), QJsonValue(true));
  EXPECT_EQ(range.value(3), QJsonValue("longOnly"));
  EXPECT_EQ(range.value(4), QJsonValue("7"));
  EXPECT_EQ(range.value(5), QJsonValue("a,b"));
  EXPECT_EQ(range.text(5), "a,b");
}

TEST(ParameterRange, shouldNameTheParameterAndTheValueThatIsWrong) {
  for (const auto& [given, message] :
       {std::pair{"fast", "--grid: \"fast\" is not NAME=FROM:TO:STEP"},
        {"=1:2:1", "--grid: \"=1:2:1\" is not NAME=FROM:TO:STEP"},
        {"x=1:2", "--grid x: \"1:2\" has no step; write 1:2:1 or"},
        {"x=1:2:0", "--grid x: the step \"0\" is not above 0; write FROM:TO:STEP with the smaller"},
        {"x=1:2:-1", "--grid x: the step \"-1\" is not above 0"},
        {"x=2:1:1", "--grid x: \"2\" lies above \"1\", so there is no value; write 1:2:1"},
        {"x=1:2e3:1", "--grid x: \"2e3\" is not a decimal number"},
        {"x=1::1", "--grid x: \"\" is not a decimal number"},
        {"x=1.:2:1", "--grid x: \"1.\" is not a decimal number"},
        {"x=1234567890123456:2:1", "--grid x: \"1234567890123456\" has more than 15 digits"},
        {"x=0:123456789012:0.00001", "--grid x: \"123456789012\" has more than 15 digits with"},
        {"x=0:1:0.0000001", "--grid x: \"0:1:0.0000001\" has 10000001 values; at most 1000000"},
        {"x=1,,2", "--grid x: \"1,,2\" has an empty value"},
        {"x=1,2,1.0", "--grid x: \"1.0\" stands there twice"},
        {"x=\"a,b", "--grid x: \"\"a,b\" holds a text whose quotes do not close"}})
    EXPECT_THAT(refusalOf({given}), testing::StartsWith(message)) << given;
  EXPECT_EQ(refusalOf({"x=1,2", "x=3,4"}), "--grid: \"x\" is given twice");
  EXPECT_THAT(refusalOf(std::vector<std::string>(
                  {"a=1:1000000:1", "b=1:1000000:1", "c=1:1000000:1", "d=1:1000000:1"})),
              HasSubstr("--grid d: too many combinations to count"));
  EXPECT_THAT(refusalOf({"a=1:10000:1", "b=1:1000:1"}),
              HasSubstr("--grid: there are 10000000 combinations; at most 1000000"));
}

TEST(ParameterSpace, shouldNumberCombinationsWithTheLastRangeChangingFastest) {
  const ParameterSpace space({"a=1:3:1", "b=x,y"}, "--grid");
  ASSERT_EQ(space.size(), 6);
  EXPECT_THAT(space.textsOf(0), ElementsAre("1", "x"));
  EXPECT_THAT(space.textsOf(1), ElementsAre("1", "y"));
  EXPECT_THAT(space.textsOf(5), ElementsAre("3", "y"));
  for (std::uint64_t number = 0; number < 6; ++number)
    EXPECT_EQ(space.numberOf(space.placesOf(number)), number);
  const QJsonObject params = space.paramsOf({{"a", 9}, {"c", true}}, 3);
  EXPECT_EQ(params, (QJsonObject{{"a", 2}, {"b", "y"}, {"c", true}}));
}

TEST(Condition, shouldKeepTheCombinationsThatFulfilAllOfThem) {
  EXPECT_THAT(chosen({"a=1:3:1", "b=1:3:1"}, {"a<b"}), ElementsAre(1, 2, 5));
  EXPECT_THAT(chosen({"a=1:3:1", "b=1:3:1"}, {"a <= b", "b!=3"}), ElementsAre(0, 1, 4));
  EXPECT_THAT(chosen({"a=0.1:0.3:0.1"}, {"a==0.3"}), ElementsAre(2));
  EXPECT_THAT(chosen({"a=0.1:0.3:0.1"}, {"a>=0.2"}), ElementsAre(1, 2));
  EXPECT_THAT(chosen({"a=u,v", "b=1:2:1"}, {"a==v", "b>1"}), ElementsAre(3));
}

TEST(Condition, shouldCompareWithOneValueAlone) {
  const std::vector<std::string> grid = {"a=5:15:5", R"(b=x,"u,v",y)"};
  EXPECT_EQ(refusalOf(grid, {"a<5,10"}),
            "--where: \"a<5,10\" compares with a list of values, \"5,10\"; give one value, or a "
            "text in quotes");
  for (const char* row : {"5:10:1", "5:10", "5:5:1", "-1:0.5:0.1"})
    EXPECT_THAT(refusalOf(grid, {std::string("a==") + row}),
                HasSubstr(std::string("compares with a row of values, \"") + row + "\""));
  EXPECT_THAT(refusalOf(grid, {"5:10:1!=a"}), HasSubstr("compares with a row of values"));
  EXPECT_THAT(refusalOf(grid, {"b==u,v"}), HasSubstr("compares with a list of values"));
  EXPECT_THAT(chosen(grid, {R"(b=="u,v")"}), ElementsAre(1, 4, 7));
}

TEST(Condition, shouldNameWhatIsWrongWithIt) {
  const std::vector<std::string> grid = {"a=1:3:1", "b=x,2"};
  EXPECT_THAT(refusalOf(grid, {"a"}), HasSubstr("--where: \"a\" is not a comparison"));
  EXPECT_EQ(refusalOf(grid, {"a<"}), "--where: \"a<\" has nothing on one side");
  EXPECT_EQ(refusalOf(grid, {"slow<3"}), "--where: \"slow<3\" names no parameter of --grid");
  EXPECT_EQ(refusalOf(grid, {"a<b"}), "--where: \"a<b\" compares what is no number");
  EXPECT_THAT(refusalOf(grid, {"a>3"}),
              testing::StartsWith("--where: none of the 6 combinations of the grid fulfils it"));
}

TEST(Sampling, shouldChooseTheSameOfOneSeedAndOthersOfAnother) {
  const std::vector<std::string> grid = {"a=1:100:1", "b=1:100:1"};
  for (const auto kind : {SampleOptions::Kind::Random, SampleOptions::Kind::Sobol}) {
    const auto one = chosen(grid, {}, SampleOptions{kind, 50, 7});
    EXPECT_EQ(one.size(), 50);
    EXPECT_TRUE(std::ranges::is_sorted(one));
    EXPECT_EQ(std::ranges::adjacent_find(one), one.end());
    EXPECT_EQ(chosen(grid, {}, SampleOptions{kind, 50, 7}), one);
    EXPECT_NE(chosen(grid, {}, SampleOptions{kind, 50, 8}), one);
  }
}

TEST(Sampling, shouldChooseTheSameOnEveryMachine) {
  const std::vector<std::string> grid = {"a=1:100:1", "b=1:100:1"};
  EXPECT_THAT(chosen(grid, {}, SampleOptions{SampleOptions::Kind::Random, 5, 1}),
              ElementsAre(210, 1338, 1364, 3508, 4512));
  EXPECT_THAT(chosen(grid, {}, SampleOptions{SampleOptions::Kind::Sobol, 5, 1}),
              ElementsAre(1313, 2526, 3888, 6363, 8838));
}

TEST(Sampling, shouldSpreadASobolSampleEvenlyOverEveryParameterAndEveryQuarter) {
  const std::vector<std::string> grid = {"a=1:64:1", "b=1:64:1"};
  const ParameterSpace space(grid, "--grid");
  std::vector<int> ofA(64), ofB(64), ofBoth(64);
  for (const std::uint64_t number :
       chosen(grid, {}, SampleOptions{SampleOptions::Kind::Sobol, 64, 3})) {
    const auto places = space.placesOf(number);
    ++ofA[places[0]];
    ++ofB[places[1]];
    ++ofBoth[places[0] / 8 * 8 + places[1] / 8];
  }
  // The first 64 points of the sequence have one in each 64th of either side, and in each square.
  EXPECT_THAT(ofA, testing::Each(1));
  EXPECT_THAT(ofB, testing::Each(1));
  EXPECT_THAT(ofBoth, testing::Each(1));
}

TEST(Sampling, shouldChooseAmongWhatFulfilsTheConditionsAndSayWhereThatIsTooLittle) {
  const std::vector<std::string> grid = {"a=1:30:1", "b=1:30:1"};
  const ParameterSpace space(grid, "--grid");
  for (const std::uint64_t number :
       chosen(grid, {"a<b"}, SampleOptions{SampleOptions::Kind::Random, 200, 1})) {
    const auto places = space.placesOf(number);
    EXPECT_LT(places[0], places[1]);
  }
  const auto count = [](std::uint64_t number) {
    return SampleOptions{SampleOptions::Kind::Random, number, 1};
  };
  EXPECT_THAT(refusalOf(grid, {}, count(900)),
              HasSubstr("--count: the grid has only 900 combinations"));
  EXPECT_THAT(refusalOf(grid, {"a==1"}, count(31)),
              HasSubstr("--count: \"31\" are more than could be found: 30 combinations"));
}

}  // namespace
}  // namespace orvane
