#include "host/watch/ScreenText.h"

#include <gtest/gtest.h>

#include "host/watch/RateMeter.h"

namespace orvane {
namespace {

TEST(ScreenText, shouldTakeTwoColumnsForAChineseCharacter) {
  EXPECT_EQ(columnsOf(screenText("abc")), 3);
  EXPECT_EQ(columnsOf(screenText("螺纹钢rb")), 8);
}

TEST(ScreenText, shouldShowNothingThatMovesTheCursor) {
  EXPECT_EQ(screenText("a\tb\033[2Jc\r\n"), L"a b\uFFFD[2Jc\uFFFD\uFFFD");
  EXPECT_EQ(screenText("\xff"), L"\uFFFD");
}

TEST(ScreenText, shouldClipWithAnEllipsisAndNeverSplitACharacter) {
  EXPECT_EQ(clipped(L"abcdef", 6), L"abcdef");
  EXPECT_EQ(clipped(L"abcdef", 5), L"abcd…");
  EXPECT_EQ(clipped(screenText("螺纹钢"), 6), screenText("螺纹钢"));
  EXPECT_EQ(clipped(screenText("螺纹钢"), 5), screenText("螺纹…"));
  EXPECT_EQ(clipped(screenText("螺纹钢"), 4), screenText("螺…"));
  EXPECT_EQ(clipped(L"ab", 1), L"…");
  EXPECT_EQ(clipped(L"ab", 0), L"");
}

TEST(ScreenText, shouldPadToTheColumnsAskedFor) {
  EXPECT_EQ(padded(L"ab", 4), L"ab  ");
  EXPECT_EQ(padded(L"ab", 4, true), L"  ab");
  EXPECT_EQ(padded(screenText("螺纹钢"), 4), screenText("螺… "));
}

TEST(ScreenText, shouldWrapAtBlanksAndClipAWordThatIsLongerThanALine) {
  using Lines = std::vector<std::wstring>;
  EXPECT_EQ(wrapped(L"to be or not", 5), (Lines{L"to be", L"or", L"not"}));
  EXPECT_EQ(wrapped(L"to be or not", 12), (Lines{L"to be or not"}));
  EXPECT_EQ(wrapped(L"a  longword b", 5), (Lines{L"a", L"long…", L"b"}));
  EXPECT_EQ(wrapped(screenText("螺纹 钢"), 6), (Lines{screenText("螺纹"), screenText("钢")}));
  EXPECT_EQ(wrapped(L"", 5), Lines{});
}

TEST(ScreenText, shouldWriteNumbersForPeople) {
  EXPECT_EQ(grouped(0), L"0");
  EXPECT_EQ(grouped(1'234'567), L"1,234,567");
  EXPECT_EQ(money(1000000), L"1,000,000.00");
  EXPECT_EQ(money(-1234.5, true), L"-1,234.50");
  EXPECT_EQ(money(1234.5, true), L"+1,234.50");
  EXPECT_EQ(money(-0.001, true), L"0.00");
  EXPECT_EQ(shortRate(0), L"0");
  EXPECT_EQ(shortRate(950), L"950");
  EXPECT_EQ(shortRate(999.7), L"1.00k");
  EXPECT_EQ(shortRate(12'340), L"12.3k");
  EXPECT_EQ(shortRate(4'561'000), L"4.56M");
  EXPECT_EQ(shortChange(0.3), L"0");
  EXPECT_EQ(shortChange(-12'340), L"-12.3k");
  EXPECT_EQ(shortChange(1'387'560), L"+1.39M");
  EXPECT_EQ(duration(7.9), L"0:07");
  EXPECT_EQ(duration(3723), L"1:02:03");
}

TEST(RateMeter, shouldTellTheGrowthOfAboutTheLastSecondAndAHalf) {
  RateMeter meter;
  EXPECT_EQ(meter.note(0, 0), 0);
  EXPECT_EQ(meter.note(0.5, 50), 100);
  EXPECT_EQ(meter.note(1, 100), 100);
  for (int tenth = 11; tenth <= 40; ++tenth) meter.note(tenth / 10.0, 100);
  EXPECT_EQ(meter.note(4.1, 100), 0);
}

}  // namespace
}  // namespace orvane
