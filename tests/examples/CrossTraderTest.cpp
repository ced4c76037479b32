// What sma_cross orders on hand-made closes: its signals, its orders, and a market that fills each
// order at the next open.

#include "examples/sma_cross/CrossTrader.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "examples/sma_cross/ExactCross.h"

namespace {

using orvane::Order;
using orvane::OrderFill;
using orvane::OrderRequest;
using orvane::OrderView;
using Mode = CrossTrader::Mode;
using Texts = std::vector<std::string>;

/// Answers the orders of a trader as an exchange would, when the test says so.
class Desk {
 public:
  explicit Desk(Mode mode, double volume = 1) : trader_({}, {}, mode, volume) {}

  /// Sends what the signal calls for, and answers it as texts such as "buy close 2".
  Texts signal(bool isUp) {
    Texts texts;
    for (const OrderRequest& request : trader_.ordersFor(isUp)) {
      Order order;
      order.id = ++lastId_;
      order.values = request.values;
      order.ints = request.ints;
      trader_.sent(order);
      texts.push_back(textOf(OrderView(order)));
      pending_.push_back(order);
    }
    return texts;
  }

  /// Ends every order on its way: filled, as a fill and the order's last state, or rejected.
  void answer(orvane::order::Status status) {
    for (; !pending_.empty(); pending_.pop_front()) {
      Order order = pending_.front();
      orvane::OrderWriter(order).setStatus(status);
      if (status == orvane::order::Status::Filled) {
        order.values[orvane::order::FilledVolume] = order.values[orvane::order::Volume];
        trader_.onOrder(order);
        OrderFill fill;
        fill.direction() = order.ints[orvane::order::DirectionAt];
        fill.values[orvane::fill::Volume] = order.values[orvane::order::Volume];
        fill.numbers[orvane::fill::OrderId] = order.id;
        trader_.onFill(fill);
      } else {
        trader_.onOrder(order);
      }
    }
  }
  void fillAll() { answer(orvane::order::Status::Filled); }

  /// Fills half of the one order on its way and leaves it working.
  void fillHalf() {
    Order& order = pending_.front();
    const double half = OrderView(order).volume() / 2;
    orvane::OrderWriter writer(order);
    writer.set(orvane::order::FilledVolume, half);
    writer.setStatus(orvane::order::Status::PartlyFilled);
    trader_.onOrder(order);
    OrderFill fill;
    fill.direction() = order.ints[orvane::order::DirectionAt];
    fill.values[orvane::fill::Volume] = std::bit_cast<orvane::Word>(half);
    trader_.onFill(fill);
  }

  double held() const { return trader_.held(); }
  bool knows(orvane::int64 id) const { return trader_.knows(id); }
  std::size_t pending() const { return pending_.size(); }

  static std::string textOf(const OrderView& view) {
    EXPECT_EQ(view.type(), orvane::order::Type::Market);
    EXPECT_EQ(view.timeInForce(), orvane::order::TimeInForce::UntilCancelled);
    return std::string(view.isBuy() ? "buy " : "sell ") +
           (view.offset() == orvane::order::Offset::Open ? "open " : "close ") +
           std::to_string(static_cast<int>(view.volume()));
  }

 private:
  CrossTrader trader_;
  std::deque<Order> pending_;
  orvane::int64 lastId_ = 0;
};

/// Every order over the closes, each as "bar order": the bar whose open it fills at, or "-" if no
/// bar came any more.
Texts play(Mode mode, double volume, const std::vector<double>& closes) {
  ExactCross cross(1, 2);
  Desk desk(mode, volume);
  Texts result;
  for (std::size_t i = 0; i < closes.size(); ++i) {
    desk.fillAll();
    const ExactCross::Signal signal = cross.add(closes[i]);
    if (signal == ExactCross::Signal::None) continue;
    const std::string bar = i + 1 < closes.size() ? std::to_string(i + 1) : "-";
    for (const std::string& text : desk.signal(signal == ExactCross::Signal::Up))
      result.push_back(bar + " " + text);
  }
  return result;
}

// With means of 1 and 2 closes, the difference has the sign of the last step.

TEST(CrossTrader, shouldBuyWhenFlatAndSellWhenLongInLongOnly) {
  EXPECT_EQ(play(Mode::LongOnly, 1, {5, 4, 6, 7, 5, 4, 6, 6}),
            (Texts{"3 buy open 1", "5 sell close 1", "7 buy open 1"}));
}

TEST(CrossTrader, shouldNotSellWhenFlatInLongOnly) {
  EXPECT_EQ(play(Mode::LongOnly, 1, {4, 5, 3, 3}), Texts{});
}

TEST(CrossTrader, shouldOpenFromFlatOnEitherCrossInLongShort) {
  EXPECT_EQ(play(Mode::LongShort, 2, {4, 5, 3, 3}), (Texts{"3 sell open 2"}));
  EXPECT_EQ(play(Mode::LongShort, 2, {5, 4, 6, 6}), (Texts{"3 buy open 2"}));
}

TEST(CrossTrader, shouldCloseAndReverseInLongShort) {
  EXPECT_EQ(
      play(Mode::LongShort, 3, {5, 4, 6, 5, 6, 6}),
      (Texts{"3 buy open 3", "4 sell close 3", "4 sell open 3", "5 buy close 3", "5 buy open 3"}));
}

TEST(CrossTrader, shouldTakeEqualMeansForNoChange) {
  // Down, equal, up: one cross, at the up. Up, equal, up: none. Up, equal, down: at the down.
  EXPECT_EQ(play(Mode::LongOnly, 1, {5, 4, 4, 6, 6, 7, 7, 3, 3}),
            (Texts{"4 buy open 1", "8 sell close 1"}));
}

TEST(CrossTrader, shouldNeverFillASignalOfTheLastBar) {
  EXPECT_EQ(play(Mode::LongOnly, 1, {5, 4, 6}), (Texts{"- buy open 1"}));
}

TEST(CrossTrader, shouldNotDoubleAnOrderThatIsOnItsWay) {
  Desk desk(Mode::LongOnly);
  EXPECT_EQ(desk.signal(true), (Texts{"buy open 1"}));
  EXPECT_EQ(desk.signal(true), Texts{});
  desk.fillAll();
  EXPECT_EQ(desk.held(), 1);
  EXPECT_EQ(desk.signal(true), Texts{});
  EXPECT_EQ(desk.signal(false), (Texts{"sell close 1"}));
  EXPECT_EQ(desk.signal(false), Texts{});
  desk.fillAll();
  EXPECT_EQ(desk.held(), 0);
}

TEST(CrossTrader, shouldCountTheRestOfAPartlyFilledOrderAsOnItsWay) {
  Desk desk(Mode::LongOnly, 4);
  desk.signal(true);
  desk.fillHalf();
  EXPECT_EQ(desk.held(), 2);
  EXPECT_EQ(desk.signal(true), Texts{});
}

TEST(CrossTrader, shouldTryAgainAtTheNextSignalAfterARejection) {
  Desk desk(Mode::LongShort, 2);
  EXPECT_EQ(desk.signal(true), (Texts{"buy open 2"}));
  desk.answer(orvane::order::Status::Rejected);
  EXPECT_EQ(desk.held(), 0);
  EXPECT_EQ(desk.signal(false), (Texts{"sell open 2"}));
  desk.fillAll();
  EXPECT_EQ(desk.held(), -2);
}

TEST(CrossTrader, shouldKnowItsOwnOrdersAlone) {
  Desk desk(Mode::LongOnly);
  desk.signal(true);
  EXPECT_TRUE(desk.knows(1));
  EXPECT_FALSE(desk.knows(2));
  desk.fillAll();
  EXPECT_TRUE(desk.knows(1));
}

}  // namespace
