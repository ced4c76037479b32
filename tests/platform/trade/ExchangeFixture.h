#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/fields/CapitalView.h"
#include "platform/fields/FillView.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/OrderView.h"
#include "platform/fields/PositionView.h"
#include "platform/fields/QuoteView.h"
#include "platform/trade/PaperExchange.h"

namespace orvane::testing {

using detail::Ledger;
using detail::PaperExchange;
using detail::TradeEvent;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An exchange with one account and one code, fed by hand. Bars last 10 ms; bar n runs from 10 n to
/// 10 n + 10 and closes when it is fed.
class ExchangeTest : public ::testing::Test {
 protected:
  ExchangeTest() { open(); }

  void open() {
    exchange = std::make_unique<PaperExchange>(options);
    account.accountKey = 1;
    account.account = "acc";
    exchange->addAccount(account, startBalance);
    instrument.code = "C";
    code = {7, 1, 1, "C"};
    exchange->addContract(code, instrument);
  }

  Order orderOf(order::Direction direction, double volume, order::Type type = order::Type::Market,
                double price = 0, order::Offset offset = order::Offset::Open,
                order::TimeInForce time = order::TimeInForce::UntilCancelled) {
    Order order;
    order.id = ++lastId;
    order.account = account;
    order.code = code;
    order.source = {536870912, source, ""};
    OrderWriter writer(order);
    writer.setType(type);
    writer.setTimeInForce(time);
    writer.setDirection(direction);
    writer.setOffset(offset);
    writer.setVolume(volume);
    if (type == order::Type::Limit) writer.setLimitPrice(price);
    if (type == order::Type::Stop) writer.setStopPrice(price);
    return order;
  }

  int64 place(const Order& order, int64 now) {
    exchange->place(std::make_unique<Order>(order), now);
    return order.id;
  }
  int64 buy(double volume, int64 now) { return place(orderOf(order::Direction::Buy, volume), now); }
  int64 sell(double volume, int64 now, order::Offset offset = order::Offset::Close) {
    return place(orderOf(order::Direction::Sell, volume, order::Type::Market, 0, offset), now);
  }
  int64 limit(order::Direction direction, double price, int64 now, double volume = 1) {
    return place(orderOf(direction, volume, order::Type::Limit, price), now);
  }
  int64 stop(order::Direction direction, double price, int64 now,
             order::Offset offset = order::Offset::Open) {
    return place(orderOf(direction, 1, order::Type::Stop, price, offset), now);
  }

  /// Feeds bar n; what happened is in `events`.
  void bar(int64 n, double open, double high, double low, double close, double volume = 100,
           int day = 20210104) {
    IKLine record;
    KLineWriter writer(record);
    writer.setTimes(10 * n, 10 * n + 10);
    writer.set(kline::Open, open);
    writer.set(kline::High, high);
    writer.set(kline::Low, low);
    writer.set(kline::Close, close);
    writer.set(kline::Volume, volume);
    writer.setDayAndFlags(day, 0);
    exchange->onBar(code.id, record, lastEnd < 0 ? 10 * n : lastEnd, 10 * n + 10);
    lastEnd = 10 * n + 10;
  }

  struct Level {
    double price, size;
  };
  /// Feeds a tick with a ladder and, with a volume of 0 or more, a trade.
  void tick(int64 now, const std::vector<Level>& bids, const std::vector<Level>& asks,
            double last = 0, double volume = -1, int day = 20210104) {
    IDepthMarketData record;
    record.code = code;
    QuoteWriter writer(record);
    writer.setTime(now);
    for (std::size_t i = 0; i < bids.size(); ++i) writer.setBid(i, bids[i].price, bids[i].size);
    for (std::size_t i = 0; i < asks.size(); ++i) writer.setAsk(i, asks[i].price, asks[i].size);
    writer.set(quote::BidLevels, static_cast<int>(bids.size()));
    writer.set(quote::AskLevels, static_cast<int>(asks.size()));
    writer.set(quote::TradingDay, day);
    writer.set(quote::LastPrice, last);
    writer.set(quote::Volume, volume < 0 ? 0 : volume);
    writer.set(quote::Flags, (volume >= 0 ? quote::kHasTrade : 0) |
                                 (bids.empty() ? 0 : quote::kHasBid) |
                                 (asks.empty() ? 0 : quote::kHasAsk));
    exchange->onTick(code.id, record, now);
  }

  static std::string number(double value) {
    std::string text = std::to_string(value);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
  }

  /// Fills and ends of orders since the last call: "1 2@10.5 t=20", "3 expired", "4 rejected: ...".
  std::vector<std::string> take() {
    static constexpr const char* kNames[] = {"sent",          "working",   "partly",   "filled",
                                             "cancelPending", "cancelled", "rejected", "expired"};
    std::vector<std::string> lines;
    for (const TradeEvent& event : exchange->takeEvents()) {
      if (const auto* fill = event.fill()) {
        const FillView view(*fill);
        lines.push_back(std::to_string(view.orderId()) + " " + number(view.volume()) + "@" +
                        number(view.price()) + " t=" + std::to_string(view.time()));
      } else if (const auto* order = event.order()) {
        const OrderView view(*order);
        if (!view.isFinal() || view.status() == order::Status::Filled) continue;
        lines.push_back(std::to_string(order->id) + " " + kNames[order->status()] +
                        (view.message().empty() ? "" : ": " + view.message()));
      }
    }
    return lines;
  }

  Ledger& ledger() { return *exchange->ledger(1); }
  CapitalView capital() {
    capitalRecord = ledger().capitalRecord(0);
    return CapitalView(capitalRecord);
  }

  TradeOptions options;
  Instrument instrument;
  std::string startBalance;
  std::string source = "S";
  TradingAccountID account;
  ICodeID code;
  std::unique_ptr<PaperExchange> exchange;
  int64 lastId = 0;
  int64 lastEnd = -1;
  TradingAccount capitalRecord;
};

}  // namespace orvane::testing
