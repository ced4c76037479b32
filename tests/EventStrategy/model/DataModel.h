#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "services/Common/IDataService.h"

namespace orvane::support {

/// What a dictionary source promises, told by its two tables. Each operation gives the calls that
/// the service must get, in order; the tables change before the first of them.
class DataModel {
 public:
  using Calls = std::vector<std::string>;

  /// A request of the dictionary "dic" with nothing else set.
  Calls request(int id) {
    requests.insert(id);
    return {"data.subscribeData " + std::to_string(id) + " dic begin=0 end=0 count=0 flags=0"};
  }

  /// The strategy base tells the service of what was known.
  Calls cancel(int id) {
    if (requests.erase(id) == 0) return {};
    return {"data.unsubscribeData " + std::to_string(id)};
  }

  Calls subscribe(const SnapshotKey& key, int flags) {
    if (++snapshots[key] > 1) return {};
    return {"data.subscribeSnapshot " + textOf(key, flags)};
  }

  Calls unsubscribe(const SnapshotKey& key, int flags) {
    if (!snapshots.contains(key)) return {};
    if (--snapshots[key] > 0) return {};
    snapshots.erase(key);
    return {"data.unsubscribeSnapshot " + textOf(key, flags)};
  }

  Calls release() {
    Calls calls;
    for (const int id : requests) calls.push_back("data.unsubscribeData " + std::to_string(id));
    calls.push_back("data.unsubscribeAllSnapshots");
    requests.clear();
    snapshots.clear();
    return calls;
  }

  std::set<int> requests;
  std::map<SnapshotKey, int> snapshots;  ///< By key, 1 at least.
  bool listens = true;                   ///< Whether somebody is attached.

 private:
  static std::string textOf(const SnapshotKey& key, int flags) {
    return key.name + "/" + key.target + " flags=" + std::to_string(flags);
  }
};

}  // namespace orvane::support
