#pragma once

#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "shared/Types.h"

struct XXH3_state_s;

namespace orvane {

/// A 128-bit hash (XXH3) over a canonical encoding: integers little-endian in their own width,
/// doubles by their bits, texts as a 64-bit length and their bytes. One thread at a time.
class Digest {
 public:
  Digest();
  ~Digest();
  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;

  void put(std::int32_t value) { putWord(static_cast<std::uint32_t>(value)); }
  void put(std::int64_t value) { putWord(static_cast<std::uint64_t>(value)); }
  void put(std::uint64_t value) { putWord(value); }
  void put(double value) { putWord(std::bit_cast<std::uint64_t>(value)); }
  void put(std::string_view text) {
    put(static_cast<std::uint64_t>(text.size()));
    putBytes(text.data(), text.size());
  }
  void put(const std::string& text) { put(std::string_view(text)); }
  template <typename T, std::size_t N>
  void put(const std::array<T, N>& values) {
    for (const T& value : values) put(value);
  }

  /// Bytes as they are, without their number.
  void putBytes(const void* bytes, std::size_t count) {
    if (used_ + count > kBufferBytes) return spill(bytes, count);
    std::memcpy(buffer_.data() + used_, bytes, count);
    used_ += count;
  }

  /// The hash of all that was put so far, as 32 hexadecimal digits. More can be put afterwards.
  std::string text();

 private:
  template <typename Unsigned>
  void putWord(Unsigned value) {
    if constexpr (std::endian::native == std::endian::little) {
      putBytes(&value, sizeof(value));
    } else {
      for (std::size_t i = 0; i < sizeof(value); ++i) {
        const auto byte = static_cast<unsigned char>(value >> (8 * i));
        putBytes(&byte, 1);
      }
    }
  }

  void spill(const void* bytes, std::size_t count);
  void flush();

  static constexpr std::size_t kBufferBytes = 16384;

  XXH3_state_s* state_;  ///< Owned; the hash's own allocator gives it the alignment it needs.
  std::vector<char> buffer_;
  std::size_t used_ = 0;
};

}  // namespace orvane
