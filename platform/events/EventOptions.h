#pragma once

#include <map>
#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane {

/// One general event of a run's script. Texts are GBK.
struct ScriptedEvent {
  int64 time = 0;      ///< When it happens, UTC milliseconds.
  std::string target;  ///< What it is about; not empty.
  std::string name;    ///< What happened; not empty.
  std::string key;     ///< What subscribers may choose by; may be empty.
  /// What else it tells. Subscribers find the key, unless it is empty, among them as "key".
  std::map<std::string, std::string> fields = {};
};

/// The general events of a run.
struct EventOptions {
  /// Told to their subscribers at their times. Events of one time keep the order in which they
  /// stand here. Those before the first instant that is played are never told.
  std::vector<ScriptedEvent> script;
};

}  // namespace orvane
