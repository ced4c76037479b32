// The whole road of a grid: configuration, conditions, paper exchange, and both ways to see it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/Events.h"
#include "host/GridConfig.h"
#include "host/InputError.h"
#include "host/RunConfig.h"
#include "platform/EmbeddedPlatform.h"
#include "platform/fields/FillView.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/OrderView.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITradeService.h"
#include "tests/host/Durations.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

using test::kMinute;
constexpr int64 kStart = 1'609'718'400'000;  // 2021-01-04 00:00 UTC.

/// Bars of one price each.
const std::vector<double> kPrices = {100.5, 99.5, 98.5, 101.5, 99.5, 102.5, 97.5, 103.5};

std::string pricesCsv() {
  std::string text = "datetime,open,high,low,close,volume\n";
  int minute = 1;
  for (const double price : kPrices) {
    const std::string shown = std::to_string(price);
    text += "2021-01-04 00:0" + std::to_string(minute++) + ":00," + shown + "," + shown + "," +
            shown + "," + shown + ",100\n";
  }
  return text;
}

std::string configOf(const std::string& grid) {
  return R"({"runners": [{"strategy": "grid_watcher"}], "bars": [{"code": "A", "file": "a.csv"}],
             "grids": [)" +
         grid + R"(], "report": "out"})";
}

constexpr const char* kGrid = R"({"code": "A", "lower": 98, "upper": 102, "step": 1, "volume": 2})";

/// Runs `grid` over the prices; the report is in "out".
test::ProgramResult runGrid(const test::TempFolder& folder, const std::string& grid) {
  folder.write("a.csv", pricesCsv());
  return test::runProgram({"run", folder.write("run.json", configOf(grid))});
}

TEST(GridRoad, shouldShowTheGridOfARunToAStrategyOfItsAccount) {
  const test::TempFolder folder;
  const test::ProgramResult result = runGrid(folder, kGrid);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const QJsonObject report = test::readReport(folder / "out");
  const QJsonObject env = report["runners"].toArray()[0].toObject()["env"].toObject();
  // Bought: 100 at 99.5, 99 at 98.5; then 101 and 100 at 99.5; then 101, 100, 99 and 98 at 97.5.
  // Sold: the first two at 101.5, the next two at 102.5, the last four at 103.5.
  EXPECT_EQ(env["gridFills"].toString(), "16");
  EXPECT_EQ(env["gridHeld"].toString(), "0");
  EXPECT_EQ(env["gridRejected"].toString(), "0");
  EXPECT_GE(env["gridOrders"].toString().toInt(), 16);
  EXPECT_THAT(result.err, HasSubstr("grid 1 bought 2 A at 99.5"));
  EXPECT_THAT(result.err, HasSubstr("grid 1 sold 2 A at 103.5"));
}

TEST(GridRoad, shouldReportTheTradesOfAGridAsTheGrids) {
  const test::TempFolder folder;
  const test::ProgramResult result = runGrid(folder, kGrid);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const QJsonObject report = test::readReport(folder / "out");
  EXPECT_TRUE(report["runners"].toArray()[0].toObject()["trading"].isNull());
  const QJsonArray others = report["accounts"].toArray()[0].toObject()["otherTrading"].toArray();
  ASSERT_EQ(others.size(), 1);
  const QJsonObject grids = others[0].toObject();
  EXPECT_EQ(grids["orderSource"].toString(), "__grid__");
  EXPECT_EQ(grids["trades"].toArray().size(), 16);
  EXPECT_EQ(grids["trades"].toArray()[0].toObject()["grid"].toString(), "1");
  EXPECT_EQ(grids["orders"].toArray()[0].toObject()["grid"].toString(), "1");
  EXPECT_EQ(grids["figures"], report["accounts"].toArray()[0].toObject()["figures"]);
  const std::string trades = test::readFile(folder / "out/trades.csv");
  EXPECT_EQ(std::count(trades.begin(), trades.end(), '\n'), 17);
  EXPECT_THAT(trades, HasSubstr("\n__grid__,grid_watcher,"));
  EXPECT_THAT(test::readFile(folder / "out/equity.csv"), HasSubstr("\n__grid__,grid_watcher,"));
  EXPECT_THAT(result.out, HasSubstr("\ngrids on grid_watcher "));
}

TEST(GridRoad, shouldSayOnTheLogThatAGridHasNoMoney) {
  const test::TempFolder folder;
  folder.write("a.csv", pricesCsv());
  const std::string config = folder.write(
      "run.json",
      R"({"runners": [{"strategy": "grid_watcher"}], "bars": [{"code": "A", "file": "a.csv"}],
          "capital": 10, "trade": {"marginRate": 1}, "grids": [
          {"code": "A", "lower": 98, "upper": 99, "step": 1, "volume": 2}]})");
  const test::ProgramResult result = test::runProgram({"run", config});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("grid 1 rejected: not enough money: needs 196, available 10"));
}

TEST(GridRoad, shouldRefuseAGridThatIsWrongBeforeAnythingRuns) {
  const auto errorOf = [](const std::string& grid) {
    const test::TempFolder folder;
    folder.write("a.csv", pricesCsv());
    const auto result = test::runProgram({"run", folder.write("run.json", configOf(grid))});
    EXPECT_EQ(result.exitCode, 2) << result.err;
    EXPECT_FALSE(std::filesystem::exists(folder / "out"));
    return result.err;
  };
  EXPECT_THAT(errorOf(R"({"code": "A", "lower": 98, "upper": 102, "step": 3, "volume": 2})"),
              HasSubstr("grids[0].step: \"3\" does not divide the range from 98 to 102"));
  EXPECT_THAT(errorOf(R"({"code": "B", "lower": 98, "upper": 102, "step": 1, "volume": 2})"),
              HasSubstr("grids[0].code: \"B\" is not a code that is known"));
  EXPECT_THAT(errorOf(R"({"code": "A", "lower": 98, "upper": 102, "step": 1})"),
              HasSubstr("grids[0].volume: is missing"));
  EXPECT_THAT(errorOf(R"({"code": "A", "lower": 98, "upper": 102, "step": 1, "volume": 2,
                          "account": "nobody"})"),
              HasSubstr("grids[0].account: there is no account \"nobody\""));
  EXPECT_THAT(errorOf(R"({"code": "A", "lower": 98, "upper": 102, "step": 1, "volume": 2,
                          "levels": 2})"),
              HasSubstr("levels"));
}

TEST(GridRoad, shouldWantAnAccountWhereThereAreSeveralRunners) {
  RunPlan plan;
  plan.runners.resize(2);
  plan.trade.grids.resize(1);
  try {
    completeGrids(plan, "run.json");
    FAIL() << "accepted";
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(),
                 "run.json: grids[0].account: is missing; with several runners a grid must name "
                 "one");
  }
}

/// A strategy base that writes down the orders and fills that come to it.
class DetailWatcher final : public AbstractEventStrategy {
 public:
  DetailWatcher() {
    setName("watcher");
    startEvent();
  }
  ~DetailWatcher() override { stopEvent(); }
  void pushEvent(IEvent* event) override {
    const std::unique_ptr<IEvent> owned(event);
    if (const auto* order = dynamic_cast<OrderEvent*>(event)) orders.push_back(order->order);
    if (const auto* fill = dynamic_cast<FillEvent*>(event)) fills.push_back(fill->fill);
  }
  std::vector<Order> orders;
  std::vector<OrderFill> fills;
};

TEST(GridRoad, shouldTranslateTheDetailsOfAGridToTheOrdersAndFillsOfTheExchange) {
  PlatformOptions options;
  options.trade.accounts = {{"A1", "CNY", "", 1}};
  options.trade.grids = {{"g", "A1", "A.X", "98", "102", "1", "2"}};
  EmbeddedPlatform platform(options);
  installPlatform(&platform);
  Instrument instrument;
  instrument.code = "A";
  instrument.market = "X";
  BarSeries series;
  series.code = platform.addInstrument(instrument);
  series.periodMs = kMinute;
  series.timeZone = "UTC";
  series.origin = "test";
  for (const double price : kPrices) {
    IKLine bar;
    KLineWriter writer(bar);
    const auto at = kStart + static_cast<int64>(series.bars.size()) * kMinute;
    writer.setTimes(at, at + kMinute);
    for (const kline::Word word : {kline::Open, kline::High, kline::Low, kline::Close})
      writer.set(word, price);
    writer.set(kline::Volume, 100);
    writer.setDayAndFlags(20210104, 0);
    series.bars.push_back(bar);
  }
  platform.addBars(std::move(series));
  {
    DetailWatcher watcher;
    CondId condition;
    condition.text = "g";
    watcher.subDetail(condition);
    platform.run();
    ITradeService& trade = *platform.router()->tradeService();
    const TradingAccountID account = trade.tradingAccounts().front();
    std::list<OrderFill> fills;
    trade.fillsOfAccount(account, fills);
    ASSERT_EQ(watcher.fills.size(), fills.size());
    EXPECT_EQ(fills.size(), 16u);
    auto expected = fills.begin();
    for (const OrderFill& fill : watcher.fills) {
      const FillView view(fill), its(*expected);
      EXPECT_EQ(fill.source.createSource, "__grid__");
      EXPECT_EQ(fill.source.sourceType, expected->source.sourceType);
      EXPECT_EQ(fill.source.sourceText, "1");
      EXPECT_EQ(fill.orderRef, expected->orderRef);
      EXPECT_EQ(fill.fillText, expected->fillText);
      EXPECT_EQ(fill.pair, expected->pair);
      EXPECT_EQ(view.price(), its.price());
      EXPECT_EQ(view.volume(), its.volume());
      EXPECT_EQ(view.isBuy(), its.isBuy());
      EXPECT_EQ(view.offset(), its.offset());
      EXPECT_EQ(view.profit(), its.profit());
      EXPECT_EQ(view.time(), its.time());
      ++expected;
    }
    for (const Order& order : watcher.orders) {
      Order known;
      ASSERT_EQ(trade.getOrder(order.id, known).code, 0) << order.id;
      const OrderView view(order), its(known);
      EXPECT_EQ(order.source.createSource, "__grid__");
      EXPECT_EQ(order.pair, known.pair);
      EXPECT_EQ(order.ints[9], known.ints[9]);
      EXPECT_EQ(view.isBuy(), its.isBuy());
      EXPECT_EQ(view.limitPrice(), its.limitPrice());
      EXPECT_EQ(view.volume(), its.volume());
      if (!view.isFinal()) continue;
      EXPECT_EQ(view.status(), its.status());
      EXPECT_EQ(view.meanFillPrice(), its.meanFillPrice());
    }
    EXPECT_GE(watcher.orders.size(), 32u);
  }
  platform.drain();
  installPlatform(nullptr);
}

}  // namespace
}  // namespace orvane
