#include "host/MonthlyReturns.h"
#include "tests/host/Durations.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using test::kDay;
using test::kHour;
constexpr int64 kFebruary = 1'612'137'600'000;  // 2021-02-01 00:00 UTC.

std::vector<MonthlyReturn> inZone(const std::string& zone, const EquityCurve& curve,
                                  double start = 100) {
  return monthlyReturns(start, curve, ZoneOffsets(zone));
}

TEST(MonthlyReturns, shouldGoFromTheLastEquityOfOneMonthToThatOfTheNext) {
  const auto months = inZone("UTC", {{kFebruary - 2 * kDay, 100, 0},
                                     {kFebruary - 1, 110, 0},
                                     {kFebruary, 90, 0},
                                     {kFebruary + 5 * kDay, 121, 0},
                                     {kFebruary + 60 * kDay, 60.5, 0}});
  ASSERT_EQ(months.size(), 3u);
  EXPECT_EQ(months[0].year, 2021);
  EXPECT_EQ(months[0].month, 1);
  EXPECT_NEAR(months[0].value, 0.1, 1e-15);
  EXPECT_EQ(months[1].month, 2);
  EXPECT_NEAR(months[1].value, 0.1, 1e-15);
  EXPECT_EQ(months[2].month, 4);
  EXPECT_NEAR(months[2].value, -0.5, 1e-15);
}

TEST(MonthlyReturns, shouldCutMonthsByTheCalendarOfTheZone) {
  const EquityCurve curve = {{kFebruary - 9 * kHour, 110, 0}, {kFebruary - 8 * kHour, 121, 0}};
  EXPECT_EQ(inZone("UTC", curve).size(), 1u);
  const auto months = inZone("Asia/Shanghai", curve);
  ASSERT_EQ(months.size(), 2u);
  EXPECT_NEAR(months[1].value, 0.1, 1e-15);
}

TEST(MonthlyReturns, shouldMultiplyUpToTheReturnOfTheWholeCurve) {
  EquityPoints curve;
  for (int i = 0; i < 700; ++i) curve.push_back({kFebruary + i * kDay, 100.0 + (i * 37) % 41, 0});
  double product = 1;
  for (const MonthlyReturn& month : inZone("UTC", curve)) product *= 1 + month.value;
  EXPECT_NEAR(product, curve.back().equity / 100, 1e-12);
}

TEST(MonthlyReturns, shouldEndWhereNoMoneyIsLeft) {
  const auto months = inZone("UTC", {{kFebruary, 0, 0}, {kFebruary + 40 * kDay, 10, 0}});
  ASSERT_EQ(months.size(), 1u);
  EXPECT_EQ(months[0].value, -1);
  EXPECT_TRUE(inZone("UTC", {}).empty());
  EXPECT_TRUE(inZone("UTC", {{kFebruary, 10, 0}}, 0).empty());
}

}  // namespace
}  // namespace orvane
