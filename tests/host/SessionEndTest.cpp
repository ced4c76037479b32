#include "host/SessionEnd.h"

#include <gtest/gtest.h>

#include "platform/fields/KLineView.h"

namespace orvane {
namespace {

constexpr int64 kSessionHour = 3'600'000, kSessionDay = 24 * kSessionHour,
                kSessionWeek = 7 * kSessionDay;
constexpr int64 kSessionMonday = 1'609'689'600'000;  ///< 2021-01-04 00:00 in Shanghai, a Monday.

/// The trading day so many days after that Monday, all of them in January 2021.
int januaryDay(int day) { return 20210104 + day; }

/// Adds a bar of an hour that ends so many hours after its trading day's midnight.
void addHour(BarSeries& series, int day, double endHours) {
  const int64 end =
      kSessionMonday + day * kSessionDay + static_cast<int64>(endHours * kSessionHour);
  KLineWriter writer(series.bars.emplace_back());
  writer.setTimes(end - kSessionHour, end);
  writer.setDayAndFlags(januaryDay(day), 0);
}

/// Days with a night session in front of them and an end each, from that Monday on.
BarSeries daysThatEnd(const std::vector<double>& endHours) {
  BarSeries series;
  series.timeZone = "Asia/Shanghai";
  series.periodMs = kSessionHour;
  for (std::size_t i = 0; i < endHours.size(); ++i) {
    addHour(series, static_cast<int>(i), -2);
    addHour(series, static_cast<int>(i), 10);
    addHour(series, static_cast<int>(i), endHours[i]);
  }
  return series;
}

TEST(SessionEnd, shouldBeSeenWhereTheLastDayEndsNoEarlierThanThoseBeforeIt) {
  EXPECT_EQ(sessionEndOf(daysThatEnd({15, 15, 11.5, 15}), kSessionDay),
            "2021-01-07 ends at 15:00, no earlier than the 3 days before it");
  EXPECT_EQ(sessionEndOf(daysThatEnd({15, 15, 15, 15.25}), kSessionDay),
            "2021-01-07 ends at 15:15, no earlier than the 3 days before it");
  EXPECT_EQ(sessionEndOf(daysThatEnd({15, 15, 15, 14.5}), kSessionDay), "");
  // The sessions were longer once.
  EXPECT_EQ(sessionEndOf(daysThatEnd({15.25, 15, 15, 15, 15, 15, 15}), kSessionDay),
            "2021-01-10 ends at 15:00, no earlier than the 5 days before it");
  EXPECT_EQ(sessionEndOf(daysThatEnd({15, 15.25, 15, 15, 15, 15, 15}), kSessionDay), "");
}

TEST(SessionEnd, shouldNotBeSeenInTheNightBeforeTheLastDay) {
  BarSeries series = daysThatEnd({15, 15, 15, 15, 15});
  addHour(series, 5, -2);
  EXPECT_EQ(sessionEndOf(series, kSessionDay), "");
}

TEST(SessionEnd, shouldNotBeSeenInAFewDays) {
  EXPECT_EQ(sessionEndOf(daysThatEnd({15, 15, 15}), kSessionDay), "");
  EXPECT_EQ(sessionEndOf(BarSeries(), kSessionDay), "");
}

TEST(SessionEnd, shouldBeThatOfAWeekOnlyOnItsLastWeekday) {
  const auto weeks = [](const std::vector<int>& days) {
    BarSeries series;
    series.timeZone = "Asia/Shanghai";
    for (const int day : days) addHour(series, day, 15);
    return sessionEndOf(series, kSessionWeek);
  };
  const std::string friday =
      "2021-01-29 ends at 15:00, no earlier than the 5 days before it, on no earlier weekday than "
      "the 3 weeks before";
  EXPECT_EQ(weeks({3, 4, 10, 11, 18, 24, 25}), friday);
  EXPECT_EQ(weeks({3, 4, 10, 11, 18, 23, 24}), "") << "Thursday, and the Friday is to come";
  EXPECT_EQ(weeks({10, 11, 18, 24, 25}), "") << "two weeks before it tell little";
}

TEST(SessionEnd, shouldCallTheMidnightThatEndsADayByIts24thHour) {
  EXPECT_EQ(sessionEndOf(daysThatEnd({24, 24, 24, 24}), kSessionDay),
            "2021-01-07 ends at 24:00, no earlier than the 3 days before it");
}

TEST(SessionEnd, shouldReckonDaysByTheClockWhereTradingDaysAreUnknown) {
  BarSeries series;
  series.timeZone = "Asia/Shanghai";
  for (int day = 0; day < 4; ++day) {
    addHour(series, day, 15);
    KLineWriter(series.bars.back()).setDayAndFlags(20'219'901 + day, 0);
  }
  EXPECT_EQ(sessionEndOf(series, kSessionDay),
            "2021-01-07 ends at 15:00, no earlier than the 3 days before it");
}

TEST(SessionEnd, shouldTakeTheTimesOfTicksToTheMinute) {
  const auto ticks = [](std::int64_t lastSeconds) {
    TickSeries series;
    series.timeZone = "Asia/Shanghai";
    series.columns = {{TickColumn::LastPrice}};
    for (int day = 0; day < 5; ++day) {
      const int64 seconds = day == 4 ? lastSeconds : day % 2 == 0 ? 54'000 - 1 : 54'000 + 1;
      series.times.push_back(kSessionMonday + day * kSessionDay + seconds * 1000);
      series.tradingDays.push_back(januaryDay(day));
      series.cells.push_back(1);
    }
    return sessionEndOf(series, kSessionDay);
  };
  EXPECT_EQ(ticks(54'000 - 2), "2021-01-08 ends at 15:00, no earlier than the 4 days before it");
  EXPECT_EQ(ticks(54'000 - 120), "");
}

}  // namespace
}  // namespace orvane
