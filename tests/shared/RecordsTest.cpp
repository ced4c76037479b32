#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <map>
#include <set>
#include <type_traits>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/CondId.h"
#include "shared/DictionaryRecords.h"
#include "shared/EnvItem.h"
#include "shared/ICodeID.h"
#include "shared/IndexTradeElement.h"
#include "shared/MarketRecords.h"
#include "shared/SourceId.h"
#include "shared/TradeRecords.h"

namespace orvane {
namespace {

template <typename Values>
bool allZero(const Values& values) {
  for (const auto& value : values)
    if (value != typename Values::value_type{}) return false;
  return true;
}

TEST(ICodeID, shouldBeEqualByIdAloneWhateverTheOtherFieldsSay) {
  const ICodeID one{7, 1, 2, "A"};
  const ICodeID same{7, 3, 4, "B"};
  const ICodeID other{8, 1, 2, "A"};
  EXPECT_EQ(one, same);
  EXPECT_NE(one, other);
  EXPECT_LT(one, other);
  EXPECT_EQ((std::set<ICodeID>{one, same, other}.size()), 2u);
}

TEST(ICodeID, shouldDefaultToId0AndNoKindOrMarket) {
  const ICodeID code;
  EXPECT_EQ(code.id, 0);
  EXPECT_EQ(code.kind, -1);
  EXPECT_EQ(code.market, -1);
  EXPECT_EQ(code.code, "");
}

TEST(ICategoryID, shouldDefaultToMinus1AndEmptyTexts) {
  const ICategoryID category;
  EXPECT_EQ(category.first, -1);
  EXPECT_EQ(category.second, "");
  EXPECT_EQ(category.third, "");
}

TEST(SourceId, shouldDefaultToSourceType1) {
  const SourceId source;
  EXPECT_EQ(source.sourceType, 1);
  EXPECT_EQ(source.createSource, "");
  EXPECT_EQ(source.sourceText, "");
}

TEST(IKLine, shouldBeElevenWordsWithoutAnyPointer) {
  EXPECT_EQ(sizeof(IKLine), 11 * sizeof(Word));
  EXPECT_TRUE(std::is_trivially_copyable_v<IKLine>);
}

TEST(IDepthMarketData, shouldHaveTenZeroLevelsAnd1InTheLastValueOfBlock3) {
  const IDepthMarketData quote;
  ASSERT_EQ(quote.levels.size(), 10u);
  for (const DepthLevel& level : quote.levels) EXPECT_EQ(level, DepthLevel{});
  EXPECT_EQ(quote.levels[0].value3, 0.0);
  EXPECT_EQ(quote.block1.size(), 18u);
  EXPECT_TRUE(allZero(quote.block1));
  EXPECT_EQ(quote.block2.size(), 6u);
  EXPECT_TRUE(allZero(quote.block2));
  ASSERT_EQ(quote.block3.size(), 8u);
  for (int i = 0; i < 7; ++i) EXPECT_EQ(quote.block3[i], 0) << i;
  EXPECT_EQ(std::bit_cast<double>(quote.block3[7]), 1.0);
  EXPECT_TRUE(quote.extras.empty());
}

TEST(KLineProgress, shouldDefaultToZeroes) {
  const KLineProgress progress;
  EXPECT_EQ(progress.value1, 0);
  EXPECT_EQ(progress.value2, 0);
  EXPECT_EQ(progress.value3, 0);
  EXPECT_EQ(progress.value4, 0);
  EXPECT_EQ(progress.status, ResultStatus());
}

TEST(ResultStatus, shouldDefaultToSuccessWithoutAMessage) {
  const ResultStatus status;
  EXPECT_EQ(status.code, 0);
  EXPECT_EQ(status.message, "");
}

TEST(RolloverCoefficient, shouldDefaultToZeroAndNoItems) {
  const RolloverCoefficient coefficient;
  EXPECT_EQ(coefficient.value, 0);
  EXPECT_TRUE(coefficient.items.empty());
}

TEST(TermPair, shouldDefaultToOneDay) { EXPECT_EQ(TermPair{}, (TermPair{5, 1})); }

TEST(DictionaryRecords, shouldDefaultToZeroAndEmpty) {
  EXPECT_EQ(Record{}, (Record{0, 0, ""}));
  const DataReq request;
  EXPECT_EQ(request.name, "");
  EXPECT_TRUE(request.targets.empty());
  EXPECT_EQ(request.beginTime, 0);
  EXPECT_EQ(request.endTime, 0);
  EXPECT_EQ(request.count, 0);
  EXPECT_EQ(request.flags, 0);
  EXPECT_EQ(sizeof(DataValueType), 4u);
}

TEST(CondId, shouldDefaultToZeroesAndAnEmptyText) {
  const CondId condition;
  EXPECT_EQ(condition.first, 0);
  EXPECT_EQ(condition.second, 0);
  EXPECT_EQ(condition.third, 0);
  EXPECT_TRUE(condition.text.isEmpty());
}

TEST(AccountID, shouldDefaultToCounterTypeMinus1) {
  const AccountID account;
  EXPECT_EQ(account.first, 0);
  EXPECT_EQ(account.counterType, -1);
  EXPECT_EQ(account.fourth, 0);
  EXPECT_EQ(account.text3, "");
}

TEST(TradingAccountID, shouldDefaultToTheLargestKeyAndCurrency11) {
  const TradingAccountID account;
  EXPECT_EQ(account.accountKey, 2147483647);
  EXPECT_EQ(account.second, 2147483647);
  EXPECT_EQ(account.counterType, -1);
  EXPECT_EQ(account.fourth, 0);
  EXPECT_EQ(account.currency, 11);
  EXPECT_EQ(account.infoKey, 0);
  EXPECT_EQ(account.hedgeFlag, 0);
  EXPECT_EQ(account.eighth, 0);
}

TEST(TradingAccountID, shouldBeOrderedByAccountKeyAlone) {
  TradingAccountID one;
  one.accountKey = 5;
  TradingAccountID same = one;
  same.account = "other";
  same.currency = 3;
  TradingAccountID later = one;
  later.accountKey = 6;
  EXPECT_EQ(one, same);
  EXPECT_LT(one, later);
  std::map<TradingAccountID, int> map{{one, 1}};
  map[same] = 2;
  EXPECT_EQ(map.size(), 1u);
}

TEST(TradingAccount, shouldHoldBlocksOf23And18ZeroWordsAroundAValue) {
  const TradingAccount capital;
  EXPECT_EQ(capital.block1.size(), 23u);
  EXPECT_TRUE(allZero(capital.block1));
  EXPECT_EQ(capital.value, 0);
  EXPECT_EQ(capital.block2.size(), 18u);
  EXPECT_TRUE(allZero(capital.block2));
  EXPECT_EQ(capital.account.currency, 11);
}

TEST(AccountStatusInfo, shouldDefaultToStatus0AndNoAccounts) {
  const AccountStatusInfo info;
  EXPECT_EQ(info.statusCode, 0);
  EXPECT_EQ(info.result, ResultStatus());
  EXPECT_TRUE(info.accounts.empty());
  EXPECT_EQ(info.value, 0);
}

TEST(Order, shouldDefaultToZeroesWithStatusAsTheSixthIntAndUpdateTimeAsTheFirstValue) {
  Order order;
  EXPECT_EQ(order.id, 0);
  EXPECT_EQ(order.source.sourceType, 1);
  EXPECT_EQ(order.cancelSource.sourceType, 1);
  EXPECT_EQ(order.values.size(), 11u);
  EXPECT_TRUE(allZero(order.values));
  EXPECT_EQ(order.ints.size(), 11u);
  EXPECT_TRUE(allZero(order.ints));
  EXPECT_EQ(order.value1, 0.0);
  EXPECT_EQ(order.value5, 0.0);
  EXPECT_EQ(order.leg1.values.size(), 4u);
  order.status() = 7;
  order.updateTime() = 99;
  EXPECT_EQ(order.ints[5], 7);
  EXPECT_EQ(order.values[0], 99);
}

TEST(OrderFill, shouldHoldDirectionAsTheFourthIntAndTimeAndPriceAsFirstAndThirdValue) {
  OrderFill fill;
  EXPECT_EQ(fill.id, 0);
  EXPECT_EQ(fill.numbers.size(), 7u);
  EXPECT_TRUE(allZero(fill.numbers));
  EXPECT_EQ(fill.ints.size(), 4u);
  EXPECT_EQ(fill.values.size(), 4u);
  fill.direction() = 1;
  fill.fillTime() = 42;
  fill.setPrice(2.5);
  EXPECT_EQ(fill.ints[3], 1);
  EXPECT_EQ(fill.values[0], 42);
  EXPECT_EQ(std::bit_cast<double>(fill.values[2]), 2.5);
}

TEST(Position, shouldHave1InTheSixthValueOfBlock3AndZeroElsewhere) {
  const Position position;
  ASSERT_EQ(position.block3.size(), 11u);
  for (int i = 0; i < 11; ++i)
    EXPECT_EQ(std::bit_cast<double>(position.block3[i]), i == 5 ? 1.0 : 0.0) << i;
  EXPECT_EQ(position.block1.size(), 16u);
  EXPECT_TRUE(allZero(position.block1));
  EXPECT_EQ(position.block2.size(), 16u);
  EXPECT_TRUE(allZero(position.block2));
  EXPECT_EQ(position.ints.size(), 4u);
  EXPECT_EQ(position.block4.size(), 40u);
  EXPECT_TRUE(allZero(position.block4));
  EXPECT_EQ(position.value1, 0.0);
  EXPECT_EQ(position.value2, 0.0);
  EXPECT_EQ(position.value3, 0.0);
}

TEST(SourcePosition, shouldBeAPositionFollowedBySourceType1AndTwoTexts) {
  const SourcePosition position;
  EXPECT_TRUE((std::is_base_of_v<Position, SourcePosition>));
  EXPECT_EQ(position.sourceType, 1);
  EXPECT_EQ(position.createSource, "");
  EXPECT_EQ(position.sourceText, "");
}

TEST(Records, shouldBeValueTypesWithoutVirtualOperations) {
  EXPECT_FALSE(std::is_polymorphic_v<IDepthMarketData>);
  EXPECT_FALSE(std::is_polymorphic_v<Order>);
  EXPECT_FALSE(std::is_polymorphic_v<OrderFill>);
  EXPECT_FALSE(std::is_polymorphic_v<SourcePosition>);
  EXPECT_FALSE(std::is_polymorphic_v<AccountStatusInfo>);
  EXPECT_FALSE(std::is_polymorphic_v<TradingAccount>);
  EXPECT_FALSE(std::is_polymorphic_v<Record>);
  EXPECT_FALSE(std::is_polymorphic_v<IndexTradeElement>);
}

/// Whether the fields of a record stand in memory, and so in its declaration, in this order.
template <typename... Fields>
bool inOrder(const Fields&... fields) {
  const std::vector<const void*> places = {static_cast<const void*>(&fields)...};
  return std::is_sorted(places.begin(), places.end(), std::less<>());
}

TEST(Records, shouldKeepTheFieldsOfMarketDataInTheirOrder) {
  const ICodeID c;
  EXPECT_TRUE(inOrder(c.id, c.kind, c.market, c.code));
  const ICategoryID g;
  EXPECT_TRUE(inOrder(g.first, g.second, g.third));
  const IDepthMarketData q;
  EXPECT_TRUE(inOrder(q.code, q.block1, q.block2, q.block3, q.levels, q.extras));
  const DepthLevel l;
  EXPECT_TRUE(inOrder(l.value1, l.value2, l.value3));
  EXPECT_TRUE((std::is_same_v<decltype(l.value3), double>));
  const KLineProgress p;
  EXPECT_TRUE(inOrder(p.value1, p.value2, p.value3, p.value4, p.status));
  EXPECT_EQ(sizeof(p.value1) + sizeof(p.value2) + sizeof(p.value3) + sizeof(p.value4), 24u);
  const RolloverCoefficient r;
  EXPECT_TRUE(inOrder(r.value, r.items));
  const IndexTradeElement e;
  EXPECT_TRUE(inOrder(e.code, e.value));
  EXPECT_EQ(e.value, 0);
}

TEST(Records, shouldKeepTheFieldsOfDictionaryDataInTheirOrder) {
  const Record r;
  EXPECT_TRUE(inOrder(r.key, r.value2, r.text));
  const TargetRecord t;
  EXPECT_TRUE(inOrder(t.target, t.records));
  const DataResult d;
  EXPECT_TRUE(inOrder(d.name, d.valueType, d.targets));
  const DataReq q;
  EXPECT_TRUE(inOrder(q.name, q.targets, q.beginTime, q.endTime, q.count, q.flags));
  const CondId c;
  EXPECT_TRUE(inOrder(c.first, c.second, c.third, c.text));
  const EnvItem e;
  EXPECT_TRUE(inOrder(e.group, e.key, e.kind, e.text));
  EXPECT_EQ(e.kind, 0);
}

TEST(Records, shouldKeepTheFieldsOfAccountsInTheirOrder) {
  const AccountID i;
  EXPECT_TRUE(inOrder(i.first, i.counterType, i.fourth, i.text1, i.text2, i.text3));
  const TradingAccountID a;
  EXPECT_TRUE(inOrder(a.accountKey, a.second, a.counterType, a.fourth, a.text1, a.text2, a.account,
                      a.currency, a.infoKey, a.hedgeFlag, a.eighth, a.text4));
  const TradingAccount t;
  EXPECT_TRUE(inOrder(t.account, t.block1, t.value, t.block2));
  const AccountStatusInfo s;
  EXPECT_TRUE(inOrder(s.statusCode, s.result, s.login, s.accounts, s.value));
  const AccountLoginInfo l;
  EXPECT_TRUE(inOrder(l.first, l.text1, l.text2, l.list1, l.list2, l.value1, l.value2, l.names,
                      l.text3, l.text4, l.text5, l.text6, l.last));
  EXPECT_EQ(l.first, 0);
  EXPECT_EQ(l.value1, 0);
  EXPECT_EQ(l.value2, 0);
  EXPECT_EQ(l.last, 0);
}

TEST(Records, shouldKeepTheFieldsOfOrdersFillsAndPositionsInTheirOrder) {
  const SourceId s;
  EXPECT_TRUE(inOrder(s.sourceType, s.createSource, s.sourceText));
  const Order o;
  EXPECT_TRUE(inOrder(o.id, o.account, o.code, o.source, o.cancelSource, o.pair, o.text3, o.text4,
                      o.orderRef, o.value1, o.values, o.ints, o.text5, o.text6, o.value2, o.value3,
                      o.value4, o.leg1, o.leg2, o.value5));
  EXPECT_TRUE(inOrder(o.leg1.code, o.leg1.values));
  const OrderRequest r;
  EXPECT_TRUE(inOrder(r.account, r.code, r.source, r.pair, r.text3, r.text4, r.orderRef, r.value1,
                      r.values, r.ints, r.text5, r.text6));
  EXPECT_EQ(r.source.sourceType, 1);
  const OrderFill f;
  EXPECT_TRUE(inOrder(f.id, f.value1, f.account, f.code, f.source, f.pair, f.text1, f.orderRef,
                      f.numbers, f.ints, f.fillText, f.values, f.text3));
  const Position p;
  EXPECT_TRUE(inOrder(p.first, p.account, p.code, p.text1, p.block1, p.value1, p.block2, p.value2,
                      p.block3, p.ints, p.block4, p.value3));
  const SourcePosition b;
  EXPECT_TRUE(inOrder(b.value3, b.sourceType, b.createSource, b.sourceText));
}

TEST(Records, shouldShareNothingWithTheirCopies) {
  IDepthMarketData quote;
  quote.extras[1] = "one";
  IDepthMarketData copy = quote;
  copy.extras[1] = "two";
  EXPECT_EQ(quote.extras[1], "one");
}

TEST(SnapshotKey, shouldBeOrderedByNameFirstAndTargetSecond) {
  EXPECT_LT((SnapshotKey{"z", "a"}), (SnapshotKey{"a", "b"}));
  EXPECT_LT((SnapshotKey{"a", "b"}), (SnapshotKey{"b", "b"}));
  EXPECT_LT((SnapshotKey{"a", "b"}), (SnapshotKey{"aa", "b"}));
  EXPECT_EQ((SnapshotKey{"a", "b"}), (SnapshotKey{"a", "b"}));
}

TEST(Types, shouldNameUnsetTimesAndOpenCountsByTheLargestValues) {
  EXPECT_EQ(kUnsetTime, 9223372036854775807);
  EXPECT_EQ(kNoLimit, 2147483647);
}

}  // namespace
}  // namespace orvane
