// A small host outside the tree: plays bars that it makes itself through a strategy module.
// Usage: host MODULE. Exit code 0 if the strategy saw what was played.
#include <QJsonArray>
#include <QJsonObject>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <orvane/EventStrategy/ov.strategy.runner/IRunner.h>
#include <orvane/EventStrategy/ov.strategy.runner/IRunnerFactory.h>
#include <orvane/EventStrategy/ov.strategy.runner/IRunnerSpi.h>
#include <orvane/platform/EmbeddedPlatform.h>

namespace {

constexpr int kBars = 10;
constexpr orvane::int64 kMinuteMs = 60'000;
constexpr orvane::int64 kBegin = 1'609'754'400'000;  // 2021-01-04 10:00 UTC.

class Spi : public orvane::IRunnerSpi {
 public:
  void onStatus(int status, const std::string& message) override {
    const std::lock_guard lock(mutex_);
    statuses_.push_back(status);
    if (!message.empty()) std::printf("status %d: %s\n", status, message.c_str());
  }
  void onNotify(const QJsonObject&) override {}
  void onEnvs(const std::map<std::string, std::string>& values) override {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, value] : values) envs_[key] = value;
  }
  void onEnvItems(const std::list<orvane::EnvItem>&) override {}

  std::vector<int> statuses() {
    const std::lock_guard lock(mutex_);
    return statuses_;
  }
  std::string env(const std::string& key) {
    const std::lock_guard lock(mutex_);
    return envs_[key];
  }

 private:
  std::mutex mutex_;
  std::vector<int> statuses_;
  std::map<std::string, std::string> envs_;
};

orvane::BarSeries makeBars(const orvane::ICodeID& code) {
  orvane::BarSeries series;
  series.code = code;
  series.periodMs = kMinuteMs;
  series.timeZone = "UTC";
  series.origin = "made by hand";
  for (int i = 0; i < kBars; ++i) {
    orvane::IKLine bar;
    orvane::KLineWriter writer(bar);
    writer.setTimes(kBegin + i * kMinuteMs, kBegin + (i + 1) * kMinuteMs);
    for (const auto word :
         {orvane::kline::Open, orvane::kline::High, orvane::kline::Low, orvane::kline::Close})
      writer.set(word, 100.0 + i);
    writer.set(orvane::kline::Volume, 1);
    writer.setDayAndFlags(20210104, 0);
    series.bars.push_back(bar);
  }
  return series;
}

int check(bool right, const std::string& what) {
  std::printf("%s: %s\n", right ? "ok" : "WRONG", what.c_str());
  return right ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  orvane::EmbeddedPlatform platform;
  orvane::Instrument instrument;
  instrument.code = "TEST";
  instrument.market = "OUTSIDE";
  instrument.priceTick = "1";
  platform.addBars(makeBars(platform.addInstrument(instrument)));
  orvane::installPlatform(&platform);

  auto spi = std::make_shared<Spi>();
  auto runner = orvane::IRunnerFactory::instance()->createRunner("outside", 0);
  runner->setSpi(spi);
  runner->setStrategyPath(argv[1]);
  const QJsonObject series{{"code", "TEST.OUTSIDE"}, {"kind", "bars"}, {"frequency", "1m"}};
  runner->start(QJsonObject{{"data", QJsonArray{series}}});
  platform.run();
  runner->stop();
  platform.drain();
  orvane::IRunnerFactory::instance()->destroyRunner("outside");
  runner.reset();
  platform.drain();
  orvane::installPlatform(nullptr);

  // Closes of 100 to 109 sum up to 1045.
  return check(spi->statuses() == std::vector<int>{orvane::RunnerRunning, orvane::RunnerStopped},
               "the run began and stopped") +
         check(spi->env("bars") == "10", "bars seen: " + spi->env("bars")) +
         check(spi->env("closes") == "1045", "sum of closes: " + spi->env("closes")) +
         check(spi->env("frequency") == "1m", "frequency: " + spi->env("frequency"));
}
