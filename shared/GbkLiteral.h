#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane {
namespace detail {

/// A character in both codes.
struct GbkPair {
  char32_t unicode;
  std::uint16_t gbk;
};

/// The characters that this project's literals use, ascending. Made by scripts/make-gbk-table.
inline constexpr GbkPair kGbkPairs[] = {
#include "shared/GbkTable.inc"
};

template <std::size_t N>
/// A literal as a template's argument.
struct Utf8Literal {
  char bytes[N]{};
  constexpr Utf8Literal(const char (&text)[N]) { std::copy_n(text, N, bytes); }
};

/// Converts one literal while compiling: `value` is a constant, so a character that the table
/// lacks stops the build. (Its operations are constexpr and no more, since Clang 14 refuses one
/// immediate operation inside another's body.)
template <Utf8Literal L>
struct GbkHolder {
  static constexpr auto convert() {
    std::array<char, sizeof(L.bytes)> out{};
    std::size_t at = 0;
    for (std::size_t i = 0; i + 1 < sizeof(L.bytes);) {
      const auto lead = static_cast<unsigned char>(L.bytes[i]);
      if (lead < 0x80) {
        out[at++] = L.bytes[i++];
        continue;
      }
      const int length = lead >= 0xE0 ? 3 : 2;
      char32_t unicode = lead & (length == 3 ? 0x0F : 0x1F);
      for (int k = 1; k < length; ++k)
        unicode = (unicode << 6) | (static_cast<unsigned char>(L.bytes[i + k]) & 0x3F);
      i += length;
      const std::uint16_t gbk = find(unicode);
      out[at++] = static_cast<char>(gbk >> 8);
      out[at++] = static_cast<char>(gbk & 0xFF);
    }
    return out;
  }

  static constexpr std::uint16_t find(char32_t unicode) {
    for (const GbkPair& pair : kGbkPairs)
      if (pair.unicode == unicode) return pair.gbk;
    throw "character missing from GbkTable.inc: run scripts/make-gbk-table";
  }

  static constexpr auto value = convert();
};

}  // namespace detail

/// A literal in the GBK code page, whatever execution character set the compiler has: all text
/// inside the library is GBK, and the source files are UTF-8. The result lives for ever.
template <detail::Utf8Literal L>
constexpr const char* operator""_gbk() {
  return detail::GbkHolder<L>::value.data();
}

}  // namespace orvane
