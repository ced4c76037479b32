#include "host/Digest.h"

#include <gtest/gtest.h>
#include <xxhash.h>

#include "host/CallEncoder.h"

namespace orvane {
namespace {

std::string reference(const std::string& bytes) {
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
  std::string text;
  char digits[3];
  for (const unsigned char byte : canonical.digest) {
    std::snprintf(digits, sizeof(digits), "%02x", byte);
    text += digits;
  }
  return text;
}

TEST(Digest, shouldHashLittleEndianFixedWidthBytes) {
  Digest digest;
  digest.put(std::int32_t{0x01020304});
  digest.put(std::int64_t{-2});
  digest.put(1.0);
  digest.put(std::string_view("ab"));
  using namespace std::string_literals;
  EXPECT_EQ(digest.text(), reference("\x04\x03\x02\x01"s + "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s +
                                     "\0\0\0\0\0\0\xF0\x3F"s + "\x02\0\0\0\0\0\0\0"s + "ab"s));
}

TEST(Digest, shouldHashTheSameWhenTextsAreLongerThanItsBuffer) {
  const std::string longText(100'000, 'x');
  Digest digest;
  digest.put(std::int32_t{1});
  digest.put(longText);
  digest.put(std::int32_t{2});
  using namespace std::string_literals;
  EXPECT_EQ(digest.text(),
            reference("\x01\0\0\0"s + "\xA0\x86\x01\0\0\0\0\0"s + longText + "\x02\0\0\0"s));
}

TEST(Digest, shouldTellWhereOneTextEndsAndTheNextBegins) {
  Digest one, other;
  one.put(std::string_view("ab"));
  one.put(std::string_view("c"));
  other.put(std::string_view("a"));
  other.put(std::string_view("bc"));
  EXPECT_NE(one.text(), other.text());
}

TEST(Digest, shouldGoOnAfterItsTextWasTaken) {
  Digest taken, straight;
  taken.put(std::int32_t{1});
  taken.text();
  taken.put(std::int32_t{2});
  straight.put(std::int32_t{1});
  straight.put(std::int32_t{2});
  EXPECT_EQ(taken.text(), straight.text());
}

TEST(CallEncoder, shouldWriteProcessWideIdsByTheirFirstAppearance) {
  Digest one, other;
  CallEncoder low(one), high(other);
  for (const int id : {7, 9, 7}) low.timerId(id);
  for (const int id : {107, 31, 107}) high.timerId(id);
  EXPECT_EQ(one.text(), other.text());
  low.timerId(9);
  high.timerId(107);
  EXPECT_NE(one.text(), other.text());
}

TEST(CallEncoder, shouldSeeEveryFieldOfAQuote) {
  const auto digestOf = [](const IDepthMarketData& quote) {
    Digest digest;
    CallEncoder(digest).value(quote);
    return digest.text();
  };
  const std::string before = digestOf({});
  IDepthMarketData quote;
  quote.levels[9].value3 = 1;
  EXPECT_NE(digestOf(quote), before);
  quote = {};
  quote.block1[17] = 1;
  EXPECT_NE(digestOf(quote), before);
  quote = {};
  quote.block2[5] = 1;
  EXPECT_NE(digestOf(quote), before);
  quote = {};
  quote.block3[0] = 1;
  EXPECT_NE(digestOf(quote), before);
  quote = {};
  quote.extras[3] = "x";
  EXPECT_NE(digestOf(quote), before);
  quote = {};
  quote.code.market = 4;
  EXPECT_NE(digestOf(quote), before);
}

}  // namespace
}  // namespace orvane
