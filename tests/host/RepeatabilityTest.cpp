#include <fmt/core.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include "tests/host/Program.h"

namespace orvane {
namespace {

/// A generated session of ticks and bars, and runners over it.
class Repeatability : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(test::runProgram({"generate", "--out", folder_ / "", "--minutes", "20"}).exitCode, 0);
  }

  /// Runs `count` runners, of which the one named "this" is the same whatever the count, and
  /// answers the report.
  QJsonObject run(int count, int threads) {
    QJsonObject config =
        QJsonDocument::fromJson(QByteArray::fromStdString(test::readFile(folder_ / "run.json")))
            .object();
    QJsonArray runners;
    for (int i = 0; i < count; ++i) {
      const bool isThis = i == count / 2;
      QJsonObject runner{
          {"name", isThis ? QString("this") : QString("other%1").arg(i)},
          {"strategy", (isThis && !thisTrades_) || (!isThis && i % 2 == 0)
                           ? QString::fromStdString(test::testModule("timer_strategy"))
                           : QString("sma_cross")}};
      if (isThis && thisTrades_)
        runner["params"] = QJsonObject{{"fast", 2}, {"slow", 4}, {"mode", "longShort"}};
      runners.append(runner);
    }
    config["runners"] = runners;
    const std::string path =
        folder_.write("several.json", QJsonDocument(config).toJson().toStdString());
    const std::string report = folder_ / fmt::format("report{}", ++runs_);
    const auto result = test::runProgram({"run", path, "--threads", std::to_string(threads),
                                          "--report", report, "--strategy-log-level", "off"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return test::readReport(report);
  }

  static QJsonObject thisRunner(const QJsonObject& report) {
    const QJsonArray runners = report["runners"].toArray();
    for (const auto& runner : runners)
      if (runner.toObject()["name"].toString() == "this") return runner.toObject();
    return {};
  }

  test::TempFolder folder_;
  bool thisTrades_ = false;
  int runs_ = 0;
};

TEST_F(Repeatability, shouldGiveATradingRunnerTheSameDigestAndTradesAloneAndBesideSevenOthers) {
  thisTrades_ = true;
  const QJsonObject alone = thisRunner(run(1, 1));
  const QJsonArray trades = alone["trading"].toObject()["trades"].toArray();
  ASSERT_GT(trades.size(), 3);
  for (const int threads : {1, 2, 8}) {
    const QJsonObject beside = thisRunner(run(8, threads));
    EXPECT_EQ(beside["digest"], alone["digest"]) << threads;
    EXPECT_EQ(beside["trading"].toObject()["figures"], alone["trading"].toObject()["figures"]);
  }
}

TEST_F(Repeatability, shouldWriteTheSameReportTwiceButForItsTimings) {
  QJsonObject one = run(3, 2), other = run(3, 2);
  EXPECT_TRUE(one.contains("timing"));
  one.remove("timing");
  other.remove("timing");
  EXPECT_EQ(QJsonDocument(one).toJson().toStdString(), QJsonDocument(other).toJson().toStdString());
}

TEST_F(Repeatability, shouldGiveARunnerTheSameDigestAloneAndBesideSevenOthersWithAnyThreads) {
  const QJsonObject alone = thisRunner(run(1, 1));
  ASSERT_EQ(alone["digest"].toString().size(), 32);
  EXPECT_GT(alone["events"].toObject()["onTimer"].toInt(), 0);
  EXPECT_GT(alone["events"].toObject()["onBarSeriesById"].toInt(), 0);
  EXPECT_GT(alone["events"].toObject()["onQuote"].toInt(), 0);
  for (const int threads : {1, 2, 8}) {
    const QJsonObject beside = thisRunner(run(8, threads));
    EXPECT_EQ(beside["digest"].toString().toStdString(), alone["digest"].toString().toStdString())
        << threads << " threads";
    EXPECT_EQ(beside["events"].toObject(), alone["events"].toObject()) << threads << " threads";
  }
}

}  // namespace
}  // namespace orvane
