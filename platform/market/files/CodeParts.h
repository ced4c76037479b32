#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <unordered_map>

#include "platform/market/files/Table.h"

namespace orvane::detail {

/// Finds the part that a row belongs to: one for each code of a file, in the order of their first
/// rows. `Part` has a `code` and a `path`.
template <typename Part>
class CodeParts {
 public:
  Part& of(const Table& table) {
    const ColumnMap& map = table.map();
    if (map.code < 0) return parts_.empty() ? add(table, {}) : parts_.front();
    // Rows of one code mostly follow each other.
    const std::string_view code = table.field(map.code);
    const std::string_view market = map.market < 0 ? std::string_view() : table.field(map.market);
    if (last_ && code == lastCode_ && market == lastMarket_) return *last_;
    const std::string text = table.code();
    const auto found = index_.find(text);
    last_ = found != index_.end() ? &parts_[found->second] : &add(table, text);
    lastCode_ = code;
    lastMarket_ = market;
    return *last_;
  }

  std::deque<Part>& parts() { return parts_; }

 private:
  Part& add(const Table& table, const std::string& code) {
    index_.emplace(code, parts_.size());
    Part& part = parts_.emplace_back();
    part.code = code;
    part.path = table.path();
    return part;
  }

  std::deque<Part> parts_;
  std::unordered_map<std::string, std::size_t> index_;
  Part* last_ = nullptr;
  std::string lastCode_;
  std::string lastMarket_;
};

/// Checks that the times of a part run one way. Throws `DataFileError` that names the row.
inline void checkOrder(const Table& table, bool hasPrevious, std::int64_t previous,
                       std::int64_t time, bool strict) {
  if (!hasPrevious) return;
  const TimeColumns& columns = table.map().time;
  const int column = columns.moment >= 0 ? columns.moment : columns.time;
  if (time == previous && strict) table.fail(column, "repeats the time of an earlier row");
  if (table.newestFirst() && time > previous)
    table.fail(column, "runs forwards, but the newest row comes first in this file");
  if (!table.newestFirst() && time < previous) table.fail(column, "runs backwards");
}

}  // namespace orvane::detail
