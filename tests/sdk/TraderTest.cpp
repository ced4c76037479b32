#include "sdk/Trader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "sdk/testing/OrderDesk.h"
#include "sdk/testing/RecordingContext.h"
#include "tests/sdk/OrderTexts.h"

namespace orvane {
namespace {

using test::textOf;
using test::Texts;

/// A trader on an account, and an exchange that does what a test says.
class TraderTest : public testing::Test {
 protected:
  Texts sent() const {
    Texts texts;
    for (const RecordedOrder& each : context_.orders) texts.push_back(textOf(each.request));
    return texts;
  }
  void fillAll() {
    for (const int64 id : context_.openOrders()) desk_.fill(id, 100, -1);
  }

  RecordingContext context_;
  OrderDesk desk_{context_};
  const ICodeID code_ = context_.addCode("A.X");
  const ICodeID other_ = context_.addCode("B.X");
  Trader trader_{context_.addAccount("main")};
};

TEST_F(TraderTest, shouldSendNothingForATargetThatIsOnItsWay) {
  EXPECT_EQ(trader_.target(&context_, code_, 2).code, 0);
  EXPECT_EQ(trader_.target(&context_, code_, 2).code, 0) << "the order is not at the exchange yet";
  EXPECT_EQ(sent(), (Texts{"buy open 2"}));
  fillAll();
  trader_.target(&context_, code_, 2);
  EXPECT_EQ(sent().size(), 1u);
  trader_.target(&context_, code_, -1);
  EXPECT_EQ(sent(), (Texts{"buy open 2", "sell close 2", "sell open 1"}));
  fillAll();
  trader_.target(&context_, code_, 0);
  EXPECT_EQ(sent().back(), "buy close 1");
}

TEST_F(TraderTest, shouldTakeEachCodeForItself) {
  trader_.buy(&context_, code_, 2);
  trader_.target(&context_, other_, 1);
  EXPECT_EQ(sent(), (Texts{"buy open 2", "buy open 1"}));
  trader_.cancelAll(&context_, other_);
  ASSERT_EQ(context_.cancels.size(), 1u);
  EXPECT_EQ(context_.cancels[0].orderId, 2);
}

TEST_F(TraderTest, shouldTryAgainForATargetWhoseOrderIsOver) {
  trader_.target(&context_, code_, 2, 99);
  desk_.fill(1, 99, 1);
  desk_.move(1, order::Status::Cancelled);
  trader_.target(&context_, code_, 2, 99);
  EXPECT_EQ(sent(), (Texts{"buy open 2 at 99", "buy open 1 at 99"}));
  desk_.move(2, order::Status::Rejected);
  trader_.target(&context_, code_, 2);
  EXPECT_EQ(sent().back(), "buy open 1");
}

TEST_F(TraderTest, shouldCloseBothSidesButForWhatIsBeingClosed) {
  trader_.buy(&context_, code_, 3);
  trader_.sell(&context_, code_, 2);
  fillAll();
  EXPECT_EQ(trader_.close(&context_, code_, 1).code, 0);
  EXPECT_EQ(trader_.close(&context_, code_).code, 0);
  EXPECT_EQ(trader_.close(&context_, code_).code, 0);
  EXPECT_EQ(sent(), (Texts{"buy open 3", "sell open 2", "sell close 1", "buy close 1",
                           "sell close 2", "buy close 1"}));
}

TEST_F(TraderTest, shouldCancelEveryOrderAtWorkAndThoseJustSent) {
  trader_.buy(&context_, code_, 1, 98);
  trader_.buy(&context_, code_, 1, 99);
  trader_.sell(&context_, code_, 1, 103);
  desk_.move(1, order::Status::Working);
  desk_.fill(2, 99, -1);
  EXPECT_EQ(trader_.cancelAll(&context_, code_).code, 0);
  ASSERT_EQ(context_.cancels.size(), 2u);
  EXPECT_EQ(context_.cancels[0].orderId, 1);
  EXPECT_EQ(context_.cancels[1].orderId, 3);
  EXPECT_EQ(context_.cancels[0].source, "") << "the runner's own source";
}

TEST_F(TraderTest, shouldAskForEveryCancelAndAnswerTheFirstRefusal) {
  trader_.buy(&context_, code_, 1, 98);
  trader_.buy(&context_, code_, 1, 99);
  context_.script.next("cancelOrder", {42, "no"});
  EXPECT_EQ(trader_.cancelAll(&context_, code_).code, 42);
  EXPECT_EQ(context_.cancels.size(), 2u);
  context_.script.next("cancelOrder", {22, "filled meanwhile"});
  EXPECT_EQ(trader_.cancelAll(&context_, code_).code, 0);
}

TEST_F(TraderTest, shouldSendNothingWhereAQueryFails) {
  context_.script.always("getPosition", {-6, "not connected"});
  EXPECT_EQ(trader_.target(&context_, code_, 2).code, -6);
  EXPECT_EQ(trader_.close(&context_, code_).code, -6);
  context_.script.clear();
  context_.script.always("openOrdersByCode", {-6, "not connected"});
  EXPECT_EQ(trader_.target(&context_, code_, 2).code, -6);
  EXPECT_EQ(trader_.cancelAll(&context_, code_).code, -6);
  EXPECT_TRUE(sent().empty());
}

TEST_F(TraderTest, shouldRefuseATargetThatIsNoNumber) {
  EXPECT_EQ(trader_.target(&context_, code_, std::nan("")).code, -2);
  const auto status = trader_.target(&context_, code_, HUGE_VAL);
  EXPECT_EQ(status.message, "target position: inf, must be a finite number");
  EXPECT_TRUE(sent().empty());
}

TEST_F(TraderTest, shouldEndWithTheFirstOrderThatIsRefused) {
  trader_.buy(&context_, code_, 1);
  fillAll();
  context_.script.next("sendOrder", {-6, "not connected"});
  EXPECT_EQ(trader_.target(&context_, code_, -1).code, -6);
  EXPECT_EQ(sent().size(), 2u) << "the opening order was not tried";
}

TEST_F(TraderTest, shouldAnswerThatItHasNoAccount) {
  Trader without;
  EXPECT_FALSE(without.hasAccount());
  EXPECT_EQ(without.buy(&context_, code_, 1).code, -2);
  EXPECT_EQ(without.sell(&context_, code_, 1).code, -2);
  EXPECT_EQ(without.close(&context_, code_).code, -2);
  EXPECT_EQ(without.target(&context_, code_, 1).code, -2);
  EXPECT_EQ(without.cancelAll(&context_, code_).code, -2);
  EXPECT_TRUE(sent().empty());
}

}  // namespace
}  // namespace orvane
