// Whom the answerer serves of those of whom nobody says that they block, on its own thread.

#include "platform/market/OverdueAnswerer.h"

#include <latch>
#include <limits>
#include <optional>

#include "platform/core/WorkerPool.h"
#include "platform/reference/CodeService.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

constexpr int kNever = std::numeric_limits<int>::max();

/// Tells when the last batch of a request came.
struct AwaitedSpi final : QuoteSpi {
  void onKLine(int, const std::vector<IKLine>&, const ResultStatus&, int flags) override {
    const std::lock_guard lock(mutex);
    isEnded = isEnded || (flags & kLastBatchFlag) != 0;
    changed.notify_all();
  }
  void await() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isEnded; });
  }
  bool hasEnded() {
    const std::lock_guard lock(mutex);
    return isEnded;
  }
  std::mutex mutex;
  std::condition_variable changed;
  bool isEnded = false;
};

/// A service over bars of the past, with runners that are tasks of a pool.
class OverdueAnswers : public ::testing::Test {
 protected:
  OverdueAnswers() {
    Instrument instrument;
    instrument.code = "A";
    instrument.market = "X";
    code = codes.add(instrument);
    store.add(std::make_shared<const BarSeries>(makeBars(code, kMonday, kMinute, 100)));
    pool.resize(2);
  }

  void ask(const std::shared_ptr<QuoteSpi>& spi, int id) {
    service.subscribeBars(makeQuery(code), kOneMinute, spi, id);
  }

  detail::CodeService codes{[] { return kMonday; }, "UTC"};
  detail::MarketStore store{kMonday + 1000 * kDay, kUnsetTime, detail::ZoneRules::find("UTC")};
  detail::QuoteService service{store, codes, [this] { answerer->noteRequest(); }};
  ICodeID code;
  const std::shared_ptr<AwaitedSpi> runners = std::make_shared<AwaitedSpi>();
  detail::WorkerPool pool;
  std::optional<detail::OverdueAnswerer> answerer;
};

TEST_F(OverdueAnswers, shouldBeGivenToAThreadOfTheHostsAndNotToARunnerThatAskedBefore) {
  answerer.emplace(service, pool.signal(), kNever);
  std::latch asked(1), over(1);
  pool.add([&] {
    ask(runners, 1);
    asked.count_down();
    over.wait();
  });
  asked.wait();
  const auto hosts = std::make_shared<AwaitedSpi>();
  ask(hosts, 2);
  hosts->await();
  // The oldest comes first, so the runner's would have been served before the host's.
  EXPECT_FALSE(runners->hasEnded());
  EXPECT_TRUE(service.book().anyWaiting());
  over.count_down();
  pool.signal().wait([this] { return pool.signal().quiet(); });
  answerer.reset();
}

TEST_F(OverdueAnswers, shouldBeGivenToARunnerOnceAllStandStill) {
  answerer.emplace(service, pool.signal(), 3);
  pool.add([&] {
    ask(runners, 1);
    runners->await();
  });
  pool.signal().wait([this] { return pool.signal().quiet(); });
  EXPECT_TRUE(runners->hasEnded());
  EXPECT_FALSE(service.book().anyWaiting());
  answerer.reset();
}

}  // namespace
}  // namespace orvane::testing
