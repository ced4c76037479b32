// Details of conditions, call by call: what the trade service is asked, what is delivered, and
// what is remembered.

#include "tests/EventStrategy/GridRecordsOf.h"
#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcGrid : public TradeSrcTest {
 protected:
  static constexpr int64 kNow = 1609723800007;

  TradeSrcGrid() { platform.clock.set(kNow); }

  void tell(const QList<GridOrderRecord>& orders, const QList<GridFillRecord>& fills = {}) {
    static_cast<CondSpi&>(*source).onCondDetail(4711, orders, fills);
  }

  void serviceKnows(int64 id, const std::string& a, const std::string& b) {
    Order order;
    order.id = id;
    order.pair = {a, b};
    order.ints[9] = 1;
    platform.trade().orders.push_back(order);
  }

  const std::string first = "order " + std::to_string(kNow * 1000);
  const std::string second = "order " + std::to_string(kNow * 1000 + 1);
};

TEST_F(TradeSrcGrid, shouldDeliverTheOrdersOfADetailThatHasNoFills) {
  tell({gridOrderOf(1), gridOrderOf(2)});
  EXPECT_THAT(notify.take(), ElementsAre(first, second));
}

TEST_F(TradeSrcGrid, shouldDeliverAllOrdersBeforeAllFillsEachInTheDetailsOrder) {
  tell({gridOrderOf(2), gridOrderOf(1)}, {gridFillOf(7, "r1"), gridFillOf(3, "r2")});
  EXPECT_THAT(notify.take(), ElementsAre(first, second, "fill f7", "fill f3"));
}

TEST_F(TradeSrcGrid, shouldDeliverAFillWhoseOrderIsNotInTheDetail) {
  tell({}, {gridFillOf(1, "r1")});
  EXPECT_THAT(notify.take(), ElementsAre("fill f1"));
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcGrid, shouldCountTheNewIdsOfOrdersAndFillsApartFromTheSameTime) {
  tell({gridOrderOf(1)}, {gridFillOf(1, "r1")});
  EXPECT_EQ(TestAccess::gridOrderIds(*source).value("b1@a1@1"), kNow * 1000);
  EXPECT_EQ(TestAccess::gridFillIds(*source).value("f1"), kNow * 1000);
}

TEST_F(TradeSrcGrid, shouldKeepTheIdsOfAnOrderAndAFillThatAreSeenInTwoDetails) {
  tell({gridOrderOf(1)}, {gridFillOf(1, "r1")});
  const QMap<QString, int64> fills = TestAccess::gridFillIds(*source);
  notify.take();
  platform.calls.clear();
  platform.clock.set(kNow + 60000);
  tell({gridOrderOf(1)}, {gridFillOf(1, "r1")});
  EXPECT_THAT(notify.take(), ElementsAre(first, "fill f1"));
  EXPECT_EQ(TestAccess::gridFillIds(*source), fills);
  EXPECT_THAT(tradeCalls(), IsEmpty());
}

TEST_F(TradeSrcGrid, shouldAskTheServiceOnceForAnAccountAndCodeWithinOneDetail) {
  tell({gridOrderOf(1), gridOrderOf(2), gridOrderOf(3, 5, 2), gridOrderOf(4, 6, 1)});
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.openOrdersByCode 5 1", "trade.openOrdersByCode 5 2",
                                        "trade.openOrdersByCode 6 1"));
}

TEST_F(TradeSrcGrid, shouldAskAgainInTheNextDetailForAnOrderThatIsNew) {
  tell({gridOrderOf(1)});
  tell({gridOrderOf(2)});
  EXPECT_THAT(tradeCalls(),
              ElementsAre("trade.openOrdersByCode 5 1", "trade.openOrdersByCode 5 1"));
}

TEST_F(TradeSrcGrid, shouldUseTheIdByWhichTheServiceKnowsTheOrder) {
  serviceKnows(99, "a2", "b2");
  tell({gridOrderOf(1), gridOrderOf(2)});
  EXPECT_THAT(notify.take(), ElementsAre(first, "order 99"));
}

TEST_F(TradeSrcGrid, shouldNotLookAtTheStatusOfTheServicesAnswer) {
  serviceKnows(99, "a1", "b1");
  platform.calls.answer("trade.openOrdersByCode", {5, "refused"});
  tell({gridOrderOf(1)});
  EXPECT_THAT(notify.take(), ElementsAre("order 99"));
}

TEST_F(TradeSrcGrid, shouldTakeIdsFromTheServiceOrNewAfterACacheReset) {
  tell({gridOrderOf(1), gridOrderOf(2)}, {gridFillOf(1, "r1")});
  notify.take();
  source->resetCache();
  EXPECT_TRUE(TestAccess::gridOrderIds(*source).empty());
  EXPECT_TRUE(TestAccess::gridFillIds(*source).empty());
  serviceKnows(99, "a2", "b2");
  platform.clock.set(kNow + 1);
  tell({gridOrderOf(1), gridOrderOf(2)}, {gridFillOf(1, "r1")});
  EXPECT_THAT(notify.take(),
              ElementsAre("order " + std::to_string((kNow + 1) * 1000), "order 99", "fill f1"));
  EXPECT_EQ(TestAccess::gridFillIds(*source).value("f1"), (kNow + 1) * 1000);
}

TEST_F(TradeSrcGrid, shouldTranslateAndGiveIdsButDeliverNothingWhileDetached) {
  source->setNotify(nullptr);
  platform.calls.clear();
  tell({gridOrderOf(1)}, {gridFillOf(1, "r1")});
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.openOrdersByCode 5 1"));
  EXPECT_EQ(TestAccess::gridOrderIds(*source).size(), 1);
  EXPECT_EQ(TestAccess::gridFillIds(*source).size(), 1);
  platform.clock.set(kNow + 1);
  source->setNotify(&notify);
  tell({gridOrderOf(1)});
  EXPECT_THAT(notify.take(), ElementsAre(first));
}

TEST_F(TradeSrcGrid, shouldHoldItsMutexWhileItAsksTheService) {
  bool free = true;
  platform.calls.onCall("trade.openOrdersByCode", [&] { free = TestAccess::mutexIsFree(*source); });
  tell({gridOrderOf(1)});
  EXPECT_FALSE(free);
  EXPECT_TRUE(TestAccess::mutexIsFree(*source));
}

TEST_F(TradeSrcGrid, shouldReadTheClockForNewIdsAfterTheServiceWasAsked) {
  platform.calls.onCall("trade.openOrdersByCode", [&] { platform.clock.set(kNow + 5); });
  tell({gridOrderOf(1)});
  EXPECT_THAT(notify.take(), ElementsAre("order " + std::to_string((kNow + 5) * 1000)));
}

TEST_F(TradeSrcGrid, shouldNotRememberFinalOrdersAndFillsOfADetail) {
  // A replay after a loss of the connection must not take them for orders of the service.
  GridOrderRecord filled = gridOrderOf(1);
  filled.status = 3;
  tell({filled}, {gridFillOf(1, "r1")});
  EXPECT_TRUE(TestAccess::finishedOrderIds(*source).empty());
  EXPECT_TRUE(TestAccess::deliveredFillKeys(*source).empty());
}

TEST_F(TradeSrcGrid, shouldReachTheSourceThroughTheSpiThatTheConditionServiceWasGiven) {
  source->subDetail({1, 2, 3, "text"});
  ASSERT_NE(platform.conditions.spi(), nullptr);
  onAnotherThread([&] { platform.conditions.spi()->onCondDetail(4711, {gridOrderOf(1)}, {}); });
  EXPECT_THAT(notify.take(), ElementsAre(first));
}

}  // namespace
}  // namespace orvane::support
