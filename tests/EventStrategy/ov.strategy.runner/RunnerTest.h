#pragma once

#include <QJsonObject>
#include <memory>
#include <string>
#include <vector>

#include "EventStrategy/Events.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/RunnerThreadPool.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/support/RecordingRunnerSpi.h"
#include "tests/support/ScriptedStrategy.h"

namespace orvane::support {

inline QJsonObject paramsOf(int value) { return {{"v", value}}; }

/// A quote's record as the base would queue it.
inline IEvent* tickEvent(int64 codeId, Word mark = 0) {
  auto* event = new TickEvent;
  event->quote = quoteOf(codeId, mark);
  return event;
}

/// An order's record: it reaches a strategy without any subscription.
inline IEvent* orderEvent(int64 id) {
  auto* event = new OrderEvent;
  event->order.id = id;
  return event;
}

/// A runner's context "r1" with a host that listens and the module "good.so", whose strategies
/// follow `script`. Its sources are attached.
class RunnerTest : public LibraryTest {
 protected:
  explicit RunnerTest(int mode = 0) : runner(std::make_shared<RunnerContext>("r1", mode)) {
    runnerThreadPool();  // Made once in the process: a test alone must not meet that moment.
    runner->startEvent();
    runner->shared().spi = spi;
    runner->shared().strategyPath = "good.so";
    runner->shared().orderSource = "source";
    platform.modules.put("good.so", ScriptedStrategy::maker(script));
  }
  ~RunnerTest() override {
    if (runner) runner->stopEvent();
    runner.reset();
    pool.runAll();
  }

  /// Starts a run and forgets what was noted so far.
  void startRun() {
    runner->start(paramsOf(1));
    pool.runAll();
    ASSERT_EQ(script->count("onStart"), 1);
    script->clear();
    logs.clear();
    platform.calls.clear();
  }

  IContext& context() { return TestAccess::context(*runner); }

  /// Queues an event and runs the pump until it rests.
  void deliver(IEvent* event) {
    runner->pushEvent(event);
    pool.runAll();
  }

  bool runnerLogged(const std::string& level, const std::string& text) {
    return loggedOnce("Runner", level, "r1" + text);
  }

  std::shared_ptr<StrategyScript> script = std::make_shared<StrategyScript>();
  std::shared_ptr<RecordingRunnerSpi> spi = std::make_shared<RecordingRunnerSpi>();
  std::shared_ptr<RunnerContext> runner;
};

}  // namespace orvane::support
