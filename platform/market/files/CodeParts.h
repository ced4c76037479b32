#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <unordered_map>

#include "platform/market/files/Table.h"
#include "platform/market/files/TableRows.h"

namespace orvane::detail {

/// Finds the part that a row belongs to: one for each code of a file, in the order of their first
/// rows. `Part` has a `code` and a `path`.
template <typename Part>
class CodeParts {
 public:
  Part& of(const TableRows& rows) {
    const ColumnMap& map = rows.table().map();
    if (map.code < 0) return parts_.empty() ? add({}, rows.table().path()) : parts_.front();
    // Rows of one code mostly follow each other.
    const std::string_view code = rows.field(map.code);
    const std::string_view market = map.market < 0 ? std::string_view() : rows.field(map.market);
    if (last_ && code == lastCode_ && market == lastMarket_) return *last_;
    last_ = &of(rows.code(), rows.table().path());
    lastCode_ = code;
    lastMarket_ = market;
    return *last_;
  }

  /// The part of a code, made if need be.
  Part& of(const std::string& code, const std::string& path) {
    const auto found = index_.find(code);
    return found != index_.end() ? parts_[found->second] : add(code, path);
  }

  /// The part of a code; null without one.
  const Part* find(const std::string& code) const {
    const auto found = index_.find(code);
    return found != index_.end() ? &parts_[found->second] : nullptr;
  }

  std::deque<Part>& parts() { return parts_; }
  const std::deque<Part>& parts() const { return parts_; }

 private:
  Part& add(const std::string& code, const std::string& path) {
    index_.emplace(code, parts_.size());
    Part& part = parts_.emplace_back();
    part.code = code;
    part.path = path;
    return part;
  }

  std::deque<Part> parts_;
  std::unordered_map<std::string, std::size_t> index_;
  Part* last_ = nullptr;
  std::string lastCode_;
  std::string lastMarket_;
};

/// Whether a time may follow another one in a part.
inline bool mayFollow(const Table& table, std::int64_t previous, std::int64_t time, bool strict) {
  if (time == previous) return !strict;
  return table.newestFirst() ? time < previous : time > previous;
}

/// Throws `DataFileError` that names the row whose time may not follow.
[[noreturn]] inline void failOrder(const TableRows& rows, std::int64_t previous,
                                   std::int64_t time) {
  const TimeColumns& columns = rows.table().map().time;
  const int column = columns.moment >= 0 ? columns.moment : columns.time;
  if (time == previous) rows.fail(column, "repeats the time of an earlier row");
  if (rows.table().newestFirst())
    rows.fail(column, "runs forwards, but the newest row comes first in this file");
  rows.fail(column, "runs backwards");
}

}  // namespace orvane::detail
