// Keys that come twice in an object, which the parser of JSON says nothing of.

#include "platform/core/JsonKeys.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

std::string found(std::string_view json) {
  const auto twice = keyGivenTwice(json);
  return twice ? twice->key + " at " + std::to_string(twice->offset) : "none";
}

TEST(JsonKeys, shouldFindAKeyThatAnObjectHasTwice) {
  EXPECT_EQ(found(R"({"a": 1, "b": 2, "a": 3})"), "a at 17");
  EXPECT_EQ(found(R"([{"x": {"a": [1], "a" : 2}}])"), "a at 18");
  EXPECT_EQ(found(R"({"": 1, "": 2})"), " at 8");
}

TEST(JsonKeys, shouldTellKeysOfOneObjectFromThoseOfAnotherAndFromTexts) {
  EXPECT_EQ(found(R"({"a": {"a": {"a": 1}}, "b": [{"a": 1}, {"a": 2}]})"), "none");
  EXPECT_EQ(found(R"({"a": "b", "b": "a"})"), "none");
  EXPECT_EQ(found(R"({"a": "}{\"a\": 1", "b": ["a", "a"]})"), "none");
  EXPECT_EQ(found(R"({"a\\": 1, "a": "\\", "b": ":"})"), "none");
  EXPECT_EQ(found("[]"), "none");
}

}  // namespace
}  // namespace orvane::detail
