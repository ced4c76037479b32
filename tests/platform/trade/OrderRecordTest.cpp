// What the records of orders, positions and capital carry, position by position.

#include <algorithm>

#include "tests/platform/trade/ExchangeFixture.h"
#include "tests/platform/trade/Sides.h"

namespace orvane::testing {
namespace {

class OrderRecord : public ExchangeTest {
 protected:
  OrderRecord() {
    instrument.multiplier = "10";
    instrument.marginRate = "0.1";
    instrument.feePerLot = "2";
    instrument.lotSize = "1";
    open();
  }

  std::vector<Order> orders() {
    std::vector<Order> all;
    for (const TradeEvent& event : exchange->takeEvents())
      if (const auto* order = event.order()) all.push_back(*order);
    return all;
  }
  Order last() { return orders().back(); }
  static double valueAt(const Order& order, order::Values at) {
    return std::bit_cast<double>(order.values[at]);
  }
};

TEST_F(OrderRecord, shouldCarryWhatWasSentUnchangedThroughItsLife) {
  Order sent =
      orderOf(kSell, 3, order::Type::Stop, 9.5, order::Offset::Open, order::TimeInForce::Day);
  sent.pair = {"a", "b"};
  sent.text3 = "three";
  sent.text4 = "four";
  sent.text6 = "six";
  sent.orderRef = "ref";
  sent.value1 = 5;
  place(sent, 7);
  tick(8, {{9, 1}}, {{10, 1}}, 9.4, 1);
  exchange->cancel(sent.id, {}, 9);
  const auto all = orders();
  ASSERT_EQ(all.size(), 3u);  // Working, partly filled, cancelled.
  for (const Order& order : all) {
    EXPECT_EQ(order.id, sent.id);
    EXPECT_EQ(order.account.account, "acc");
    EXPECT_EQ(order.code.code, "C");
    EXPECT_EQ(order.source.createSource, "S");
    EXPECT_EQ(order.pair, sent.pair);
    EXPECT_EQ(order.text3, "three");
    EXPECT_EQ(order.text4, "four");
    EXPECT_EQ(order.text6, "six");
    EXPECT_EQ(order.orderRef, "ref");
    EXPECT_EQ(OrderView(order).insertTime(), 5);
    EXPECT_EQ(order.ints[order::TypeAt], 2);
    EXPECT_EQ(order.ints[order::TimeInForceAt], 0);
    EXPECT_EQ(order.ints[order::DirectionAt], 1);
    EXPECT_EQ(order.ints[order::OffsetAt], 0);
    EXPECT_EQ(order.ints[order::ReasonAt], 0);
    EXPECT_EQ(valueAt(order, order::Volume), 3);
    EXPECT_EQ(valueAt(order, order::StopPrice), 9.5);
    EXPECT_EQ(order.values[order::ArrivalTime], 7);
    EXPECT_EQ(order.text5, "");
  }
}

TEST_F(OrderRecord, shouldCarryWhatTheExchangeMakesAtEachStep) {
  limit(kBuy, 11, 3, 5);
  const Order working = last();
  EXPECT_EQ(working.status(), 1);
  EXPECT_EQ(working.updateTime(), 3);
  EXPECT_EQ(valueAt(working, order::LimitPrice), 11);
  EXPECT_EQ(valueAt(working, order::FilledVolume), 0);
  EXPECT_EQ(valueAt(working, order::Turnover), 0);
  EXPECT_EQ(valueAt(working, order::Fee), 0);
  EXPECT_EQ(valueAt(working, order::FrozenMoney), 65);  // A tenth of 550, and 10 of fees.
  EXPECT_EQ(working.values[order::TradingDay], 0);
  EXPECT_EQ(working.value5, 0);

  tick(6, {}, {{10, 2}});
  const Order partly = last();
  EXPECT_EQ(partly.status(), 2);
  EXPECT_EQ(partly.updateTime(), 6);
  EXPECT_EQ(valueAt(partly, order::FilledVolume), 2);
  EXPECT_EQ(valueAt(partly, order::Turnover), 200);
  EXPECT_EQ(valueAt(partly, order::Fee), 4);
  EXPECT_EQ(valueAt(partly, order::FrozenMoney), 39);
  EXPECT_EQ(partly.values[order::TradingDay], 20210104);
  EXPECT_EQ(partly.value5, 10);

  tick(8, {}, {{9, 1}, {11, 2}}, 0, -1, 20210105);
  const auto rest = orders();
  ASSERT_EQ(rest.size(), 2u);
  // It had rested, so all of it is at its limit.
  EXPECT_EQ(rest[0].status(), 2);
  EXPECT_EQ(rest[1].status(), 3);
  EXPECT_EQ(valueAt(rest[1], order::FilledVolume), 5);
  EXPECT_EQ(valueAt(rest[1], order::Turnover), 530);
  EXPECT_EQ(valueAt(rest[1], order::Fee), 10);
  EXPECT_EQ(valueAt(rest[1], order::FrozenMoney), 0);
  EXPECT_EQ(rest[1].values[order::TradingDay], 20210104);  // Of the first event that it met.
  EXPECT_DOUBLE_EQ(rest[1].value5, 10.6);
}

TEST_F(OrderRecord, shouldCarryTheReasonOfARejectionAndWhoCancelled) {
  place(orderOf(kBuy, 0), 4);
  Order order = last();
  EXPECT_EQ(order.status(), 6);
  EXPECT_EQ(order.ints[order::ReasonAt], -2);
  EXPECT_EQ(order.text5, "bad volume: 0 is not above 0");
  EXPECT_EQ(order.updateTime(), 4);
  EXPECT_EQ(order.values[order::ArrivalTime], 4);
  EXPECT_EQ(valueAt(order, order::FrozenMoney), 0);
  place(orderOf(kSell, 1, order::Type::Market, 0, order::Offset::Close), 4);
  EXPECT_EQ(last().ints[order::ReasonAt], 38);
  place(orderOf(kBuy, 100'000, order::Type::Limit, 1000), 4);
  EXPECT_EQ(last().ints[order::ReasonAt], 21);
  const int64 id = limit(kBuy, 5, 6);
  exchange->cancel(id, {4, "somebody", "text"}, 9);
  order = last();
  EXPECT_EQ(order.status(), 5);
  EXPECT_EQ(order.updateTime(), 9);
  EXPECT_EQ(order.cancelSource.createSource, "somebody");
  EXPECT_EQ(order.cancelSource.sourceType, 4);
  EXPECT_EQ(order.cancelSource.sourceText, "text");
  EXPECT_EQ(order.ints[order::ReasonAt], 0);
}

TEST_F(OrderRecord, shouldCarryTheReasonWhyTheExchangeEndedIt) {
  instrument.feePerLot = "";
  open();
  buy(9e9, 0);
  bar(0, 9e8, 9e8, 9e8, 9e8);
  const Order order = last();
  EXPECT_EQ(order.status(), 6);
  EXPECT_EQ(order.ints[order::ReasonAt], -2);
  EXPECT_EQ(order.text5, "too large: 9000000000 at 900000000");
}

TEST_F(OrderRecord, shouldReadAndWriteEveryPositionByName) {
  Order order;
  OrderWriter writer(order);
  writer.setType(order::Type::Stop);
  writer.setTimeInForce(order::TimeInForce::UntilCancelled);
  writer.setOffset(order::Offset::CloseToday);
  writer.setDirection(order::Direction::Sell);
  writer.setStatus(order::Status::Expired);
  writer.setVolume(1.5);
  writer.setLimitPrice(2.5);
  writer.setStopPrice(3.5);
  writer.set(order::FilledVolume, 0.5);
  writer.set(order::Turnover, 4.5);
  writer.set(order::Fee, 5.5);
  writer.set(order::FrozenMoney, 6.5);
  order.value5 = 7.5;
  order.value1 = 8;
  order.updateTime() = 9;
  order.values[order::ArrivalTime] = 10;
  order.values[order::TradingDay] = 20210104;
  order.ints[order::ReasonAt] = 11;
  order.text5 = "why";
  const OrderView view(order);
  EXPECT_EQ(view.type(), order::Type::Stop);
  EXPECT_EQ(view.timeInForce(), order::TimeInForce::UntilCancelled);
  EXPECT_EQ(view.offset(), order::Offset::CloseToday);
  EXPECT_EQ(view.direction(), order::Direction::Sell);
  EXPECT_FALSE(view.isBuy());
  EXPECT_EQ(view.status(), order::Status::Expired);
  EXPECT_TRUE(view.isFinal());
  EXPECT_EQ(view.volume(), 1.5);
  EXPECT_EQ(view.filledVolume(), 0.5);
  EXPECT_EQ(view.remainingVolume(), 1);
  EXPECT_EQ(view.limitPrice(), 2.5);
  EXPECT_EQ(view.stopPrice(), 3.5);
  EXPECT_EQ(view.turnover(), 4.5);
  EXPECT_EQ(view.fee(), 5.5);
  EXPECT_EQ(view.frozenMoney(), 6.5);
  EXPECT_EQ(view.meanFillPrice(), 7.5);
  EXPECT_EQ(view.insertTime(), 8);
  EXPECT_EQ(view.updateTime(), 9);
  EXPECT_EQ(view.arrivalTime(), 10);
  EXPECT_EQ(view.tradingDay(), 20210104);
  EXPECT_EQ(view.reason(), 11);
  EXPECT_EQ(view.message(), "why");
}

TEST_F(OrderRecord, shouldTellOfTheCapitalWhenAnOrderHoldsBackMoneyAndWhenItGivesItBack) {
  const auto capitalEvents = [&] {
    return std::ranges::count_if(exchange->takeEvents(), [](const TradeEvent& event) {
      return std::holds_alternative<TradeEvent::CapitalChanged>(event.what);
    });
  };
  const int64 opening = limit(kBuy, 5, 0);
  EXPECT_EQ(capitalEvents(), 1);
  exchange->cancel(opening, {}, 1);
  EXPECT_EQ(capitalEvents(), 1);
  buy(1, 2);
  bar(1, 10, 10, 10, 10);
  EXPECT_EQ(capitalEvents(), 2);
  const int64 closing = place(orderOf(kSell, 1, order::Type::Limit, 50, order::Offset::Close), 20);
  exchange->cancel(closing, {}, 21);
  EXPECT_EQ(capitalEvents(), 0);
}

TEST_F(OrderRecord, shouldCarryBothSidesOfAPosition) {
  buy(3, 0);
  sell(2, 0, order::Offset::Open);
  bar(0, 10, 10, 10, 10);
  buy(1, 10);
  place(orderOf(kSell, 2, order::Type::Limit, 50, order::Offset::Close), 10);
  place(orderOf(kBuy, 1, order::Type::Limit, 1, order::Offset::Close), 10);
  bar(1, 12, 12, 11, 11, 100, 20210105);
  Position position;
  ASSERT_TRUE(ledger().positionRecord(code.id, position));
  EXPECT_EQ(position.account.account, "acc");
  EXPECT_EQ(position.code.id, code.id);
  EXPECT_EQ(position.code.code, "C");
  const PositionView view(position);
  const PositionView::Side longSide = view.longSide();
  EXPECT_EQ(longSide.volume(), 4);
  EXPECT_EQ(longSide.todayVolume(), 1);
  EXPECT_EQ(longSide.yesterdayVolume(), 3);
  EXPECT_EQ(longSide.frozenVolume(), 2);
  EXPECT_EQ(longSide.closableVolume(), 2);
  EXPECT_EQ(longSide.margin(), 42);
  EXPECT_EQ(longSide.floatingProfit(), 20);
  EXPECT_EQ(longSide.openPrice(), 10.5);
  EXPECT_EQ(std::bit_cast<double>(position.block1[position::OpenTurnover]), 420);
  const PositionView::Side shortSide = view.shortSide();
  EXPECT_EQ(shortSide.volume(), 2);
  EXPECT_EQ(shortSide.todayVolume(), 0);
  EXPECT_EQ(shortSide.yesterdayVolume(), 2);
  EXPECT_EQ(shortSide.frozenVolume(), 1);
  EXPECT_EQ(shortSide.margin(), 20);
  EXPECT_EQ(shortSide.floatingProfit(), -20);
  EXPECT_EQ(shortSide.openPrice(), 10);
  EXPECT_EQ(std::bit_cast<double>(position.block2[position::OpenTurnover]), 200);
  EXPECT_EQ(view.netVolume(), 2);
  EXPECT_EQ(view.markPrice(), 11);
  EXPECT_EQ(view.closedProfit(), 0);
  EXPECT_EQ(view.fee(), 12);
  EXPECT_EQ(view.multiplier(), 10);
}

TEST_F(OrderRecord, shouldCarryTheSourceAndItsPartOfAPosition) {
  buy(3, 0);
  source = "other";
  buy(1, 0);
  bar(0, 10, 10, 10, 10);
  sell(1, 10);
  bar(1, 12, 12, 12, 12);
  SourcePosition part;
  ASSERT_TRUE(ledger().sourcePositionRecord(code.id, "other", part));
  EXPECT_EQ(part.createSource, "other");
  EXPECT_EQ(part.sourceType, 536870912);
  EXPECT_EQ(part.sourceText, "");
  const PositionView view(part);
  EXPECT_EQ(view.longSide().volume(), 0);
  EXPECT_EQ(view.longSide().openPrice(), 0);
  EXPECT_EQ(view.closedProfit(), 20);
  EXPECT_EQ(view.fee(), 4);
  ASSERT_TRUE(ledger().sourcePositionRecord(code.id, "S", part));
  EXPECT_EQ(PositionView(part).longSide().volume(), 3);
  EXPECT_FALSE(ledger().sourcePositionRecord(code.id, "nobody", part));
  EXPECT_FALSE(ledger().sourcePositionRecord(99, "S", part));
}

TEST_F(OrderRecord, shouldCarryEveryAmountOfTheCapital) {
  startBalance = "1000";
  open();
  buy(2, 0);
  bar(0, 10, 10, 10, 10);
  sell(1, 10);
  limit(kBuy, 5, 10);
  bar(1, 13, 13, 12, 12);
  const TradingAccount record = ledger().capitalRecord(99);
  EXPECT_EQ(record.account.account, "acc");
  const CapitalView view(record);
  EXPECT_EQ(view.time(), 99);
  EXPECT_EQ(view.startBalance(), 1000);
  EXPECT_EQ(view.closedProfit(), 30);
  EXPECT_EQ(view.fee(), 6);
  EXPECT_EQ(view.balance(), 1024);
  EXPECT_EQ(view.floatingProfit(), 20);
  EXPECT_EQ(view.equity(), 1044);
  EXPECT_EQ(view.margin(), 10);
  EXPECT_EQ(view.frozen(), 7);
  EXPECT_EQ(view.available(), 1027);
}

}  // namespace
}  // namespace orvane::testing
