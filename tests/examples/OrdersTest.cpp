#include "sdk/Orders.h"

#include <gtest/gtest.h>

#include "sdk/Accounts.h"
#include "sdk/Views.h"

namespace orvane {
namespace {

TradingAccountID account() {
  TradingAccountID id;
  id.account = "A1";
  id.accountKey = 7;
  return id;
}

ICodeID code() {
  ICodeID id;
  id.id = 5;
  id.code = "IF2101";
  return id;
}

/// An order as the exchange makes it of a request: the carried fields stand in the same places.
Order orderOf(const OrderRequest& request) {
  Order order;
  order.values = request.values;
  order.ints = request.ints;
  return order;
}

TEST(Orders, shouldMakeAMarketOrderThatStandsUntilItFills) {
  const OrderRequest request =
      marketOrder(account(), code(), order::Direction::Sell, order::Offset::CloseToday, 2.5);
  EXPECT_EQ(request.account.account, "A1");
  EXPECT_EQ(request.code.id, 5);
  const Order order = orderOf(request);
  const OrderView view(order);
  EXPECT_EQ(view.type(), order::Type::Market);
  EXPECT_EQ(view.timeInForce(), order::TimeInForce::UntilCancelled);
  EXPECT_EQ(view.direction(), order::Direction::Sell);
  EXPECT_EQ(view.offset(), order::Offset::CloseToday);
  EXPECT_EQ(view.volume(), 2.5);
}

TEST(Orders, shouldMakeALimitOrderOfTheDayUnlessToldOtherwise) {
  const Order ofDay =
      orderOf(limitOrder(account(), code(), order::Direction::Buy, order::Offset::Open, 3, 5230.2));
  EXPECT_EQ(OrderView(ofDay).type(), order::Type::Limit);
  EXPECT_EQ(OrderView(ofDay).timeInForce(), order::TimeInForce::Day);
  EXPECT_EQ(OrderView(ofDay).limitPrice(), 5230.2);
  EXPECT_EQ(OrderView(ofDay).volume(), 3);
  EXPECT_TRUE(OrderView(ofDay).isBuy());
  const Order atOnce =
      orderOf(limitOrder(account(), code(), order::Direction::Buy, order::Offset::Open, 3, 5230.2,
                         order::TimeInForce::ImmediateOrCancel));
  EXPECT_EQ(OrderView(atOnce).timeInForce(), order::TimeInForce::ImmediateOrCancel);
}

TEST(Orders, shouldMakeAStopOrderThatStandsUnlessToldOtherwise) {
  const Order standing = orderOf(
      stopOrder(account(), code(), order::Direction::Sell, order::Offset::Close, 1, 5100.4));
  EXPECT_EQ(OrderView(standing).type(), order::Type::Stop);
  EXPECT_EQ(OrderView(standing).stopPrice(), 5100.4);
  EXPECT_EQ(OrderView(standing).timeInForce(), order::TimeInForce::UntilCancelled);
  const Order ofDay = orderOf(stopOrder(account(), code(), order::Direction::Sell,
                                        order::Offset::Close, 1, 5100.4, order::TimeInForce::Day));
  EXPECT_EQ(OrderView(ofDay).timeInForce(), order::TimeInForce::Day);
}

TEST(Accounts, shouldReadTheNameThatTheHostGaveAsGbk) {
  EXPECT_EQ(accountName({{"account", "账户"}}), gbk("账户"));
  EXPECT_EQ(accountName({}), "");
}

}  // namespace
}  // namespace orvane
