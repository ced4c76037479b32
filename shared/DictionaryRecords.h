#pragma once

#include <compare>
#include <list>
#include <string>

#include "shared/Types.h"

namespace orvane {

/// One dictionary record. A list of records is sorted by `key`, ascending, before it is published.
struct Record {
  int64 key = 0;
  int64 value2 = 0;  ///< Carried.
  std::string text;  ///< The record's content.

  friend bool operator==(const Record&, const Record&) = default;
};

/// A target of a dictionary with its records.
struct TargetRecord {
  std::string target;
  std::list<Record> records;
};

/// The kind of the values of a batch. The library does not read it.
enum class DataValueType : std::int32_t { None = 0 };

/// A batch as the data service delivers it.
struct DataResult {
  std::string name;
  DataValueType valueType = DataValueType::None;
  std::list<TargetRecord> targets;
};

/// A dictionary request.
struct DataReq {
  std::string name;
  std::list<std::string> targets;
  int64 beginTime = 0;
  int64 endTime = 0;
  std::int32_t count = 0;  ///< Most records wanted; the library's own requests use `kNoLimit`.
  std::int32_t flags = 0;
};

/// A snapshot subscription: ordered by `name` first and by `target` second.
struct SnapshotKey {
  std::string target;
  std::string name;

  friend bool operator==(const SnapshotKey&, const SnapshotKey&) = default;
  friend std::strong_ordering operator<=>(const SnapshotKey& a, const SnapshotKey& b) {
    if (const auto byName = a.name <=> b.name; byName != 0) return byName;
    return a.target <=> b.target;
  }
};

/// The definition of a dictionary; the meaning of the fields is the data service's.
struct DataDefine {
  std::string text1, text2, text3, text4;
  std::int32_t value1 = 0, value2 = 0, value3 = 0;
};

/// The short description of a dictionary; the meaning of the fields is the data service's.
struct DataBrief {
  std::string text1, text2;
};

}  // namespace orvane
