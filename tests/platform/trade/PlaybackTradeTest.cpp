// Trading in playback as a whole: the same whatever the threads do, and never from the future.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <set>

#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;
using order::Direction;

/// Bars that wander, of a code.
BarSeries wanderingBars(const ICodeID& code, int count, unsigned seed) {
  std::mt19937 random(seed);
  BarSeries series = makeBars(code, kMonday, kMinute, 0);
  double price = 100;
  for (int i = 0; i < count; ++i) {
    const auto step = [&] { return static_cast<double>(random() % 21) / 10 - 1; };
    const double open = price + step(), close = open + step();
    const double high = std::max(open, close) + 0.5, low = std::min(open, close) - 0.5;
    series.bars.push_back(makeBar(kMonday + i * kMinute, kMonday + (i + 1) * kMinute, open, high,
                                  low, close, 1000, i < count / 2 ? 20210104 : 20210105));
    price = close;
  }
  return series;
}

/// A runner that trades at random, but by its own seed alone.
struct Trader {
  Trader(TradePlatform& where, ICodeID what, std::string who, unsigned seed)
      : platform(where), code(std::move(what)), source(std::move(who)), random(seed) {}

  void act(TradeRunner& self, const std::string& event) {
    if (event.rfind("bar", 0) != 0 && random() % 5 != 0) return;
    OrderRequest request =
        makeRequest(platform.account(), code, random() % 2 == 0 ? Direction::Buy : Direction::Sell,
                    1 + static_cast<double>(random() % 3),
                    random() % 2 == 0 ? order::Offset::Open : order::Offset::Close, source);
    OrderWriter writer(request);
    if (random() % 2 == 0) {
      writer.setType(order::Type::Limit);
      writer.setLimitPrice(95 + static_cast<double>(random() % 100) / 10);
    }
    sent.push_back(platform.send(request));
    if (random() % 4 == 0) platform.cancel(sent[random() % sent.size()], source);
    TradingAccount capital;
    platform.service().getCapital(platform.account(), capital);
    std::list<Order> open;
    platform.service().openOrdersOfAccount(platform.account(), open);
    self.push("sees " + number(CapitalView(capital).equity()) + " " + std::to_string(open.size()));
  }

  TradePlatform& platform;
  const ICodeID code;
  const std::string source;
  std::mt19937 random;
  std::vector<int64> sent;
};

Lines traderRun(int threads, unsigned seed, unsigned count = 4, int bars = 120) {
  PlatformOptions options = tradeOptions();
  options.poolThreads = threads;
  options.trade.sources.clear();
  for (unsigned i = 0; i < count; ++i) options.trade.sources.push_back("S" + std::to_string(i));
  options.trade.entryLatencyMs = static_cast<int64>(seed % 2) * 20'000;
  options.trade.reportLatencyMs = static_cast<int64>(seed % 3) * 7'000;
  options.trade.script = {{"A1", kMonday + 40 * kMinute, false},
                          {"A1", kMonday + 45 * kMinute, true}};
  TradePlatform platform(options, 0);
  const ICodeID other = platform.installed().code("B");
  platform->addBars(wanderingBars(platform.code, bars, seed));
  platform->addBars(wanderingBars(other, bars, seed + 1));
  std::vector<std::unique_ptr<Trader>> traders;
  std::vector<std::shared_ptr<TradeRunner>> runners;
  for (unsigned i = 0; i < count; ++i) {
    const std::string source = "S" + std::to_string(i);
    const ICodeID code = i % 2 == 0 ? platform.code : other;
    traders.push_back(std::make_unique<Trader>(platform, code, source, seed + i));
    Trader* trader = traders.back().get();
    const auto runner =
        std::make_shared<TradeRunner>([trader](TradeRunner& self, const std::string& event) {
          if (event.rfind("sees", 0) != 0) trader->act(self, event);
        });
    runners.push_back(runner);
    platform.service().subscribeStatus(runner, platform.account());
    platform.service().subscribeOrderBySourceName(runner, source, platform.account());
    platform.service().subscribeFillBySourceName(runner, source, platform.account());
    platform.installed().quotes().subscribeBars(makeQuery(code), kOneMinute, runner,
                                                static_cast<int>(i) + 1);
  }
  platform->run();
  platform->drain();
  Lines all;
  for (const auto& runner : runners) {
    for (const std::string& line : runner->lines())
      if (line.find("batch") == std::string::npos) all.push_back(line);
    all.push_back("--");
  }
  const AccountResult result = platform->tradeResults().at(0);
  for (const SourceResult& source : result.sources) {
    for (const Order& order : source.orders) all.push_back(lineOf(order));
    for (const OrderFill& fill : source.fills) all.push_back(lineOf(fill));
    for (const EquityPoint& point : source.curve)
      all.push_back(std::to_string(point.time) + " " + std::to_string(point.equity));
  }
  return all;
}

TEST(PlaybackTrade, shouldGiveTheSameWithAnyNumberOfThreads) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const Lines expected = traderRun(1, seed);
    EXPECT_GT(expected.size(), 1000u);
    for (const int threads : {2, 8})
      EXPECT_EQ(traderRun(threads, seed), expected) << "seed " << seed << ", threads " << threads;
  }
}

TEST(PlaybackTrade, shouldGiveTheSameWhereThreadsShareTheCallsOfManyTraders) {
  for (unsigned seed = 7; seed <= 8; ++seed) {
    const Lines expected = traderRun(1, seed, 40, 50);
    EXPECT_GT(expected.size(), 1000u);
    for (const int threads : {1, 3, 8})
      EXPECT_EQ(traderRun(threads, seed, 40, 50), expected)
          << "seed " << seed << ", threads " << threads;
  }
}

TEST(PlaybackTrade, shouldNeverFillAnOrderOnTheEventThatItAnswers) {
  for (const int64 latency : {0, 1, 30'000}) {
    PlatformOptions options = tradeOptions();
    options.trade.entryLatencyMs = latency;
    TradePlatform platform(options, 0);
    platform->addBars(wanderingBars(platform.code, 200, 5));
    const auto spi = std::make_shared<TradeRecorder>();
    std::map<int64, int64> sentAt;
    // A cheat: it knows that this bar's low was touched, and asks for that very price.
    spi->onLine = [&](const std::string& line) {
      if (line.rfind("bar", 0) != 0) return;
      const int64 now = Timestamp::now(1).toUtcMsEponch();
      sentAt[platform.buy()] = now;
      sentAt[platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 200))] =
          now;
    };
    platform.subscribeAll(spi);
    platform.subscribeBars(spi);
    platform->run();
    ASSERT_GT(spi->fills().size(), 300u);
    std::size_t i = 0;
    for (const std::string& line : spi->linesOf({"fill"})) {
      const OrderFill fill = spi->fills()[i++];
      const int64 sent = sentAt.at(FillView(fill).orderId());
      EXPECT_GE(fill.fillTime(), sent + latency);
      const std::string moment = RecordingSpi::relative(sent);
      EXPECT_NE(line.substr(1, line.find(' ') - 1), moment) << line;
    }
  }
}

TEST(PlaybackTrade, shouldFillByTheNextTickOnlyAndNotByOneOfTheSameCallBack) {
  TradePlatform platform(tradeOptions(), 0);
  TickSeries ticks = makeTicks(platform.code, {kMonday, kMonday, kMonday + 1000, kMonday + 2000});
  platform->addTicks(std::move(ticks));
  const auto spi = std::make_shared<TradeRecorder>();
  bool done = false;
  spi->onLine = [&](const std::string& line) {
    if (line.rfind("tick", 0) == 0 && !std::exchange(done, true)) platform.buy();
  };
  platform.service().subscribeFillBySourceName(spi, "S", platform.account());
  platform.installed().quotes().subscribeBars(makeQuery(platform.code), kTick, spi, 1);
  platform->run();
  // The first tick has the price 1; the second, of the same time, comes after the order.
  EXPECT_EQ(spi->linesOf({"fill", "tick"}),
            (Lines{"@0:00 tick 0:00", "@0:00 fill 1000000001 buy 1@2", "@0:00 tick 0:00",
                   "@0:00+1000 tick 0:00+1000", "@0:00+2000 tick 0:00+2000"}));
}

TEST(PlaybackTrade, shouldMatchByTicksAndNotByBarsWhereBothAreThere) {
  TradePlatform platform;
  platform->addTicks(makeTicks(platform.code, {kMonday + 90'000, kMonday + 95'000}));
  platform.buy();
  platform->run();
  std::list<OrderFill> fills;
  platform.service().fillsOfAccount(platform.account(), fills);
  ASSERT_EQ(fills.size(), 1u);
  EXPECT_EQ(fills.front().price(), 1);
  EXPECT_EQ(fills.front().fillTime(), kMonday + 90'000);
}

TEST(PlaybackTrade, shouldMatchByTheShortestBars) {
  TradePlatform platform(tradeOptions(), 0);
  BarSeries longer = makeBars(platform.code, kMonday, 5 * kMinute, 4);
  for (IKLine& bar : longer.bars) KLineWriter(bar).set(kline::Volume, 1000);
  platform->addBars(std::move(longer));
  platform->addBars(TradePlatform::bars_(platform.code, 20));
  platform.buy();
  platform->run();
  std::list<OrderFill> fills;
  platform.service().fillsOfAccount(platform.account(), fills);
  ASSERT_EQ(fills.size(), 1u);
  EXPECT_EQ(fills.front().price(), 2);
}

TEST(PlaybackTrade, shouldKnowTheLastPriceOfACodeInWhichNobodyTradedBefore) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  double markPrice = 0;
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:05")
      platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 0.5));
    if (line.find("working") == line.npos) return;
    Position position;
    if (platform.service().getPosition(platform.account(), platform.code, position).code == 0)
      markPrice = PositionView(position).markPrice();
    TradingAccount capital;
    platform.service().getCapital(platform.account(), capital);
    EXPECT_EQ(CapitalView(capital).equity(), 1'000'000);
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_TRUE(markPrice == 0 || markPrice == 5) << markPrice;
}

TEST(PlaybackTrade, shouldEndWhenCancelledThoughAStrategySendsAgainAfterEachRejection) {
  TradePlatform platform;
  int rejections = 0;
  const auto sell = [&] {
    platform.send(
        makeRequest(platform.account(), platform.code, Direction::Sell, 1, order::Offset::Close));
  };
  const auto runner = std::make_shared<TradeRunner>([&](TradeRunner&, const std::string& event) {
    if (event == "bar 0:03") sell();
    if (event.find("rejected") == event.npos) return;
    if (++rejections == 1000) platform->cancel();
    sell();
  });
  platform.subscribeAll(runner);
  platform.subscribeBars(runner);
  platform->run();
  EXPECT_GE(rejections, 1000);
  EXPECT_LE(rejections, 1001);
  platform->drain();
  EXPECT_LE(rejections, 1001);
}

TEST(PlaybackTrade, shouldGiveTheSameAgainAfterARewind) {
  TradePlatform platform(tradeOptions(), 0);
  platform->addBars(wanderingBars(platform.code, 100, 9));
  std::vector<Lines> runs;
  for (int i = 0; i < 2; ++i) {
    Trader trader(platform, platform.code, "S", 3);
    const auto runner =
        std::make_shared<TradeRunner>([&](TradeRunner& self, const std::string& event) {
          if (event.rfind("sees", 0) != 0) trader.act(self, event);
        });
    platform.service().subscribeOrderBySourceName(runner, "S", platform.account());
    platform.service().subscribeFillBySourceName(runner, "S", platform.account());
    platform.subscribeBars(runner);
    platform->run();
    platform->drain();
    platform.service().unsubscribeAll(runner);
    platform.installed().quotes().unsubscribeSpi(runner);
    Lines lines = runner->lines();
    const EquityCurve curve = platform->tradeResults().at(0).curve;
    for (const EquityPoint& point : curve)
      lines.push_back(std::to_string(point.time) + " " + std::to_string(point.equity));
    runs.push_back(lines);
    platform->rewind();
    EXPECT_TRUE(platform->tradeResults().at(0).sources.empty());
    EXPECT_TRUE(platform->tradeResults().at(0).curve.empty());
  }
  EXPECT_GT(runs[0].size(), 200u);
  ASSERT_EQ(runs[0].size(), runs[1].size());
  for (std::size_t i = 0; i < runs[0].size(); ++i)
    ASSERT_EQ(runs[0][i], runs[1][i]) << "line " << i;
}

TEST(PlaybackTrade, shouldDrawACurveFromStartToEndWithAPointForEachBarThatIsHeld) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy(2);
    if (line == "bar 0:05")
      platform.send(
          makeRequest(platform.account(), platform.code, Direction::Sell, 2, order::Offset::Close));
  };
  platform.subscribeBars(spi);
  platform->run();
  Lines points;
  const AccountResult result = platform->tradeResults().at(0);
  for (const EquityPoint& point : result.curve)
    points.push_back(RecordingSpi::relative(point.time) + " " + number(point.equity - 1'000'000) +
                     " " + number(point.exposure));
  ASSERT_GE(points.size(), 5u);
  EXPECT_EQ(points.front(), "0:01 0 0");
  EXPECT_EQ(points.back(), "0:10 6 0");
  // Bought two at 3; bar 0:04 closed at 4, 0:05 at 5; sold two at 6.
  EXPECT_NE(std::find(points.begin(), points.end(), "0:04 2 8"), points.end());
  EXPECT_NE(std::find(points.begin(), points.end(), "0:05 4 10"), points.end());
  ASSERT_EQ(result.sources.size(), 1u);
  EXPECT_EQ(result.sources.front().curve.size(), result.curve.size());
  EXPECT_EQ(result.sources.front().orders.size(), 2u);
  EXPECT_EQ(result.sources.front().fills.size(), 2u);
  EXPECT_EQ(CapitalView(result.capital).closedProfit(), 6);
}

TEST(PlaybackTrade, shouldTakeAPointAMinuteWhereTicksComeFaster) {
  TradePlatform platform(tradeOptions(), 0);
  std::vector<int64> times;
  for (int i = 0; i < 600; ++i) times.push_back(kMonday + i * 500);
  platform->addTicks(makeTicks(platform.code, times));
  platform.buy();
  platform->run();
  const EquityCurve curve = platform->tradeResults().at(0).curve;
  // Start, fill, one for each further minute of five, and the end.
  EXPECT_GE(curve.size(), 6u);
  EXPECT_LE(curve.size(), 8u);
}

TEST(PlaybackTrade, shouldKeepAccountsApart) {
  TradePlatform platform(tradeOptions({"A1", "A2"}));
  platform.send(makeRequest(platform.account(0), platform.code, Direction::Buy, 1));
  platform.send(makeRequest(platform.account(1), platform.code, Direction::Sell, 2));
  platform->run();
  const std::vector<AccountResult> results = platform->tradeResults();
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(CapitalView(results[0].capital).equity(), 1'000'008);
  EXPECT_EQ(CapitalView(results[1].capital).equity(), 1'000'000 - 16);
}

Lines linesOf(const AccountResult& result) {
  Lines lines{number(CapitalView(result.capital).equity())};
  const auto addCurve = [&lines](const EquityCurve& curve) {
    for (const EquityPoint& point : curve)
      lines.push_back(RecordingSpi::relative(point.time) + " " + number(point.equity) + " " +
                      number(point.exposure));
  };
  addCurve(result.curve);
  for (const SourceResult& source : result.sources) {
    lines.push_back(source.source);
    for (const Order& order : source.orders)
      lines.push_back("order " + std::to_string(order.id) + " " + std::to_string(order.status()));
    for (const OrderFill& fill : source.fills)
      lines.push_back("fill " + std::to_string(fill.id) + " " + number(fill.price()));
    addCurve(source.curve);
  }
  return lines;
}

TEST(PlaybackTrade, shouldHandOverItsResultsAndKnowNothingOfThemAfterwards) {
  TradePlatform platform(tradeOptions({"A1", "A2"}));
  const auto play = [&platform] {
    const auto spi = std::make_shared<TradeRecorder>();
    spi->onLine = [&](const std::string& line) {
      if (line == "bar 0:02") platform.buy(2);
      if (line != "bar 0:04") return;
      OrderRequest request = makeRequest(platform.account(1), platform.code, Direction::Sell, 1);
      platform.send(request);
      request.source.createSource = "T";
      platform.send(request);
    };
    platform.subscribeBars(spi);
    platform->run();
    platform->drain();
    platform.installed().quotes().unsubscribeSpi(spi);
  };
  play();
  const auto linesOfAll = [](const std::vector<AccountResult>& results) {
    Lines lines;
    for (const AccountResult& result : results)
      std::ranges::copy(linesOf(result), std::back_inserter(lines));
    return lines;
  };
  const Lines copied = linesOfAll(platform->tradeResults());
  ASSERT_GT(copied.size(), 40u);
  EXPECT_EQ(linesOfAll(platform->takeTradeResults()), copied);

  const AccountResult left = platform->tradeResults().at(0);
  EXPECT_TRUE(left.sources.empty());
  EXPECT_TRUE(left.curve.empty());
  EXPECT_EQ(CapitalView(left.capital).equity(), 1'000'014);
  std::list<Order> orders;
  EXPECT_EQ(platform.service().ordersOfAccount(platform.account(), orders).code, 0);
  EXPECT_TRUE(orders.empty());

  platform->rewind();
  play();
  EXPECT_EQ(linesOfAll(platform->takeTradeResults()), copied);
}

TEST(PlaybackTrade, shouldTradeInLiveModeByTheWallClock) {
  PlatformOptions options = tradeOptions();
  options.mode = PlatformOptions::Mode::Live;
  options.speed = 600;  // A minute bar lasts a tenth of a second.
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  int bars = 0;
  spi->onLine = [&](const std::string& line) {
    if (line.rfind("bar", 0) == 0 && ++bars == 1) platform.buy();
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  ASSERT_EQ(spi->fills().size(), 1u);
  EXPECT_GE(spi->fills().front().fillTime(), OrderView(spi->orders().front()).insertTime());
}

TEST(PlaybackTrade, shouldFollowTheScriptOfConnectionsInLiveMode) {
  PlatformOptions options = tradeOptions();
  options.mode = PlatformOptions::Mode::Live;
  options.speed = 6000;
  options.trade.script = {{"A1", kMonday + 6 * kMinute, false}};
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  platform->drain();
  ASSERT_EQ(spi->linesOf({"status"}).size(), 1u);
  platform->run();
  EXPECT_EQ(spi->linesOf({"status"}).size(), 2u);
}

}  // namespace
}  // namespace orvane::testing
