#pragma once

#include <list>
#include <string>

#include "shared/Export.h"

namespace orvane {

class IDataService;

/// Helpers for dictionaries.
class BDUtil {
 public:
  /// The targets of a dictionary.
  ORVANE_API static std::list<std::string> getTargetByName(const std::string& name,
                                                           IDataService* service, bool refresh);
};

}  // namespace orvane
