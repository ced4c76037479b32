#include "platform/market/files/DecimalShape.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <string>

#include "tests/support/RandomRuns.h"

namespace orvane::detail {
namespace {

const NumberParser kParser;

/// Where the number ends that a text begins with, and its value, as every number is read.
const char* takenAnyway(const std::string& text, double& value, ShortDecimal& number) {
  const char* const end = text.data() + text.size();
  const char* const behind = takeShortDecimal(text.data(), end, end, number);
  return kParser.parse(number, value) ? behind : nullptr;
}

/// From the number that a text begins with, if there is one.
void learn(DecimalShape& shape, const std::string& text) {
  double value = 0;
  ShortDecimal number;
  if (const char* const behind = takenAnyway(text, value, number))
    shape.learn(text.data(), behind, text.data() + text.size(), number);
}

DecimalShape shapeOf(const std::string& text) {
  DecimalShape shape;
  learn(shape, text);
  return shape;
}

bool takes(const DecimalShape& shape, const std::string& text, double& value) {
  return shape.take(text.data(), text.data() + text.size(), value) != nullptr;
}

bool takes(const DecimalShape& shape, const std::string& text) {
  double value = 0;
  return takes(shape, text, value);
}

/// Takes what it learned from one text from another one, if it has that shape, as it is anyway.
/// Answers whether it had it.
bool expectAlike(const std::string& learned, const std::string& text) {
  double value = 0, expected = 0;
  ShortDecimal number;
  const DecimalShape shape = shapeOf(learned);
  const char* const behind = shape.take(text.data(), text.data() + text.size(), value);
  if (behind == nullptr) return false;
  EXPECT_EQ(behind, takenAnyway(text, expected, number)) << learned << " | " << text;
  EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected))
      << learned << " | " << text;
  return true;
}

TEST(DecimalShape, shouldTakeNothingBeforeItKnowsAShape) {
  const DecimalShape shape;
  for (const char* const text : {"1,2345678", "12345678", ",,,,,,,,"})
    EXPECT_FALSE(takes(shape, text)) << text;
  for (const char c : {'\0', '\xFF', '\x80'}) EXPECT_FALSE(takes(shape, std::string(40, c)));
}

TEST(DecimalShape, shouldTakeNumbersOfTheShapeItKnows) {
  double value = 0;
  const DecimalShape price = shapeOf("1000.25,...");
  EXPECT_TRUE(takes(price, "9999.99,1", value));
  EXPECT_EQ(value, 9999.99);
  EXPECT_TRUE(takes(price, "0000.00,x", value));
  EXPECT_EQ(std::bit_cast<std::uint64_t>(value), 0u);
  const DecimalShape volume = shapeOf("69\n2020-01");
  EXPECT_TRUE(takes(volume, "05\n2020-01", value));
  EXPECT_EQ(value, 5);
  EXPECT_TRUE(takes(shapeOf(".5,      "), ".7,      ", value));
  EXPECT_EQ(value, 0.7);
  EXPECT_TRUE(takes(shapeOf("5.,      "), "7.,      ", value));
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(takes(shapeOf("0.00001,"), "0.00003,", value));
  EXPECT_EQ(value, 0.00003);
}

TEST(DecimalShape, shouldTakeNoNumberOfAnotherShape) {
  const DecimalShape shape = shapeOf("12.50,1,2,3");
  for (const char* const text : {"12.5,1,2,3",
                                 "2.50,1,2,3",
                                 "112.50,1,2",
                                 "12.500,1,2",
                                 "12,50,1,2,3",
                                 "12.50;1,2,3",
                                 "12.50\n1,2,3",
                                 "12.50.1,2,3",
                                 "12.5x,1,2,3",
                                 "1x.50,1,2,3",
                                 "-2.50,1,2,3",
                                 "+2.50,1,2,3",
                                 "12/50,1,2,3",
                                 "12.:0,1,2,3",
                                 "12.50-1,2,3",
                                 "12.50\xAC"
                                 "1,2,3",
                                 "1\x8A.50,1,2,3",
                                 "1\xB2.50,1,2,3",
                                 "12\xAE"
                                 "50,1,2,3",
                                 "12.50",
                                 "12.50,1"})
    EXPECT_FALSE(takes(shape, text)) << text;
  EXPECT_TRUE(takes(shape, "12.50,1,"));
}

TEST(DecimalShape, shouldNotTakeAWholeNumberOutOfOneWithAPoint) {
  const DecimalShape shape = shapeOf("12,1,2,3");
  EXPECT_FALSE(takes(shape, "12.5,2,3"));
  EXPECT_TRUE(takes(shape, "13,5,2,3"));
}

TEST(DecimalShape, shouldKnowNoShapeOfANumberBelowZeroOrOfMoreThanFifteenCharacters) {
  EXPECT_FALSE(takes(shapeOf("-2.5,1,2,3"), "-2.5,1,2,3"));
  EXPECT_FALSE(takes(shapeOf("1234567890123456,1,2"), "1234567890123456,1,2"));
  EXPECT_FALSE(takes(shapeOf("12345678.0123456,1,2"), "12345678.0123456,1,2"));
  EXPECT_TRUE(takes(shapeOf("123456789012345,1,2"), "123456789012345,1,2"));
  EXPECT_TRUE(takes(shapeOf("12345678.012345,1,2"), "12345678.012345,1,2"));
}

TEST(DecimalShape, shouldTakeNumbersThatEndBeyondEightCharacters) {
  for (const char* const text :
       {"1234567,........", "12345678,.......", "123456789,......", "999999999999999,",
        "123456.,........", "1234567.,.......", "12345678.,......", ".1234567,.......",
        "1.234567,.......", "123456.7,.......", "1234567.8,......", "12345678.9,.....",
        "99999999.999999,", "0.0000000000001,", "12345.123456789,", ".12345678901234,",
        "00000000.000000,", "000000000000000,"}) {
    EXPECT_TRUE(expectAlike(text, text)) << text;
    // One more digit, and one less.
    EXPECT_FALSE(takes(shapeOf(text), std::string("1") + text)) << text;
    EXPECT_FALSE(takes(shapeOf(text), std::string(text + 1) + ',')) << text;
  }
}

TEST(DecimalShape, shouldNotLookBeyondTheEndOfTheText) {
  EXPECT_TRUE(takes(shapeOf("123456789,123456"), "123456789,123456"));
  EXPECT_FALSE(takes(shapeOf("123456789,123456"), "123456789,12345"));
  EXPECT_FALSE(takes(shapeOf("123456789,12345"), "123456789,123456"));
  EXPECT_FALSE(takes(shapeOf("1234567"), "1234567,"));
}

TEST(DecimalShape, shouldKeepTheShapeThatItKnewWhereANumberHasNone) {
  DecimalShape shape = shapeOf("12,1,2,3");
  learn(shape, "-12,1,2,3");
  EXPECT_TRUE(takes(shape, "34,1,2,3"));
}

TEST(DecimalShape, shouldForgetTheShapeBeforeTheOneItLearned) {
  DecimalShape shape = shapeOf("12.50,1,2,3");
  learn(shape, "125,1,2,3");
  double value = 0;
  EXPECT_FALSE(takes(shape, "12.50,1,2,3"));
  EXPECT_TRUE(takes(shape, "345,1,2,3", value));
  EXPECT_EQ(value, 345);
}

TEST(DecimalShape, shouldTakeWhatEveryNumberIsTakenForOnRandomTexts) {
  const std::uint64_t seed = support::randomSeed();
  RecordProperty("seed", std::to_string(seed));
  SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto below = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
  const auto digits = [&](std::size_t count) {
    std::string text;
    for (; count > 0; --count) text += static_cast<char>('0' + below(10));
    return text;
  };
  const int runs = support::randomRuns(200'000);
  int taken = 0;
  for (int run = 0; run < runs; ++run) {
    std::string learned = digits(below(9));
    if (below(2) == 0) learned += '.' + digits(below(8));
    learned += ",\n\r;x"[below(5)] + digits(16);
    // The same with other digits, and perhaps with another character somewhere.
    std::string text = learned;
    for (char& c : text)
      if (c >= '0' && c <= '9') c = static_cast<char>('0' + below(10));
    if (below(2) == 0) {
      const std::string others = "0123456789..,,\n-+/:xe\x8A\xB0\xFF";
      text[below(text.size())] = others[below(others.size())];
    }
    if (below(8) == 0) text.resize(below(text.size() + 1));
    taken += expectAlike(learned, text) ? 1 : 0;
    if (HasFailure()) return;
  }
  // A third is whole, and has a shape that can be known.
  EXPECT_GT(taken, runs / 4);
}

}  // namespace
}  // namespace orvane::detail
