#include "sdk/Params.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane {
namespace {

using testing::HasSubstr;

TEST(Params, shouldAnswerTheValuesThatAreThere) {
  Params params({{"whole", 7}, {"real", 0.5}, {"yes", true}, {"text", "均线"}});
  EXPECT_EQ(params.integer("whole", 1), 7);
  EXPECT_EQ(params.number("real", 1), 0.5);
  EXPECT_EQ(params.number("whole", 1), 7.0);
  EXPECT_TRUE(params.flag("yes", false));
  EXPECT_EQ(params.text("text", ""), utf8ToGbk("均线"));
  EXPECT_EQ(params.errors(), "");
}

TEST(Params, shouldAnswerTheDefaultsOfWhatIsMissing) {
  Params params({});
  EXPECT_EQ(params.integer("whole", 3, 5, 9), 3);
  EXPECT_EQ(params.number("real", 2.5), 2.5);
  EXPECT_TRUE(params.flag("yes", true));
  EXPECT_EQ(params.text("text", "x"), "x");
  EXPECT_FALSE(params.has("whole"));
  EXPECT_EQ(params.errors(), "");
}

TEST(Params, shouldKeepEveryErrorWithKeyAndValue) {
  Params params({{"a", 1.5}, {"b", "5"}, {"c", 11}, {"d", 1}, {"e", QJsonValue()}, {"f", -1}});
  EXPECT_EQ(params.integer("a", 3), 3);
  EXPECT_EQ(params.number("b", 4), 4);
  EXPECT_EQ(params.integer("c", 5, 1, 10), 5);
  EXPECT_FALSE(params.flag("d", false));
  EXPECT_EQ(params.text("e", "x"), "x");
  EXPECT_EQ(params.number("f", 1, 0), 1);
  for (const char* part :
       {"\"a\" must be a whole number, not 1.5", "\"b\" must be a number, not \"5\"",
        "\"c\" must be from 1 to 10, not 11", "\"d\" must be true or false, not 1",
        "\"e\" must be a text, not null", "\"f\" must be"})
    EXPECT_THAT(params.errors(), HasSubstr(part));
}

TEST(Text, shouldShowTimesAndNumbersShortAndExact) {
  EXPECT_EQ(utcText(1609723800500), "2021-01-04 01:30:00.500Z");
  EXPECT_EQ(utcText(-1), "1969-12-31 23:59:59.999Z");
  EXPECT_EQ(utcText(253402300800007), "10000-01-01 00:00:00.007Z");
  EXPECT_EQ(utcText(-62198755200000), "-001-01-01 00:00:00.000Z");
  EXPECT_EQ(utcText(kUnsetTime), "-");
  EXPECT_EQ(numberText(5230.2), "5230.2");
  EXPECT_EQ(numberText(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(numberText(100), "100");
}

TEST(Text, shouldGoBetweenGbkAndUtf8) {
  EXPECT_EQ(gbk("均"), "\xBE\xF9");
  EXPECT_EQ(gbk(QString::fromUtf8("均")), "\xBE\xF9");
  EXPECT_EQ(utf8("\xBE\xF9"), "均");
}

}  // namespace
}  // namespace orvane
