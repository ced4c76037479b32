#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "EventStrategy/Events.h"
#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "tests/EventStrategy/model/Draw.h"
#include "tests/EventStrategy/model/LifecycleModel.h"
#include "tests/EventStrategy/model/LifecycleProbe.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualPool.h"
#include "tests/support/Turns.h"

namespace orvane::support {

/// One schedule: runners with their hosts, strategies, services and pool threads on the one side,
/// the model on the other, compared whenever a thread gives its turn away.
///
/// A step says who goes on, and holds the dice for what it does there. So every list of steps is a
/// schedule, also one from which steps were taken away. When the steps are used up, everything is
/// let go and has to come to rest.
class LifecycleWorld final : public ProbeListener {
 public:
  static constexpr int kHosts = 2, kServices = 2, kWorkers = 3;
  static constexpr int kThreads = kHosts + kServices + kWorkers;

  struct Step {
    int thread = 0;
    std::uint64_t dice = 0;
  };

  /// How often something happened that the test would be worth little without.
  struct Seen {
    std::int64_t steps = 0, calls = 0;
    std::int64_t starts = 0, stops = 0, resets = 0, updates = 0;
    std::int64_t data = 0;         ///< Calls of a strategy with data.
    std::int64_t throws = 0;       ///< Exceptions out of a call.
    std::int64_t failedLoads = 0;  ///< Told as a status.
    std::int64_t fromWithin = 0;   ///< Host calls from within a call-back.
    std::int64_t ends = 0;         ///< Stops, errors and finishes of a strategy's own.
    std::int64_t discarded = 0;    ///< Records that an end took out of a list.
    std::int64_t blocked = 0;      ///< Calls that were held up for long.
    std::int64_t lateData = 0;     ///< Service call-backs of runners that were gone.
    std::int64_t unstopped = 0;    ///< Strategies that went with their runner.
    std::int64_t atOnce = 0;       ///< Turns given while two strategies or more were in a call.
  };

  LifecycleWorld(Turns& turns, LogCapture& logs, Seen& seen, bool telling = false);
  ~LifecycleWorld() override;
  LifecycleWorld(const LifecycleWorld&) = delete;
  LifecycleWorld& operator=(const LifecycleWorld&) = delete;

  /// What went wrong; empty if nothing did.
  std::string play(const std::vector<Step>& steps);

  /// What happened, a line each, if it is telling.
  const std::string& story() const { return story_; }

 private:
  /// What a call comes from decides what can be done within it.
  enum class Place { Strategy, Host, Create, Passing };

  struct Slot {
    std::shared_ptr<IRunner> handle;
    RunnerModel* model = nullptr;
  };
  /// What services hold of a runner, and whether it is there.
  struct Watched {
    std::weak_ptr<RunnerContext> context;
    std::shared_ptr<QuoteSrc> quotes;
    std::shared_ptr<DataSrc> data;
    std::shared_ptr<TradeSrc> trades;
    std::shared_ptr<TimerSrc> timers;
  };
  struct Thread {
    Flow flow;
    RunnerModel* task = nullptr;  ///< Whose task it runs.
    int inside = 0;               ///< Calls in which it gave its turn away.
    int closed = 0;               ///< It is where it must not give its turn away.
    std::size_t blockedUntil = 0;
  };

  // Turns.
  int next();
  void act(int index);
  void runTask(Thread& thread);
  void letGo();
  void pause(Place place, RunnerModel* runner, IContext* context);
  [[noreturn]] void throwSomething(RunnerModel& runner, Draw& draw);

  // What the library calls.
  void onStrategy(int number, IContext* context, const std::string& call) override;
  void onDestroyed(int number) override;
  void onSpi(int number, const std::string& call) override;
  IStrategy* createStrategy();
  void onService(const std::string& operation);
  void onLine(const CapturedLine& line);

  // What is done.
  void hostDeed(Draw& draw);
  void create(Draw& draw);
  void destroy(const std::string& name);
  void drop(Slot& slot);
  void giveSpi(Slot& slot, Draw& draw);
  void givePath(Slot& slot, Draw& draw);
  void giveEnv(Slot& slot, Draw& draw);
  Slot* aSlot(Draw& draw);
  void contextDeed(RunnerModel& runner, IContext& context, Draw& draw);
  void endDeed(RunnerModel& runner, IContext& context, Draw& draw);
  void subscribeDeed(RunnerModel& runner, IContext& context, Draw& draw);
  void unsubscribeDeed(RunnerModel& runner, IContext& context, Draw& draw);
  void hostHears(RunnerModel& runner, IContext& context, Draw& draw);
  void serviceDeed(Draw& draw);
  void requestDeed(RunnerModel& runner, Draw& draw);
  void dictionaryDeed(RunnerModel& runner, Draw& draw);
  void pushDeed(RunnerModel& runner, Draw& draw);
  template <typename Call>
  void op(Flow::Parts parts, Call call);
  void end(RunnerModel& runner, LifecycleModel::Control control, const std::string& text = {});

  // What is compared.
  void hear(const std::string& text);
  void settle();
  void check();
  void checkRunner(const RunnerModel& runner);
  /// No lock of the runner in whose task this is may be held during a call; else a deed of another
  /// thread would wait for it for ever.
  void requireNoLock();
  void require(bool holds, const std::string& what);
  void fail(const std::string& what);
  void say(const std::string& text);

  Thread& thread() { return threads_[static_cast<std::size_t>(Turns::current())]; }
  Watched& watched(const RunnerModel& runner) {
    return watched_[static_cast<std::size_t>(runner.id)];
  }

  FakePlatform platform_;
  Turns& turns_;
  LogCapture& logs_;
  Seen& seen_;
  const bool telling_;
  ManualPool& pool_ = ManualPool::shared();
  LifecycleModel model_;
  std::array<Thread, kThreads> threads_;
  std::array<Slot, 4> slots_;
  std::vector<Watched> watched_;  ///< By the runner's id.
  std::map<int, std::weak_ptr<IRunnerSpi>> spis_;
  std::map<int, int> speaking_;     ///< Calls of an ear under way.
  std::map<int, bool> strategies_;  ///< Those that exist, and whether they heard `onStop`.
  std::map<int, int> called_;       ///< Calls of a strategy under way, by runner.
  const std::vector<Step>* steps_ = nullptr;
  std::size_t at_ = 0;
  Step step_;
  std::string story_, failure_;
  int lastStrategy_ = 0, lastSpi_ = 0, lastMark_ = 0, wound_ = 0, checks_ = 0;
  bool failed_ = false, winding_ = false, letGo_ = false;
};

}  // namespace orvane::support
