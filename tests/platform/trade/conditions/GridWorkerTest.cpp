// The rules of a grid, told step by step what became of its orders.

#include "platform/trade/conditions/GridWorker.h"

#include <gtest/gtest.h>

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"

namespace orvane::testing {
namespace {

using detail::GridAction;
using detail::GridTerms;
using detail::GridWorker;
using detail::priceOf;
using detail::readGridTerms;

using Lines = std::vector<std::string>;

constexpr int kClosedSession = 37;
constexpr int kNoMoney = 21;

GridTerms termsOf(const std::string& lower, const std::string& upper, const std::string& step,
                  const std::string& volume) {
  GridOptions options;
  options.lower = lower;
  options.upper = upper;
  options.step = step;
  options.volume = volume;
  std::string fault;
  const auto terms = readGridTerms(options, fault);
  EXPECT_TRUE(terms.has_value()) << fault;
  return terms.value_or(GridTerms{});
}

/// A grid from 98 to 101 in steps of 1, volume 2, on a connected account. Its orders are numbered
/// from 1 as they come.
class GridWorkerTest : public ::testing::Test {
 protected:
  GridWorkerTest() { worker.begin({10'000}, true); }

  void price(const char* last, int day = 20210104) {
    worker.onPrice(*priceOf(std::string_view(last)), day);
  }
  /// What the grid does now, as "1 buy 2@99" and "cancel 1"; its orders are sent.
  Lines act() {
    Lines lines;
    for (const GridAction& action : worker.act()) {
      if (action.kind == GridAction::Kind::Cancel) {
        lines.push_back("cancel " + std::to_string(action.orderId));
        continue;
      }
      const bool isBuy = action.kind == GridAction::Kind::Buy;
      sent.push_back({isBuy, action.price, action.volume});
      const auto id = static_cast<int64>(sent.size());
      worker.onSent(action.cell, id);
      lines.push_back(std::to_string(id) + (isBuy ? " buy " : " sell ") + text(action.volume) +
                      "@" + text(action.price));
    }
    return lines;
  }
  void tell(int64 id, order::Status status, int reason = 0, const std::string& message = "") {
    Order order;
    order.id = id;
    OrderWriter(order).setStatus(status);
    order.ints[order::ReasonAt] = reason;
    order.text5 = message;
    worker.onOrder(order);
  }
  void fill(int64 id, double price, double volume) {
    OrderFill told;
    told.numbers[fill::OrderId] = id;
    const bool isBuy = sent.at(static_cast<std::size_t>(id) - 1).isBuy;
    told.direction() = static_cast<int>(isBuy ? order::Direction::Buy : order::Direction::Sell);
    told.setPrice(price);
    told.values[fill::Volume] = std::bit_cast<Word>(volume);
    worker.onFill(told);
  }
  /// The order is filled whole; its end is told before its fill.
  void fillAll(int64 id, double price, double volume = 2) {
    tell(id, order::Status::Filled);
    fill(id, price, volume);
  }
  void reject(int64 id, int reason = kNoMoney, const std::string& message = "not enough money") {
    tell(id, order::Status::Rejected, reason, message);
  }

  struct Sent {
    bool isBuy;
    detail::Price price;
    detail::Volume volume;
  };
  GridWorker worker{termsOf("98", "101", "1", "2")};
  std::vector<Sent> sent;
};

TEST_F(GridWorkerTest, shouldDoNothingBeforeTheFirstPrice) {
  EXPECT_EQ(act(), Lines{});
  EXPECT_FALSE(worker.hasPrice());
}

TEST_F(GridWorkerTest, shouldBidAtEachLevelBelowThePriceFromThePriceDownwards) {
  price("99.5");
  EXPECT_EQ(act(), (Lines{"1 buy 2@99", "2 buy 2@98"}));
  EXPECT_EQ(act(), Lines{});
}

TEST_F(GridWorkerTest, shouldNotBidAtALevelThatThePriceIsAt) {
  price("99");
  EXPECT_EQ(act(), (Lines{"1 buy 2@98"}));
  price("99.1");
  EXPECT_EQ(act(), (Lines{"2 buy 2@99"}));
}

TEST_F(GridWorkerTest, shouldBidEverywhereAboveTheRangeAndNowhereBelowIt) {
  price("97");
  EXPECT_EQ(act(), Lines{});
  price("98");
  EXPECT_EQ(act(), Lines{});
  price("500");
  EXPECT_EQ(act(), (Lines{"1 buy 2@100", "2 buy 2@99", "3 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldHaveNothingToSayWhileNoLevelIsCrossed) {
  price("99.5");
  act();
  price("99.9");
  EXPECT_FALSE(worker.isDirty());
  price("99.1");
  EXPECT_FALSE(worker.isDirty());
  price("100.1");
  EXPECT_TRUE(worker.isDirty());
}

TEST_F(GridWorkerTest, shouldOfferWhatItBoughtAStepAboveAndBidAgainOnceItIsSold) {
  price("98.5");
  act();
  fillAll(1, 98);
  EXPECT_EQ(act(), (Lines{"2 sell 2@99"}));
  EXPECT_EQ(text(worker.held()), "2");
  fillAll(2, 99);
  EXPECT_EQ(act(), (Lines{"3 buy 2@98"}));
  EXPECT_EQ(text(worker.held()), "0");
  EXPECT_EQ(text(worker.profit()), "2");
  EXPECT_EQ(worker.sales(), 1);
}

TEST_F(GridWorkerTest, shouldNotBidAgainWhilePriceIsNotAboveTheLevelAfterASale) {
  price("98.5");
  act();
  fillAll(1, 98);
  act();
  price("98");
  fillAll(2, 99);
  EXPECT_EQ(act(), Lines{});
  price("98.2");
  EXPECT_EQ(act(), (Lines{"3 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldReckonProfitOfWhatEachCellPaidOldestFirstExactly) {
  worker.begin({500'000}, true);  // Multiplier 50.
  price("98.5");
  act();
  tell(1, order::Status::PartlyFilled);
  fill(1, 97.7, 0.5);
  EXPECT_EQ(act(), Lines{});
  fillAll(1, 97.9, 1.5);
  EXPECT_EQ(act(), (Lines{"2 sell 2@99"}));
  fill(2, 99.1, 1);  // 0.5 x 1.4 + 0.5 x 1.2 = 1.3
  EXPECT_EQ(text(worker.profit()), "65");
  EXPECT_EQ(text(worker.held()), "1");
  EXPECT_EQ(worker.sales(), 0);
  fillAll(2, 99, 1);  // 1 x 1.1
  EXPECT_EQ(text(worker.profit()), "120");
  EXPECT_EQ(worker.sales(), 1);
}

TEST_F(GridWorkerTest, shouldWithdrawABidThatIsPartlyFilledOnceThePriceGoesBeyondItsSale) {
  price("98.5");
  act();
  tell(1, order::Status::PartlyFilled);
  fill(1, 98, 0.5);
  price("99");
  EXPECT_EQ(act(), Lines{});
  price("99.1");
  EXPECT_EQ(act(), (Lines{"cancel 1", "2 buy 2@99"}));
  EXPECT_EQ(act(), Lines{});
  tell(1, order::Status::Cancelled);
  EXPECT_EQ(act(), (Lines{"3 sell 0.5@99"}));
}

TEST_F(GridWorkerTest, shouldWaitAfterARejectionAndSayWhy) {
  price("98.5");
  act();
  reject(1);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "not enough money");
  EXPECT_FALSE(worker.hasOrders());
  price("97");
  price("98.5");
  EXPECT_EQ(act(), Lines{});
}

TEST_F(GridWorkerTest, shouldTryCellsThatWaitOneAfterAnotherAfterASaleUntilOneIsRejected) {
  price("100.5");
  act();  // 1 at 100, 2 at 99, 3 at 98.
  fillAll(1, 100);
  reject(2);
  reject(3);
  EXPECT_EQ(act(), (Lines{"4 sell 2@101"}));
  fillAll(4, 101);
  EXPECT_EQ(act(), (Lines{"5 buy 2@100", "6 buy 2@99"}));
  EXPECT_EQ(act(), Lines{});
  tell(6, order::Status::Working);
  EXPECT_EQ(act(), (Lines{"7 buy 2@98"}));
  reject(7);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "not enough money");
}

TEST_F(GridWorkerTest, shouldForgetTheTroubleOnceNoCellWaits) {
  price("98.5");
  act();
  reject(1);
  act();
  price("98.5", 20210105);
  EXPECT_EQ(act(), (Lines{"2 buy 2@98"}));
  EXPECT_EQ(worker.trouble(), "not enough money");
  tell(2, order::Status::Working);
  act();
  EXPECT_EQ(worker.trouble(), "");
}

TEST_F(GridWorkerTest, shouldTryAgainAtTheNextPriceWhereTimeMayHelp) {
  price("99.5");
  act();
  reject(1, kClosedSession, "closed");
  reject(2, 52, "too many");
  EXPECT_EQ(act(), Lines{});
  price("99.5");
  EXPECT_EQ(act(), (Lines{"3 buy 2@99"}));
  reject(3, kClosedSession, "closed");
  EXPECT_EQ(act(), Lines{});
  price("99.5");
  EXPECT_EQ(act(), (Lines{"4 buy 2@99"}));
  tell(4, order::Status::Working);
  EXPECT_EQ(act(), (Lines{"5 buy 2@98"}));
  tell(5, order::Status::Working);
  act();
  price("99.5");
  EXPECT_FALSE(worker.isDirty());
}

TEST_F(GridWorkerTest, shouldLeaveWhatOnlyAChangeMayHelpAloneAtTheNextPrice) {
  price("99.5");
  act();
  reject(1, kNoMoney);
  reject(2, kClosedSession, "closed");
  act();
  price("99.5");
  EXPECT_EQ(act(), (Lines{"3 buy 2@98"}));
  tell(3, order::Status::Working);
  EXPECT_EQ(act(), Lines{});
}

TEST_F(GridWorkerTest, shouldSayWhyAnOrderWasRejectedThatItWasWithdrawing) {
  price("98.5");
  act();
  worker.pause();
  act();
  reject(1);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "not enough money");
}

TEST_F(GridWorkerTest, shouldTryAgainOnANewTradingDayAndNotOnTheSameOne) {
  price("98.5", 20210104);
  act();
  reject(1);
  act();
  price("98.5", 20210104);
  EXPECT_EQ(act(), Lines{});
  price("98.5", 20210105);
  EXPECT_EQ(act(), (Lines{"2 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldTrySalesBeforeBids) {
  price("99.5");
  act();  // 1 at 99, 2 at 98.
  fillAll(2, 98);
  reject(1);
  EXPECT_EQ(act(), (Lines{"3 sell 2@99"}));
  reject(3, -2, "above the day's upper limit");
  act();
  price("99.5", 20210105);
  EXPECT_EQ(act(), (Lines{"4 sell 2@99"}));
  tell(4, order::Status::Working);
  EXPECT_EQ(act(), (Lines{"5 buy 2@99"}));
}

TEST_F(GridWorkerTest, shouldWaitWithACellWhoseOrderSomebodyElseCancelled) {
  price("98.5");
  act();
  tell(1, order::Status::Cancelled);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "order 1 was cancelled");
  worker.resume();
  EXPECT_EQ(act(), (Lines{"2 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldWaitWithACellWhoseOrderIsRefusedAtOnce) {
  price("98.5");
  for (const GridAction& action : worker.act()) worker.onRefused(action.cell, "no account");
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "no account");
  worker.resume();
  for (const GridAction& action : worker.act()) worker.onRefused(action.cell, "still none");
  EXPECT_EQ(worker.trouble(), "still none");
  worker.resume();
  EXPECT_EQ(act(), (Lines{"1 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldSendNothingWhileNotConnectedAndGoOnAfterwards) {
  price("98.5");
  worker.onConnection(false);
  EXPECT_EQ(act(), Lines{});
  price("99.5");
  EXPECT_EQ(act(), Lines{});
  worker.onConnection(true);
  EXPECT_EQ(act(), (Lines{"1 buy 2@99", "2 buy 2@98"}));
}

TEST_F(GridWorkerTest, shouldCancelAgainAfterTheConnectionReturned) {
  price("98.5");
  act();
  worker.pause();
  EXPECT_EQ(act(), (Lines{"cancel 1"}));
  EXPECT_EQ(act(), Lines{});
  worker.onConnection(false);
  EXPECT_EQ(act(), Lines{});
  worker.onConnection(true);
  EXPECT_EQ(act(), (Lines{"cancel 1"}));
}

TEST_F(GridWorkerTest, shouldWithdrawItsOrdersWhenPausedAndGoOnWithWhatItHoldsWhenResumed) {
  price("99.5");
  act();
  fillAll(1, 99);
  EXPECT_EQ(act(), (Lines{"3 sell 2@100"}));
  worker.pause();
  EXPECT_EQ(act(), (Lines{"cancel 2", "cancel 3"}));
  tell(2, order::Status::Cancelled);
  tell(3, order::Status::Cancelled);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(text(worker.held()), "2");
  price("100.5");
  EXPECT_EQ(act(), Lines{});
  worker.resume();
  EXPECT_EQ(act(), (Lines{"4 sell 2@100", "5 buy 2@100", "6 buy 2@98"}));
  EXPECT_EQ(worker.trouble(), "");
}

TEST_F(GridWorkerTest, shouldTellItsOwnCancelOfOneOrderFromAForeignOneOfTheNext) {
  price("98.5");
  act();
  worker.pause();
  act();
  tell(1, order::Status::Cancelled);
  act();
  worker.resume();
  EXPECT_EQ(act(), (Lines{"2 buy 2@98"}));
  tell(2, order::Status::Cancelled);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "order 2 was cancelled");
}

TEST_F(GridWorkerTest, shouldKeepSayingWhyWhileACellWaitsThatThePriceLeft) {
  price("99.5");
  act();
  reject(1);
  reject(2);
  act();
  price("98.5", 20210105);
  EXPECT_EQ(act(), (Lines{"3 buy 2@98"}));
  tell(3, order::Status::Working);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.trouble(), "not enough money");
}

TEST_F(GridWorkerTest, shouldCountNoOrderThatIsOverAmongThoseAtWork) {
  price("99.5");
  act();
  tell(1, order::Status::Filled);
  EXPECT_EQ(worker.orders(), std::vector<int64>{2});
  EXPECT_TRUE(worker.isMine(1));
  fill(1, 99, 2);
  act();
  EXPECT_FALSE(worker.isMine(1));
}

TEST_F(GridWorkerTest, shouldTakeAFillThatCameBeforeItsCancelWhilePaused) {
  price("98.5");
  act();
  worker.pause();
  act();
  fillAll(1, 98);
  EXPECT_EQ(act(), Lines{});
  worker.resume();
  EXPECT_EQ(act(), (Lines{"2 sell 2@99"}));
}

TEST_F(GridWorkerTest, shouldNeverGoOnOnceStopped) {
  price("98.5");
  act();
  worker.stop();
  EXPECT_EQ(act(), (Lines{"cancel 1"}));
  worker.resume();
  worker.pause();
  tell(1, order::Status::Cancelled);
  price("100.5");
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(worker.mode(), GridWorker::Mode::Stopped);
  EXPECT_FALSE(worker.hasOrders());
}

TEST_F(GridWorkerTest, shouldGoOverToAnotherRangeOnceItsOrdersAreWithdrawn) {
  price("99.5");
  act();
  fillAll(1, 99);
  act();  // 3 sells 2 at 100.
  worker.change(termsOf("90", "96", "3", "1"));
  EXPECT_EQ(act(), (Lines{"cancel 2", "cancel 3"}));
  tell(2, order::Status::Cancelled);
  EXPECT_EQ(act(), Lines{});
  tell(3, order::Status::Cancelled);
  EXPECT_EQ(act(), (Lines{"4 sell 2@100", "5 buy 1@93", "6 buy 1@90"}));
  fillAll(4, 100);
  EXPECT_EQ(text(worker.profit()), "2");
  price("101");
  EXPECT_EQ(act(), Lines{});
}

TEST_F(GridWorkerTest, shouldKeepWhatItHoldsInTheCellOfTheSamePricesAfterAChange) {
  price("99.5");
  act();
  fillAll(1, 99);
  worker.change(termsOf("99", "103", "1", "5"));
  EXPECT_EQ(act(), (Lines{"cancel 2"}));
  tell(2, order::Status::Cancelled);
  EXPECT_EQ(act(), (Lines{"3 sell 2@100"}));
  fillAll(3, 100);
  EXPECT_EQ(act(), (Lines{"4 buy 5@99"}));
}

TEST_F(GridWorkerTest, shouldIgnoreOrdersAndFillsThatAreNotItsOwn) {
  price("98.5");
  act();
  tell(9, order::Status::Rejected);
  OrderFill foreign;
  foreign.numbers[fill::OrderId] = 9;
  foreign.setPrice(98);
  foreign.values[fill::Volume] = std::bit_cast<Word>(2.0);
  worker.onFill(foreign);
  EXPECT_EQ(act(), Lines{});
  EXPECT_EQ(text(worker.held()), "0");
  EXPECT_EQ(worker.orders(), std::vector<int64>{1});
}

}  // namespace
}  // namespace orvane::testing
