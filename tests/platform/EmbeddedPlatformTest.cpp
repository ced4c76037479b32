#include "platform/EmbeddedPlatform.h"

#include "platform/core/ModuleLoader.h"
#include "services/Common/DllLoader.h"
#include "services/Common/IDataService.h"
#include "services/Common/ITradeService.h"
#include "services/Common/QuoteUtils.h"
#include "services/ov.publisher/IPublisher.h"
#include "shared/CodeTables.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

TEST(EmbeddedPlatform, shouldReadTheCalendarInItsOwnZoneAndInUtc) {
  PlatformOptions options;
  options.timeZone = "Asia/Shanghai";
  options.from = kMonday;
  options.timeInLog = false;
  InstalledPlatform platform(options);
  EXPECT_EQ(Timestamp::now(0).toDateTimeString(), "2021-01-04 08:00:00.000");
  EXPECT_EQ(Timestamp::now(1).toDateTimeString(), "2021-01-04 00:00:00.000");
  EXPECT_FALSE(isTimeEnabled());
  EXPECT_THROW(EmbeddedPlatform({.timeZone = "Nowhere/Land"}), std::invalid_argument);
}

TEST(EmbeddedPlatform, shouldRefuseASecondSeriesAndRowsOutOfOrder) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 2));
  EXPECT_THROW(platform->addBars(makeBars(code, kMonday, kMinute, 2)), std::invalid_argument);
  platform->addTicks(makeTicks(code, {kMonday, kMonday}));
  EXPECT_THROW(platform->addTicks(makeTicks(code, {kMonday})), std::invalid_argument);
  const ICodeID other = platform.code("B");
  EXPECT_THROW(platform->addTicks(makeTicks(other, {kMonday + 1, kMonday})), std::invalid_argument);
  BarSeries backwards = makeBars(other, kMonday, kMinute, 2);
  std::swap(backwards.bars[0], backwards.bars[1]);
  EXPECT_THROW(platform->addBars(std::move(backwards)), std::invalid_argument);
}

TEST(EmbeddedPlatform, shouldAnswerThatItDoesNotSupportWhatIsNotThereYet) {
  InstalledPlatform platform;
  const auto refused = [](const ResultStatus& status) {
    return status.code == 23 && status.message == statusMessage(23);
  };
  std::list<Order> orders;
  ITradeService* trade = platform->router()->tradeService();
  EXPECT_EQ(trade->sendOrder({}, orders).code, 22);
  EXPECT_EQ(trade->tradingAccountCount(), 0);
  EXPECT_TRUE(trade->tradingAccounts().empty());
  std::string answer;
  EXPECT_TRUE(refused(platform->router()->quoteHub()->dataService()->queryOp("?", answer)));
  const std::unique_ptr<IPublisher> publisher(IPublisher::create(0));
  EXPECT_TRUE(refused(publisher->publisherOp5("", "", 0, 0, "", 0, 0)));
}

TEST(EmbeddedPlatform, shouldLoadModulesAndAskTheHookForTheirSymbols) {
  InstalledPlatform platform;
  std::string asked;
  void* original = nullptr;
  platform->setSymbolHook([&](const std::string& symbol, void* address) -> void* {
    asked = symbol;
    original = address;
    return &asked;
  });
  DllLoader loader;
  loader.load(L"libz.so.1");
  EXPECT_FALSE(loader.hasError()) << loader.getErrorMsg();
  loader.seekProcAddress("zlibVersion");
  EXPECT_EQ(asked, "zlibVersion");
  EXPECT_NE(original, nullptr);
  EXPECT_EQ(loader.getProcAddress(), &asked);
  loader.seekProcAddress("noSuchSymbol");
  EXPECT_TRUE(loader.hasError());
  DllLoader none;
  none.load(L"./没有.so");
  EXPECT_NE(none.getErrorMsg().find(".so"), std::string::npos);
}

TEST(EmbeddedPlatform, shouldServeOnePlatformAfterAnotherInOneProcess) {
  for (const int threads : {1, 4, 2}) {
    PlatformOptions options;
    options.poolThreads = threads;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 50));
    auto runner = std::make_shared<RunnerSpi>(nullptr);
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
    platform->run();
    EXPECT_EQ(runner->handled().size(), 51u);
  }
}

}  // namespace
}  // namespace orvane::testing
