#include "bench/BenchStrategy.h"

#include <QJsonObject>
#include <atomic>
#include <list>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "sdk/Orders.h"
#include "sdk/Strategy.h"

namespace orvane::bench {
namespace {

Wanted wantedNow = Wanted::Bars;
ICodeID codeNow;
std::atomic<std::size_t> seen{0};
std::atomic<std::size_t> ordersTold{0};

class CountingStrategy final : public Strategy {
 public:
  ~CountingStrategy() override { seen += seen_; }

  void onStart(IContext* context, const QJsonObject& /*params*/) override {
    if (wantedNow == Wanted::Trading || wantedNow == Wanted::QuoteTrading) {
      context->findTradingAccount(kAccount, 0, account_);
      context->subscribeTrade(account_, codeNow);
    }
    if (wantedNow == Wanted::Quotes || wantedNow == Wanted::QuoteTrading)
      context->subscribeQuote(codeNow, 0);
    else
      context->subscribeKline(kRequestId, codeNow, "1m", kUnsetTime, kUnsetTime, 0, 0);
  }
  void onUpdate(IContext* context, const QJsonObject& params) override {
    const OrderRequest request =
        limitOrder(account_, codeNow, order::Direction::Buy, order::Offset::Open, 1, 0.01);
    std::list<Order> sent;
    for (int left = params.value("orders").toInt(); left > 0; --left)
      context->sendOrder(request, sent);
  }
  void onOrder(IContext* /*context*/, const Order& /*order*/) override { ++ordersTold; }
  void onQuote(IContext* context, const IDepthMarketData& /*quote*/) override {
    if (seen_++ % kQuotesPerOrder == 0 && wantedNow == Wanted::QuoteTrading) trade(context);
  }
  void onBarSeriesById(IContext* context, int /*requestId*/, const ICodeID& /*code*/,
                       const std::string& /*frequency*/, const std::vector<IKLine>& bars,
                       const ResultStatus& /*status*/, int /*batchFlag*/) override {
    seen_ += bars.size();
    if (wantedNow == Wanted::Trading) trade(context);
  }

 private:
  void trade(IContext* context) {
    holds_ = !holds_;
    std::list<Order> sent;
    context->sendOrder(
        marketOrder(account_, codeNow, holds_ ? order::Direction::Buy : order::Direction::Sell,
                    holds_ ? order::Offset::Open : order::Offset::Close, 1),
        sent);
  }

  TradingAccountID account_;
  std::size_t seen_ = 0;
  bool holds_ = false;
};

IStrategy* createCountingStrategy() { return new CountingStrategy; }

}  // namespace

Playback::Playback() {
  PlatformOptions options;
  options.trade.accounts = {{kAccount, "CNY", "", 1}};
  platform_ = std::make_unique<EmbeddedPlatform>(options);
  seen = 0;
  platform_->setSymbolHook(
      [](const std::string&, void*) { return reinterpret_cast<void*>(&createCountingStrategy); });
  installPlatform(platform_.get());
}

Playback::~Playback() {
  if (!runners_.empty() || context_) stop();
  platform_->drain();
  installPlatform(nullptr);
}

ICodeID Playback::addCode() {
  Instrument instrument;
  instrument.code = "BENCH";
  return code_ = platform_->addInstrument(instrument);
}

void Playback::start(Wanted wanted, int count) {
  wantedNow = wanted;
  codeNow = code_;
  for (int i = 0; i < count; ++i) {
    runners_.push_back(IRunnerFactory::instance()->createRunner("bench" + std::to_string(i), 0));
    runners_.back()->setStrategyPath(ORVANE_ANY_MODULE);
    runners_.back()->start({});
  }
}

std::shared_ptr<RunnerContext> Playback::startContext(const ICodeID& code, Wanted wanted) {
  wantedNow = wanted;
  codeNow = code;
  context_ = std::make_shared<RunnerContext>("bench", 0);
  context_->shared().strategyPath = ORVANE_ANY_MODULE;
  context_->startEvent();
  context_->start({});
  platform_->drain();
  return context_;
}

std::size_t Playback::sendOrders(int count) {
  ordersTold = 0;
  runners_.front()->update({{"orders", count}});
  platform_->drain();
  return ordersTold;
}

std::size_t Playback::stop() {
  for (const auto& runner : runners_) runner->stop();
  platform_->drain();
  for (std::size_t i = 0; i < runners_.size(); ++i)
    IRunnerFactory::instance()->destroyRunner("bench" + std::to_string(i));
  runners_.clear();
  if (context_) {
    context_->stop();
    platform_->drain();
    context_->stopEvent();
    context_.reset();
  }
  platform_->drain();
  return seen;
}

}  // namespace orvane::bench
