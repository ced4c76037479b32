// The strategy's log calls, its timers, and the teardown at the end of a run.

#include <log4cxx/logger.h>

#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/StrategyLog.h"
#include "shared/BaseInformation.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class ContextServices : public RunnerTest {
 protected:
  ContextServices() {
    platform.calls.clear();
    logs.clear();
  }
  ~ContextServices() override { gBaseInformationMap.reset(); }

  /// The begin time that the timer source was given for the last timer.
  std::string lastStart() const { return platform.calls.entries("timer.start").back(); }

  IContext& user = TestAccess::context(*runner);
};

// Logging.

TEST_F(ContextServices, shouldWriteToStgIfToldSoAndElseToStgF) {
  user.logInfo("hello", true);
  user.logInfo("world", false);
  ASSERT_EQ(logs.lines().size(), 2u);
  EXPECT_EQ(logs.count("Stg", "INFO", "hello"), 1);
  EXPECT_EQ(logs.count("StgF", "INFO", "world"), 1);
}

TEST_F(ContextServices, shouldPrefixEachLevelInEightCharacters) {
  user.logTrace("m", true);
  user.logDebug("m", true);
  user.logInfo("m", true);
  user.logWarn("m", true);
  user.logError("m", true);
  EXPECT_THAT(logs.messages("Stg"), ElementsAre("[TRACE] Stg m", "[DEBUG] Stg m", "[INFO ] Stg m",
                                                "[WARN ] Stg m", "[ERROR] Stg m"));
  std::vector<std::string> levels;
  for (const CapturedLine& line : logs.lines()) levels.push_back(line.level);
  EXPECT_THAT(levels, ElementsAre("TRACE", "DEBUG", "INFO", "WARN", "ERROR"));
}

TEST_F(ContextServices, shouldPutTheDateTimeInFrontIfTimeIsEnabled) {
  platform.timeEnabled = true;
  platform.clock.set(1609723800007);
  user.logWarn("m", false);
  EXPECT_THAT(logs.messages("StgF"), ElementsAre("2021-01-04 09:30:00.007 [WARN ] StgF m"));
  platform.timeEnabled = false;
}

TEST_F(ContextServices, shouldHaveNeitherNameNorTagInAStrategysLine) {
  user.logError("text,with=tags", true);
  EXPECT_THAT(logs.messages(), ElementsAre("[ERROR] Stg text,with=tags"));
}

TEST_F(ContextServices, shouldPassAMessageOfAnyLengthOn) {
  const std::string longText(100000, 'x');
  user.logInfo(longText, true);
  user.logInfo("", true);
  EXPECT_THAT(logs.messages(), ElementsAre("[INFO ] Stg " + longText, "[INFO ] Stg "));
}

TEST_F(ContextServices, shouldLetALevelBeOffOnOneLoggerAndOnOnTheOther) {
  const auto stg = log4cxx::Logger::getLogger("Stg");
  stg->setLevel(log4cxx::Level::getError());
  user.logInfo("m", true);
  user.logInfo("m", false);
  user.logError("m", true);
  stg->setLevel(nullptr);
  EXPECT_THAT(logs.messages(), ElementsAre("[INFO ] StgF m", "[ERROR] Stg m"));
}

TEST_F(ContextServices, shouldTellAStrategyBeforehandWhichLinesWouldBeWritten) {
  using Level = StrategyLogLevel;
  const auto answers = [](bool toStg) {
    std::string all;
    for (const Level level : {Level::Trace, Level::Debug, Level::Info, Level::Warn, Level::Error})
      all += isStrategyLogged(level, toStg) ? '1' : '0';
    return all;
  };
  const auto stg = log4cxx::Logger::getLogger("Stg");
  const auto stgF = log4cxx::Logger::getLogger("StgF");
  stg->setLevel(log4cxx::Level::getWarn());
  stgF->setLevel(log4cxx::Level::getDebug());
  EXPECT_EQ(answers(true), "00011");
  EXPECT_EQ(answers(false), "01111");
  stg->setLevel(log4cxx::Level::getOff());
  stgF->setLevel(log4cxx::Level::getTrace());
  EXPECT_EQ(answers(true), "00000");
  EXPECT_EQ(answers(false), "11111");
  stg->setLevel(nullptr);
  stgF->setLevel(nullptr);
}

TEST_F(ContextServices, shouldTellWhereTheLineWasWritten) {
  user.logInfo("m", true);
  const CapturedLine line = logs.lines().at(0);
  EXPECT_NE(line.file.find("UserContext"), std::string::npos);
  EXPECT_NE(line.function.find("logInfo"), std::string::npos);
  EXPECT_GT(line.lineNumber, 0);
}

// Timers.

TEST_F(ContextServices, shouldLogATimerWithItsBeginAsGivenAndReturnItsId) {
  const int id = user.createTimer(1000, 5, 3);
  EXPECT_TRUE(runnerLogged("DEBUG",
                           ",create timer,,interval=1000,beginTime=5,triggerCount=3,"
                           "timerId=" +
                               std::to_string(id)));
  EXPECT_TRUE(runner->isTimerExist(id));
}

TEST_F(ContextServices, shouldTakeAFreshIdForEachTimer) {
  const int first = user.createTimer(1000, 0, 1);
  EXPECT_NE(user.createTimer(1000, 0, 1), first);
}

TEST_F(ContextServices, shouldStartNowForABeginOf0) {
  platform.clock.set(50000);
  const int id = user.createTimer(1000, 0, 3);
  EXPECT_EQ(lastStart(),
            "timer.start " + std::to_string(id) + " begin=50000 interval=1000 count=3");
}

TEST_F(ContextServices, shouldStartOnTheGridOfAPastBeginLessThanAnIntervalBeforeNow) {
  for (int64 begin : {int64{1}, int64{49001}, int64{49999}, int64{12345}, int64{50000}}) {
    platform.clock.set(50000);
    user.createTimer(1000, begin, 3);
    const std::string start = lastStart();
    const int64 first = std::stoll(start.substr(start.find("begin=") + 6));
    EXPECT_LE(first, 50000) << begin;
    EXPECT_GT(first, 50000 - 1000) << begin;
    EXPECT_EQ((first - begin) % 1000, 0) << begin;
  }
}

TEST_F(ContextServices, shouldKeepABeginInTheFutureAlsoIfTheIntervalIs0) {
  platform.clock.set(50000);
  user.createTimer(1000, 50001, 3);
  EXPECT_NE(lastStart().find("begin=50001 "), std::string::npos);
  user.createTimer(0, 60000, 3);
  EXPECT_NE(lastStart().find("begin=60000 interval=0"), std::string::npos);
}

TEST_F(ContextServices, shouldStartNowForANegativeBeginOrAnIntervalOf0OrLess) {
  platform.clock.set(50000);
  user.createTimer(1000, -7, 3);
  EXPECT_NE(lastStart().find("begin=50000 "), std::string::npos);
  user.createTimer(0, 10, 3);
  EXPECT_NE(lastStart().find("begin=50000 interval=0"), std::string::npos);
  user.createTimer(-5, 10, 3);
  EXPECT_NE(lastStart().find("begin=50000 interval=-5"), std::string::npos);
}

TEST_F(ContextServices, shouldOnlyLogAStopOfAnUnknownTimer) {
  user.stopTimer(4711);
  EXPECT_THAT(logs.messages(), ElementsAre("[DEBUG] Runner r1,stop timer,timerId=4711"));
  EXPECT_EQ(platform.calls.count("timer."), 0);
}

TEST_F(ContextServices, shouldStopATimer) {
  const int id = user.createTimer(1000, 0, 1);
  user.stopTimer(id);
  EXPECT_TRUE(runnerLogged("DEBUG", ",stop timer,timerId=" + std::to_string(id)));
  EXPECT_EQ(platform.calls.count("timer.stop"), 1);
  EXPECT_FALSE(runner->isTimerExist(id));
}

// The teardown.

TEST_F(ContextServices, shouldUndoEverythingInTheFixedOrderOnExit) {
  auto tables = std::make_shared<BaseInformationMap>();
  tables->markets[1] = {"M"};
  gBaseInformationMap = tables;
  startRun();
  user.subscribeQuote(codeOf(8, "Q8"), 0);
  user.subscribeQuote(codeOf(7, "Q7"), 0);
  user.subscribeKline(codeOf(7, "K"), "1m", 1, 2, 0, 0);
  const std::string drawn = std::to_string(platform.routes.lastRequestId());
  user.subscribeKline(9001, codeOf(7, "K"), "2m", 1, 2, 0, 0);
  TradingAccountID account;
  account.accountKey = 5;
  account.account = "0815";
  user.subscribeTrade(account, codeOf(3, "T"));
  user.subscribeDic("dic", "key", 1, 2, 0);
  const std::string dic = std::to_string(platform.routes.lastRequestId());
  user.subscribeDicSnapshot("snap", "target", 0);
  const std::string timer = std::to_string(user.createTimer(1000, 0, 1));
  platform.calls.clear();
  logs.clear();
  user.exit();
  EXPECT_THAT(
      logs.messages("Runner"),
      ElementsAre("[DEBUG] Runner r1,context exit", "[DEBUG] Runner r1,unsubscribe quote,Q7.M",
                  "[DEBUG] Runner r1,unsubscribe quote,Q8.M",
                  "[DEBUG] Runner r1,unsubscribe kline,K.M,1m,requestId=" + drawn,
                  "[DEBUG] Runner r1,unsubscribe kline,K.M,2m,requestId=9001",
                  "[DEBUG] Runner r1,unsubscribe trade,0815",
                  "[DEBUG] Runner r1,unsubscribe data,dic,key,requestId=" + dic,
                  "[DEBUG] Runner r1,unsubscribe data snapshot,snap,target",
                  "[DEBUG] Runner r1,stop all timer"));
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("quote.unsubscribeQuote 7 flags=0", "quote.unsubscribeQuote 8 flags=0",
                          "quote.cancelRequest " + drawn, "quote.cancelRequest 9001",
                          "trade.unsubscribeAccount 5", "data.unsubscribeData " + dic,
                          "data.unsubscribeSnapshot snap/target flags=0", "timer.stop " + timer,
                          "timer.gone " + timer));
  EXPECT_TRUE(TestAccess::relatedCodes(TestAccess::trades(*runner)).empty());
}

TEST_F(ContextServices, shouldGiveTheTradeSourceItsEmptyCodesAfterTheLastAccount) {
  startRun();
  for (int key : {6, 5}) {
    TradingAccountID account;
    account.accountKey = key;
    user.subscribeTrade(account, codeOf(3));
  }
  bool codesStood = true;
  platform.calls.onCall("trade.unsubscribeAccount", [&] {
    onAnotherThread([] {});
    codesStood = codesStood && logs.countContaining(",setRelatedCodeId,") == 0;
  });
  logs.clear();
  user.exit();
  EXPECT_EQ(platform.calls.count("trade.unsubscribeAccount"), 2);
  EXPECT_TRUE(codesStood);
  EXPECT_EQ(logs.count("Event", "DEBUG", "r1,setRelatedCodeId,"), 1);
}

TEST_F(ContextServices, shouldReachTheSourcesAgainAfterExit) {
  user.subscribeQuote(codeOf(7), 0);
  user.subscribeKline(codeOf(7), "1m", 1, 2, 0, 0);
  user.subscribeKline(9001, codeOf(7), "1m", 1, 2, 0, 0);
  user.subscribeDic("dic", "key", 1, 2, 0);
  user.subscribeDicSnapshot("dic", "key", 0);
  user.exit();
  platform.calls.clear();
  user.subscribeQuote(codeOf(7), 0);
  user.subscribeKline(codeOf(7), "1m", 1, 2, 0, 0);
  EXPECT_EQ(user.subscribeKline(9001, codeOf(7), "1m", 1, 2, 0, 0), ResultStatus());
  user.subscribeDic("dic", "key", 1, 2, 0);
  user.subscribeDicSnapshot("dic", "key", 0);
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"), 1);
  EXPECT_EQ(platform.calls.count("quote.subscribeBars"), 2);
  EXPECT_EQ(platform.calls.count("data.subscribeData"), 1);
  EXPECT_EQ(platform.calls.count("data.subscribeSnapshot"), 1);
}

TEST_F(ContextServices, shouldOnlyLogTwoLinesAndTouchCodesAndTimersOnASecondExit) {
  user.subscribeQuote(codeOf(7), 0);
  user.exit();
  platform.calls.clear();
  logs.clear();
  user.exit();
  EXPECT_THAT(logs.messages("Runner"),
              ElementsAre("[DEBUG] Runner r1,context exit", "[DEBUG] Runner r1,stop all timer"));
  EXPECT_EQ(logs.count("Event", "DEBUG", "r1,setRelatedCodeId,"), 1);
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(ContextServices, shouldLetAFailingUnsubscribeStopNothing) {
  platform.calls.answer("quote.unsubscribeQuote", {2, "no"});
  platform.calls.answer("quote.cancelRequest", {3, "no"});
  user.subscribeQuote(codeOf(7), 0);
  user.subscribeKline(codeOf(7), "1m", 1, 2, 0, 0);
  const int timer = user.createTimer(1000, 0, 1);
  user.exit();
  EXPECT_EQ(platform.calls.count("quote.cancelRequest"), 1);
  EXPECT_FALSE(runner->isTimerExist(timer));
}

TEST_F(ContextServices, shouldServeTheNextRunWithEmptyBooks) {
  script->on("onStart", [](IContext* c) { c->subscribeQuote(codeOf(7), 0); });
  for (int run = 0; run < 3; ++run) {
    runner->start({});
    pool.runAll();
    runner->stop();
    pool.runAll();
  }
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"), 3);
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 3);
}

TEST_F(ContextServices, shouldDropTheEventsOfASubscriptionMadeAfterExitUntilTheNextRun) {
  startRun();
  runner->stop();
  pool.runAll();
  script->clear();
  user.subscribeQuote(codeOf(7), 0);
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_TRUE(runner->isSubscribeQuote(codeOf(7)));
  user.exit();
}

TEST_F(ContextServices, shouldLetATimerFireWhileExitRunsAndDeliverNothingOfIt) {
  startRun();
  const int timer = user.createTimer(1000, 0, 1);
  platform.calls.onCall("timer.stop",
                        [&] { onAnotherThread([&] { platform.timers.fire(timer, 1); }); });
  runner->stop();
  pool.runAll();
  EXPECT_EQ(script->count("onTimer"), 0);
}

}  // namespace
}  // namespace orvane::support
