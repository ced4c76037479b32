// Plays a file of bars through a strategy module: SmallHost MODULE BARS.csv
#include <orvane/EventStrategy/ov.strategy.runner/IRunner.h>
#include <orvane/EventStrategy/ov.strategy.runner/IRunnerFactory.h>
#include <orvane/EventStrategy/ov.strategy.runner/IRunnerSpi.h>
#include <orvane/platform/EmbeddedPlatform.h>
#include <orvane/platform/market/files/DataFiles.h>
#include <orvane/sdk/Text.h>

#include <QJsonArray>
#include <atomic>
#include <exception>
#include <iostream>

class Spi : public orvane::IRunnerSpi {  // Called on pool threads.
 public:
  void onStatus(int status, const std::string& message) override {
    if (status == orvane::RunnerError) failed = true;
    std::cout << "status " << status << " " << orvane::utf8(message) << std::endl;
  }
  void onNotify(const QJsonObject&) override {}
  void onEnvs(const std::map<std::string, std::string>& values) override {
    for (const auto& [key, value] : values) std::cout << key << "=" << value << std::endl;
  }
  void onEnvItems(const std::list<orvane::EnvItem>&) override {}
  std::atomic<bool> failed{false};
};

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  orvane::EmbeddedPlatform platform;  // It outlives every runner.
  orvane::DataFileRequest request;
  request.paths = {argv[2]};
  QJsonArray data;  // What `subscribeAll` of the strategy kit looks at.
  for (orvane::LoadedBars& loaded : orvane::loadBars(request)) {
    orvane::Instrument instrument;
    instrument.code = loaded.code;
    loaded.series.code = platform.addInstrument(instrument);
    data.append(QJsonObject{{"code", QString::fromStdString(loaded.code)},
                            {"kind", "bars"},
                            {"frequency", QString::number(loaded.series.periodMs / 1000) + "s"}});
    platform.addBars(std::move(loaded.series));
  }
  orvane::installPlatform(&platform);
  const auto spi = std::make_shared<Spi>();
  auto runner = orvane::IRunnerFactory::instance()->createRunner("mine", 0);
  runner->setSpi(spi);
  runner->setStrategyPath(argv[1]);
  runner->start(QJsonObject{{"data", data}});
  platform.run();  // Returns when the data are played and digested.
  runner->stop();
  platform.drain();  // Now `onStop` is through, and the status told.
  runner.reset();    // A runner goes with its last reference, and needs the platform for it.
  orvane::IRunnerFactory::instance()->destroyRunner("mine");
  platform.drain();
  orvane::installPlatform(nullptr);
  return spi->failed ? 1 : 0;
} catch (const std::exception& error) {  // A file that is wrong, in UTF-8: line, field and value.
  std::cerr << error.what() << std::endl;
  return 2;
}
