#pragma once

#include <gmock/gmock.h>

#include "platform/trade/conditions/GridOptions.h"
#include "platform/trade/conditions/IGridConditions.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {

inline GridOptions makeGrid(const std::string& lower, const std::string& upper,
                            const std::string& step, const std::string& volume,
                            const std::string& name = "g") {
  GridOptions grid;
  grid.name = name;
  grid.account = "A1";
  grid.code = "A.X";
  grid.lower = lower;
  grid.upper = upper;
  grid.step = step;
  grid.volume = volume;
  return grid;
}

inline PlatformOptions gridOptions(const GridOptions& grid) {
  PlatformOptions options = tradeOptions();
  options.trade.grids = {grid};
  return options;
}

/// A one-minute bar of the code "A"; the next one follows it.
struct Bar {
  double open, high, low, close;
  int day = 20210104;
};

/// A bar of one price.
inline Bar flat(double price, int day = 20210104) { return {price, price, price, price, day}; }

/// A platform that works grids over the given bars of its code "A".
class GridPlatform : public TradePlatform {
 public:
  GridPlatform(PlatformOptions options, const std::vector<Bar>& bars)
      : TradePlatform(std::move(options), 0) {
    BarSeries series;
    series.code = code;
    series.periodMs = kMinute;
    series.timeZone = "UTC";
    series.origin = "test";
    int64 begin = kMonday;
    for (const Bar& bar : bars) {
      series.bars.push_back(
          makeBar(begin, begin + kMinute, bar.open, bar.high, bar.low, bar.close, 1000, bar.day));
      begin += kMinute;
    }
    (*this)->addBars(std::move(series));
  }

  IGridConditions& grids() { return (*this)->gridConditions(); }
  GridState state(int64 id = 1) {
    GridState found;
    EXPECT_EQ(grids().find(id, found).code, 0);
    return found;
  }
  /// All fills of the account: "0:02 buy 2@100".
  std::vector<std::string> fills() {
    std::list<OrderFill> all;
    service().fillsOfAccount(account(), all);
    std::vector<std::string> lines;
    for (const OrderFill& fill : all) {
      const FillView view(fill);
      lines.push_back(RecordingSpi::relative(view.time()) + (view.isBuy() ? " buy " : " sell ") +
                      number(view.volume()) + "@" + number(view.price()));
    }
    return lines;
  }
  std::vector<Order> orders() {
    std::list<Order> all;
    service().ordersOfAccount(account(), all);
    return {all.begin(), all.end()};
  }
  /// Orders at work: "buy 2@100", in the order in which they were sent.
  std::vector<std::string> working() {
    std::list<Order> all;
    service().openOrdersOfAccount(account(), all);
    std::vector<std::string> lines;
    for (const Order& order : all) {
      const OrderView view(order);
      lines.push_back((view.isBuy() ? "buy " : "sell ") + number(view.remainingVolume()) + "@" +
                      number(view.limitPrice()));
    }
    return lines;
  }
  double balance() {
    TradingAccount capital;
    EXPECT_EQ(service().getCapital(account(), capital).code, 0);
    return CapitalView(capital).balance();
  }
  /// Runs `act` after the record that ends at this minute was delivered.
  void at(int minute, const std::function<void()>& act) { acts_[minute] = act; }
  void play() {
    clock_ = std::make_shared<RecordingSpi>();
    clock_->onLine = [this](const std::string& line) {
      if (line.find("flags") != line.npos) return;  // The end of the history.
      const int64 minute = (Timestamp::now(1).toUtcMsEponch() - kMonday) / kMinute;
      const auto act = acts_.find(static_cast<int>(minute));
      if (act != acts_.end()) act->second();
    };
    subscribeBars(clock_);
    (*this)->run();
  }

 private:
  std::map<int, std::function<void()>> acts_;
  std::shared_ptr<RecordingSpi> clock_;
};

}  // namespace orvane::testing
