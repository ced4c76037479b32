#include "platform/market/BarAudit.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

constexpr int64 kFromTheStart = std::numeric_limits<int64>::min();

std::vector<IKLine> goodBars() {
  const Rows<IKLine> bars = makeBars({}, kMonday, kMinute, 5).bars;
  return {bars.begin(), bars.end()};
}

detail::BarAudit audit(const std::vector<IKLine>& bars) {
  return detail::auditBars(bars, kMinute, kFromTheStart);
}

TEST(BarAudit, shouldFindNothingInGoodBarsAndCountThem) {
  const detail::BarAudit found = audit(goodBars());
  EXPECT_EQ(found.bars, 5u);
  EXPECT_EQ(found.faults, 0u);
  EXPECT_EQ(found.first, "");
  EXPECT_EQ(audit({}).bars, 0u);
}

TEST(BarAudit, shouldNameDuplicatesBackwardTimesAndOverlaps) {
  std::vector<IKLine> bars = goodBars();
  bars[2] = bars[1];
  EXPECT_EQ(audit(bars).first, "bar 3: it has the times of the bar before");
  bars = goodBars();
  std::swap(bars[1], bars[2]);
  EXPECT_EQ(audit(bars).first, "bar 3: its end is not after that of the bar before");
  bars = goodBars();
  KLineWriter(bars[3]).setTimes(kMonday + 3 * kMinute - 1, kMonday + 4 * kMinute - 1);
  EXPECT_EQ(audit(bars).first, "bar 4: it begins before the bar before has ended");
  EXPECT_EQ(audit(bars).faults, 1u);
}

TEST(BarAudit, shouldNameWhatIsWrongWithABarByItself) {
  const auto spoilt = [](kline::Word at, double value) {
    std::vector<IKLine> bars = goodBars();
    KLineWriter(bars[2]).set(at, value);
    return audit(bars).first;
  };
  EXPECT_EQ(spoilt(kline::High, 2), "bar 3: high 2 is below open 3");
  EXPECT_EQ(spoilt(kline::Low, 4), "bar 3: open 3 is below low 4");
  EXPECT_EQ(spoilt(kline::Volume, -1), "bar 3: volume -1 is not a volume");
  EXPECT_EQ(spoilt(kline::OpenInterest, -1), "bar 3: open interest -1 is not a volume");
  EXPECT_EQ(spoilt(kline::Close, std::numeric_limits<double>::quiet_NaN()),
            "bar 3: close NaN is not a price");
  std::vector<IKLine> bars = goodBars();
  KLineWriter(bars[0]).setTimes(kMonday + kMinute, kMonday);
  EXPECT_NE(audit(bars).first.find("bar 1: begin time"), std::string::npos);
}

TEST(BarAudit, shouldLookAtBarsFromATimeOnAlone) {
  std::vector<IKLine> bars = goodBars();
  KLineWriter(bars[0]).set(kline::Volume, -1);
  const detail::BarAudit found = detail::auditBars(bars, kMinute, kMonday + kMinute);
  EXPECT_EQ(found.bars, 4u);
  EXPECT_EQ(found.faults, 0u);
}

TEST(BarAudit, shouldBearDaysOf25HoursAndMonthsOf31Days) {
  std::vector<IKLine> day{makeBar(kMonday, kMonday + 25 * kHour, 1, 1, 1, 1)};
  EXPECT_EQ(detail::auditBars(day, kDay, kFromTheStart).faults, 0u);
  std::vector<IKLine> month{makeBar(kMonday, kMonday + 31 * kDay, 1, 1, 1, 1)};
  EXPECT_EQ(detail::auditBars(month, 30 * kDay, kFromTheStart).faults, 0u);
  std::vector<IKLine> hour{makeBar(kMonday, kMonday + kHour + 1, 1, 1, 1, 1)};
  EXPECT_EQ(detail::auditBars(hour, kHour, kFromTheStart).faults, 1u);
}

}  // namespace
}  // namespace orvane::testing
