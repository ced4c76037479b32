#pragma once

#include <set>
#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane::support {

/// What a source of index changes promises, told by the ids of its codes. Each operation gives the
/// calls that the service must get, in order.
class IndexModel {
 public:
  using Calls = std::vector<std::string>;

  /// The code counts whatever the service makes of it.
  Calls subscribe(int64 code) {
    codes.insert(code);
    return {"index.subscribeElementChange " + std::to_string(code)};
  }

  static Calls unsubscribe(int64 code) {
    return {"index.unsubscribeElementChange " + std::to_string(code)};
  }
  /// Once the service is done with it.
  void unsubscribed(int64 code) { codes.erase(code); }

  /// No code stays, whatever the service makes of it.
  Calls withdrawAll() {
    Calls calls;
    for (const int64 code : codes)
      calls.push_back("index.unsubscribeElementChange " + std::to_string(code));
    codes.clear();
    return calls;
  }

  std::set<int64> codes;
  bool listens = true;  ///< Whether somebody is attached.
};

}  // namespace orvane::support
