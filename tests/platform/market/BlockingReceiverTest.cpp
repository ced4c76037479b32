// How the quote service serves a receiver that somebody waits for, step by step and on one thread.

#include <chrono>

#include "platform/core/WorkerPool.h"
#include "platform/market/QuoteService.h"
#include "platform/reference/CodeService.h"
#include "services/Common/IBlockingReceiver.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using TimePoint = std::chrono::steady_clock::time_point;

struct CountingSpi : QuoteSpi {
  void onKLine(int, const std::vector<IKLine>& bars, const ResultStatus&, int flags) override {
    sizes.push_back(bars.size());
    isEnded = isEnded || (flags & kLastBatchFlag) != 0;
  }
  std::vector<std::size_t> sizes;
  bool isEnded = false;
};

struct BlockingSpi final : CountingSpi, IBlockingReceiver {};

/// A service over 25,000 one-minute bars of the past, driven by hand.
class BlockingReceiver : public ::testing::Test {
 protected:
  BlockingReceiver() {
    Instrument instrument;
    instrument.code = "A";
    instrument.market = "X";
    code = codes.add(instrument);
    store.add(std::make_shared<const BarSeries>(makeBars(code, kMonday, kMinute, 25'000)));
    service.setQuietWait([this] { ++waits; });
  }

  void ask(const std::shared_ptr<QuoteSpi>& spi, int id) {
    service.subscribeBars(makeQuery(code), kOneMinute, spi, id);
  }

  detail::CodeService codes{[] { return kMonday; }, "UTC"};
  detail::MarketStore store{kMonday + 1000 * kDay, kUnsetTime, detail::ZoneRules::find("UTC")};
  detail::QuoteService service{store, codes, [] {}};
  ICodeID code;
  int waits = 0;
};

TEST_F(BlockingReceiver, shouldHaveSeveralBatchesWithoutAnyWaitForQuiet) {
  const auto plain = std::make_shared<CountingSpi>();
  ask(plain, 1);
  EXPECT_TRUE(service.serve());
  EXPECT_EQ(plain->sizes, (std::vector<std::size_t>{10'000, 10'000, 5'000}));
  EXPECT_GT(waits, 0);
  waits = 0;
  const auto blocking = std::make_shared<BlockingSpi>();
  ask(blocking, 2);
  EXPECT_TRUE(service.serve());
  EXPECT_EQ(blocking->sizes, plain->sizes);
  EXPECT_TRUE(blocking->isEnded);
  EXPECT_EQ(waits, 0);
}

TEST_F(BlockingReceiver, shouldBeServedBeforeAnyPatienceIsOver) {
  const auto plain = std::make_shared<CountingSpi>();
  const auto blocking = std::make_shared<BlockingSpi>();
  ask(plain, 1);
  EXPECT_FALSE(service.book().anyBlocking());
  ask(blocking, 2);
  EXPECT_TRUE(service.book().anyBlocking());
  EXPECT_TRUE(service.serveOverdue({TimePoint::min()}));
  EXPECT_TRUE(blocking->isEnded);
  EXPECT_TRUE(plain->sizes.empty());
  EXPECT_FALSE(service.book().anyBlocking());
  EXPECT_TRUE(service.book().anyWaiting());
  EXPECT_FALSE(service.serveOverdue({TimePoint::min()}));
  EXPECT_TRUE(service.serveOverdue({TimePoint::max()}));
  EXPECT_TRUE(plain->isEnded);
}

TEST_F(BlockingReceiver, shouldLetWhatARunnerAskedForWaitHoweverLongUnlessAllStandStill) {
  detail::WorkerPool pool;
  pool.resize(1);
  const auto spi = std::make_shared<CountingSpi>();
  pool.add([&] { ask(spi, 1); });
  pool.signal().wait([&] { return pool.signal().quiet(); });
  ASSERT_TRUE(service.book().anyWaiting());
  EXPECT_FALSE(service.serveOverdue({TimePoint::max(), false}));
  EXPECT_TRUE(spi->sizes.empty());
  EXPECT_TRUE(service.serveOverdue({TimePoint::min(), true}));
  EXPECT_TRUE(spi->isEnded);
}

TEST_F(BlockingReceiver, shouldCountAsWaitingUntilItIsTaken) {
  const auto blocking = std::make_shared<BlockingSpi>();
  ask(blocking, 1);
  ask(blocking, 2);
  service.cancelRequest(1);
  EXPECT_TRUE(service.book().anyBlocking());
  EXPECT_TRUE(service.serve());
  EXPECT_FALSE(service.book().anyBlocking());
  EXPECT_EQ(blocking->sizes.size(), 3u);  // Of the second alone.
}

}  // namespace
}  // namespace orvane::testing
