// The serial pump: one list of events, one pool task at a time that drains it.

#include <chrono>

#include "EventStrategy/Log.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/RunnerThreadPool.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "services/Common/ThreadPoolBase.h"
#include "shared/LockSoon.h"

namespace orvane {
namespace {

/// A burst's entries are not kept for ever.
constexpr std::size_t kMostSpare = 1024;
/// A batch of so many, with more that came meanwhile, is taken for part of a flood.
constexpr std::size_t kFlood = 4;
/// How long a task then waits for more.
constexpr std::chrono::nanoseconds kLinger{2000};

void linger() {
  const auto end = std::chrono::steady_clock::now() + kLinger;
  while (std::chrono::steady_clock::now() < end) detail::pauseFor(8);
}

}  // namespace

void RunnerContext::pushEvent(IEvent* event) {
  std::unique_ptr<IEvent> owned(event);
  const auto lock = detail::lockSoon(mutex_);
  // All that needs memory comes first, so that `append` needs none: an event without a counter
  // would not be waited for.
  if (spare_.empty()) spare_.emplace_back();
  const bool isFirst = !notifyRefCounter();
  if (isFirst) notifyRefCounter().emplace();
  append(std::move(owned));
  pushed_.store(pushed_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  try {
    schedulePoolTask();
  } catch (...) {
    // There is no task, and whoever pushed the event hears that it is lost.
    if (!running_) {
      events_.pop_back();
      if (isFirst) notifyRefCounter().reset();
    }
    throw;
  }
}

void RunnerContext::append(std::unique_ptr<IEvent> event) {
  if (spare_.empty()) spare_.emplace_back();
  spare_.front() = std::move(event);
  events_.splice(events_.end(), spare_, spare_.begin());
}

void RunnerContext::discardPending() {
  events_.clear();
  notifyRefCounter().reset();
}

void RunnerContext::schedulePoolTask() {
  if (running_ || events_.empty()) return;
  running_ = true;
  // Weak: a queued task does not keep a runner alive that its host has let go of. It brings the
  // reference back for the next one, so that it need not be counted again.
  std::weak_ptr<RunnerContext> weak = std::move(self_);
  if (weak.expired()) weak = weak_from_this();
  // As `shared_from_this` would do, which counts twice.
  if (weak.expired()) throw std::bad_weak_ptr();
  try {
    runnerThreadPool()->addTask([weak = std::move(weak)]() mutable {
      if (const std::shared_ptr<RunnerContext> self = weak.lock())
        self->doPoolTask(std::move(weak));
    });
  } catch (...) {
    running_ = false;  // There is no task that could do it.
    throw;
  }
}

void RunnerContext::doPoolTask(std::weak_ptr<RunnerContext> self) {
  for (;;) {
    std::list<std::unique_ptr<IEvent>> batch;
    std::optional<NotifyRefCounter>* counter = nullptr;
    std::uint64_t taken = 0;
    {
      const auto lock = detail::lockSoon(mutex_);
      taken = pushed_.load(std::memory_order_relaxed);
      batch.swap(events_);
      counter = &notifyRefCounter();
      pendingCounter_ = 1 - pendingCounter_;
    }
    for (std::unique_ptr<IEvent>& event : batch) {
      try {
        try {
          deliver(*event);
        } catch (const std::exception& error) {
          ORVANE_LOG(runner, Error,
                     shared_->name << ",do pool task error,exception,msg=" << error.what());
        } catch (...) {
          ORVANE_LOG(runner, Error, shared_->name << ",do pool task error,system exception");
        }
      } catch (...) {  // A log that fails costs its line, and not the rest of the batch.
      }
      event.reset();
    }
    counter->reset();
    // Whoever takes faster than others push would go through the pool for each event.
    if (batch.size() >= kFlood && pushed_.load(std::memory_order_relaxed) != taken) linger();
    const auto lock = detail::lockSoon(mutex_);
    if (spare_.size() + batch.size() <= kMostSpare) spare_.splice(spare_.end(), batch);
    running_ = false;
    if (!self.expired()) self_ = std::move(self);
    try {
      schedulePoolTask();
      return;
    } catch (...) {
      running_ = true;  // Who finds no successor stays: what is pending is nobody else's.
    }
  }
}

void RunnerContext::deliver(IEvent& event) {
  if (event.type != 0) {
    if (wantsData()) dispatchEvent(event);
    return;
  }
  auto* control = dynamic_cast<IRunnerEvent*>(&event);
  if (control == nullptr) return;
  const bool needsRun = control->runnerKind == RunnerEventKind::Update ||
                        control->runnerKind == RunnerEventKind::Reset4PlayBack;
  if (!needsRun || wantsData()) dispatchRunnerEvent(*control);
}

void RunnerContext::dispatchRunnerEvent(IRunnerEvent& event) {
  switch (event.runnerKind) {
    case RunnerEventKind::Start:
      doEventStart(static_cast<RunnerStartEvent&>(event));
      break;
    case RunnerEventKind::Stop:
      doEventStop();
      break;
    case RunnerEventKind::Error:
      doEventError(static_cast<RunnerErrorEvent&>(event));
      break;
    case RunnerEventKind::Finish:
      doEventFinish();
      break;
    case RunnerEventKind::Update:
      for (const auto& strategy : strategies_)
        strategy->onUpdate(context_.get(), static_cast<RunnerUpdateEvent&>(event).params);
      break;
    case RunnerEventKind::Reset4PlayBack:
      doEventReset4PlayBack(static_cast<RunnerReset4PlayBackEvent&>(event));
      break;
  }
}

}  // namespace orvane
