#include "tests/load/LoadPlatform.h"

#include <malloc.h>

#include <QJsonArray>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "platform/fields/KLineView.h"
#include "tests/support/RandomRuns.h"

namespace orvane::load {

std::size_t amount(const char* variable, std::size_t usual) {
  const char* const wanted = std::getenv(variable);
  if (wanted != nullptr) return std::strtoull(wanted, nullptr, 10);
  return usual / support::kSanitizerDivisor;
}

std::size_t usedBytes() {
  // The allocator of a sanitizer keeps what was given back.
  if (support::kSanitizerDivisor != 1) return 0;
  return mallinfo2().uordblks + mallinfo2().hblkhd;
}

int threadCount() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (word == "Threads:") {
      int count = 0;
      status >> count;
      return count;
    }
  return 0;
}

LoadPlatform::LoadPlatform(Maker maker, PlatformOptions options)
    : platform_(std::make_unique<EmbeddedPlatform>(std::move(options))) {
  if (maker != nullptr)
    platform_->setSymbolHook(
        [maker](const std::string&, void*) { return reinterpret_cast<void*>(maker); });
  installPlatform(platform_.get());
}

LoadPlatform::~LoadPlatform() {
  platform_->drain();
  installPlatform(nullptr);
}

ICodeID LoadPlatform::addCode(const std::string& name, std::size_t bars) {
  constexpr int64 kStart = 1704067200000;  // 2024-01-01 00:00 UTC.
  constexpr int64 kMinute = 60000;
  Instrument instrument;
  instrument.code = name;
  BarSeries series;
  series.code = platform_->addInstrument(instrument);
  series.periodMs = kMinute;
  series.timeZone = "UTC";
  series.origin = "load";
  series.bars.resize(bars);
  for (std::size_t i = 0; i < bars; ++i) {
    KLineWriter writer(series.bars[i]);
    const int64 begin = kStart + static_cast<int64>(i) * kMinute;
    writer.setTimes(begin, begin + kMinute);
    const double close = 100 + static_cast<double>(i % 50);
    writer.set(kline::Open, close);
    writer.set(kline::High, close + 1);
    writer.set(kline::Low, close - 1);
    writer.set(kline::Close, close);
    writer.set(kline::Volume, 1'000'000);
    writer.setDayAndFlags(20240101, 0);
  }
  const ICodeID code = series.code;
  if (bars != 0) platform_->addBars(std::move(series));
  return code;
}

std::shared_ptr<IRunner> LoadPlatform::makeRunner(const std::string& name) {
  auto runner = IRunnerFactory::instance()->createRunner(name, 0);
  runner->setStrategyPath(ORVANE_ANY_MODULE);
  runner->setOrderSource(name);
  return runner;
}

QJsonObject LoadPlatform::paramsOf(const std::string& code, const std::string& account) {
  const QJsonObject series{
      {"code", QString::fromStdString(code)}, {"kind", "bars"}, {"frequency", "1m"}};
  return {{"data", QJsonArray{series}}, {"account", QString::fromStdString(account)}};
}

}  // namespace orvane::load
