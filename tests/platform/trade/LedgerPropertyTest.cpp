// Accounts under random order flow, held against a second, naive bookkeeping.

#include <algorithm>
#include <map>
#include <random>

#include "tests/platform/trade/ExchangeFixture.h"

namespace orvane::testing {
namespace {

using detail::Claim;
using detail::ContractTerms;
using detail::Int128;
using detail::Money;
using detail::Price;
using detail::Volume;

constexpr int64 kTick = 2'000'000'000;  // 0.2
constexpr int64 kLot = 100'000'000;     // 1

/// Cash alone: every fill moves price x volume x multiplier, as if all were bought outright.
struct NaiveAccount {
  Int128 cash = 0;              ///< Money units.
  std::map<int64, Int128> net;  ///< Volume units by code.
  std::map<std::string, int64> opened, closed;
};

class LedgerProperty : public ::testing::TestWithParam<unsigned> {};

TEST_P(LedgerProperty, shouldKeepEveryIdentityWhateverHappens) {
  const unsigned seed = GetParam();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const auto below = [&random](int64 limit) {
    return static_cast<int64>(random() % static_cast<std::uint64_t>(limit));
  };
  TradingAccountID id;
  id.accountKey = 1;
  const Money start = *detail::moneyOf(std::string_view("1000000"));
  Ledger ledger(id, start);
  std::vector<ContractTerms> terms(3);
  for (std::size_t i = 0; i < terms.size(); ++i) {
    terms[i].code.id = static_cast<int64>(i) + 1;
    terms[i].lot = {kLot};
    terms[i].multiplier = {static_cast<int64>(i * 10 + 1) * 10'000};
    terms[i].marginRate = {static_cast<int64>(i) * 1'000'000'007};
    terms[i].feeRate = {i == 0 ? 0 : 1'234'567};
    terms[i].feePerLot = *detail::moneyOf(std::string_view(i == 2 ? "1.23456789" : "0"));
  }
  struct Working {
    Claim claim;
    Volume left;
  };
  std::map<int64, Working> working;
  NaiveAccount naive;
  std::vector<Price> marks(3, Price{50 * kTick});
  Money fees, profits;
  int64 lastId = 0;
  std::size_t fills = 0;

  for (int step = 0; step < 2'000; ++step) {
    const auto at = static_cast<std::size_t>(below(3));
    const int64 action = below(10);
    if (action < 4) {
      Claim claim;
      claim.orderId = ++lastId;
      claim.source = {4, below(2) == 0 ? "a" : "b", ""};
      claim.terms = &terms[at];
      claim.direction = below(2) == 0 ? order::Direction::Buy : order::Direction::Sell;
      claim.offset = static_cast<order::Offset>(below(3));
      claim.volume = {(1 + below(9)) * kLot};
      claim.price = marks[at];
      const Money availableBefore = ledger.available();
      if (const auto refusal = ledger.freeze(claim)) {
        EXPECT_FALSE(refusal->text.empty());
        EXPECT_EQ(ledger.available(), availableBefore);  // A refusal changes nothing.
      } else {
        working[claim.orderId] = {claim, claim.volume};
      }
    } else if (action < 7 && !working.empty()) {
      const auto chosen = std::next(working.begin(), below(static_cast<int64>(working.size())));
      Working& order = chosen->second;
      const auto code = static_cast<std::size_t>(order.claim.terms->code.id - 1);
      const Volume volume{(1 + below(order.left.units / kLot)) * kLot};
      const Price price{(30 + below(50)) * kTick};
      const auto booking = ledger.fill(chosen->first, price, volume);
      ++fills;
      fees += booking.fee;
      profits += booking.profit;
      const bool isBuy = order.claim.direction == order::Direction::Buy;
      const Int128 turnover = Int128{price.units} * volume.units * terms[code].multiplier.units;
      naive.cash += isBuy ? -turnover : turnover;
      naive.net[order.claim.terms->code.id] += isBuy ? volume.units : -volume.units;
      const bool isLong = isBuy == (order.claim.offset == order::Offset::Open);
      const std::string key =
          order.claim.source.createSource + std::to_string(code) + (isLong ? "long" : "short");
      (order.claim.offset == order::Offset::Open ? naive.opened : naive.closed)[key] +=
          volume.units;
      EXPECT_EQ(booking.turnover.units, turnover);
      order.left -= volume;
      if (!order.left.isPositive()) working.erase(chosen);
      ledger.mark(static_cast<int64>(code) + 1, marks[code]);
    } else if (action < 8 && !working.empty()) {
      const auto chosen = std::next(working.begin(), below(static_cast<int64>(working.size())));
      ledger.release(chosen->first);
      working.erase(chosen);
    } else if (action == 8) {
      marks[at] = {(30 + below(50)) * kTick};
      ledger.mark(static_cast<int64>(at) + 1, marks[at]);
    } else if (below(10) == 0) {
      // An exchange ends closing orders for today's part before a day begins.
      for (auto it = working.begin(); it != working.end();) {
        const bool ends = it->second.claim.offset == order::Offset::CloseToday &&
                          it->second.claim.terms == &terms[at];
        if (ends) ledger.release(it->first);
        it = ends ? working.erase(it) : std::next(it);
      }
      ledger.beginDay(static_cast<int64>(at) + 1, below(2) == 0);
    }

    // Identities.
    ASSERT_EQ(ledger.balance(), start + ledger.closedProfit() - ledger.fees());
    ASSERT_EQ(ledger.equity(), ledger.balance() + ledger.floatingProfit());
    ASSERT_EQ(ledger.available(), ledger.equity() - ledger.margin() - ledger.frozen());
    ASSERT_EQ(ledger.fees(), fees);
    ASSERT_EQ(ledger.resultOf("a") + ledger.resultOf("b"), ledger.equity() - start);
    // The second bookkeeping: cash and what is held at the last prices, minus fees.
    Int128 value = naive.cash;
    for (const auto& [code, net] : naive.net)
      value += net * marks[static_cast<std::size_t>(code - 1)].units *
               terms[static_cast<std::size_t>(code - 1)].multiplier.units;
    ASSERT_EQ((ledger.equity() - start + fees).units, value) << "step " << step;
    // Contracts: what is held was opened and not closed.
    for (std::size_t code = 0; code < 3; ++code)
      for (const std::string source : {"a", "b"})
        for (const bool isLong : {true, false}) {
          const std::string key = source + std::to_string(code) + (isLong ? "long" : "short");
          ASSERT_EQ(ledger.volumeOf(source, static_cast<int64>(code) + 1, isLong).units,
                    naive.opened[key] - naive.closed[key]);
        }
    if (working.empty()) {
      ASSERT_TRUE(ledger.frozen().isZero());
    }
    ASSERT_GE(ledger.frozen().units, 0);
    ASSERT_GE(ledger.margin().units, 0);
  }
  EXPECT_GT(fills, 100u);
  for (const auto& [orderId, order] : working) ledger.release(orderId);
  EXPECT_TRUE(ledger.frozen().isZero());
}

INSTANTIATE_TEST_SUITE_P(Seeds, LedgerProperty, ::testing::Range(1U, 51U));

TEST(LedgerConservation, shouldGiveTwoAccountsThatDealWithEachOtherOppositeResults) {
  TradingAccountID id;
  const Money start = *detail::moneyOf(std::string_view("1000"));
  Ledger one(id, start);
  Ledger other(id, start);
  ContractTerms terms;
  terms.code.id = 1;
  terms.lot = {kLot};
  std::mt19937_64 random(7);
  int64 orderId = 0;
  for (int i = 0; i < 500; ++i) {
    const Price price{static_cast<int64>(1 + random() % 999) * kTick};
    const auto deal = [&](Ledger& ledger, order::Direction direction) {
      const bool isBuy = direction == order::Direction::Buy;
      const bool closes = ledger.volumeOf("", 1, !isBuy).isPositive();
      const Claim claim{orderId,
                        {4, "a", ""},
                        &terms,
                        direction,
                        closes ? order::Offset::Close : order::Offset::Open,
                        {kLot},
                        price};
      ASSERT_FALSE(ledger.freeze(claim));
      ledger.fill(orderId, price, {kLot});
      ledger.mark(1, price);
    };
    ++orderId;
    const bool oneBuys = random() % 2 == 0;
    deal(one, oneBuys ? order::Direction::Buy : order::Direction::Sell);
    deal(other, oneBuys ? order::Direction::Sell : order::Direction::Buy);
    ASSERT_EQ(one.equity() + other.equity(), start + start);
  }
}

}  // namespace
}  // namespace orvane::testing
