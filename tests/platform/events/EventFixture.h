#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "services/QuoteClient/IGeneralEventManager.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {

/// A subscriber of general events that hands what it is told to a runner's pump.
class EventSpi final : public GeneralEventSpi {
 public:
  explicit EventSpi(std::shared_ptr<RunnerSpi> runner) : runner_(std::move(runner)) {}

  void onGeneralEvent(const std::string& topic, const std::map<std::string, std::string>& fields,
                      const std::string& detail) override {
    if (onTold) onTold();
    std::string text = topic + "/" + detail;
    for (const auto& [key, value] : fields) text += " " + key + "=" + value;
    runner_->push(text);
  }

  std::vector<std::string> handled() const { return runner_->handled(); }
  std::function<void()> onTold;  ///< On the service's thread, first.

 private:
  const std::shared_ptr<RunnerSpi> runner_;
};

inline std::shared_ptr<EventSpi> makeEventSpi(RunnerSpi::Handler handler = nullptr) {
  return std::make_shared<EventSpi>(std::make_shared<RunnerSpi>(std::move(handler)));
}

inline IGeneralEventManager& events() { return *IGeneralEventManager::instance(); }

inline void subscribe(const std::shared_ptr<EventSpi>& spi, const std::string& target,
                      const std::string& name, const std::list<std::string>& keys = {}) {
  events().subscribe(spi, target, {name}, keys, true);
}

using Lines = std::vector<std::string>;

}  // namespace orvane::testing
