// Grids over random markets with random pauses, held against a simulation of their own definition
// that shares nothing with the platform.

#include <random>

#include "tests/platform/trade/conditions/GridFixture.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

/// Prices are counted in ticks.
struct TickBar {
  int open, high, low, close;
};

struct Market {
  int lower, cells, step, volume;
  std::vector<TickBar> bars;
  std::vector<bool> isPaused;  ///< After the end of each bar.
};

struct Outcome {
  std::vector<std::string> fills;  ///< Of each bar: "3 buy@98", sorted.
  long long profit = 0;            ///< Ticks times volume.
  int held = 0, sales = 0;
};

/// What the cells of a grid do, one after the other: none knows of another one.
Outcome simulate(const Market& market) {
  Outcome outcome;
  for (int k = 0; k < market.cells; ++k) {
    const int buy = market.lower + k * market.step;
    const int sell = buy + market.step;
    bool holds = false;
    bool bids = false;
    int paid = 0;
    for (std::size_t i = 0; i < market.bars.size(); ++i) {
      const TickBar& bar = market.bars[i];
      const bool wasPaused = i > 0 && market.isPaused[i - 1];
      const bool isThere = i > 0 && !wasPaused;
      int at = 0;
      if (isThere && !holds && bids && (bar.open <= buy || bar.low < buy)) {
        at = bar.open <= buy ? bar.open : buy;
        holds = true;
        paid = at;
        outcome.fills.push_back(std::to_string(i) + " buy@" + std::to_string(at));
      } else if (isThere && holds && (bar.open >= sell || bar.high > sell)) {
        at = bar.open >= sell ? bar.open : sell;
        holds = bids = false;
        outcome.profit += static_cast<long long>(at - paid) * market.volume;
        ++outcome.sales;
        outcome.fills.push_back(std::to_string(i) + " sell@" + std::to_string(at));
      }
      // A bid rests until it is filled, or withdrawn by a pause.
      if (market.isPaused[i]) bids = false;
      if (!market.isPaused[i] && !holds && bar.close > buy) bids = true;
    }
    outcome.held += holds ? market.volume : 0;
  }
  std::sort(outcome.fills.begin(), outcome.fills.end());
  return outcome;
}

class GridDraw {
 public:
  explicit GridDraw(unsigned seed) : engine_(seed) {}
  /// From `low` to `high`, both inclusive.
  int between(int low, int high) {
    return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1));
  }

 private:
  std::mt19937 engine_;
};

Market drawMarket(GridDraw& draw) {
  Market market;
  market.lower = draw.between(50, 120);
  market.step = draw.between(1, 8);
  market.cells = draw.between(1, 12);
  market.volume = draw.between(1, 5);
  const int wildness = draw.between(1, 10);
  int price = market.lower + draw.between(-10, market.cells * market.step + 10);
  bool isPaused = false;
  const int count = draw.between(2, 80);
  for (int i = 0; i < count; ++i) {
    const auto move = [&] { return draw.between(-wildness, wildness); };
    TickBar bar{};
    // One in four opens with a gap.
    bar.open = std::max(5, price + (draw.between(0, 3) == 0 ? 2 * move() : 0));
    bar.close = std::max(5, bar.open + move());
    bar.high = std::max(bar.open, bar.close) + draw.between(0, wildness);
    bar.low = std::max(1, std::min(bar.open, bar.close) - draw.between(0, wildness));
    price = bar.close;
    market.bars.push_back(bar);
    if (draw.between(0, 14) == 0) isPaused = !isPaused;
    market.isPaused.push_back(isPaused);
  }
  return market;
}

/// The price of so many ticks of 0.2.
double priceOf(int ticks) { return ticks / 5.0; }
std::string priceText(int ticks) {
  return std::to_string(ticks / 5) + "." + std::to_string(ticks % 5 * 2);
}

Outcome play(const Market& market, int threads) {
  PlatformOptions options = gridOptions(
      makeGrid(priceText(market.lower), priceText(market.lower + market.cells * market.step),
               priceText(market.step), std::to_string(market.volume)));
  options.poolThreads = threads;
  std::vector<Bar> bars;
  for (const TickBar& bar : market.bars)
    bars.push_back({priceOf(bar.open), priceOf(bar.high), priceOf(bar.low), priceOf(bar.close)});
  GridPlatform platform(options, bars);
  bool isPaused = false;
  for (std::size_t i = 0; i < market.bars.size(); ++i) {
    if (market.isPaused[i] == isPaused) continue;
    isPaused = market.isPaused[i];
    platform.at(static_cast<int>(i) + 1, [&platform, isPaused] {
      EXPECT_EQ((isPaused ? platform.grids().pause(1) : platform.grids().resume(1)).code, 0);
    });
  }
  platform.play();

  Outcome outcome;
  std::list<OrderFill> fills;
  platform.service().fillsOfAccount(platform.account(), fills);
  for (const OrderFill& fill : fills) {
    const FillView view(fill);
    Order order;
    EXPECT_EQ(platform.service().getOrder(view.orderId(), order).code, 0);
    EXPECT_GE(view.time(), OrderView(order).arrivalTime());
    // A fill at the open has the bar's begin as its time and did not rest; one inside the bar has
    // its end.
    const int64 bar = (view.time() - kMonday) / kMinute - (view.hadRested() ? 1 : 0);
    outcome.fills.push_back(std::to_string(bar) + (view.isBuy() ? " buy@" : " sell@") +
                            std::to_string(std::lround(view.price() * 5)));
  }
  std::sort(outcome.fills.begin(), outcome.fills.end());
  const GridState state = platform.state();
  EXPECT_EQ(state.trouble, "");
  outcome.profit = std::llround(std::stod(state.closedProfit) * 5);
  outcome.held = std::stoi(state.held);
  outcome.sales = static_cast<int>(state.sales);
  return outcome;
}

TEST(GridRandom, shouldTradeAsItsDefinitionSaysOnRandomMarkets) {
  const int runs = support::randomRuns(400);
  const auto seed = static_cast<unsigned>(support::randomSeed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  GridDraw draw(seed);
  long long sales = 0;
  for (int run = 0; run < runs; ++run) {
    const Market market = drawMarket(draw);
    const Outcome expected = simulate(market);
    const Outcome found = play(market, draw.between(1, 3));
    ASSERT_EQ(found.fills, expected.fills) << "run " << run;
    ASSERT_EQ(found.profit, expected.profit) << "run " << run;
    ASSERT_EQ(found.held, expected.held) << "run " << run;
    ASSERT_EQ(found.sales, expected.sales) << "run " << run;
    sales += found.sales;
  }
  std::cout << "seed " << seed << ", " << runs << " runs, " << sales << " sales\n";
  EXPECT_GT(sales, runs / 2);
}

}  // namespace
}  // namespace orvane::testing
