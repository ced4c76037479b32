// Grids over scripted markets; fills and profits are reckoned by hand.

#include "shared/GbkLiteral.h"
#include "tests/platform/trade/conditions/GridFixture.h"

namespace orvane::testing {
namespace {

using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

std::vector<Bar> repeated(double price, int count) {
  return std::vector<Bar>(static_cast<std::size_t>(count), flat(price));
}

TEST(GridDesk, shouldBuyBelowThePriceAndSellAStepAboveWhatItBought) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")),
                        {flat(100.5), {100.5, 101, 99.5, 100}, {100, 101.5, 100, 101.5}});
  platform.at(1, [&] {
    EXPECT_EQ(platform.working(), (Lines{"buy 2@100", "buy 2@99", "buy 2@98"}));
    EXPECT_EQ(platform.fills(), Lines{});
  });
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:02 buy 2@100", "0:03 sell 2@101"}));
  EXPECT_EQ(platform.working(), (Lines{"buy 2@99", "buy 2@98", "buy 2@101", "buy 2@100"}));
  EXPECT_EQ(platform.balance(), 1'000'002);
  EXPECT_EQ(platform.state().closedProfit, "2");
  EXPECT_EQ(platform.state().sales, 1);
  EXPECT_EQ(platform.state().held, "0");
  EXPECT_EQ(platform.state().openOrders, 4);
  EXPECT_EQ(platform.state().mode, GridState::Mode::Working);
}

TEST(GridDesk, shouldFillAllThatAGapCrossesAtTheOpenAndSellEachAtItsOwnLevel) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")),
                        {flat(101.5), flat(98.5), {101.5, 102, 101.5, 102}, flat(102.5)});
  platform.at(2, [&] {
    EXPECT_EQ(platform.working(), (Lines{"buy 2@98", "sell 2@100", "sell 2@101", "sell 2@102"}));
    EXPECT_EQ(platform.state().held, "6");
  });
  platform.play();
  // Orders of one gap are filled in the order in which they were sent. 102 is only touched first.
  EXPECT_EQ(platform.fills(),
            (Lines{"0:01 buy 2@98.5", "0:01 buy 2@98.5", "0:01 buy 2@98.5", "0:02 sell 2@101.5",
                   "0:02 sell 2@101.5", "0:03 sell 2@102.5"}));
  // 2 x 2 x 3 and 2 x 4.
  EXPECT_EQ(platform.state().closedProfit, "20");
  EXPECT_EQ(platform.balance(), 1'000'020);
  EXPECT_EQ(platform.working(), (Lines{"buy 2@98", "buy 2@100", "buy 2@99", "buy 2@101"}));
}

TEST(GridDesk, shouldHoldEverythingBelowTheRangeAndNothingAboveIt) {
  GridPlatform platform(gridOptions(makeGrid("98", "100", "1", "1")),
                        {flat(150), flat(50), flat(40), flat(150)});
  platform.at(1, [&] { EXPECT_EQ(platform.working(), (Lines{"buy 1@99", "buy 1@98"})); });
  platform.at(3, [&] { EXPECT_EQ(platform.working(), (Lines{"sell 1@99", "sell 1@100"})); });
  platform.play();
  EXPECT_EQ(platform.state().held, "0");
  EXPECT_EQ(platform.state().closedProfit, "200");
  EXPECT_EQ(platform.working(), (Lines{"buy 1@99", "buy 1@98"}));
}

TEST(GridDesk, shouldStartFromTheLastPriceKnownBeforeTheRun) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1"));
  options.from = kMonday + 2 * kMinute + 1;
  // Of the bar that runs at the start the orders meet the close alone.
  GridPlatform platform(
      options, {flat(101.5), flat(99.5), {99.5, 99.5, 98.5, 99.2}, {99.2, 99.2, 98.5, 98.9}});
  platform.play();
  ASSERT_EQ(platform.orders().size(), 3u);
  EXPECT_EQ(OrderView(platform.orders()[0]).insertTime(), kMonday + 2 * kMinute + 1);
  EXPECT_EQ(platform.fills(), (Lines{"0:04 buy 1@99"}));
  EXPECT_EQ(platform.working(), (Lines{"buy 1@98", "sell 1@100"}));
}

TEST(GridDesk, shouldReckonPricesOfATickThatBinaryNumbersCannotExpress) {
  GridPlatform platform(gridOptions(makeGrid("0.1", "0.7", "0.2", "3")),
                        {flat(0.5000001), {0.5, 0.5, 0.2, 0.3}, {0.3, 0.8, 0.3, 0.8}});
  platform.play();
  EXPECT_EQ(platform.fills(),
            (Lines{"0:01 buy 3@0.5", "0:02 buy 3@0.3", "0:03 sell 3@0.5", "0:03 sell 3@0.7"}));
  EXPECT_EQ(platform.state().closedProfit, "1.2");
}

TEST(GridDesk, shouldSayThatItHasNoMoneyOnceAndAgainOnlyWhenSomethingMayHaveChanged) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "2"));
  options.trade.accounts[0].startBalance = "500";
  options.trade.marginRate = "1";
  std::vector<Bar> bars = repeated(100.5, 20);
  bars.push_back(flat(100.5, 20210105));
  bars.push_back(flat(100.5, 20210105));
  GridPlatform platform(options, bars);
  const auto rejected = [&] {
    Lines lines;
    for (const Order& order : platform.orders())
      if (OrderView(order).status() == order::Status::Rejected)
        lines.push_back(OrderView(order).message());
    return lines;
  };
  platform.at(20, [&] {
    EXPECT_EQ(rejected(), (Lines{"not enough money: needs 196, available 102"}));
    EXPECT_EQ(platform.state().trouble, "not enough money: needs 196, available 102");
    EXPECT_EQ(platform.working(), (Lines{"buy 2@100", "buy 2@99"}));
  });
  platform.play();
  EXPECT_EQ(rejected().size(), 2u);
  EXPECT_EQ(platform.state().openOrders, 2);
}

TEST(GridDesk, shouldTakeUpAWaitingLevelOnceASaleBringsTheMoney) {
  PlatformOptions options = gridOptions(makeGrid("98", "101", "1", "2"));
  options.trade.accounts[0].startBalance = "590";
  options.trade.marginRate = "1";
  // Fees of nothing, margin whole: 200 + 198 leave 192, and 196 are needed. Sold far above, there
  // is enough for all.
  GridPlatform platform(options, {flat(100.5), flat(99.5), flat(110), flat(110)});
  platform.at(1, [&] { EXPECT_EQ(platform.working(), (Lines{"buy 2@100", "buy 2@99"})); });
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:01 buy 2@99.5", "0:02 sell 2@110"}));
  EXPECT_EQ(platform.working(), (Lines{"buy 2@99", "buy 2@100", "buy 2@98"}));
  EXPECT_EQ(platform.state().trouble, "");
}

TEST(GridDesk, shouldWithdrawItsOrdersWhilePausedAndGoOnWithWhatItHolds) {
  GridPlatform platform(
      gridOptions(makeGrid("98", "102", "1", "1")),
      {flat(100.5), flat(99.5), flat(99.5), flat(98.5), flat(103), flat(99.5), flat(99.5)});
  platform.at(2, [&] { EXPECT_EQ(platform.grids().pause(1).code, 0); });
  platform.at(5, [&] {
    EXPECT_THAT(platform.working(), IsEmpty());
    EXPECT_EQ(platform.state().held, "1");
    EXPECT_EQ(platform.state().mode, GridState::Mode::Paused);
    EXPECT_EQ(platform.grids().resume(1).code, 0);
  });
  platform.at(6, [&] { EXPECT_EQ(platform.state().mode, GridState::Mode::Working); });
  platform.play();
  // What it held it offers at 101; at 103 it bids at 101 too, which 99.5 fills.
  EXPECT_EQ(platform.fills(), (Lines{"0:01 buy 1@99.5", "0:05 buy 1@99.5"}));
  EXPECT_EQ(platform.working(), (Lines{"sell 1@101", "buy 1@99", "buy 1@98", "sell 1@102"}));
}

TEST(GridDesk, shouldStopForGoodAndBeForgottenWhenRemoved) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "1")), repeated(100.5, 6));
  platform.at(2, [&] { EXPECT_EQ(platform.grids().stop(1).code, 0); });
  platform.at(3, [&] {
    EXPECT_THAT(platform.working(), IsEmpty());
    EXPECT_EQ(platform.state().mode, GridState::Mode::Stopped);
    EXPECT_EQ(platform.grids().resume(1).code, 0);
    EXPECT_EQ(platform.grids().change(1, makeGrid("90", "91", "1", "1")).message,
              std::string("无效参数"_gbk) + " grid 1 is stopped");
  });
  platform.at(4, [&] {
    EXPECT_EQ(platform.state().mode, GridState::Mode::Stopped);
    EXPECT_EQ(platform.grids().remove(1).code, 0);
    EXPECT_EQ(platform.grids().remove(1).code, 22);
    EXPECT_THAT(platform.grids().all(), IsEmpty());
  });
  platform.play();
  EXPECT_THAT(platform.working(), IsEmpty());
  EXPECT_EQ(platform.orders().size(), 3u);
}

TEST(GridDesk, shouldWithdrawTheOrdersOfAGridThatIsRemovedWhileItWorks) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "1")), repeated(100.5, 3));
  platform.at(2, [&] { EXPECT_EQ(platform.grids().remove(1).code, 0); });
  platform.at(3, [&] {
    int64 id = 0;
    EXPECT_EQ(platform.grids().create(makeGrid("98", "102", "1", "1"), id).code, 0);
    EXPECT_EQ(id, 2);
  });
  platform.play();
  EXPECT_EQ(platform.orders().size(), 6u);
  EXPECT_EQ(platform.grids().pause(1).code, 22);
}

TEST(GridDesk, shouldGoOnWhileAnotherAccountIsDown) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1", "one"));
  options.trade.accounts.push_back({"A2", "CNY", "", 1});
  options.trade.grids.push_back(makeGrid("98", "102", "1", "1", "two"));
  options.trade.grids.back().account = "A2";
  options.trade.script = {{"A2", kMonday + kMinute + 1, false}};
  GridPlatform platform(options, {flat(100.5), flat(99.5), flat(101.5)});
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:01 buy 1@99.5", "0:02 sell 1@101.5"}));
  EXPECT_EQ(platform.state(2).held, "0");
  EXPECT_EQ(platform.state(2).openOrders, 3);
}

TEST(GridDesk, shouldGoOverToAnotherRangeAndSellWhatItHeldAtItsOldPrice) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "1")),
                        {flat(100.5), flat(99.5), flat(99.5), flat(99.5), flat(104)});
  GridOptions range = makeGrid("90", "96", "3", "2");
  range.account.clear();
  range.code.clear();
  platform.at(2, [&] { EXPECT_EQ(platform.grids().change(1, range).code, 0); });
  platform.at(3, [&] {
    EXPECT_EQ(platform.working(), (Lines{"sell 1@101", "buy 2@93", "buy 2@90"}));
    EXPECT_EQ(platform.state().options.upper, "96");
    EXPECT_EQ(platform.state().options.account, "A1");
  });
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:01 buy 1@99.5", "0:04 sell 1@104"}));
  EXPECT_EQ(platform.state().closedProfit, "4.5");
}

TEST(GridDesk, shouldCreateAGridThatStartsFromThePresentPrice) {
  GridPlatform platform(tradeOptions(), repeated(100.5, 4));
  int64 id = 0;
  platform.at(2, [&] {
    GridOptions grid = makeGrid("99", "101", "1", "1", "");
    EXPECT_EQ(platform.grids().create(grid, id).code, 0);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(platform.state().mode, GridState::Mode::Waiting);
  });
  platform.at(3, [&] { EXPECT_EQ(platform.working(), (Lines{"buy 1@100", "buy 1@99"})); });
  platform.play();
  EXPECT_EQ(platform.state(id).options.name, "grid1");
  EXPECT_EQ(OrderView(platform.orders().at(0)).insertTime(), kMonday + 2 * kMinute);
}

TEST(GridDesk, shouldGoOnAfterALostConnectionWithWhatHappenedMeanwhile) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1"));
  const int64 half = kMinute / 2;
  options.trade.script = {{"A1", kMonday + kMinute + half, false},
                          {"A1", kMonday + 4 * kMinute + half, true}};
  GridPlatform platform(options, {flat(100.5),
                                  flat(100.5),
                                  {100.5, 100.5, 99.5, 99.8},
                                  flat(100.5),
                                  flat(99.8),
                                  flat(99.8),
                                  {99.8, 101.5, 99.8, 101.5}});
  platform.at(3, [&] { EXPECT_EQ(platform.state().held, "0"); });
  platform.at(5, [&] {
    EXPECT_EQ(platform.state().held, "1");
    EXPECT_EQ(platform.working(), (Lines{"buy 1@99", "buy 1@98", "sell 1@101"}));
  });
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:03 buy 1@100", "0:07 sell 1@101"}));
  EXPECT_EQ(platform.state().closedProfit, "1");
}

TEST(GridDesk, shouldNotWorkWhileTheAccountIsDownFromTheStart) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1"));
  options.trade.script = {{"A1", kMonday, false}, {"A1", kMonday + 3 * kMinute, true}};
  GridPlatform platform(options, repeated(100.5, 5));
  platform.play();
  ASSERT_EQ(platform.orders().size(), 3u);
  for (const Order& order : platform.orders())
    EXPECT_EQ(OrderView(order).insertTime(), kMonday + 3 * kMinute);
  EXPECT_EQ(platform.working().size(), 3u);
}

TEST(GridDesk, shouldSendNothingAtTheStartOnAnAccountThatIsDownThoughAPriceIsKnown) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1"));
  options.from = kMonday + 2 * kMinute + 1;
  options.trade.script = {{"A1", kMonday, false}, {"A1", kMonday + 4 * kMinute, true}};
  GridPlatform platform(options, repeated(100.5, 5));
  platform.play();
  ASSERT_EQ(platform.orders().size(), 3u);
  for (const Order& order : platform.orders())
    EXPECT_EQ(OrderView(order).insertTime(), kMonday + 4 * kMinute);
}

TEST(GridDesk, shouldKeepItsOrdersAndItsOwnProfitOverASettlement) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "2"));
  options.trade.settlesDaily = true;
  GridPlatform platform(options, {flat(100.5),
                                  {100.5, 100.5, 99.5, 100.2},
                                  flat(100.2, 20210105),
                                  {100.2, 101.5, 100.2, 101.5, 20210105}});
  platform.at(3, [&] {
    EXPECT_EQ(platform.working(), (Lines{"buy 2@99", "buy 2@98", "sell 2@101"}));
    EXPECT_NEAR(platform.balance(), 1'000'000.4, 1e-9);
  });
  platform.play();
  EXPECT_EQ(platform.fills(), (Lines{"0:02 buy 2@100", "0:04 sell 2@101"}));
  EXPECT_EQ(platform.state().closedProfit, "2");
  EXPECT_EQ(platform.balance(), 1'000'002);
}

TEST(GridDesk, shouldTryAgainWhenTheSessionOpens) {
  PlatformOptions options = gridOptions(makeGrid("99", "101", "1", "1"));
  options.trade.rejectsOutsideSessions = true;
  GridPlatform platform(options, repeated(100.5, 6));
  Instrument instrument;
  instrument.code = "A";
  instrument.market = "X";
  instrument.sessions = "00:03-00:10";
  instrument.timeZone = "UTC";
  platform->addInstrument(instrument);
  platform.at(2, [&] { EXPECT_THAT(platform.working(), IsEmpty()); });
  platform.play();
  EXPECT_EQ(platform.working(), (Lines{"buy 1@100", "buy 1@99"}));
  EXPECT_EQ(platform.state().trouble, "");
}

TEST(GridDesk, shouldMeetLaterBarsOnlyHoweverLongItsOrdersTake) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1"));
  options.trade.entryLatencyMs = kMinute;
  options.trade.reportLatencyMs = kMinute / 2;
  GridPlatform platform(
      options, {flat(100.5), flat(99.5), flat(99.5), flat(102), flat(102), flat(102), flat(102)});
  platform.play();
  // Sent at 0:01, there at 0:02; the fill is known with its bar at 0:03, and the sale is there at
  // 0:04.
  EXPECT_EQ(platform.fills(), (Lines{"0:02 buy 1@99.5", "0:04 sell 1@102"}));
}

TEST(GridDesk, shouldPlayTheSameAgainAfterARewind) {
  std::vector<Bar> bars;
  for (int i = 0; i < 60; ++i) bars.push_back(flat(100 + (i * 7 % 11) * 0.5 - (i * 5 % 7)));
  GridPlatform platform(gridOptions(makeGrid("96", "104", "0.5", "1")), bars);
  platform.play();
  const Lines first = platform.fills();
  const std::string profit = platform.state().closedProfit;
  EXPECT_GT(first.size(), 50u);
  int64 id = 0;
  EXPECT_EQ(platform.grids().create(makeGrid("1", "2", "1", "1", "other"), id).code, 0);
  EXPECT_EQ(platform.grids().remove(1).code, 0);
  platform->rewind();
  EXPECT_EQ(platform.fills(), Lines{});
  ASSERT_EQ(platform.grids().all().size(), 1u);
  EXPECT_EQ(platform.state().mode, GridState::Mode::Waiting);
  platform->run();
  EXPECT_EQ(platform.fills(), first);
  EXPECT_EQ(platform.state().closedProfit, profit);
}

TEST(GridDesk, shouldWorkTwoGridsOfOneCodeSideBySide) {
  PlatformOptions options = gridOptions(makeGrid("99", "101", "1", "1", "one"));
  options.trade.grids.push_back(makeGrid("98", "102", "2", "5", "two"));
  GridPlatform platform(options, {flat(101.5), flat(97), flat(100.5), flat(103)});
  platform.play();
  // One: 99 and 100 bought at 97, sold at 100.5 and at 103. Two: 98 and 100 bought at 97, sold at
  // 100.5 and at 103.
  EXPECT_EQ(platform.state(1).closedProfit, "9.5");
  EXPECT_EQ(platform.state(2).closedProfit, "47.5");
  EXPECT_EQ(platform.balance(), 1'000'057);
}

TEST(GridDesk, shouldCarrySourceConditionAndCellOnItsOrders) {
  GridPlatform platform(gridOptions(makeGrid("98", "100", "1", "1")), repeated(99.5, 2));
  platform.play();
  ASSERT_EQ(platform.orders().size(), 2u);
  const Order order = platform.orders()[0];
  EXPECT_EQ(order.source.sourceType, 131072);
  EXPECT_EQ(order.source.createSource, "__grid__");
  EXPECT_EQ(order.source.sourceText, "1");
  EXPECT_EQ(order.pair.first, std::to_string(order.id));
  EXPECT_EQ(order.pair.second, "1");
  EXPECT_EQ(order.ints[9], 2);
  EXPECT_EQ(platform->eventSourceOf(order.source), 32);
}

TEST(GridDesk, shouldTellItsOrdersToWhoeverSubscribesToTradingAssistants) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")),
                        {flat(98.5), flat(97.5), flat(99.5)});
  const auto recorder = std::make_shared<TradeRecorder>();
  platform.service().subscribeOrderByEventSourceId(recorder, 32, platform.account());
  platform.service().subscribeFillByEventSourceId(recorder, 32, platform.account());
  platform.play();
  const auto orders = recorder->orders();
  ASSERT_FALSE(orders.empty());
  const std::string id = std::to_string(orders[0].id);
  EXPECT_EQ(recorder->lines()[0], "@0:01 order " + id + " working");
  EXPECT_EQ(recorder->fills().size(), 2u);
}

}  // namespace
}  // namespace orvane::testing
