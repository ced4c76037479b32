// Many prices of a code in a row, against the account's book that is told each of them.

#include "platform/trade/PriceRun.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/trade/Ledger.h"
#include "tests/support/RandomRuns.h"

namespace orvane::detail {
namespace {

constexpr int64 kCode = 1, kOther = 2;

Volume lots(int64 count) { return {count * 100'000'000}; }
Price at(int64 price) { return {price * 10'000'000'000}; }
Price hundredths(int64 count) { return {count * 100'000'000}; }

/// Two books that are told the same.
class PriceRunTest : public ::testing::Test {
 protected:
  explicit PriceRunTest(Money start = Ledger::kMostStart)
      : each(TradingAccountID{}, start), once(TradingAccountID{}, start) {
    terms[0].code.id = kCode;
    terms[1].code.id = kOther;
    for (ContractTerms& of : terms) {
      of.lot = lots(1);
      of.feePerLot = *moneyOf(std::string_view("2"));
    }
    terms[0].multiplier = *multiplierOf(std::string_view("2.5"));
  }

  void trade(int64 codeId, order::Direction direction, order::Offset offset, int64 volume,
             int64 price, const char* source = "a") {
    const ContractTerms* const of = &terms[codeId == kCode ? 0 : 1];
    ++orders;
    for (Ledger* ledger : {&each, &once}) {
      const auto refusal =
          ledger->freeze({orders, {4, source, ""}, of, direction, offset, lots(volume), at(price)});
      ASSERT_FALSE(refusal) << refusal->text;
      ledger->fill(orders, at(price), lots(volume));
    }
  }
  void buy(int64 volume, int64 price, const char* source = "a") {
    trade(kCode, order::Direction::Buy, order::Offset::Open, volume, price, source);
  }

  void buyAt(Price price, Volume volume) {
    ++orders;
    for (Ledger* ledger : {&each, &once}) {
      ASSERT_FALSE(ledger->freeze({orders,
                                   {4, "a", ""},
                                   &terms[0],
                                   order::Direction::Buy,
                                   order::Offset::Open,
                                   volume,
                                   price}));
      ledger->fill(orders, price, volume);
    }
  }

  /// One is told each price and the other looks at them.
  void expectAlike(const std::vector<Price>& prices) {
    std::optional<PriceRun> run = once.priceRun(kCode);
    ASSERT_TRUE(run);
    EXPECT_EQ(run->equity(), toDouble(each.equity()));
    EXPECT_EQ(run->exposure(), each.exposureOf(kCode));
    for (const Price price : prices) {
      each.mark(kCode, price);
      run->take(toDouble(price));
      ASSERT_EQ(run->equity(), toDouble(each.equity())) << price.units;
      ASSERT_EQ(run->exposure(), each.exposureOf(kCode)) << price.units;
    }
    once.mark(kCode, run->price());
    EXPECT_EQ(once.equity(), each.equity());
    EXPECT_EQ(once.floatingProfit(), each.floatingProfit());
    EXPECT_EQ(once.exposureOf(kCode), each.exposureOf(kCode));
    EXPECT_EQ(once.exposureOf(kOther), each.exposureOf(kOther));
  }

  void expectAlikeWhateverIsTraded();

  ContractTerms terms[2];
  Ledger each, once;
  int64 orders = 0;
};

TEST_F(PriceRunTest, shouldFollowALongSide) {
  buy(3, 100);
  expectAlike({at(101), at(99), at(99), {12'345'678'901}, at(100)});
  EXPECT_EQ(once.floatingProfit(), Money{});
}

TEST_F(PriceRunTest, shouldFollowAShortSideBesideAnotherCode) {
  trade(kOther, order::Direction::Buy, order::Offset::Open, 7, 10);
  for (Ledger* ledger : {&each, &once}) ledger->mark(kOther, at(12));
  trade(kCode, order::Direction::Sell, order::Offset::Open, 3, 100);
  expectAlike({at(90), at(120)});
  EXPECT_EQ(once.floatingProfit(), *moneyOf(std::string_view("-136")));
}

TEST_F(PriceRunTest, shouldRefuseAPriceAtWhichTheAccountWouldBeWorthTooMuch) {
  trade(kOther, order::Direction::Buy, order::Offset::Open, 1'000'000, 1'000);
  buy(10'000'000, 100);
  expectAlike({at(99'999'960), at(99'999'961), at(900'000'000), at(99'999'960)});
  expectAlike({at(900'000'000)});
  EXPECT_EQ(once.exposureOf(kCode), 99'999'960 * 2.5e7);
}

TEST_F(PriceRunTest, shouldNotBeThereUnderNewTermsUntilThePriceMoves) {
  buy(2, 100);
  terms[0].multiplier = *multiplierOf(std::string_view("5"));
  EXPECT_FALSE(once.priceRun(kCode));
  for (Ledger* ledger : {&each, &once}) ledger->mark(kCode, at(100));
  EXPECT_FALSE(once.priceRun(kCode));
  for (Ledger* ledger : {&each, &once}) ledger->mark(kCode, at(101));
  expectAlike({at(100), at(101), at(99)});
}

TEST_F(PriceRunTest, shouldOnlyBeThereWhereOneSideOfOneSourceIsAllThatIsHeld) {
  EXPECT_FALSE(once.priceRun(kCode));
  buy(3, 100);
  EXPECT_TRUE(once.priceRun(kCode));
  EXPECT_FALSE(once.priceRun(kOther));
  buy(2, 100, "b");
  EXPECT_FALSE(once.priceRun(kCode));
  trade(kCode, order::Direction::Sell, order::Offset::Close, 3, 110);
  EXPECT_TRUE(once.priceRun(kCode));
  trade(kCode, order::Direction::Sell, order::Offset::Open, 1, 110, "b");
  EXPECT_FALSE(once.priceRun(kCode));
  trade(kCode, order::Direction::Sell, order::Offset::Close, 2, 110, "b");
  EXPECT_TRUE(once.priceRun(kCode));
  trade(kCode, order::Direction::Buy, order::Offset::Close, 1, 110, "b");
  EXPECT_FALSE(once.priceRun(kCode));
}

TEST_F(PriceRunTest, shouldFollowWhateverIsTradedInBetween) { expectAlikeWhateverIsTraded(); }

/// One whose worth is no more than most accounts have, so that a double tells it in parts of a
/// hundred-millionth.
class PriceRunOfFewTest : public PriceRunTest {
 protected:
  PriceRunOfFewTest() : PriceRunTest(*moneyOf(std::string_view("1000000"))) {}
};

TEST_F(PriceRunOfFewTest, shouldFollowWhateverIsTradedInBetween) { expectAlikeWhateverIsTraded(); }

TEST_F(PriceRunOfFewTest, shouldFollowAShortSideAtPricesOfTwoDecimalsAndOfMore) {
  trade(kCode, order::Direction::Sell, order::Offset::Open, 3, 100);
  expectAlike({hundredths(9'001), {900'100'000'001}, hundredths(12'345), at(100), hundredths(1)});
}

TEST_F(PriceRunOfFewTest, shouldFollowStepsOfMoreDecimalsThanAPartHas) {
  terms[0].multiplier = *multiplierOf(std::string_view("1"));
  terms[0].lot = {1};
  buyAt({12'500'000'000}, Volume{4});
  expectAlike({hundredths(9'001), at(120), hundredths(1)});
}

TEST_F(PriceRunOfFewTest, shouldRefuseAPriceAtWhichTheAccountWouldHoldTooMuch) {
  for (ContractTerms& of : terms) of.feePerLot = {};
  // All but 4 x 10^7 of what an account may hold, without any profit of it.
  trade(kOther, order::Direction::Buy, order::Offset::Open, 5'000'000, 1);
  trade(kOther, order::Direction::Sell, order::Offset::Open, 5'000'000, 1);
  for (Ledger* ledger : {&each, &once}) ledger->mark(kOther, at(249'999'996));
  buy(4, 100);
  expectAlike({at(3'999'990), at(4'000'000), at(4'000'001), at(5'000'000), at(100)});
}

/// One that is worth nearly as many parts as a double can tell.
class PriceRunOfManyTest : public PriceRunTest {
 protected:
  PriceRunOfManyTest() : PriceRunTest(*moneyOf(std::string_view("90071992"))) {}
};

TEST_F(PriceRunOfManyTest, shouldFollowAPriceAtWhichADoubleDoesNotTellEachPartAnyMore) {
  terms[0].multiplier = *multiplierOf(std::string_view("1"));
  terms[0].lot = {100};
  buyAt(at(100), Volume{300});
  // With three parts for a hundredth of the price, 6 for fees, and 30,000 parts for what was paid.
  constexpr int64 parts = 90'071'986LL * 100'000'000 - 30'000;
  constexpr int64 last = ((int64{1} << 53) - parts) / 3;
  std::vector<Price> prices;
  for (int64 i = -50; i <= 50; ++i) prices.push_back(hundredths(last + i));
  expectAlike(prices);
}

TEST_F(PriceRunOfFewTest, shouldFollowAWorthOfMoreDecimalsThanAPartHas) {
  buyAt({1'000'000'000'001}, lots(3));
  expectAlike({hundredths(9'001), at(120), hundredths(1)});
}

void PriceRunTest::expectAlikeWhateverIsTraded() {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto below = [&](int64 count) {
    return static_cast<int64>(random() % static_cast<std::uint64_t>(count));
  };
  int64 held[2][2] = {};  // By code and side.
  for (int turn = 0; turn < support::randomRuns(2'000); ++turn) {
    const int64 code = below(2), isShort = below(2), volume = 1 + below(5);
    int64& has = held[code][isShort];
    const bool opens = has < volume;
    // Never both sides of the one that is looked at.
    if (!(code == 0 && opens && held[0][1 - isShort] > 0)) {
      has += opens ? volume : -volume;
      trade(code == 0 ? kCode : kOther,
            opens == (isShort == 0) ? order::Direction::Buy : order::Direction::Sell,
            opens ? order::Offset::Open : order::Offset::Close, volume, 90 + below(20));
    }
    if (held[0][0] + held[0][1] == 0) continue;
    std::vector<Price> prices;
    for (int64 i = below(6); i > 0; --i)
      prices.push_back(below(2) == 0 ? Price{1 + below(2'000'000'000'000)}
                                     : hundredths(1 + below(20'000)));
    expectAlike(prices);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace orvane::detail
