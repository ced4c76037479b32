#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/market/files/NumberParser.h"
#include "platform/market/files/ShortDecimal.h"

namespace orvane::detail {

/// What the numbers of a column have in common: where the point and the end stand, and which
/// character ends them. Most look like the number above them, and are read without a look for
/// either. Not thread-safe.
class DecimalShape {
 public:
  /// Takes a number of this shape from the front of a text: answers where it ends, and null if it
  /// has another shape, or none is known yet. `value` is the double nearest to it.
  const char* take(const char* at, const char* end, double& value) const {
    if (std::endian::native != std::endian::little || end - at < needed_) return nullptr;
    const auto& [first, second] = words_;
    const std::uint64_t low = first.load(at);
    std::uint64_t mantissa = 0;
    if (needed_ == 8) {
      if (!first.fits(low)) return nullptr;
      mantissa = valueOfDigits(first.withoutPoint(low, low >> 8) << unused_);
    } else {
      const std::uint64_t high = second.load(at + 8);
      if (!first.fits(low) || !second.fits(high)) return nullptr;
      const Wide digits = (Wide{second.withoutPoint(high, high >> 8)} << 64 |
                           first.withoutPoint(low, low >> 8 | high << 56))
                          << unused_;
      mantissa = valueOfDigits(static_cast<std::uint64_t>(digits)) * 100'000'000 +
                 valueOfDigits(static_cast<std::uint64_t>(digits >> 64));
    }
    // Both are whole numbers that a double holds, so it is the one nearest to the decimal.
    value = static_cast<double>(static_cast<std::int64_t>(mantissa)) / divisor_;
    return at + length_;
  }

  /// Remembers the shape of a number that stands from `begin` to `behind`, in a text that ends at
  /// `end`. Numbers of more than fifteen characters, or below 0, have none.
  void learn(const char* begin, const char* behind, const char* end, const ShortDecimal& number);

 private:
  __extension__ typedef unsigned __int128 Wide;

  /// Eight characters.
  struct Word {
    std::uint64_t expected = 0;
    std::uint64_t zeros = 0;   ///< Those that must be as expected.
    std::uint64_t digits = 0;  ///< The high bits of those that must be digits.
    std::uint64_t beforePoint = 0;

    Word() = default;
    /// With the places of the point and of the end, which may be beyond this word.
    Word(std::ptrdiff_t point, std::ptrdiff_t length, char ending);

    /// Digits become 0 to 9, and a point and an end that stand where they are expected become 0.
    std::uint64_t load(const char* at) const {
      std::uint64_t bytes;
      std::memcpy(&bytes, at, 8);
      return bytes ^ expected;
    }
    bool fits(std::uint64_t bytes) const {
      return (((bytes | (bytes + 0x7676767676767676U)) & digits) | (bytes & zeros)) == 0;
    }
    /// `next` are the same characters, each taken from the place behind it.
    std::uint64_t withoutPoint(std::uint64_t bytes, std::uint64_t next) const {
      return next ^ ((bytes ^ next) & beforePoint);
    }
  };

  std::array<Word, 2> words_;
  double divisor_ = 1;
  unsigned unused_ = 0;  ///< Bits that no digit takes.
  unsigned length_ = 0;
  /// Characters that are looked at: 8 or 16; of no text at first.
  std::ptrdiff_t needed_ = PTRDIFF_MAX;
};

}  // namespace orvane::detail
