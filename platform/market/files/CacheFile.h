#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/market/files/DataFiles.h"
#include "shared/Export.h"

namespace orvane {

/// A file that market data were read from, as it was then.
struct DataSource {
  std::string path;  ///< Absolute, UTF-8.
  std::uint64_t bytes = 0;
  std::int64_t modifiedNs = 0;  ///< Since 1970.
  std::string hash;             ///< XXH3, 128 bits, of all its bytes; as hexadecimal digits.
};

/// What a cache file holds: series as they were read, whose rows are mapped into memory, and what
/// they were read from. docs/formats.md describes the file.
struct DataCache {
  std::vector<LoadedBars> bars;
  std::vector<LoadedTicks> ticks;
  std::vector<DataSource> sources;
  std::string reading;      ///< How the sources were read, as one text; empty: nobody said.
  std::int64_t madeNs = 0;  ///< When it was made, since 1970. `writeDataCache` sets it.
};

/// Whether a file is a cache, by its ending ".ovb" or by its first bytes.
ORVANE_API bool isDataCache(const std::string& path);

/// Maps a cache. Its rows come into memory when they are first used. All bytes are compared with
/// their checksums if the file was written to since it was made, or if `checkAll` asks for it; else
/// only the head is. Throws `DataFileError` that names the file and the place.
ORVANE_API DataCache openDataCache(const std::string& path, bool checkAll = false);

/// Writes a cache, whole or not at all: a file of that name is there with its old content until
/// the new one stands. Throws `std::runtime_error`.
ORVANE_API void writeDataCache(const std::string& path, const DataCache& cache);

/// A file as it is now. Throws `DataFileError`.
ORVANE_API DataSource dataSourceOf(const std::string& path);

/// What may be said of a cache: "fresh", "its source PATH has changed", "its source PATH is gone",
/// or why it cannot be used.
ORVANE_API std::string cacheStateOf(const std::string& path);

/// Where the cache of a request lies, or would; empty where the request asks for none.
ORVANE_API std::string cachePathOf(const DataFileRequest& request);

/// The name of a column of ticks as files have it, such as "lastPrice" or "bidPrice1".
ORVANE_API std::string nameOfTickColumn(const TickColumnId& id);

}  // namespace orvane
