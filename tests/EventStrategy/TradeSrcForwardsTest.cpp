// The trade source's forwards of order entry and queries, which take no mutex.

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcForwards : public TradeSrcTest {
 protected:
  TradeSrcForwards() {
    FakeTradeService& service = platform.trade();
    service.orders = {orderOf(1, 0), orderOf(2, 3)};
    service.fills = {fillOf("a"), fillOf("b")};
    service.positions = {positionOf(1)};
    service.sourcePositionRecords = {sourcePositionOf(1)};
  }

  /// Runs `forward` on the mutex that is free inside the service, and tells the service's calls.
  template <typename Forward>
  std::vector<std::string> callsOf(const std::string& operation, Forward forward) {
    bool isFree = false;
    platform.calls.onCall("trade." + operation, [&] { isFree = TestAccess::mutexIsFree(*source); });
    platform.calls.clear();
    forward();
    platform.calls.onCall("trade." + operation, {});
    EXPECT_TRUE(isFree) << operation;
    return tradeCalls();
  }

  const ResultStatus refused{4, "refused"};
};

TEST_F(TradeSrcForwards, shouldForwardCancelsAndActionsWithTheServicesStatus) {
  platform.calls.answer("trade.cancelOrder", refused);
  platform.calls.answer("trade.orderActionForward", refused);
  EXPECT_THAT(
      callsOf("cancelOrder", [&] { EXPECT_EQ(source->cancelOrder(orderOf(8, 0)), refused); }),
      ElementsAre("trade.cancelOrder 8"));
  EXPECT_THAT(callsOf("orderActionForward",
                      [&] { EXPECT_EQ(source->orderActionForward(orderOf(9, 0), 3), refused); }),
              ElementsAre("trade.orderActionForward 9 3"));
}

TEST_F(TradeSrcForwards, shouldForwardTheQueriesForOneRecord) {
  Position position;
  EXPECT_THAT(
      callsOf("getPosition",
              [&] { EXPECT_EQ(source->getPosition(account, codeOf(1), position).code, 0); }),
      ElementsAre("trade.getPosition 5 1"));
  EXPECT_EQ(position.code.id, 1);
  SourcePosition part;
  EXPECT_THAT(
      callsOf(
          "getSourcePosition",
          [&] { EXPECT_EQ(source->getSourcePosition(account, "own", codeOf(1), part).code, 0); }),
      ElementsAre("trade.getSourcePosition 5 1 own"));
  EXPECT_EQ(part.createSource, "own");
  Order order;
  EXPECT_THAT(callsOf("getOrder", [&] { EXPECT_EQ(source->getOrder(2, order).code, 0); }),
              ElementsAre("trade.getOrder 2"));
  EXPECT_EQ(order.id, 2);
  EXPECT_EQ(source->getOrder(77, order).code, 22);
}

TEST_F(TradeSrcForwards, shouldHandTheStatusOfAQueryOnUnchangedAndLeaveTheListToTheService) {
  platform.calls.answer("trade.ordersByCode", refused);
  std::list<Order> orders = {orderOf(50, 0)};
  EXPECT_THAT(
      callsOf("ordersByCode",
              [&] { EXPECT_EQ(source->ordersByCode(account, codeOf(1), orders), refused); }),
      ElementsAre("trade.ordersByCode 5 1"));
  EXPECT_EQ(orders.size(), 3u);  // The service appended to the caller's own list.
  std::list<OrderFill> fills;
  EXPECT_THAT(
      callsOf("fillQueryForward", [&] { EXPECT_EQ(source->fillQueryForward(9, fills).code, 0); }),
      ElementsAre("trade.fillQueryForward 9"));
  EXPECT_EQ(fills.size(), 2u);
}

TEST_F(TradeSrcForwards, shouldAskForPositionsWithMask32AndDropTheStatus) {
  std::list<Position> found;
  EXPECT_THAT(callsOf("getPositions", [&] { found = source->getPositions(account); }),
              ElementsAre("trade.getPositions 5 mask=32"));
  EXPECT_EQ(found.size(), 1u);
  platform.calls.answer("trade.getPositions", refused);
  EXPECT_THAT(source->getPositions(account), IsEmpty());
}

TEST_F(TradeSrcForwards, shouldReturnTheListsOfOrdersAndDropTheStatus) {
  std::list<Order> found;
  EXPECT_THAT(
      callsOf("openOrdersByCode", [&] { found = source->openOrdersByCode(account, codeOf(1)); }),
      ElementsAre("trade.openOrdersByCode 5 1"));
  EXPECT_EQ(found.size(), 2u);
  EXPECT_THAT(callsOf("openOrdersOfAccount", [&] { found = source->openOrdersOfAccount(account); }),
              ElementsAre("trade.openOrdersOfAccount 5"));
  EXPECT_EQ(found.size(), 2u);
  EXPECT_THAT(callsOf("ordersByKey", [&] { found = source->ordersByKey(account, "k"); }),
              ElementsAre("trade.ordersByKey 5 k"));
  EXPECT_EQ(found.size(), 2u);
  EXPECT_THAT(callsOf("ordersOfAccount", [&] { found = source->ordersOfAccount(account); }),
              ElementsAre("trade.ordersOfAccount 5"));
  EXPECT_EQ(found.size(), 2u);
  platform.calls.answer("trade.ordersOfAccount", refused);
  EXPECT_THAT(source->ordersOfAccount(account), IsEmpty());
  std::list<OrderFill> fills;
  EXPECT_THAT(callsOf("fillsByCode", [&] { fills = source->fillsByCode(account, codeOf(1)); }),
              ElementsAre("trade.fillsByCode 5 1"));
  EXPECT_EQ(fills.size(), 2u);
}

TEST_F(TradeSrcForwards, shouldCopyOutTheFillWithTheDirectionAndTheText) {
  OrderFill wanted = fillOf("b");
  wanted.direction() = 1;
  wanted.orderRef = "the one";
  platform.trade().fills = {fillOf("b"), fillOf("a"), wanted, wanted};
  platform.trade().fills.back().orderRef = "a later one";
  OrderFill fill;
  EXPECT_THAT(
      callsOf(
          "fillsByCode",
          [&] { EXPECT_EQ(source->getFill(account, codeOf(1), 1, "b", fill), ResultStatus()); }),
      ElementsAre("trade.fillsByCode 5 1"));
  EXPECT_EQ(fill.orderRef, "the one");
}

TEST_F(TradeSrcForwards, shouldAnswer22AndLeaveTheRecordUntouchedWhenNoFillMatches) {
  OrderFill fill = fillOf("untouched");
  const ResultStatus missing{22, gbkFromUtf8("不存在")};
  EXPECT_EQ(source->getFill(account, codeOf(1), 1, "a", fill), missing);
  EXPECT_EQ(source->getFill(account, codeOf(1), 0, "c", fill), missing);
  EXPECT_EQ(fill.fillText, "untouched");
}

TEST_F(TradeSrcForwards, shouldKeepTheTradingAccountsOfOneTextAndAnyCounterUpTo0) {
  TradingAccountID first = accountOf(1, "x");
  first.counterType = 2;
  TradingAccountID second = accountOf(2, "x");
  second.counterType = 3;
  platform.trade().accounts = {first, accountOf(3, "y"), second};
  EXPECT_EQ(source->tradingAccountsOf(0, "x"), (std::vector{first, second}));
  EXPECT_EQ(source->tradingAccountsOf(-1, "x"), (std::vector{first, second}));
  EXPECT_EQ(source->tradingAccountsOf(3, "x"), std::vector{second});
  EXPECT_THAT(source->tradingAccountsOf(1, "x"), IsEmpty());
  EXPECT_THAT(source->tradingAccountsOf(0, "z"), IsEmpty());
  EXPECT_THAT(callsOf("tradingAccounts", [&] { source->tradingAccountsOf(0, "x"); }),
              ElementsAre("trade.tradingAccounts"));
}

TEST_F(TradeSrcForwards, shouldForwardTheAccountsTheirNumberAndTheirRecords) {
  platform.trade().accounts = {account};
  platform.trade().links.resize(2);
  EXPECT_EQ(source->tradingAccountCount(), 1);
  EXPECT_EQ(source->tradingAccounts(), std::vector{account});
  EXPECT_EQ(source->accountRecords("x", 3).size(), 2u);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.tradingAccountCount", "trade.tradingAccounts",
                                        "trade.accountRecords x 3"));
}

}  // namespace
}  // namespace orvane::support
