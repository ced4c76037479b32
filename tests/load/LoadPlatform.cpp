#include "tests/load/LoadPlatform.h"

#include <malloc.h>

#include <QJsonArray>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "bench/BenchBars.h"
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
  Instrument instrument;
  instrument.code = name;
  const ICodeID code = platform_->addInstrument(instrument);
  if (bars != 0) platform_->addBars(bench::makeBars(code, bars, 1'000'000));
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
