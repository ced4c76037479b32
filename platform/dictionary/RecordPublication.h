#pragma once

#include <list>
#include <string>

#include "shared/DictionaryRecords.h"

namespace orvane {

/// Records of one target of a dictionary that are published together. Texts are GBK.
struct RecordPublication {
  std::string name;    ///< The dictionary; not empty.
  std::string target;  ///< Not empty.
  std::int32_t valueType = 0;
  std::int32_t flags = 0;  ///< Those of `platform/fields/DictionaryFlags.h`.
  int64 tag = 0;           ///< Handed to the receivers.
  /// UTC milliseconds: in playback nobody sees the records before it. Unset: from the start on.
  int64 time = kUnsetTime;
  std::list<Record> records;  ///< Sorted by key.
};

}  // namespace orvane
