#pragma once

#include <string>
#include <vector>

#include "platform/dictionary/RecordPublication.h"
#include "shared/Export.h"

namespace orvane {

/// Reads dictionary records from a file, as docs/dictionary.md tells: JSON if its first character
/// is one of "{[", else CSV; UTF-8, plain or gzip-compressed. `path` is UTF-8; the records' texts
/// become GBK. Neighbours that are published alike make one publication, sorted by key.
///
/// Throws `DataFileError` with a UTF-8 text that names file, line, field and value; nothing is
/// returned half-read.
ORVANE_API std::vector<RecordPublication> loadRecords(const std::string& path);

}  // namespace orvane
