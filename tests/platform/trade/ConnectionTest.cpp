// Accounts that lose their connection and get it back.

#include "shared/CodeTables.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;
using order::Direction;

/// Down from minute 3 to minute 6.
PlatformOptions outage(const std::string& account = "A1") {
  PlatformOptions options = tradeOptions({"A1", "A2"});
  options.trade.script = {{account, kMonday + 3 * kMinute, false},
                          {account, kMonday + 6 * kMinute, true}};
  return options;
}

TEST(Connection, shouldTellTheStatusBeforeTheMarketDataOfThatInstant) {
  TradePlatform platform(outage());
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account());
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(spi->linesOf({"status", "bar 0:03", "bar 0:06"}),
            (Lines{"@0:01 status A1 16", "@0:03 status A1 17", "@0:03 bar 0:03",
                   "@0:06 status A1 16", "@0:06 bar 0:06"}));
}

TEST(Connection, shouldTellAnAccountsStatusToItsOwnSubscribersAlone) {
  TradePlatform platform(outage("A2"));
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account(0));
  platform->run();
  EXPECT_EQ(spi->lines(), Lines{"@0:01 status A1 16"});
}

TEST(Connection, shouldChangeAtATimeWithoutMarketData) {
  PlatformOptions options = tradeOptions();
  options.trade.script = {{"A1", kMonday + 2 * kMinute + 1234, false}};
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account());
  platform->run();
  EXPECT_EQ(spi->lines().back(), "@0:02+1234 status A1 17");
}

TEST(Connection, shouldTellThePresentStatusToWhoeverSubscribesMeanwhile) {
  TradePlatform platform(outage());
  const auto spi = std::make_shared<TradeRecorder>();
  const auto late = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:04") platform.service().subscribeStatus(late, platform.account());
  };
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(late->lines(), (Lines{"@0:04 status A1 17", "@0:06 status A1 16"}));
}

TEST(Connection, shouldSayNothingWhenTheScriptChangesNothing) {
  PlatformOptions options = tradeOptions();
  options.trade.script = {{"A1", kMonday + 2 * kMinute, true}};
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account());
  platform->run();
  EXPECT_EQ(spi->lines(), Lines{"@0:01 status A1 16"});
}

TEST(Connection, shouldLoseCallBacksWhileItIsDownAndKeepTheirOutcome) {
  TradePlatform platform(outage());
  const auto spi = std::make_shared<TradeRecorder>();
  std::vector<std::string> found;
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02")
      platform.send(makeLimit(platform.account(), platform.code, Direction::Sell, 4.5));
    if (line != "status A1 16") return;
    std::list<Order> orders;
    std::list<OrderFill> fills;
    EXPECT_EQ(platform.service().ordersOfAccount(platform.account(), orders).code, 0);
    EXPECT_EQ(platform.service().fillsOfAccount(platform.account(), fills).code, 0);
    for (const Order& order : orders) found.push_back(lineOf(order));
    for (const OrderFill& fill : fills) found.push_back(lineOf(fill));
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  // The order filled on the bar that ended at 0:05, while nobody could be told.
  EXPECT_EQ(spi->linesOf({"order", "fill"}), Lines{"@0:02 order 1000000001 working"});
  EXPECT_EQ(found, (Lines{"order 1000000001 filled", "fill 1000000001 sell 1@5"}));
}

TEST(Connection, shouldRejectOrdersWithATextWhileItIsDown) {
  TradePlatform platform(outage());
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:04") platform.buy();
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_TRUE(spi->orders().empty());
  Order order;
  ASSERT_EQ(platform.service().getOrder(1'000'000'001, order).code, 0);
  EXPECT_EQ(OrderView(order).status(), order::Status::Rejected);
  EXPECT_EQ(OrderView(order).message(), "account not connected");
  EXPECT_EQ(OrderView(order).reason(), -6);
  EXPECT_EQ(OrderView(order).arrivalTime(), 0);
}

TEST(Connection, shouldAnswerQuestionsWithNotConnectedWhileItIsDown) {
  TradePlatform platform(outage());
  const auto spi = std::make_shared<TradeRecorder>();
  const ResultStatus down{-6, statusMessage(-6)};
  int asked = 0;
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02")
      platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 0.5));
    if (line != "bar 0:04") return;
    ++asked;
    ITradeService& service = platform.service();
    const TradingAccountID& account = platform.account();
    std::list<Order> orders;
    std::list<OrderFill> fills;
    std::list<Position> positions;
    std::list<SourcePosition> parts;
    std::list<HistoryDayRecord> days;
    Order order;
    Position position;
    SourcePosition part;
    TradingAccount capital;
    HistoryQuery history;
    history.accounts = {account};
    EXPECT_EQ(service.ordersOfAccount(account, orders), down);
    EXPECT_EQ(service.openOrdersOfAccount(account, orders), down);
    EXPECT_EQ(service.ordersByCode(account, platform.code, orders), down);
    EXPECT_EQ(service.openOrdersByCode(account, platform.code, orders), down);
    EXPECT_EQ(service.ordersByKey(account, "x", orders), down);
    EXPECT_EQ(service.fillsOfAccount(account, fills), down);
    EXPECT_EQ(service.fillsByCode(account, platform.code, fills), down);
    EXPECT_EQ(service.fillQueryForward(1'000'000'001, fills), down);
    EXPECT_EQ(service.getOrder(1'000'000'001, order), down);
    EXPECT_EQ(service.getPosition(account, platform.code, position), down);
    EXPECT_EQ(service.getPositions(account, positions, 32), down);
    EXPECT_EQ(service.getSourcePosition(account, "S", platform.code, part), down);
    EXPECT_EQ(service.sourcePositions(account, parts), down);
    EXPECT_EQ(service.getCapital(account, capital), down);
    EXPECT_EQ(service.queryHistory(history, days), down);
    EXPECT_EQ(platform.cancel(1'000'000'001), down);
    // The other account does not care.
    EXPECT_EQ(service.ordersOfAccount(platform.account(1), orders).code, 0);
    EXPECT_EQ(service.tradingAccountCount(), 2);
  };
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(asked, 1);
}

TEST(Connection, shouldLoseReportsThatWereOnTheirWay) {
  PlatformOptions options = outage();
  options.trade.reportLatencyMs = 4 * kMinute;
  TradePlatform platform(options, 20);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  platform.buy();  // Filled at 0:02; to be told at 0:06, when the connection is there again.
  platform->run();
  EXPECT_TRUE(spi->orders().empty());
  EXPECT_TRUE(spi->fills().empty());
  std::list<OrderFill> fills;
  platform.service().fillsOfAccount(platform.account(), fills);
  EXPECT_EQ(fills.size(), 1u);
}

TEST(Connection, shouldLetAnOrderArriveThatWasSentBeforeTheLoss) {
  PlatformOptions options = outage();
  options.trade.entryLatencyMs = 90'000;
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy();
  };
  platform.subscribeBars(spi);
  platform->run();
  std::list<OrderFill> fills;
  platform.service().fillsOfAccount(platform.account(), fills);
  EXPECT_EQ(fills.size(), 1u);
}

TEST(Connection, shouldBeConnectedAgainAfterARewind) {
  PlatformOptions options = tradeOptions();
  options.trade.script = {{"A1", kMonday + 5 * kMinute, false}};
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account());
  platform->run();
  platform->drain();
  TradingAccount capital;
  EXPECT_EQ(platform.service().getCapital(platform.account(), capital).code, -6);
  platform->rewind();
  EXPECT_EQ(platform.service().getCapital(platform.account(), capital).code, 0);
  platform->run();
  EXPECT_EQ(spi->lines(),
            (Lines{"@0:01 status A1 16", "@0:05 status A1 17", "@0:05 status A1 17"}));
}

}  // namespace
}  // namespace orvane::testing
