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

/// Takes a number of any length, from behind its sign; it begins at `begin`.
const char* takeLongerDecimal(const char* begin, const char* at, const char* end,
                              ShortDecimal& number);

/// Takes a short decimal from the front of a text into `number`, and answers where it ends. It has
/// no digits if there is none at all; what stands behind it is the caller's to judge. Behind `end`,
/// up to `readable`, may stand more, which begins with neither a digit nor a point.
///
/// The number is written where it stays: one that is copied right after it was written in smaller
/// pieces is waited for.
inline const char* takeShortDecimal(const char* const begin, const char* end, const char* readable,
                                    ShortDecimal& number) {
  // In memory of its own, so that the quick way's number need not be in any; taken from there as it
  // was written, piece by piece.
  const auto takeLonger = [&](const char* at) {
    ShortDecimal longer;
    const char* const next = takeLongerDecimal(begin, at, end, longer);
    number.mantissa = longer.mantissa;
    number.decimals = longer.decimals;
    number.digits = longer.digits;
    number.isNegative = longer.isNegative;
    return next;
  };
  const bool isNegative = begin != end && *begin == '-';
  const char* const at = begin + (isNegative ? 1 : 0);
  if (std::endian::native != std::endian::little || readable - at < 8) return takeLonger(at);
  // Nearly all end within eight bytes, and are taken in one step.
  std::uint64_t bytes;
  std::memcpy(&bytes, at, 8);
  bytes ^= 0x3030303030303030U;
  // The high bit of each byte that is no digit, up to the first such and, if that is a point, up to
  // the next one.
  std::uint64_t others = (bytes | (bytes + 0x7676767676767676U)) & 0x8080808080808080U;
  if (others == 0) return takeLonger(at);
  auto length = static_cast<unsigned>(std::countr_zero(others)) / 8;
  unsigned digits = length, decimals = 0;
  if (at[length] == '.') {
    others &= others - 1;
    if (others == 0) return takeLonger(at);
    const std::uint64_t before = (std::uint64_t{1} << (8 * length)) - 1;
    bytes = (bytes & before) | ((bytes >> 8) & ~before);  // Without the point.
    digits = static_cast<unsigned>(std::countr_zero(others)) / 8 - 1;
    decimals = digits - length;
    length = digits + 1;
  }
  // Behind zeros; the shift in two parts, since none may be as long as the word.
  number.mantissa = valueOfDigits((bytes << 8) << (56 - 8 * digits));
  number.decimals = static_cast<std::int8_t>(decimals);
  number.digits = static_cast<std::int8_t>(digits);
  number.isNegative = isNegative;
  return at + length;
}

}  // namespace orvane::detail
