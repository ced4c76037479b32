#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "EventStrategy/IGeneralEventSrc.h"
#include "services/QuoteClient/IGeneralEventManager.h"

namespace orvane {

class GeneralEventNotify;

namespace detail {
struct TestAccess;
}

/// One strategy's general events. Made with `make_shared`, owned by an `AbstractEventStrategy` and
/// shared by the manager while a subscription stands. Any thread may call it. The mutex is held
/// across the manager's operations, so the manager must deliver on its own thread.
class GeneralEventSrc final : public IGeneralEventSrc,
                              public GeneralEventSpi,
                              public std::enable_shared_from_this<GeneralEventSrc> {
 public:
  GeneralEventSrc();
  ~GeneralEventSrc() override;

  void setName(const std::string& name);
  /// Where events go; null drops them. When it returns, no call-back runs through the old one.
  void setNotify(GeneralEventNotify* notify);

  void subscribeEvent(const std::string& target, const std::string& name,
                      const std::list<std::string>& keys);
  void unsubscribeEvent(const std::string& target, const std::string& name);
  void unsubscribeAllEvent();
  /// Withdraws everything from the manager; what that throws is thrown once the books are empty.
  /// The object stays usable.
  void release();

  ResultStatus publishEvent(const std::string& topic,
                            const std::map<std::string, std::string>& fields,
                            const std::string& detail) override;
  void onGeneralEvent(const std::string& topic, const std::map<std::string, std::string>& fields,
                      const std::string& detail) override;

 private:
  friend struct detail::TestAccess;

  std::mutex mutex_;  ///< Guards everything below; held while `notify_` is called.
  std::string name_;
  GeneralEventNotify* notify_ = nullptr;  ///< Borrowed.
  std::map<std::string, std::set<std::string>> subscriptions_;
};

}  // namespace orvane
