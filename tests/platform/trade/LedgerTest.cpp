// What orders hold back of an account, and why it refuses them.

#include "platform/trade/Ledger.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

class LedgerTest : public ::testing::Test {
 protected:
  LedgerTest() {
    terms.code.id = 1;
    terms.lot = lots(1);
    terms.marginRate = *rateOf(std::string_view("0.1"));
    terms.feePerLot = money("2");
  }

  static Money money(const char* decimal) { return *moneyOf(std::string_view(decimal)); }
  static Volume lots(int64 count) { return {count * 100'000'000}; }
  static Price at(int64 price) { return {price * 10'000'000'000}; }

  std::optional<Refusal> freeze(int64 id, order::Direction direction, order::Offset offset,
                                Volume volume, Price price, const char* source = "a") {
    return ledger.freeze({id, {4, source, ""}, &terms, direction, offset, volume, price});
  }
  void hold(int64 id, Volume volume, Price price) {
    ASSERT_FALSE(freeze(id, order::Direction::Buy, order::Offset::Open, volume, price));
    ledger.fill(id, price, volume);
  }

  ContractTerms terms;
  Ledger ledger{TradingAccountID{}, money("1000")};
};

TEST_F(LedgerTest, shouldHoldBackMarginAndFeeAndFreeThemAsTheOrderFills) {
  ASSERT_FALSE(freeze(1, order::Direction::Buy, order::Offset::Open, lots(4), at(100)));
  EXPECT_EQ(ledger.frozen(), money("48"));
  EXPECT_EQ(ledger.available(), money("952"));
  const Booking booking = ledger.fill(1, at(100), lots(1));
  EXPECT_EQ(booking.fee, money("2"));
  EXPECT_EQ(ledger.frozenOf(1), money("36"));
  EXPECT_EQ(ledger.margin(), money("10"));
  ledger.release(1);
  EXPECT_TRUE(ledger.frozen().isZero());
  EXPECT_EQ(ledger.available(), money("988"));
}

TEST_F(LedgerTest, shouldNameWhatIsNeededAndWhatIsThereWhenMoneyIsShort) {
  const auto refusal = freeze(1, order::Direction::Sell, order::Offset::Open, lots(10), at(999));
  ASSERT_TRUE(refusal);
  EXPECT_EQ(refusal->text, "not enough money: needs 1019, available 1000");
  EXPECT_TRUE(ledger.frozen().isZero());
}

TEST_F(LedgerTest, shouldMeetANeedOfNothingEvenBelowZero) {
  terms.marginRate = {};
  terms.feePerLot = {};
  hold(1, lots(100), at(100));
  ledger.mark(1, at(1));
  EXPECT_EQ(ledger.available(), money("-8900"));
  EXPECT_FALSE(freeze(2, order::Direction::Buy, order::Offset::Open, lots(1), at(1)));
}

TEST_F(LedgerTest, shouldCloseOnlyWhatTheSourceItselfOpened) {
  hold(1, lots(3), at(100));
  const auto other = freeze(2, order::Direction::Sell, order::Offset::Close, lots(1), at(100), "b");
  ASSERT_TRUE(other);
  EXPECT_EQ(other->code, 38);
  EXPECT_EQ(other->text, "not enough position to close: long volume 0 is free, asked for 1");
  EXPECT_FALSE(freeze(3, order::Direction::Sell, order::Offset::Close, lots(2), at(100)));
  EXPECT_TRUE(freeze(4, order::Direction::Sell, order::Offset::Close, lots(2), at(100)));
}

TEST_F(LedgerTest, shouldKeepYesterdaysPartFromOrdersThatCloseToday) {
  hold(1, lots(2), at(100));
  EXPECT_TRUE(ledger.beginDay(1, false));
  EXPECT_FALSE(ledger.beginDay(1, false));
  hold(2, lots(1), at(110));
  EXPECT_TRUE(freeze(3, order::Direction::Sell, order::Offset::CloseToday, lots(2), at(120)));
  ASSERT_FALSE(freeze(4, order::Direction::Sell, order::Offset::CloseToday, lots(1), at(120)));
  EXPECT_EQ(ledger.fill(4, at(120), lots(1)).profit, money("10"));
  ASSERT_FALSE(freeze(5, order::Direction::Sell, order::Offset::Close, lots(1), at(120)));
  EXPECT_EQ(ledger.fill(5, at(120), lots(1)).profit, money("20"));
}

TEST_F(LedgerTest, shouldTurnFloatingProfitIntoClosedAndRestateTheMarginWhenADaySettles) {
  hold(1, lots(2), at(100));
  ledger.mark(1, at(130));
  EXPECT_EQ(ledger.floatingProfit(), money("60"));
  EXPECT_TRUE(ledger.beginDay(1, true));
  EXPECT_TRUE(ledger.floatingProfit().isZero());
  EXPECT_EQ(ledger.closedProfit(), money("60"));
  EXPECT_EQ(ledger.margin(), money("26"));
  EXPECT_EQ(ledger.equity(), money("1056"));
}

TEST_F(LedgerTest, shouldRefuseOrdersWhoseTurnoversTogetherWouldNotFit) {
  terms.marginRate = {};
  terms.feePerLot = {};
  const Volume many = lots(900'000'000);
  ASSERT_FALSE(freeze(1, order::Direction::Buy, order::Offset::Open, many, at(100'000)));
  const auto working = freeze(2, order::Direction::Buy, order::Offset::Open, many, at(100'000));
  ASSERT_TRUE(working);
  EXPECT_EQ(working->text, "too large: 900000000 at 100000");
  ledger.fill(1, at(100'000), many);
  EXPECT_TRUE(freeze(3, order::Direction::Sell, order::Offset::Open, many, at(100'000)));
  ASSERT_FALSE(freeze(4, order::Direction::Sell, order::Offset::Close, many, at(100'000)));
  ledger.fill(4, at(100'000), many);
  EXPECT_FALSE(freeze(5, order::Direction::Sell, order::Offset::Open, many, at(100'000)));
}

}  // namespace
}  // namespace orvane::detail
