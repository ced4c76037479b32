#pragma once

#include <map>
#include <string>

#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// A strategy's door to general events. Owned by its event strategy; any thread may call it.
class ORVANE_API IGeneralEventSrc {
 public:
  IGeneralEventSrc();
  IGeneralEventSrc(const IGeneralEventSrc&) = delete;
  IGeneralEventSrc& operator=(const IGeneralEventSrc&) = delete;
  virtual ~IGeneralEventSrc();

  /// Publishes an event; the result is the manager's.
  virtual ResultStatus publishEvent(const std::string& topic,
                                    const std::map<std::string, std::string>& fields,
                                    const std::string& detail) = 0;
};

}  // namespace orvane
