#pragma once

#include <map>
#include <string>

#include "shared/Export.h"

namespace orvane {

/// Where general events go. Called on threads of the event manager, with the source's mutex held.
class ORVANE_API GeneralEventNotify {
 public:
  GeneralEventNotify();
  GeneralEventNotify(const GeneralEventNotify&);
  GeneralEventNotify& operator=(const GeneralEventNotify&);
  virtual ~GeneralEventNotify();

  virtual void onGeneralEvent(const std::string& topic,
                              const std::map<std::string, std::string>& fields,
                              const std::string& detail);
};

}  // namespace orvane
