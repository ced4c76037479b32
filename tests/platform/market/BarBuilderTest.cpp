#include "platform/market/BarBuilder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {
namespace {

using detail::BarBuilder;
using detail::BucketRule;
using detail::DecimalSum;
using detail::ZoneRules;

BarBuilder builderOf(const TermPair& term, const std::string& zone = "UTC") {
  return BarBuilder(BucketRule(term, ZoneRules::find(zone)));
}

std::string show(const IKLine& bar) {
  const KLineView view(bar);
  std::string text =
      RecordingSpi::relative(view.beginTime()) + "-" + RecordingSpi::relative(view.endTime());
  for (const double value : {view.open(), view.high(), view.low(), view.close(), view.volume()})
    text += " " + std::to_string(static_cast<int>(value));
  return text + " " + std::to_string(view.tradingDay());
}

std::vector<std::string> show(const std::vector<IKLine>& bars) {
  std::vector<std::string> all;
  for (const IKLine& bar : bars) all.push_back(show(bar));
  return all;
}

using Lines = std::vector<std::string>;

TEST(BarBuilder, shouldPutMinutesTogetherAndEndWithTheLastOne) {
  BarBuilder builder = builderOf({3, 3});
  std::vector<IKLine> out;
  builder.addBar(makeBar(kMonday, kMonday + kMinute, 5, 9, 4, 6, 10), out);
  builder.addBar(makeBar(kMonday + kMinute, kMonday + 2 * kMinute, 6, 7, 2, 3, 20), out);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(builder.openEnd(), kMonday + 3 * kMinute);
  builder.addBar(makeBar(kMonday + 2 * kMinute, kMonday + 3 * kMinute, 3, 8, 3, 8, 30), out);
  EXPECT_EQ(show(out), (Lines{"0:00-0:03 5 9 2 8 60 20210104"}));
  EXPECT_EQ(builder.openEnd(), kUnsetTime);
}

TEST(BarBuilder, shouldLeaveOutIntervalsWithoutDataAndCloseByTime) {
  BarBuilder builder = builderOf({3, 5});
  std::vector<IKLine> out;
  builder.addBar(makeBar(kMonday + kMinute, kMonday + 2 * kMinute, 1, 1, 1, 1), out);
  builder.closeAt(kMonday + 5 * kMinute - 1, out);
  EXPECT_TRUE(out.empty());
  builder.closeAt(kMonday + 5 * kMinute, out);
  builder.addBar(makeBar(kMonday + 16 * kMinute, kMonday + 17 * kMinute, 2, 2, 2, 2), out);
  builder.closeAt(kMonday + 20 * kMinute, out);
  EXPECT_EQ(show(out), (Lines{"0:00-0:05 1 1 1 1 1 20210104", "0:15-0:20 2 2 2 2 1 20210104"}));
}

TEST(BarBuilder, shouldCutTheLastIntervalOfADayAtLocalMidnight) {
  // Shanghai's midnight is 16:00 UTC; seven hours do not divide a day.
  BarBuilder builder = builderOf({4, 7}, "Asia/Shanghai");
  std::vector<IKLine> out;
  const int64 midnight = kMonday + 16 * kHour;
  builder.addBar(makeBar(midnight - kHour, midnight, 1, 1, 1, 1), out);
  builder.addBar(makeBar(midnight, midnight + kHour, 2, 2, 2, 2), out);
  builder.closeAt(midnight + 7 * kHour, out);
  EXPECT_EQ(show(out), (Lines{"13:00-16:00 1 1 1 1 1 20210104", "16:00-23:00 2 2 2 2 1 20210104"}));
}

TEST(BarBuilder, shouldGiveTheNightSessionToTheNextTradingDay) {
  BarBuilder builder = builderOf({5, 1}, "Asia/Shanghai");
  std::vector<IKLine> out;
  // Monday 09:00 and 14:59 local, then Monday 21:00 and Tuesday 01:00, which are Tuesday's.
  const int64 local0 = kMonday - 8 * kHour;
  const auto add = [&](int64 at, double price, int day) {
    builder.addBar(makeBar(at, at + kMinute, price, price, price, price, 1, day), out);
  };
  add(local0 + 9 * kHour, 1, 20210104);
  add(local0 + 15 * kHour - kMinute, 2, 20210104);
  EXPECT_TRUE(out.empty());
  add(local0 + 21 * kHour, 3, 20210105);
  ASSERT_EQ(out.size(), 1u);
  // Monday's bar ends where the night begins, and Tuesday's begins there.
  EXPECT_EQ(KLineView(out[0]).beginTime(), local0);
  EXPECT_EQ(KLineView(out[0]).endTime(), local0 + 21 * kHour);
  EXPECT_EQ(KLineView(out[0]).close(), 2);
  add(local0 + 25 * kHour, 4, 20210105);
  builder.closeAt(local0 + 48 * kHour, out);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(KLineView(out[1]).beginTime(), local0 + 21 * kHour);
  EXPECT_EQ(KLineView(out[1]).endTime(), local0 + 48 * kHour);
  EXPECT_EQ(KLineView(out[1]).tradingDay(), 20210105);
  EXPECT_EQ(KLineView(out[1]).volume(), 2);
}

TEST(BarBuilder, shouldFollowTheCalendarForWeeksMonthsAndYears) {
  std::vector<IKLine> weeks, months, years;
  BarBuilder week = builderOf({6, 1}), month = builderOf({7, 1}), year = builderOf({8, 1});
  // Daily bars from Friday 2020-12-25 to Monday 2021-02-01.
  const int64 first = kMonday - 10 * kDay;
  for (int i = 0; i <= 38; ++i) {
    const int64 begin = first + i * kDay;
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(begin / kDay))};
    const int day = static_cast<int>(date.year()) * 10000 +
                    static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
                    static_cast<int>(static_cast<unsigned>(date.day()));
    const IKLine bar = makeBar(begin, begin + kDay, i, i, i, i, 1, day);
    week.addBar(bar, weeks);
    month.addBar(bar, months);
    year.addBar(bar, years);
  }
  ASSERT_EQ(months.size(), 2u);
  EXPECT_EQ(KLineView(months[0]).volume(), 7);  // 25 to 31 December.
  EXPECT_EQ(KLineView(months[1]).volume(), 31);
  EXPECT_EQ(KLineView(months[1]).open(), 7);
  EXPECT_EQ(KLineView(months[1]).close(), 37);
  ASSERT_EQ(years.size(), 1u);
  EXPECT_EQ(KLineView(years[0]).tradingDay(), 20201231);
  ASSERT_EQ(weeks.size(), 6u);
  EXPECT_EQ(KLineView(weeks[0]).volume(), 3);  // Friday to Sunday.
  EXPECT_EQ(KLineView(weeks[1]).beginTime(), kMonday - 7 * kDay);
  EXPECT_EQ(KLineView(weeks[1]).endTime(), kMonday);
  EXPECT_EQ(KLineView(weeks[1]).volume(), 7);
}

TEST(BarBuilder, shouldCountATradeAtABoundaryIntoTheNextBar) {
  BarBuilder builder = builderOf(kOneMinute);
  std::vector<IKLine> out;
  builder.addTrade({kMonday, 20210104, 5, 1, 5, 0}, out);
  builder.addTrade({kMonday + kMinute - 1, 20210104, 7, 2, 14, 0}, out);
  builder.addTrade({kMonday + 30'000, 20210104, 0, 0, 0, 33}, out);
  EXPECT_TRUE(out.empty());
  builder.addTrade({kMonday + kMinute, 20210104, 6, 4, 24, 0}, out);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(show(out), (Lines{"0:00-0:01 5 7 5 7 3 20210104"}));
  EXPECT_EQ(KLineView(out[0]).turnover(), 19);
  EXPECT_EQ(KLineView(out[0]).openInterest(), 33);
}

TEST(BarBuilder, shouldTakeTheBidInQuoteBarsAndTheAskOnlyWhereNoBidIs) {
  BarBuilder builder = builderOf({3, 2});
  std::vector<IKLine> out;
  IKLine askOnly = makeBar(kMonday, kMonday + kMinute, 9, 9, 9, 9);
  KLineWriter(askOnly).setDayAndFlags(20210104, kline::kQuoteBar | kline::kBidMissing);
  KLineWriter(askOnly).set(kline::Turnover, 4);
  KLineWriter(askOnly).set(kline::AskClose, 9);
  IKLine both = makeBar(kMonday + kMinute, kMonday + 2 * kMinute, 5, 6, 4, 5, 3);
  KLineWriter(both).setDayAndFlags(20210104, kline::kQuoteBar);
  KLineWriter(both).set(kline::Turnover, 8);
  KLineWriter(both).set(kline::AskClose, 7);
  builder.addBar(askOnly, out);
  builder.addBar(both, out);
  ASSERT_EQ(out.size(), 1u);
  const KLineView view(out[0]);
  EXPECT_EQ(view.flags(), kline::kQuoteBar);
  EXPECT_EQ(view.open(), 5);
  EXPECT_EQ(view.high(), 6);
  EXPECT_EQ(view.bidSize(), 3);
  EXPECT_EQ(view.askSize(), 8);
  EXPECT_EQ(view.askClose(), 7);
}

TEST(BucketRule, shouldSayWhichPeriodsDivideWhich) {
  using detail::periodDivides;
  EXPECT_TRUE(periodDivides(kMinute, {3, 7}));
  EXPECT_FALSE(periodDivides(5 * kMinute, {3, 7}));
  EXPECT_TRUE(periodDivides(kMinute, {5, 1}));
  EXPECT_FALSE(periodDivides(7 * kHour, {6, 1}));
  EXPECT_TRUE(periodDivides(kDay, {7, 1}));
  EXPECT_FALSE(periodDivides(7 * kDay, {7, 1}));
  EXPECT_TRUE(periodDivides(30 * kDay, {8, 1}));
  EXPECT_FALSE(periodDivides(kDay, {5, 1}));
}

TEST(BucketRule, shouldNeverOverlapWhereTheClockIsSetBack) {
  // New York set its clock back on 2021-11-07 at 06:00 UTC.
  const int64 first = 1'636'200'000'000;  // 2021-11-06 12:00 UTC.
  BarBuilder builder = builderOf({4, 4}, "America/New_York");
  std::vector<IKLine> out;
  for (int i = 0; i < 48; ++i)
    builder.addBar(makeBar(first + i * kHour, first + (i + 1) * kHour, 1, 1, 1, 1, 1, 0), out);
  double hours = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    hours += KLineView(out[i]).volume();
    if (i > 0) {
      EXPECT_LE(KLineView(out[i - 1]).endTime(), KLineView(out[i]).beginTime());
    }
  }
  EXPECT_GT(hours, 43);
}

TEST(DecimalSum, shouldAddDecimalsWithoutNoise) {
  DecimalSum sum;
  for (int i = 0; i < 10; ++i) sum.add(0.1);
  EXPECT_EQ(sum.value(), 1.0);
  sum.add(0.2);
  EXPECT_EQ(sum.value(), 1.2);
  sum.clear();
  const auto seed = static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  int64 cents = 0;
  for (int i = 0; i < 10'000; ++i) {
    const int64 value = static_cast<int64>(random() % 100'000'000);
    cents += value;
    sum.add(static_cast<double>(value) / 100);
  }
  EXPECT_EQ(sum.value(), static_cast<double>(cents) / 100);
}

/// Derived bars in the feed.

TEST(DerivedBars, shouldComeWithTheirLastPartOrAtTheirEndWhicheverIsFirst) {
  InstalledPlatform platform;
  const ICodeID a = platform.code("A"), b = platform.code("B");
  BarSeries gappy = makeBars(a, kMonday, kMinute, 12);
  gappy.bars.erase(gappy.bars.begin() + 9);  // The one that ends at 0:10.
  platform->addBars(std::move(gappy));
  platform->addBars(makeBars(b, kMonday + 10 * kMinute, kMinute, 1));
  auto spi = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(a), kFiveMinutes, spi, 1);
  platform.quotes().subscribeBars(makeQuery(b), kOneMinute, spi, 2);
  platform->run();
  EXPECT_EQ(spi->lines(),
            (Lines{"@0:01 bar#1 flags=16", "@0:01 bar#2 flags=16", "@0:05 bar#1 0:00-0:05",
                   "@0:10 bar#1 0:05-0:10", "@0:11 bar#2 0:10-0:11"}));
  EXPECT_EQ(KLineView(spi->bars()[1]).close(), 9);
}

TEST(DerivedBars, shouldCompleteABarLiveThatWasOpenWhenAsked) {
  PlatformOptions options;
  options.from = kMonday + 8 * kMinute;
  InstalledPlatform platform(options);
  const ICodeID a = platform.code("A");
  platform->addBars(makeBars(a, kMonday, kMinute, 12));
  auto spi = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(a), kFiveMinutes, spi, 1);
  platform->run();
  EXPECT_EQ(spi->lines(), (Lines{"@0:08 bar#1 0:00-0:05 flags=16", "@0:10 bar#1 0:05-0:10"}));
  EXPECT_EQ(KLineView(spi->bars()[1]).open(), 6);
  EXPECT_EQ(KLineView(spi->bars()[1]).volume(), 5);
}

TEST(DerivedBars, shouldBeMadeOfTicksAfterAllRecordsOfTheInstant) {
  InstalledPlatform platform;
  const ICodeID a = platform.code("A");
  platform->addTicks(makeTicks(a, {kMonday, kMonday + 59'500, kMonday + kMinute, kMonday + kMinute,
                                   kMonday + 2 * kMinute + 1}));
  auto spi = std::make_shared<RecordingSpi>();
  auto late = std::make_shared<RecordingSpi>();
  int quotes = 0;
  spi->onLine = [&](const std::string& line) {
    // Asked between the two ticks of one instant, the bar is not history yet.
    if (line.find("quote") == 0 && ++quotes == 3)
      platform.quotes().subscribeBars(makeQuery(a), kOneMinute, late, 2);
  };
  platform.quotes().subscribeBars(makeQuery(a), kOneMinute, spi, 1);
  platform.quotes().subscribeQuote(a, spi, 0);
  platform->run();
  EXPECT_EQ(spi->lines(),
            (Lines{"@0:00 bar#1 flags=16", "@0:00 quote 0:00", "@0:00+59500 quote 0:00+59500",
                   "@0:01 quote 0:01", "@0:01 quote 0:01", "@0:01 bar#1 0:00-0:01",
                   "@0:02 bar#1 0:01-0:02", "@0:02+1 quote 0:02+1"}));
  EXPECT_EQ(late->lines(),
            (Lines{"@0:01 bar#2 flags=16", "@0:01 bar#2 0:00-0:01", "@0:02 bar#2 0:01-0:02"}));
  EXPECT_EQ(KLineView(spi->bars()[0]).close(), 2);
  EXPECT_EQ(KLineView(spi->bars()[0]).volume(), 20);
  EXPECT_EQ(KLineView(spi->bars()[1]).open(), 3);
  EXPECT_EQ(KLineView(spi->bars()[1]).close(), 4);
}

TEST(DerivedBars, shouldTakeTheGrowthOfTheDaysTotalAsVolume) {
  InstalledPlatform platform;
  const ICodeID a = platform.code("A");
  TickSeries ticks = makeTicks(a, {kMonday, kMonday + 1000, kMonday + 2000, kMonday + kMinute});
  ticks.columns[1] = {TickColumn::TotalVolume};
  ticks.cells = {10, 100, 11, 100, 12, 130, 13, 140};  // The second did not trade.
  platform->addTicks(std::move(ticks));
  auto spi = std::make_shared<RecordingSpi>();
  platform.quotes().subscribeBars(makeQuery(a), kOneMinute, spi, 1);
  platform->run();
  ASSERT_EQ(spi->bars().size(), 1u);
  EXPECT_EQ(show(spi->bars()[0]), "0:00-0:01 10 12 10 12 130 20210104");
}

}  // namespace
}  // namespace orvane::testing
