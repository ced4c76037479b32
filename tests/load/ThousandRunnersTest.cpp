// A thousand runners in one process, each with its subscriptions and orders.

#include <gtest/gtest.h>

#include <list>
#include <mutex>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "sdk/Accounts.h"
#include "sdk/Orders.h"
#include "sdk/Strategy.h"
#include "sdk/Subscriptions.h"
#include "tests/load/LoadPlatform.h"

namespace orvane::load {
namespace {

constexpr std::size_t kBars = 12;
constexpr std::size_t kCodes = 10;

/// What one strategy was told.
struct Told {
  std::size_t bars = 0;
  std::size_t fills = 0;
  std::size_t timers = 0;
};

std::mutex toldMutex;
std::vector<Told> toldByAll;

/// Opens and closes by turns, with each bar.
class Trader final : public Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    const auto asked = subscribeAllOrFail(context, params);
    if (asked.empty() || findOwnAccount(context, params, account_).code != 0) return;
    code_ = asked.front().code;
    context->subscribeTrade(account_, code_);
    context->createTimer(300'000, 0, kNoLimit);
  }
  void onBarSeries(IContext* context, const ICodeID&, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus&, int) override {
    if (bars.empty()) return;
    told_.bars += bars.size();
    using namespace order;
    holds_ = !holds_;
    std::list<Order> sent;
    context->sendOrder(marketOrder(account_, code_, holds_ ? Direction::Buy : Direction::Sell,
                                   holds_ ? Offset::Open : Offset::Close, 1),
                       sent);
  }
  void onFill(IContext*, const OrderFill&) override { ++told_.fills; }
  void onTimer(IContext*, int, int64) override { ++told_.timers; }
  void onStop(IContext*) override {
    const std::lock_guard lock(toldMutex);
    toldByAll.push_back(told_);
  }

 private:
  TradingAccountID account_;
  ICodeID code_;
  bool holds_ = false;
  Told told_;
};

IStrategy* makeTrader() { return new Trader; }

TEST(ThousandRunners, shouldEachGetItsOwnBarsFillsAndTimersInOneProcess) {
  EmbeddedPlatform::takeLostCalls();  // Other tests of this process may have lost some.
  const std::size_t count = amount("ORVANE_LOAD_RUNNERS", 1000);
  toldByAll.clear();
  PlatformOptions options;
  for (std::size_t i = 0; i < count; ++i)
    options.trade.accounts.push_back({"a" + std::to_string(i), "CNY", "", 1});
  LoadPlatform platform(makeTrader, options);
  for (std::size_t i = 0; i < kCodes; ++i) platform.addCode("C" + std::to_string(i), kBars);
  std::vector<std::shared_ptr<IRunner>> runners;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = "a" + std::to_string(i);
    runners.push_back(LoadPlatform::makeRunner(name));
    runners.back()->start(LoadPlatform::paramsOf("C" + std::to_string(i % kCodes), name));
  }
  platform->run();
  for (const auto& runner : runners) {
    runner->stop();
    IRunnerFactory::instance()->destroyRunner(runner->name());
  }
  platform->drain();
  runners.clear();
  ASSERT_EQ(toldByAll.size(), count);
  for (const Told& told : toldByAll) {
    ASSERT_EQ(told.bars, kBars);
    ASSERT_EQ(told.fills, kBars - 1);  // The last bar's order meets no market any more.
    ASSERT_EQ(told.timers, toldByAll.front().timers);
  }
  EXPECT_GT(toldByAll.front().timers, 1U);
  for (const AccountResult& account : platform->tradeResults()) {
    ASSERT_EQ(account.sources.size(), 1U);
    ASSERT_EQ(account.sources.front().fills.size(), kBars - 1);
  }
  EXPECT_EQ(EmbeddedPlatform::takeLostCalls(), "");
}

}  // namespace
}  // namespace orvane::load
