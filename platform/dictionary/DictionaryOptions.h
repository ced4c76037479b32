#pragma once

#include <string>

namespace orvane {

/// Where the dictionary of a platform keeps its records.
struct DictionaryOptions {
  /// UTF-8 path of the database; made if it is not there. Empty: records live in memory and go
  /// with the platform. It must not be the store of the trade side.
  std::string file;
};

}  // namespace orvane
