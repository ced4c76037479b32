#include <gtest/gtest.h>

#include <QJsonArray>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "host/DataSet.h"
#include "host/InstrumentInputs.h"
#include "host/LogSetup.h"
#include "host/RunRecord.h"
#include "host/StrategyTap.h"
#include "platform/EmbeddedPlatform.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

struct Outcome {
  std::string digest;
  std::uint64_t bars = 0;
};

Outcome outcomeOf(const RunRecords& records) {
  const auto record = records.find("runner");
  if (!record) return {};
  return {record->digest->text(), record->bars};
}

/// Plays a file once, resets, and plays it again; answers what each run received.
std::pair<Outcome, Outcome> playTwice(const std::string& bars, const QJsonObject& params) {
  RunRecords records(true);
  StrategyTap tap(records);
  EmbeddedPlatform platform;
  RunPlan plan;
  plan.data.push_back({DataFileRequest::Kind::Bars, "A.X", {bars}, {}});
  for (LoadedBars& loaded : loadDataSet(plan, {}).bars) {
    Instrument instrument;
    setCodeText(instrument, loaded.code);
    loaded.series.code = platform.addInstrument(instrument);
    platform.addBars(std::move(loaded.series));
  }
  platform.setSymbolHook(
      [&](const std::string& symbol, void* address) { return tap.hook(symbol, address); });
  installPlatform(&platform);
  auto runner = IRunnerFactory::instance()->createRunner("runner", 0);
  runner->setStrategyPath(test::testModule("timer_strategy"));
  runner->start(params);
  platform.run();
  platform.drain();
  const Outcome first = outcomeOf(records);

  platform.rewind();
  runner->reset4PlayBack(params);
  platform.run();
  platform.drain();
  const Outcome second = outcomeOf(records);

  IRunnerFactory::instance()->destroyRunner("runner");
  runner.reset();
  platform.drain();
  installPlatform(nullptr);
  return {first, second};
}

TEST(PlaybackReset, shouldGiveTheSameDigestAsTheFirstRunAfterReset4PlayBack) {
  setUpLog({"", "warn", "warn"});
  const test::TempFolder folder;
  const auto path = folder.write("bars.csv", test::barsCsv());
  const QJsonObject series{{"code", "A.X"}, {"kind", "bars"}, {"frequency", "1m"}};
  const auto [fresh, reset] = playTwice(path, {{"data", QJsonArray{series}}});
  EXPECT_GT(fresh.bars, 0u);
  EXPECT_EQ(reset.bars, fresh.bars);
  EXPECT_EQ(reset.digest, fresh.digest);
}

}  // namespace
}  // namespace orvane
