#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/market/files/NumberParser.h"

namespace orvane::detail {

/// The value of eight digits, the first one in the lowest byte, each as 0 to 9.
inline std::uint64_t valueOfDigits(std::uint64_t digits) {
  digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FFU;
  digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFFU;
  return (digits * 10'000 + (digits >> 32)) & 0xFFFFFFFFU;
}

/// Takes digits from the front of a text into a number; answers where they end. The number wraps
/// round behind its 19th digit.
inline const char* takeDigits(const char* at, const char* end, std::uint64_t& number) {
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

/// Takes a number that ends within the eight bytes from its first digit: all of it in one step.
/// False if it does not.
inline bool takeWithinEight(const char*& at, const char* end, ShortDecimal& out) {
  if (std::endian::native != std::endian::little || end - at < 8) return false;
  std::uint64_t bytes;
  std::memcpy(&bytes, at, 8);
  bytes ^= 0x3030303030303030U;
  // The high bit of each byte that is no digit, up to the first such and, if that is a point, up to
  // the next one.
  std::uint64_t others = (bytes | (bytes + 0x7676767676767676U)) & 0x8080808080808080U;
  if (others == 0) return false;
  auto length = static_cast<unsigned>(std::countr_zero(others)) / 8;
  unsigned digits = length;
  if (at[length] == '.') {
    others &= others - 1;
    if (others == 0) return false;
    const std::uint64_t before = (std::uint64_t{1} << (8 * length)) - 1;
    bytes = (bytes & before) | ((bytes >> 8) & ~before);  // Without the point.
    digits = static_cast<unsigned>(std::countr_zero(others)) / 8 - 1;
    out.decimals = static_cast<std::int8_t>(digits - length);
    length = digits + 1;
  }
  out.digits = static_cast<std::int8_t>(digits);
  // Behind zeros; the shift in two parts, since none may be as long as the word.
  out.mantissa = valueOfDigits((bytes << 8) << (56 - 8 * digits));
  at += length;
  return true;
}

/// Reads a short decimal from the front of a text; answers where it ends. `out.digits` is 0 if
/// there is none at all; what stands behind it is the caller's to judge. `out` is blank before.
inline const char* takeShortDecimal(const char* at, const char* end, ShortDecimal& out) {
  const char* const begin = at;
  out.isNegative = at != end && *at == '-';
  if (out.isNegative) ++at;
  if (takeWithinEight(at, end, out)) return at;
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
  out.mantissa = mantissa;
  out.decimals = static_cast<std::int8_t>(decimals);
  out.digits = static_cast<std::int8_t>(digits);
  return at;
}

}  // namespace orvane::detail
