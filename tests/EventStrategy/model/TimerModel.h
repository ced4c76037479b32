#pragma once

#include <set>
#include <string>
#include <vector>

namespace orvane::support {

/// What a timer source promises, told by the ids of its timers. Each operation gives the calls that
/// the timers must get, in order; the table changes before the first of them.
class TimerModel {
 public:
  using Calls = std::vector<std::string>;

  Calls start(int id, const std::string& terms) {
    ids.insert(id);
    return {"timer.start " + std::to_string(id) + " " + terms};
  }

  Calls stop(int id) {
    if (ids.erase(id) == 0) return {};
    return {"timer.stop " + std::to_string(id)};
  }

  Calls stopAll() {
    Calls calls;
    for (const int id : ids) calls.push_back("timer.stop " + std::to_string(id));
    ids.clear();
    return calls;
  }

  std::set<int> ids;
  bool listens = true;  ///< Whether somebody is attached.
};

}  // namespace orvane::support
