#include "bench/RunnerFarm.h"

#include <QJsonObject>
#include <string>

#include "sdk/Strategy.h"

namespace orvane::bench {
namespace {

Receiver* nextReceiver = nullptr;

class PassingStrategy final : public Strategy {
 public:
  /// The platform has no quotes of it; the runner's books take it all the same.
  void onStart(IContext* context, const QJsonObject& /*params*/) override {
    ICodeID code;
    code.id = kFarmCodeId;
    context->subscribeQuote(code, 0);
  }
  void onQuote(IContext* /*context*/, const IDepthMarketData& quote) override {
    to_->onQuote(quote);
  }

 private:
  Receiver* const to_ = nextReceiver;
};

IStrategy* createPassingStrategy() { return new PassingStrategy; }

}  // namespace

RunnerFarm::RunnerFarm(const Receivers& receivers) {
  PlatformOptions options;
  options.mode = PlatformOptions::Mode::Live;
  options.poolThreads = 1;
  platform_ = std::make_unique<EmbeddedPlatform>(options);
  platform_->setSymbolHook(
      [](const std::string&, void*) { return reinterpret_cast<void*>(&createPassingStrategy); });
  installPlatform(platform_.get());
  for (const auto& receiver : receivers) {
    nextReceiver = receiver.get();
    auto runner = std::make_shared<RunnerContext>("runner " + std::to_string(runners_.size()), 0);
    runner->shared().strategyPath = ORVANE_ANY_MODULE;
    runner->startEvent();
    runner->start({});
    platform_->drain();
    runners_.push_back(std::move(runner));
  }
}

RunnerFarm::~RunnerFarm() {
  for (const auto& runner : runners_) runner->stop();
  platform_->drain();
  for (const auto& runner : runners_) runner->stopEvent();
  runners_.clear();
  platform_->drain();
  installPlatform(nullptr);
}

}  // namespace orvane::bench
