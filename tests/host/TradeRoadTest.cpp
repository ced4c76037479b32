// The whole road of an order: strategy, context, trade source, platform, paper exchange, and back.

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "host/LogSetup.h"
#include "platform/EmbeddedPlatform.h"
#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "platform/fields/PositionView.h"
#include "sdk/Strategy.h"
#include "services/Common/Timestamp.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

constexpr int64 kMinuteMs = 60'000;
constexpr int64 kRoadStart = 1'609'718'400'000;  // 2021-01-04 00:00 UTC.

using Lines = std::vector<std::string>;

/// What the strategies of a test do, and what they saw, by order source.
struct Script {
  std::function<void(IContext&, const TradingAccountID&, const ICodeID&, int bar)> onBar;
  bool isQuick = true;
  std::mutex mutex;
  std::map<std::string, Lines> lines;

  void note(IContext* context, const std::string& line) {
    const int64 now = (Timestamp::now(1).toUtcMsEponch() - kRoadStart) / kMinuteMs;
    const std::lock_guard lock(mutex);
    lines[context->orderSource()].push_back("@" + std::to_string(now) + " " + line);
  }
};

Script* script = nullptr;

class ScriptedTrader final : public Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    context->setNotifyQuick(script->isQuick);
    ASSERT_EQ(context->findTradingAccount("A1", 1, account_).code, 0);
    ASSERT_EQ(context->codeServiceQuery(params["code"].toString().toStdString(), code_, 0).code, 0);
    context->subscribeTrade(account_, code_);
    context->subscribeKline(code_, "1m", kUnsetTime, kUnsetTime, 0, 0);
  }
  void onBarSeries(IContext* context, const ICodeID&, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus&, int flags) override {
    if (flags != 0) return;
    for (const IKLine& bar : bars) {
      const auto at = static_cast<int>((KLineView(bar).endTime() - kRoadStart) / kMinuteMs);
      if (script->onBar) script->onBar(*context, account_, code_, at);
    }
  }
  void onOrder(IContext* context, const Order& order) override {
    script->note(context, "order " + std::to_string(order.id) + " " +
                              std::to_string(order.status()) + " " + order.text5);
  }
  void onFill(IContext* context, const OrderFill& fill) override {
    const FillView view(fill);
    script->note(context, std::string("fill ") + std::to_string(view.orderId()) +
                              (view.isBuy() ? " buy " : " sell ") + std::to_string(view.volume()) +
                              "@" + std::to_string(view.price()));
  }
  void onAccountStatus(IContext* context, const TradingAccountID& account, int code,
                       const ResultStatus&) override {
    script->note(context, "status " + account.account + " " + std::to_string(code));
  }

 private:
  TradingAccountID account_;
  ICodeID code_;
};

IStrategy* createTrader() { return new ScriptedTrader; }

OrderRequest market(const TradingAccountID& account, const ICodeID& code,
                    order::Direction direction, double volume, order::Offset offset) {
  OrderRequest request;
  request.account = account;
  request.code = code;
  OrderWriter writer(request);
  writer.setType(order::Type::Market);
  writer.setDirection(direction);
  writer.setOffset(offset);
  writer.setVolume(volume);
  return request;
}

BarSeries rising(const ICodeID& code, int count) {
  BarSeries series;
  series.code = code;
  series.periodMs = kMinuteMs;
  series.timeZone = "UTC";
  series.origin = "test";
  for (int i = 0; i < count; ++i) {
    IKLine bar;
    KLineWriter writer(bar);
    writer.setTimes(kRoadStart + i * kMinuteMs, kRoadStart + (i + 1) * kMinuteMs);
    for (const kline::Word at : {kline::Open, kline::High, kline::Low, kline::Close})
      writer.set(at, i + 1);
    writer.set(kline::Volume, 1000);
    writer.setDayAndFlags(20210104, 0);
    series.bars.push_back(bar);
  }
  return series;
}

/// Plays `bars` bars to runners of the given order sources, each on a code of its own.
std::vector<AccountResult> play(Script& acts, const std::vector<std::string>& sources,
                                PlatformOptions options = {}, int bars = 20) {
  script = &acts;
  setUpLog({"", "warn", "warn"});
  options.trade.accounts = {{"A1", "CNY", "", 1}};
  options.trade.sources = sources;
  EmbeddedPlatform platform(options);
  platform.setSymbolHook(
      [](const std::string&, void*) { return reinterpret_cast<void*>(&createTrader); });
  installPlatform(&platform);
  std::vector<std::shared_ptr<IRunner>> runners;
  for (const std::string& source : sources) {
    Instrument instrument;
    instrument.code = "C" + source;
    instrument.market = "X";
    platform.addBars(rising(platform.addInstrument(instrument), bars));
    runners.push_back(IRunnerFactory::instance()->createRunner("road-" + source, 0));
    runners.back()->setOrderSource(source);
    runners.back()->setStrategyPath(test::testModule("timer_strategy"));
    runners.back()->start({{"code", QString::fromStdString("C" + source + ".X")}});
  }
  platform.run();
  std::vector<AccountResult> results = platform.tradeResults();
  for (const auto& runner : runners) runner->stop();
  platform.drain();
  for (const std::string& source : sources)
    IRunnerFactory::instance()->destroyRunner("road-" + source);
  runners.clear();
  platform.drain();
  installPlatform(nullptr);
  script = nullptr;
  return results;
}

TEST(TradeRoad, shouldFillAStrategysMarketOrderAtTheNextOpenAndTellItOrderAndFill) {
  Script acts;
  acts.onBar = [](IContext& context, const TradingAccountID& account, const ICodeID& code,
                  int bar) {
    std::list<Order> orders;
    if (bar == 3) {
      const OrderRequest request =
          market(account, code, order::Direction::Buy, 2, order::Offset::Open);
      EXPECT_EQ(context.sendOrder(request, orders).code, 0);
    }
    Position position;
    EXPECT_EQ(context.getPosition(account, code, position, "S").code, 0);
    EXPECT_EQ(PositionView(position).longSide().volume(), bar > 3 ? 2 : 0);
  };
  const std::vector<AccountResult> results = play(acts, {"S"});
  Lines told = acts.lines["S"];
  std::erase_if(told, [](const std::string& line) { return line.find("status") != line.npos; });
  EXPECT_EQ(told, (Lines{"@3 order 1000000001 1 ", "@4 order 1000000001 3 ",
                         "@4 fill 1000000001 buy 2.000000@4.000000"}));
  ASSERT_EQ(results.at(0).sources.size(), 1u);
  EXPECT_EQ(results.at(0).sources[0].fills.size(), 1u);
}

TEST(TradeRoad, shouldTellEachRunnerItsOwnOrdersAloneAndTheSameWithAnyNumberOfThreads) {
  const std::vector<std::string> sources = {"S1", "S2", "S3", "S4"};
  std::map<std::string, Lines> expected;
  for (const int threads : {1, 2, 8}) {
    Script acts;
    acts.onBar = [](IContext& context, const TradingAccountID& account, const ICodeID& code,
                    int bar) {
      std::list<Order> orders;
      const bool isOpen = bar % 2 == 0;
      context.sendOrder(
          market(account, code, isOpen ? order::Direction::Buy : order::Direction::Sell, 1,
                 isOpen ? order::Offset::Open : order::Offset::Close),
          orders);
    };
    PlatformOptions options;
    options.poolThreads = threads;
    play(acts, sources, options, 200);
    if (threads == 1) expected = acts.lines;
    EXPECT_EQ(acts.lines, expected) << threads;
  }
  ASSERT_EQ(expected.size(), 4u);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    EXPECT_GT(expected[sources[i]].size(), 500u);
    for (const std::string& line : expected[sources[i]])
      EXPECT_TRUE(line.find("status") != line.npos ||
                  line.find(" " + std::to_string(i + 1) + "00000") != line.npos)
          << line;
  }
}

TEST(TradeRoad, shouldTellWhatHappenedDuringAnOutageOnceAfterTheReconnect) {
  for (const bool isQuick : {true, false}) {
    Script acts;
    acts.isQuick = isQuick;
    acts.onBar = [](IContext& context, const TradingAccountID& account, const ICodeID& code,
                    int bar) {
      if (bar != 4) return;
      OrderRequest request = market(account, code, order::Direction::Sell, 1, order::Offset::Open);
      OrderWriter writer(request);
      writer.setType(order::Type::Limit);
      writer.setTimeInForce(order::TimeInForce::UntilCancelled);
      writer.setLimitPrice(6.5);
      std::list<Order> orders;
      context.sendOrder(request, orders);
    };
    PlatformOptions options;
    for (const auto& [minute, isUp] :
         {std::pair{5, false}, std::pair{10, true}, std::pair{12, false}, std::pair{14, true}})
      options.trade.script.push_back({"A1", kRoadStart + minute * kMinuteMs, isUp});
    play(acts, {"S"}, options);
    Lines told = acts.lines["S"];
    EXPECT_EQ(std::count(told.begin(), told.end(), "@10 order 1000000001 3 "), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), "@10 fill 1000000001 sell 1.000000@7.000000"),
              1);
    std::erase_if(told, [](const std::string& line) { return line.find("fill") == line.npos; });
    EXPECT_EQ(told.size(), 1u) << "quick " << isQuick;
  }
}

}  // namespace
}  // namespace orvane
