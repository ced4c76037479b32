#include <gtest/gtest.h>

#include <QJsonArray>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "host/DataSet.h"
#include "host/InstrumentInputs.h"
#include "host/LogSetup.h"
#include "host/RunRecord.h"
#include "host/StrategyTap.h"
#include "platform/EmbeddedPlatform.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

/// Ends the play, once, when the strategy has notified its host so many times.
class Cutter final : public IRunnerSpi {
 public:
  Cutter(EmbeddedPlatform& platform, std::uint64_t at) : platform_(platform), left_(at) {}

  void onStatus(int, const std::string&) override {}
  void onNotify(const QJsonObject&) override {
    if (left_ != 0 && --left_ == 0) platform_.cancel();
  }
  void onEnvs(const std::map<std::string, std::string>&) override {}
  void onEnvItems(const std::list<EnvItem>&) override {}

 private:
  EmbeddedPlatform& platform_;
  std::uint64_t left_;
};

struct Outcome {
  std::string digest;
  std::uint64_t bars = 0;
};

/// Plays the series of `bars`, resets, plays it again to its end, stops the run, and answers what
/// the second play gave. With `cutAtNotification` the first play ends when the strategy has
/// notified its host that often.
Outcome playAfterReset(const std::string& bars, const QJsonObject& params,
                       std::uint64_t cutAtNotification = 0) {
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
  const auto cutter = std::make_shared<Cutter>(platform, cutAtNotification);
  runner->setSpi(cutter);
  runner->setStrategyPath(test::testModule("timer_strategy"));
  runner->start(params);
  platform.run();
  platform.drain();
  const std::uint64_t firstBars = records.find("runner")->bars;

  platform.rewind();
  runner->reset4PlayBack(params);
  platform.run();
  runner->stop();
  platform.drain();
  const auto record = records.find("runner");
  const Outcome second{record->digest->text(), record->bars};

  if (cutAtNotification == 0)
    EXPECT_EQ(firstBars, second.bars);
  else
    EXPECT_LT(firstBars, second.bars);
  IRunnerFactory::instance()->destroyRunner("runner");
  runner.reset();
  platform.drain();
  installPlatform(nullptr);
  return second;
}

/// The bars of a small file, and what a process of its own makes of them.
class PlaybackReset : public testing::Test {
 protected:
  void SetUp() override {
    setUpLog({"", "warn", "warn"});
    const auto result = test::runProgram({"run", "-s", test::testModule("timer_strategy"), "-b",
                                          "A.X=" + bars_, "--report", folder_ / "report"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const QJsonObject runner =
        test::readReport(folder_ / "report")["runners"].toArray()[0].toObject();
    fresh_ = {runner["digest"].toString().toStdString(),
              static_cast<std::uint64_t>(runner["bars"].toInteger())};
    params_ = runner["params"].toObject();
    ASSERT_GT(fresh_.bars, 0u);
    ASSERT_GT(runner["events"].toObject()["onTimer"].toInt(), 0);
  }

  test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  Outcome fresh_;
  QJsonObject params_;
};

TEST_F(PlaybackReset, shouldGiveTheDigestOfAFreshProcessAfterAWholeRun) {
  const Outcome reset = playAfterReset(bars_, params_);
  EXPECT_EQ(reset.bars, fresh_.bars);
  EXPECT_EQ(reset.digest, fresh_.digest);
}

TEST_F(PlaybackReset, shouldGiveTheDigestOfAFreshProcessAfterARunCutShort) {
  const Outcome reset = playAfterReset(bars_, params_, 7);
  EXPECT_EQ(reset.bars, fresh_.bars);
  EXPECT_EQ(reset.digest, fresh_.digest);
}

}  // namespace
}  // namespace orvane
