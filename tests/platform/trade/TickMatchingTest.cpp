// Orders against ticks with depth.

#include <cmath>

#include "tests/platform/trade/ExchangeFixture.h"
#include "tests/platform/trade/Sides.h"

namespace orvane::testing {
namespace {

class TickMatching : public ExchangeTest {
 protected:
  TickMatching() {
    instrument.lotSize = "1";
    open();
  }
};

TEST_F(TickMatching, shouldWalkTheLevelsShownAndLeaveTheRestForTheNextTick) {
  buy(10, 0);
  tick(1, {{9, 5}}, {{10, 3}, {11, 4}});
  tick(2, {{9, 5}}, {{12, 100}});
  EXPECT_THAT(take(), ElementsAre("1 3@10 t=1", "1 4@11 t=1", "1 3@12 t=2"));
}

TEST_F(TickMatching, shouldNotGiveTheDepthOfOneTickTwice) {
  buy(2, 0);
  buy(2, 0);
  tick(1, {{9, 5}}, {{10, 3}, {11, 4}});
  EXPECT_THAT(take(), ElementsAre("1 2@10 t=1", "2 1@10 t=1", "2 1@11 t=1"));
}

TEST_F(TickMatching, shouldGiveEachAccountTheWholeDepthWhereTheyDoNotShareTheMarket) {
  options.accountsShareMarket = false;
  open();
  TradingAccountID other = account;
  other.accountKey = 2;
  other.account = "other";
  exchange->addAccount(other, startBalance);
  Order ofOther = orderOf(order::Direction::Buy, 2);
  ofOther.account = other;
  buy(2, 0);
  buy(2, 0);
  place(ofOther, 0);
  tick(1, {{9, 5}}, {{10, 3}, {11, 4}});
  EXPECT_THAT(take(), ElementsAre("2 2@10 t=1", "3 1@10 t=1", "3 1@11 t=1", "1 2@10 t=1"));
}

TEST_F(TickMatching, shouldWaitWhileTheOtherSideIsEmpty) {
  buy(1, 0);
  tick(1, {{9, 5}}, {}, 9, 1);
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(TickMatching, shouldFillByTheTradeWhereATickShowsNoDepthAtAll) {
  buy(7, 0);
  tick(1, {}, {}, 10.5, 1);
  EXPECT_THAT(take(), ElementsAre("1 7@10.5 t=1"));
}

TEST_F(TickMatching, shouldTakeALevelOfSizeZeroForOneOfUnknownSize) {
  buy(7, 0);
  tick(1, {{9, 0}}, {{10, 0}});
  EXPECT_THAT(take(), ElementsAre("1 7@10 t=1"));
}

TEST_F(TickMatching, shouldNeverUseUpALevelOfUnknownSize) {
  for (const double size : {0.0, -1.0, std::nan("")}) {
    for (int i = 0; i < 2; ++i) buy(5e9, 0);
    tick(1, {{9, 0}}, {{10, size}, {11, 5}});
    EXPECT_THAT(take(), ElementsAre(::testing::EndsWith(" 5000000000@10 t=1"),
                                    ::testing::EndsWith(" 5000000000@10 t=1")));
    open();
  }
}

TEST_F(TickMatching, shouldTakeASizeOutOfRangeForTheLargestAndNotForNone) {
  for (const double size : {1e300, HUGE_VAL}) {
    limit(kBuy, 9, 0, 3);
    tick(1, {{9, size}}, {{10, 3}});
    tick(2, {{9, size}}, {{10, 3}}, 9, 90e9);
    EXPECT_THAT(take(), IsEmpty());  // It stands behind more than was traded.
    tick(3, {{9, 1}}, {{10, 3}}, 9, size);
    EXPECT_THAT(take(), ElementsAre(::testing::EndsWith(" 3@9 t=3")));
    open();
  }
}

TEST_F(TickMatching, shouldMoveNoQueueByATradeOfUnknownSize) {
  limit(kBuy, 9, 0, 3);
  tick(1, {{9, 1}}, {{10, 3}});
  tick(2, {{9, 1}}, {{10, 3}}, 9, 0);
  tick(3, {{9, 1}}, {{10, 3}}, 9, std::nan(""));
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(TickMatching, shouldEndAnOrderAtTheFirstLevelThatIsTooLarge) {
  buy(6e9, 0);
  tick(1, {}, {{1, 5}, {9e8, 5e9}, {9.1e8, 5}});
  EXPECT_THAT(take(), ElementsAre("1 5@1 t=1", "1 cancelled: too large: 5000000000 at 900000000"));
}

TEST_F(TickMatching, shouldLeaveToTheNextWhatAnOrderThatIsTooLargeDidNotTake) {
  buy(6e9, 0);
  buy(1, 0);
  tick(1, {}, {{9e8, 5e9}, {9.1e8, 5}});
  EXPECT_THAT(take(),
              ElementsAre("1 rejected: too large: 5000000000 at 900000000", "2 1@900000000 t=1"));
}

TEST_F(TickMatching, shouldNotFillAPartOfAFillOrKillOrderThatIsTooLarge) {
  place(orderOf(kBuy, 6e9, order::Type::Market, 0, order::Offset::Open,
                order::TimeInForce::FillOrKill),
        0);
  tick(1, {}, {{1, 5}, {9e8, 6e9}});
  EXPECT_THAT(take(), ElementsAre("1 rejected: too large: 5999999995 at 900000000"));
}

TEST_F(TickMatching, shouldFillTheMarketablePartOfALimitOrderAtTheLevelsPrices) {
  limit(kBuy, 11, 0, 10);
  tick(1, {{9, 5}}, {{10, 3}, {11, 4}, {12, 50}});
  EXPECT_THAT(take(), ElementsAre("1 3@10 t=1", "1 4@11 t=1"));
}

TEST_F(TickMatching, shouldRestBehindWhatIsShownAndBeReachedByTradesAtItsPrice) {
  limit(kBuy, 9, 0, 3);
  tick(1, {{9, 5}}, {{10, 3}});
  tick(2, {{9, 6}}, {{10, 3}}, 9, 4);  // One is left before it.
  EXPECT_THAT(take(), IsEmpty());
  tick(3, {{9, 6}}, {{10, 3}}, 9, 3);  // One for the queue, two for the order.
  EXPECT_THAT(take(), ElementsAre("1 2@9 t=3"));
  tick(4, {{9, 6}}, {{10, 3}}, 9, 1);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=4"));
}

TEST_F(TickMatching, shouldMoveUpWhenLessIsShownAtItsPrice) {
  limit(kBuy, 9, 0, 1);
  tick(1, {{9, 50}}, {{10, 3}});
  tick(2, {{9, 2}}, {{10, 3}});
  tick(3, {{9, 2}}, {{10, 3}}, 9, 3);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=3"));
}

TEST_F(TickMatching, shouldStandAloneAtAPriceBetterThanTheBest) {
  limit(kBuy, 9.5, 0, 1);
  tick(1, {{9, 50}}, {{10, 3}});
  tick(2, {{9, 50}}, {{10, 3}}, 9.5, 1);
  EXPECT_THAT(take(), ElementsAre("1 1@9.5 t=2"));
}

TEST_F(TickMatching, shouldNotKnowItsPlaceDeeperThanWhatIsShownUntilItIsShown) {
  limit(kBuy, 7, 0, 1);
  tick(1, {{9, 50}}, {{10, 3}});
  tick(2, {{9, 50}}, {{10, 3}}, 7, 1000);
  EXPECT_THAT(take(), IsEmpty());
  tick(3, {{8, 1}, {7, 2}}, {{10, 3}});
  tick(4, {{7, 2}}, {{10, 3}}, 7, 3);
  EXPECT_THAT(take(), ElementsAre("1 1@7 t=4"));
}

TEST_F(TickMatching, shouldFillAtItsLimitWhenATradeGoesBeyondIt) {
  limit(kSell, 11, 0, 4);
  tick(1, {{9, 5}}, {{11, 500}});
  tick(2, {{9, 5}}, {{11, 500}}, 11.5, 1);
  EXPECT_THAT(take(), ElementsAre("1 4@11 t=2"));
}

TEST_F(TickMatching, shouldFillAtItsLimitWhenTheOtherSideComesToIt) {
  limit(kBuy, 9, 0, 4);
  tick(1, {{9, 500}}, {{10, 3}});
  tick(2, {{8, 500}}, {{8.5, 3}});
  EXPECT_THAT(take(), ElementsAre("1 3@9 t=2"));
}

TEST_F(TickMatching, shouldStandInFrontWhereThatIsChosen) {
  options.queue = TradeOptions::Queue::Front;
  open();
  limit(kBuy, 9, 0, 2);
  tick(1, {{9, 500}}, {{10, 3}});
  tick(2, {{9, 500}}, {{10, 3}}, 9, 1);
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=2"));
}

TEST_F(TickMatching, shouldNotGiveTheVolumeOfOneTradeTwice) {
  options.queue = TradeOptions::Queue::Front;
  open();
  limit(kBuy, 9, 0, 2);
  limit(kBuy, 9, 0, 2);
  tick(1, {{9, 500}}, {{10, 3}});
  tick(2, {{9, 500}}, {{10, 3}}, 9, 3);
  EXPECT_THAT(take(), ElementsAre("1 2@9 t=2", "2 1@9 t=2"));
}

TEST_F(TickMatching, shouldLeaveToTheNextTheTradeThatAnOrderThatIsTooLargeDidNotTake) {
  options.queue = TradeOptions::Queue::Front;
  open();
  buy(1, 0);
  tick(1, {{8, 1}}, {{9, 1}});
  limit(kBuy, 9, 1, 10'000'000);
  limit(kBuy, 9, 1, 2);
  tick(2, {{9, 5}}, {{10, 5}}, 9e8, 1);  // At this price so many cannot be reckoned.
  take();
  tick(3, {{9, 5}}, {{10, 5}}, 9, 10'000'000);
  EXPECT_THAT(take(), ElementsAre("2 rejected: too large: 10000000 at 9", "3 2@9 t=3"));
}

TEST_F(TickMatching, shouldTriggerAStopByTheLastPriceAndFillItInTheSameTick) {
  stop(kBuy, 11, 0);
  tick(1, {{9, 5}}, {{12, 5}}, 10, 1);
  EXPECT_THAT(take(), IsEmpty());
  tick(2, {{10, 5}}, {{11.5, 5}}, 11, 1);
  EXPECT_THAT(take(), ElementsAre("1 1@11.5 t=2"));
}

TEST_F(TickMatching, shouldTriggerAStopByTheBestOfTheOtherSideWithoutATrade) {
  stop(kSell, 9, 0, order::Offset::Open);
  tick(1, {{9.5, 5}}, {{10, 5}});
  EXPECT_THAT(take(), IsEmpty());
  tick(2, {{9, 5}}, {{10, 5}});
  EXPECT_THAT(take(), ElementsAre("1 1@9 t=2"));
}

TEST_F(TickMatching, shouldNotTouchTheDepthForAFillOrKillOrderThatFails) {
  place(
      orderOf(kBuy, 9, order::Type::Limit, 11, order::Offset::Open, order::TimeInForce::FillOrKill),
      0);
  buy(3, 0);
  tick(1, {{9, 5}}, {{10, 3}, {11, 4}});
  EXPECT_THAT(take(), ElementsAre("1 expired", "2 3@10 t=1"));
}

}  // namespace
}  // namespace orvane::testing
