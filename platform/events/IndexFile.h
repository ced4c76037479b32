#pragma once

#include <limits>
#include <string>
#include <vector>

#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane {

/// One element of an index as a file names it.
struct IndexElementSpec {
  std::string code;   ///< Code text, such as "600000.SSE", GBK.
  double weight = 0;  ///< From 0 up, in the unit of the file; 0 where the file gives none.
};

/// What an index is made of from a time on, until its next composition.
struct IndexComposition {
  /// The time of a composition that holds from the start.
  static constexpr int64 kFromTheStart = std::numeric_limits<int64>::min();

  std::string index;           ///< Code text of the index, GBK.
  int64 time = kFromTheStart;  ///< UTC milliseconds.
  std::vector<IndexElementSpec> elements;
  std::string origin;  ///< Where it stands, for messages: file and line or place, UTF-8.
};

/// Reads the compositions of indexes from a JSON or CSV file, plain or gzip-compressed, as
/// docs/formats.md tells. Times without an offset are local times of `timeZone`, an IANA name,
/// unless the file names a zone. Throws `DataFileError`; nothing is returned half-read.
ORVANE_API std::vector<IndexComposition> loadIndexes(const std::string& path,
                                                     const std::string& timeZone = "UTC");

}  // namespace orvane
