// The whole table of a run's states: what each request makes of each of them, and what the host
// hears of it.

#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

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

}  // namespace
}  // namespace orvane::support
