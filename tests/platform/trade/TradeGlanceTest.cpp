// What a view sees of the accounts while a run goes on.

#include <atomic>
#include <thread>

#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using order::Direction;

/// Buys two at the open of the third bar and sells them at that of the sixth.
std::shared_ptr<TradeRecorder> trader(TradePlatform& platform,
                                      std::function<void(const std::string&)> onBar = {}) {
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&platform, onBar = std::move(onBar)](const std::string& line) {
    if (line == "bar 0:02") platform.buy(2);
    if (line == "bar 0:05")
      platform.send(
          makeRequest(platform.account(), platform.code, Direction::Sell, 2, order::Offset::Close));
    if (onBar) onBar(line);
  };
  platform.subscribeBars(spi);
  return spi;
}

TEST(TradeGlance, shouldTellHowAnAccountStandsInTheMidstOfTheRun) {
  TradePlatform platform;
  std::map<std::string, AccountGlance> seen;
  trader(platform, [&](const std::string& line) {
    const std::vector<AccountGlance> glances = platform->glanceAtTrading();
    ASSERT_EQ(glances.size(), 1u);
    seen[line] = glances.front();
  });
  platform->run();
  EXPECT_EQ(seen["bar 0:02"].account.account, "A1");
  EXPECT_EQ(seen["bar 0:02"].startBalance, 1'000'000);
  EXPECT_EQ(seen["bar 0:02"].equity, 1'000'000);
  EXPECT_TRUE(seen["bar 0:02"].sources.empty());
  // Bought at 3; this bar closed at 4.
  const AccountGlance& held = seen["bar 0:04"];
  EXPECT_EQ(held.balance, 1'000'000);
  EXPECT_EQ(held.equity, 1'000'002);
  ASSERT_EQ(held.sources.size(), 1u);
  EXPECT_EQ(held.sources[0].source, "S");
  EXPECT_EQ(held.sources[0].result, 2);
  ASSERT_EQ(held.sources[0].positions.size(), 1u);
  EXPECT_EQ(held.sources[0].positions[0].code.code, platform.code.code);
  EXPECT_EQ(held.sources[0].positions[0].longVolume, 2);
  EXPECT_EQ(held.sources[0].positions[0].shortVolume, 0);
  // Sold at 6.
  const AccountGlance& sold = seen["bar 0:08"];
  EXPECT_EQ(sold.balance, 1'000'006);
  ASSERT_EQ(sold.sources.size(), 1u);
  EXPECT_EQ(sold.sources[0].result, 6);
  EXPECT_TRUE(sold.sources[0].positions.empty());
}

TEST(TradeGlance, shouldChangeNothingHoweverOftenItIsTaken) {
  const auto curveOf = [](bool isWatched) {
    TradePlatform platform;
    const auto spi = trader(platform);
    std::atomic<bool> isOver = false;
    std::thread watcher([&] {
      while (isWatched && !isOver) EXPECT_EQ(platform->glanceAtTrading().size(), 1u);
    });
    platform->run();
    isOver = true;
    watcher.join();
    std::vector<std::string> points = spi->lines();
    const AccountResult result = platform->tradeResults().at(0);
    for (const EquityPoint& point : result.curve)
      points.push_back(std::to_string(point.time) + " " + number(point.equity));
    return points;
  };
  const std::vector<std::string> expected = curveOf(false);
  EXPECT_GT(expected.size(), 15u);
  EXPECT_EQ(curveOf(true), expected);
}

}  // namespace
}  // namespace orvane::testing
