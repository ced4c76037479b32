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

TEST_F(LedgerTest, shouldHoldAndAwaitAtMostTenToTheTenOfVolume) {
  terms.marginRate = {};
  terms.feePerLot = {};
  const Price cheap{1};
  const auto open = [&](int64 id, double volume) {
    const auto refusal =
        freeze(id, order::Direction::Buy, order::Offset::Open, *volumeOf(volume), cheap);
    return refusal ? refusal->text : "";
  };
  EXPECT_EQ(open(1, 10'000'000'000), "");
  const std::string text =
      "too much volume: asked for 1, the account holds and awaits 10000000000 of at most "
      "10000000000";
  EXPECT_EQ(open(2, 1), text);
  EXPECT_FALSE(open(3, 90'000'000'000).empty());
  ledger.fill(1, cheap, *volumeOf(6e9));
  EXPECT_EQ(open(4, 1), text);
  ledger.release(1);
  EXPECT_EQ(open(5, 4e9), "");
  EXPECT_EQ(open(6, 1), text);
  ASSERT_FALSE(freeze(7, order::Direction::Sell, order::Offset::Close, *volumeOf(6e9), cheap));
  EXPECT_EQ(open(8, 1), text);  // What closes is still held.
  ledger.fill(7, cheap, *volumeOf(2e9));
  EXPECT_EQ(open(9, 2e9), "");
  EXPECT_EQ(open(10, 1), text);
}

TEST_F(LedgerTest, shouldRefuseAFillThatWouldTakeAnAmountOutOfRange) {
  terms.feePerLot = {};
  terms.marginRate = {};
  const auto refusalOf = [&](Price price, Volume volume) {
    const FillPiece piece{price, volume};
    const auto refusal = ledger.checkFills(1, {&piece, 1});
    return refusal ? refusal->text : "";
  };
  ASSERT_FALSE(freeze(1, order::Direction::Buy, order::Offset::Open, lots(9'000'000'000), at(1)));
  EXPECT_EQ(refusalOf(at(900'000'000), lots(9'000'000'000)), "too large: 9000000000 at 900000000");
  EXPECT_EQ(refusalOf(at(2'500'000), lots(1'000'000'000)), "");
  EXPECT_EQ(refusalOf(at(2'500'001), lots(1'000'000'000)), "too large: 1000000000 at 2500001");
  ledger.fill(1, at(2'500'000), lots(500'000'000));
  // All turnover since the start counts, and so does what is held, at the last price.
  EXPECT_EQ(refusalOf(at(2'500'000), lots(500'000'000)), "");
  EXPECT_EQ(refusalOf(at(2'500'000), lots(500'000'001)), "too large: 500000001 at 2500000");
  EXPECT_EQ(refusalOf(at(1), lots(500'000'001)), "too large: 500000001 at 1");
}

TEST_F(LedgerTest, shouldRefuseAFillWhoseMarginOrFeeWouldBeOutOfRange) {
  terms.marginRate = *rateOf(std::string_view("100"));
  terms.feePerLot = {};
  const auto isRefused = [&](std::vector<FillPiece> pieces) {
    return ledger.checkFills(1, pieces).has_value();
  };
  ledger = Ledger(TradingAccountID{}, Ledger::kMostStart);
  ASSERT_FALSE(freeze(1, order::Direction::Buy, order::Offset::Open, lots(100), at(1)));
  EXPECT_FALSE(isRefused({{at(100'000'000), lots(100'000)}}));
  EXPECT_TRUE(isRefused({{at(100'000'000), lots(100'001)}}));
  EXPECT_TRUE(isRefused({{at(100'000'000), lots(100'000)}, {at(1), lots(1)}}));
  terms.marginRate = {};
  terms.feeRate = *rateOf(std::string_view("100"));
  EXPECT_FALSE(isRefused({{at(100'000'000), lots(100'000)}}));
  EXPECT_TRUE(isRefused({{at(100'000'000), lots(100'001)}}));
  EXPECT_TRUE(isRefused({{at(100'000'000), lots(100'000)}, {at(1), lots(1)}}));
}

TEST_F(LedgerTest, shouldLetAPositionBeClosedThatCouldNotBeOpenedAtThatPrice) {
  terms.marginRate = *rateOf(std::string_view("100"));
  ledger = Ledger(TradingAccountID{}, Ledger::kMostStart);
  hold(1, lots(1'000'000), at(100));
  ASSERT_FALSE(freeze(2, order::Direction::Sell, order::Offset::Close, lots(1'000'000), at(1)));
  // A margin for it would be 2 x 10^17.
  const FillPiece piece{at(2'000'000'000 / 4), lots(1'000'000)};
  EXPECT_FALSE(ledger.checkFills(2, {&piece, 1}));
  EXPECT_EQ(ledger.fill(2, piece.price, piece.volume).fee, money("2000000"));
  EXPECT_EQ(ledger.closedProfit(), money("499999900000000"));
}

TEST_F(LedgerTest, shouldKeepTheLastPriceAtWhichWhatIsHeldCanBeReckoned) {
  terms.feePerLot = {};
  terms.marginRate = {};
  hold(1, lots(1'000'000'000), at(100));
  ledger.mark(1, at(2'500'000));
  EXPECT_EQ(ledger.floatingProfit(), money("2499900000000000"));
  ledger.mark(1, at(2'500'001));
  EXPECT_EQ(ledger.floatingProfit(), money("2499900000000000"));
  ledger.mark(1, at(900'000'000));
  EXPECT_EQ(ledger.floatingProfit(), money("2499900000000000"));
  ledger.mark(1, at(99));
  EXPECT_EQ(ledger.floatingProfit(), money("-1000000000"));
}

TEST_F(LedgerTest, shouldNotSettleWhereTheMarginWouldBeOutOfRange) {
  terms.feePerLot = {};
  terms.marginRate = *rateOf(std::string_view("10"));
  ledger = Ledger(TradingAccountID{}, Ledger::kMostStart);
  hold(1, lots(1'000'000), at(100));
  ledger.mark(1, at(100'000'001));
  EXPECT_TRUE(ledger.beginDay(1, true));
  EXPECT_TRUE(ledger.closedProfit().isZero());
  EXPECT_EQ(ledger.margin(), money("1000000000"));
  ledger.mark(1, at(100'000'000));
  EXPECT_TRUE(ledger.beginDay(1, true));
  EXPECT_EQ(ledger.margin(), Ledger::kMostStart);
  EXPECT_EQ(ledger.closedProfit(), money("99999900000000"));
}

}  // namespace
}  // namespace orvane::detail
