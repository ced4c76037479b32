#include "platform/dictionary/HistoryWalk.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace orvane::detail {

HistoryWalk::HistoryWalk(DictionaryStore& store, const DataReq& query, int64 lastKey,
                         const DictionaryView& view)
    : store_(store), query_(query), view_(view) {
  std::vector<std::string> targets(query.targets.begin(), query.targets.end());
  if (targets.empty())
    targets =
        store.read([&](DictionaryTables& tables) { return tables.targets(query.name, view); });
  std::set<std::string> seen;
  for (const std::string& target : targets)
    if (seen.insert(target).second) addPart(target, lastKey);
}

void HistoryWalk::addPart(const std::string& target, int64 lastKey) {
  Part part;
  part.range = {query_.name, target, firstKeyOf(query_), lastKey};
  store_.read([&](DictionaryTables& tables) {
    part.left = tables.count(part.range, view_);
    if (query_.count <= 0 || part.left <= query_.count) return;
    part.left = query_.count;
    part.hasLast =
        tables.newest(part.range, view_, static_cast<std::size_t>(query_.count), part.last);
  });
  if (part.left == 0) return;
  total_ += part.left;
  parts_.push_back(std::move(part));
}

DataResult HistoryWalk::next(std::size_t most) {
  Part& part = parts_[at_];
  most = std::min(most, static_cast<std::size_t>(part.left));
  std::vector<StoredRecord> page = store_.read([&](DictionaryTables& tables) {
    return tables.page(part.range, view_, part.hasLast ? &part.last : nullptr, most);
  });
  DataResult result;
  result.name = query_.name;
  result.targets.push_back({part.range.target, {}});
  if (!page.empty()) result.valueType = static_cast<DataValueType>(page.front().valueType);
  const std::int32_t type = page.empty() ? 0 : page.front().valueType;
  int64 taken = 0;
  for (; taken < static_cast<int64>(page.size()); ++taken) {
    StoredRecord& each = page[static_cast<std::size_t>(taken)];
    if (each.valueType != type) break;
    part.last = {{each.record.key, 0, {}}, type, each.place};
    result.targets.front().records.push_back(std::move(each.record));
  }
  part.hasLast = true;
  // What another program took away meanwhile is not waited for.
  const int64 gone = page.size() < most ? part.left - static_cast<int64>(page.size()) : 0;
  part.left -= taken + gone;
  sent_ += taken + gone;
  if (part.left <= 0) ++at_;
  return result;
}

}  // namespace orvane::detail
