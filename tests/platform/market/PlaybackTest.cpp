// Playback as a whole: what comes, when, and in which order.

#include <algorithm>
#include <latch>
#include <random>
#include <thread>

#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;

TEST(Playback, shouldDeliverEveryBarLiveWhenSubscribedBeforeTheRun) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  EXPECT_EQ(Timestamp::now(1).toUtcMsEponch(), kMonday + kMinute);
  auto spi = std::make_shared<RecordingSpi>();
  EXPECT_EQ(platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 7).code, 0);
  platform->run();
  EXPECT_EQ(spi->lines(), (Lines{"@0:01 bar#7 flags=16", "@0:01 bar#7 0:00-0:01",
                                 "@0:02 bar#7 0:01-0:02", "@0:03 bar#7 0:02-0:03"}));
  EXPECT_EQ(Timestamp::now(1).toUtcMsEponch(), kMonday + 3 * kMinute);
}

TEST(Playback, shouldTakeDataBeforeFromAsHistoryAndStopBeforeTo) {
  PlatformOptions options;
  options.from = kMonday + 3 * kMinute;
  options.to = kMonday + 5 * kMinute;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 9));
  auto spi = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  platform->run();
  EXPECT_EQ(spi->lines(), (Lines{"@0:03 bar#1 0:00-0:01 0:01-0:02 flags=16",
                                 "@0:03 bar#1 0:02-0:03", "@0:04 bar#1 0:03-0:04"}));
}

TEST(Playback, shouldKeepTheFixedOrderWhenRecordsHaveOneTime) {
  InstalledPlatform platform;
  const ICodeID a = platform.code("A"), b = platform.code("B");
  platform->addBars(makeBars(b, kMonday, 5 * kMinute, 1));
  platform->addBars(makeBars(b, kMonday, kMinute, 5));
  platform->addBars(makeBars(a, kMonday, kMinute, 5));
  platform->addTicks(makeTicks(a, {kMonday + 5 * kMinute, kMonday + 5 * kMinute}));
  auto spi = std::make_shared<RecordingSpi>();
  const auto later = makeQuery(a, kMonday + 4 * kMinute);
  const auto laterB = makeQuery(b, kMonday + 4 * kMinute);
  platform.quotes().subscribeBars(makeQuery(b), kFiveMinutes, spi, 1);
  platform.quotes().subscribeBars(later, kOneMinute, spi, 2);
  platform.quotes().subscribeBars(laterB, kOneMinute, spi, 3);
  platform.quotes().subscribeQuote(a, spi, 0);
  platform->run();
  Lines last = spi->lines();
  last.erase(std::remove_if(last.begin(), last.end(),
                            [](const std::string& line) { return line.find("@0:05") != 0; }),
             last.end());
  EXPECT_EQ(last, (Lines{"@0:05 quote 0:05", "@0:05 quote 0:05", "@0:05 bar#3 0:04-0:05",
                         "@0:05 bar#2 0:04-0:05", "@0:05 bar#1 0:00-0:05"}));
}

TEST(Playback, shouldJoinHistoryAndLiveWithoutGapOrDoubleWhenSubscribedDuringTheRun) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  auto late = std::make_shared<RecordingSpi>();
  auto spi = std::make_shared<RecordingSpi>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar#1 0:03-0:04")
      platform.quotes().subscribeBars(makeQuery(code), kOneMinute, late, 2);
  };
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  platform->run();
  EXPECT_EQ(late->lines().front(), "@0:04 bar#2 0:00-0:01 0:01-0:02 0:02-0:03 0:03-0:04 flags=16");
  EXPECT_EQ(late->lines().at(1), "@0:05 bar#2 0:04-0:05");
  ASSERT_EQ(late->bars().size(), 10u);
  for (std::size_t i = 0; i < 10; ++i)
    EXPECT_EQ(KLineView(late->bars()[i]).close(), static_cast<double>(i) + 1);
}

TEST(Playback, shouldNotShowLaterRecordsOfTheSameInstantAsHistory) {
  InstalledPlatform platform;
  const ICodeID a = platform.code("A"), b = platform.code("B");
  platform->addBars(makeBars(a, kMonday, kMinute, 3));
  platform->addBars(makeBars(b, kMonday, kMinute, 3));
  auto onB = std::make_shared<RecordingSpi>();
  auto onA = std::make_shared<RecordingSpi>();
  onA->onLine = [&](const std::string& line) {
    if (line == "bar#1 0:01-0:02")
      platform.quotes().subscribeBars(makeQuery(b), kOneMinute, onB, 2);
  };
  platform.quotes().subscribeBars(makeQuery(a), kOneMinute, onA, 1);
  platform->run();
  EXPECT_EQ(onB->lines(), (Lines{"@0:02 bar#2 0:00-0:01 flags=16", "@0:02 bar#2 0:01-0:02",
                                 "@0:03 bar#2 0:02-0:03"}));
}

TEST(Playback, shouldEndRequestsByTheirEndAndCount) {
  PlatformOptions options;
  options.from = kMonday + 6 * kMinute;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 12));
  auto past = std::make_shared<RecordingSpi>();
  auto future = std::make_shared<RecordingSpi>();
  auto counted = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(code, kMonday + kMinute, kMonday + 3 * kMinute),
                                  kOneMinute, past, 1);
  platform.quotes().subscribeBars(makeQuery(code, kMonday + 4 * kMinute, kMonday + 7 * kMinute),
                                  kOneMinute, future, 2);
  platform.quotes().subscribeBars(makeQuery(code, kUnsetTime, kMonday + 6 * kMinute, 2), kOneMinute,
                                  counted, 3);
  platform->run();
  EXPECT_EQ(past->lines(), (Lines{"@0:06 bar#1 0:01-0:02 0:02-0:03 flags=16"}));
  EXPECT_EQ(future->lines(), (Lines{"@0:06 bar#2 0:04-0:05 flags=16", "@0:06 bar#2 0:05-0:06",
                                    "@0:07 bar#2 0:06-0:07"}));
  EXPECT_EQ(counted->lines(), (Lines{"@0:06 bar#3 0:03-0:04 0:04-0:05 flags=16"}));
  // What ended holds its receiver no longer.
  EXPECT_EQ(past.use_count(), 1);
  EXPECT_EQ(counted.use_count(), 1);
}

TEST(Playback, shouldReportProgressBetweenTheBatchesOfALongHistory) {
  PlatformOptions options;
  options.from = kMonday + 25'001 * kMinute;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 25'001));
  auto spi = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  platform->run();
  const Lines lines = spi->lines();
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_NE(lines[1].find("progress#1 10000/25000 40%"), std::string::npos);
  EXPECT_NE(lines[3].find("progress#1 20000/25000 80%"), std::string::npos);
  EXPECT_EQ(lines[0].find("flags"), std::string::npos);
  EXPECT_NE(lines[4].find("flags=16"), std::string::npos);
  EXPECT_NE(lines[5].find("bar#1"), std::string::npos);
  EXPECT_EQ(spi->bars().size(), 25'001u);
}

TEST(Playback, shouldDeliverTicksInBothFormsAndAnswerTheLastQuote) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addTicks(makeTicks(code, {kMonday, kMonday + 500, kMonday + 1000}));
  auto spi = std::make_shared<RecordingSpi>();
  Lines seen;
  spi->onLine = [&](const std::string& line) {
    IDepthMarketData quote;
    if (line.find("tick") == 0) {
      const ResultStatus status = platform.quotes().getQuote(code, quote, 0);
      seen.push_back(std::to_string(status.code) + " " +
                     RecordingSpi::relative(QuoteView(quote).time()));
    }
  };
  IDepthMarketData none;
  EXPECT_EQ(platform.quotes().getQuote(code, none, 0).code, 4);
  platform.quotes().subscribeQuote(code, spi, 0);
  platform.quotes().subscribeBars(makeQuery(code), kTick, spi, 5);
  platform->run();
  EXPECT_EQ(spi->lines(), (Lines{"@0:00 tick#5 flags=16", "@0:00 quote 0:00", "@0:00 tick#5 0:00",
                                 "@0:00+500 quote 0:00+500", "@0:00+500 tick#5 0:00+500",
                                 "@0:00+1000 quote 0:00+1000", "@0:00+1000 tick#5 0:00+1000"}));
  EXPECT_EQ(seen.back(), "0 0:00+1000");
}

TEST(Playback, shouldRefuseWhatCannotBeServed) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), empty = platform.code("B");
  platform->addBars(makeBars(code, kMonday, 5 * kMinute, 3));
  auto spi = std::make_shared<RecordingSpi>();
  ICodeID unknown;
  unknown.id = 99;
  unknown.code = "Z";
  IRealtimeQuoteService& quotes = platform.quotes();
  EXPECT_EQ(quotes.subscribeBars(makeQuery(unknown), kOneMinute, spi, 1).code, 22);
  EXPECT_EQ(quotes.subscribeQuote(unknown, spi, 0).code, 22);
  EXPECT_EQ(quotes.subscribeBars(makeQuery(code), kOneMinute, spi, 1).code, 17);
  EXPECT_EQ(quotes.subscribeBars(makeQuery(code), TermPair{3, 7}, spi, 1).code, 17);
  EXPECT_EQ(quotes.subscribeBars(makeQuery(empty), kOneDay, spi, 1).code, 17);
  EXPECT_EQ(quotes.subscribeBars(makeQuery(code), kTick, spi, 1).code, 8);
  EXPECT_EQ(quotes.subscribeQuote(code, spi, 0).code, 1);
  EXPECT_EQ(quotes.subscribeBars(makeQuery(code), TermPair{3, 15}, spi, 1).code, 0);
  platform->run();
}

TEST(Playback, shouldFireTimersInOrderWithTheData) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  auto spi = std::make_shared<RecordingSpi>();
  struct Notify final : ITimerNotify {
    std::shared_ptr<RecordingSpi> to;
    void onTimer(int id, int64 value) override {
      to->add("timer#" + std::to_string(id) + " " + RecordingSpi::relative(value));
    }
  };
  auto notify = std::make_shared<Notify>();
  notify->to = spi;
  Timer grid(1), once(2), beyond(3), past(4);
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  EXPECT_TRUE(grid.start(kMonday + 2 * kMinute, 30'000, notify, 3));
  EXPECT_TRUE(once.start(kMonday + 2 * kMinute, 0, notify, 0));
  EXPECT_TRUE(beyond.start(kMonday + 3 * kMinute + 1, 0, notify, 1));
  EXPECT_TRUE(past.start(kMonday, kMinute, notify, 2));
  platform->run();
  EXPECT_EQ(spi->lines(),
            (Lines{"@0:01 bar#1 flags=16", "@0:01 timer#4 0:00", "@0:01 bar#1 0:00-0:01",
                   "@0:02 timer#1 0:02", "@0:02 timer#2 0:02", "@0:02 timer#4 0:02",
                   "@0:02 bar#1 0:01-0:02", "@0:02+30000 timer#1 0:02+30000", "@0:03 timer#1 0:03",
                   "@0:03 bar#1 0:02-0:03"}));
  beyond.stop();
  EXPECT_EQ(notify.use_count(), 1);
}

TEST(Playback, shouldEndBeforeTheNextRecordWhenCancelledFromACallBack) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 100));
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:03=") != std::string::npos) platform->cancel();
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  std::size_t reported = 0;
  platform->run([&](const PlaybackProgress& progress) { reported = progress.delivered; });
  EXPECT_EQ(runner->handled().size(), 4u);
  EXPECT_EQ(reported, 3u);
  platform->run();
  EXPECT_EQ(runner->handled().size(), 101u);
}

TEST(Playback, shouldPlayTheSameAgainAfterRewind) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 20));
  const auto play = [&] {
    auto spi = std::make_shared<RecordingSpi>();
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
    platform.quotes().subscribeBars(makeQuery(code), kFiveMinutes, spi, 2);
    platform->run();
    platform.quotes().unsubscribeSpi(spi);
    platform->drain();
    EXPECT_EQ(spi.use_count(), 1);
    return spi->lines();
  };
  const Lines first = play();
  EXPECT_EQ(first.size(), 26u);
  platform->rewind();
  EXPECT_EQ(play(), first);
}

TEST(Playback, shouldPlayTheSameWhenPacedAndEndAPauseWhenCancelled) {
  const auto play = [](double speed) {
    PlatformOptions options;
    options.speed = speed;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 12));
    auto runner = std::make_shared<RunnerSpi>(nullptr);
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
    platform.quotes().subscribeBars(makeQuery(code), kFiveMinutes, runner, 2);
    platform->run();
    return runner->handled();
  };
  EXPECT_EQ(play(60'000), play(0));

  PlatformOptions options;
  options.speed = 1;  // A minute from bar to bar.
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:01=") != std::string::npos) platform->cancel();
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(runner->handled().size(), 2u);
}

TEST(Playback, shouldDropACancelledRequestAtOnceAndLetGoOfItsReceiver) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:03=") != std::string::npos) platform.quotes().cancelRequest(1);
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(runner->handled().size(), 4u);
  EXPECT_EQ(runner.use_count(), 1);
}

TEST(Playback, shouldKeepTwoReceiversApartWhenTheyChoseOneRequestId) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  auto other = std::make_shared<RunnerSpi>(nullptr);
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:03=") != std::string::npos) platform.quotes().cancelRequest(7);
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 7);
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, other, 7);
  platform->run();
  EXPECT_EQ(other->handled().size(), 11u);
}

TEST(Playback, shouldAnswerABlockingRequestInsideACallBack) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  struct FetchSpi final : QuoteSpi {
    std::latch ended{1};
    std::size_t bars = 0;
    void onKLine(int, const std::vector<IKLine>& got, const ResultStatus&, int flags) override {
      bars += got.size();
      if ((flags & kLastBatchFlag) != 0) ended.count_down();
    }
  };
  std::vector<std::size_t> answers;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:03=") == std::string::npos && event.find("0:07=") == std::string::npos)
      return;
    auto fetch = std::make_shared<FetchSpi>();
    const int id = platform->router()->nextRequestId();
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, fetch, id);
    fetch->ended.wait();
    platform.quotes().cancelRequest(id);
    answers.push_back(fetch->bars);
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(answers, (std::vector<std::size_t>{3, 7}));
  EXPECT_EQ(runner->handled().size(), 11u);
}

TEST(Playback, shouldGoOnWhenACallBackThrows) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  auto spi = std::make_shared<RecordingSpi>();
  spi->onLine = [](const std::string&) { throw std::runtime_error("on purpose"); };
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  platform->run();
  EXPECT_EQ(spi->lines().size(), 4u);
}

/// What one runner of many handles; it subscribes, cancels and asks for history as it goes.
Lines playBusyRunners(int runners, int threads, int chosen) {
  PlatformOptions options;
  options.poolThreads = threads;
  InstalledPlatform platform(options);
  const ICodeID a = platform.code("A"), b = platform.code("B");
  platform->addBars(makeBars(a, kMonday, kMinute, 600));
  platform->addBars(makeBars(b, kMonday, kMinute, 600));
  std::vector<int64> times;
  for (int i = 0; i < 600; ++i) times.push_back(kMonday + kMinute + i * 30'000);
  platform->addTicks(makeTicks(a, times));
  IRealtimeQuoteService& quotes = platform.quotes();
  std::vector<std::shared_ptr<RunnerSpi>> all;
  for (int i = 0; i < runners; ++i) {
    auto step = std::make_shared<int>(0);
    auto self = std::make_shared<std::weak_ptr<RunnerSpi>>();
    auto runner = std::make_shared<RunnerSpi>([&, step, self](const std::string&) {
      const int at = ++*step;
      const auto spi = self->lock();
      if (at % 50 == 3) quotes.subscribeBars(makeQuery(b), TermPair{3, 7}, spi, 100 + at);
      if (at % 50 == 9) quotes.cancelRequest(100 + at - 6);
      if (at % 40 == 5) quotes.subscribeQuote(a, spi, 0);
      if (at % 40 == 21) quotes.unsubscribeQuote(a, spi, 0);
      if (at == 30) quotes.subscribeBars(makeQuery(a), kFiveMinutes, spi, 2);
      if (at == 31)
        quotes.subscribeBars(makeQuery(b, kMonday, kMonday + kMinute), kOneMinute, spi, 3);
    });
    *self = runner;
    quotes.subscribeBars(makeQuery(a), kOneMinute, runner, 1);
    quotes.subscribeBars(makeQuery(b), TermPair{3, 10}, runner, 4);
    all.push_back(std::move(runner));
  }
  platform->run();
  for (const auto& runner : all) quotes.unsubscribeSpi(runner);
  return all[static_cast<std::size_t>(chosen)]->handled();
}

TEST(Playback, shouldGiveARunnerTheSameEventsWithAnyCompanyAndAnyNumberOfThreads) {
  const Lines alone = playBusyRunners(1, 1, 0);
  EXPECT_GT(alone.size(), 900u);
  for (const int threads : {1, 2, 8})
    for (const int chosen : {0, 5}) EXPECT_EQ(playBusyRunners(8, threads, chosen), alone);
}

TEST(Playback, shouldGiveARunnerTheSameEventsInSoLargeACompanyThatThreadsShareTheCalls) {
  const Lines alone = playBusyRunners(1, 1, 0);
  for (const int threads : {1, 3})
    for (const int chosen : {0, 23}) EXPECT_EQ(playBusyRunners(24, threads, chosen), alone);
}

}  // namespace
}  // namespace orvane::testing
