#include "EventStrategy/GridDetail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "tests/EventStrategy/GridRecordsOf.h"
#include "tests/shared/Iconv.h"

namespace orvane::support {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Answers with the orders that a test gave it, and notes what it was asked.
struct OpenOrdersFake {
  std::list<Order> operator()(const TradingAccountID& account, const ICodeID& code) {
    asked.push_back(std::to_string(account.accountKey) + " " + std::to_string(code.id));
    return orders;
  }

  void know(int64 id, const std::string& a, const std::string& b, int gridId) {
    Order order;
    order.id = id;
    order.pair = {a, b};
    order.ints[9] = gridId;
    orders.push_back(order);
  }

  std::list<Order> orders;
  std::vector<std::string> asked;
};

class GridDetailTest : public ::testing::Test {
 protected:
  void find(const QList<GridOrderRecord>& records) {
    findGridOrderIds(records, std::ref(ask), ids);
  }

  OpenOrdersFake ask;
  GridIds ids;
};

std::vector<int64> idsOf(const auto& records) {
  std::vector<int64> all;
  for (const auto& record : records) all.push_back(record.id);
  return all;
}

// Keys.

TEST_F(GridDetailTest, shouldKeyAnOrderByItsSecondTextItsFirstTextAndItsNumber) {
  EXPECT_EQ(orderGridKey("x", "y", 7), "x@y@7");
  GridOrderRecord record = gridOrderOf(3);
  record.gridId = -2;
  EXPECT_EQ(orderGridKey(record), "b3@a3@-2");
  Order order;
  order.pair = {"first", "second"};
  order.ints[9] = 12;
  EXPECT_EQ(orderGridKey(order), "second@first@12");
}

TEST_F(GridDetailTest, shouldKeyFillsByReferenceAndNumber) {
  EXPECT_EQ(fillGroupKey("r1", 7), "r1@7");
}

TEST_F(GridDetailTest, shouldGiveARecordAndTheServicesOrderOneKeyAlsoForChineseTexts) {
  GridOrderRecord record = gridOrderOf(1);
  record.keyA = QString::fromUtf8("网格甲");
  record.keyB = QString::fromUtf8("网格乙");
  Order order;
  order.pair = {gbkFromUtf8("网格甲"), gbkFromUtf8("网格乙")};
  order.ints[9] = record.gridId;
  EXPECT_EQ(orderGridKey(order), orderGridKey(record));
}

// Accounts and codes.

TEST_F(GridDetailTest, shouldTurnAnAccountIntoATradingAccountFieldByField) {
  GridAccountPart part;
  part.accountKey = 1;
  part.second = 2;
  part.counterType = 3;
  part.fourth = 4;
  part.text1 = QString::fromUtf8("柜台");
  part.text2 = "two";
  part.account = QString::fromUtf8("账号");
  part.currency = 5;
  part.infoKey = 6;
  part.hedgeFlag = 7;
  part.eighth = 8;
  part.text4 = QString::fromUtf8("备注");
  const TradingAccountID account = tradingAccountOf(part);
  EXPECT_EQ(account.accountKey, 1);
  EXPECT_EQ(account.second, 2);
  EXPECT_EQ(account.counterType, 3);
  EXPECT_EQ(account.fourth, 4);
  EXPECT_EQ(account.text1, gbkFromUtf8("柜台"));
  EXPECT_EQ(account.text2, "two");
  EXPECT_EQ(account.account, gbkFromUtf8("账号"));
  EXPECT_EQ(account.currency, 5);
  EXPECT_EQ(account.infoKey, 6);
  EXPECT_EQ(account.hedgeFlag, 7);
  EXPECT_EQ(account.eighth, 8);
  EXPECT_EQ(account.text4, "备注");  // UTF-8, as the only one.
}

TEST_F(GridDetailTest, shouldTurnADefaultAccountIntoADefaultTradingAccount) {
  const TradingAccountID account = tradingAccountOf({});
  const TradingAccountID empty;
  EXPECT_EQ(account.accountKey, empty.accountKey);
  EXPECT_EQ(account.second, empty.second);
  EXPECT_EQ(account.counterType, empty.counterType);
  EXPECT_EQ(account.currency, empty.currency);
}

TEST_F(GridDetailTest, shouldTurnACodeIntoAnICodeIdFieldByField) {
  const ICodeID code = codeIdOf({7, 2, 3, QString::fromUtf8("螺纹")});
  EXPECT_EQ(code.id, 7);
  EXPECT_EQ(code.kind, 2);
  EXPECT_EQ(code.market, 3);
  EXPECT_EQ(code.code, gbkFromUtf8("螺纹"));
  EXPECT_EQ(codeIdOf({}).kind, ICodeID().kind);
  EXPECT_EQ(codeIdOf({}).market, ICodeID().market);
}

// The ids that the trade service knows.

TEST_F(GridDetailTest, shouldTakeTheIdOfAnOrderThatTheServiceKnows) {
  ask.know(99, "a1", "b1", 1);
  find({gridOrderOf(1)});
  EXPECT_THAT(ask.asked, ElementsAre("5 1"));
  EXPECT_EQ(ids, (GridIds{{"b1@a1@1", 99}}));
}

TEST_F(GridDetailTest, shouldAskOnceForAnAccountAndCodeHoweverManyRecordsShareThem) {
  ask.know(99, "a1", "b1", 1);
  ask.know(98, "a3", "b3", 1);
  find({gridOrderOf(1), gridOrderOf(2), gridOrderOf(3), gridOrderOf(4)});
  EXPECT_THAT(ask.asked, ElementsAre("5 1"));
  EXPECT_EQ(ids, (GridIds{{"b1@a1@1", 99}, {"b3@a3@1", 98}}));
}

TEST_F(GridDetailTest, shouldAskForEachAccountAndForEachCode) {
  find({gridOrderOf(1, 5, 1), gridOrderOf(2, 5, 2), gridOrderOf(3, 6, 1), gridOrderOf(4, 6, 1)});
  EXPECT_THAT(ask.asked, ElementsAre("5 1", "5 2", "6 1"));
  EXPECT_TRUE(ids.empty());
}

TEST_F(GridDetailTest, shouldNotAskForAnOrderWhoseIdIsKnown) {
  ids["b1@a1@1"] = 7;
  ask.know(99, "a1", "b1", 1);
  find({gridOrderOf(1)});
  EXPECT_THAT(ask.asked, IsEmpty());
  EXPECT_EQ(ids.value("b1@a1@1"), 7);
}

TEST_F(GridDetailTest, shouldNotCountAKnownOrderAsAskedFor) {
  ids["b1@a1@1"] = 7;
  ask.know(99, "a2", "b2", 1);
  find({gridOrderOf(1), gridOrderOf(2)});
  EXPECT_THAT(ask.asked, ElementsAre("5 1"));
  EXPECT_EQ(ids.value("b2@a2@1"), 99);
}

TEST_F(GridDetailTest, shouldTakeAnIdFromTheAnswerForAnotherCode) {
  // The answer for code 1 names the order of the record in code 2: no question is left for it.
  ask.know(99, "a2", "b2", 1);
  find({gridOrderOf(1, 5, 1), gridOrderOf(2, 5, 2)});
  EXPECT_THAT(ask.asked, ElementsAre("5 1"));
  EXPECT_EQ(ids, (GridIds{{"b2@a2@1", 99}}));
}

TEST_F(GridDetailTest, shouldLetTheLastOfTwoOrdersWithOneKeyWin) {
  ask.know(1, "a1", "b1", 1);
  ask.know(2, "a1", "b1", 1);
  find({gridOrderOf(1)});
  EXPECT_EQ(ids.value("b1@a1@1"), 2);
}

TEST_F(GridDetailTest, shouldTellOrdersOfDifferentNumbersApart) {
  ask.know(1, "a1", "b1", 2);
  find({gridOrderOf(1)});
  EXPECT_TRUE(ids.empty());
}

TEST_F(GridDetailTest, shouldKeepNothingOfTheServicesOrdersThatTheDetailDoesNotName) {
  ask.know(1, "a7", "b7", 1);
  find({gridOrderOf(1)});
  EXPECT_TRUE(ids.empty());
}

// Orders.

TEST_F(GridDetailTest, shouldCopyEveryFieldOfAnOrderToItsPlace) {
  GridOrderRecord record = gridOrderOf(1, 5, 8, 31);
  record.code.code = "IF";
  record.value1 = 1;
  record.value2 = 2;
  record.status = 3;
  record.time = 1609723800007;
  record.value3 = 13;
  record.value4 = 14;
  record.value5 = 15;
  record.value6 = 16;
  record.value7 = 17;
  record.value8 = 18.5;
  record.text = QString::fromUtf8("说明");
  const std::list<Order> orders = gridOrders(-77, {record}, {}, 1000, ids);
  ASSERT_EQ(orders.size(), 1u);
  const Order& order = orders.front();
  EXPECT_EQ(order.id, 1000);
  EXPECT_EQ(order.account.accountKey, 5);
  EXPECT_EQ(order.code.id, 8);
  EXPECT_EQ(order.code.code, "IF");
  EXPECT_EQ(order.source.sourceType, 131072);
  EXPECT_EQ(order.source.createSource, "__grid__");
  EXPECT_EQ(order.source.sourceText, "-77");
  EXPECT_EQ(order.pair.first, "a1");
  EXPECT_EQ(order.pair.second, "b1");
  EXPECT_EQ(order.orderRef, "r1");
  EXPECT_EQ(order.value1, 1609723800007.0);
  EXPECT_EQ(order.values, (std::array<Word, 11>{1609723800007, 14, 15, 0, 0,
                                                std::bit_cast<Word>(18.5), 17, 0, 13, 16, 0}));
  EXPECT_EQ(order.ints, (std::array<std::int32_t, 11>{0, 0, 2, 0, 1, 3, 0, 0, 0, 31, 0}));
  EXPECT_EQ(order.text5, gbkFromUtf8("说明"));
}

TEST_F(GridDetailTest, shouldLeaveWhatTheDetailDoesNotSayAtItsDefault) {
  const Order order = gridOrders(1, {gridOrderOf(1)}, {}, 1000, ids).front();
  EXPECT_EQ(order.text3 + order.text4 + order.text6, "");
  EXPECT_EQ(order.cancelSource.sourceType, 1);
  EXPECT_EQ(order.cancelSource.createSource, "");
  EXPECT_EQ(order.value2, 0);
  EXPECT_EQ(order.value3, 0);
  EXPECT_EQ(order.value4, 0);
}

TEST_F(GridDetailTest, shouldLeaveTheMeanAtItsDefaultForOrdersWithoutFills) {
  const std::list<Order> orders = gridOrders(1, {gridOrderOf(1), gridOrderOf(2)}, {}, 1000, ids);
  ASSERT_EQ(orders.size(), 2u);
  EXPECT_EQ(orders.front().value5, 0.0);
  EXPECT_EQ(orders.back().value5, 0.0);
}

TEST_F(GridDetailTest, shouldGiveAnOrderTheMeanPriceOfItsOwnFills) {
  const QList<GridFillRecord> fills = {gridFillOf(1, "r1", 10.0), gridFillOf(2, "r2", 99.0),
                                       gridFillOf(3, "r1", 11.0), gridFillOf(4, "r1", 10.5)};
  const std::list<Order> orders = gridOrders(1, {gridOrderOf(1), gridOrderOf(3)}, fills, 1, ids);
  EXPECT_EQ(orders.front().value5, 31.5 / 3);
  EXPECT_EQ(orders.back().value5, 0.0);
}

TEST_F(GridDetailTest, shouldNotCountFillsOfAnotherGridWithTheSameReference) {
  const QList<GridFillRecord> fills = {gridFillOf(1, "r1", 10.0, 1), gridFillOf(2, "r1", 20.0, 2)};
  EXPECT_EQ(gridOrders(1, {gridOrderOf(1)}, fills, 1, ids).front().value5, 10.0);
}

TEST_F(GridDetailTest, shouldCountNewIdsUpAndKeepThem) {
  ids["b2@a2@1"] = 7;
  const QList<GridOrderRecord> detail = {gridOrderOf(1), gridOrderOf(2), gridOrderOf(3)};
  EXPECT_THAT(idsOf(gridOrders(1, detail, {}, 1000, ids)), ElementsAre(1000, 7, 1001));
  EXPECT_THAT(idsOf(gridOrders(1, detail, {}, 5000, ids)), ElementsAre(1000, 7, 1001));
}

TEST_F(GridDetailTest, shouldDeliverARecordThatStandsTwiceInADetailTwiceWithOneId) {
  const std::list<Order> orders = gridOrders(1, {gridOrderOf(1), gridOrderOf(1)}, {}, 1000, ids);
  EXPECT_THAT(idsOf(orders), ElementsAre(1000, 1000));
}

TEST_F(GridDetailTest, shouldNotCompareANewIdWithThoseGivenBefore) {
  ids["other"] = 1000;
  EXPECT_THAT(idsOf(gridOrders(1, {gridOrderOf(1)}, {}, 1000, ids)), ElementsAre(1000));
}

// Fills.

TEST_F(GridDetailTest, shouldCopyEveryFieldOfAFillToItsPlace) {
  GridFillRecord record = gridFillOf(1, "r9", 12.25, 31);
  record.code.id = 8;
  record.value1 = 1;
  record.value2 = 2;
  record.time = 1609723800007;
  record.value3 = 13;
  record.value4 = 14;
  record.value5 = 15;
  const std::list<OrderFill> fills = gridFills(78, {}, {record}, 1000, ids);
  ASSERT_EQ(fills.size(), 1u);
  const OrderFill& fill = fills.front();
  EXPECT_EQ(fill.id, 1000);
  EXPECT_EQ(fill.value1, 31);
  EXPECT_EQ(fill.account.accountKey, 5);
  EXPECT_EQ(fill.code.id, 8);
  EXPECT_EQ(fill.source.sourceType, 131072);
  EXPECT_EQ(fill.source.createSource, "__grid__");
  EXPECT_EQ(fill.source.sourceText, "78");
  EXPECT_EQ(fill.orderRef, "r9");
  EXPECT_EQ(fill.direction(), 1);
  EXPECT_EQ(fill.ints, (std::array<std::int32_t, 4>{0, 2, 0, 1}));
  EXPECT_EQ(fill.fillText, "f1");
  EXPECT_EQ(fill.values, (std::array<Word, 4>{1609723800007, 13, std::bit_cast<Word>(12.25), 15}));
  EXPECT_EQ(fill.numbers, (std::array<Word, 7>{0, 0, 0, 0, 14, 0, 0}));
}

TEST_F(GridDetailTest, shouldDeliverAFillWithoutItsOrderWithoutTheCopiedFields) {
  const OrderFill fill = gridFills(1, {gridOrderOf(1)}, {gridFillOf(1, "r2")}, 1000, ids).front();
  EXPECT_EQ(fill.numbers, (std::array<Word, 7>{}));
  EXPECT_EQ(fill.pair.first + fill.pair.second, "");
}

TEST_F(GridDetailTest, shouldGiveAFillItsOrdersTimeNumbersAndKeys) {
  GridOrderRecord order = gridOrderOf(1);
  order.time = 100;
  order.value4 = 14;
  order.value5 = 15;
  const OrderFill fill = gridFills(1, {order}, {gridFillOf(1, "r1")}, 1000, ids).front();
  EXPECT_EQ(fill.numbers, (std::array<Word, 7>{100, 14, 15, 0, 0, 0, 0}));
  EXPECT_EQ(fill.pair.first, "a1");
  EXPECT_EQ(fill.pair.second, "b1");
}

TEST_F(GridDetailTest, shouldLetTheLastOfTwoOrdersWithOneReferenceServeTheFill) {
  GridOrderRecord first = gridOrderOf(1);
  GridOrderRecord second = gridOrderOf(2);
  second.orderRef = first.orderRef;
  const OrderFill fill = gridFills(1, {first, second}, {gridFillOf(1, "r1")}, 1, ids).front();
  EXPECT_EQ(fill.pair.first, "a2");
}

TEST_F(GridDetailTest, shouldJoinAFillToItsOrderByTheReferenceAloneWhateverTheGrid) {
  GridOrderRecord order = gridOrderOf(1, 5, 1, 9);
  order.time = 100;
  EXPECT_EQ(gridFills(1, {order}, {gridFillOf(1, "r1")}, 1, ids).front().numbers[0], 100);
}

TEST_F(GridDetailTest, shouldKeepAFillsIdByItsReference) {
  EXPECT_THAT(idsOf(gridFills(1, {}, {gridFillOf(1, "r"), gridFillOf(2, "r")}, 1000, ids)),
              ElementsAre(1000, 1001));
  EXPECT_THAT(idsOf(gridFills(1, {}, {gridFillOf(2, "r"), gridFillOf(3, "s")}, 5000, ids)),
              ElementsAre(1001, 5000));
}

TEST_F(GridDetailTest, shouldTranslateAnEmptyDetailIntoNothing) {
  find({});
  EXPECT_THAT(ask.asked, IsEmpty());
  EXPECT_TRUE(gridOrders(1, {}, {gridFillOf(1, "r1")}, 1, ids).empty());
  EXPECT_TRUE(gridFills(1, {gridOrderOf(1)}, {}, 1, ids).empty());
  EXPECT_TRUE(ids.empty());
}

}  // namespace
}  // namespace orvane::support
