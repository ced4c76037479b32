#include "sdk/Holding.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>

#include "tests/sdk/OrderTexts.h"

namespace orvane {
namespace {

using test::textOf;
using test::Texts;

/// A position with a part of before today and one of today on each side.
Position positionOf(double longOlder, double longToday, double shortOlder, double shortToday) {
  Position record;
  const auto fill = [](std::array<Word, 16>& block, double older, double today) {
    block[position::Volume] = std::bit_cast<Word>(older + today);
    block[position::TodayVolume] = std::bit_cast<Word>(today);
  };
  fill(record.block1, longOlder, longToday);
  fill(record.block2, shortOlder, shortToday);
  return record;
}

Order working(const OrderRequest& request, double filled = 0) {
  Order order;
  order.values = request.values;
  order.ints = request.ints;
  OrderWriter writer(order);
  writer.setStatus(order::Status::Working);
  writer.set(order::FilledVolume, filled);
  return order;
}

Texts toTarget(const Holding& holding, double target, CloseParts parts = CloseParts::Together) {
  Texts texts;
  for (const OrderRequest& each : ordersToTarget({}, {}, holding, target, {}, parts))
    texts.push_back(textOf(each));
  return texts;
}

TEST(Orders, shouldOpenByBuyAndSell) {
  EXPECT_EQ(textOf(buy({}, {}, 2)), "buy open 2");
  EXPECT_EQ(textOf(sell({}, {}, 2)), "sell open 2");
  EXPECT_EQ(textOf(buy({}, {}, 2, 99.5)), "buy open 2 at 99.5");
  EXPECT_EQ(textOf(sell({}, {}, 1, 101)), "sell open 1 at 101");
}

TEST(Holding, shouldCloseWhatIsAgainstATargetBeforeItOpens) {
  const Holding flat;
  EXPECT_EQ(toTarget(flat, 2), (Texts{"buy open 2"}));
  EXPECT_EQ(toTarget(flat, -2), (Texts{"sell open 2"}));
  EXPECT_EQ(toTarget(flat, 0), Texts{});
  const Holding longThree = Holding::of(positionOf(1, 2, 0, 0), {});
  EXPECT_EQ(toTarget(longThree, 5), (Texts{"buy open 2"}));
  EXPECT_EQ(toTarget(longThree, 3), Texts{});
  EXPECT_EQ(toTarget(longThree, 1), (Texts{"sell close 2"}));
  EXPECT_EQ(toTarget(longThree, 0), (Texts{"sell close 3"}));
  EXPECT_EQ(toTarget(longThree, -2), (Texts{"sell close 3", "sell open 2"}));
  const Holding shortTwo = Holding::of(positionOf(0, 0, 2, 0), {});
  EXPECT_EQ(toTarget(shortTwo, 1), (Texts{"buy close 2", "buy open 1"}));
  EXPECT_EQ(toTarget(shortTwo, -3), (Texts{"sell open 1"}));
}

TEST(Holding, shouldCloseTheSideInTheWayWhereBothAreHeld) {
  const Holding both = Holding::of(positionOf(3, 0, 2, 0), {});
  EXPECT_EQ(both.expected(), 1);
  EXPECT_EQ(toTarget(both, 4), (Texts{"buy close 2", "buy open 1"}));
  EXPECT_EQ(toTarget(both, 0), (Texts{"sell close 1"}));
}

TEST(Holding, shouldCloseThePartsApartWhereTheExchangeWantsThat) {
  const Holding held = Holding::of(positionOf(2, 3, 0, 0), {});
  EXPECT_EQ(toTarget(held, 4, CloseParts::Apart), (Texts{"sell close 1"}));
  EXPECT_EQ(toTarget(held, 1, CloseParts::Apart), (Texts{"sell close 2", "sell closeToday 2"}));
  EXPECT_EQ(toTarget(held, -1, CloseParts::Apart),
            (Texts{"sell close 2", "sell closeToday 3", "sell open 1"}));
  const Holding ofToday = Holding::of(positionOf(0, 3, 0, 0), {});
  EXPECT_EQ(toTarget(ofToday, 0, CloseParts::Apart), (Texts{"sell closeToday 3"}));
}

TEST(Holding, shouldCountWhatIsAtWorkAsFilled) {
  OrderRequest closing = sell({}, {}, 2);
  OrderWriter(closing).setOffset(order::Offset::Close);
  const Holding closed = Holding::of(positionOf(1, 2, 0, 0), {working(closing)});
  EXPECT_EQ(closed.expected(), 1);
  EXPECT_EQ(closed.longSide.older, 0) << "the older part is taken first";
  EXPECT_EQ(closed.longSide.today, 1);
  EXPECT_EQ(toTarget(closed, -1), (Texts{"sell close 1", "sell open 1"}));
  const Holding opened = Holding::of(positionOf(0, 1, 0, 0), {working(buy({}, {}, 3), 1)});
  EXPECT_EQ(opened.expected(), 3) << "one of the three is in the position already";
  EXPECT_EQ(toTarget(opened, 3), Texts{});
  Order over = working(buy({}, {}, 3));
  OrderWriter(over).setStatus(order::Status::Cancelled);
  EXPECT_EQ(Holding::of({}, {over}).expected(), 0);
}

TEST(Holding, shouldLeaveTheOlderPartToOrdersThatTakeEither) {
  OrderRequest either = sell({}, {}, 2), ofToday = sell({}, {}, 1);
  OrderWriter(either).setOffset(order::Offset::Close);
  OrderWriter(ofToday).setOffset(order::Offset::CloseToday);
  const Holding held = Holding::of(positionOf(2, 2, 0, 0), {working(either), working(ofToday)});
  EXPECT_EQ(held.longSide.older, 0);
  EXPECT_EQ(held.longSide.today, 1);
}

TEST(Holding, shouldReckonVolumesWithoutBinaryRests) {
  const Holding held = Holding::of(positionOf(0.1, 0.2, 0, 0), {});
  EXPECT_EQ(toTarget(held, 0.3), Texts{});
  EXPECT_EQ(toTarget(held, 0.1), (Texts{"sell close 0.2"}));
}

}  // namespace
}  // namespace orvane
