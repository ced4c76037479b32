#include "platform/events/GeneralEvents.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/core/LostCalls.h"
#include "platform/core/Periods.h"

namespace orvane::detail {
namespace {

std::pair<int64, EventNotice> noticeOf(ScriptedEvent event, std::size_t at) {
  const auto refuse = [&](const char* field) {
    throw std::invalid_argument("events: script[" + std::to_string(at) + "]: " + field +
                                " is empty");
  };
  if (event.target.empty()) refuse("target");
  if (event.name.empty()) refuse("name");
  EventNotice notice{std::move(event.target), std::move(event.name), std::move(event.fields)};
  if (!event.key.empty()) notice.fields["key"] = std::move(event.key);
  return {event.time, std::move(notice)};
}

}  // namespace

GeneralEvents::GeneralEvents(EventOptions options, bool lockstep, std::function<void()> onWaiting)
    : lockstep_(lockstep), onWaiting_(std::move(onWaiting)), followsScript_(lockstep) {
  for (std::size_t i = 0; i < options.script.size(); ++i)
    script_.push_back(noticeOf(std::move(options.script[i]), i));
  std::stable_sort(script_.begin(), script_.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  end_ = script_.size();
}

// What subscribers ask.

GeneralEvents::Receiver* GeneralEvents::find(const GeneralEventSpi* spi) const {
  for (const std::shared_ptr<Receiver>& receiver : receivers_)
    if (receiver->spi.get() == spi) return receiver.get();
  return nullptr;
}

void GeneralEvents::subscribe(const std::shared_ptr<GeneralEventSpi>& spi,
                              const std::string& target, const std::list<std::string>& names,
                              const std::list<std::string>& keys, bool live) {
  if (spi == nullptr || !live) return;
  const std::lock_guard lock(mutex_);
  Receiver* receiver = find(spi.get());
  if (receiver == nullptr) {
    receivers_.push_back(std::make_shared<Receiver>());
    receiver = receivers_.back().get();
    receiver->spi = spi;
  }
  const auto want = [&](const std::string& name) {
    Keys& wanted = receiver->wanted[target][name];
    if (keys.empty()) wanted.all = true;
    wanted.some.insert(keys.begin(), keys.end());
  };
  if (names.empty()) want({});
  for (const std::string& name : names) want(name);
}

std::shared_ptr<GeneralEvents::Receiver> GeneralEvents::takeIfIdle(const GeneralEventSpi* spi) {
  std::shared_ptr<Receiver> idle;
  const auto at = std::find_if(receivers_.begin(), receivers_.end(),
                               [&](const auto& each) { return each->spi.get() == spi; });
  if (at != receivers_.end() && (*at)->wanted.empty()) {
    idle = std::move(*at);
    receivers_.erase(at);
  }
  return idle;
}

void GeneralEvents::unsubscribeAll(const std::shared_ptr<GeneralEventSpi>& spi) {
  // Declared first: what it lets go of may be the receiver's last owner.
  std::shared_ptr<Receiver> idle;
  const std::lock_guard lock(mutex_);
  if (Receiver* receiver = find(spi.get())) receiver->wanted.clear();
  idle = takeIfIdle(spi.get());
}

void GeneralEvents::unsubscribeTarget(const std::shared_ptr<GeneralEventSpi>& spi,
                                      const std::string& target) {
  std::shared_ptr<Receiver> idle;
  const std::lock_guard lock(mutex_);
  if (Receiver* receiver = find(spi.get())) receiver->wanted.erase(target);
  idle = takeIfIdle(spi.get());
}

void GeneralEvents::unsubscribe(const std::shared_ptr<GeneralEventSpi>& spi,
                                const std::string& target, const std::list<std::string>& names) {
  std::shared_ptr<Receiver> idle;
  const std::lock_guard lock(mutex_);
  Receiver* receiver = find(spi.get());
  if (receiver == nullptr) return;
  const auto at = receiver->wanted.find(target);
  if (at == receiver->wanted.end()) return;
  if (names.empty()) at->second.erase(std::string());
  for (const std::string& name : names) at->second.erase(name);
  if (at->second.empty()) receiver->wanted.erase(at);
  idle = takeIfIdle(spi.get());
}

ResultStatus GeneralEvents::publishEvent(const std::string& topic,
                                         const std::map<std::string, std::string>& fields,
                                         const std::string& detail) {
  if (topic.empty()) return statusWith(-2, "topic");
  if (detail.empty()) return statusWith(-2, "detail");
  {
    const std::lock_guard lock(mutex_);
    inbox_.put({topic, detail, fields}, WorkerPool::currentOrigin());
    waiting_.store(true);
  }
  onWaiting_();
  return {};
}

// Telling.

bool GeneralEvents::wants(const Receiver& receiver, const EventNotice& notice) {
  const auto target = receiver.wanted.find(notice.target);
  if (target == receiver.wanted.end()) return false;
  for (const std::string& name : {notice.name, std::string()}) {
    const auto at = target->second.find(name);
    if (at == target->second.end()) continue;
    if (at->second.all || at->second.some.count(notice.key()) != 0) return true;
  }
  return false;
}

void GeneralEvents::tell(const EventNotice& notice) {
  Receivers receivers;
  {
    const std::lock_guard lock(mutex_);
    for (const std::shared_ptr<Receiver>& receiver : receivers_)
      if (wants(*receiver, notice)) receivers.push_back(receiver);
  }
  for (const std::shared_ptr<Receiver>& receiver : receivers) {
    {
      // In live mode it may have been unsubscribed meanwhile.
      const std::lock_guard lock(mutex_);
      if (!wants(*receiver, notice)) continue;
    }
    guarded("a general event call-back threw",
            [&] { receiver->spi->onGeneralEvent(notice.target, notice.fields, notice.name); });
  }
}

bool GeneralEvents::serve() {
  if (waiting_.load()) {
    const std::lock_guard lock(mutex_);
    waiting_.store(false);
    for (EventNotice& notice : inbox_.takeAll(lockstep_)) admitted_.push_back(std::move(notice));
  }
  if (admitted_.empty()) return false;
  const EventNotice notice = std::move(admitted_.front());
  admitted_.pop_front();
  tell(notice);
  return true;
}

void GeneralEvents::dropWaiting() {
  const std::lock_guard lock(mutex_);
  waiting_.store(false);
  inbox_.clear();
  admitted_.clear();
}

int64 GeneralEvents::nextDue() const {
  return followsScript_ && next_ < end_ ? shift_.shown(script_[next_].first) : kUnsetTime;
}

void GeneralEvents::tellNext() {
  const EventNotice& notice = script_[next_++].second;
  tell(notice);
}

int64 GeneralEvents::firstTime() const { return script_.empty() ? kUnsetTime : script_[0].first; }

void GeneralEvents::startAt(int64 time, int64 end) {
  const auto before = [](const auto& each, int64 limit) { return each.first < limit; };
  const auto at = [&](int64 limit) {
    return static_cast<std::size_t>(
        std::lower_bound(script_.begin(), script_.end(), limit, before) - script_.begin());
  };
  next_ = at(time);
  end_ = end == kUnsetTime ? script_.size() : at(end);
}

}  // namespace orvane::detail
