#include "tests/support/FakeGeneralEventManager.h"

namespace orvane::support {
namespace {

std::string commaList(const std::list<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ",") + text;
  return all;
}

}  // namespace

void FakeGeneralEventManager::subscribe(const std::shared_ptr<GeneralEventSpi>& spi,
                                        const std::string& target,
                                        const std::list<std::string>& names,
                                        const std::list<std::string>& keys, bool live) {
  {
    const std::lock_guard lock(mutex_);
    spi_ = spi;
  }
  keep(spi);
  calls_.record("event.subscribe", target + " names=" + commaList(names) +
                                       " keys=" + commaList(keys) + " live=" + (live ? "1" : "0"));
}

void FakeGeneralEventManager::unsubscribeAll(const std::shared_ptr<GeneralEventSpi>& spi) {
  keep(spi);
  calls_.record("event.unsubscribeAll");
}

void FakeGeneralEventManager::unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>& spi,
                                                const std::string& target) {
  keep(spi);
  calls_.record("event.unsubscribeTarget", target);
}

void FakeGeneralEventManager::unsubscribe(const std::shared_ptr<GeneralEventSpi>& spi,
                                          const std::string& target,
                                          const std::list<std::string>& names) {
  keep(spi);
  calls_.record("event.unsubscribe", target + " names=" + commaList(names));
}

ResultStatus FakeGeneralEventManager::publishEvent(const std::string& topic,
                                                   const std::map<std::string, std::string>& fields,
                                                   const std::string& detail) {
  return calls_.record("event.publishEvent",
                       topic + " " + std::to_string(fields.size()) + " " + detail);
}

std::shared_ptr<GeneralEventSpi> FakeGeneralEventManager::spi() const {
  const std::lock_guard lock(mutex_);
  return spi_;
}

std::vector<std::shared_ptr<GeneralEventSpi>> FakeGeneralEventManager::spis() const {
  const std::lock_guard lock(mutex_);
  return spis_;
}

void FakeGeneralEventManager::keep(const std::shared_ptr<GeneralEventSpi>& spi) {
  const std::lock_guard lock(mutex_);
  spis_.push_back(spi);
}

void FakeGeneralEventManager::forget() {
  std::shared_ptr<GeneralEventSpi> spi;
  std::vector<std::shared_ptr<GeneralEventSpi>> spis;
  const std::lock_guard lock(mutex_);
  spi.swap(spi_);
  spis.swap(spis_);
}

}  // namespace orvane::support
