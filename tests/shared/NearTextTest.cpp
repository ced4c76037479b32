#include "shared/NearText.h"

#include <gtest/gtest.h>

#include <QString>
#include <set>
#include <string>

namespace orvane {
namespace {

using Texts = std::vector<std::string>;

std::string meant(const Texts& known, const std::string& written) {
  const std::string* const found = textMeant(known, written);
  return found == nullptr ? "-" : *found;
}

TEST(NearText, shouldCountLettersPutInTakenOutChangedAndSwapped) {
  const auto apart = [](const std::string& a, const std::string& b) { return lettersApart(a, b); };
  EXPECT_EQ(apart("", ""), 0U);
  EXPECT_EQ(apart("fast", "fast"), 0U);
  EXPECT_EQ(apart("", "abc"), 3U);
  EXPECT_EQ(apart("abc", ""), 3U);
  EXPECT_EQ(apart("slow", "slwo"), 1U);
  EXPECT_EQ(apart("lsow", "slwo"), 2U);
  EXPECT_EQ(apart("ca", "abc"), 3U);
  EXPECT_EQ(apart("kitten", "sitting"), 3U);
  EXPECT_EQ(apart("sitting", "kitten"), 3U);
}

TEST(NearText, shouldAnswerTheNearestOfThoseThatAreNear) {
  EXPECT_EQ(meant({"slow", "fast", "fest"}, "fst"), "fast");
  EXPECT_EQ(meant({"strategy", "store"}, "stratgey"), "strategy");
}

TEST(NearText, shouldAnswerNothingWhenMoreThanTwoLettersOrHalfOfThemDiffer) {
  EXPECT_EQ(meant({"strategy"}, "strat"), "-");
  EXPECT_EQ(meant({"ab"}, "xy"), "-");
  EXPECT_EQ(meant({"a"}, "b"), "-");
  EXPECT_EQ(meant({"abc"}, "abd"), "abc");
}

TEST(NearText, shouldAnswerNothingWhenNothingIsKnownOrWritten) {
  EXPECT_EQ(meant({}, "fast"), "-");
  EXPECT_EQ(meant({"fast"}, ""), "-");
}

TEST(NearText, shouldTakeTextsOfQtInAnyRange) {
  const std::set<QString> known = {"快", "快线周期", "volume"};
  const QString* const found = textMeant(known, QString("快线周朝"));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(*found, QString("快线周期"));
}

}  // namespace
}  // namespace orvane
