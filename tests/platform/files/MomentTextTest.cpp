#include "platform/market/files/MomentText.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

std::int64_t dayNumberOf(const char* text, DateOrder order = DateOrder::Unknown) {
  std::int64_t day = 0;
  return parseDate(text, order, day) == DateResult::Good ? numberOfDay(day) : 0;
}

TEST(MomentText, shouldReadDatesInEveryCommonForm) {
  for (const char* text :
       {"20130206", "2013-02-06", "2013/2/6", "2013.02.06", "2013年2月6日", "6-Feb-2013",
        "6 February 2013", "Feb 6, 2013", "06-FEB-13", "2013-Feb-06"})
    EXPECT_EQ(dayNumberOf(text), 20130206) << text;
  EXPECT_EQ(dayNumberOf("06/02/2013", DateOrder::DayFirst), 20130206);
  EXPECT_EQ(dayNumberOf("2/6/13", DateOrder::MonthFirst), 20130206);
  std::int64_t day = 0;
  EXPECT_EQ(parseDate("06/02/2013", DateOrder::Unknown, day), DateResult::Ambiguous);
}

TEST(MomentText, shouldRefuseWhatIsNoDay) {
  for (const char* text : {"", "20130230", "2013-02-29", "2013-13-01", "2013-00-01", "17990101",
                           "2013-02", "2013-02-06-07", "13/13/2013", "Foo 6, 2013", "2013-2-006",
                           "99999999999999999999", "2013--", "-1", "1.5"})
    EXPECT_EQ(dayNumberOf(text), 0) << text;
  EXPECT_EQ(dayNumberOf("20120229"), 20120229);
}

TEST(MomentText, shouldReadTimesOfDayInEveryCommonForm) {
  const std::pair<const char*, std::int64_t> kCases[] = {{"9:30", 34'200'000},
                                                         {"09:30:00", 34'200'000},
                                                         {"13:22:0", 48'120'000},
                                                         {"09:30:00.5", 34'200'500},
                                                         {"09:30:00,123", 34'200'123},
                                                         {"09:30:00.123456789", 34'200'123},
                                                         {"09:30:00.000999", 34'200'000},
                                                         {"12:00:00 AM", 0},
                                                         {"12:30 PM", 45'000'000},
                                                         {"24:00:00", 86'400'000},
                                                         {"00:00", 0}};
  for (const auto& [text, expected] : kCases) {
    std::int64_t ms = -1;
    EXPECT_TRUE(parseClockTime(text, ms)) << text;
    EXPECT_EQ(ms, expected) << text;
  }
  for (const char* text : {"", ":", "9", "9:", "25:00", "24:00:01", "9:60", "9:00:60", "9:00:00.",
                           "9:00:00.1234567890", "9:00:00x", "13:00 PM", "-9:00", "009:00"}) {
    std::int64_t ms = 0;
    EXPECT_FALSE(parseClockTime(text, ms)) << text;
  }
}

TEST(MomentText, shouldReadMomentsWithAndWithoutAnOffset) {
  const auto utc = [](const char* text) {
    MomentText moment;
    if (parseMoment(text, DateOrder::Unknown, moment) != DateResult::Good) return std::int64_t{-1};
    return moment.day * kDayMs + moment.msOfDay - moment.offsetMs;
  };
  constexpr std::int64_t kNine = 1'386'320'400'000;
  for (const char* text :
       {"2013-12-06T09:00:00Z", "2013-12-06 09:00:00", "2013-12-06T17:00:00+08:00",
        "2013-12-06T17:00:00+0800", "2013-12-06T17:00:00+08", "2013-12-06 04:00:00-05:00",
        "2013-12-06 09:00:00 UTC", "20131206 09:00", "20131206-09:00:00", "20131206T090000",
        "201312060900", "20131206090000", "20131206090000000", "2013-12-06 0900"})
    EXPECT_EQ(utc(text), kNine) << text;
  for (const char* text : {"2013-12-06 25:00", "2013-12-06T09:00:00+99:00", "x 09:00", "20131206 9",
                           "20131306090000", "T", "2013-12-06T09:00:00 CET"})
    EXPECT_EQ(utc(text), -1) << text;
}

TEST(MomentText, shouldReadOffsetsAndRefuseTheRest) {
  std::int64_t ms = 0;
  EXPECT_TRUE(parseOffset("UTC-05:00", ms));
  EXPECT_EQ(ms, -18'000'000);
  EXPECT_TRUE(parseOffset("+0530", ms));
  EXPECT_EQ(ms, 19'800'000);
  EXPECT_TRUE(parseOffset("GMT", ms));
  EXPECT_EQ(ms, 0);
  for (const char* text : {"", "+", "+15", "08:00", "+8:0", "+08:60", "+08:00x", "Asia/Shanghai"})
    EXPECT_FALSE(parseOffset(text, ms)) << text;
}

}  // namespace
}  // namespace orvane::detail
