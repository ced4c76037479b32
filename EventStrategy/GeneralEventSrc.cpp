#include "EventStrategy/GeneralEventSrc.h"

#include "EventStrategy/Attempts.h"
#include "EventStrategy/GeneralEventNotify.h"
#include "EventStrategy/JoinedText.h"
#include "EventStrategy/Log.h"

namespace orvane {

GeneralEventSrc::GeneralEventSrc() = default;
GeneralEventSrc::~GeneralEventSrc() = default;

void GeneralEventSrc::setName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  name_ = name;
}

void GeneralEventSrc::setNotify(GeneralEventNotify* notify) {
  const std::lock_guard lock(mutex_);
  notify_ = notify;
}

void GeneralEventSrc::subscribeEvent(const std::string& target, const std::string& name,
                                     const std::list<std::string>& keys) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug,
             name_ << ",subscribeEvent,target=" << target << ",name=" << name
                   << ",keys=" << joinedText(keys, [](const std::string& key) { return key; }));
  subscriptions_[target].insert(name);
  IGeneralEventManager::instance()->subscribe(shared_from_this(), target, {name}, keys, true);
}

void GeneralEventSrc::unsubscribeEvent(const std::string& target, const std::string& name) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",unsubscribeEvent,target=" << target << ",name=" << name);
  IGeneralEventManager::instance()->unsubscribe(shared_from_this(), target, {name});
  subscriptions_[target].erase(name);
}

void GeneralEventSrc::unsubscribeAllEvent() {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",unsubscribeAllEvent");
  for (const auto& [target, names] : subscriptions_) {
    ORVANE_LOG(event, Debug, name_ << ",unsubscribeEvent,target=" << target);
    IGeneralEventManager::instance()->unsubscribeTarget(shared_from_this(), target);
  }
  subscriptions_.clear();
}

void GeneralEventSrc::release() {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",release,unsubscribeEvent begin");
  detail::Attempts attempts;
  attempts.take([this] { IGeneralEventManager::instance()->unsubscribeAll(shared_from_this()); });
  ORVANE_LOG(event, Debug, name_ << ",release,unsubscribeEvent end");
  subscriptions_.clear();
  attempts.finish();
}

ResultStatus GeneralEventSrc::publishEvent(const std::string& topic,
                                           const std::map<std::string, std::string>& fields,
                                           const std::string& detail) {
  return IGeneralEventManager::instance()->publishEvent(topic, fields, detail);
}

void GeneralEventSrc::onGeneralEvent(const std::string& topic,
                                     const std::map<std::string, std::string>& fields,
                                     const std::string& detail) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onGeneralEvent(topic, fields, detail);
}

}  // namespace orvane
