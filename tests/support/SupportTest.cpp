// The fakes and observers themselves: a test can rely on each of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cxx/logger.h>

#include <latch>
#include <thread>

#include "services/Common/BDUtil.h"
#include "services/Common/CmnFactory.h"
#include "services/Common/DllLoader.h"
#include "services/Common/NotifyRefCounter.h"
#include "services/Common/QuoteUtils.h"
#include "services/Common/Timer.h"
#include "services/Common/Timestamp.h"
#include "services/QuoteClient/ISystemEvent.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualPool.h"
#include "tests/support/RecordingRunnerSpi.h"
#include "tests/support/ScriptedStrategy.h"
#include "tests/support/VtableSlot.h"

namespace orvane::support {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(CallLog, shouldKeepCallsInOrderAndAnswerAsScripted) {
  CallLog log;
  log.answer("a.x", {7, "no"});
  EXPECT_EQ(log.record("a.x", "1"), (ResultStatus{7, "no"}));
  EXPECT_EQ(log.record("b.y"), ResultStatus());
  EXPECT_THAT(log.entries(), ElementsAre("a.x 1", "b.y"));
  EXPECT_THAT(log.entries("b."), ElementsAre("b.y"));
  EXPECT_EQ(log.count("a."), 1);
  log.clear();
  EXPECT_THAT(log.entries(), IsEmpty());
}

TEST(CallLog, shouldRunAHookInsideTheCallWithNoLockHeld) {
  CallLog log;
  log.onCall("a", [&] { log.record("inner"); });
  log.record("a");
  EXPECT_THAT(log.entries(), ElementsAre("a", "inner"));
  log.onCall("a", {});
  log.record("a");
  EXPECT_EQ(log.entries().size(), 3u);
}

TEST(ManualClock, shouldStandStillUntilItIsMoved) {
  ManualClock clock;
  EXPECT_EQ(clock.now(), ManualClock::kStart);
  clock.advance(5);
  EXPECT_EQ(clock.now(), ManualClock::kStart + 5);
  clock.set(9);
  EXPECT_EQ(clock.now(), 9);
}

class ManualPoolTest : public ::testing::Test {
 protected:
  ManualPoolTest() { pool.reset(); }
  ~ManualPoolTest() override { pool.reset(); }
  ManualPool& pool = ManualPool::shared();
};

TEST_F(ManualPoolTest, shouldRunATaskOnlyWhenToldSoAndOnTheCallersThread) {
  std::thread::id ran;
  pool.addTask([&] { ran = std::this_thread::get_id(); });
  EXPECT_EQ(ran, std::thread::id());
  EXPECT_EQ(pool.pending(), 1);
  EXPECT_TRUE(pool.step());
  EXPECT_EQ(ran, std::this_thread::get_id());
  EXPECT_FALSE(pool.step());
}

TEST_F(ManualPoolTest, shouldRunTasksThatTasksAddInRunAll) {
  int ran = 0;
  pool.addTask([&] {
    ++ran;
    pool.addTask([&] { ++ran; });
  });
  EXPECT_EQ(pool.runAll(), 2);
  EXPECT_EQ(ran, 2);
}

TEST_F(ManualPoolTest, shouldDropWhatIsPendingOnReset) {
  bool ran = false;
  pool.addTask([&] { ran = true; });
  pool.reset();
  EXPECT_EQ(pool.runAll(), 0);
  EXPECT_FALSE(ran);
}

TEST_F(ManualPoolTest, shouldRefuseTasksAsScripted) {
  pool.refuseWith({24, "full"});
  EXPECT_EQ(pool.addTask([] {}), (ResultStatus{24, "full"}));
  EXPECT_EQ(pool.pending(), 0);
}

TEST_F(ManualPoolTest, shouldRunTasksOnRealThreadsAtOnceAndBecomeManualAgain) {
  std::latch both(2);
  std::atomic<int> ran{0};
  pool.startThreads(2);
  for (int i = 0; i < 2; ++i)
    pool.addTask([&] {
      both.arrive_and_wait();
      ++ran;
    });
  pool.waitUntilIdle();
  EXPECT_EQ(ran, 2);
  pool.stopThreads();
  pool.addTask([&] { ++ran; });
  EXPECT_EQ(ran, 2);
  EXPECT_EQ(pool.runAll(), 1);
}

class FakePlatformTest : public ::testing::Test {
 protected:
  FakePlatform platform;
};

TEST_F(FakePlatformTest, shouldBeTheInstalledPlatformForItsLifetime) {
  EXPECT_EQ(&installedPlatform(), &platform);
  {
    const FakePlatform other;
    EXPECT_EQ(&installedPlatform(), &other);
  }
  EXPECT_THROW(installedPlatform(), std::logic_error);
  installPlatform(&platform);
}

TEST_F(FakePlatformTest, shouldStandBehindTheStaticEntryPoints) {
  EXPECT_EQ(IServiceRouter::instance(), &platform.routes);
  EXPECT_EQ(ThreadPoolBase::create(), &ManualPool::shared());
  EXPECT_EQ(CmnFactory::instance()->get(3), &platform.conditions);
  EXPECT_EQ(IGeneralEventManager::instance(), platform.events);
  EXPECT_EQ(IIndexTrade::instance(), &platform.indexes);
  EXPECT_EQ(ISystemEvent::instance(), &platform.system);
  EXPECT_EQ(BDUtil::getTargetByName("n", nullptr, false), (std::list<std::string>{"n-target"}));
  const std::unique_ptr<IPublisher> publisher(IPublisher::create(2));
  EXPECT_EQ(publisher->publishOp5("k", "t", 1), ResultStatus());
  EXPECT_EQ(platform.calls.count("publisher."), 2);
}

TEST_F(FakePlatformTest, shouldTellTheTimeOfItsClocks) {
  platform.clock.set(0);
  platform.sysClock.set(5);
  EXPECT_EQ(Timestamp::now(0).toDateTimeString(), "1970-01-01 08:00:00.000");
  EXPECT_EQ(Timestamp::sysNow(OVTimeZone::Utc).toUtcMsEponch(), 5);
  EXPECT_FALSE(isTimeEnabled());
  platform.timeEnabled = true;
  EXPECT_TRUE(isTimeEnabled());
}

TEST_F(FakePlatformTest, shouldCountTheLivingRefCounters) {
  {
    const NotifyRefCounter one;
    EXPECT_EQ(platform.liveRefCounters(), 1);
  }
  EXPECT_EQ(platform.liveRefCounters(), 0);
  EXPECT_EQ(platform.madeRefCounters(), 1);
}

TEST_F(FakePlatformTest, shouldKnowItsFrequenciesAndNoOthers) {
  int64 term = -1;
  bool extra = true;
  EXPECT_EQ(QuoteUtils::freqToTerm("1m", term, extra).code, 0);
  EXPECT_EQ(term, 60000);
  EXPECT_FALSE(extra);
  EXPECT_EQ(QuoteUtils::freqToTerm("7x", term, extra).code, 17);
  EXPECT_EQ(term, 60000);
}

TEST_F(FakePlatformTest, shouldFireTimersByHandWhileTheyRun) {
  struct Notify : ITimerNotify {
    void onTimer(int id, int64 value) override { last = {id, value}; }
    std::pair<int, int64> last;
  };
  const auto notify = std::make_shared<Notify>();
  Timer timer(5);
  EXPECT_FALSE(platform.timers.fire(5, 1));
  EXPECT_TRUE(timer.start(1, 2, notify, 3));
  EXPECT_EQ(notify.use_count(), 2);
  EXPECT_TRUE(platform.timers.fire(5, 9));
  EXPECT_EQ(notify->last, (std::pair<int, int64>{5, 9}));
  timer.stop();
  EXPECT_EQ(notify.use_count(), 1);
  EXPECT_FALSE(platform.timers.fire(5, 1));
  EXPECT_NE(Timer::genId(), Timer::genId());
}

TEST_F(FakePlatformTest, shouldLoadModulesFromItsShelfWithoutAFile) {
  const auto script = std::make_shared<StrategyScript>();
  platform.modules.put("good", ScriptedStrategy::maker(script));
  platform.modules.putBroken("broken", "why");
  platform.modules.putWithoutExport("bare", "no symbol");
  const auto errorOf = [](const std::wstring& path) {
    DllLoader loader;
    loader.load(path);
    loader.seekProcAddress("createStrategy");
    return loader.getErrorMsg();
  };
  EXPECT_EQ(errorOf(L"good"), "");
  EXPECT_EQ(errorOf(L"broken"), "why");
  EXPECT_EQ(errorOf(L"bare"), "no symbol");
  EXPECT_EQ(errorOf(L"other"), "no such module");
  DllLoader loader;
  loader.load(L"good");
  loader.seekProcAddress("createStrategy");
  const auto create = reinterpret_cast<CreateStrategyFunction>(loader.getProcAddress());
  const std::unique_ptr<IStrategy> strategy(create());
  EXPECT_EQ(script->alive(), 1);
}

TEST_F(FakePlatformTest, shouldRememberSpisUntilItForgetsThem) {
  const auto spi = std::make_shared<QuoteSpi>();
  platform.quotes().subscribeQuote({7, 0, 0, "c"}, spi, 1);
  platform.quotes().subscribeBars({{7, 0, 0, "c"}, 1, 2, 3, 4}, {3, 1}, spi, 5);
  EXPECT_EQ(platform.quotes().quoteSpi(7), spi);
  EXPECT_EQ(platform.quotes().requestSpi(5), spi);
  EXPECT_EQ(platform.quotes().query(5).count, 3);
  EXPECT_EQ(platform.quotes().term(5), (TermPair{3, 1}));
  platform.forgetSpis();
  EXPECT_EQ(spi.use_count(), 1);
  EXPECT_EQ(platform.quotes().quoteSpi(7), nullptr);
}

TEST_F(FakePlatformTest, shouldRememberTheSpiOfAMaintenanceAfterItsRelease) {
  const auto spi = std::make_shared<IDataMaintainSpi>();
  IDataMaintain* maintain = IDataMaintain::Create();
  platform.calls.answer("maintain.maintain", {4, "no"});
  EXPECT_EQ(maintain->maintain({7, 0, 0, "c"}, ITimeType::Hour, 9, spi, 5),
            (ResultStatus{4, "no"}));
  IDataMaintain::release(maintain);
  EXPECT_EQ(platform.maintenance.spi(), spi);
  EXPECT_THAT(platform.calls.entries("maintain."),
              ElementsAre("maintain.create", "maintain.maintain 5 code=7 type=4 value=9",
                          "maintain.release"));
  platform.forgetSpis();
  EXPECT_EQ(spi.use_count(), 1);
}

TEST_F(FakePlatformTest, shouldAnswerFromTheRecordsThatATestGave) {
  platform.codes().codes["A"] = {7, 0, 0, "A"};
  ICodeID code;
  EXPECT_EQ(platform.codes().codeIdOf("A", code).code, 0);
  EXPECT_EQ(code.id, 7);
  EXPECT_EQ(platform.codes().codeIdOf("B", code).code, 22);
  Order order;
  order.id = 4;
  platform.trade().orders = {order};
  EXPECT_EQ(platform.trade().getOrder(4, order).code, 0);
  EXPECT_EQ(platform.trade().getOrder(5, order).code, 22);
  DataReq request;
  request.name = "n";
  platform.data().subscribeData(request, nullptr, 3);
  EXPECT_EQ(platform.data().request(3).name, "n");
  platform.events->publishEvent("t", {}, "d");
  std::list<IndexTradeElement> elements;
  EXPECT_EQ(platform.indexes.indexElements({1, 0, 0, ""}, elements).code, 0);
  EXPECT_EQ(elements.size(), 1u);
  EXPECT_EQ(platform.calls.count("event.publishEvent t 0 d"), 1);
}

TEST(ScriptedStrategy, shouldNoteCallsAndRunHooksThatMayThrow) {
  const auto script = std::make_shared<StrategyScript>();
  std::unique_ptr<IStrategy> strategy(ScriptedStrategy::maker(script)());
  int any = 0;
  script->onAny([&](IContext*) { ++any; });
  script->on("onStop", [](IContext*) { throw std::runtime_error("x"); });
  strategy->onStart(nullptr, {{"a", 1}});
  EXPECT_THROW(strategy->onStop(nullptr), std::runtime_error);
  strategy.reset();
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {\"a\":1}", "onStop", "destroy"));
  EXPECT_EQ(any, 2);
  EXPECT_EQ(script->made(), 1);
  EXPECT_EQ(script->alive(), 0);
  EXPECT_FALSE(script->overlapped());
  EXPECT_EQ(strategyCallbacks().size(), 20u);
}

TEST(ScriptedStrategy, shouldTellWhenTwoCallsOverlap) {
  const auto script = std::make_shared<StrategyScript>();
  ScriptedStrategy strategy(script);
  std::latch both(2);
  script->on("onStop", [&](IContext*) { both.arrive_and_wait(); });
  std::thread other([&] { strategy.onStop(nullptr); });
  strategy.onStop(nullptr);
  other.join();
  EXPECT_TRUE(script->overlapped());
}

TEST(RecordingRunnerSpi, shouldNoteWhatAHostHears) {
  RecordingRunnerSpi spi;
  int hooked = 0;
  spi.hook = [&](const std::string&) { ++hooked; };
  spi.onStatus(1, "why");
  spi.onNotify({{"a", 1}});
  spi.onEnvs({{"k", "v"}});
  spi.onEnvItems({{"g", "k", 2, "t"}});
  EXPECT_THAT(spi.calls(),
              ElementsAre("status 1 why", "notify {\"a\":1}", "envs k=v,", "envItems g/k/2/t,"));
  EXPECT_THAT(spi.statuses(), ElementsAre(1));
  EXPECT_EQ(spi.lastMessage(), "why");
  EXPECT_EQ(spi.lastThread(), std::this_thread::get_id());
  EXPECT_EQ(hooked, 4);
}

TEST(LogCapture, shouldHoldLinesOfAllLevelsForItsScopeOnly) {
  const auto logger = log4cxx::Logger::getLogger("CaptureProbe");
  const auto before = log4cxx::Logger::getRootLogger()->getLevel();
  {
    LogCapture capture;
    LOG4CXX_TRACE(logger, "[TRACE] CaptureProbe one");
    LOG4CXX_ERROR(logger, "[ERROR] CaptureProbe two");
    EXPECT_EQ(capture.count("CaptureProbe", "TRACE", "one"), 1);
    EXPECT_EQ(capture.count("CaptureProbe", "ERROR", "two"), 1);
    EXPECT_EQ(capture.count("CaptureProbe", "WARN", "two"), 0);
    EXPECT_EQ(capture.countContaining("CaptureProbe"), 2);
    EXPECT_EQ(capture.messages("Other").size(), 0u);
    EXPECT_NE(capture.lines()[0].file.find("SupportTest.cpp"), std::string::npos);
    capture.clear();
    EXPECT_THAT(capture.messages(), IsEmpty());
  }
  EXPECT_EQ(log4cxx::Logger::getRootLogger()->getLevel(), before);
  LogCapture later;
  EXPECT_THAT(later.messages(), IsEmpty());
}

TEST(LogCapture, shouldRunAHookInsideEachLineUntilItIsTakenAway) {
  const auto logger = log4cxx::Logger::getLogger("CaptureProbe");
  LogCapture capture;
  std::vector<std::string> seen;
  capture.onLine([&](const CapturedLine& line) {
    seen.push_back(line.message);
    EXPECT_EQ(capture.lines().size(), seen.size());
  });
  LOG4CXX_INFO(logger, "one");
  LOG4CXX_INFO(logger, "two");
  capture.onLine({});
  LOG4CXX_INFO(logger, "three");
  EXPECT_THAT(seen, ElementsAre("one", "two"));
}

TEST(LogCapture, shouldBuildAMessageWithAPrefixOfEightCharacters) {
  EXPECT_EQ(LogCapture::message("L", "INFO", "t"), "[INFO ] L t");
  EXPECT_EQ(LogCapture::message("L", "DEBUG", "t"), "[DEBUG] L t");
}

TEST(VtableSlot, shouldCountVirtualOperationsAndKnowOthers) {
  struct Probe {
    virtual ~Probe() = default;
    virtual void first() {}
    void plain() {}
    virtual void second() {}
  };
  EXPECT_EQ(slotOf(&Probe::first), 2);
  EXPECT_EQ(slotOf(&Probe::second), 3);
  EXPECT_EQ(slotOf(&Probe::plain), -1);
}

}  // namespace
}  // namespace orvane::support
