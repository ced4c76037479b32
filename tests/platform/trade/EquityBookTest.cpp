// The curves of an account and of the create sources on it.

#include "platform/trade/EquityBook.h"

#include "tests/platform/trade/ExchangeFixture.h"

namespace orvane::testing {
namespace {

class EquityCurves : public ExchangeTest {
 protected:
  EquityCurves() : book_(*exchange, 1) { book_.start(0); }

  void order(const std::string& by, order::Direction direction, double volume, int64 now,
             order::Offset offset = order::Offset::Open) {
    source = by;
    book_.addSource(1, by);
    place(orderOf(direction, volume, order::Type::Market, 0, offset), now);
  }

  /// A bar that opens at the price of the last, with the marks and fills that it brings.
  void barTo(int64 n, double price) {
    const double open = n == 0 ? price : last_;
    bar(n, open, std::max(open, price), std::min(open, price), price);
    last_ = price;
    const int64 time = 10 * n + 10;
    for (const TradeEvent& event : exchange->takeEvents())
      if (const auto* fill = event.fill())
        book_.noteFill(1, fill->source.createSource, code.id, time);
    book_.noteMark({code.id, time, false});
  }

  const EquityPoints& pointsOf(const std::string& by) {
    return book_.pointsOf({1, by}, book_.sources().at({1, by}));
  }

  /// The last point of the account, or of a source: "equity/exposure".
  std::string last(const std::string& of = {}) {
    const auto& points = of.empty() ? book_.account(1).points : pointsOf(of);
    return number(points.back().equity) + "/" + number(points.back().exposure);
  }

  detail::EquityBook book_;
  double last_ = 0;
};

TEST_F(EquityCurves, shouldDrawASourceAloneOnAnAccountLikeTheAccount) {
  order("a", order::Direction::Buy, 2, 0);
  barTo(0, 10);
  EXPECT_EQ(last(), "1000000/20");
  EXPECT_EQ(last("a"), last());
  barTo(1, 12);
  EXPECT_EQ(last(), "1000004/24");
  EXPECT_EQ(last("a"), last());
  EXPECT_EQ(book_.account(1).points.size(), 3u);
}

TEST_F(EquityCurves, shouldKeepSourcesOfOneAccountApartWhoHoldTheSameCode) {
  order("a", order::Direction::Buy, 2, 0);
  order("b", order::Direction::Sell, 3, 0);
  barTo(0, 10);
  barTo(1, 12);
  EXPECT_EQ(last(), "999998/60");
  EXPECT_EQ(last("a"), "1000004/24");
  EXPECT_EQ(last("b"), "999994/36");
}

TEST_F(EquityCurves, shouldTellTheAccountsResultFromThatOfTheSourceThatIsLeft) {
  order("a", order::Direction::Buy, 2, 0);
  order("b", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  barTo(1, 12);
  order("a", order::Direction::Sell, 2, 20, order::Offset::Close);
  barTo(2, 13);
  EXPECT_EQ(last("a"), "1000004/0");
  EXPECT_EQ(last("b"), "1000003/13");
  barTo(3, 15);
  EXPECT_EQ(last(), "1000009/15");
  EXPECT_EQ(last("a"), "1000004/0");
  EXPECT_EQ(last("b"), "1000005/15");
}

TEST_F(EquityCurves, shouldKeepTheCurveOfTheFirstSourceWhereASecondOneComesLater) {
  order("a", order::Direction::Buy, 2, 0);
  barTo(0, 10);
  barTo(1, 12);
  const std::size_t before = pointsOf("a").size();
  EXPECT_EQ(before, book_.account(1).points.size());
  order("b", order::Direction::Buy, 5, 20);
  EXPECT_EQ(pointsOf("b").size(), 1u);
  EXPECT_EQ(last("b"), "1000000/0");
  barTo(2, 13);
  EXPECT_EQ(pointsOf("a").size(), before + 1);
  EXPECT_EQ(last(), "1000011/91");
  EXPECT_EQ(last("a"), "1000006/26");
  EXPECT_EQ(last("b"), "1000005/65");
  EXPECT_EQ(pointsOf("a")[before - 1].equity, 1'000'004);
  EXPECT_EQ(pointsOf("b").front().time, 0);
}

TEST_F(EquityCurves, shouldBeginTheCurveOfASourceAloneWithTheRunWhereTheAccountHasPlayedWithoutIt) {
  book_.finish(50);
  order("a", order::Direction::Buy, 1, 100);
  EXPECT_EQ(book_.account(1).points.size(), 2u);
  EXPECT_EQ(pointsOf("a").size(), 1u);
  barTo(10, 10);
  barTo(11, 14);
  EXPECT_EQ(last("a"), "1000004/14");
  EXPECT_EQ(last("a"), last());
  EXPECT_EQ(pointsOf("a").size() + 1, book_.account(1).points.size());
}

TEST_F(EquityCurves, shouldGiveSourcesThatCameBeforeTheStartOneCurveEach) {
  book_.clear();
  book_.addSource(1, "a");
  book_.addSource(1, "b");
  book_.start(0);
  EXPECT_EQ(pointsOf("a").size(), 1u);
  EXPECT_EQ(pointsOf("b").size(), 1u);
  order("b", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  barTo(1, 11);
  EXPECT_EQ(last("a"), "1000000/0");
  EXPECT_EQ(last("b"), "1000001/11");
}

TEST_F(EquityCurves, shouldLeaveTheStartOutOfTheCurveOfASourceThatDealtBeforeIt) {
  book_.clear();
  order("a", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  const std::size_t before = pointsOf("a").size();
  book_.start(20);
  EXPECT_EQ(book_.account(1).points.size(), before + 1);
  EXPECT_EQ(pointsOf("a").size(), before);
  barTo(2, 12);
  EXPECT_EQ(last("a"), last());
}

TEST_F(EquityCurves, shouldValueWhatIsHeldByTheTermsOfAnInstrumentThatWasReplacedMeanwhile) {
  order("a", order::Direction::Buy, 2, 0);
  barTo(0, 10);
  EXPECT_EQ(last(), "1000000/20");
  instrument.multiplier = "3";
  exchange->addContract(code, instrument);
  barTo(1, 12);
  EXPECT_EQ(number(book_.account(1).points.back().exposure), "72");
}

TEST_F(EquityCurves, shouldTakeWhatASourceWithoutANameHoldsForWhatAllHold) {
  order("b", order::Direction::Buy, 3, 0);
  order("", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  EXPECT_EQ(last(), "1000000/40");
  EXPECT_EQ(number(pointsOf("").back().exposure), "40");
  EXPECT_EQ(last("b"), "1000000/30");
  order("", order::Direction::Sell, 1, 10, order::Offset::Close);
  barTo(1, 10);
  barTo(2, 12);
  EXPECT_EQ(number(pointsOf("").back().exposure), "36");
  EXPECT_EQ(last("b"), "1000006/36");
}

TEST_F(EquityCurves, shouldAddUpWhatSeveralCodesAreWorthAndForgetWhatIsClosed) {
  const auto& held = book_.account(1).exposures;
  order("a", order::Direction::Buy, 2, 0);
  barTo(0, 10);
  const ICodeID first = code, second = {8, 1, 1, "D"};
  instrument.code = "D";
  code = second;
  exchange->addContract(code, instrument);
  order("a", order::Direction::Buy, 3, 10);
  barTo(1, 5);
  EXPECT_EQ(last(), "999985/35");
  barTo(2, 6);
  EXPECT_EQ(last(), "999988/38");
  EXPECT_EQ(held.size(), 2u);
  code = first;
  order("a", order::Direction::Sell, 2, 30, order::Offset::Close);
  barTo(3, 6);
  EXPECT_EQ(last(), "999980/18");
  EXPECT_THAT(held, ElementsAre(std::pair<int64, double>(8, 18)));
  code = second;
  order("a", order::Direction::Sell, 3, 40, order::Offset::Close);
  barTo(4, 7);
  EXPECT_EQ(last(), "999980/0");
  EXPECT_THAT(held, IsEmpty());
}

TEST_F(EquityCurves, shouldTakeNoPointWhileNothingIsHeld) {
  order("a", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  order("a", order::Direction::Sell, 1, 10, order::Offset::Close);
  barTo(1, 11);
  const std::size_t points = book_.account(1).points.size();
  barTo(2, 12);
  EXPECT_EQ(book_.account(1).points.size(), points);
  EXPECT_FALSE(book_.noteMark({code.id, 40, false}));
  EXPECT_EQ(book_.account(1).points.size(), points);
}

TEST_F(EquityCurves, shouldKnowTheAccountThatAloneHoldsACodeByItsSourceAlone) {
  const auto sole = [&] { return detail::EquityBook::soleHolders(book_.holdersOf(code.id)); };
  EXPECT_EQ(sole(), nullptr);
  order("a", order::Direction::Buy, 1, 0);
  barTo(0, 10);
  ASSERT_NE(sole(), nullptr);
  EXPECT_EQ(sole()->account, 1);
  EXPECT_EQ(sole()->ledger, exchange->ledger(1));
  // A second source: each has a curve of its own from now on.
  order("b", order::Direction::Buy, 1, 10);
  EXPECT_EQ(sole(), nullptr);
  barTo(1, 11);
  EXPECT_EQ(sole(), nullptr);
}

TEST_F(EquityCurves, shouldDrawWhatAnAccountIsWorthAsItDrawsAMark) {
  order("a", order::Direction::Buy, 2, 0);
  barTo(0, 10);
  const EquityPoint marked = book_.account(1).points.back();
  const std::size_t points = book_.account(1).points.size();
  book_.noteWorth(1, {code.id, marked.time, false}, 5, 6);
  EXPECT_EQ(book_.account(1).points.size(), points);
  EXPECT_EQ(last(), "5/6");
  book_.noteWorth(1, {code.id, marked.time + 10, false}, 7, 8);
  EXPECT_EQ(book_.account(1).points.size(), points + 1);
  EXPECT_EQ(book_.account(1).points.back().time, marked.time + 10);
  EXPECT_EQ(last("a"), "7/8");
  book_.noteWorth(1, {code.id + 1, marked.time + 20, false}, 9, 100);
  EXPECT_EQ(last(), "9/108");
  book_.noteWorth(1, {code.id, marked.time + 30, false}, 10, 12);
  EXPECT_EQ(last(), "10/112");
  book_.noteWorth(1, {code.id + 1, marked.time + 40, false}, 11, 0);
  EXPECT_EQ(last(), "11/12");
}

}  // namespace
}  // namespace orvane::testing
