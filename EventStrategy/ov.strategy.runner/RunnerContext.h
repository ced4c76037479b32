#pragma once

#include <array>
#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/ov.strategy.runner/RunnerEvents.h"
#include "EventStrategy/ov.strategy.runner/RunnerShared.h"
#include "EventStrategy/ov.strategy.runner/RunnerState.h"
#include "EventStrategy/ov.strategy.runner/StrategyLoadResult.h"
#include "services/Common/NotifyRefCounter.h"

namespace orvane {

class UserContext;

/// Owns one run of one strategy: its lifecycle, its state, the strategy object, the context handed
/// to it, and the serial pump.
///
/// The pump's promise: control and data events stand in one list in order of arrival; one pool
/// task at a time takes the whole list and delivers it event by event, so that a strategy's calls
/// never overlap. A stop, an error or a finish discards what is pending and closes the rest of the
/// batch in hand. No lock is held during a call into the strategy or the spi, so both may call
/// everything from within.
///
/// Made with `make_shared`: the pump and three control events take references to it. The lifecycle
/// operations may be called from any thread; they only queue. `mutex_` and `RunnerShared::mutex`
/// never nest.
class RunnerContext final : public AbstractEventStrategy,
                            public std::enable_shared_from_this<RunnerContext> {
 public:
  /// Bit 0 of `mode` asks for the server context.
  RunnerContext(const std::string& name, int mode);
  ~RunnerContext() override;

  void start(const QJsonObject& params);
  void update(const QJsonObject& params);
  void stop();
  void reset4PlayBack(const QJsonObject& params);
  void setError(const std::string& message);
  void setFinish();

  /// A stop, an error or a finish was asked for; cleared by `start` alone.
  bool isSetStop() const { return isSetStop_; }

  /// Stores values in the environment and tells the spi of them, each if asked to.
  void saveEnvs(const std::map<std::string, std::string>& values, bool notify, bool store);
  void saveEnvItems(const std::list<EnvItem>& items, bool notify, bool store);

  RunnerShared& shared() { return *shared_; }

  void pushEvent(IEvent* event) override;

  // The context works on the sources' own books.
  using AbstractEventStrategy::data;
  using AbstractEventStrategy::quotes;
  using AbstractEventStrategy::timers;
  using AbstractEventStrategy::trades;

 private:
  friend struct detail::TestAccess;

  /// Puts an event at the end, in an entry that an earlier one left.
  void append(std::unique_ptr<IEvent> event);
  /// Drops all that is pending, before the event that ends the run.
  void discardPending();
  void schedulePoolTask();
  /// `self` is the task's own reference to this runner, which the next one takes.
  void doPoolTask(std::weak_ptr<RunnerContext> self);
  void deliver(IEvent& event);
  std::optional<NotifyRefCounter>& notifyRefCounter() {
    return notifyRefCounters_[pendingCounter_];
  }
  bool wantsData() const { return state_->isRunning() && !isSetStop_; }

  void dispatchRunnerEvent(IRunnerEvent& event);
  void doEventStart(RunnerStartEvent& event);
  void doEventStop();
  void doEventError(const RunnerErrorEvent& event);
  void doEventFinish();
  void doEventReset4PlayBack(const RunnerReset4PlayBackEvent& event);
  void releaseStrategies();
  void reportStatus();
  StrategyLoadResult loadStrategy(const std::string& path);

  void dispatchEvent(const IEvent& event);
  void dispatchAccountStatus(const IEvent& event);
  void dispatchBars(const IEvent& event);
  void dispatchBarProgress(const IEvent& event);
  void dispatchQuote(const IEvent& event);
  void dispatchTimer(const IEvent& event);
  void dispatchData(const IEvent& event);
  void dispatchDataDeleted(const IEvent& event);
  void dispatchSnapshot(const IEvent& event);

  std::unique_ptr<RunnerShared> shared_;
  std::unique_ptr<RunnerState> state_;                ///< The pool task's alone.
  std::list<std::unique_ptr<IStrategy>> strategies_;  ///< The pool task's alone.
  std::unique_ptr<UserContext> context_;              ///< Made once, kept across runs.
  std::atomic<bool> isSetStop_{false};

  std::mutex mutex_;      ///< Guards what follows; never held while anything is delivered.
  bool running_ = false;  ///< A pool task is scheduled or running.
  std::weak_ptr<RunnerContext> self_;     ///< For the next task, if one has brought it back.
  std::atomic<std::uint64_t> pushed_{0};  ///< Data events so far; a task looks without the lock.
  std::list<std::unique_ptr<IEvent>> events_;
  std::list<std::unique_ptr<IEvent>> spare_;  ///< Empty entries for events that are to come.
  /// The one is there while data events are pending, the other while a task has a batch of them.
  std::array<std::optional<NotifyRefCounter>, 2> notifyRefCounters_;
  std::size_t pendingCounter_ = 0;  ///< Which is the one.
};

}  // namespace orvane
