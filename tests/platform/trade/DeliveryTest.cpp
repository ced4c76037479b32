// Who is called back, when, and in which order.

#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;
using order::Direction;

TEST(Delivery, shouldTellTheStatusOnceAfterTheSubscription) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  platform.service().subscribeStatus(spi, platform.account());
  platform.service().subscribeStatus(spi, platform.account());
  EXPECT_TRUE(spi->lines().empty());
  platform->drain();
  EXPECT_EQ(spi->lines(), Lines{"@0:01 status A1 16"});
  platform->run();
  EXPECT_EQ(spi->lines().size(), 1u);
}

TEST(Delivery, shouldNeverCallBackInsideACall) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);  // The recorder fails the test if it is called meanwhile.
  platform.buy();
  EXPECT_TRUE(spi->lines().empty());
  platform->run();
  EXPECT_FALSE(spi->fills().empty());
}

TEST(Delivery, shouldDeliverWhatARecordCausedBeforeTheRecordItself) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy();
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  const Lines lines = spi->linesOf({"order", "fill", "bar 0:02", "bar 0:03"});
  EXPECT_EQ(lines, (Lines{"@0:02 bar 0:02", "@0:02 order 1000000001 working",
                          "@0:03 order 1000000001 filled", "@0:03 fill 1000000001 buy 1@3",
                          "@0:03 bar 0:03"}));
}

TEST(Delivery, shouldTellPositionsAndCapitalThatAFillChanged) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  platform.buy(2);
  platform->run();
  const Lines lines = spi->lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "@0:02 position A 2/0"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "@0:02 source S position A 2/0"), 1);
  EXPECT_GE(std::count(lines.begin(), lines.end(), "@0:02 capital A1"), 1);
}

TEST(Delivery, shouldShowTheStateAfterTheWholeInstantInsideACallBack) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  std::vector<double> seen;
  spi->onLine = [&](const std::string& line) {
    if (line.find("fill") != 0) return;
    Position position;
    platform.service().getPosition(platform.account(), platform.code, position);
    seen.push_back(PositionView(position).longSide().volume());
  };
  platform.service().subscribeFillBySourceName(spi, "S", platform.account());
  platform.buy(1);
  platform.buy(2);
  platform->run();
  // Both fills happened on one bar before the first was told.
  EXPECT_EQ(seen, (std::vector<double>{3, 3}));
}

TEST(Delivery, shouldTellAnEventOnceWhenTwoSubscriptionsMatch) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  ITradeService& service = platform.service();
  service.subscribeOrderBySourceName(spi, "S", platform.account());
  service.subscribeOrderBySourceName(spi, "S", platform.account(), platform.code);
  service.subscribeOrderByEventSourceId(spi, 255, platform.account());
  service.subscribeFillBySourceName(spi, "S", platform.account());
  service.subscribeFillByEventSourceId(spi, 4, platform.account());
  platform.buy();
  platform->run();
  EXPECT_EQ(spi->lines(), (Lines{"@0:01 order 1000000001 working", "@0:02 order 1000000001 filled",
                                 "@0:02 fill 1000000001 buy 1@2"}));
}

TEST(Delivery, shouldSelectBySourceAndByEventSource) {
  TradePlatform platform;
  const auto ofS = std::make_shared<TradeRecorder>();
  const auto ofPrograms = std::make_shared<TradeRecorder>();
  const auto ofHands = std::make_shared<TradeRecorder>();
  platform.service().subscribeFillBySourceName(ofS, "S", platform.account());
  platform.service().subscribeFillByEventSourceId(ofPrograms, 4, platform.account());
  platform.service().subscribeFillByEventSourceId(ofHands, 2, platform.account());
  platform.buy();
  OrderRequest byHand = makeRequest(platform.account(), platform.code, Direction::Buy, 1,
                                    order::Offset::Open, "hand");
  byHand.source.sourceType = 2;
  platform.send(byHand);
  platform->run();
  EXPECT_EQ(ofS->fills().size(), 1u);
  EXPECT_EQ(ofPrograms->fills().size(), 1u);
  ASSERT_EQ(ofHands->fills().size(), 1u);
  EXPECT_EQ(FillView(ofHands->fills().front()).orderId(), 2'000'000'001);
}

TEST(Delivery, shouldCallReceiversInTheOrderOfTheirFirstSubscription) {
  TradePlatform platform;
  std::vector<std::string> calls;
  const auto first = std::make_shared<TradeRecorder>();
  const auto second = std::make_shared<TradeRecorder>();
  first->onLine = [&](const std::string& line) { calls.push_back("first " + line); };
  second->onLine = [&](const std::string& line) { calls.push_back("second " + line); };
  platform.service().subscribeCapital(first, platform.account());
  platform.service().subscribeFillBySourceName(second, "S", platform.account());
  platform.service().subscribeFillBySourceName(first, "S", platform.account());
  platform.service().unsubscribeAll(nullptr);
  platform.buy();
  platform->run();
  std::erase_if(calls, [](const std::string& call) { return call.find("fill") == call.npos; });
  EXPECT_EQ(calls, (Lines{"first fill 1000000001 buy 1@2", "second fill 1000000001 buy 1@2"}));
}

TEST(Delivery, shouldTellNothingToWhomUnsubscribed) {
  TradePlatform platform;
  const auto gone = std::make_shared<TradeRecorder>();
  const auto goneWhole = std::make_shared<TradeRecorder>();
  const auto leaving = std::make_shared<TradeRecorder>();
  platform.subscribeAll(gone);
  platform.subscribeAll(goneWhole);
  platform.subscribeAll(leaving);
  EXPECT_GT(gone.use_count(), 1);
  platform.service().unsubscribeAccount(gone, platform.account());
  platform.service().unsubscribeAll(goneWhole);
  EXPECT_EQ(gone.use_count(), 1);
  EXPECT_EQ(goneWhole.use_count(), 1);
  leaving->onLine = [&](const std::string& line) {
    if (line.find("working") != line.npos)
      platform.service().unsubscribeAccount(leaving, platform.account());
  };
  platform.buy();
  platform->run();
  EXPECT_TRUE(gone->lines().empty());
  EXPECT_TRUE(goneWhole->lines().empty());
  EXPECT_EQ(leaving->lines().back(), "@0:01 order 1000000001 working");
  EXPECT_EQ(leaving.use_count(), 1);
}

TEST(Delivery, shouldNotTellWhatHappenedBeforeTheSubscription) {
  TradePlatform platform;
  const auto first = std::make_shared<TradeRecorder>();
  const auto late = std::make_shared<TradeRecorder>();
  // Subscribed during the first call-back of an instant in which more is about to be told.
  first->onLine = [&](const std::string& line) {
    if (line.find("filled") != line.npos && late.use_count() == 1)
      platform.service().subscribeFillBySourceName(late, "S", platform.account());
  };
  platform.subscribeAll(first);
  platform.buy();
  platform->run();
  EXPECT_EQ(first->fills().size(), 1u);
  EXPECT_TRUE(late->fills().empty());
}

TEST(Delivery, shouldGoOnWhenACallBackThrows) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [](const std::string& line) {
    if (line.find("working") != line.npos) throw std::runtime_error("thrown by the test");
  };
  platform.service().subscribeOrderBySourceName(spi, "S", platform.account());
  platform.buy();
  platform->run();
  EXPECT_EQ(spi->orders().size(), 2u);
}

TEST(Delivery, shouldLetAnOrderArriveAfterTheEntryLatency) {
  PlatformOptions options = tradeOptions();
  options.trade.entryLatencyMs = 30'000;
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy();
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  // The bar from 0:02 to 0:03 was running when the order arrived at 0:02:30: its close alone.
  const Lines lines = spi->linesOf({"order", "fill"});
  EXPECT_EQ(lines, (Lines{"@0:02+30000 order 1000000001 working", "@0:03 order 1000000001 filled",
                          "@0:03 fill 1000000001 buy 1@3"}));
  EXPECT_EQ(OrderView(spi->orders().front()).arrivalTime(), kMonday + 2 * kMinute + 30'000);
  EXPECT_EQ(OrderView(spi->orders().front()).insertTime(), kMonday + 2 * kMinute);
}

TEST(Delivery, shouldShowAnOrderOnItsWayAsSent) {
  PlatformOptions options = tradeOptions();
  options.trade.entryLatencyMs = 30'000;
  TradePlatform platform(options);
  platform.buy();
  platform->drain();
  std::list<Order> orders;
  platform.service().openOrdersOfAccount(platform.account(), orders);
  ASSERT_EQ(orders.size(), 1u);
  EXPECT_EQ(orders.front().status(), 0);
}

TEST(Delivery, shouldShowACancelOnItsWayAndLetTheOrderFillMeanwhile) {
  PlatformOptions options = tradeOptions();
  options.trade.entryLatencyMs = 90'000;
  TradePlatform platform(options, 20);
  const auto spi = std::make_shared<TradeRecorder>();
  int64 id = 0;
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:01")
      id = platform.send(makeLimit(platform.account(), platform.code, Direction::Sell, 4.5));
    if (line == "bar 0:03") platform.cancel(id);
  };
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(spi->linesOf({"order"}),
            (Lines{"@0:02+30000 order 1000000001 working", "@0:03 order 1000000001 cancelPending",
                   "@0:04+30000 order 1000000001 cancelled"}));
  EXPECT_TRUE(spi->fills().empty());
}

TEST(Delivery, shouldReportAfterTheReportLatencyAndNotBefore) {
  PlatformOptions options = tradeOptions();
  options.trade.reportLatencyMs = 500;
  TradePlatform platform(options);
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  platform.subscribeBars(spi);
  platform.buy();
  platform->run();
  const Lines lines = spi->linesOf({"order", "bar 0:02"});
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "@0:01+500 order 1000000001 working");
  // What a bar decided is told once the bar is over, whenever in the bar it happened.
  EXPECT_NE(std::find(lines.begin() + 1, lines.end(), "@0:02 bar 0:02"), lines.end());
  const std::string filled = lines[1].find("filled") != std::string::npos ? lines[1] : lines[2];
  EXPECT_TRUE(filled == "@0:02 order 1000000001 filled" ||
              filled == "@0:02+500 order 1000000001 filled")
      << filled;
}

TEST(Delivery, shouldGiveARunnerOneEventABatch) {
  TradePlatform platform;
  const auto runner = std::make_shared<TradeRunner>([&](TradeRunner&, const std::string& event) {
    if (event.rfind("bar", 0) == 0) {
      platform.buy();
      platform.buy();
    }
  });
  platform.subscribeAll(runner);
  platform.subscribeBars(runner);
  platform->run();
  EXPECT_EQ(runner->fills().size(), 18u);
  for (const std::string& line : runner->linesOf({"batch"}))
    EXPECT_NE(line.find("batch of 1"), std::string::npos) << line;
}

}  // namespace
}  // namespace orvane::testing
