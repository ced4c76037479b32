// Orders against bars.

#include <cmath>
#include <stdexcept>
#include <vector>

#include "platform/trade/BarMatcher.h"
#include "tests/platform/trade/ExchangeFixture.h"
#include "tests/platform/trade/Sides.h"

namespace orvane::testing {
namespace {

class BarMatching : public ExchangeTest {};

TEST_F(BarMatching, shouldFillAMarketOrderAtTheNextOpenWithTheBarsBeginAsTime) {
  bar(0, 10, 11, 9, 10.5);
  buy(2, 10);
  bar(1, 12, 13, 11, 12.5);
  EXPECT_THAT(take(), ElementsAre("1 2@12 t=10"));
}

TEST_F(BarMatching, shouldFillAtTheNextOpenWhateverTheGapInTime) {
  bar(0, 10, 11, 9, 10.5);
  buy(1, 10);
  bar(500, 99, 100, 98, 99);
  EXPECT_THAT(take(), ElementsAre("1 1@99 t=5000"));
}

TEST_F(BarMatching, shouldNeverFillByTheBarThatTheOrderAnswersOrByOneBeforeIt) {
  bar(0, 10, 11, 9, 10.5);
  buy(1, 10);
  EXPECT_THAT(take(), IsEmpty());
  lastEnd = 0;
  bar(0, 10, 11, 9, 10.5);  // A bar that ended when the order came.
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(BarMatching, shouldNotDealInABarWithAPriceOfZeroOrBelowOrTooLarge) {
  buy(1, 0);
  bar(0, 0, 0, 0, 0);
  bar(1, 10, 10, -1, 10);
  bar(2, 10, 1e9, 10, 10);
  EXPECT_THAT(take(), IsEmpty());
  bar(3, 10, 10, 10, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@10 t=30"));
}

TEST_F(BarMatching, shouldReckonWithTheCloseOfEveryBarThatCouldBeDealtInAndOfNoOther) {
  const auto last = [this](int64 n, double low, double high) {
    bar(n, high, high, low, high);
    return exchange->lastPrice(code.id)->price.units;
  };
  EXPECT_EQ(last(0, 1e-10, 1e-10), 1);
  EXPECT_EQ(last(1, 6e-11, 2e-10), 2);  // The low is rounded up.
  EXPECT_EQ(last(2, 4e-11, 3e-10), 2);
  EXPECT_EQ(last(3, 4e-10, 4e-10), 4);
  EXPECT_EQ(last(4, 1, 9.1e8), 9'100'000'000'000'000'000);
  EXPECT_EQ(last(5, 1, 9.2e8), 9'100'000'000'000'000'000);
  EXPECT_EQ(last(6, std::nan(""), 5), 9'100'000'000'000'000'000);
  EXPECT_EQ(last(7, -1, 5), 9'100'000'000'000'000'000);
  EXPECT_EQ(last(8, 5, 5), 50'000'000'000);
}

TEST(ExactBars, shouldSayOfABarsCloseAloneWhatTheySayOfTheWholeBar) {
  // Around what is no price: too small, too large, and how far from one double to the next.
  const std::vector<double> edges = {0.5e-10, 1e-10, 1e-9, 1, 9e8, 9.2e8};
  std::vector<double> values = {0, -1, 1e300, std::nan(""), HUGE_VAL};
  for (const double edge : edges)
    values.insert(values.end(), {std::nextafter(edge, 0), edge, std::nextafter(edge, HUGE_VAL)});
  int prices = 0;
  for (const double low : values)
    for (const double close : values) {
      IKLine record;
      KLineWriter writer(record);
      writer.set(kline::Open, 1);
      writer.set(kline::High, 1);
      writer.set(kline::Low, low);
      writer.set(kline::Close, close);
      const auto whole = detail::exactBarOf(record, 0);
      const auto alone = detail::closeOf(record);
      ASSERT_EQ(alone.has_value(), whole.has_value()) << low << " " << close;
      if (!whole) continue;
      ASSERT_EQ(*alone, whole->close) << low << " " << close;
      ++prices;
    }
  EXPECT_GT(prices, 100);
}

TEST_F(BarMatching, shouldLetTheDayGoOnByABarThatIsNotDealtIn) {
  place(orderOf(kBuy, 1, order::Type::Limit, 5, order::Offset::Open, order::TimeInForce::Day), 0);
  bar(0, 10, 10, 10, 10);
  bar(1, 0, 0, 0, 0, 100, 20210105);
  EXPECT_THAT(take(), ElementsAre("1 expired"));
}

TEST_F(BarMatching, shouldNotPutAFillBehindTheEndOfABarThatItsPredecessorCovers) {
  buy(1, 0);
  lastEnd = 50;
  bar(1, 10, 10, 10, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@10 t=20"));
}

TEST_F(BarMatching, shouldFillAnyVolumeFromABarWhoseVolumeIsNotTold) {
  options.barVolumeShare = "0.1";
  open();
  for (const double volume : {std::nan(""), -5.0, 0.0}) {
    buy(5e9, 0);
    buy(4e9, 0);
    bar(0, 10, 11, 10, 11, volume);
    EXPECT_EQ(take().size(), 2u) << volume;
    lastEnd = -1;
    open();
  }
}

TEST_F(BarMatching, shouldGiveEachAccountItsShareOfABarWhereTheyDoNotShareTheMarket) {
  for (const bool isShared : {true, false}) {
    options.barVolumeShare = "0.1";
    options.accountsShareMarket = isShared;
    open();
    lastEnd = -1;
    TradingAccountID other = account;
    other.accountKey = 2;
    other.account = "other";
    exchange->addAccount(other, startBalance);
    Order ofOther = orderOf(order::Direction::Buy, 8);
    ofOther.account = other;
    const int64 first = buy(8, 0), second = place(ofOther, 0);
    bar(0, 10, 10, 10, 10, 100);
    const std::string begin = std::to_string(first) + " 8@10 t=0";
    const std::string rest = std::to_string(second) + (isShared ? " 2@10 t=0" : " 8@10 t=0");
    EXPECT_THAT(take(), ElementsAre(begin, rest));
  }
}

TEST_F(BarMatching, shouldFillNothingFromABarInWhichNobodyTraded) {
  options.barVolumeShare = "0.1";
  open();
  buy(5, 0);
  bar(0, 10, 10, 10, 10, 0);
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(BarMatching, shouldTakeAVolumeOutOfRangeForTheLargest) {
  options.barVolumeShare = "0.1";
  open();
  for (const double volume : {1e300, HUGE_VAL}) {
    buy(9'000'000'000, 0);
    buy(1'000'000'000, 0);
    bar(0, 10, 11, 10, 11, volume);
    // A tenth of the largest, which is a little above 9.2e10.
    EXPECT_THAT(take(), ElementsAre(::testing::HasSubstr(" 9000000000@10 t=0"),
                                    ::testing::HasSubstr(" 223372036.854776@10 t=0")));
    lastEnd = -1;
    open();
  }
}

TEST_F(BarMatching, shouldRefuseAShareOfABarsVolumeThatIsNone) {
  for (const std::string share : {"0", "-0.1", "1.0000000001", "2", "nan", "half", "1e-1"}) {
    options.barVolumeShare = share;
    try {
      open();
      ADD_FAILURE() << share << " was taken";
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(),
                "barVolumeShare: \"" + share + "\" is not a decimal number above 0 and up to 1");
    }
  }
  options.barVolumeShare = "1";
  open();
}

TEST_F(BarMatching, shouldEndAnOrderWhoseFillWouldBeTooLarge) {
  buy(9e9, 0);  // Before there is a price.
  bar(0, 9e8, 9e8, 9e8, 9e8);
  EXPECT_THAT(take(), ElementsAre("1 rejected: too large: 9000000000 at 900000000"));
  EXPECT_FALSE(exchange->isBusy(code.id));
  EXPECT_TRUE(ledger().closedProfit().isZero());
}

TEST_F(BarMatching, shouldCancelTheRestOfAnOrderWhoseNextFillWouldBeTooLarge) {
  options.barVolumeShare = "1";
  open();
  buy(9e9, 0);
  bar(0, 1, 1, 1, 1, 2);
  bar(1, 9e8, 9e8, 9e8, 9e8, 9e9);
  EXPECT_THAT(take(), ElementsAre("1 2@1 t=0", "1 cancelled: too large: 8999999998 at 900000000"));
}

TEST_F(BarMatching, shouldKeepASlippedPriceInRange) {
  options.slippage = "900000000";
  open();
  buy(1e-8, 0);
  sell(1e-8, 0, order::Offset::Open);
  bar(0, 9e8, 9e8, 9e8, 9e8);
  EXPECT_EQ(take().size(), 2u);
  options.slippageTicks = 2'000'000'000;
  instrument.priceTick = "1";
  EXPECT_THROW(open(), std::invalid_argument);
}

TEST_F(BarMatching, shouldMeetTheCloseAloneOfABarThatWasRunning) {
  bar(0, 10, 11, 9, 10.5);
  buy(1, 15);
  limit(kBuy, 9.5, 15);
  bar(1, 12, 13, 9, 12.5);
  EXPECT_THAT(take(), ElementsAre("1 1@12.5 t=20"));
}

TEST_F(BarMatching, shouldNotMeetABarThatEndsWhenTheOrderArrives) {
  bar(0, 10, 11, 9, 10.5);
  buy(1, 20);
  bar(1, 12, 13, 9, 12.5);
  EXPECT_THAT(take(), IsEmpty());
  bar(2, 14, 14, 14, 14);
  EXPECT_THAT(take(), ElementsAre("1 1@14 t=20"));
}

TEST_F(BarMatching, shouldTakeABarToBeginNoEarlierThanItsPredecessorEnded) {
  lastEnd = 14;
  buy(1, 14);
  bar(1, 12, 13, 11, 12.5);
  EXPECT_THAT(take(), ElementsAre("1 1@12 t=14"));
}

TEST_F(BarMatching, shouldFillALimitOrderAtTheOpenWhenThatIsBetter) {
  limit(kBuy, 10, 0);
  limit(kSell, 5, 0);
  bar(0, 9, 11, 8, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=0", "2 1@9 t=0"));
}

TEST_F(BarMatching, shouldFillALimitOrderAtItsLimitOnlyWhenTheRangeGoesThrough) {
  limit(kBuy, 9, 0);
  limit(kSell, 11, 0);
  bar(0, 10, 11, 9, 10);
  EXPECT_THAT(take(), IsEmpty());
  bar(1, 10, 11.1, 8.9, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=20", "2 1@11 t=20"));
}

TEST_F(BarMatching, shouldFillALimitOrderAtATouchWhereThatIsChosen) {
  options.limitFill = TradeOptions::LimitFill::Touch;
  open();
  limit(kBuy, 9, 0);
  limit(kBuy, 8.9, 0);
  bar(0, 10, 11, 9, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=10"));
}

TEST_F(BarMatching, shouldFillAStopAtItsPriceAndAtTheOpenWhereTheBarOpenedBeyondIt) {
  stop(kBuy, 11, 0);
  stop(kSell, 9, 0, order::Offset::Open);
  stop(kBuy, 10, 0);
  bar(0, 10.5, 11, 9.5, 10);
  EXPECT_THAT(take(), ElementsAre("3 1@10.5 t=0", "1 1@11 t=10"));
  bar(1, 8, 8, 8, 8);
  EXPECT_THAT(take(), ElementsAre("2 1@8 t=10"));
}

TEST_F(BarMatching, shouldPutSlippageAgainstMarketAndStopOrdersAndNotAgainstLimits) {
  options.slippage = "0.1";
  options.slippageTicks = 2;
  instrument.priceTick = "0.05";
  open();
  buy(1, 0);
  sell(1, 0, order::Offset::Open);
  stop(kBuy, 11, 0);
  limit(kBuy, 9.5, 0);
  bar(0, 10, 11, 9, 10);
  EXPECT_THAT(take(), ElementsAre("1 1@10.2 t=0", "2 1@9.8 t=0", "3 1@11.2 t=10", "4 1@9.5 t=10"));
}

TEST_F(BarMatching, shouldFillStopsBeforeLimitsWithinOneBar) {
  limit(kSell, 12, 0);
  stop(kSell, 8, 0, order::Offset::Open);
  bar(0, 10, 13, 7, 10);
  EXPECT_THAT(take(), ElementsAre("2 1@8 t=10", "1 1@12 t=10"));
}

TEST_F(BarMatching, shouldFillWhatComesAtTheOpenBeforeWhatTheRangeAllows) {
  limit(kBuy, 9, 0);
  buy(1, 0);
  bar(0, 10, 11, 8, 10);
  EXPECT_THAT(take(), ElementsAre("2 1@10 t=0", "1 1@9 t=10"));
}

TEST_F(BarMatching, shouldFillNoMoreThanItsShareOfEachBarsVolume) {
  options.barVolumeShare = "0.1";
  instrument.lotSize = "1";
  open();
  buy(5, 0);
  bar(0, 10, 10, 10, 10, 29);
  bar(1, 11, 11, 11, 11, 9);
  bar(2, 12, 12, 12, 12, 100);
  EXPECT_THAT(take(), ElementsAre("1 2@10 t=0", "1 3@12 t=20"));
}

TEST_F(BarMatching, shouldCancelWhatIsAtWorkAndNothingElse) {
  limit(kBuy, 5, 0);
  exchange->cancel(1, {}, 3);
  exchange->cancel(1, {}, 4);
  exchange->cancel(99, {}, 4);
  bar(0, 4, 4, 4, 4);
  EXPECT_THAT(take(), ElementsAre("1 cancelled"));
}

class TimeInForce : public ExchangeTest {
 protected:
  int64 placeWith(order::TimeInForce time, double price, int64 now, double volume = 1) {
    return place(orderOf(kBuy, volume, order::Type::Limit, price, order::Offset::Open, time), now);
  }
};

TEST_F(TimeInForce, shouldLetADayOrderSentAfterTheDaysLastBarLiveThroughTheNextDay) {
  bar(0, 10, 10, 10, 10, 100, 20210104);
  placeWith(order::TimeInForce::Day, 5, 10);
  bar(1, 10, 10, 10, 10, 100, 20210105);
  bar(2, 10, 10, 10, 10, 100, 20210105);
  EXPECT_THAT(take(), IsEmpty());
  bar(3, 4, 4, 4, 4, 100, 20210106);
  EXPECT_THAT(take(), ElementsAre("1 expired"));
}

TEST_F(TimeInForce, shouldKeepAnOrderUntilItIsCancelled) {
  placeWith(order::TimeInForce::UntilCancelled, 5, 0);
  for (int day = 0; day < 5; ++day) bar(day, 10, 10, 10, 10, 100, 20210104 + day);
  bar(9, 4, 4, 4, 4, 100, 20210111);
  EXPECT_THAT(take(), ElementsAre("1 1@4 t=90"));
}

TEST_F(TimeInForce, shouldExpireTheRestOfAnImmediateOrderAfterItsFirstEvent) {
  options.barVolumeShare = "0.1";
  instrument.lotSize = "1";
  open();
  placeWith(order::TimeInForce::ImmediateOrCancel, 20, 0, 5);
  placeWith(order::TimeInForce::ImmediateOrCancel, 1, 0);
  bar(0, 10, 10, 10, 10, 30);
  EXPECT_THAT(take(), ElementsAre("1 3@10 t=0", "1 expired", "2 expired"));
}

TEST_F(TimeInForce, shouldFillAFillOrKillOrderWholeOrNotAtAll) {
  options.barVolumeShare = "0.1";
  instrument.lotSize = "1";
  open();
  placeWith(order::TimeInForce::FillOrKill, 20, 0, 4);
  placeWith(order::TimeInForce::FillOrKill, 20, 0, 3);
  bar(0, 10, 10, 10, 10, 30);
  EXPECT_THAT(take(), ElementsAre("1 expired", "2 3@10 t=0"));
}

TEST_F(TimeInForce, shouldNotTakeADayThatGoesBackForANewOne) {
  buy(1, 0);
  bar(0, 10, 10, 10, 10, 100, 20210105);
  place(orderOf(kSell, 1, order::Type::Limit, 50, order::Offset::CloseToday), 10);
  placeWith(order::TimeInForce::Day, 5, 10);
  take();
  bar(1, 10, 10, 10, 10, 100, 20210104);
  bar(2, 10, 10, 10, 10, 100, 20210105);
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(TimeInForce, shouldEndAClosingOrderForTodaysPartWhenTheDayChanges) {
  buy(2, 0);
  bar(0, 10, 10, 10, 10);
  place(orderOf(kSell, 1, order::Type::Limit, 50, order::Offset::CloseToday), 10);
  take();
  bar(1, 60, 60, 60, 60, 100, 20210105);
  EXPECT_THAT(take(), ElementsAre("2 expired"));
  place(orderOf(kSell, 1, order::Type::Market, 0, order::Offset::CloseToday), 20);
  EXPECT_THAT(take(), ElementsAre("3 rejected: not enough position to close: of today's long "
                                  "volume 0 is free, asked for 1"));
}

}  // namespace
}  // namespace orvane::testing
