// Accounts under random order flow, held against a second, naive bookkeeping that adds everything
// up anew after each step. A failing sequence is shrunk to its shortest.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <array>
#include <deque>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

#include "platform/trade/Ledger.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

using detail::Claim;
using detail::ContractTerms;
using detail::Int128;
using detail::Ledger;
using detail::Money;
using detail::Price;
using detail::Volume;

constexpr int64 kPriceTick = 2'000'000'000;  // 0.2
constexpr int64 kLot = 100'000'000;          // 1
constexpr std::uint32_t kCodes = 3;

/// A sanitizer makes each sequence some thirty times slower, and looks for other things.
constexpr int kTimesFewer = support::kSanitizerDivisor * support::kSanitizerDivisor;
constexpr int kSequences = 100'000 / kTimesFewer;

/// The choices of a step, drawn one after the other from one random number.
class Draw {
 public:
  explicit Draw(std::uint32_t number) : number_(number) {}
  int64 below(std::uint32_t limit) {
    const std::uint32_t drawn = number_ % limit;
    number_ /= limit;
    return drawn;
  }
  Price price() { return {(30 + below(50)) * kPriceTick}; }

 private:
  std::uint32_t number_;
};

Int128 power(int exponent) { return exponent == 0 ? Int128{1} : 10 * power(exponent - 1); }

/// amount x factor / 10^decimals of money, rounded half away from zero to 8 decimals; of positive
/// numbers.
Int128 rounded(Int128 amount, Int128 factor, int decimals) {
  const Int128 unit = power(14 + decimals);
  return (amount * factor + unit / 2) / unit * power(14);
}

Int128 turnover(const ContractTerms& terms, Price price, Volume volume) {
  return Int128{price.units} * volume.units * terms.multiplier.units;
}

Int128 marginFor(const ContractTerms& terms, Price price, Volume volume) {
  return rounded(turnover(terms, price, volume), terms.marginRate.units, 10);
}

Int128 feeFor(const ContractTerms& terms, Price price, Volume volume) {
  return rounded(turnover(terms, price, volume), terms.feeRate.units, 10) +
         rounded(terms.feePerLot.units, volume.units, 8);
}

struct NaiveLot {
  Price price;
  Volume volume;
  bool isToday = true;
};

struct NaiveSide {
  std::deque<NaiveLot> lots;
  Volume opened, closed;

  Volume held(bool ofToday) const {
    Volume sum;
    for (const NaiveLot& lot : lots)
      if (lot.isToday || !ofToday) sum += lot.volume;
    return sum;
  }
};

bool isLongOf(const Claim& claim) {
  return (claim.direction == order::Direction::Buy) == (claim.offset == order::Offset::Open);
}

/// One account driven by random steps, and what must be true of it.
class Session {
 public:
  Session() : ledger_(TradingAccountID{}, kStart) {
    for (std::size_t i = 0; i < kCodes; ++i) {
      terms_[i].code.id = static_cast<int64>(i) + 1;
      terms_[i].lot = {kLot};
      terms_[i].multiplier = {static_cast<int64>(i * 10 + 1) * 10'000};
      terms_[i].marginRate = {static_cast<int64>(i) * 1'000'000'007};
      terms_[i].feeRate = {i == 0 ? 0 : 1'234'567};
      terms_[i].feePerLot = *detail::moneyOf(std::string_view(i == 2 ? "1.23456789" : "0"));
    }
  }

  void step(std::uint32_t number) {
    Draw draw(number);
    const int64 action = draw.below(20);
    if (action < 9)
      place(draw);
    else if (action < 15)
      fill(draw);
    else if (action < 16)
      release(draw);
    else if (action < 19)
      mark(draw);
    else
      beginDay(draw);
    check();
  }

  void releaseAll() {
    for (const auto& [orderId, order] : working_) ledger_.release(orderId);
    working_.clear();
    check();
    RC_ASSERT(ledger_.frozen().isZero());
  }

  int fills() const { return fills_; }
  int noMoney() const { return noMoney_; }
  int noPosition() const { return noPosition_; }

 private:
  using SideKey = std::tuple<std::string, std::size_t, bool>;
  struct Working {
    Claim claim;
    Volume left;
  };
  /// Small, so that money runs out.
  static inline const Money kStart = *detail::moneyOf(std::string_view("2000"));

  static std::size_t indexOf(const Claim& claim) {
    return static_cast<std::size_t>(claim.terms->code.id - 1);
  }
  static SideKey keyOf(const Claim& claim) {
    return {claim.source.createSource, indexOf(claim), isLongOf(claim)};
  }

  /// What closing orders of the side at work still want, or those for today's part alone.
  Volume wanted(const SideKey& key, bool ofToday) const {
    Volume sum;
    for (const auto& [orderId, order] : working_)
      if (order.claim.offset != order::Offset::Open && keyOf(order.claim) == key &&
          (!ofToday || order.claim.offset == order::Offset::CloseToday))
        sum += order.left;
    return sum;
  }

  bool mustRefuse(const Claim& claim) {
    if (claim.offset == order::Offset::Open) {
      const Int128 need = marginFor(*claim.terms, claim.price, claim.volume) +
                          feeFor(*claim.terms, claim.price, claim.volume);
      return need > 0 && need > ledger_.available().units;
    }
    const SideKey key = keyOf(claim);
    const NaiveSide& side = sides_[key];
    const Volume whole = side.held(false) - wanted(key, false);
    const Volume ofToday = side.held(true) - wanted(key, true);
    const bool isTooMuchOfToday =
        claim.offset == order::Offset::CloseToday && claim.volume > ofToday;
    return claim.volume > whole || isTooMuchOfToday;
  }

  void place(Draw& draw) {
    Claim claim;
    claim.orderId = ++lastId_;
    const auto at = static_cast<std::size_t>(draw.below(kCodes));
    claim.terms = &terms_[at];
    claim.source = {4, draw.below(2) == 0 ? "a" : "b", ""};
    claim.direction = static_cast<order::Direction>(draw.below(2));
    // Every other order opens, or there would be little to close.
    claim.offset = static_cast<order::Offset>(std::max<int64>(0, draw.below(4) - 1));
    claim.volume = {(1 + draw.below(9)) * kLot};
    claim.price = marks_[at];
    const bool isRefused = mustRefuse(claim);
    const Money frozenBefore = ledger_.frozen();
    const auto refusal = ledger_.freeze(claim);
    RC_ASSERT(refusal.has_value() == isRefused);
    if (!refusal) {
      working_[claim.orderId] = {claim, claim.volume};
      return;
    }
    RC_ASSERT(!refusal->text.empty());
    RC_ASSERT(ledger_.frozen() == frozenBefore);
    ++(claim.offset == order::Offset::Open ? noMoney_ : noPosition_);
  }

  std::map<int64, Working>::iterator chosen(Draw& draw) {
    return std::next(working_.begin(), draw.below(static_cast<std::uint32_t>(working_.size())));
  }

  void fill(Draw& draw) {
    if (working_.empty()) return;
    const auto at = chosen(draw);
    Working& order = at->second;
    const Claim& claim = order.claim;
    const Volume volume{(1 + draw.below(static_cast<std::uint32_t>(order.left.units / kLot))) *
                        kLot};
    const Price price = draw.price();
    const auto booking = ledger_.fill(at->first, price, volume);
    const Int128 amount = turnover(*claim.terms, price, volume);
    RC_ASSERT(booking.turnover.units == amount);
    RC_ASSERT(booking.fee.units == feeFor(*claim.terms, price, volume));
    fees_ += booking.fee.units;
    const bool isBuy = claim.direction == order::Direction::Buy;
    cash_ += isBuy ? -amount : amount;
    NaiveSide& side = sides_[keyOf(claim)];
    if (claim.offset == order::Offset::Open) {
      side.lots.push_back({price, volume});
      side.opened += volume;
      RC_ASSERT(booking.profit.isZero());
    } else {
      const Int128 cost = takeOldest(side, claim, volume);
      RC_ASSERT(booking.profit.units == (isLongOf(claim) ? amount - cost : cost - amount));
      side.closed += volume;
      profits_ += booking.profit.units;
    }
    order.left -= volume;
    ++fills_;
    // Where the code was never marked, its first fill was.
    ledger_.mark(claim.terms->code.id, marks_[indexOf(claim)]);
    if (!order.left.isPositive()) working_.erase(at);
  }

  static Int128 takeOldest(NaiveSide& side, const Claim& claim, Volume volume) {
    Int128 cost = 0;
    for (auto lot = side.lots.begin(); volume.isPositive();) {
      RC_ASSERT(lot != side.lots.end());
      if (claim.offset == order::Offset::CloseToday && !lot->isToday) {
        ++lot;
        continue;
      }
      const Volume part = std::min(volume, lot->volume);
      cost += turnover(*claim.terms, lot->price, part);
      volume -= part;
      lot->volume -= part;
      lot = lot->volume.isZero() ? side.lots.erase(lot) : std::next(lot);
    }
    return cost;
  }

  void release(Draw& draw) {
    if (working_.empty()) return;
    const auto at = chosen(draw);
    ledger_.release(at->first);
    working_.erase(at);
  }

  void mark(Draw& draw) {
    const auto at = static_cast<std::size_t>(draw.below(kCodes));
    marks_[at] = draw.price();
    ledger_.mark(static_cast<int64>(at) + 1, marks_[at]);
  }

  void beginDay(Draw& draw) {
    const auto at = static_cast<std::size_t>(draw.below(kCodes));
    const bool settles = draw.below(2) == 0;
    // The exchange ends closing orders for today's part before a day begins.
    for (auto it = working_.begin(); it != working_.end();) {
      const bool ends =
          it->second.claim.offset == order::Offset::CloseToday && indexOf(it->second.claim) == at;
      if (ends) ledger_.release(it->first);
      it = ends ? working_.erase(it) : std::next(it);
    }
    bool isChanged = false;
    for (auto& [key, side] : sides_) {
      if (std::get<1>(key) != at) continue;
      isChanged = isChanged || side.held(true).isPositive() || (settles && !side.lots.empty());
      if (settles) settle(side, terms_[at], marks_[at], std::get<2>(key));
      for (NaiveLot& lot : side.lots) lot.isToday = false;
    }
    RC_ASSERT(ledger_.beginDay(static_cast<int64>(at) + 1, settles) == isChanged);
  }

  void settle(NaiveSide& side, const ContractTerms& terms, Price price, bool isLong) {
    for (const NaiveLot& lot : side.lots) profits_ += gain(terms, lot, price, isLong);
    const Volume today = side.held(true);
    const Volume yesterday = side.held(false) - today;
    side.lots.clear();
    if (yesterday.isPositive()) side.lots.push_back({price, yesterday, false});
    if (today.isPositive()) side.lots.push_back({price, today, true});
  }

  static Int128 gain(const ContractTerms& terms, const NaiveLot& lot, Price price, bool isLong) {
    const Int128 rise = turnover(terms, price, lot.volume) - turnover(terms, lot.price, lot.volume);
    return isLong ? rise : -rise;
  }

  void check() {
    Int128 floating = 0;
    Int128 margin = 0;
    Int128 held = 0;  // What is held, at the last prices; short is negative.
    for (const auto& [key, side] : sides_) {
      const auto& [source, at, isLong] = key;
      for (const NaiveLot& lot : side.lots) {
        floating += gain(terms_[at], lot, marks_[at], isLong);
        margin += marginFor(terms_[at], lot.price, lot.volume);
        const Int128 value = turnover(terms_[at], marks_[at], lot.volume);
        held += isLong ? value : -value;
      }
      // Contracts: what is held was opened and not closed, by today's and yesterday's part.
      RC_ASSERT(side.held(false) == side.opened - side.closed);
      RC_ASSERT(ledger_.volumeOf(source, terms_[at].code.id, isLong) == side.opened - side.closed);
      RC_ASSERT(wanted(key, false) <= side.held(false));
      RC_ASSERT(wanted(key, true) <= side.held(true));
    }
    Int128 frozen = 0;
    for (const auto& [orderId, order] : working_) {
      const Claim& claim = order.claim;
      const Int128 money = claim.offset != order::Offset::Open
                               ? 0
                               : marginFor(*claim.terms, claim.price, order.left) +
                                     feeFor(*claim.terms, claim.price, order.left);
      RC_ASSERT(ledger_.frozenOf(orderId).units == money);
      frozen += money;
    }
    RC_ASSERT(ledger_.frozen().units == frozen);
    RC_ASSERT(ledger_.margin().units == margin);
    RC_ASSERT(ledger_.floatingProfit().units == floating);
    RC_ASSERT(ledger_.fees().units == fees_);
    RC_ASSERT(ledger_.closedProfit().units == profits_);
    RC_ASSERT(ledger_.balance().units == kStart.units + profits_ - fees_);
    RC_ASSERT(ledger_.equity() == ledger_.balance() + ledger_.floatingProfit());
    RC_ASSERT(ledger_.available() == ledger_.equity() - ledger_.margin() - ledger_.frozen());
    RC_ASSERT(ledger_.resultOf("a") + ledger_.resultOf("b") == ledger_.equity() - kStart);
    // Money: as if everything had been bought and sold outright.
    RC_ASSERT(ledger_.equity().units == kStart.units + cash_ + held - fees_);
  }

  std::array<ContractTerms, kCodes> terms_;
  std::array<Price, kCodes> marks_{Price{50 * kPriceTick}, Price{50 * kPriceTick},
                                   Price{50 * kPriceTick}};
  Ledger ledger_;
  std::map<int64, Working> working_;
  std::map<SideKey, NaiveSide> sides_;
  Int128 cash_ = 0, fees_ = 0, profits_ = 0;
  int64 lastId_ = 0;
  int fills_ = 0, noMoney_ = 0, noPosition_ = 0;
};

rc::Gen<std::uint32_t> anyStep() {
  return rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::uint32_t>(0, 4'000'000'000U));
}

/// Tries a property so many times; RC_PARAMS="seed=..." repeats a run.
template <typename Property>
void tryTimes(int times, Property&& property) {
  rc::detail::TestParams params = rc::detail::configuration().testParams;
  params.maxSuccess = times;
  const auto result = rc::detail::checkTestable(std::forward<Property>(property),
                                                rc::detail::TestMetadata{}, params);
  rc::detail::SuccessResult success;
  if (result.match(success)) {
    EXPECT_EQ(success.numSuccess, times);
    return;
  }
  std::ostringstream text;
  rc::detail::printResultMessage(result, text);
  FAIL() << "seed " << params.seed << "\n" << text.str();
}

TEST(LedgerProperty, shouldKeepEveryIdentityOverRandomOrderSequences) {
  int64 fills = 0;
  int64 noMoney = 0;
  int64 noPosition = 0;
  tryTimes(kSequences, [&] {
    const auto steps = *rc::gen::container<std::vector<std::uint32_t>>(anyStep());
    Session session;
    for (const std::uint32_t step : steps) session.step(step);
    session.releaseAll();
    fills += session.fills();
    noMoney += session.noMoney();
    noPosition += session.noPosition();
  });
  // The sequences go where there is something to see. Some four in a hundred run out of money:
  // half of that, since a sanitizer draws too few of them to come closer.
  EXPECT_GT(fills, kSequences);
  EXPECT_GT(noMoney, kSequences / 50);
  EXPECT_GT(noPosition, kSequences);
}

TEST(LedgerProperty, shouldKeepEveryIdentityOverLongOrderSequences) {
  tryTimes(100 / support::kSanitizerDivisor, [] {
    const auto steps = *rc::gen::container<std::vector<std::uint32_t>>(1'000, anyStep());
    Session session;
    for (const std::uint32_t step : steps) session.step(step);
    session.releaseAll();
  });
}

/// One side of a deal: closes what it can, or else opens.
void deal(Ledger& ledger, const ContractTerms& terms, int64 orderId, bool isBuy, Price price,
          Volume volume) {
  const bool closes = ledger.volumeOf("a", terms.code.id, !isBuy) >= volume;
  const Claim claim{orderId,
                    {4, "a", ""},
                    &terms,
                    isBuy ? order::Direction::Buy : order::Direction::Sell,
                    closes ? order::Offset::Close : order::Offset::Open,
                    volume,
                    price};
  RC_ASSERT(!ledger.freeze(claim));
  ledger.fill(orderId, price, volume);
  ledger.mark(terms.code.id, price);
}

TEST(LedgerProperty, shouldGiveTwoAccountsThatDealWithEachOtherOppositeResults) {
  tryTimes(10'000 / kTimesFewer, [] {
    const Money start = *detail::moneyOf(std::string_view("1000"));
    Ledger one(TradingAccountID{}, start);
    Ledger other(TradingAccountID{}, start);
    ContractTerms terms;
    terms.code.id = 1;
    terms.lot = {kLot};
    int64 orderId = 0;
    for (const std::uint32_t step : *rc::gen::container<std::vector<std::uint32_t>>(anyStep())) {
      Draw draw(step);
      const bool oneBuys = draw.below(2) == 0;
      const Price price = draw.price();
      const Volume volume{(1 + draw.below(5)) * kLot};
      ++orderId;
      deal(one, terms, orderId, oneBuys, price, volume);
      deal(other, terms, orderId, !oneBuys, price, volume);
      RC_ASSERT(one.equity() + other.equity() == start + start);
      if (draw.below(10) == 0) one.beginDay(1, true);
      RC_ASSERT(one.equity() + other.equity() == start + start);
      RC_ASSERT(one.volumeOf("a", 1, true) - one.volumeOf("a", 1, false) ==
                other.volumeOf("a", 1, false) - other.volumeOf("a", 1, true));
    }
  });
}

}  // namespace
}  // namespace orvane::testing
