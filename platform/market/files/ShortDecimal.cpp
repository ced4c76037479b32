#include "platform/market/files/ShortDecimal.h"

namespace orvane::detail {
namespace {

/// Takes digits from the front of a text into a number; answers where they end. The number wraps
/// round behind its 19th digit.
const char* takeDigits(const char* at, const char* end, std::uint64_t& number) {
  static constexpr std::uint64_t kPowers[] = {1,       10,        100,        1'000,      10'000,
                                              100'000, 1'000'000, 10'000'000, 100'000'000};
  // Eight at a time: numbers end anywhere, and a loop that ends anywhere is guessed wrong.
  while (std::endian::native == std::endian::little && end - at >= 8) {
    std::uint64_t bytes;
    std::memcpy(&bytes, at, 8);
    bytes ^= 0x3030303030303030U;
    // The high bit of each byte that is no digit, but for those behind the first such.
    const std::uint64_t others = (bytes | (bytes + 0x7676767676767676U)) & 0x8080808080808080U;
    if (others == 0) {
      number = number * kPowers[8] + valueOfDigits(bytes);
      at += 8;
      continue;
    }
    const auto count = static_cast<unsigned>(std::countr_zero(others)) / 8;
    // As many digits as there are, behind zeros.
    number = number * kPowers[count] + valueOfDigits((bytes << 8) << (56 - 8 * count));
    return at + count;
  }
  for (unsigned digit = 0;
       at != end && (digit = static_cast<unsigned char>(*at) - unsigned{'0'}) <= 9; ++at)
    number = number * 10 + digit;
  return at;
}

}  // namespace

const char* takeLongerDecimal(const char* begin, const char* at, const char* end,
                              ShortDecimal& number) {
  const bool isNegative = at != begin;
  const char* const first = at;
  std::uint64_t mantissa = 0;
  at = takeDigits(at, end, mantissa);
  auto digits = at - first;
  std::ptrdiff_t decimals = 0;
  if (at != end && *at == '.') {
    const char* const behind = ++at;
    at = takeDigits(at, end, mantissa);
    decimals = at - behind;
    digits += decimals;
  }
  // More digits than that may not have fitted.
  if (at - begin > 19) digits = 0;
  number = {mantissa, static_cast<std::int8_t>(decimals), static_cast<std::int8_t>(digits),
            isNegative};
  return at;
}

}  // namespace orvane::detail
