// A strategy or a host that calls back into its runner from inside each of its call-backs, and a
// service that calls back from another thread at the worst moment.

#include <functional>
#include <latch>
#include <map>
#include <string>
#include <thread>

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/ov.strategy.runner/Runner.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

/// Makes one call-back of each kind happen, by its name.
class Reentrance : public RunnerTest, public ::testing::WithParamInterface<std::string> {
 protected:
  /// Runs `act` inside the first call of the call-back under test and inside no later one.
  void actInside(std::function<void(IContext*)> act) {
    script->on(GetParam(), [this, act = std::move(act)](IContext* c) {
      if (acted_) return;
      acted_ = true;
      act(c);
    });
  }

  void startAndSubscribe() {
    runner->start(paramsOf(1));
    pool.runAll();
    if (!runner) return;
    IContext& user = context();
    user.subscribeQuote(codeOf(7), 0);
    user.subscribeKline(codeOf(7), "1m", 1, 2, 0, 0);
    plain_ = platform.routes.lastRequestId();
    user.subscribeKline(9001, codeOf(7), "1m", 1, 2, 0, 0);
    user.subscribeDic("dic", "key", 1, 2, 0);
    dic_ = platform.routes.lastRequestId();
    user.subscribeDicSnapshot("dic", "key", 0);
    timer_ = user.createTimer(1000, 0, 1);
  }

  /// Starts a run and makes the call-back under test happen twice, with an order behind it.
  void provoke() {
    startAndSubscribe();
    if (!runner) return;
    for (int i = 0; i < 2; ++i) {
      const auto it = triggers_.find(GetParam());
      if (it != triggers_.end()) it->second();
    }
    if (GetParam() == "onStop") runner->stop();
    if (GetParam() != "onOrder") runner->pushEvent(orderEvent(1));
    pool.runAll();
    ASSERT_TRUE(acted_) << GetParam();
  }

  /// Whether the call-back under test belongs to the end of a run, which can't be ended again.
  bool isOnStop() const { return GetParam() == "onStop"; }

 private:
  QuoteNotify& quotes() { return TestAccess::quoteNotify(*runner); }
  DataNotify& data() { return TestAccess::dataNotify(*runner); }
  EventTradeNotify& trades() { return TestAccess::tradeNotify(*runner); }

  bool acted_ = false;
  int plain_ = 0;
  int dic_ = 0;
  int timer_ = 0;

  const std::map<std::string, std::function<void()>> triggers_ = {
      {"onUpdate", [this] { runner->update({}); }},
      {"onQuote", [this] { quotes().onQuote(quoteOf(7)); }},
      {"onTickSeriesById", [this] { quotes().onTick(9001, codeOf(7), {}, {}, 0); }},
      {"onBarSeriesById", [this] { quotes().onKLine(9001, codeOf(7), {}, {}, 0); }},
      {"onTickSeries", [this] { quotes().onTick(plain_, codeOf(7), {}, {}, 0); }},
      {"onBarSeries", [this] { quotes().onKLine(plain_, codeOf(7), {}, {}, 0); }},
      {"onBarProgressById", [this] { quotes().onKLineProgress(9001, codeOf(7), {}); }},
      {"onBarProgress", [this] { quotes().onKLineProgress(plain_, codeOf(7), {}); }},
      {"onAccountStatus",
       [this] {
         AccountStatusInfo info;
         info.accounts.resize(1);
         trades().onRspStatus({}, info);
       }},
      {"onCapital", [this] { trades().onRtnCapital({}); }},
      {"onPosition", [this] { trades().onRtnPosition({}); }},
      {"onStrategyPosition", [this] { trades().onRtnStrategyPosition({}); }},
      {"onOrder", [this] { trades().onRtnOrder({}); }},
      {"onFill", [this] { trades().onRtnTrade({}); }},
      {"onDicSnapshot", [this] { data().onDataSnapshot("dic", "key", {}); }},
      {"onDic", [this] { data().onData(dic_, {}, DataValueType::None, {}, 0, 0); }},
      {"onDicDeleted", [this] { data().onDeleteData(dic_, 1, 2, 3); }},
      {"onTimer", [this] { TestAccess::timerNotify(*runner).onTimer(timer_, 1); }},
  };
};

TEST_P(Reentrance, shouldEndAsStoppedWhenAStrategyCallsStop) {
  actInside([](IContext* c) { c->stop(); });
  provoke();
  EXPECT_EQ(spi->statuses().back(), 0);
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_EQ(script->alive(), 0);
  EXPECT_FALSE(script->overlapped());
}

TEST_P(Reentrance, shouldEndAsErrorWhenAStrategyCallsSetError) {
  actInside([](IContext* c) { c->setError("inside"); });
  provoke();
  // In onStop the run is being ended already: the error finds nothing running.
  EXPECT_EQ(spi->statuses().back(), isOnStop() ? 0 : 1);
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_EQ(script->alive(), 0);
}

TEST_P(Reentrance, shouldEndAsFinishedWhenAStrategyCallsSetFinish) {
  actInside([](IContext* c) { c->setFinish(); });
  provoke();
  EXPECT_EQ(spi->statuses().back(), isOnStop() ? 0 : 2);
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_EQ(script->alive(), 0);
}

TEST_P(Reentrance, shouldQueueAnUpdateThatIsCalledFromWithin) {
  actInside([this](IContext*) { runner->update(paramsOf(42)); });
  provoke();
  EXPECT_EQ(script->count("onUpdate {\"v\":42}"), isOnStop() ? 0 : 1);
  EXPECT_FALSE(script->overlapped());
}

TEST_P(Reentrance, shouldBeginAgainAfterAResetThatIsCalledFromWithin) {
  actInside([this](IContext*) { runner->reset4PlayBack(paramsOf(43)); });
  provoke();
  EXPECT_EQ(script->count("onStart {\"v\":43}"), isOnStop() ? 0 : 1);
  EXPECT_EQ(script->made(), isOnStop() ? 1 : 2);
  EXPECT_EQ(script->alive(), isOnStop() ? 0 : 1);
  EXPECT_FALSE(script->overlapped());
}

TEST_P(Reentrance, shouldTakeSubscribesAndUnsubscribesFromWithin) {
  actInside([](IContext* c) {
    EXPECT_EQ(c->subscribeQuote(codeOf(17), 0), ResultStatus());
    EXPECT_EQ(c->subscribeKline(codeOf(17), "1m", 1, 2, 0, 0), ResultStatus());
    EXPECT_EQ(c->subscribeKline(9100, codeOf(17), "1m", 1, 2, 0, 0), ResultStatus());
    c->subscribeDicSnapshot("more", "key", 0);
    const int timer = c->createTimer(1000, 0, 1);
    c->unsubscribeQuote(codeOf(7));
    c->unsubscribeKline(codeOf(7), "1m");
    c->unsubscribeKline(9001);
    c->unsubscribeDic("dic", "key");
    c->unsubscribeDicSnapshot("dic", "key");
    c->stopTimer(timer);
  });
  provoke();
  EXPECT_FALSE(script->overlapped());
  EXPECT_EQ(logs.countContaining("[ERROR]"), 0);
  if (!isOnStop()) {
    runner->stop();
    pool.runAll();
  }
  EXPECT_FALSE(runner->isSubscribeQuote(codeOf(17)));
  EXPECT_FALSE(runner->isSubscribeKline(9100));
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"),
            platform.calls.count("quote.unsubscribeQuote"));
}

TEST_P(Reentrance, shouldSurviveTheHostLettingGoFromWithin) {
  actInside([this](IContext* c) {
    runner->stopEvent();
    runner.reset();
    EXPECT_EQ(c->name(), "r1");  // The task holds the context until the batch has ended.
  });
  provoke();
  // Its sources are gone with it; what is left at the services are spis that nobody owns.
  platform.forgetSpis();
  EXPECT_EQ(script->alive(), 0);
  EXPECT_EQ(logs.countContaining(",RunnerContext destruct end"), 1);
}

INSTANTIATE_TEST_SUITE_P(EachCallBack, Reentrance, ::testing::ValuesIn(strategyCallbacks()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace orvane::support
