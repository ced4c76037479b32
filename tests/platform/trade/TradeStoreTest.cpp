#include "platform/trade/TradeStore.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"

namespace orvane::detail {
namespace {

Order makeOrder(int64 id, std::int32_t account, order::Status status = order::Status::Working) {
  Order order;
  order.id = id;
  order.account.accountKey = account;
  OrderWriter(order).setStatus(status);
  return order;
}

template <typename Records>
std::vector<int64> idsOf(const Records& records) {
  std::vector<int64> ids;
  for (const auto& record : records) ids.push_back(record.id);
  return ids;
}

const auto kAll = [](const auto& /*rest*/, const auto& /*part*/) { return true; };

TEST(TradeStore, shouldListOrdersOfAnAccountAsTheyWereAdmitted) {
  TradeStore store(2);
  store.addOrder(makeOrder(9, 1));
  store.addOrder(makeOrder(4, 2));
  store.addOrder(makeOrder(5, 1));
  std::list<Order> orders;
  store.orders(1, kAll, orders);
  EXPECT_EQ(idsOf(orders), (std::vector<int64>{9, 5}));
  ASSERT_TRUE(store.order(4));
  EXPECT_EQ(store.order(4)->account.accountKey, 2);
  EXPECT_FALSE(store.order(1));
}

TEST(TradeStore, shouldListAnOrderAsOpenUntilItIsFinal) {
  for (const order::Status status : {order::Status::Filled, order::Status::Cancelled,
                                     order::Status::Rejected, order::Status::Expired}) {
    TradeStore store(1);
    store.addOrder(makeOrder(1, 1));
    store.addOrder(makeOrder(2, 1));
    store.updateOrder(makeOrder(1, 1, order::Status::PartlyFilled));
    std::list<Order> open;
    store.openOrders(1, kAll, open);
    EXPECT_EQ(idsOf(open), (std::vector<int64>{1, 2}));
    store.updateOrder(makeOrder(1, 1, status));
    open.clear();
    store.openOrders(1, kAll, open);
    EXPECT_EQ(idsOf(open), std::vector<int64>{2});
  }
}

TEST(TradeStore, shouldNameEachChangedOrderOnceUntilItChangesAgain) {
  TradeStore store(1);
  store.addOrder(makeOrder(7, 1));
  store.addOrder(makeOrder(8, 1));
  store.updateOrder(makeOrder(7, 1, order::Status::Filled));
  EXPECT_EQ(store.changedCount(), 2u);
  EXPECT_EQ(idsOf(store.takeChanged()), (std::vector<int64>{7, 8}));
  EXPECT_TRUE(store.takeChanged().empty());
  store.updateOrder(makeOrder(8, 1, order::Status::Cancelled));
  EXPECT_EQ(idsOf(store.takeChanged()), std::vector<int64>{8});
}

TEST(TradeStore, shouldTakeFromANewStateWhatChangesAndKeepWhatTheOrderIs) {
  TradeStore store(1);
  Order order = makeOrder(7, 1);
  order.source.createSource = "S";
  order.orderRef = "mine";
  store.addOrder(order);
  Order changed = makeOrder(7, 1, order::Status::Cancelled);
  changed.cancelSource.createSource = "other";
  changed.values[order::FilledVolume] = 5;
  changed.text5 = "why";
  changed.value5 = 2.5;
  store.updateOrder(changed);
  const Order known = *store.order(7);
  EXPECT_EQ(OrderView(known).status(), order::Status::Cancelled);
  EXPECT_EQ(known.cancelSource.createSource, "other");
  EXPECT_EQ(known.values[order::FilledVolume], 5);
  EXPECT_EQ(known.text5, "why");
  EXPECT_EQ(known.value5, 2.5);
  EXPECT_EQ(known.source.createSource, "S");
  EXPECT_EQ(known.orderRef, "mine");
}

TEST(TradeStore, shouldTakeEachTextOfANewStateByItself) {
  const auto change = [](const std::function<void(Order&)>& make) {
    TradeStore store(1);
    Order order = makeOrder(7, 1);
    order.text4 = "what it is";
    store.addOrder(makeOrder(6, 1));
    store.addOrder(order);
    Order changed = makeOrder(7, 1, order::Status::Filled);
    changed.value1 = 3;
    make(changed);
    store.updateOrder(changed);
    EXPECT_EQ(store.order(7)->text4, "what it is");
    EXPECT_EQ(store.order(7)->value1, 3);
    EXPECT_EQ(OrderView(*store.order(7)).status(), order::Status::Filled);
    EXPECT_EQ(OrderView(*store.order(6)).status(), order::Status::Working);
    return *store.order(7);
  };
  EXPECT_EQ(change([](Order& /*of*/) {}).text5, "");
  EXPECT_EQ(change([](Order& of) { of.text5 = "why"; }).text5, "why");
  EXPECT_EQ(change([](Order& of) { of.text6 = "who"; }).text6, "who");
  EXPECT_EQ(change([](Order& of) { of.cancelSource.sourceText = "by"; }).cancelSource.sourceText,
            "by");
}

TEST(TradeStore, shouldIgnoreTheStateOfAnOrderThatWasNeverAdded) {
  TradeStore store(1);
  store.updateOrder(makeOrder(7, 1));
  EXPECT_TRUE(store.sources(1).empty());
  EXPECT_EQ(store.changedCount(), 0u);
}

TEST(TradeStore, shouldForgetEverythingWhenCleared) {
  TradeStore store(1);
  store.addOrder(makeOrder(7, 1));
  OrderFill fill;
  fill.account.accountKey = 1;
  store.addFill(fill);
  store.clear();
  std::list<Order> orders;
  std::list<OrderFill> fills;
  store.orders(1, kAll, orders);
  store.fills(1, kAll, fills);
  EXPECT_TRUE(orders.empty());
  EXPECT_TRUE(fills.empty());
  EXPECT_FALSE(store.order(7));
}

TEST(TradeStore, shouldFindTheFillsOfAnOrderAmongThoseOfOthers) {
  TradeStore store(2);
  const auto addFill = [&store](int64 id, int64 orderId, std::int32_t account) {
    OrderFill record;
    record.id = id;
    record.account.accountKey = account;
    record.numbers[fill::OrderId] = orderId;
    store.addFill(record);
  };
  const auto fillsOf = [&store](int64 orderId) {
    std::list<OrderFill> found;
    store.fillsOfOrder(orderId, found);
    std::vector<int64> ids;
    for (const OrderFill& each : found) ids.push_back(each.id);
    return ids;
  };
  for (const int64 id : {7, 8, 9}) store.addOrder(makeOrder(id, id == 8 ? 2 : 1));
  addFill(70, 7, 1);
  addFill(80, 8, 2);
  addFill(71, 7, 1);
  addFill(81, 8, 2);
  addFill(72, 7, 1);
  EXPECT_EQ(fillsOf(7), (std::vector<int64>{70, 71, 72}));
  EXPECT_EQ(fillsOf(8), (std::vector<int64>{80, 81}));
  EXPECT_TRUE(fillsOf(9).empty());
  EXPECT_TRUE(fillsOf(1).empty());
  store.clear();
  store.addOrder(makeOrder(8, 2));
  EXPECT_TRUE(fillsOf(8).empty());
}

}  // namespace
}  // namespace orvane::detail
