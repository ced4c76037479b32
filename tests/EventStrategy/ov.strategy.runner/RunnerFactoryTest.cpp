// The front door: the factory and the handle it gives out.

#include "EventStrategy/ov.strategy.runner/RunnerFactory.h"

#include <QJsonObject>
#include <memory>
#include <thread>
#include <vector>

#include "EventStrategy/ov.strategy.runner/Runner.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/support/RecordingRunnerSpi.h"
#include "tests/support/ScriptedStrategy.h"

namespace orvane::support {
namespace {

class RunnerFactoryTest : public LibraryTest {
 protected:
  RunnerFactoryTest() { platform.modules.put("good.so", ScriptedStrategy::maker(script)); }
  ~RunnerFactoryTest() override {
    for (const char* name : {"a", "b", "c"}) factory->destroyRunner(name);
    pool.runAll();
  }

  std::shared_ptr<IRunner> make(const std::string& name, int mode = 0) {
    auto runner = factory->createRunner(name, mode);
    runner->setStrategyPath("good.so");
    runner->setOrderSource("source");
    runner->setSpi(spi);
    return runner;
  }

  bool isFactoryFree() { return TestAccess::mutexIsFree(static_cast<RunnerFactory&>(*factory)); }

  /// Notes for each of the runners' lines from now on whether the factory could be entered.
  void noteLocks(std::vector<std::string>& notes) {
    logs.onLine([this, &notes](const CapturedLine& line) {
      if (line.logger != "Runner") return;
      const std::string text = line.message.substr(line.message.find(",") + 1);
      notes.push_back(text.substr(0, text.find('=')) + (isFactoryFree() ? " free" : " held"));
    });
  }

  IRunnerFactory* factory = IRunnerFactory::instance();
  std::shared_ptr<StrategyScript> script = std::make_shared<StrategyScript>();
  std::shared_ptr<RecordingRunnerSpi> spi = std::make_shared<RecordingRunnerSpi>();
};

TEST_F(RunnerFactoryTest, shouldBeOneObjectForEveryThread) {
  std::vector<IRunnerFactory*> seen(8);
  std::vector<std::thread> threads;
  for (IRunnerFactory*& each : seen)
    threads.emplace_back([&each] { each = IRunnerFactory::instance(); });
  for (std::thread& thread : threads) thread.join();
  for (const IRunnerFactory* each : seen) EXPECT_EQ(each, factory);
}

TEST_F(RunnerFactoryTest, shouldCarryARunFromEndToEnd) {
  const auto runner = make("a");
  EXPECT_EQ(runner->name(), "a");
  runner->setEnvs({{"k", "v"}});
  runner->setEnvItems({{"g", "i", 3, "t"}});
  EXPECT_THAT(spi->calls(), IsEmpty());  // The host's own values are not told back to it.
  script->on("onStart", [this](IContext* c) {
    const bool first = script->made() == 1;  // The reset clears the environment.
    EXPECT_EQ(c->name(), "a");
    EXPECT_EQ(c->env("k", ""), first ? "v" : "");
    EXPECT_EQ(c->envItems("g").size(), first ? 1u : 0u);
    EXPECT_EQ(c->orderSource(), "source");
  });
  runner->start({{"v", 1}});
  runner->update({{"v", 2}});
  pool.runAll();
  runner->reset4PlayBack({{"v", 3}});
  pool.runAll();
  runner->stop();
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("create", "onStart {\"v\":1}", "onUpdate {\"v\":2}", "onStop", "destroy",
                          "create", "onStart {\"v\":3}", "onStop", "destroy"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 3, 0));
}

TEST_F(RunnerFactoryTest, shouldReadPathAndOrderSourceWhenTheStartIsCarriedOut) {
  const auto runner = factory->createRunner("a", 0);
  runner->setSpi(spi);
  runner->start({});
  runner->setStrategyPath("good.so");
  runner->setOrderSource("late");
  std::string seen;
  script->on("onStart", [&](IContext* c) { seen = c->orderSource(); });
  pool.runAll();
  EXPECT_EQ(script->count("onStart"), 1);
  EXPECT_EQ(seen, "late");
}

TEST_F(RunnerFactoryTest, shouldReadTheOrderSourceAtEachOrder) {
  const auto runner = make("a");
  runner->start({});
  pool.runAll();
  script->on("onUpdate", [](IContext* c) {
    std::list<Order> orders;
    c->sendOrder({}, orders);
  });
  runner->update({});
  pool.runAll();
  EXPECT_EQ(platform.trade().lastRequest.source.createSource, "source");
  runner->setOrderSource("another");
  runner->update({});
  pool.runAll();
  EXPECT_EQ(platform.trade().lastRequest.source.createSource, "another");
}

// Log lines.

TEST_F(RunnerFactoryTest, shouldLogCreationConstructionSettersAndEnds) {
  auto runner = factory->createRunner("a", 0);
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,create Runner"));
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,Runner construct"));
  runner->setStrategyPath(gbkFromUtf8("策略.so"));
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,setStrategyPath,path=策略.so"));
  runner->setOrderSource("s1");
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,setStrategyPath,source=s1"));
  runner->setSpi(spi);
  char pointer[32];
  std::snprintf(pointer, sizeof(pointer), "%p", static_cast<void*>(spi.get()));
  const std::string hexadecimal = pointer;
  const std::string digits = hexadecimal.substr(2);
  int found = 0;
  for (const CapturedLine& line : logs.lines())
    if (line.level == "TRACE" && line.logger == "Runner" &&
        line.message.starts_with("[TRACE] Runner a,setSpi=") && line.message.ends_with(digits))
      ++found;
  EXPECT_EQ(found, 1);
  factory->destroyRunner("a");
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,destroy Runner"));
  EXPECT_EQ(logs.count("Runner", "DEBUG", "a,Runner destruct"), 0);
  runner.reset();
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,Runner destruct"));
}

TEST_F(RunnerFactoryTest, shouldLogTheContextsConstructionBetweenCreateAndConstruct) {
  logs.clear();
  const auto runner = factory->createRunner("a", 0);
  EXPECT_THAT(logs.messages("Runner"), ElementsAre("[DEBUG] Runner a,create Runner",
                                                   "[DEBUG] Runner a,RunnerContext construct",
                                                   "[DEBUG] Runner a,Runner construct"));
}

// Two of one name.

TEST_F(RunnerFactoryTest, shouldHaveTwoLiveRunnersOfOneNameAndKnowOnlyTheSecond) {
  const auto first = make("a");
  const auto second = make("a");
  EXPECT_NE(first, second);
  first->start({{"v", 1}});
  second->start({{"v", 2}});
  pool.runAll();
  EXPECT_EQ(script->alive(), 2);
  factory->destroyRunner("a");
  pool.runAll();
  EXPECT_EQ(script->alive(), 1);
  EXPECT_EQ(script->count("onStop"), 1);
  first->update({{"v", 3}});
  pool.runAll();
  EXPECT_EQ(script->calls().back(), "onUpdate {\"v\":3}");
  first->stop();
  pool.runAll();
}

TEST_F(RunnerFactoryTest, shouldDestroyAFirstThatNobodyHoldsInsideTheSecondCreateWithoutOnStop) {
  make("a")->start({});
  pool.runAll();
  script->clear();
  logs.clear();
  const auto second = make("a");
  EXPECT_THAT(script->calls(), ElementsAre("destroy"));
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,Runner destruct"));
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,RunnerContext destruct end"));
  EXPECT_EQ(logs.countContaining("context exit"), 0);
}

// Destroying.

TEST_F(RunnerFactoryTest, shouldCutTheSpiBeforeItStopsSoThatTheHostHearsNothingOfIt) {
  make("a")->start({});
  pool.runAll();
  const std::size_t told = spi->calls().size();
  factory->destroyRunner("a");
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {}", "onStop", "destroy"));
  EXPECT_EQ(spi->calls().size(), told);
}

TEST_F(RunnerFactoryTest, shouldLetTheStrategyReceiveOnStopAfterTheRunnerIsGone) {
  make("a")->start({});
  pool.runAll();
  factory->destroyRunner("a");
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,Runner destruct"));
  EXPECT_EQ(logs.count("Runner", "DEBUG", "a,RunnerContext destruct begin"), 0);
  EXPECT_EQ(script->count("onStop"), 0);
  pool.runAll();
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,RunnerContext destruct end"));
}

TEST_F(RunnerFactoryTest, shouldFreeTheNameAndLetAnObjectThatTheHostKeepsLiveOnWithoutSpi) {
  const auto kept = make("a");
  kept->start({});
  pool.runAll();
  factory->destroyRunner("a");
  pool.runAll();
  EXPECT_EQ(script->alive(), 0);
  const std::size_t told = spi->calls().size();
  kept->start({{"v", 7}});
  pool.runAll();
  EXPECT_EQ(script->calls().back(), "onStart {\"v\":7}");
  EXPECT_EQ(spi->calls().size(), told);
  kept->stop();
  pool.runAll();
  EXPECT_NE(factory->createRunner("a", 0), kept);
}

TEST_F(RunnerFactoryTest, shouldOnlyLogASecondDestroyAndADestroyOfAnUnknownName) {
  make("a");
  factory->destroyRunner("a");
  pool.runAll();
  logs.clear();
  factory->destroyRunner("a");
  factory->destroyRunner("never");
  EXPECT_THAT(logs.messages(), ElementsAre("[DEBUG] Runner a,destroy Runner",
                                           "[DEBUG] Runner never,destroy Runner"));
  EXPECT_EQ(pool.pending(), 0);
}

TEST_F(RunnerFactoryTest, shouldSendLaterStatusChangesNowhereAfterAnEmptySpiWithoutError) {
  const auto runner = make("a");
  runner->start({});
  pool.runAll();
  runner->setSpi({});
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  EXPECT_EQ(logs.countContaining("[ERROR]"), 0);
}

TEST_F(RunnerFactoryTest, shouldWireTheSourcesExactlyAsLongAsTheHandleLives) {
  auto runner = make("a");
  script->on("onStart", [](IContext* c) { c->subscribeQuote(codeOf(7), 0); });
  runner->start({});
  pool.runAll();
  const auto service = platform.quotes().quoteSpi(7);
  service->onQuote(quoteOf(7));
  pool.runAll();
  EXPECT_EQ(script->count("onQuote"), 1);
  factory->destroyRunner("a");
  service->onQuote(quoteOf(7));
  runner.reset();
  service->onQuote(quoteOf(7));
  pool.runAll();
  EXPECT_EQ(script->count("onQuote"), 1);
  EXPECT_EQ(script->count("onStop"), 1);
}

TEST_F(RunnerFactoryTest, shouldCarryManyRunsOneAfterTheOther) {
  const auto runner = make("a");
  for (int run = 0; run < 5; ++run) {
    runner->start({{"v", run}});
    runner->update({});
    pool.runAll();
    runner->stop();
    pool.runAll();
  }
  EXPECT_EQ(script->made(), 5);
  EXPECT_EQ(script->alive(), 0);
  EXPECT_EQ(script->count("onUpdate"), 5);
  EXPECT_EQ(spi->statuses().size(), 10u);
}

TEST_F(RunnerFactoryTest, shouldNotHoldTheFactoryWhileARunnerIsConstructed) {
  // While one runner is made, another can be made and destroyed on another thread.
  int made = 0;
  platform.calls.onCall("publisher.create", [&] {
    if (made++ != 0) return;
    onAnotherThread([&] {
      factory->createRunner("b", 0);
      factory->destroyRunner("b");
    });
  });
  EXPECT_NE(make("a"), nullptr);
  EXPECT_GE(made, 4);
}

TEST_F(RunnerFactoryTest, shouldHoldItsMutexAcrossSetSpiStopAndReleaseInADestroy) {
  make("a");
  std::vector<std::string> notes;
  noteLocks(notes);
  factory->destroyRunner("a");
  logs.onLine({});
  EXPECT_THAT(notes, ElementsAre("destroy Runner free", "setSpi held", "stop held",
                                 "Runner destruct held"));
  EXPECT_TRUE(isFactoryFree());
}

TEST_F(RunnerFactoryTest, shouldHoldItsMutexWhileItReleasesAReplacedRunnerAndNotWhileItMakesOne) {
  make("a");
  std::vector<std::string> notes;
  noteLocks(notes);
  const auto second = factory->createRunner("a", 0);
  logs.onLine({});
  EXPECT_THAT(notes,
              ElementsAre("create Runner free", "RunnerContext construct free",
                          "Runner construct free", "Runner destruct held",
                          "RunnerContext destruct begin held", "RunnerContext destruct end held"));
}

TEST_F(RunnerFactoryTest, shouldAttachTheSourcesBetweenTheContextsConstructionAndItsOwn) {
  std::vector<std::string> lines;
  platform.onConditionService = [&] { lines.push_back(logs.messages("Runner").back()); };
  auto runner = factory->createRunner("a", 0);
  EXPECT_THAT(lines, ElementsAre("[DEBUG] Runner a,RunnerContext construct"));
  factory->destroyRunner("a");
  pool.runAll();
  EXPECT_EQ(lines.size(), 1u);
  runner.reset();
  EXPECT_THAT(lines, ElementsAre("[DEBUG] Runner a,RunnerContext construct",
                                 "[DEBUG] Runner a,Runner destruct"));
  EXPECT_EQ(logs.messages("Runner").back(), "[DEBUG] Runner a,RunnerContext destruct end");
  platform.onConditionService = nullptr;
}

TEST_F(RunnerFactoryTest, shouldHoldNoLockOfTheRunnerWhileItLetsGoOfASpi) {
  class CallingSpi final : public IRunnerSpi {
   public:
    explicit CallingSpi(IRunner* runner) : runner_(runner) {}
    ~CallingSpi() override { runner_->setOrderSource("from the end"); }
    void onStatus(int, const std::string&) override {}
    void onNotify(const QJsonObject&) override {}
    void onEnvs(const std::map<std::string, std::string>&) override {}
    void onEnvItems(const std::list<EnvItem>&) override {}

   private:
    IRunner* const runner_;
  };
  const auto runner = make("a");
  runner->setSpi(std::make_shared<CallingSpi>(runner.get()));
  runner->setSpi(spi);
  EXPECT_TRUE(loggedOnce("Runner", "DEBUG", "a,setStrategyPath,source=from the end"));
}

TEST_F(RunnerFactoryTest, shouldServeManyHostsAtOnce) {
  std::vector<std::thread> hosts;
  for (const char* name : {"a", "b", "c"})
    hosts.emplace_back([this, name] {
      for (int round = 0; round < 20; ++round) {
        const auto runner = factory->createRunner(name, 0);
        runner->start({});
        runner->stop();
        factory->destroyRunner(name);
      }
    });
  for (std::thread& host : hosts) host.join();
  pool.runAll();
  EXPECT_EQ(logs.countContaining(",RunnerContext destruct end"), 60);
}

}  // namespace
}  // namespace orvane::support
