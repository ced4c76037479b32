#include "sdk/testing/StrategyHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "sdk/Accounts.h"
#include "sdk/Records.h"
#include "sdk/Strategy.h"
#include "sdk/Subscriptions.h"
#include "sdk/Trader.h"
#include "sdk/testing/BarSession.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Notes every call-back by name, and does in some what a test wants.
class Noting : public IStrategy {
 public:
  explicit Noting(std::vector<std::string>& calls) : calls_(calls) {}

  std::function<void(IContext*, const QJsonObject&)> atStart;
  std::function<void(IContext*, const IKLine&)> atBar;
  std::function<void(IContext*, const Order&)> atOrder;

  void onStart(IContext* context, const QJsonObject& params) override {
    note("start");
    if (atStart) atStart(context, params);
  }
  void onUpdate(IContext*, const QJsonObject&) override { note("update"); }
  void onQuote(IContext*, const IDepthMarketData&) override { note("quote"); }
  void onTickSeriesById(IContext*, int, const ICodeID&, const std::vector<IDepthMarketData>&,
                        const ResultStatus&, int) override {
    note("tickSeriesById");
  }
  void onBarSeriesById(IContext*, int, const ICodeID&, const std::string&,
                       const std::vector<IKLine>&, const ResultStatus&, int) override {
    note("barSeriesById");
  }
  void onTickSeries(IContext*, const ICodeID&, const std::vector<IDepthMarketData>&,
                    const ResultStatus&, int) override {
    note("tickSeries");
  }
  void onBarSeries(IContext* context, const ICodeID&, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus&, int batchFlag) override {
    note(batchFlag == kEndOfHistory ? "history" : "barSeries");
    for (const IKLine& bar : bars)
      if (atBar) atBar(context, bar);
  }
  void onBarProgressById(IContext*, int, const ICodeID&, const std::string&,
                         const KLineProgress&) override {
    note("barProgressById");
  }
  void onBarProgress(IContext*, const ICodeID&, const std::string&, const KLineProgress&) override {
    note("barProgress");
  }
  void onAccountStatus(IContext*, const TradingAccountID&, int, const ResultStatus&) override {
    note("accountStatus");
  }
  void onCapital(IContext*, const TradingAccount&) override { note("capital"); }
  void onPosition(IContext*, const Position&) override { note("position"); }
  void onStrategyPosition(IContext*, const SourcePosition&) override { note("strategyPosition"); }
  void onOrder(IContext* context, const Order& order) override {
    note("order " + std::to_string(order.status()));
    if (atOrder) atOrder(context, order);
  }
  void onFill(IContext*, const OrderFill& fill) override {
    const FillView view(fill);
    note("fill " + numberText(view.volume()) + " at " + numberText(view.price()));
  }
  void onDicSnapshot(IContext*, const std::string&, const std::string&, const Record&) override {
    note("dicSnapshot");
  }
  void onDic(IContext*, const std::string&, const std::string&, const std::list<Record>&,
             const ResultStatus&, int) override {
    note("dic");
  }
  void onDicDeleted(IContext*, const std::string&, const std::string&, int64, int64) override {
    note("dicDeleted");
  }
  void onTimer(IContext*, int, int64 due) override { note("timer " + std::to_string(due)); }
  void onStop(IContext*) override { note("stop"); }

 private:
  void note(std::string call) { calls_.push_back(std::move(call)); }

  std::vector<std::string>& calls_;
};

class StrategyHarnessTest : public testing::Test {
 protected:
  std::vector<std::string> calls_;
  Noting* const strategy_ = new Noting(calls_);  // The harness owns it.
  StrategyHarness harness_{strategy_};
  const ICodeID code_ = harness_.addSeries("A.X", "1m");
  const TradingAccountID account_ = harness_.addAccount("main");
  RecordingContext& context_ = harness_.context();
};

TEST_F(StrategyHarnessTest, shouldBringEachKindOfCallBack) {
  harness_.start();
  harness_.update({});
  harness_.quote({});
  harness_.tickSeriesById(1, code_, {});
  harness_.barSeriesById(1, code_, "1m", {});
  harness_.tickSeries(code_, {});
  harness_.barSeries(code_, "1m", {});
  harness_.barProgressById(1, code_, "1m", {});
  harness_.barProgress(code_, "1m", {});
  harness_.accountStatus(account_, 16);
  harness_.capital({});
  harness_.position({});
  harness_.strategyPosition({});
  harness_.order({});
  harness_.StrategyCalls::fill({});
  harness_.dicSnapshot("name", "key", {});
  harness_.dic("name", "key", {});
  harness_.dicDeleted("name", "key", 1, 2);
  harness_.timer(1, 5);
  harness_.stop();
  EXPECT_THAT(calls_,
              ElementsAre("start", "update", "quote", "tickSeriesById", "barSeriesById",
                          "tickSeries", "barSeries", "barProgressById", "barProgress",
                          "accountStatus", "capital", "position", "strategyPosition", "order 0",
                          "fill 0 at 0", "dicSnapshot", "dic", "dicDeleted", "timer 5", "stop"));
}

TEST_F(StrategyHarnessTest, shouldTellTheStrategyWhatAHostWould) {
  strategy_->atStart = [](IContext* context, const QJsonObject& params) {
    TradingAccountID found;
    EXPECT_EQ(findOwnAccount(context, params, found).code, 0);
    EXPECT_EQ(found.account, "main");
    const auto asked = subscribeAllOrFail(context, params);
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].code.code, "A");
    EXPECT_TRUE(asked[1].isTicks);
    EXPECT_EQ(params["fast"].toInt(), 5);
  };
  const ICodeID quoted = harness_.addSeries("B.X", "");
  EXPECT_TRUE(harness_.start({{"fast", 5}}));
  EXPECT_NE(context_.subscription(code_, "1m"), nullptr);
  EXPECT_NE(context_.subscription(quoted), nullptr);
  EXPECT_EQ(context_.subscription(quoted, "1m"), nullptr);
}

TEST_F(StrategyHarnessTest, shouldBringNothingButTheStopOnceTheStrategyEndedItsRun) {
  strategy_->atStart = [](IContext* context, const QJsonObject&) { context->setError("no way"); };
  EXPECT_FALSE(harness_.start());
  EXPECT_TRUE(harness_.isOver());
  EXPECT_EQ(context_.error, "no way");
  EXPECT_EQ(context_.ending, RecordingContext::End::Error);
  EXPECT_FALSE(harness_.quote({}));
  EXPECT_FALSE(harness_.stop());
  EXPECT_THAT(calls_, ElementsAre("start", "stop"));
  EXPECT_TRUE(context_.isExited);
}

TEST_F(StrategyHarnessTest, shouldPlayOnlyWhatIsSubscribedHistoryFirst) {
  harness_.start();
  EXPECT_EQ(harness_.play(code_, "1m", barsOf({1, 2})), 0);
  context_.subscribeKline(code_, "1m", kUnsetTime, kUnsetTime, 0, 0);
  EXPECT_EQ(harness_.play(code_, "5m", barsOf({1, 2})), 0);
  EXPECT_EQ(harness_.play(code_, "1m", barsOf({1, 2})), 2);
  EXPECT_EQ(harness_.play(code_, "1m", barsOf({3})), 1);
  EXPECT_THAT(calls_, ElementsAre("start", "history", "barSeries", "barSeries", "barSeries"));
}

TEST_F(StrategyHarnessTest, shouldFillAnOrderAtTheNextBarsOpen) {
  strategy_->atStart = [](IContext* context, const QJsonObject& params) {
    subscribeAll(context, params);
  };
  Trader trader(account_);
  strategy_->atBar = [&](IContext* context, const IKLine& bar) {
    if (KLineView(bar).close() == 10) trader.target(context, code_, 2);
    if (KLineView(bar).close() == 12) trader.target(context, code_, 0);
  };
  harness_.start();
  harness_.play(code_, "1m", barsOf({10, 11, 12, 13}));
  EXPECT_THAT(calls_,
              ElementsAre("start", "history", "barSeries", "order 3", "fill 2 at 11", "barSeries",
                          "barSeries", "order 3", "fill 2 at 13", "barSeries"));
  EXPECT_EQ(PositionView(context_.position(account_, code_)).netVolume(), 0);
}

TEST_F(StrategyHarnessTest, shouldMeetLimitsStopsAndCancelsAtBars) {
  strategy_->atStart = [](IContext* context, const QJsonObject& params) {
    subscribeAll(context, params);
  };
  harness_.start();
  using enum order::Direction;
  std::list<Order> sent;
  context_.sendOrder(buy(account_, code_, 1, 95), sent);                                   // 1
  context_.sendOrder(stopOrder(account_, code_, Buy, order::Offset::Open, 1, 104), sent);  // 2
  context_.sendOrder(buy(account_, code_, 1, 90), sent);                                   // 3
  IKLine bar = barsOf({100})[0];
  KLineWriter(bar).set(kline::High, 103);
  KLineWriter(bar).set(kline::Low, 95);
  harness_.play(code_, "1m", {bar});
  EXPECT_THAT(context_.openOrders(), ElementsAre(1, 2, 3)) << "touched is not gone through";
  KLineWriter(bar).set(kline::High, 104);
  KLineWriter(bar).set(kline::Low, 94);
  context_.cancelOrder(3, "");
  harness_.play(code_, "1m", {bar});
  EXPECT_THAT(context_.openOrders(), IsEmpty());
  EXPECT_THAT(calls_, ElementsAre("start", "history", "order 1", "order 1", "order 1", "barSeries",
                                  "order 3", "fill 1 at 95", "order 3", "fill 1 at 104", "order 5",
                                  "barSeries"));
}

TEST_F(StrategyHarnessTest, shouldRejectAClosingOrderOfMoreThanIsHeld) {
  strategy_->atStart = [](IContext* context, const QJsonObject& params) {
    subscribeAll(context, params);
  };
  harness_.start();
  OrderRequest request = sell(account_, code_, 1);
  OrderWriter(request).setOffset(order::Offset::Close);
  std::list<Order> sent;
  context_.sendOrder(request, sent);
  harness_.play(code_, "1m", barsOf({10}));
  const OrderView rejected(*context_.order(1));
  EXPECT_EQ(rejected.status(), order::Status::Rejected);
  EXPECT_EQ(rejected.message(), "not enough position to close: 0 held, asked for 1");
}

TEST_F(StrategyHarnessTest, shouldDoWithAnOrderWhatTheTestSays) {
  harness_.setFillsAtBars(false);
  harness_.start();
  std::list<Order> sent;
  context_.sendOrder(buy(account_, code_, 4), sent);
  context_.sendOrder(sell(account_, code_, 1), sent);
  harness_.accept(1);
  harness_.fill(1, 100, 1);
  harness_.fill(1, 104, 1);
  EXPECT_EQ(OrderView(*context_.order(1)).meanFillPrice(), 102);
  harness_.finishCancel(1);
  harness_.reject(2, "no", 21);
  EXPECT_EQ(OrderView(*context_.order(2)).reason(), 21);
  EXPECT_THAT(calls_, ElementsAre("start", "order 1", "order 2", "fill 1 at 100", "order 2",
                                  "fill 1 at 104", "order 5", "order 6"));
  EXPECT_EQ(PositionView(context_.position(account_, code_)).longSide().openPrice(), 102);
  std::list<OrderFill> fills;
  context_.fillQueryForward(1, fills);
  EXPECT_EQ(fills.size(), 2u);
  EXPECT_THROW(harness_.fill(1, 100), std::invalid_argument);
  EXPECT_THROW(harness_.accept(7), std::invalid_argument);
}

TEST_F(StrategyHarnessTest, shouldFireTimersInOrderAndMoveTheTimeWithThem) {
  harness_.start();
  context_.now = 1000;
  context_.createTimer(100, 0, 2);  // At once, and once more.
  const int second = context_.createTimer(250, 1050, 0);
  context_.createTimer(0, 900, 0);  // Once.
  harness_.advanceTo(1350);
  context_.stopTimer(second);
  harness_.advanceTo(9000);
  EXPECT_THAT(calls_, ElementsAre("start", "timer 1000", "timer 1000", "timer 1050", "timer 1100",
                                  "timer 1300"));
  EXPECT_EQ(context_.now, 9000);
}

TEST_F(StrategyHarnessTest, shouldPlayQuotesThatAreSubscribed) {
  harness_.start();
  context_.subscribeQuote(code_, 0);
  const ICodeID other = context_.addCode("B.X");
  EXPECT_EQ(harness_.playQuotes(
                {tradeQuote(code_, 5, 1), tradeQuote(other, 6, 2), tradeQuote(code_, 7, 3)}),
            2);
  EXPECT_EQ(context_.now, 7);
  IDepthMarketData last;
  EXPECT_EQ(context_.getQuote(code_, last, 0).code, 0);
  EXPECT_EQ(QuoteView(last).lastPrice(), 3);
}

TEST_F(StrategyHarnessTest, shouldLetAnExceptionReachTheTest) {
  strategy_->atStart = [](IContext*, const QJsonObject&) { throw std::runtime_error("oh"); };
  EXPECT_THROW(harness_.start(), std::runtime_error);
}

TEST_F(StrategyHarnessTest, shouldStopInTheMiddleOfAPlayWhereTheStrategyEndsItsRun) {
  strategy_->atStart = [](IContext* context, const QJsonObject& params) {
    subscribeAll(context, params);
  };
  strategy_->atBar = [](IContext* context, const IKLine& bar) {
    if (KLineView(bar).close() == 2) context->setFinish();
  };
  harness_.start();
  EXPECT_EQ(harness_.play(code_, "1m", barsOf({1, 2, 3})), 2);
  EXPECT_EQ(context_.ending, RecordingContext::End::Finished);
  EXPECT_EQ(calls_.back(), "stop");
}

TEST(BarSession, shouldMakeTheSameBarsOfTheSameSessionOnThePriceTick) {
  BarSession session;
  session.priceTick = 0.2;
  session.firstPrice = 3;
  session.bars = 500;
  const auto bars = makeBars(session);
  EXPECT_EQ(bars, makeBars(session));
  ASSERT_EQ(bars.size(), 500u);
  int64 time = session.beginTime;
  for (const IKLine& bar : bars) {
    const KLineView view(bar);
    EXPECT_EQ(view.beginTime(), time);
    time = view.endTime();
    EXPECT_GE(view.low(), 0.2);
    for (const double price : {view.open(), view.close()}) {
      EXPECT_LE(view.low(), price);
      EXPECT_GE(view.high(), price);
      EXPECT_EQ(price, std::nearbyint(price * 5) / 5) << "the double of its decimal text";
    }
  }
  session.seed = 2;
  EXPECT_NE(bars, makeBars(session));
}

}  // namespace
}  // namespace orvane
