#include <gtest/gtest.h>

#include <bit>
#include <map>
#include <set>
#include <type_traits>

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
