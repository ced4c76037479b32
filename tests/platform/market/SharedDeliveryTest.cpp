// Records whose receivers are so many that their calls are shared: one thread at a time for each
// receiver, and nothing left over where it ends in an exception.

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <vector>

#include "platform/core/SharedCalls.h"
#include "platform/market/QuoteService.h"
#include "platform/reference/CodeService.h"
#include "tests/platform/market/PlatformFixture.h"
#include "tests/support/HostThread.h"

namespace orvane::testing {
namespace {

constexpr int kLive = 1, kLater = 2;

/// Counts the batches of a request, and does something in the call of the first live bar.
struct CountingSpi final : QuoteSpi {
  void onKLine(int id, const std::vector<IKLine>& bars, const ResultStatus&, int) override {
    EXPECT_FALSE(isInside.exchange(true)) << "two threads call it at a time";
    if (id == kLater) ++later;
    if (id == kLive && !bars.empty() && ++live == 1 && onFirst) onFirst();
    isInside = false;
  }
  std::atomic<bool> isInside{false};
  std::atomic<int> live{0}, later{0};
  std::function<void()> onFirst;
};

class SharedDelivery : public ::testing::Test {
 protected:
  SharedDelivery() {
    Instrument instrument;
    instrument.code = "A";
    instrument.market = "X";
    code = codes.add(instrument);
    store.add(std::make_shared<const BarSeries>(makeBars(code, kMonday, kMinute, 10)));
    service.startAt(kMonday);
    for (int i = 0; i < 20; ++i) {
      spis.push_back(std::make_shared<CountingSpi>());
      ask(spis.back(), kLive);
    }
    service.serve();
    service.setQuietWait([] {});
    // As the driver does: the turn is anybody's meanwhile.
    service.setManyCalls([this](std::size_t count, const detail::SharedCalls::Call& call) {
      turn.unlock();
      for (std::size_t at = 0; at < count; ++at) call(at);
      turn.lock();
    });
  }

  void ask(const std::shared_ptr<QuoteSpi>& spi, int id) {
    service.subscribeBars(makeQuery(code), kOneMinute, spi, id);
  }
  void serveOverdue() {
    const std::lock_guard lock(service.turn());
    service.serveOverdue({std::chrono::steady_clock::time_point::max(), true});
  }
  void deliverNext() {
    turn.lock();
    const std::unique_lock given(turn, std::adopt_lock);
    service.deliverNext(*store.streams().front());
  }

  detail::CodeService codes{[] { return kMonday; }, "UTC"};
  detail::MarketStore store{kMonday, kUnsetTime, detail::ZoneRules::find("UTC")};
  detail::QuoteService service{store, codes, [] {}};
  std::unique_lock<std::mutex> turn{service.turn(), std::defer_lock};
  ICodeID code;
  std::vector<std::shared_ptr<CountingSpi>> spis;
};

TEST_F(SharedDelivery, shouldNotCallAReceiverThatSomebodyAnswersMeanwhile) {
  std::optional<support::HostThread> answerer;
  CountingSpi& one = *spis[3];
  one.onFirst = [&] {
    ask(spis[3], kLater);
    answerer.emplace([this] { serveOverdue(); });
    EXPECT_TRUE(answerer->awaitSleep()) << "the answer did not wait for the call to end";
    EXPECT_EQ(one.later.load(), 0);
  };
  deliverNext();
  answerer.reset();
  EXPECT_EQ(one.later.load(), 1);
  for (const auto& spi : spis) EXPECT_EQ(spi->live.load(), 1);
}

TEST_F(SharedDelivery, shouldLetGoOfReceiversAlsoAfterADeliveryThatFailed) {
  service.setManyCalls(
      [](std::size_t, const detail::SharedCalls::Call&) { throw std::bad_alloc(); });
  EXPECT_THROW(deliverNext(), std::bad_alloc);
  const std::weak_ptr<CountingSpi> gone = spis.back();
  service.unsubscribeSpi(spis.back());
  spis.pop_back();
  serveOverdue();
  EXPECT_TRUE(gone.expired());
}

}  // namespace
}  // namespace orvane::testing
