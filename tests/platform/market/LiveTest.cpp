#include <atomic>
#include <latch>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "services/QuoteClient/IGeneralEventManager.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

PlatformOptions liveOptions(double speed) {
  PlatformOptions options;
  options.mode = PlatformOptions::Mode::Live;
  options.speed = speed;
  return options;
}

/// Counts what comes and remembers the threads.
struct LiveSpi final : QuoteSpi {
  std::mutex mutex;
  std::vector<IKLine> bars;
  std::vector<int> flags;
  bool late = true;       ///< Every live record came at or after its shown time.
  bool onCaller = false;  ///< A call-back ran on the thread of `caller`.
  std::thread::id caller = std::this_thread::get_id();
  std::function<void(std::size_t)> onBars;
  void onKLine(int, const std::vector<IKLine>& got, const ResultStatus&, int flag) override {
    std::size_t count = 0;
    {
      const std::lock_guard lock(mutex);
      for (const IKLine& bar : got) {
        bars.push_back(bar);
        late = late && Timestamp::now(1).toUtcMsEponch() >= KLineView(bar).endTime();
      }
      flags.push_back(flag);
      onCaller = onCaller || std::this_thread::get_id() == caller;
      count = bars.size();
    }
    if (onBars) onBars(count);
  }
};

TEST(LivePlayback, shouldPaceTheFeedAndShowTimesAsNow) {
  InstalledPlatform platform(liveOptions(60'000));
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 20));
  auto spi = std::make_shared<LiveSpi>();
  EXPECT_EQ(platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1).code, 0);
  const int64 before = Timestamp::sysNow(1).toUtcMsEponch();
  platform->run();
  ASSERT_EQ(spi->bars.size(), 20u);
  EXPECT_EQ(spi->flags.front(), kLastBatchFlag);
  EXPECT_TRUE(spi->late);
  EXPECT_FALSE(spi->onCaller);
  EXPECT_GE(KLineView(spi->bars[0]).endTime(), before);
  EXPECT_EQ(KLineView(spi->bars[19]).endTime() - KLineView(spi->bars[0]).endTime(), 19);
  EXPECT_EQ(KLineView(spi->bars[19]).close(), 20);
  EXPECT_GE(Timestamp::now(1).toUtcMsEponch(), KLineView(spi->bars[19]).endTime());
}

TEST(LivePlayback, shouldEndAtOnceWhenCancelledDuringALongWait) {
  InstalledPlatform platform(liveOptions(1));
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kDay, 2));
  auto spi = std::make_shared<LiveSpi>();
  spi->onBars = [&](std::size_t count) {
    if (count == 1) platform->cancel();
  };
  platform.quotes().subscribeBars(makeQuery(code), kOneDay, spi, 1);
  platform->run();
  EXPECT_EQ(spi->bars.size(), 1u);
}

TEST(LivePlayback, shouldServeRequestsWhileItWaitsAndFireTimersOnTheirOwnThread) {
  InstalledPlatform platform(liveOptions(1));
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kDay, 2));
  auto first = std::make_shared<LiveSpi>();
  auto second = std::make_shared<LiveSpi>();
  struct Notify final : ITimerNotify {
    std::function<void()> act;
    std::thread::id thread;
    void onTimer(int, int64) override {
      thread = std::this_thread::get_id();
      act();
    }
  };
  auto notify = std::make_shared<Notify>();
  notify->act = [&] { platform.quotes().subscribeBars(makeQuery(code), kOneDay, second, 2); };
  Timer timer(Timer::genId());
  first->onBars = [&](std::size_t count) {
    if (count == 1) timer.start(Timestamp::now(1).toUtcMsEponch(), 0, notify, 1);
  };
  second->onBars = [&](std::size_t) { platform->cancel(); };
  platform.quotes().subscribeBars(makeQuery(code), kOneDay, first, 1);
  platform->run();
  ASSERT_EQ(second->bars.size(), 1u);
  EXPECT_EQ(second->flags, (std::vector<int>{kLastBatchFlag}));
  EXPECT_NE(notify->thread, std::this_thread::get_id());
  EXPECT_EQ(second->bars[0], first->bars[0]);
}

TEST(LivePlayback, shouldPlayTheFeedThoughAReceiverAnswersEachEventWithAnother) {
  struct Restless final : GeneralEventSpi {
    std::atomic<bool> isOver{false};
    int told = 0;
    void onGeneralEvent(const std::string&, const std::map<std::string, std::string>&,
                        const std::string&) override {
      ++told;
      if (!isOver) answer();
    }
    static void answer() { IGeneralEventManager::instance()->publishEvent("room", {}, "again"); }
  };
  InstalledPlatform platform(liveOptions(60'000));
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 20));
  auto restless = std::make_shared<Restless>();
  IGeneralEventManager::instance()->subscribe(restless, "room", {""}, {}, true);
  auto spi = std::make_shared<LiveSpi>();
  spi->onBars = [&](std::size_t count) {
    if (count == 1) Restless::answer();
    if (count == 20) restless->isOver = true;
  };
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, 1);
  platform->run();
  EXPECT_EQ(spi->bars.size(), 20u);
  EXPECT_GT(restless->told, 1);
}

}  // namespace
}  // namespace orvane::testing
