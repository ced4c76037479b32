#include "EventStrategy/TimerSrc.h"

#include <vector>

#include "EventStrategy/Attempts.h"

namespace orvane {

TimerSrc::TimerSrc() = default;

TimerSrc::~TimerSrc() {
  std::vector<std::shared_ptr<Timer>> left;
  {
    const std::lock_guard lock(mutex_);
    while (!timers_.empty()) {
      left.push_back(std::move(timers_.begin()->second));
      timers_.erase(timers_.begin());
    }
  }
  // What is thrown here is told to nobody: a destructor that throws ends the process.
  detail::Attempts attempts;
  for (const std::shared_ptr<Timer>& timer : left) attempts.take([&] { timer->stop(); });
}

void TimerSrc::setNotify(ITimerNotify* notify) {
  const std::lock_guard lock(mutex_);
  notify_ = notify;
}

void TimerSrc::createTimer(int id, int64 beginTime, int64 interval, int triggerCount) {
  stopTimer(id);
  auto timer = std::make_shared<Timer>(id);
  // Somebody else may have made one of this id since: it must not end under the mutex, for which a
  // firing of it may be waiting.
  std::shared_ptr<Timer> displaced = timer;
  {
    const std::lock_guard lock(mutex_);
    timers_[id].swap(displaced);
  }
  displaced.reset();
  timer->start(beginTime, interval, shared_from_this(), triggerCount);
}

void TimerSrc::stopTimer(int id) {
  std::shared_ptr<Timer> timer;
  {
    const std::lock_guard lock(mutex_);
    const auto it = timers_.find(id);
    if (it == timers_.end()) return;
    timer = std::move(it->second);
    timers_.erase(it);
  }
  timer->stop();
}

void TimerSrc::stopAllTimer() {
  std::map<int, std::shared_ptr<Timer>> all;
  {
    const std::lock_guard lock(mutex_);
    all.swap(timers_);
  }
  detail::Attempts attempts;
  for (const auto& entry : all) attempts.take([&] { entry.second->stop(); });
  attempts.finish();
}

bool TimerSrc::isTimerExist(int id) {
  const std::lock_guard lock(mutex_);
  return timers_.contains(id);
}

void TimerSrc::onTimer(int id, int64 value) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onTimer(id, value);
}

}  // namespace orvane
