#include "platform/market/files/ShortDecimal.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/RandomRuns.h"

namespace orvane::detail {
namespace {

/// Where a number ends and what it is, a character at a time.
struct Taken {
  std::size_t length = 0;
  std::uint64_t mantissa = 0;
  int digits = 0;
  int decimals = 0;
  bool isNegative = false;
};

Taken takeSlowly(std::string_view text) {
  Taken taken;
  const auto takeDigit = [&] {
    if (taken.length == text.size() || text[taken.length] < '0' || text[taken.length] > '9')
      return false;
    taken.mantissa = taken.mantissa * 10 + static_cast<unsigned>(text[taken.length++] - '0');
    ++taken.digits;
    return true;
  };
  if (text.starts_with('-')) taken.isNegative = ++taken.length == 1;
  while (takeDigit()) continue;
  if (taken.length < text.size() && text[taken.length] == '.') {
    ++taken.length;
    while (takeDigit()) ++taken.decimals;
  }
  // More may not have fitted.
  if (taken.length > 19) taken.digits = 0;
  return taken;
}

/// The text stands alone in its memory, so that a sanitizer sees whoever reads beyond its end.
void expectBothAlike(std::string_view text) {
  const std::vector<char> alone(text.begin(), text.end());
  ShortDecimal number;
  const char* const end = takeShortDecimal(alone.data(), alone.data() + alone.size(),
                                           alone.data() + alone.size(), number);
  const Taken slowly = takeSlowly(text);
  ASSERT_EQ(static_cast<std::size_t>(end - alone.data()), slowly.length) << text;
  ASSERT_EQ(number.digits, slowly.digits) << text;
  // The same where another line may be looked at behind it.
  const std::string more = std::string(text) + "\n98.765432109";
  ShortDecimal again;
  const char* const behind =
      takeShortDecimal(more.data(), more.data() + text.size(), more.data() + more.size(), again);
  ASSERT_EQ(static_cast<std::size_t>(behind - more.data()), slowly.length) << text;
  ASSERT_EQ(again.digits, slowly.digits) << text;
  ASSERT_TRUE(slowly.digits == 0 || again.mantissa == slowly.mantissa) << text;
  if (slowly.digits == 0) return;
  ASSERT_EQ(number.mantissa, slowly.mantissa) << text;
  ASSERT_EQ(number.decimals, slowly.decimals) << text;
  ASSERT_EQ(number.isNegative, slowly.isNegative) << text;
}

TEST(ShortDecimal, shouldBeReadAsCharacterByCharacterWhateverTheTextIs) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  // Digits mostly, what stands beside them in files, and bytes whose bits mislead.
  using namespace std::string_view_literals;
  constexpr std::string_view kCharacters =
      "0123456789012345678901234567899.-,;x/: \n\x00\x7F\x80\xB0\xFF"sv;
  for (int i = 0; i < 200'000; ++i) {
    std::string text(random() % 24, ' ');
    for (char& c : text) c = kCharacters[random() % kCharacters.size()];
    expectBothAlike(text);
  }
}

TEST(ShortDecimal, shouldBeReadAsCharacterByCharacterAtEveryLengthAndPlaceOfThePoint) {
  for (const char* const sign : {"", "-"}) {
    for (std::size_t digits = 0; digits <= 20; ++digits) {
      for (std::size_t point = 0; point <= digits + 1; ++point) {
        std::string text = std::string("98765432109876543210").substr(0, digits);
        if (point <= digits) text.insert(point, ".");
        for (const char* const behind : {"", ",", ".", ",1234567", "-", "e5", "/\x3A"})
          expectBothAlike(sign + text + behind);
      }
    }
  }
}

}  // namespace
}  // namespace orvane::detail
