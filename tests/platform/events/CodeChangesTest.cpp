#include <gmock/gmock.h>

#include <latch>
#include <limits>

#include "services/QuoteClient/ISystemEvent.h"
#include "tests/platform/events/EventFixture.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

ICodeService& codes() { return *IServiceRouter::instance()->quoteHub()->codeService(); }

ICodeProperty propertyOf(const ICodeID& code) {
  ICodeProperty property;
  EXPECT_EQ(codes().currentCodeProperty(code, property, kUnsetTime).code, 0);
  return property;
}

/// As a strategy does it: everything as it was read, but for what is changed.
void hand(ICodeProperty property) {
  EXPECT_EQ(codes().correctUserProp(property).code, 0);
  EXPECT_EQ(codes().setUserCodeProperties({property}).code, 0);
  ISystemEvent::instance()->codePropertyChanged(property, 1);
}

TEST(CodeChanges, shouldKeepBothWhenTwoRunnersChangeDifferentPropertiesAtOneTime) {
  PlatformOptions options;
  options.poolThreads = 3;
  InstalledPlatform platform(options);
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 1));
  std::latch bothRead(2);
  const auto runner = [&](auto change) {
    return std::make_shared<RunnerSpi>([&, change](const std::string& event) {
      if (event.find("0:01") == std::string::npos) return;
      ICodeProperty property = propertyOf(code);
      bothRead.arrive_and_wait();
      change(property);
      hand(property);
      // Nobody sees it before everybody does.
      EXPECT_EQ(propertyOf(code).feePerLot, 0);
    });
  };
  auto one = runner([](ICodeProperty& property) { property.feePerLot = 2; });
  auto two = runner([](ICodeProperty& property) { property.name = "two"; });
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, one, 1);
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, two, 2);
  platform->run();
  EXPECT_EQ(propertyOf(code).feePerLot, 2);
  EXPECT_EQ(propertyOf(code).name, "two");
}

TEST(CodeChanges, shouldNotLetAnOldReadingUndoWhatSomebodyElseChangedSince) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  ICodeProperty old = propertyOf(code), other = old;
  other.multiplier = 5;
  hand(other);
  platform->drain();
  old.lotSize = 100;
  hand(old);
  platform->drain();
  EXPECT_EQ(propertyOf(code).multiplier, 5);
  EXPECT_EQ(propertyOf(code).lotSize, 100);
}

TEST(CodeChanges, shouldGoBackToAnEarlierValueWhenNothingElseIsNew) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  const ICodeProperty first = propertyOf(code);
  ICodeProperty changed = first;
  changed.multiplier = 5;
  hand(changed);
  platform->drain();
  EXPECT_EQ(propertyOf(code).multiplier, 5);
  hand(first);
  platform->drain();
  EXPECT_EQ(propertyOf(code).multiplier, 1);
}

TEST(CodeChanges, shouldBeToldAsAGeneralEventOnceTheyHold) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  auto spi = makeEventSpi();
  double seen = 0;
  spi->onTold = [&] { seen = propertyOf(code).priceTick; };
  subscribe(spi, "system", "codeProperty", {"A.X"});
  ICodeProperty property = propertyOf(code);
  property.priceTick = 0.25;
  hand(property);
  platform->drain();
  ASSERT_EQ(spi->handled().size(), 1u);
  EXPECT_THAT(spi->handled()[0], HasSubstr("change=1"));
  EXPECT_THAT(spi->handled()[0], HasSubstr("key=A.X"));
  EXPECT_THAT(spi->handled()[0], HasSubstr("priceTick=0.25"));
  EXPECT_EQ(seen, 0.25);
}

TEST(CodeChanges, shouldBeForgottenOnARewind) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  ICodeProperty property = propertyOf(code);
  property.lotSize = 100;
  hand(property);
  platform->drain();
  EXPECT_EQ(propertyOf(code).lotSize, 100);
  platform->rewind();
  EXPECT_EQ(propertyOf(code).lotSize, 1);
}

TEST(CodeChanges, shouldNotGrowWhenTheSameIsHandedInAgain) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  ICodeProperty property = propertyOf(code);
  property.lotSize = 100;
  for (int i = 0; i < 3; ++i) {
    hand(property);
    platform->drain();
  }
  std::vector<ITimeCodeProp> history;
  EXPECT_EQ(codes().historyCodeProperties(code, history, 0).code, 0);
  EXPECT_EQ(history.size(), 2u) << "what was there, and the one change";
}

TEST(CodeChanges, shouldRefuseANumberThatIsNone) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  for (const double number : {kNone, kEndless, -kEndless}) {
    ICodeProperty property = propertyOf(code);
    property.feeRate = number;
    for (const ResultStatus& status :
         {codes().setUserCodeProperties({property}), codes().correctUserProp(property)}) {
      EXPECT_EQ(status.code, -2) << number;
      EXPECT_THAT(status.message, HasSubstr("feeRate"));
    }
  }
  platform->drain();
  EXPECT_EQ(propertyOf(code).feeRate, 0);
}

}  // namespace
}  // namespace orvane::testing
