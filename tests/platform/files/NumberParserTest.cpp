#include "platform/market/files/NumberParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "platform/market/files/ShortDecimal.h"
#include "tests/support/RandomRuns.h"

namespace orvane::detail {
namespace {

double read(const std::string& text, int shift = 0, DecimalStep step = {}) {
  double value = NAN;
  EXPECT_TRUE(NumberParser({}, shift, step).parse(text, value)) << text;
  return value;
}

TEST(NumberParser, shouldGiveTheNearestDoubleWhenTheTextIsADecimal) {
  const unsigned seed = 7;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  for (int i = 0; i < 20000; ++i) {
    const int digits = 1 + static_cast<int>(random() % 15);
    std::string text;
    for (int k = 0; k < digits; ++k) text += static_cast<char>('0' + random() % 10);
    text.insert(random() % (text.size() + 1), ".");
    if (random() % 4 == 0) text.insert(0, "-");
    if (random() % 8 == 0) text += "e" + std::to_string(static_cast<int>(random() % 40) - 20);
    ASSERT_EQ(read(text), std::strtod(text.c_str(), nullptr)) << text;
  }
}

TEST(NumberParser, shouldMakeOfATextTakenApartWhatItMakesOfTheText) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const NumberParser plain({}, 0, {});
  const NumberParser shifted({}, -4, {}), stepped({}, 0, {2, 1});
  const auto expectSame = [](const NumberParser& parser, const std::string& text) {
    ShortDecimal number;
    takeShortDecimal(text.data(), text.data() + text.size(), text.data() + text.size(), number);
    double apart = 0, whole = 0;
    // What is left to the text is right in any case.
    if (!parser.parse(number, apart)) return false;
    EXPECT_TRUE(parser.parse(text, whole)) << text;
    EXPECT_EQ(apart, whole) << text;
    EXPECT_EQ(std::signbit(apart), std::signbit(whole)) << text;
    return true;
  };
  for (int i = 0; i < 50'000; ++i) {
    const std::size_t digits = 1 + random() % 17;
    std::string text;
    for (std::size_t k = 0; k < digits; ++k) text += static_cast<char>('0' + random() % 10);
    if (random() % 8 == 0) std::ranges::fill(text, '0');
    if (random() % 8 != 0) text.insert(random() % (text.size() + 1), ".");
    if (random() % 4 == 0) text.insert(0, "-");
    const bool isTaken = expectSame(plain, text);
    EXPECT_TRUE(isTaken || digits > 15) << text;
    for (const NumberParser& parser : {plain.exact(), shifted, shifted.exact(), stepped})
      expectSame(parser, text);
  }
  for (const char* const text : {"1.2000001", "-0.5999999", "100.40000001"})
    EXPECT_TRUE(expectSame(stepped, text)) << text;
  EXPECT_FALSE(expectSame(NumberParser({',', 0}, 0, {}), "1.5"));
  EXPECT_FALSE(expectSame(plain, "."));
}

TEST(NumberParser, shouldShiftThePointOfTheTextWhenPricesAreScaled) {
  EXPECT_EQ(read("1836300", -4), 183.63);
  EXPECT_EQ(read("1815200.5", -4), 181.52005);
  EXPECT_EQ(read("226306.13", 2), 22630613);
  EXPECT_EQ(read("1e3", -4), 0.1);
  EXPECT_EQ(read("12345678901234567", -10), std::strtod("12345678901234567e-10", nullptr));
}

TEST(NumberParser, shouldReadWhatItWritesAsTheSameWhereNoiseWasDropped) {
  // What is left has few digits before its zeros: nothing more is to be dropped from it.
  for (const char* text : {"30000000000003003", "000030000000000003003", "3000000000000300.3",
                           "050404000000000300", "1e22", "123456789012345678"}) {
    const double value = read(text);
    EXPECT_EQ(read(decimalText(value)), value) << text;
  }
  EXPECT_EQ(read("30000000000003003"), 30000000000003000.0);
}

TEST(NumberParser, shouldCountSignificantDigitsAloneWhenItLooksForNoise) {
  EXPECT_EQ(read("0.00100000000000005"), 0.00100000000000005);
  EXPECT_EQ(read("0.00100000000000005000"), 0.00100000000000005);
  EXPECT_EQ(read("100000000000005000000"), 100000000000005e6);
}

TEST(NumberParser, shouldDropBinaryNoiseWhenTheTextIsLong) {
  EXPECT_EQ(read("3384.2000000000007"), 3384.2);
  EXPECT_EQ(read("5806.400000000001"), 5806.4);
  EXPECT_EQ(read("33.35399601000002"), 33.35399601);
  EXPECT_EQ(read("27.039899029999997"), 27.03989903);
  EXPECT_EQ(read("2.2616530700000004"), 2.26165307);
  EXPECT_EQ(read("70.15211337000005"), 70.15211337);
  EXPECT_EQ(read("10178.431466440001"), 10178.43146644);
  EXPECT_EQ(read("0.30000000000000004"), 0.3);
  EXPECT_EQ(read("-0.09999999999999964"), -0.1);
  EXPECT_EQ(read("609416639.9999924"), 609416640);
  EXPECT_EQ(read("10178.43146644"), 10178.43146644);
  EXPECT_EQ(read("3.141592653589793"), 3.141592653589793);
}

TEST(NumberParser, shouldSnapToTheStepWhenTheTextIsNextToIt) {
  DecimalStep step;
  ASSERT_TRUE(parseStep("0.2", step));
  EXPECT_EQ(read("3384.2000000000007", 0, step), 3384.2);
  EXPECT_EQ(read("3384.20000001", 0, step), 3384.2);
  EXPECT_EQ(read("3384.21", 0, step), 3384.21);
  EXPECT_EQ(read("-3384.2000000000007", 0, step), -3384.2);
  ASSERT_TRUE(parseStep("25", step));
  EXPECT_EQ(step.mantissa, 25);
  EXPECT_EQ(read("74.99999999999999", 0, step), 75);
  for (int n = -5000; n < 5000; ++n) {
    ASSERT_TRUE(parseStep("0.05", step));
    const std::string text = decimalText(n * 5 / 100.0 + 3e-10);
    ASSERT_EQ(read(text, 0, step), n * 5 / 100.0) << text;
  }
}

TEST(NumberParser, shouldRefuseWhatIsNoDecimal) {
  double value = 0;
  for (const char* text :
       {"",    "-",    ".",        "+",  "1..2",  "1.2.3",   "0x10",        "nan",
        "inf", "-inf", "infinity", "1e", "1e999", "1e-999x", "1,000",       "1 000",
        "abc", "1a",   "--1",      "e5", "1e5.5", "1_000",   "\xEF\xBC\x91"})
    EXPECT_FALSE(NumberParser().parse(text, value)) << text;
  EXPECT_FALSE(NumberParser().parse(std::string(500, '9'), value));
  EXPECT_TRUE(NumberParser().parse("+1.5", value));
  EXPECT_TRUE(NumberParser().parse(".5", value));
  EXPECT_TRUE(NumberParser().parse("5.", value));
  EXPECT_EQ(read("-0"), 0);
  EXPECT_FALSE(std::signbit(read("-0.0")));
  EXPECT_EQ(read("0.000000000000000000000000001"), 1e-27);
}

TEST(NumberParser, shouldReadOtherMarksWhenTheFormatNamesThem) {
  const NumberParser parser({',', '.'}, 0, {});
  double value = 0;
  ASSERT_TRUE(parser.parse("1.234.567,25", value));
  EXPECT_EQ(value, 1234567.25);
  EXPECT_FALSE(NumberParser({',', 0}, 0, {}).parse("1.5", value));
  ASSERT_TRUE(NumberParser({'.', ','}, 0, {}).parse("1,234.5", value));
  EXPECT_EQ(value, 1234.5);
}

TEST(NumberParser, shouldReadStepsAndRefuseTheRest) {
  DecimalStep step;
  ASSERT_TRUE(parseStep("0.0125", step));
  EXPECT_EQ(step.mantissa, 125);
  EXPECT_EQ(step.decimals, 4);
  ASSERT_TRUE(parseStep("0.20", step));
  EXPECT_EQ(step.mantissa, 2);
  ASSERT_TRUE(parseStep("1e-8", step));
  EXPECT_EQ(step.decimals, 8);
  ASSERT_TRUE(parseStep("100", step));
  EXPECT_EQ(step.mantissa, 100);
  for (const char* text : {"0", "-1", "x", "", "1e-30", "1e30"})
    EXPECT_FALSE(parseStep(text, step)) << text;
}

}  // namespace
}  // namespace orvane::detail
