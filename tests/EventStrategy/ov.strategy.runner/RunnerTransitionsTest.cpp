// The whole table of a run's states: what each request makes of each of them, and what the host
// hears of it.

#include <atomic>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/Runner.h"
#include "tests/EventStrategy/ExpectToWait.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"
#include "tests/support/RunnerAccess.h"

namespace orvane::support {
namespace {

struct From {
  const char* name;
  std::uint32_t flags;
};

struct Request {
  const char* name;
  std::function<void(RunnerContext&)> ask;
  bool moduleLoads;
  std::uint32_t toWhenRunning;
  std::vector<int> toldWhenRunning;
  bool startsWhenNot;  ///< Begins a run when none is on; all others change nothing then.
};

void PrintTo(const From& from, std::ostream* out) { *out << from.name; }

void PrintTo(const Request& request, std::ostream* out) { *out << request.name; }

const From kFroms[] = {{"Idle", 0},
                       {"Failed", RunnerStateError},
                       {"Finished", RunnerStateFinished},
                       {"Running", RunnerStateRunning}};

const std::vector<Request>& requests() {
  static const std::vector<Request> all = {
      {"Start", [](auto& r) { r.start(paramsOf(9)); }, true, RunnerStateRunning, {}, true},
      {"StartOfABrokenModule", [](auto& r) { r.start({}); }, false, RunnerStateRunning, {}, true},
      {"Update", [](auto& r) { r.update({}); }, true, RunnerStateRunning, {}, false},
      {"Stop", [](auto& r) { r.stop(); }, true, 0, {0}, false},
      {"Error", [](auto& r) { r.setError("why"); }, true, RunnerStateError, {1}, false},
      {"Finish", [](auto& r) { r.setFinish(); }, true, RunnerStateFinished, {2}, false},
      {"Reset", [](auto& r) { r.reset4PlayBack({}); }, true, RunnerStateRunning, {3}, false},
      {"ResetToABrokenModule",
       [](auto& r) { r.reset4PlayBack({}); },
       false,
       RunnerStateError,
       {3, 1},
       false}};
  return all;
}

class RunnerTransitions : public RunnerTest,
                          public ::testing::WithParamInterface<std::tuple<From, Request>> {
 protected:
  void enter(const From& from) {
    if (from.flags == RunnerStateError) {
      platform.modules.putBroken("good.so", "broken");
      runner->start({});
      pool.runAll();
    } else if (from.flags != 0) {
      runner->start({});
      pool.runAll();
      if (from.flags == RunnerStateFinished) runner->setFinish();
      pool.runAll();
    }
    platform.modules.put("good.so", ScriptedStrategy::maker(script));
    script->clear();
    ASSERT_EQ(TestAccess::state(*runner).flags, from.flags);
  }
};

TEST_P(RunnerTransitions, shouldLeadWhereTheTableSaysAndTellTheHostThatAlone) {
  const auto& [from, request] = GetParam();
  enter(from);
  const std::string textBefore = TestAccess::state(*runner).message;
  const std::size_t toldBefore = spi->statuses().size();
  logs.clear();
  if (!request.moduleLoads) platform.modules.putBroken("good.so", "gone");

  request.ask(*runner);
  pool.runAll();

  const bool running = from.flags == RunnerStateRunning;
  std::uint32_t flags = running ? request.toWhenRunning : from.flags;
  std::vector<int> told = running ? request.toldWhenRunning : std::vector<int>{};
  if (!running && request.startsWhenNot) {
    flags = request.moduleLoads ? RunnerStateRunning : RunnerStateError;
    told = request.moduleLoads ? std::vector<int>{3} : std::vector<int>{3, 1};
  }
  const std::vector<int> all = spi->statuses();
  EXPECT_EQ(std::vector<int>(all.begin() + static_cast<std::ptrdiff_t>(toldBefore), all.end()),
            told);
  EXPECT_EQ(TestAccess::state(*runner).flags, flags);
  EXPECT_EQ(script->alive(), flags == RunnerStateRunning ? 1 : 0);
  if (told.empty()) {
    EXPECT_EQ(TestAccess::state(*runner).message, textBefore);
    EXPECT_EQ(logs.countContaining(",do "), 0);  // No handler did anything.
  }
  const bool ends = running && !request.toldWhenRunning.empty();
  EXPECT_EQ(script->count("onStop"), ends ? 1 : 0);
  EXPECT_EQ(script->count("onUpdate"), running && request.name == std::string("Update") ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(EachState, RunnerTransitions,
                         ::testing::Combine(::testing::ValuesIn(kFroms),
                                            ::testing::ValuesIn(requests())),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + "On" +
                                  std::get<1>(test.param).name;
                         });

TEST(RunnerState, shouldTellRunningBeforeFinishedBeforeErrorBeforeStopped) {
  const auto codeOfFlags = [](std::uint32_t flags) { return RunnerState{flags, ""}.statusCode(); };
  EXPECT_EQ(codeOfFlags(0), 0);
  EXPECT_EQ(codeOfFlags(RunnerStateError), 1);
  EXPECT_EQ(codeOfFlags(RunnerStateFinished), 2);
  EXPECT_EQ(codeOfFlags(RunnerStateFinished | RunnerStateError), 2);
  for (std::uint32_t others = 0; others < 4; ++others)
    EXPECT_EQ(codeOfFlags(RunnerStateRunning | others), 3) << others;
}

class LifecycleLocks : public RunnerTest {};

TEST_F(LifecycleLocks, shouldLogEachRequestWithTheListLockedAndTheSharedValuesFree) {
  std::vector<std::string> held;
  logs.onLine([&](const CapturedLine& line) {
    EXPECT_TRUE(TestAccess::sharedMutexIsFree(*runner)) << line.message;
    if (!TestAccess::mutexIsFree(*runner)) held.push_back(line.message);
  });
  runner->start({});
  runner->update({});
  runner->reset4PlayBack({});
  runner->setError("why");
  runner->setFinish();
  runner->stop();
  const std::vector<std::string> requests = held;
  held.clear();
  pool.runAll();
  runner->start({});
  held.clear();
  pool.runAll();
  logs.onLine({});
  EXPECT_THAT(requests, ElementsAre("[INFO ] Runner r1,start", "[INFO ] Runner r1,update",
                                    "[INFO ] Runner r1,reset for playback,isSetStop=0",
                                    "[INFO ] Runner r1,setError,why", "[INFO ] Runner r1,setFinish",
                                    "[INFO ] Runner r1,stop"));
  EXPECT_THAT(held, IsEmpty());  // A handler's lines are written with no lock.
  EXPECT_TRUE(runnerLogged("DEBUG", ",do start event"));
}

/// The four ways in which a run ends, each with the handler's line and what the host hears.
struct End {
  const char* name;
  void (*ask)(RunnerContext&);
  const char* requestLine;
  const char* handlerLine;
};

const End kEnds[] = {
    {"Stop", [](RunnerContext& r) { r.stop(); }, ",stop", ",do stop event"},
    {"Error", [](RunnerContext& r) { r.setError("why"); }, ",setError,why", ",do error event"},
    {"Finish", [](RunnerContext& r) { r.setFinish(); }, ",setFinish", ",do finish event"},
    {"Reset", [](RunnerContext& r) { r.reset4PlayBack({}); }, ",reset for playback,isSetStop=0",
     ",do reset for playback event"}};

void PrintTo(const End& end, std::ostream* out) { *out << end.name; }

class RunnerEnds : public RunnerTest, public ::testing::WithParamInterface<End> {
 protected:
  bool isReset() const { return GetParam().name == std::string("Reset"); }
};

TEST_P(RunnerEnds, shouldLogTheHandlerBeforeTheTeardown) {
  startRun();
  GetParam().ask(*runner);
  pool.runAll();
  std::vector<std::string> expected;
  for (const std::string line : {GetParam().requestLine, GetParam().handlerLine})
    expected.push_back((expected.empty() ? "[INFO ] Runner r1" : "[DEBUG] Runner r1") + line);
  expected.push_back("[DEBUG] Runner r1,context exit");
  expected.push_back("[DEBUG] Runner r1,stop all timer");
  if (isReset()) expected.push_back("[DEBUG] Runner r1,do start event");
  EXPECT_EQ(logs.messages("Runner"), expected);
}

TEST_P(RunnerEnds, shouldStillBeRunningWithoutATextWhileOnStopAndTheTeardownRun) {
  startRun();
  context().subscribeQuote(codeOf(7), 0);
  std::vector<std::pair<std::uint32_t, std::string>> seen;
  const auto look = [&] {
    seen.emplace_back(TestAccess::state(*runner).flags, TestAccess::state(*runner).message);
  };
  script->on("onStop", [&](IContext*) { look(); });
  platform.calls.onCall("quote.unsubscribeQuote", look);
  GetParam().ask(*runner);
  pool.runAll();
  const std::pair<std::uint32_t, std::string> running{RunnerStateRunning, ""};
  EXPECT_THAT(seen, ElementsAre(running, running));
  platform.calls.onCall("quote.unsubscribeQuote", {});
}

TEST_P(RunnerEnds, shouldCutTheHandlerShortWhenOnStopThrows) {
  startRun();
  runner->saveEnvs({{"k", "v"}}, false, true);
  script->on("onStop", [](IContext*) { throw std::runtime_error("no stop"); });
  GetParam().ask(*runner);
  pool.runAll();
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=no stop"));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  EXPECT_EQ(TestAccess::state(*runner).message, "");
  EXPECT_EQ(TestAccess::strategyCount(*runner), 1u);
  EXPECT_EQ(script->alive(), 1);
  EXPECT_EQ(logs.countContaining("context exit"), 0);
  EXPECT_EQ(runner->shared().env("k", ""), "v");
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  script->on("onStop", {});
}

TEST_P(RunnerEnds, shouldLogTheRequestBeforeItTouchesTheQueueAndTheStopFlag) {
  startRun();
  runner->pushEvent(orderEvent(1));
  std::vector<std::pair<int, bool>> seen;
  logs.onLine([&](const CapturedLine& line) {
    if (line.message.ends_with(GetParam().requestLine))
      seen.emplace_back(platform.liveRefCounters(), runner->isSetStop());
  });
  GetParam().ask(*runner);
  logs.onLine({});
  EXPECT_THAT(seen, ElementsAre(std::pair(1, false)));
  EXPECT_EQ(platform.liveRefCounters(), isReset() ? 1 : 0);
  EXPECT_EQ(runner->isSetStop(), !isReset());
}

TEST_P(RunnerEnds, shouldHaveSetTheStopFlagBeforeThePoolIsAsked) {
  startRun();
  pool.throwNext(1);
  EXPECT_THROW(GetParam().ask(*runner), std::runtime_error);
  EXPECT_EQ(runner->isSetStop(), !isReset());
  runner->start({});
  EXPECT_FALSE(runner->isSetStop());
}

INSTANTIATE_TEST_SUITE_P(EachEnd, RunnerEnds, ::testing::ValuesIn(kEnds),
                         [](const auto& test) { return test.param.name; });

TEST_F(LifecycleLocks, shouldClearTheStopFlagAfterTheLineOfAStartAndBeforeThePoolIsAsked) {
  runner->stop();
  pool.runAll();
  bool seen = false;
  logs.onLine([&](const CapturedLine&) { seen = runner->isSetStop(); });
  pool.throwNext(1);
  EXPECT_THROW(runner->start({}), std::runtime_error);
  logs.onLine({});
  EXPECT_TRUE(seen);
  EXPECT_FALSE(runner->isSetStop());
}

TEST_F(LifecycleLocks, shouldPrepareTheTradeSourceBeforeTheStrategyIsTheRuns) {
  std::vector<std::size_t> counts;
  logs.onLine([&](const CapturedLine& line) {
    if (line.message.find(",setCreateSourceTradeInfo,") != std::string::npos)
      counts.push_back(TestAccess::strategyCount(*runner));
  });
  startRun();
  logs.onLine({});
  EXPECT_THAT(counts, ElementsAre(0u));
}

TEST_F(LifecycleLocks, shouldDestroyTheStrategiesBetweenTheTwoLinesOfItsEnd) {
  startRun();
  runner->stopEvent();
  std::vector<int> alive;
  logs.onLine([&](const CapturedLine& line) {
    if (line.message.find(",RunnerContext destruct ") != std::string::npos)
      alive.push_back(script->alive());
  });
  runner.reset();
  logs.onLine({});
  EXPECT_THAT(alive, ElementsAre(1, 0));
}

TEST_F(LifecycleLocks, shouldWaitForTheSharedValuesWhereverAHostTouchesThem) {
  Runner handle("r2", 0);
  RunnerContext& c = detail::RunnerAccess::context(handle);
  IContext& user = TestAccess::context(c);
  expectToWait(c.shared().mutex,
               {[&] { handle.setStrategyPath("p"); }, [&] { handle.setSpi(spi); },
                [&] { handle.setOrderSource("s"); },
                [&] {
                  handle.setEnvs({{"k", "v"}});
                },
                [&] {
                  handle.setEnvItems({{"g", "k", 1, "t"}});
                },
                [&] {
                  c.saveEnvs({{"k", "w"}}, true, false);
                },
                [&] {
                  c.saveEnvItems({{"g", "k", 2, "u"}}, true, false);
                },
                [&] { user.notifySpi({}); }, [&] { user.env("k", ""); }, [&] { user.envs(); },
                [&] { user.envItems("g"); }, [&] { user.orderSource(); }, [&] { user.clearEnv(); },
                [&] { user.clearEnvItems(); }});
  handle.setSpi({});
}

TEST_F(LifecycleLocks, shouldWaitForTheSharedValuesAtEachStepOfARun) {
  // Each of these stops just before the pool task's next look at the shared values.
  std::atomic<int> reached{0};
  std::atomic<int> released{0};
  const auto stopHere = [&] {
    const int mine = ++reached;
    while (released < mine) std::this_thread::yield();
  };
  spi->hook = [&](const std::string& call) {
    if (call == "status 3 ") stopHere();
  };
  script->onCreate(stopHere);
  script->on("onStop", [&](IContext*) { stopHere(); });
  const auto expectWait = [&](int stop, const HostThread& task) {
    while (reached < stop) std::this_thread::yield();
    runner->shared().mutex.lock();
    released = stop;
    EXPECT_TRUE(task.awaitSleep()) << stop;
    EXPECT_FALSE(runner->shared().envs.empty());  // It is the run's to its end.
    runner->shared().mutex.unlock();
  };
  runner->saveEnvs({{"k", "v"}}, false, true);
  runner->start({});
  {
    HostThread task([this] { pool.runAll(); });
    expectWait(1, task);  // For the path.
    expectWait(2, task);  // For the order source.
  }
  runner->stop();
  {
    HostThread task([this] { pool.runAll(); });
    expectWait(3, task);  // To empty the environment.
  }
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
  spi->hook = nullptr;
}

}  // namespace
}  // namespace orvane::support
