#include "EventStrategy/AbstractEventStrategy.h"

#include <log4cxx/logger.h>

#include <algorithm>
#include <latch>
#include <memory>
#include <thread>
#include <type_traits>

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/Events.h"
#include "EventStrategy/GeneralEventSrc.h"
#include "EventStrategy/IndexSrc.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "tests/EventStrategy/CollectingStrategy.h"
#include "tests/EventStrategy/LibraryTest.h"

namespace orvane::support {
namespace {

class AbstractEventStrategyTest : public LibraryTest {
 protected:
  AbstractEventStrategyTest() {
    platform.codes().codes["IF2101"] = codeOf(7, "IF2101");
    platform.calls.clear();
  }
  ~AbstractEventStrategyTest() override {
    if (strategy) strategy->stopEvent();
  }

  QuoteNotify& quotes() { return TestAccess::quoteNotify(*strategy); }
  DataNotify& data() { return TestAccess::dataNotify(*strategy); }
  EventTradeNotify& trades() { return TestAccess::tradeNotify(*strategy); }

  std::unique_ptr<CollectingStrategy> strategy = std::make_unique<CollectingStrategy>();
};

// Construction and destruction.

TEST_F(AbstractEventStrategyTest, shouldGiveTheModeToDataFirstAndThenToQuotes) {
  platform.calls.clear();
  // Both make their publisher while they are made, and no other source does.
  const CollectingStrategy other(4);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.create 4", "publisher.create 4"));
}

TEST_F(AbstractEventStrategyTest, shouldMakeTheDictionarySourceBeforeTheQuoteSource) {
  int made = 0;
  platform.calls.onCall("publisher.create", [&made] {
    if (++made == 2) throw std::runtime_error("no publisher");
  });
  platform.calls.clear();
  EXPECT_THROW(CollectingStrategy(), std::runtime_error);
  // What was made goes again, and of the two only the dictionary source deletes its publisher.
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("publisher.create 0", "publisher.create 0", "publisher.gone"));
}

TEST_F(AbstractEventStrategyTest, shouldLetGoOfItsTimersBeforeItsDictionarySource) {
  strategy->createTimer(5, 1, 1, 1);
  platform.timers.forget();  // So that the timer ends with the strategy, which is then alone
  // to hold the other sources.
  platform.calls.onCall("timer.stop", [this] { platform.forgetSpis(); });
  platform.calls.clear();
  strategy.reset();
  // The timers' end stops them; the dictionary source's end deletes its publisher.
  std::vector<std::string> calls = platform.calls.entries();
  calls.erase(calls.begin(), std::find(calls.begin(), calls.end(), "timer.stop 5"));
  EXPECT_THAT(calls, ElementsAre("timer.stop 5", "timer.gone 5", "publisher.gone"));
}

TEST_F(AbstractEventStrategyTest, shouldTakeModeZeroByDefault) {
  platform.calls.clear();
  const CollectingStrategy other;
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.create 0", "publisher.create 0"));
}

TEST_F(AbstractEventStrategyTest, shouldReleaseTheFiveSourcesInOrderAlsoIfItWasNeverStarted) {
  strategy->subscribeElementChange(codeOf(3));
  strategy->subscribeGeneralEvent("t", "n", {});
  strategy->subscribeQuote(codeOf(7), 0);
  DataReq request;
  request.name = "d";
  strategy->subscribeData(request, 11);
  platform.calls.clear();
  strategy.reset();
  std::vector<std::string> firsts;
  for (const std::string& entry : platform.calls.entries()) {
    const std::string service = entry.substr(0, entry.find('.'));
    if (service == "publisher" || service == "cond") continue;
    if (firsts.empty() || firsts.back() != service) firsts.push_back(service);
  }
  EXPECT_THAT(firsts, ElementsAre("index", "event", "trade", "quote", "data"));
}

TEST_F(AbstractEventStrategyTest,
       shouldReleaseEverySourceAndLogTheFailureWhenServicesThrowAsItGoes) {
  strategy->setName("stg");
  strategy->startEvent();
  strategy->subscribeElementChange(codeOf(3));
  strategy->stopEvent();
  for (const char* operation : {"index.unsubscribeElementChange", "trade.unsubscribeAll",
                                "quote.unsubscribeSpi", "data.unsubscribeAllSnapshots"})
    platform.calls.onCall(operation, [operation] { throw std::runtime_error(operation); });
  platform.calls.onCall("event.unsubscribeAll", [] { throw 5; });
  platform.calls.clear();
  logs.clear();
  strategy.reset();
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("index.unsubscribeElementChange 3", "event.unsubscribeAll",
                          "trade.unsubscribeAll", "cond.unsubscribeDetails", "quote.unsubscribeSpi",
                          "data.unsubscribeAllSnapshots"));
  for (const char* operation : {"index.unsubscribeElementChange", "trade.unsubscribeAll",
                                "quote.unsubscribeSpi", "data.unsubscribeAllSnapshots"})
    EXPECT_TRUE(
        loggedOnce("Event", "ERROR", std::string("stg,release error,exception,msg=") + operation));
  EXPECT_TRUE(loggedOnce("Event", "ERROR", "stg,release error,system exception"));
}

TEST_F(AbstractEventStrategyTest, shouldStopItsTimersWhenItGoesAndTheTimersLetGo) {
  strategy->createTimer(5, 1, 1, 1);
  const std::weak_ptr<TimerSrc> timers = TestAccess::timerSrc(*strategy);
  strategy.reset();
  EXPECT_FALSE(timers.expired());  // A running timer holds its source.
  timers.lock()->stopAllTimer();
  EXPECT_TRUE(timers.expired());
}

// Name.

TEST_F(AbstractEventStrategyTest, shouldHaveAnEmptyNameUntilOneIsSet) {
  EXPECT_EQ(strategy->name(), "");
  strategy->setName("alpha");
  EXPECT_EQ(strategy->name(), "alpha");
}

TEST_F(AbstractEventStrategyTest, shouldLogTheNewNameAtDebugAndStoreItInTradeEventsAndIndex) {
  strategy->setName("alpha");
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "alpha,setName"));
  EXPECT_EQ(TestAccess::name(TestAccess::trades(*strategy)), "alpha");
  EXPECT_EQ(TestAccess::name(TestAccess::events(*strategy)), "alpha");
  EXPECT_EQ(TestAccess::name(TestAccess::indexes(*strategy)), "alpha");
}

TEST_F(AbstractEventStrategyTest, shouldChangeTheNameThatTradeEventAndIndexSourcesLog) {
  strategy->setName("alpha");
  logs.clear();
  strategy->setNotifyQuick(false);
  strategy->subscribeElementChange(codeOf(3));
  strategy->subscribeGeneralEvent("t", "n", {});
  strategy->subscribeQuote(codeOf(7), 0);
  strategy->createTimer(5, 1, 1, 1);
  strategy->stopTimer(5);
  const std::vector<std::string> lines = logs.messages();
  ASSERT_GE(lines.size(), 2u);
  for (const std::string& line : lines) EXPECT_EQ(line.find("[DEBUG] Event alpha,"), 0u) << line;
}

// Wiring.

TEST_F(AbstractEventStrategyTest, shouldGiveEachSourceTheBaseItNeedsOnStartEvent) {
  strategy->startEvent();
  EXPECT_EQ(TestAccess::notify(TestAccess::data(*strategy)), &TestAccess::dataNotify(*strategy));
  EXPECT_EQ(TestAccess::notify(TestAccess::quotes(*strategy)), &TestAccess::quoteNotify(*strategy));
  EXPECT_EQ(TestAccess::notify(TestAccess::trades(*strategy)), &TestAccess::tradeNotify(*strategy));
  EXPECT_EQ(TestAccess::notify(TestAccess::timers(*strategy)), &TestAccess::timerNotify(*strategy));
  EXPECT_EQ(TestAccess::notify(TestAccess::events(*strategy)), &TestAccess::eventNotify(*strategy));
  EXPECT_EQ(TestAccess::notify(TestAccess::indexes(*strategy)),
            &TestAccess::indexNotify(*strategy));
}

TEST_F(AbstractEventStrategyTest, shouldHaveTheEffectOfOneForTwoStartEvents) {
  strategy->startEvent();
  strategy->startEvent();
  strategy->subscribeQuote(codeOf(7), 0);
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  EXPECT_EQ(strategy->eventCount(), 1u);
  strategy->stopEvent();
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  EXPECT_EQ(strategy->eventCount(), 1u);
}

TEST_F(AbstractEventStrategyTest, shouldBuildNoRecordFromACallBackAfterStopEvent) {
  strategy->startEvent();
  strategy->subscribeQuote(codeOf(7), 0);
  strategy->subscribeKline(codeOf(7), "1m", 1, 2, 0, 0, 5);
  strategy->createTimer(6, 1, 1, 1);
  strategy->stopEvent();
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  platform.quotes().requestSpi(5)->onKLine(5, {barOf(1)}, {}, 0);
  platform.timers.fire(6, 1);
  EXPECT_EQ(strategy->eventCount(), 0u);
  EXPECT_EQ(TestAccess::notify(TestAccess::indexes(*strategy)), nullptr);
  EXPECT_EQ(TestAccess::notify(TestAccess::events(*strategy)), nullptr);
  EXPECT_EQ(TestAccess::notify(TestAccess::trades(*strategy)), nullptr);
  EXPECT_EQ(TestAccess::notify(TestAccess::data(*strategy)), nullptr);
  strategy->stopTimer(6);
}

TEST_F(AbstractEventStrategyTest, shouldTouchNoSubscriptionOnStartAndStopEvent) {
  strategy->subscribeQuote(codeOf(7), 0);
  platform.calls.clear();
  strategy->startEvent();
  strategy->stopEvent();
  EXPECT_EQ(platform.calls.count("quote."), 0);
  EXPECT_TRUE(strategy->isSubscribeQuote(codeOf(7)));
}

TEST_F(AbstractEventStrategyTest, shouldBlockStopEventUntilTheCallBackInProgressHasReturned) {
  struct Slow : CollectingStrategy {
    void pushEvent(IEvent* event) override {
      delete event;
      inside.count_down();
      leave.wait();
      returned = true;
    }
    std::latch inside{1};
    std::latch leave{1};
    std::atomic<bool> returned{false};
  };
  Slow slow;
  slow.startEvent();
  slow.subscribeQuote(codeOf(7), 0);
  std::thread service([&] { platform.quotes().quoteSpi(7)->onQuote(quoteOf(7)); });
  slow.inside.wait();
  bool seen = false;
  std::thread host([&] {
    slow.stopEvent();
    seen = slow.returned;
  });
  slow.leave.count_down();
  service.join();
  host.join();
  EXPECT_TRUE(seen);
}

TEST_F(AbstractEventStrategyTest, shouldRestoreTheTradeSourceAloneOnResetCache) {
  strategy->setNotifyQuick(false);
  strategy->setCreateSourceTradeInfo({{"mine", {147906, 3, {"other"}}}});
  strategy->setRelatedCodeId({codeOf(1), codeOf(2)});
  strategy->subscribeQuote(codeOf(7), 0);
  TradeSrc& trade = TestAccess::trades(*strategy);
  EXPECT_EQ(TestAccess::eventMask(trade), 147906);
  EXPECT_EQ(TestAccess::relatedCodes(trade).size(), 2u);
  EXPECT_FALSE(TestAccess::notifyQuick(trade));
  platform.calls.clear();
  strategy->resetCache();
  EXPECT_TRUE(TestAccess::notifyQuick(trade));
  EXPECT_TRUE(TestAccess::createSourceInfos(trade).empty());
  EXPECT_EQ(TestAccess::eventMask(trade), 0);
  EXPECT_TRUE(TestAccess::relatedCodes(trade).empty());
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_TRUE(strategy->isSubscribeQuote(codeOf(7)));
}

// Forwards.

TEST_F(AbstractEventStrategyTest, shouldForwardQuoteOperationsAndReturnTheirResults) {
  platform.calls.answer("quote.subscribeQuote", {1, "q"});
  platform.calls.answer("quote.subscribeBars", {7, "b"});
  EXPECT_EQ(strategy->subscribeQuote(codeOf(7), 2), (ResultStatus{1, "q"}));
  EXPECT_EQ(strategy->subscribeQuote(std::string("XX"), 2).code, -2);
  EXPECT_EQ(strategy->subscribeKline(codeOf(7), "1m", 1, 2, 3, 4, 5), (ResultStatus{7, "b"}));
  OVDataRange range;
  range.term = 60000;
  EXPECT_EQ(strategy->subscribeKline(range, 6, 8), (ResultStatus{7, "b"}));
  EXPECT_EQ(strategy->subscribeKline(std::string("IF2101"), "1m", 1, 2, 9, 4),
            (ResultStatus{7, "b"}));
  EXPECT_EQ(platform.quotes().query(6).flags, 8);
  EXPECT_EQ(platform.quotes().query(9).flags, 2 | 4);
  EXPECT_EQ(strategy->unsubscribeKline(5), ResultStatus());
  EXPECT_EQ(strategy->unsubscribeQuote(codeOf(7), 4), ResultStatus());
  EXPECT_EQ(strategy->unsubscribeQuote(std::string("XX"), 4).code, -2);
  EXPECT_EQ(platform.calls.count("quote.cancelRequest 5"), 1);
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote 7 flags=4"), 1);
  const int id = strategy->generateId();
  EXPECT_EQ(id, platform.routes.lastRequestId());
}

TEST_F(AbstractEventStrategyTest, shouldOfferItsSourcesButNotTheTimers) {
  EXPECT_EQ(strategy->quoteSrc().get(), &TestAccess::quotes(*strategy));
  EXPECT_EQ(strategy->tradeSrc().get(), &TestAccess::trades(*strategy));
  EXPECT_EQ(strategy->dataSrc().get(), &TestAccess::data(*strategy));
  EXPECT_EQ(strategy->generalEventSrc().get(), &TestAccess::events(*strategy));
  EXPECT_EQ(strategy->indexSrc().get(), &TestAccess::indexes(*strategy));
}

TEST_F(AbstractEventStrategyTest, shouldForwardTimers) {
  strategy->createTimer(5, 100, 20, 3);
  EXPECT_TRUE(strategy->isTimerExist(5));
  strategy->stopTimer(5);
  EXPECT_FALSE(strategy->isTimerExist(5));
  strategy->createTimer(6, 100, 20, 3);
  strategy->stopAllTimer();
  EXPECT_FALSE(strategy->isTimerExist(6));
  EXPECT_THAT(platform.calls.entries("timer.start"),
              ElementsAre("timer.start 5 begin=100 interval=20 count=3",
                          "timer.start 6 begin=100 interval=20 count=3"));
}

TEST_F(AbstractEventStrategyTest, shouldForwardTradeSubscriptions) {
  TradingAccountID account;
  account.accountKey = 5;
  strategy->setCreateSourceTradeInfo({{"own", {EventTypeOrder, 0, {}}}});
  strategy->subscribeTrade(account);
  strategy->addSubscribeTradeByCreateSource("own", "other");
  strategy->addSubscribeTradeByCreateId("own", 2);
  strategy->onRelatedCodeIdChange({codeOf(7)});
  strategy->unsubscribeTrade(account);
  EXPECT_THAT(
      platform.calls.entries("trade."),
      ElementsAre("trade.subscribeStatus 5", "trade.subscribeOrderBySourceName other 5",
                  "trade.subscribeOrderByEventSourceId 2 5",
                  "trade.subscribeOrderBySourceName own 5 7", "trade.unsubscribeAccount 5"));
}

TEST_F(AbstractEventStrategyTest, shouldForwardSnapshotsGeneralEventsAndIndexes) {
  strategy->subscribeDataSnapshot("dic", "key", 5);
  strategy->unsubscribeDataSnapshot("dic", "key", 6);
  strategy->subscribeGeneralEvent("t", "n", {"k"});
  strategy->unsubscribeGenaralEvent("t", "n");
  strategy->unsubscribeAllGenaralEvent();
  strategy->subscribeElementChange(codeOf(3));
  strategy->unsubscribeElementChange(codeOf(3));
  strategy->subscribeElementChange(codeOf(4));
  strategy->unsubscribeAllElementChange();
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("data.subscribeSnapshot dic/key flags=5",
                          "data.unsubscribeSnapshot dic/key flags=6",
                          "event.subscribe t names=n keys=k live=1", "event.unsubscribe t names=n",
                          "event.unsubscribeTarget t", "index.subscribeElementChange 3",
                          "index.unsubscribeElementChange 3", "index.subscribeElementChange 4",
                          "index.unsubscribeElementChange 4"));
}

TEST_F(AbstractEventStrategyTest, shouldAnswerFromTheQuoteBooksWhetherSomethingIsSubscribed) {
  EXPECT_FALSE(strategy->isSubscribeKline(5));
  EXPECT_FALSE(strategy->isSubscribeQuote(codeOf(7)));
  strategy->subscribeKline(codeOf(7), "1m", 1, 2, 3, 4, 5);
  strategy->subscribeQuote(codeOf(7), 0);
  EXPECT_TRUE(strategy->isSubscribeKline(5));
  EXPECT_TRUE(strategy->isSubscribeQuote(codeOf(7)));
}

TEST_F(AbstractEventStrategyTest, shouldSayNotSubscribedForACountOf0WhileALateQuoteIsStillQueued) {
  strategy->startEvent();
  strategy->subscribeQuote(codeOf(7), 0);
  platform.quotes().quoteSpi(7)->onQuote(quoteOf(7));
  strategy->unsubscribeQuote(codeOf(7), 0);
  EXPECT_EQ(strategy->eventCount(), 1u);
  EXPECT_FALSE(strategy->isSubscribeQuote(codeOf(7)));
}

TEST_F(AbstractEventStrategyTest, shouldCallNoServiceForUnsubscribeDataOfAnIdNeverSubscribed) {
  strategy->unsubscribeData(11);
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(AbstractEventStrategyTest, shouldUnsubscribeDataOnceWithNoLockHeld) {
  DataReq request;
  request.name = "d";
  strategy->subscribeData(request, 11);
  EXPECT_TRUE(strategy->isSubscribeData(11));
  platform.calls.onCall("data.unsubscribeData", [&] {
    EXPECT_TRUE(TestAccess::dataMutexIsFree(TestAccess::data(*strategy)));
    EXPECT_FALSE(strategy->isSubscribeData(11));
  });
  strategy->unsubscribeData(11);
  strategy->unsubscribeData(11);
  EXPECT_THAT(platform.calls.entries("data.unsub"), ElementsAre("data.unsubscribeData 11"));
}

// Call-backs: each is a pure copy into the matching record.

TEST_F(AbstractEventStrategyTest, shouldCopyALiveQuoteIntoATickEventWithoutARequestId) {
  IDepthMarketData quote = quoteOf(7, 42);
  quote.extras[1] = "x";
  quotes().onQuote(quote);
  quote.extras[1] = "changed";
  const auto* event = strategy->last<TickEvent>();
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->quote.code.id, 7);
  EXPECT_EQ(event->quote.block1[0], 42);
  EXPECT_EQ(event->quote.extras.at(1), "x");
  EXPECT_EQ(event->requestId, -1);
}

TEST_F(AbstractEventStrategyTest, shouldCopyBarsIntoABarEventThatIsNoTick) {
  quotes().onKLine(5, codeOf(7), {barOf(1), barOf(2)}, {4, "s"}, 16);
  const auto* event = strategy->last<BarEvent>();
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->requestId, 5);
  EXPECT_EQ(event->code.id, 7);
  EXPECT_EQ(event->bars, (std::vector<IKLine>{barOf(1), barOf(2)}));
  EXPECT_TRUE(event->ticks.empty());
  EXPECT_EQ(event->status, (ResultStatus{4, "s"}));
  EXPECT_EQ(event->batchFlag, 16);
  EXPECT_FALSE(event->isTick);
}

TEST_F(AbstractEventStrategyTest, shouldCopyTicksIntoABarEventThatIsTick) {
  quotes().onTick(5, codeOf(7), {quoteOf(7, 9)}, {4, "s"}, 16);
  const auto* event = strategy->last<BarEvent>();
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->requestId, 5);
  EXPECT_EQ(event->code.id, 7);
  EXPECT_EQ(event->status, (ResultStatus{4, "s"}));
  ASSERT_EQ(event->ticks.size(), 1u);
  EXPECT_EQ(event->ticks[0].block1[0], 9);
  EXPECT_TRUE(event->bars.empty());
  EXPECT_EQ(event->batchFlag, 16);
  EXPECT_TRUE(event->isTick);
}

TEST_F(AbstractEventStrategyTest, shouldTellTicksFromBarsAlsoWhenTheBatchIsEmpty) {
  quotes().onTick(5, codeOf(7), {}, {}, 0);
  EXPECT_TRUE(strategy->last<BarEvent>()->isTick);
  quotes().onKLine(5, codeOf(7), {}, {}, 0);
  EXPECT_FALSE(strategy->last<BarEvent>()->isTick);
}

TEST_F(AbstractEventStrategyTest, shouldCopyProgressAndRollover) {
  quotes().onKLineProgress(5, codeOf(7), {1, 2, 3, 4, {6, "p"}});
  const auto* progress = strategy->last<BarProcessEvent>();
  ASSERT_NE(progress, nullptr);
  EXPECT_EQ(progress->requestId, 5);
  EXPECT_EQ(progress->code.id, 7);
  EXPECT_EQ(progress->progress.value3, 3);
  EXPECT_EQ(progress->progress.status, (ResultStatus{6, "p"}));
  quotes().onRollover(6, codeOf(8), {9, {{1, 2}}});
  const auto* rollover = strategy->last<RolloverEvent>();
  ASSERT_NE(rollover, nullptr);
  EXPECT_EQ(rollover->requestId, 6);
  EXPECT_EQ(rollover->code.id, 8);
  EXPECT_EQ(rollover->coefficient.value, 9);
  EXPECT_EQ(rollover->coefficient.items.size(), 1u);
}

TEST_F(AbstractEventStrategyTest, shouldCopyTradeCallBacks) {
  Position position;
  position.code = codeOf(1);
  trades().onRtnPosition(position);
  ASSERT_NE(strategy->last<PositionEvent>(), nullptr);
  EXPECT_EQ(strategy->last<PositionEvent>()->position.code.id, 1);

  SourcePosition sourcePosition;
  sourcePosition.code = codeOf(2);
  sourcePosition.sourceType = 3;
  sourcePosition.createSource = "cs";
  sourcePosition.sourceText = "st";
  trades().onRtnStrategyPosition(sourcePosition);
  const auto* strategyPosition = strategy->last<StrategyPositionEvent>();
  ASSERT_NE(strategyPosition, nullptr);
  EXPECT_EQ(strategyPosition->position.code.id, 2);
  EXPECT_EQ(strategyPosition->position.sourceType, 3);
  EXPECT_EQ(strategyPosition->position.createSource, "cs");
  EXPECT_EQ(strategyPosition->position.sourceText, "st");

  Order order;
  order.id = 4;
  trades().onRtnOrder(order);
  ASSERT_NE(strategy->last<OrderEvent>(), nullptr);
  EXPECT_EQ(strategy->last<OrderEvent>()->order.id, 4);

  OrderFill fill;
  fill.id = 5;
  trades().onRtnTrade(fill);
  ASSERT_NE(strategy->last<FillEvent>(), nullptr);
  EXPECT_EQ(strategy->last<FillEvent>()->fill.id, 5);

  AccountID account;
  account.text3 = "acc";
  AccountStatusInfo info;
  info.statusCode = 16;
  info.accounts.resize(2);
  trades().onRspStatus(account, info);
  const auto* status = strategy->last<AccountStatusEvent>();
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(status->account.text3, "acc");
  EXPECT_EQ(status->info.statusCode, 16);
  EXPECT_EQ(status->info.accounts.size(), 2u);

  TradingAccount capital;
  capital.value = 6;
  trades().onRtnCapital(capital);
  ASSERT_NE(strategy->last<CapitalEvent>(), nullptr);
  EXPECT_EQ(strategy->last<CapitalEvent>()->capital.value, 6);
}

TEST_F(AbstractEventStrategyTest, shouldCopyDictionaryCallBacks) {
  data().onDataSnapshot("n", "t", {1, 2, "r"});
  const auto* snapshot = strategy->last<DataSnapshotEvent>();
  ASSERT_NE(snapshot, nullptr);
  EXPECT_EQ(snapshot->name, "n");
  EXPECT_EQ(snapshot->target, "t");
  EXPECT_EQ(snapshot->record, (Record{1, 2, "r"}));

  data().onProgress(3, 4, 5);
  const auto* progress = strategy->last<DataProcessEvent>();
  ASSERT_NE(progress, nullptr);
  EXPECT_EQ(progress->requestId, 3);
  EXPECT_EQ(progress->progress1, 4);
  EXPECT_EQ(progress->progress2, 5);

  data().onData(6, {{7, 8, "x"}}, static_cast<DataValueType>(2), {9, "s"}, 10, 11);
  const auto* batch = strategy->last<DataEvent>();
  ASSERT_NE(batch, nullptr);
  EXPECT_EQ(batch->requestId, 6);
  EXPECT_EQ(batch->records, (std::list<Record>{{7, 8, "x"}}));
  EXPECT_EQ(static_cast<int>(batch->valueType), 2);
  EXPECT_EQ(batch->status, (ResultStatus{9, "s"}));
  EXPECT_EQ(batch->batchFlag, 10);
  EXPECT_EQ(batch->batchTag, 11);

  data().onDeleteData(12, 13, 14, 15);
  const auto* deleted = strategy->last<DataDeletedEvent>();
  ASSERT_NE(deleted, nullptr);
  EXPECT_EQ(deleted->requestId, 12);
  EXPECT_EQ(deleted->deleted1, 13);
  EXPECT_EQ(deleted->deleted2, 14);
  EXPECT_EQ(deleted->deleted3, 15);
}

TEST_F(AbstractEventStrategyTest, shouldCopyTimerGeneralEventAndIndexCallBacks) {
  TestAccess::timerNotify(*strategy).onTimer(5, 6);
  ASSERT_NE(strategy->last<TimerEvent>(), nullptr);
  EXPECT_EQ(strategy->last<TimerEvent>()->timerId, 5);
  EXPECT_EQ(strategy->last<TimerEvent>()->value, 6);

  TestAccess::eventNotify(*strategy).onGeneralEvent("topic", {{"k", "v"}}, "detail");
  const auto* general = strategy->last<GeneralEvent>();
  ASSERT_NE(general, nullptr);
  EXPECT_EQ(general->topic, "topic");
  EXPECT_EQ(general->fields.at("k"), "v");
  EXPECT_EQ(general->detail, "detail");

  std::list<IndexTradeElement> elements = {{codeOf(1), 2}};
  TestAccess::indexNotify(*strategy).onElementChange(codeOf(3), elements);
  const auto* change = strategy->last<IndexElementChangeEvent>();
  ASSERT_NE(change, nullptr);
  EXPECT_EQ(change->code.id, 3);
  ASSERT_EQ(change->elements.size(), 1u);
  EXPECT_EQ(change->elements.front().code.id, 1);
}

TEST_F(AbstractEventStrategyTest, shouldInjectBatchesAsIfTheQuoteSourceHadDeliveredThem) {
  strategy->pushKlineEvent(5, codeOf(7), {barOf(1)}, {4, "s"}, 16);
  ASSERT_NE(strategy->last<BarEvent>(), nullptr);
  EXPECT_EQ(strategy->last<BarEvent>()->bars.size(), 1u);
  EXPECT_EQ(strategy->last<BarEvent>()->batchFlag, 16);
  strategy->pushTickEvent(5, codeOf(7), {quoteOf(7)}, {}, 1);
  EXPECT_TRUE(strategy->last<BarEvent>()->isTick);
}

TEST_F(AbstractEventStrategyTest, shouldHaveEmptyBodiesInTheNotifyBases) {
  QuoteNotify quoteNotify;
  quoteNotify.onQuote({});
  quoteNotify.onKLine(1, {}, {}, {}, 0);
  quoteNotify.onTick(1, {}, {}, {}, 0);
  quoteNotify.onKLineProgress(1, {}, {});
  quoteNotify.onRollover(1, {}, {});
  const QuoteNotify copy(quoteNotify);
  quoteNotify = copy;
  DataNotify dataNotify;
  dataNotify.onData(1, {}, {}, {}, 0, 0);
  EventTradeNotify tradeNotify;
  tradeNotify.onRtnOrder({});
  GeneralEventNotify().onGeneralEvent({}, {}, {});
  std::list<IndexTradeElement> elements;
  IndexNotify().onElementChange({}, elements);
  EXPECT_EQ(strategy->eventCount(), 0u);
}

TEST_F(AbstractEventStrategyTest, shouldDeriveItsFacesInTheirOrderWithTheNotifiesHidden) {
  EXPECT_TRUE((std::is_convertible_v<AbstractEventStrategy*, IEventStrategy*>));
  EXPECT_FALSE((std::is_convertible_v<AbstractEventStrategy*, QuoteNotify*>));
  const auto at = [](const void* base) { return static_cast<const char*>(base); };
  AbstractEventStrategy& base = *strategy;
  const char* const faces[] = {
      at(static_cast<IEventStrategy*>(&base)), at(&TestAccess::tradeNotify(base)),
      at(&TestAccess::timerNotify(base)),      at(&TestAccess::quoteNotify(base)),
      at(&TestAccess::dataNotify(base)),       at(&TestAccess::eventNotify(base)),
      at(&TestAccess::indexNotify(base))};
  for (std::size_t i = 1; i < std::size(faces); ++i) EXPECT_LT(faces[i - 1], faces[i]) << i;
}

TEST_F(AbstractEventStrategyTest, shouldLogNothingForANameWhileDebugIsOff) {
  const auto logger = log4cxx::Logger::getLogger("Event");
  logger->setLevel(log4cxx::Level::getInfo());
  strategy->setName("quiet");
  logger->setLevel(nullptr);
  EXPECT_EQ(logs.countContaining("setName"), 0);
  EXPECT_EQ(strategy->name(), "quiet");
}

}  // namespace
}  // namespace orvane::support
