#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane::support {

/// What a source of general events promises, told by its table: the names under each target. Each
/// operation gives the calls that the manager must get, in order.
class GeneralEventModel {
 public:
  using Calls = std::vector<std::string>;

  /// With the one key "k". What the manager makes of it changes nothing.
  Calls subscribe(const std::string& target, const std::string& name) {
    table[target].insert(name);
    return {"event.subscribe " + target + " names=" + name + " keys=k live=1"};
  }

  static Calls unsubscribe(const std::string& target, const std::string& name) {
    return {"event.unsubscribe " + target + " names=" + name};
  }
  /// Once the manager is done with it. A target stays, known before or not.
  void unsubscribed(const std::string& target, const std::string& name) {
    table[target].erase(name);
  }

  Calls unsubscribeAll() const {
    Calls calls;
    for (const auto& entry : table) calls.push_back("event.unsubscribeTarget " + entry.first);
    return calls;
  }

  /// The table is empty afterwards, whatever the manager makes of it.
  Calls release() {
    table.clear();
    return {"event.unsubscribeAll"};
  }

  std::map<std::string, std::set<std::string>> table;
  bool listens = true;  ///< Whether somebody is attached.
};

}  // namespace orvane::support
