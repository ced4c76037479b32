#pragma once

#include <mutex>
#include <vector>

#include "services/QuoteClient/IGeneralEventManager.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A manager of general events that delivers nothing of its own accord. It notes every call as
/// "event.<operation>" and keeps every spi that it was ever given, as a careless manager does. Any
/// thread may use it.
class FakeGeneralEventManager final : public IGeneralEventManager {
 public:
  explicit FakeGeneralEventManager(CallLog& calls) : calls_(calls) {}

  void subscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                 const std::list<std::string>& names, const std::list<std::string>& keys,
                 bool live) override;
  void unsubscribeAll(const std::shared_ptr<GeneralEventSpi>& spi) override;
  void unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>& spi,
                         const std::string& target) override;
  void unsubscribe(const std::shared_ptr<GeneralEventSpi>& spi, const std::string& target,
                   const std::list<std::string>& names) override;
  ResultStatus publishEvent(const std::string& topic,
                            const std::map<std::string, std::string>& fields,
                            const std::string& detail) override;

  /// The spi of the last subscription.
  std::shared_ptr<GeneralEventSpi> spi() const;
  /// Every spi that a subscription or a withdrawal brought, in order.
  std::vector<std::shared_ptr<GeneralEventSpi>> spis() const;
  void forget();

 private:
  void keep(const std::shared_ptr<GeneralEventSpi>& spi);

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::shared_ptr<GeneralEventSpi> spi_;
  std::vector<std::shared_ptr<GeneralEventSpi>> spis_;
};

}  // namespace orvane::support
