// Bars of what is held and awaited by nobody are reckoned with once somebody looks; nobody can
// tell.

#include "platform/trade/PostponedBars.h"

#include <atomic>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>

#include "platform/fields/PositionView.h"
#include "tests/platform/trade/TradeFixture.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

using order::Direction;
using order::Offset;

TEST(PostponedBars, shouldBeTakenInTheirOrderAndKeepThoseThatAreNotTakenYet) {
  detail::PostponedBars bars;
  const detail::MarketStream stream(std::make_shared<const BarSeries>(), 0);
  std::vector<std::size_t> seen;
  const auto see = [&](const detail::MarketStream& of, std::size_t row) {
    EXPECT_EQ(&of, &stream);
    if (row == 7) throw std::runtime_error("no");
    seen.push_back(row);
  };
  EXPECT_TRUE(bars.isEmpty());
  for (std::size_t row = 5; row < 10; ++row) bars.add(stream, row);
  EXPECT_FALSE(bars.isEmpty());
  EXPECT_THROW(bars.takeAll(see), std::runtime_error);
  EXPECT_EQ(seen, (std::vector<std::size_t>{5, 6}));
  EXPECT_FALSE(bars.isEmpty());
  seen.clear();
  bars.takeAll([&](const detail::MarketStream&, std::size_t row) { seen.push_back(row); });
  EXPECT_EQ(seen, (std::vector<std::size_t>{7, 8, 9}));
  EXPECT_TRUE(bars.isEmpty());
}

TEST(PostponedBars, shouldHaveRoomForSoManyAgainOnceTheyAreTaken) {
  detail::PostponedBars bars;
  const detail::MarketStream stream(std::make_shared<const BarSeries>(), 0);
  std::size_t next = 0, expected = 0;
  for (int turn = 0; turn < 3; ++turn) {
    for (std::size_t i = 0; i < detail::PostponedBars::kMost; ++i) {
      EXPECT_FALSE(bars.isFull());
      bars.add(stream, next++);
    }
    EXPECT_TRUE(bars.isFull());
    bars.takeAll([&](const detail::MarketStream&, std::size_t row) { EXPECT_EQ(row, expected++); });
    EXPECT_EQ(expected, next);
  }
}

std::string textOf(const EquityPoint& point) {
  return RecordingSpi::relative(point.time) + " " + number(point.equity) + " " +
         number(point.exposure);
}

/// A platform over bars of which each closes one higher than the one before it.
struct Rising : TradePlatform {
  explicit Rising(int bars, PlatformOptions options = tradeOptions())
      : TradePlatform(std::move(options), bars) {}

  void sell(double volume) {
    send(makeRequest(account(), code, Direction::Sell, volume, Offset::Close));
  }
  /// Calls `what` at the end of bar `n`, from 1.
  void at(int n, std::function<void()> what) {
    const std::string time =
        "bar " + std::to_string(n / 60) + ":" + (n % 60 < 10 ? "0" : "") + std::to_string(n % 60);
    actions_[time] = std::move(what);
  }
  void play() {
    spi_->onLine = [this](const std::string& line) {
      const auto action = actions_.find(line);
      if (action != actions_.end()) action->second();
    };
    subscribeBars(spi_);
    (*this)->run();
  }
  TradingAccount capital() {
    TradingAccount record;
    EXPECT_EQ(service().getCapital(account(), record).code, 0);
    return record;
  }

 private:
  std::map<std::string, std::function<void()>> actions_;
  std::shared_ptr<TradeRecorder> spi_ = std::make_shared<TradeRecorder>();
};

TEST(PostponedBars, shouldGiveTheCurveAPointAtEachBarWhileSomethingIsHeld) {
  Rising run(300);
  run.at(2, [&] { run.buy(2); });     // At 3, in the bar that ends at minute 3.
  run.at(250, [&] { run.sell(2); });  // At 251.
  run.play();
  const EquityCurve curve = run->tradeResults().at(0).curve;
  std::vector<std::string> points, expected{"0:01 1000000 0"};
  for (const EquityPoint& point : curve) points.push_back(textOf(point));
  for (int minute = 3; minute <= 250; ++minute)
    expected.push_back(RecordingSpi::relative(kMonday + minute * kMinute) + " " +
                       number(1'000'000 + 2 * (minute - 3)) + " " + number(2 * minute));
  for (const int minute : {251, 300})
    expected.push_back(RecordingSpi::relative(kMonday + minute * kMinute) + " 1000496 0");
  EXPECT_EQ(points, expected);
}

TEST(PostponedBars, shouldHaveBeenReckonedWithWhoeverAsks) {
  Rising run(300);
  run.at(2, [&] { run.buy(2); });
  // After more of them than there is room for, and after few.
  run.at(200, [&] { EXPECT_EQ(CapitalView(run.capital()).equity(), 1'000'394); });
  run.at(203, [&] {
    Position position;
    ASSERT_EQ(run.service().getPosition(run.account(), run.code, position).code, 0);
    EXPECT_EQ(PositionView(position).markPrice(), 203);
    EXPECT_EQ(PositionView(position).longSide().floatingProfit(), 400);
  });
  run.at(207, [&] { EXPECT_EQ(run->glanceAtTrading().at(0).equity, 1'000'408); });
  run.at(211,
         [&] { EXPECT_EQ(textOf(run->tradeResults().at(0).curve.back()), "3:31 1000416 422"); });
  run.play();
  EXPECT_EQ(run->tradeResults().at(0).curve.size(), 299u);
}

TEST(PostponedBars, shouldHaveBeenReckonedWithWhenAnOrderOfAnotherCodeNeedsTheirProfit) {
  PlatformOptions options = tradeOptions();
  options.trade.accounts[0].startBalance = "100";
  options.trade.marginRate = "1";
  Rising run(300, options);
  const ICodeID other = run.installed().code("B");
  run->addBars(TradePlatform::bars_(other, 300));
  run.at(2, [&] { run.buy(30); });  // For 90 of 100.
  int64 late = 0;
  run.at(102, [&] {  // At 103 all of it is worth 3,000 more, less 90 of margin.
    late = run.send(makeRequest(run.account(), other, Direction::Buy, 29));
  });
  run.play();
  Order order;
  ASSERT_EQ(run.service().getOrder(late, order).code, 0);
  EXPECT_EQ(OrderView(order).status(), order::Status::Filled);
}

TEST(PostponedBars, shouldBeReckonedWithBeforeADaySettlesAtItsLastPrice) {
  PlatformOptions options = tradeOptions();
  options.trade.settlesDaily = true;
  Rising run(0, options);
  BarSeries series = TradePlatform::bars_(run.code, 300);
  for (std::size_t i = 0; i < series.bars.size(); ++i)
    KLineWriter(series.bars[i]).setDayAndFlags(i < 150 ? 20210104 : 20210105, 0);
  run->addBars(std::move(series));
  run.at(2, [&] { run.buy(2); });
  std::vector<double> closed;
  for (const int bar : {150, 151, 152})
    run.at(bar, [&] { closed.push_back(CapitalView(run.capital()).closedProfit()); });
  run.play();
  // The first bar of the new day is the 151st; the last price before it was 150.
  EXPECT_EQ(closed, (std::vector<double>{0, 294, 294}));
}

TEST(PostponedBars, shouldLeaveTheAccountAtTheLastPriceItCanReckonWith) {
  PlatformOptions options = tradeOptions();
  options.trade.accounts[0].startBalance = "100000000";
  TradePlatform platform(options, 0);
  BarSeries series = makeBars(platform.code, kMonday, kMinute, 0);
  // At the dear ones what is held would be worth more than money can tell.
  const double closes[] = {3, 3, 3, 4, 2e8, 3e8, 4e8, 4e8};
  for (int i = 0; i < 8; ++i)
    series.bars.push_back(makeBar(kMonday + i * kMinute, kMonday + (i + 1) * kMinute, closes[i],
                                  closes[i], closes[i], closes[i], 1e9));
  platform->addBars(series);
  std::vector<double> prices, equities;
  const auto spi = std::make_shared<TradeRecorder>();
  int bars = 0;
  spi->onLine = [&](const std::string& line) {
    if (!line.starts_with("bar")) return;
    if (++bars == 2) platform.buy(1e7);
    if (bars < 7) return;
    Position position;
    ASSERT_EQ(platform.service().getPosition(platform.account(), platform.code, position).code, 0);
    prices.push_back(PositionView(position).markPrice());
    equities.push_back(platform->tradeResults().at(0).curve.back().equity);
  };
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(prices, (std::vector<double>{2e8, 2e8}));
  EXPECT_EQ(equities, (std::vector<double>{1e8 + 1e7 * (2e8 - 3), 1e8 + 1e7 * (2e8 - 3)}));
}

TEST(PostponedBars, shouldBeForgottenWithTheRunThatTheyWereOf) {
  Rising run(300);
  bool cancels = true;
  run.at(2, [&] { run.buy(2); });
  run.at(200, [&] {
    if (cancels) run->cancel();
  });
  run.play();
  const EquityCurve cut = run->tradeResults().at(0).curve;
  EXPECT_EQ(textOf(cut.back()), "3:20 1000394 400");
  run->rewind();
  EXPECT_EQ(run->glanceAtTrading().at(0).equity, 1'000'000);
  EXPECT_TRUE(run->tradeResults().at(0).curve.empty());
  cancels = false;
  run->run();
  const EquityCurve whole = run->takeTradeResults().at(0).curve;
  ASSERT_EQ(whole.size(), 299u);
  for (std::size_t i = 0; i < cut.size(); ++i) EXPECT_EQ(textOf(whole[i]), textOf(cut[i]));
  EXPECT_EQ(textOf(whole.back()), "5:00 1000594 600");
}

TEST(PostponedBars, shouldBeKnownOfAllAccountsOrOfNoneToWhoeverLooksMeanwhile) {
  Rising run(3'000, tradeOptions({"A1", "A2"}));
  // What one account wins the other loses.
  run.at(2, [&] {
    run.buy(2);
    run.send(makeRequest(run.account(1), run.code, Direction::Sell, 2));
  });
  std::atomic<int> looks = 0, torn = 0;
  std::atomic<bool> isOver = false;
  std::thread watcher([&] {
    while (!isOver) {
      const std::vector<AccountGlance> seen = run->glanceAtTrading();
      if (seen[0].equity + seen[1].equity != 2'000'000) ++torn;
      ++looks;
    }
  });
  for (int bar = 100; bar < 3'000; bar += 100)
    run.at(bar, [&] {
      const int before = looks;
      while (looks == before) std::this_thread::yield();
    });
  run.play();
  isOver = true;
  watcher.join();
  EXPECT_GT(looks, 29);
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(run->glanceAtTrading().at(0).equity, 1'000'000 + 2 * 2'997);
}

BarSeries wanderingBars(const ICodeID& code, int count, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  BarSeries series = makeBars(code, kMonday, kMinute, 0);
  double price = 100;
  for (int i = 0; i < count; ++i) {
    const double open = price, close = open + static_cast<double>(random() % 21) / 10 - 1;
    // Now and then a bar that tells no price.
    const double low = random() % 50 == 0 ? 0 : std::min(open, close);
    series.bars.push_back(makeBar(kMonday + i * kMinute, kMonday + (i + 1) * kMinute, open,
                                  std::max(open, close), low, close, 1000,
                                  20210104 + i / (count / 4)));
    price = close;
  }
  return series;
}

/// What comes of a run that trades seldom, in two codes, while `look` is called at each bar.
std::vector<std::string> outcomeOf(std::uint64_t seed,
                                   const std::function<void(EmbeddedPlatform&)>& look) {
  constexpr int kBars = 1'000;
  PlatformOptions options = tradeOptions({"A1", "A2"});
  options.trade.sources = {"S", "T"};
  options.trade.settlesDaily = seed % 2 == 0;
  options.trade.entryLatencyMs = static_cast<int64>(seed % 3) * 20'000;
  options.trade.reportLatencyMs = static_cast<int64>(seed % 5) * 20'000;
  TradePlatform platform(options, 0);
  const ICodeID other = platform.installed().code("B");
  platform->addBars(wanderingBars(platform.code, kBars, seed));
  platform->addBars(wanderingBars(other, kBars, seed + 1));
  std::mt19937_64 random(seed + 2);
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (!line.starts_with("bar")) return;
    if (look) look(*platform.operator->());
    if (random() % 60 != 0) return;
    const bool isOpening = random() % 2 == 0;
    OrderRequest request =
        makeRequest(platform.account(random() % 2), random() % 2 == 0 ? platform.code : other,
                    (random() % 2 == 0) ? Direction::Buy : Direction::Sell,
                    1 + static_cast<double>(random() % 3), isOpening ? Offset::Open : Offset::Close,
                    random() % 2 == 0 ? "S" : "T");
    if (random() % 3 == 0) {
      OrderWriter(request).setType(order::Type::Limit);
      OrderWriter(request).setLimitPrice(99 + static_cast<double>(random() % 30) / 10);
    }
    platform.send(request);
  };
  platform.subscribeAll(spi, 0);
  platform.subscribeAll(spi, 1);
  platform.subscribeBars(spi);
  platform->run();
  std::vector<std::string> all = spi->lines();
  for (const AccountResult& result : platform->tradeResults()) {
    for (const EquityPoint& point : result.curve) all.push_back(textOf(point));
    for (const SourceResult& source : result.sources)
      for (const EquityPoint& point : source.curve)
        all.push_back(source.source + " " + textOf(point));
    all.push_back(number(CapitalView(result.capital).equity()));
  }
  return all;
}

TEST(PostponedBars, shouldGiveTheSameHoweverOftenSomebodyLooks) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  for (std::uint64_t run = 0; run < 6; ++run) {
    const std::vector<std::string> expected = outcomeOf(seed + run, {});
    EXPECT_GT(expected.size(), 1'010u);
    EXPECT_EQ(outcomeOf(seed + run, [](EmbeddedPlatform& platform) { platform.glanceAtTrading(); }),
              expected);
  }
}

TEST(PostponedBars, shouldGiveTheSameWhileOtherThreadsLook) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  const std::vector<std::string> expected = outcomeOf(seed, {});
  std::atomic<EmbeddedPlatform*> watched = nullptr;
  std::atomic<bool> isOver = false;
  std::atomic<int> looks = 0;
  std::thread watcher([&] {
    while (!isOver)
      if (EmbeddedPlatform* const platform = watched)
        looks += platform->glanceAtTrading().size() == 2;
  });
  int bars = 0;
  EXPECT_EQ(outcomeOf(seed,
                      [&](EmbeddedPlatform& platform) {
                        watched = &platform;
                        const int seen = looks;
                        while (bars % 100 == 0 && looks == seen) std::this_thread::yield();
                        // The platform goes with the run; its last bars are looked at by nobody.
                        if (++bars < 950 || isOver) return;
                        isOver = true;
                        watcher.join();
                      }),
            expected);
  EXPECT_GE(looks, 10);
}

}  // namespace
}  // namespace orvane::testing
