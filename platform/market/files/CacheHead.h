#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/market/files/CacheFile.h"

namespace orvane::detail {

/// The first bytes of a cache. A transfer as text would change one of them.
inline constexpr std::string_view kCacheMagic = "\x89OVB\r\n\x1A\n";
inline constexpr std::uint32_t kCacheVersion = 1;
inline constexpr std::uint32_t kCacheByteOrder = 0x01020304;

/// The data and each of its sections begin at multiples of this, so that a page holds one of them.
inline constexpr std::uint64_t kCacheAlignment = 4096;
/// One checksum stands for so many bytes of the data.
inline constexpr std::uint64_t kCacheCheckBytes = std::uint64_t{1} << 20;

inline std::uint64_t alignedForCache(std::uint64_t at) {
  return (at + kCacheAlignment - 1) / kCacheAlignment * kCacheAlignment;
}

/// The fixed part at the front of a cache. Behind it stand the description, filled up with blanks
/// to a multiple of 8 bytes, the checksums, 8 bytes each, and on the next page the data.
struct CachePreamble {
  std::array<char, 8> magic{};
  std::uint32_t byteOrder = kCacheByteOrder;
  std::uint32_t version = kCacheVersion;
  std::uint64_t metaBytes = 0;
  std::uint64_t checks = 0;
  std::uint64_t fileBytes = 0;
  std::int64_t madeNs = 0;     ///< The file's time of modification, as its writer set it.
  std::uint64_t headHash = 0;  ///< XXH3 of the head with 0 here.
  std::uint64_t reserved = 0;
};
static_assert(sizeof(CachePreamble) == 64);

/// Some rows of one type, at a place counted from the begin of the data.
struct CacheSection {
  std::uint64_t offset = 0;
  std::uint64_t bytes = 0;
  const void* rows = nullptr;  ///< Those that are to be written.
};

/// The description of a cache as JSON, and where each section comes to lie.
std::string cacheMeta(const DataCache& cache, std::vector<CacheSection>& sections);

/// Finds the rows of a section: `count` records of `size` bytes. Throws `DataFileError` if they
/// are not all there.
using FindRows =
    std::function<void*(std::uint64_t offset, std::uint64_t count, std::uint64_t size)>;

/// Takes a description apart; `keeper` keeps the rows alive. Throws `DataFileError` begun with
/// `path` for what no writer writes.
DataCache readCacheMeta(const std::string& path, std::string_view meta, const FindRows& find,
                        const std::shared_ptr<void>& keeper);

}  // namespace orvane::detail
