// Every block of the guide about parameters that change, indicators, trading and testing. What is
// written around them makes them one strategy and its test: so they compile, and do what it says.
#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/Indicators.h>
#include <orvane/sdk/ParamList.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Trader.h>
#include <orvane/sdk/Views.h>
#include <orvane/sdk/testing/BarSession.h>
#include <orvane/sdk/testing/StrategyHarness.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

int failures = 0;

#define EXPECT_EQ(actual, expected) \
  if (!((actual) == (expected))) std::printf("line %d: %s\n", __LINE__, #actual), ++failures

// Goes long with the second bar; with the mode "both" through every call of the trader.
class MyStrategy : public orvane::Strategy {
 public:
  // The guide's own lines stay as they are there.
  // clang-format off
  MyStrategy() {
    params_.integer("fast", fast_, 1, 1000);  // what fast_ holds now is the default
    params_.integer("slow", slow_, 2, 1000);
    params_.choice("mode", mode_, {"long", "both"});
    params_.below("fast", fast_, "slow", slow_);  // or check(...): a rule of your own
  }
  void onStart(orvane::IContext* context, const QJsonObject& json) override {
    if (!params_.start(context, json)) return;  // in onStart: ended the run with all errors at once
    orvane::TradingAccountID account;
    if (orvane::findOwnAccount(context, json, account).code != 0) return;
    trader_ = orvane::Trader(account);
    for (const auto& asked : orvane::subscribeAllOrFail(context, json))
      context->subscribeTrade(account, asked.code);
  }
  void onUpdate(orvane::IContext* context, const QJsonObject& json) override {
    const std::string errors = params_.update(json);  // what json does not name stays
    if (!errors.empty()) context->logWarn(orvane::gbk(errors), true);
  }
  void onBarSeries(orvane::IContext* context, const orvane::ICodeID& code, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    for (const orvane::IKLine& line : bars) {
      const orvane::KLineView bar(line);
      const bool breaksOut = highs_.isReady() && bar.high() > highs_.value();  // of the bars before
      highs_.add(bar.high());
      atr_.add(bar);  // a KLineView
      breaks_ += breaksOut ? 1 : 0;
      if (orvane::isStrategyLogged(orvane::StrategyLogLevel::Debug))
        context->logDebug(fullState(), true);
      if (++seen_ != 2) continue;
      if (mode_ == "both")
        trade(context, code);
      else
        trader_.target(context, code, 1);
    }
  }
  void onFill(orvane::IContext*, const orvane::OrderFill&) override { ++fills_; }
  void onStop(orvane::IContext* context) override {
    context->setEnvs({{"fills", std::to_string(fills_)}, {"breaks", std::to_string(breaks_)},
                      {"fast", std::to_string(fast_)}}, true);
  }

 private:
  std::string fullState() const { return "breaks=" + std::to_string(breaks_); }
  void trade(orvane::IContext* context, const orvane::ICodeID& code) {
    trader_.target(context, code, 2);        // to be long 2: sends what is missing
    trader_.target(context, code, -1, 99.5); // to be short 1, with limit orders
    trader_.target(context, code, 0);        // to be flat
    trader_.buy(context, code, 1);           // opens, or adds to, a long position
    trader_.close(context, code);            // closes both sides
    trader_.cancelAll(context, code);        // every order of yours at work in it
  }
  // clang-format on

  orvane::ParamList params_;
  int fast_ = 5, slow_ = 20;
  std::string mode_ = "long";
  orvane::Trader trader_;
  orvane::Atr atr_{14};
  orvane::RollingHigh highs_{20};
  int seen_ = 0, fills_ = 0, breaks_ = 0;
};

void testAsTheGuideDoes() {
  // clang-format off
  orvane::StrategyHarness harness(createStrategy());       // what ORVANE_STRATEGY made
  const auto code = harness.addSeries("A.X", "1m");        // offered under "data", as by a host
  const auto account = harness.addAccount("main");         // and this one under "account"
  harness.start({{"fast", 1}, {"slow", 2}});
  harness.play(code, "1m", orvane::barsOf({10, 11, 12}));  // or makeBars({}), a made-up session
  harness.stop();
  auto& context = harness.context();                       // keeps what the strategy did
  EXPECT_EQ(context.orders.size(), 1u);                    // or what your framework has
  EXPECT_EQ(context.env("fills", ""), "1");
  // clang-format on
  EXPECT_EQ(context.orders.front().request.account.accountKey, account.accountKey);
}

void testTheRest() {
  orvane::StrategyHarness harness(createStrategy());
  const auto code = harness.addSeries("A.X", "1m");
  harness.addAccount("main");
  harness.start({{"mode", "both"}});
  harness.update({{"fast", 30}});  // Not below "slow": refused as a whole.
  harness.update({{"fast", 7}});
  std::vector<double> closes;
  for (int i = 0; i < 30; ++i) closes.push_back(10 + i);
  harness.play(code, "1m", orvane::barsOf(closes));
  harness.stop();
  EXPECT_EQ(harness.context().env("fast", ""), "7");
  EXPECT_EQ(harness.context().env("breaks", ""), "10");
  EXPECT_EQ(harness.context().orders.size() > 1, true);
  EXPECT_EQ(harness.context().cancels.empty(), false);
}

}  // namespace

ORVANE_STRATEGY(MyStrategy)

int main() {
  testAsTheGuideDoes();
  testTheRest();
  return failures == 0 ? 0 : 1;
}
