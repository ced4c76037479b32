#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// Where general events go. Called on threads of the manager.
class ORVANE_API GeneralEventSpi {
 public:
  GeneralEventSpi() = default;
  GeneralEventSpi(const GeneralEventSpi&) = delete;
  GeneralEventSpi& operator=(const GeneralEventSpi&) = delete;
  virtual ~GeneralEventSpi();
  virtual void onGeneralEvent(const std::string& topic,
                              const std::map<std::string, std::string>& fields,
                              const std::string& detail) = 0;
};

/// Events between the parts of a platform. Any thread may call it; it delivers on its own thread.
class ORVANE_API IGeneralEventManager {
 public:
  virtual ~IGeneralEventManager();
  static std::shared_ptr<IGeneralEventManager> instance();

  virtual void subscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                         const std::list<std::string>& names, const std::list<std::string>& keys,
                         bool live) = 0;
  virtual void unsubscribeAll(const std::shared_ptr<GeneralEventSpi>& spi) = 0;
  virtual void unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>& spi,
                                 const std::string& target) = 0;
  virtual void unsubscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                           const std::list<std::string>& names) = 0;
  virtual ResultStatus publishEvent(const std::string& topic,
                                    const std::map<std::string, std::string>& fields,
                                    const std::string& detail) = 0;
};

}  // namespace orvane
