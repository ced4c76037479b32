#include <stdexcept>

#include "shared/TextCodec.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class StrategyLoad : public RunnerTest {
 protected:
  void startWith(const std::string& path) {
    runner->shared().strategyPath = path;
    runner->start({});
    pool.runAll();
  }
};

TEST_F(StrategyLoad, shouldReturnTheObjectWithCode0AndAnEmptyMessage) {
  const StrategyLoadResult result = TestAccess::loadStrategy(*runner, "good.so");
  const std::unique_ptr<IStrategy> owned(result.strategy);
  EXPECT_NE(owned, nullptr);
  EXPECT_EQ(result.status, ResultStatus());
  EXPECT_THAT(platform.calls.entries("module."),
              ElementsAre("module.load good.so", "module.find createStrategy", "module.gone"));
}

TEST_F(StrategyLoad, shouldGiveMinus1WithPathAndTheLoadersTextForAModuleThatCannotBeOpened) {
  const std::string path = gbkFromUtf8("策略/均线.so");
  const std::string why = gbkFromUtf8("文件不存在");
  platform.modules.putBroken(path, why);
  const StrategyLoadResult result = TestAccess::loadStrategy(*runner, path);
  EXPECT_EQ(result.strategy, nullptr);
  EXPECT_EQ(result.status.code, -1);
  EXPECT_EQ(result.status.message, gbkFromUtf8("加载策略/均线.so失败,文件不存在"));
}

TEST_F(StrategyLoad, shouldGiveTheSameFormWithTheTextAboutTheSymbolForAModuleWithoutTheExport) {
  platform.modules.putWithoutExport("bare.so", "undefined symbol: createStrategy");
  startWith("bare.so");
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1));
  EXPECT_EQ(spi->lastMessage(), gbkFromUtf8("加载bare.so失败,undefined symbol: createStrategy"));
}

TEST_F(StrategyLoad, shouldTellRunningAndThenErrorWithTheTextForAWrongPath) {
  startWith("wrong.so");
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1));
  EXPECT_EQ(spi->lastMessage(), gbkFromUtf8("加载wrong.so失败,no such module"));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateError);
  EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(StrategyLoad, shouldMakeNoCheckOfAnEmptyPathBeforeTheLoader) {
  startWith("");
  EXPECT_EQ(platform.calls.count("module.load"), 1);
  EXPECT_EQ(spi->lastMessage(), gbkFromUtf8("加载失败,no such module"));
}

TEST_F(StrategyLoad, shouldWorkOnTheSameRunnerAfterAGoodPathWasSet) {
  startWith("wrong.so");
  startWith("good.so");
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1, 3));
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {}"));
  EXPECT_EQ(TestAccess::state(*runner).message, "");
}

TEST_F(StrategyLoad, shouldKeepTheTextOfAFailedStartUntilTheNextAndTellNothingOnAStop) {
  startWith("wrong.so");
  const std::string text = TestAccess::state(*runner).message;
  EXPECT_EQ(text, gbkFromUtf8("加载wrong.so失败,no such module"));
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1));
  EXPECT_EQ(TestAccess::state(*runner).message, text);
}

TEST_F(StrategyLoad, shouldNotTouchTheTradeSourceWhenTheLoadFails) {
  runner->setNotifyQuick(false);
  startWith("wrong.so");
  EXPECT_FALSE(TestAccess::notifyQuick(TestAccess::trades(*runner)));
  EXPECT_TRUE(TestAccess::createSourceInfos(TestAccess::trades(*runner)).empty());
}

TEST_F(StrategyLoad, shouldGiveEachOfTwoRunnersOnOneModuleItsOwnObject) {
  const auto other = std::make_shared<RunnerContext>("r2", 0);
  other->shared().strategyPath = "good.so";
  runner->start({});
  other->start({});
  pool.runAll();
  EXPECT_EQ(script->made(), 2);
  EXPECT_EQ(script->alive(), 2);
  runner->stop();
  pool.runAll();
  EXPECT_EQ(script->alive(), 1);
}

TEST_F(StrategyLoad, shouldCallCreateStrategyAgainOnAResetAndNeverReuseTheOldObject) {
  startRun();
  runner->reset4PlayBack({});
  pool.runAll();
  EXPECT_EQ(script->made(), 2);
  EXPECT_EQ(script->alive(), 1);
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy", "create", "onStart {}"));
}

TEST_F(StrategyLoad, shouldStayRunningWithNobodyToDeliverToWhenCreateStrategyThrows) {
  script->onCreate([] { throw std::runtime_error("no object"); });
  runner->start({});
  pool.runAll();
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=no object"));
  EXPECT_THAT(platform.calls.entries("module."),
              ElementsAre("module.load good.so", "module.find createStrategy", "module.gone"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  deliver(orderEvent(1));
  EXPECT_THAT(script->calls(), IsEmpty());
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(StrategyLoad, shouldLoadThePathThatHoldsWhenTheStartIsCarriedOut) {
  runner->shared().strategyPath = "wrong.so";
  runner->start({});
  runner->shared().strategyPath = "good.so";
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
}

}  // namespace
}  // namespace orvane::support
