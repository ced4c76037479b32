#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/EventStrategy/model/Flow.h"
#include "tests/EventStrategy/model/RunnerModel.h"

namespace orvane::support {

/// What runners promise, written down a second time: requests only queue; one task at a time takes
/// what is pending and carries it out event by event; an end asked for discards what is pending and
/// closes the batch in hand to data.
///
/// It is told of everything that is done to the library, on which thread's flow, and puts into that
/// flow what has to come of it. It has no threads of its own: threads take turns.
class LifecycleModel {
 public:
  using Control = EventModel::Control;

  static constexpr const char* kGood = "good";
  static constexpr const char* kBroken = "broken";
  static constexpr const char* kEmpty = "empty";
  static constexpr const char* kLoadError = "no way";

  // What hosts do. Only what may call out takes a flow.
  RunnerModel& create(Flow& flow, const std::string& name);
  void destroy(Flow& flow, const std::string& name);
  /// The host lets go of one of its references.
  void drop(Flow& flow, RunnerModel& runner);
  void start(RunnerModel& runner, int mark);
  void update(RunnerModel& runner, int mark);
  void reset(RunnerModel& runner, int mark);
  /// A stop, an error or a finish is asked for, by the host or by the strategy.
  void end(RunnerModel& runner, Control control, const std::string& text = {});

  /// A record reaches the runner's list, from whatever thread.
  void push(RunnerModel& runner, EventModel event);

  // What the pool does. A task may come to a runner that is gone.
  void beginTask(Flow& flow);

  /// The oldest task's runner. Null if there is no task.
  RunnerModel* nextTask() { return tasks.empty() ? nullptr : runners[tasks.front()].get(); }

  /// References to the host's ear, by runners that live.
  bool isHeard(int spi) const;

  std::vector<std::unique_ptr<RunnerModel>> runners;  ///< By id.
  std::map<std::string, std::size_t> idByName;        ///< The factory's.
  std::deque<std::size_t> tasks;                      ///< At the pool, oldest first.
  int lastRequest = 0, lastTimer = 0;                 ///< As the platform counts them.
  int lastStrategy = 0;
  int counters = 0;  ///< Live counters of undigested data.
  int orders = 0;    ///< Live records of orders.

 private:
  void request(RunnerModel& runner, EventModel event);
  void schedule(RunnerModel& runner);
  void discard(RunnerModel& runner);
  void release(Flow& flow, RunnerModel& runner);
  Flow::Parts destruct(RunnerModel& runner);
  void nextEvent(Flow& flow, RunnerModel& runner);
  void endTask(Flow& flow, RunnerModel& runner);
  void deliver(Flow& flow, RunnerModel& runner, const EventModel& event);

  Flow::Parts started(Flow& flow, RunnerModel& runner, int mark);
  void load(Flow& flow, RunnerModel& runner, int mark);
  Flow::Parts ended(Flow& flow, RunnerModel& runner);
  Flow::Part told(Flow& flow, RunnerModel& runner);
  static Flow::Parts dispatched(const RunnerModel& runner, const EventModel& event);
  static Flow::Part destroyed(RunnerModel& runner);
  static Flow::Part toStrategy(const RunnerModel& runner, const std::string& call);
};

}  // namespace orvane::support
