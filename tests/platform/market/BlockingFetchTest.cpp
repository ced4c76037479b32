// Blocking fetches inside call-backs of a playback: what they see, and that nothing stands still.

#include <atomic>
#include <latch>
#include <list>
#include <thread>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/IEvent.h"
#include "EventStrategy/IQuoteSrc.h"
#include "sdk/BarFetcher.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;

/// Longer than any test takes: an answer that needs it never came.
constexpr int64 kForEver = 3'600'000;

/// A runner's quote source, with nothing attached to it.
class Fetcher final : public AbstractEventStrategy {
 public:
  void pushEvent(IEvent* event) override { delete event; }

  std::vector<IKLine> fetch(const OVDataRange& range, int64 timeoutMs = kForEver) {
    const auto bars = quoteSrc()->fetchBarsSync({range}, timeoutMs);
    return bars.empty() ? std::vector<IKLine>{} : bars.begin()->second;
  }
};

OVDataRange newest(const ICodeID& code, int64 period, int count) {
  OVDataRange range;
  range.code = code;
  range.term = period;
  range.mode = 1;
  range.beginTime = count;
  return range;
}

/// All bars, also those to come if anybody could see them.
OVDataRange everything(const ICodeID& code, int64 period) {
  OVDataRange range;
  range.code = code;
  range.term = period;
  range.endTime = kMonday + 1000 * kDay;
  range.flags = 1 << 21;
  return range;
}

std::string ends(const std::vector<IKLine>& bars) {
  std::string text = "[";
  for (const IKLine& bar : bars) text += " " + RecordingSpi::relative(KLineView(bar).endTime());
  return text + " ]";
}

int64 nowMs() { return Timestamp::now(1).toUtcMsEponch(); }

TEST(BlockingFetch, shouldAnswerWithWhatLiesBeforeTheSimulatedNowAndNothingElse) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), other = platform.code("B");
  platform->addBars(makeBars(code, kMonday, kMinute, 20));
  platform->addBars(makeBars(other, kMonday, kMinute, 40));
  Fetcher fetcher;
  int checks = 0;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("=") == std::string::npos) return;  // The empty history.
    const auto own = fetcher.fetch(everything(code, kMinute));
    const auto others = fetcher.fetch(everything(other, kMinute));
    const auto longer = fetcher.fetch(everything(code, 5 * kMinute));
    const auto played = static_cast<std::size_t>((nowMs() - kMonday) / kMinute);
    EXPECT_EQ(own.size(), played);
    // At one instant the series that was added first comes first.
    EXPECT_EQ(others.size(), played - 1);
    EXPECT_EQ(longer.size(), played / 5);
    for (const auto* bars : {&own, &others, &longer})
      for (const IKLine& bar : *bars) EXPECT_LE(KLineView(bar).endTime(), nowMs());
    ++checks;
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(checks, 20);
}

TEST(BlockingFetch, shouldAnswerTheNewestSoMany) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  Fetcher fetcher;
  Lines answers;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("0:03=") != std::string::npos || event.find("0:08=") != std::string::npos)
      answers.push_back(ends(fetcher.fetch(newest(code, kMinute, 4))));
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(answers, (Lines{"[ 0:01 0:02 0:03 ]", "[ 0:05 0:06 0:07 0:08 ]"}));
}

TEST(BlockingFetch, shouldSeeHistoryAndNoRecordBeforeARunBegins) {
  PlatformOptions options;
  options.from = kMonday + 3 * kMinute;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  Fetcher fetcher;
  EXPECT_EQ(ends(fetcher.fetch(everything(code, kMinute))), "[ 0:01 0:02 ]");
  platform->run();
  EXPECT_EQ(fetcher.fetch(everything(code, kMinute)).size(), 10u);
}

TEST(BlockingFetch, shouldAnswerALongHistoryInOneBatchAndOfSeveralTheLast) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10'001));
  Fetcher fetcher;
  std::size_t whole = 0, last = 0;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find("166:41=") == std::string::npos) return;
    whole = fetcher.fetch(everything(code, kMinute)).size();
    OVDataRange inBatches = everything(code, kMinute);
    inBatches.flags = 0;
    last = fetcher.fetch(inBatches).size();
  });
  platform.quotes().subscribeBars(makeQuery(code, kMonday + 10'000 * kMinute), kOneMinute, runner,
                                  1);
  platform->run();
  EXPECT_EQ(whole, 10'001u);
  EXPECT_EQ(last, 1u);
}

TEST(BlockingFetch, shouldReturnAtOnceWhatIsRefused) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), empty = platform.code("B");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  Fetcher fetcher;
  const std::list<OVDataRange> refused = {
      newest(empty, kMinute, 1), newest({99, 0, 1, "?"}, kMinute, 1), newest(code, 7000, 1)};
  std::vector<std::size_t> answers;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string&) {
    answers.push_back(fetcher.quoteSrc()->fetchBarsSync(refused, kForEver).size());
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_EQ(answers, std::vector<std::size_t>(4, 0));
}

TEST(BlockingFetch, shouldNotEndAStreamWhoseIdTheStrategyChoseItself) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), empty = platform.code("B");
  platform->addBars(makeBars(code, kMonday, kMinute, 5));
  Fetcher fetcher;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string&) {
    // The cancel of a refused request names an id that nobody holds.
    fetcher.fetch(newest(empty, kMinute, 1));
    fetcher.fetch(newest(code, kMinute, 1));
  });
  for (int id = 1; id <= 30; ++id)
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, id);
  platform->run();
  EXPECT_EQ(runner->handled().size(), 30u * (1u + 5u));
}

/// Plays `runners` runners that all fetch in every call-back, on so many threads, and answers what
/// each one saw.
std::vector<Lines> playFetchers(int runners, int threads, bool withSlowCompany = false) {
  PlatformOptions options;
  options.poolThreads = threads;
  InstalledPlatform platform(options);
  const ICodeID a = platform.code("A"), b = platform.code("B");
  platform->addBars(makeBars(a, kMonday, kMinute, 30));
  platform->addBars(makeBars(b, kMonday, kMinute, 30));
  std::vector<int64> times;
  for (int i = 0; i < 60; ++i) times.push_back(kMonday + kMinute + i * 30'000);
  const ICodeID c = platform.code("C");
  platform->addTicks(makeTicks(c, times));
  IRealtimeQuoteService& quotes = platform.quotes();
  Fetcher fetcher;
  std::vector<Lines> seen(static_cast<std::size_t>(runners));
  std::vector<std::shared_ptr<RunnerSpi>> all;
  for (int i = 0; i < runners; ++i) {
    Lines& lines = seen[static_cast<std::size_t>(i)];
    auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
      std::string line = event;
      for (const ICodeID& code : {a, b, c})
        for (const int64 period : {kMinute, 3 * kMinute, 15 * kMinute})
          line += ends(fetcher.fetch(newest(code, period, 2)));
      lines.push_back(line);
    });
    quotes.subscribeBars(makeQuery(i % 2 == 0 ? a : b), kOneMinute, runner, 1);
    if (i % 3 == 0) quotes.subscribeQuote(c, runner, 0);
    all.push_back(std::move(runner));
  }
  // Others whose series complete with the same records, and who are called twice for one of them.
  for (int i = 0; withSlowCompany && i < 3; ++i) {
    auto runner = std::make_shared<RunnerSpi>(nullptr);
    for (const TermPair& term : {kOneMinute, TermPair{3, 3}, kFiveMinutes, TermPair{3, 15}}) {
      quotes.subscribeBars(makeQuery(a), term, runner, 100 + term.count);
      quotes.subscribeBars(makeQuery(c), term, runner, 200 + term.count);
    }
    all.insert(all.begin(), std::move(runner));
  }
  platform->run();
  for (const auto& runner : all) quotes.unsubscribeSpi(runner);
  return seen;
}

TEST(BlockingFetch, shouldSeeTheSameAloneAndInCompanyWithAnyNumberOfThreads) {
  const Lines alone = playFetchers(1, 1).front();
  ASSERT_EQ(alone.size(), 1u + 30u + 60u);
  EXPECT_EQ(playFetchers(1, 1, true).front(), alone);
  for (const int threads : {1, 2, 8}) EXPECT_EQ(playFetchers(4, threads, true).front(), alone);
}

TEST(BlockingFetch, shouldNotStandStillWithOnePoolThreadAndManyRunnersThatFetchAtOnce) {
  const std::vector<Lines> seen = playFetchers(12, 1);
  for (std::size_t i = 0; i < seen.size(); ++i) {
    EXPECT_EQ(seen[i].size(), i % 3 == 0 ? 91u : 31u) << i;
    EXPECT_EQ(seen[i], seen[i % 6]) << i;
  }
}

TEST(BlockingFetch, shouldNotStandStillWhereThreadsShareTheCallsOfManyRunners) {
  const Lines alone = playFetchers(1, 1).front();
  for (const int threads : {1, 3}) {
    const std::vector<Lines> seen = playFetchers(36, threads, true);
    for (std::size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i], seen[i % 6]) << i;
    EXPECT_EQ(seen.front(), alone);
  }
}

TEST(BlockingFetch, shouldNotStandStillWithATimeoutOf0) {
  for (const int threads : {1, 4}) {
    PlatformOptions options;
    options.poolThreads = threads;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 100));
    constexpr int kRunners = 8;
    std::vector<std::unique_ptr<Fetcher>> fetchers;
    std::vector<std::shared_ptr<RunnerSpi>> runners;
    std::atomic<int> wrong{0};
    for (int i = 0; i < kRunners; ++i) {
      Fetcher& fetcher = *fetchers.emplace_back(std::make_unique<Fetcher>());
      // An answer may come in time or not: but all that has ended by now, or nothing.
      runners.push_back(std::make_shared<RunnerSpi>([&](const std::string&) {
        for (const int64 timeout : {0, -1}) {
          const auto bars = fetcher.fetch(everything(code, kMinute), timeout);
          const int64 now = nowMs();
          if (!bars.empty() && KLineView(bars.back()).endTime() != now) ++wrong;
          if (!bars.empty() && KLineView(bars.front()).beginTime() != kMonday) ++wrong;
        }
      }));
      platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runners.back(), i + 1);
    }
    platform->run();
    EXPECT_EQ(wrong, 0) << threads;
    for (const auto& runner : runners) EXPECT_EQ(runner->handled().size(), 101u);
  }
}

TEST(BlockingFetch, shouldAnswerWhenTheDriversThreadRunsTheTaskThatFetches) {
  // The pool's only thread is held: what is queued meanwhile is run by the driver, which waits.
  PlatformOptions options;
  options.poolThreads = 1;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  Fetcher fetcher;
  std::latch held(1);
  std::atomic<bool> release{false};
  std::thread::id holder;
  int fetches = 0;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (!event.starts_with("own")) return;
    EXPECT_NE(std::this_thread::get_id(), holder);
    if (fetcher.quoteSrc()->fetchBarsSync({newest(code, kMinute, 1)}, kForEver).size() == 1)
      ++fetches;
    if (event == "own 10") release.store(true);
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  sharedPool().addTask([&] {
    holder = std::this_thread::get_id();
    held.count_down();
    while (!release.load()) std::this_thread::yield();
  });
  held.wait();
  for (int i = 1; i <= 10; ++i) runner->push("own " + std::to_string(i));
  platform->run();
  EXPECT_EQ(fetches, 10);
  EXPECT_EQ(runner->handled().size(), 10u + 11u);
}

TEST(BlockingFetch, shouldAnswerAThreadOfTheHostsWhileAPlaybackRuns) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3000));
  auto runner = std::make_shared<RunnerSpi>(nullptr);
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  std::atomic<bool> ended{false};
  std::atomic<int> fetches{0};
  std::thread host([&] {
    Fetcher fetcher;
    std::size_t before = 0;
    while (!ended.load()) {
      const std::size_t now = fetcher.fetch(everything(code, kMinute)).size();
      EXPECT_GE(now, before);
      before = now;
      ++fetches;
    }
  });
  platform->run();
  while (fetches.load() == 0) std::this_thread::yield();
  ended.store(true);
  host.join();
}

TEST(BlockingFetch, shouldAnswerInAPausedPlaybackAndInLiveMode) {
  for (const auto mode : {PlatformOptions::Mode::Playback, PlatformOptions::Mode::Live}) {
    PlatformOptions options;
    options.mode = mode;
    options.speed = 600'000;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 20));
    Fetcher fetcher;
    std::atomic<int> answered{0};
    auto runner = std::make_shared<RunnerSpi>([&](const std::string& event) {
      if (event.find("=") == std::string::npos) return;
      if (!fetcher.fetch(newest(code, kMinute, 1)).empty()) ++answered;
    });
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
    platform->run();
    EXPECT_EQ(answered.load(), 20);
    platform.quotes().unsubscribeSpi(runner);
  }
}

TEST(BarFetcher, shouldAnswerBarsWithCode0AndSayWhatIsWrongElse) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A"), empty = platform.code("B");
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  BarFetcher fetcher;
  const auto early = fetcher.newest(code, "1m", 3);
  EXPECT_EQ(early.status.code, 0);
  EXPECT_TRUE(early.bars.empty());
  platform->run();
  EXPECT_EQ(ends(fetcher.newest(code, "1m", 3).bars), "[ 0:08 0:09 0:10 ]");
  EXPECT_EQ(ends(fetcher.newest(code, "5m", 3).bars), "[ 0:05 0:10 ]");
  EXPECT_EQ(ends(fetcher.between(code, "1m", kMonday + kMinute, kMonday + 3 * kMinute).bars),
            "[ 0:02 0:03 ]");
  EXPECT_EQ(fetcher.newest(code, "1x", 3).status.code, 17);
  EXPECT_EQ(fetcher.newest(empty, "1m", 3).status.code, 4);
}

TEST(BlockingFetch, shouldLeaveNoRequestBehind) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 50));
  Fetcher fetcher;
  auto runner = std::make_shared<RunnerSpi>([&](const std::string&) {
    OVDataRange open = newest(code, kMinute, 1);
    fetcher.fetch(open);
    fetcher.fetch(open, -1);
  });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  platform.quotes().unsubscribeSpi(runner);
  platform->drain();
  EXPECT_EQ(runner.use_count(), 1);
}

}  // namespace
}  // namespace orvane::testing
