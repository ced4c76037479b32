#include "platform/market/Maintenance.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "services/ov.publisher/IPublisher.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using ::testing::HasSubstr;

struct MaintainSpi final : IDataMaintainSpi {
  struct Answer {
    int requestId = 0;
    ICodeID code;
    ITimeType unit{};
    ResultStatus status;
    std::thread::id thread;
  };
  std::promise<Answer> promise;
  bool throws = false;
  void onMaintained(int requestId, const ICodeID& code, ITimeType unit,
                    const ResultStatus& status) override {
    promise.set_value({requestId, code, unit, status, std::this_thread::get_id()});
    if (throws) throw std::runtime_error("no");
  }
};

ResultStatus ask(const ICodeID& code, ITimeType unit, int64 from,
                 const std::shared_ptr<MaintainSpi>& spi) {
  IDataMaintain* maintain = IDataMaintain::Create();
  const ResultStatus status = maintain->maintain(code, unit, from, spi, 7);
  IDataMaintain::release(maintain);  // What was accepted goes on.
  return status;
}

/// The answer, or the refusal.
ResultStatus outcomeOf(const ICodeID& code, ITimeType unit, int64 from = 0) {
  auto spi = std::make_shared<MaintainSpi>();
  if (ResultStatus status = ask(code, unit, from, spi); status.code != 0) return status;
  return spi->promise.get_future().get().status;
}

TEST(Maintenance, shouldAnswerOnceOnAThreadOfItsOwnWithWhatWasAskedFor) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 5));
  auto spi = std::make_shared<MaintainSpi>();
  EXPECT_EQ(ask(code, ITimeType::Minute, 0, spi).code, 0);
  const MaintainSpi::Answer answer = spi->promise.get_future().get();
  EXPECT_EQ(answer.requestId, 7);
  EXPECT_EQ(answer.code.code, "A");
  EXPECT_EQ(answer.unit, ITimeType::Minute);
  EXPECT_EQ(answer.status, (ResultStatus{0, "5 bars"}));
  EXPECT_NE(answer.thread, std::this_thread::get_id());
}

TEST(Maintenance, shouldNameTheSeriesTheBarAndTheFaultAlsoInBarsThatWereNotPlayed) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  BarSeries series = makeBars(code, kMonday, kMinute, 5);
  series.origin = "a.csv";
  KLineWriter(series.bars[3]).set(kline::High, 1);
  KLineWriter(series.bars[4]).set(kline::Volume, -1);
  platform->addBars(std::move(series));
  const ResultStatus status = outcomeOf(code, ITimeType::Minute);
  EXPECT_EQ(status.code, 20);
  EXPECT_THAT(status.message, HasSubstr("a.csv: 2 of 5 bars, bar 4: high 1 is below open 4"));
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute, kMonday + 4 * kMinute).code, 20);
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute, kMonday + kHour), (ResultStatus{0, "0 bars"}));
}

TEST(Maintenance, shouldLookThroughTheBarsThatBarsOfTheUnitAreMadeOf) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 5));
  platform->addBars(makeBars(code, kMonday, 5 * kMinute, 3));
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute).message, "8 bars");
  EXPECT_EQ(outcomeOf(code, ITimeType::Hour).message, "3 bars");
}

TEST(Maintenance, shouldLookThroughPublishedBarsToo) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), other = platform.code("B");
  platform->addBars(makeBars(other, kMonday, kMinute, 1));
  const std::unique_ptr<IPublisher> publisher(IPublisher::create(2));
  publisher->publishQuoteItems2(code, {makeBar(kMonday - kMinute, kMonday, 1, 1, 1, 1)}, 0);
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute).code, 17);
  platform->drain();
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute).message, "1 bars");
}

TEST(Maintenance, shouldRefuseWhatItCannotLookThrough) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), ticks = platform.code("T"), none = platform.code("N");
  platform->addBars(makeBars(code, kMonday, kMinute, 5));
  platform->addTicks(makeTicks(ticks, {kMonday}));
  EXPECT_EQ(ask(code, ITimeType::Minute, 0, nullptr).code, -2);
  EXPECT_EQ(outcomeOf({}, ITimeType::Minute).code, 22);
  EXPECT_EQ(outcomeOf(none, ITimeType::Minute).code, 17);
  EXPECT_EQ(outcomeOf(ticks, ITimeType::Minute).code, 17);
  EXPECT_EQ(outcomeOf(code, ITimeType::Second).code, 17);
}

TEST(Maintenance, shouldAnswerAStrategyThatStandsStillInsideACallBackOfAPlayback) {
  for (const int threads : {1, 3}) {
    PlatformOptions options;
    options.poolThreads = threads;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 3));
    std::vector<std::string> answers;
    auto runner = std::make_shared<RunnerSpi>(
        [&](const std::string&) { answers.push_back(outcomeOf(code, ITimeType::Minute).message); });
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
    platform->run();
    EXPECT_EQ(answers, std::vector<std::string>(4, "3 bars"));
  }
}

TEST(Maintenance, shouldGoOnWhenAReceiverThrows) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 1));
  auto spi = std::make_shared<MaintainSpi>();
  spi->throws = true;
  EXPECT_EQ(ask(code, ITimeType::Minute, 0, spi).code, 0);
  spi->promise.get_future().wait();
  EXPECT_EQ(outcomeOf(code, ITimeType::Minute).code, 0);
}

}  // namespace
}  // namespace orvane::testing
