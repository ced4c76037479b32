#include "platform/market/files/DecimalShape.h"

namespace orvane::detail {
namespace {

/// All bits of the first `count` bytes of a word, with none for a count below 0.
std::uint64_t bytesBefore(std::ptrdiff_t count) {
  if (count <= 0) return 0;
  return count >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (8 * count)) - 1;
}

/// `byte` at a place of a word; 0 where that is no place of it.
std::uint64_t byteAt(std::ptrdiff_t place, std::uint64_t byte) {
  return place < 0 || place > 7 ? 0 : byte << (8 * place);
}

}  // namespace

DecimalShape::Word::Word(std::ptrdiff_t point, std::ptrdiff_t length, char ending)
    : expected(0x3030303030303030U ^ byteAt(point, '0' ^ '.') ^
               byteAt(length, static_cast<unsigned char>('0' ^ ending))),
      zeros(byteAt(point, 0xFF) | byteAt(length, 0xFF)),
      digits(bytesBefore(length) & 0x8080808080808080U & ~zeros),
      beforePoint(bytesBefore(point)) {}

void DecimalShape::learn(const char* begin, const char* behind, const char* end,
                         const ShortDecimal& number) {
  const std::ptrdiff_t length = behind - begin;
  const std::ptrdiff_t needed = length < 8 ? 8 : 16;
  if (number.isNegative || number.digits == 0 || length > 15 || end - begin < needed) return;
  const bool hasPoint = length > number.digits;
  // Without one, all digits stand in front of it.
  const std::ptrdiff_t point = hasPoint ? length - 1 - number.decimals : needed;
  words_ = {Word(point, length, *behind), Word(point - 8, length - 8, *behind)};
  divisor_ = NumberParser::powerOfTen(static_cast<unsigned>(number.decimals));
  unused_ = static_cast<unsigned>(8 * (needed - number.digits));
  length_ = static_cast<unsigned>(length);
  needed_ = needed;
}

}  // namespace orvane::detail
