#include "platform/core/Periods.h"

#include <gtest/gtest.h>

#include "platform/core/ZoneRules.h"
#include "shared/CodeTables.h"

namespace orvane::detail {
namespace {

TEST(Periods, shouldReadEveryFormOfAFrequency) {
  const std::pair<const char*, int64> forms[] = {
      {"500ms", 500},        {"1000ms", 1000},        {"1s", 1000},          {"30s", 30'000},
      {"1m", 60'000},        {"1min", 60'000},        {"15m", 900'000},      {"90m", 5'400'000},
      {"1h", 3'600'000},     {"4h", 14'400'000},      {"1d", 86'400'000},    {"1w", 604'800'000},
      {"1M", 2'592'000'000}, {"1mon", 2'592'000'000}, {"1y", 31'536'000'000}};
  for (const auto& [text, ms] : forms) {
    int64 term = -1;
    bool extra = true;
    EXPECT_EQ(parseFrequency(text, term, extra).code, 0) << text;
    EXPECT_EQ(term, ms) << text;
    EXPECT_FALSE(extra) << text;
  }
  int64 term = -1;
  bool extra = false;
  EXPECT_EQ(parseFrequency("tick", term, extra).code, 0);
  EXPECT_EQ(term, 0);
  EXPECT_TRUE(extra);
}

TEST(Periods, shouldRefuseABadFrequencyAndLeaveTheOutputs) {
  for (const char* text :
       {"", "5", "m", "0m", "-1m", "1.5m", "5 m", "5x", "250ms", "9999999m", "TICK", "1mins"}) {
    int64 term = 77;
    bool extra = true;
    const ResultStatus status = parseFrequency(text, term, extra);
    EXPECT_EQ(status.code, 17) << text;
    EXPECT_EQ(status.message, std::string(statusMessage(17)) + " " + text);
    EXPECT_EQ(term, 77);
    EXPECT_TRUE(extra);
  }
}

TEST(Periods, shouldTakeTheLargestUnitThatDivides) {
  EXPECT_EQ(timeTypeOfTerm(0), ITimeType::Year);
  EXPECT_EQ(timeTypeOfTerm(90'000), ITimeType::Second);
  EXPECT_EQ(timeTypeOfTerm(500), ITimeType::HalfSecond);
  EXPECT_EQ(timeTypeOfTerm(250), ITimeType::Day);
  EXPECT_EQ(timeTypeOfTerm(kDayMs), ITimeType::Day);
  EXPECT_EQ(timeTypeOfTerm(kMonthMs), ITimeType::Month);
}

TEST(Periods, shouldReadARangeByItsMode) {
  OVDataRange range;
  range.beginTime = 50;
  range.endTime = 90;
  range.flags = 3;
  EXPECT_EQ(queryOfRange(range).beginTime, 50);
  EXPECT_EQ(queryOfRange(range).endTime, 90);
  EXPECT_EQ(queryOfRange(range).count, kNoLimit);
  EXPECT_EQ(queryOfRange(range).flags, 3);
  range.mode = 1;
  EXPECT_EQ(queryOfRange(range).count, 50);
  EXPECT_EQ(queryOfRange(range).beginTime, kUnsetTime);
  range.mode = 2;
  EXPECT_EQ(queryOfRange(range).beginTime, 50);
  EXPECT_EQ(queryOfRange(range).endTime, kUnsetTime);
}

TEST(ZoneRules, shouldFollowTheTransitionsBothWays) {
  const auto newYork = ZoneRules::find("America/New_York");
  ASSERT_NE(newYork, nullptr);
  constexpr int64 kHour = kHourMs;
  EXPECT_EQ(newYork->offsetMs(1'609'718'400'000), -5 * kHour);
  EXPECT_EQ(newYork->offsetMs(1'625'000'000'000), -4 * kHour);
  const int64 springForward = 1'615'705'200'000;  // 2021-03-14 07:00 UTC.
  EXPECT_EQ(newYork->offsetMs(springForward - 1), -5 * kHour);
  EXPECT_EQ(newYork->offsetMs(springForward), -4 * kHour);
  // 02:30 local does not exist on that day; 01:30 on 2021-11-07 exists twice.
  EXPECT_EQ(newYork->toUtc(springForward - 5 * kHour + kHour / 2), springForward);
  const int64 fallBack = 1'636'264'800'000;  // 2021-11-07 06:00 UTC.
  EXPECT_EQ(newYork->toUtc(fallBack - 5 * kHour + kHour / 2), fallBack - kHour / 2);
  for (int64 utc = springForward - kDayMs; utc < springForward + kDayMs; utc += 900'000)
    EXPECT_EQ(newYork->toUtc(newYork->toLocal(utc)), utc);
}

TEST(ZoneRules, shouldKnowFixedOffsetsAndRefuseUnknownNames) {
  const auto fixed = ZoneRules::find("UTC-05:00");
  ASSERT_NE(fixed, nullptr);
  EXPECT_EQ(fixed->offsetMs(1'625'000'000'000), -5 * kHourMs);
  EXPECT_EQ(ZoneRules::find("Mars/Olympus"), nullptr);
  EXPECT_EQ(ZoneRules::find(""), nullptr);
  EXPECT_EQ(ZoneRules::find("Asia/Shanghai"), ZoneRules::find("Asia/Shanghai"));
}

}  // namespace
}  // namespace orvane::detail
