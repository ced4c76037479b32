#pragma once

#include "platform/core/NotSupported.h"
#include "services/QuoteClient/IGeneralEventManager.h"

namespace orvane::detail {

/// General events without a channel: nothing arrives, and nothing can be published.
class NoGeneralEvents final : public IGeneralEventManager {
 public:
  void subscribe(const std::shared_ptr<GeneralEventSpi>&, const std::string&,
                 const std::list<std::string>&, const std::list<std::string>&, bool) override {}
  void unsubscribeAll(const std::shared_ptr<GeneralEventSpi>&) override {}
  void unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>&, const std::string&) override {}
  void unsubscribe(const std::shared_ptr<GeneralEventSpi>&, const std::string&,
                   const std::list<std::string>&) override {}
  ResultStatus publishEvent(const std::string&, const std::map<std::string, std::string>&,
                            const std::string&) override {
    return notSupported();
  }
};

}  // namespace orvane::detail
