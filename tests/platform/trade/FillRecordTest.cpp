// What the record of a fill carries, position by position.

#include "tests/platform/trade/ExchangeFixture.h"
#include "tests/platform/trade/Sides.h"

namespace orvane::testing {
namespace {

class FillRecord : public ExchangeTest {
 protected:
  FillRecord() {
    instrument.multiplier = "10";
    instrument.feePerLot = "1.5";
    instrument.lotSize = "1";
    open();
  }

  std::vector<OrderFill> fills() {
    std::vector<OrderFill> all;
    for (const TradeEvent& event : exchange->takeEvents())
      if (const auto* fill = event.fill()) all.push_back(*fill);
    return all;
  }
  static double numberAt(const OrderFill& fill, fill::Numbers at) {
    return std::bit_cast<double>(fill.numbers[at]);
  }
  static double valueAt(const OrderFill& fill, fill::Values at) {
    return std::bit_cast<double>(fill.values[at]);
  }
};

TEST_F(FillRecord, shouldCarryWhoseItIs) {
  Order order = orderOf(kBuy, 2);
  order.id = 42;
  order.pair = {"42", "second"};
  order.orderRef = "my reference";
  order.source = {7, "S", "text of it"};
  order.account.counterType = 3;
  place(order, 0);
  bar(0, 10, 10, 10, 10);
  const auto all = fills();
  ASSERT_EQ(all.size(), 1u);
  const OrderFill& fill = all.front();
  EXPECT_EQ(fill.id, 42 * 100'000 + 1);
  EXPECT_EQ(fill.fillText, std::to_string(fill.id));
  EXPECT_EQ(fill.numbers[fill::OrderId], 42);
  EXPECT_EQ(FillView(fill).orderId(), 42);
  EXPECT_EQ(fill.account.accountKey, 1);
  EXPECT_EQ(fill.account.account, "acc");
  EXPECT_EQ(fill.account.counterType, 3);
  EXPECT_EQ(fill.code.id, code.id);
  EXPECT_EQ(fill.code.code, "C");
  EXPECT_EQ(fill.source.sourceType, 7);
  EXPECT_EQ(fill.source.createSource, "S");
  EXPECT_EQ(fill.source.sourceText, "text of it");
  EXPECT_EQ(fill.pair, order.pair);
  EXPECT_EQ(fill.orderRef, "my reference");
}

TEST_F(FillRecord, shouldCarryPriceVolumeFeeAndTurnoverOfItselfAndTheOrdersVolumes) {
  Order order = orderOf(kBuy, 5);
  order.value1 = 777;
  place(order, 3);
  tick(4, {}, {{10.5, 2}, {11, 3}});
  const auto all = fills();
  ASSERT_EQ(all.size(), 2u);
  const OrderFill& first = all[0];
  EXPECT_EQ(valueAt(first, fill::Volume), 2);
  EXPECT_EQ(first.price(), 10.5);
  EXPECT_EQ(valueAt(first, fill::Fee), 3);
  EXPECT_EQ(numberAt(first, fill::Turnover), 210);
  EXPECT_EQ(numberAt(first, fill::OrderVolume), 5);
  EXPECT_EQ(numberAt(first, fill::OrderFilledVolume), 2);
  EXPECT_EQ(first.numbers[fill::OrderTime], 777);
  EXPECT_EQ(first.numbers[fill::TradingDay], 20210104);
  EXPECT_EQ(first.fillTime(), 4);
  const OrderFill& second = all[1];
  EXPECT_EQ(second.id, first.id + 1);
  EXPECT_EQ(valueAt(second, fill::Volume), 3);
  EXPECT_EQ(second.price(), 11);
  EXPECT_EQ(valueAt(second, fill::Fee), 4.5);
  EXPECT_EQ(numberAt(second, fill::Turnover), 330);
  EXPECT_EQ(numberAt(second, fill::OrderFilledVolume), 5);
}

TEST_F(FillRecord, shouldReadEveryPositionByName) {
  OrderFill fill;
  fill.fillTime() = 1;
  fill.values[fill::Volume] = std::bit_cast<Word>(2.0);
  fill.setPrice(3);
  fill.values[fill::Fee] = std::bit_cast<Word>(4.0);
  fill.numbers[fill::OrderTime] = 5;
  fill.numbers[fill::Turnover] = std::bit_cast<Word>(6.0);
  fill.numbers[fill::Profit] = std::bit_cast<Word>(7.0);
  fill.numbers[fill::TradingDay] = 8;
  fill.numbers[fill::OrderId] = 9;
  fill.direction() = 1;
  fill.ints[fill::OffsetAt] = 2;
  fill.ints[fill::LiquidityAt] = 1;
  const FillView view(fill);
  EXPECT_EQ(view.time(), 1);
  EXPECT_EQ(view.volume(), 2);
  EXPECT_EQ(view.price(), 3);
  EXPECT_EQ(view.fee(), 4);
  EXPECT_EQ(view.orderTime(), 5);
  EXPECT_EQ(view.turnover(), 6);
  EXPECT_EQ(view.profit(), 7);
  EXPECT_EQ(view.tradingDay(), 8);
  EXPECT_EQ(view.orderId(), 9);
  EXPECT_EQ(view.direction(), kSell);
  EXPECT_FALSE(view.isBuy());
  EXPECT_EQ(view.offset(), order::Offset::CloseToday);
  EXPECT_TRUE(view.hadRested());
}

TEST_F(FillRecord, shouldCarryDirectionOffsetAndTheProfitOfWhatItCloses) {
  buy(2, 0);
  bar(0, 10, 10, 10, 10);
  sell(1, 10, order::Offset::CloseToday);
  sell(1, 10);
  bar(1, 13, 13, 13, 13);
  const auto all = fills();
  ASSERT_EQ(all.size(), 3u);
  const FillView opening(all[0]);
  EXPECT_EQ(all[0].direction(), 0);
  EXPECT_EQ(all[0].ints[fill::OffsetAt], 0);
  EXPECT_TRUE(opening.isBuy());
  EXPECT_EQ(numberAt(all[0], fill::Profit), 0);
  EXPECT_EQ(all[1].direction(), 1);
  EXPECT_EQ(all[1].ints[fill::OffsetAt], 2);
  EXPECT_EQ(numberAt(all[1], fill::Profit), 30);  // Before its fee of 1.5.
  EXPECT_EQ(all[2].ints[fill::OffsetAt], 1);
  EXPECT_EQ(FillView(all[2]).offset(), order::Offset::Close);
}

TEST_F(FillRecord, shouldTellWhetherTheOrderHadRested) {
  buy(1, 0);
  limit(kBuy, 11, 0);  // Good at the open.
  limit(kBuy, 9, 0);   // Waits for the range.
  stop(kBuy, 10.5, 0);
  bar(0, 10, 11, 8, 10);
  std::vector<std::pair<int64, int>> seen;
  for (const OrderFill& fill : fills())
    seen.emplace_back(FillView(fill).orderId(), fill.ints[fill::LiquidityAt]);
  EXPECT_THAT(seen, ::testing::UnorderedElementsAre(std::pair(1, 0), std::pair(2, 0),
                                                    std::pair(3, 1), std::pair(4, 0)));
  limit(kBuy, 9, 11);
  limit(kBuy, 12, 15);  // Came while the bar ran: it takes the close.
  bar(1, 10, 11, 10, 11);
  EXPECT_EQ(fills().at(0).ints[fill::LiquidityAt], 0);
  tick(21, {{9, 1}}, {{10, 1}});
  tick(22, {{8, 1}}, {{9, 1}});
  EXPECT_EQ(fills().at(0).ints[fill::LiquidityAt], 1);
}

TEST_F(FillRecord, shouldCarryTheTradingDayOfTheMarketThatItHappenedIn) {
  place(orderOf(kBuy, 1, order::Type::Limit, 9), 0);
  bar(0, 10, 10, 10, 10, 100, 20210104);
  bar(1, 8, 8, 8, 8, 100, 20210105);
  EXPECT_EQ(fills().at(0).numbers[fill::TradingDay], 20210105);
}

}  // namespace
}  // namespace orvane::testing
