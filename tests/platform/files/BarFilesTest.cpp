#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

TEST(BarFiles, shouldReadColumnsInAnyOrderWhenAHeaderNamesThem) {
  const auto loaded = barsOf(
      "volume,close,low,high,open,datetime,turnover,open_interest\n"
      "7,10.5,9.5,11.5,10,2013-12-06 09:00:00,70,5\n"
      "8,11,10,12,10.5,2013-12-06 09:01:00,80,6\n");
  ASSERT_EQ(loaded.series.bars.size(), 2U);
  EXPECT_EQ(loaded.series.periodMs, kMinute);
  EXPECT_EQ(plain(loaded.series.bars[0]), (PlainBar{10, 11.5, 9.5, 10.5, 7, 70, 5}));
  EXPECT_EQ(plain(loaded.series.bars[1]), (PlainBar{10.5, 12, 10, 11, 8, 80, 6}));
  EXPECT_EQ(KLineView(loaded.series.bars[0]).beginTime(), kNine);
  EXPECT_EQ(KLineView(loaded.series.bars[0]).endTime(), kNine + kMinute);
  EXPECT_EQ(KLineView(loaded.series.bars[0]).tradingDay(), 20131206);
  EXPECT_EQ(loaded.code, "X");
  EXPECT_TRUE(hasNote(loaded.notes, "times are taken as UTC"));
  EXPECT_TRUE(hasNote(loaded.notes, "\"stamp\": \"end\""));
  EXPECT_TRUE(hasNote(loaded.notes, "period is taken to be 1 min"));
}

/// Every text gives the same two bars of a minute from nine o'clock.
class SameBars : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(SameBars, shouldReadTheSameBarsWhateverTheShape) {
  const auto loaded = barsOf(GetParam().first, GetParam().second, "x_20131206.csv");
  ASSERT_EQ(loaded.series.bars.size(), 2U);
  for (int i = 0; i < 2; ++i) {
    const KLineView view(loaded.series.bars[i]);
    EXPECT_EQ(view.beginTime(), kNine + i * kMinute);
    EXPECT_EQ(view.endTime(), kNine + (i + 1) * kMinute);
    EXPECT_EQ(view.open(), 10 + i);
    EXPECT_EQ(view.high(), 12.5 + i);
    EXPECT_EQ(view.low(), 9.5 + i);
    EXPECT_EQ(view.close(), 11 + i);
    EXPECT_EQ(view.volume(), 7 + i);
    EXPECT_EQ(view.tradingDay(), 20131206);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, SameBars,
    ::testing::Values(
        // Without a header.
        std::pair{"20131206 09:00,10,12.5,9.5,11,7\n20131206 09:01,11,13.5,10.5,12,8\n", "{}"},
        std::pair{"32400000,10,12.5,9.5,11,7\n32460000,11,13.5,10.5,12,8\n", "{}"},
        std::pair{"1386320400000,10,12.5,9.5,11,7\n1386320460000,11,13.5,10.5,12,8", "{}"},
        std::pair{"2013/12/6,9:00,10,12.5,9.5,11,7\n2013/12/6,9:01,11,13.5,10.5,12,8\n", "{}"},
        std::pair{"20131206,90000,10,12.5,9.5,11,7\n20131206,90100,11,13.5,10.5,12,8\n", "{}"},
        std::pair{"20131206,0900,10,12.5,9.5,11,7\n20131206,0901,11,13.5,10.5,12,8\n", "{}"},
        std::pair{"ABC,20131206,0900,10,12.5,9.5,11,7\nABC,20131206,0901,11,13.5,10.5,12,8\n",
                  "{}"},
        std::pair{"201312060900;10;12.5;9.5;11;7\n201312060901;11;13.5;10.5;12;8\n", "{}"},
        std::pair{"20131206090000 10 12.5 9.5 11 7\n20131206090100 11 13.5 10.5 12 8\n", "{}"},
        std::pair{"1386320400000,10,12.5,9.5,11,7,1386320459999,77,3,1,1,0\n"
                  "1386320460000,11,13.5,10.5,12,8,1386320519999,77,3,1,1,0\n",
                  "{}"},
        // With a header.
        std::pair{"\xEF\xBB\xBF"
                  "Date,Time,Open,High,Low,Close,Volume\r\n2013.12.06,09:00,10,12.5,9.5,11,7\r\n"
                  "2013.12.06,09:01,11,13.5,10.5,12,8\r\n",
                  "{}"},
        std::pair{"<TICKER>,<PER>,<DATE>,<TIME>,<OPEN>,<HIGH>,<LOW>,<CLOSE>,<VOL>\n"
                  "X,1,20131206,090000,10,12.5,9.5,11,7\nX,1,20131206,090100,11,13.5,10.5,12,8\n",
                  "{}"},
        std::pair{"ts\to\th\tl\tc\tv\n2013-12-06T09:00:00Z\t10\t12.5\t9.5\t11\t7\n"
                  "2013-12-06T09:01:00Z\t11\t13.5\t10.5\t12\t8\n",
                  "{}"},
        std::pair{"# a remark\n\n\"timestamp\",\"open\",\"high\",\"low\",\"close\",\"volume\"\n"
                  "\"2013-12-06T17:00:00.000+08:00\",\"10\",\"12.5\",\"9.5\",\"11\",\"7\"\n\n"
                  "\"2013-12-06T17:01:00.000000000+08:00\",11,13.5,10.5,12,8\n# the end\n",
                  "{}"},
        std::pair{"#date,time,open,high,low,close,volume\n2013-12-06,09:00:00,10,12.5,9.5,11,7\n"
                  "2013-12-06,09:01:00,11,13.5,10.5,12,8\n",
                  "{}"},
        std::pair{"Unix,Symbol,Open,High,Low,Close,Volume BTC,Volume USD\n"
                  "1386320400,A/B,10,12.5,9.5,11,7,70\n1386320460,A/B,11,13.5,10.5,12,8,80\n",
                  "{}"},
        std::pair{"open_time|open|high|low|close|volume|close_time|quote_volume\n"
                  "1386320400000000|10|12.5|9.5|11|7|1386320459999999|1\n"
                  "1386320460000000|11|13.5|10.5|12|8|1386320519999999|1\n",
                  "{}"},
        std::pair{
            "日期,时间,开盘,最高,最低,收盘,成交量,成交额\n2013年12月6日,09:00,10,12.5,9.5,11,7,1\n"
            "2013年12月6日,09:01,11,13.5,10.5,12,8,1\n",
            "{}"},
        std::pair{"Date,Open,High,Low,Close,Volume\n6-Dec-2013 09:00 AM,10,12.5,9.5,11,7\n"
                  "6-Dec-2013 09:01 AM,11,13.5,10.5,12,8\n",
                  "{}"},
        std::pair{"id,kline_stamp,open,high,low,close,volume\n1,2013-12-06 09:00,10,12.5,9.5,11,7\n"
                  "2,2013-12-06 09:01,11,13.5,10.5,12,8\n",
                  "{}"},
        // By description.
        std::pair{"20131206 09:00;10,0;12,5;9,5;11,0;7\n20131206 09:01;11,0;13,5;10,5;12,0;8\n",
                  R"({"decimalPoint": ","})"},
        std::pair{"a,b,c,d,e,f\n06/12/2013 09:00,10,12.5,9.5,11,7\n"
                  "06/12/2013 09:01,11,13.5,10.5,12,8\n",
                  R"({"dateOrder": "DMY",
                      "columns": ["datetime", "open", "high", "low", "close", "volume"]})"},
        std::pair{"12/06/2013 09:00,10,12.5,9.5,11,7\n12/06/2013 09:01,11,13.5,10.5,12,8\n",
                  R"({"dateOrder": "MDY"})"},
        std::pair{"when,o,h,l,c,last\n1386320400.000,10,12.5,9.5,11,7\n"
                  "1386320460.000,11,13.5,10.5,12,8\n",
                  R"({"columns": {"datetime": "when", "volume": 6}})"},
        std::pair{"9,10,11,12.5,9.5,7,540\n9,11,12,13.5,10.5,8,541\n",
                  R"({"columns": ["-", "open", "close", "high", "low", "volume", "time"],
                      "timeFormat": "HHMM", "date": "2013-12-06", "header": false,
                      "period": "1min", "order": "auto", "skipEmpty": false,
                      "timeZone": "-03:20"})"},
        std::pair{"20131206 10:00,10,12.5,9.5,11,7\n20131206 10:01,11,13.5,10.5,12,8\n",
                  R"({"timeZone": "Europe/Berlin"})"},
        std::pair{"20131206 09:01,10,12.5,9.5,11,7\n20131206 09:02,11,13.5,10.5,12,8\n",
                  R"({"stamp": "end", "period": 60000})"},
        std::pair{
            "20131206 09:00;10,0;12,5;9,5;11,0;0.007\n20131206 09:01;11,0;13,5;10,5;12,0;0.008\n",
            R"({"decimalPoint": ",", "thousands": ".", "volumeScale": 1,
                      "columns": {"datetime": 1, "open": 2, "high": 3, "low": 4, "close": 5,
                                  "volume": 6}})"},
        std::pair{"20131206 09:01,11,13.5,10.5,12,8\n20131206 09:00,10,12.5,9.5,11,7\n", "{}"},
        std::pair{"made by hand\n\n2013-12-06 09:00,100000,125000,95000,110000,70\n"
                  "2013-12-06 09:01,110000,135000,105000,120000,80\n",
                  R"({"skipLines": 1, "priceScale": 10000, "volumeScale": 10, "encoding": "utf-8",
                      "delimiter": ",", "kind": "bars"})"}));

TEST(BarFiles, shouldReadGzipOfSeveralMembersWhenTheyFollowEachOther) {
  const DataFolder folder;
  const auto a = folder.writeGzip("a", "20131206 09:00,1,2,1,2,7\n");
  const auto b = folder.writeGzip("b", "20131206 09:01,1,2,1,2,8\n");
  std::string both;
  for (const auto& path : {a, b}) {
    std::ifstream in(path, std::ios::binary);
    both.append(std::istreambuf_iterator<char>(in), {});
  }
  const auto loaded = loadBars(requestOf({folder.write("x.csv.gz", both)}));
  ASSERT_EQ(loaded.front().series.bars.size(), 2U);
  EXPECT_EQ(KLineView(loaded.front().series.bars[1]).volume(), 8);
  EXPECT_EQ(loaded.front().code, "X");
}

TEST(BarFiles, shouldReadGbkWhenTheTextIsNotUtf8) {
  const auto loaded = barsOf(
      "\xC8\xD5\xC6\xDA,\xBF\xAA\xC5\xCC,\xD7\xEE\xB8\xDF,\xD7\xEE\xB5\xCD,\xCA\xD5\xC5\xCC,"
      "\xB3\xC9\xBD\xBB\xC1\xBF,\xB3\xD6\xB2\xD6\xC1\xBF\n2013-12-06,1,2,0.5,1.5,7,9\n");
  ASSERT_EQ(loaded.series.bars.size(), 1U);
  EXPECT_EQ(plain(loaded.series.bars[0]), (PlainBar{1, 2, 0.5, 1.5, 7, 0, 9}));
  EXPECT_TRUE(hasNote(loaded.notes, "read as GBK"));
}

TEST(BarFiles, shouldReadUtf16WhenAByteOrderMarkTells) {
  const QString text = "date,open,high,low,close\n2013-12-06,1,2,0.5,1.5\n";
  std::string bytes = "\xFF\xFE";
  bytes.append(reinterpret_cast<const char*>(text.utf16()),
               static_cast<std::size_t>(text.size()) * 2);
  EXPECT_EQ(barsOf(bytes).series.bars.size(), 1U);
}

TEST(BarFiles, shouldRunFromMidnightToMidnightWhenBarsAreOfDays) {
  const auto loaded = barsOf(
      "date,open,high,low,close,volume\n2021/03/12,1,2,1,2,5\n"
      "2021/03/15,1,2,1,2,6\n2021/03/16,1,2,1,2,6\n",
      R"({"timeZone": "America/New_York"})");
  EXPECT_EQ(loaded.series.periodMs, kDay);
  EXPECT_EQ(loaded.series.timeZone, "America/New_York");
  const KLineView first(loaded.series.bars[0]);
  EXPECT_EQ(first.beginTime(), 1615525200000);  // 2021-03-12 00:00 -05:00
  EXPECT_EQ(first.endTime(), 1615611600000);
  EXPECT_EQ(first.tradingDay(), 20210312);
  const KLineView second(loaded.series.bars[1]);
  EXPECT_EQ(second.beginTime(), 1615780800000);  // 2021-03-15 00:00 -04:00
  EXPECT_EQ(second.tradingDay(), 20210315);
  EXPECT_FALSE(hasNote(loaded.notes, "stamp"));
}

TEST(BarFiles, shouldTakeTheDateAsWrittenWhenDaysAreEpochMidnights) {
  const auto loaded = barsOf("time,open,high,low,close\n1615507200,1,2,1,2\n1615593600,1,2,1,2\n",
                             R"({"timeZone": "America/New_York"})");
  EXPECT_EQ(KLineView(loaded.series.bars[0]).tradingDay(), 20210312);
  EXPECT_EQ(KLineView(loaded.series.bars[0]).beginTime(), 1615525200000);
}

TEST(BarFiles, shouldEndOnTheDateWhenBarsOfWeeksAreStampedAtTheirEnd) {
  const std::string text = "date,open,high,low,close\n2021-03-05,1,2,1,2\n2021-03-12,1,2,1,2\n";
  const auto ended = barsOf(text, R"({"stamp": "end"})");
  EXPECT_EQ(ended.series.periodMs, 7 * kDay);
  EXPECT_EQ(KLineView(ended.series.bars[1]).endTime(), 1615593600000);  // 2021-03-13
  EXPECT_EQ(KLineView(ended.series.bars[1]).beginTime(), 1615593600000 - 7 * kDay);
  const auto begun = barsOf(text, R"({"stamp": "start", "period": "week"})");
  EXPECT_EQ(KLineView(begun.series.bars[1]).beginTime(), 1615507200000);
  EXPECT_EQ(KLineView(begun.series.bars[1]).endTime(), 1615507200000 + 7 * kDay);
}

TEST(BarFiles, shouldCutABarShortWhenTheSessionDoes) {
  const std::string rows =
      "20131206 09:00,1,2,1,2,5\n20131206 10:00,1,2,1,2,5\n"
      "20131206 10:15,1,2,1,2,5\n20131206 11:15,1,2,1,2,5\n";
  const auto ended = barsOf(rows, R"({"stamp": "end", "period": "1h"})");
  EXPECT_EQ(KLineView(ended.series.bars[2]).beginTime(), kNine + kHour);
  EXPECT_EQ(KLineView(ended.series.bars[2]).endTime(), kNine + kHour + 15 * kMinute);
  const auto begun = barsOf(rows, R"({"stamp": "start", "period": "1h"})");
  EXPECT_EQ(KLineView(begun.series.bars[1]).endTime(), kNine + kHour + 15 * kMinute);
  EXPECT_EQ(KLineView(begun.series.bars[3]).endTime(), kNine + 3 * kHour + 15 * kMinute);
}

TEST(BarFiles, shouldGiveTheTradingDayOfTheEndsLastMillisecondWhenABarEndsAtMidnight) {
  const auto loaded =
      barsOf("20131206 23:59,1,2,1,2,5\n20131207 00:00,1,2,1,2,5\n", R"({"stamp": "end"})");
  EXPECT_EQ(KLineView(loaded.series.bars[1]).tradingDay(), 20131206);
}

TEST(BarFiles, shouldTakeTheTradingDayFromItsColumnWhenThereIsOne) {
  const auto loaded = barsOf(
      "trading_day,datetime,open,high,low,close\n"
      "20131209,2013-12-06 21:00:00,1,2,1,2\n"
      "20131209,2013-12-06 21:01:00,1,2,1,2\n");
  EXPECT_EQ(KLineView(loaded.series.bars[0]).tradingDay(), 20131209);
  EXPECT_EQ(KLineView(loaded.series.bars[0]).beginTime(), kNine + 12 * kHour);
}

constexpr const char* kQuoteBars =
    "32400000,1.5,2.5,1.25,2,10,1.75,2.75,1.5,2.25,20\n"
    "32460000,,,,,0,1.75,2.75,1.5,2.25,20\n"
    "32520000,1.5,2.5,1.25,2,10,,,,,\n";

TEST(BarFiles, shouldFillBothSidesWhenBarsAreOfQuotes) {
  const auto loaded = barsOf(kQuoteBars, "{}", "x_20131206.csv");
  const KLineView both(loaded.series.bars[0]);
  EXPECT_EQ(both.flags(), kline::kQuoteBar);
  EXPECT_EQ(both.open(), 1.5);
  EXPECT_EQ(both.close(), 2);
  EXPECT_EQ(both.askClose(), 2.25);
  EXPECT_EQ(both.bidSize(), 10);
  EXPECT_EQ(both.askSize(), 20);
  const KLineView askOnly(loaded.series.bars[1]);
  EXPECT_EQ(askOnly.flags(), kline::kQuoteBar | kline::kBidMissing);
  EXPECT_EQ(askOnly.open(), 1.75);
  EXPECT_EQ(askOnly.close(), 2.25);
  const KLineView bidOnly(loaded.series.bars[2]);
  EXPECT_EQ(bidOnly.flags(), kline::kQuoteBar | kline::kAskMissing);
  EXPECT_EQ(bidOnly.close(), 2);
  EXPECT_EQ(bidOnly.askClose(), 0);
}

TEST(BarFiles, shouldShowTheSideThatIsChosenWhenBarsAreOfQuotes) {
  const auto ask = barsOf(kQuoteBars, R"({"side": "ask"})", "x_20131206.csv");
  EXPECT_EQ(KLineView(ask.series.bars[0]).open(), 1.75);
  EXPECT_EQ(KLineView(ask.series.bars[2]).open(), 1.5);
  const auto mid = barsOf(kQuoteBars, R"({"side": "mid"})", "x_20131206.csv");
  EXPECT_EQ(KLineView(mid.series.bars[0]).high(), 2.625);
  EXPECT_EQ(KLineView(mid.series.bars[1]).high(), 2.75);
}

TEST(BarFiles, shouldPassOverRowsWithoutAPriceWhenTold) {
  const auto loaded = barsOf(
      "20131206 09:00,1,2,1,2,5\n20131206 09:01,,,,,0\n"
      "20131206 09:02,1,2,1,2,5\n20131206 09:03,NaN,NaN,NaN,NaN,NaN\n"
      "20131206 09:04,1,2,1,2,5\n",
      R"({"skipEmpty": true})");
  EXPECT_EQ(loaded.series.bars.size(), 3U);
  EXPECT_TRUE(hasNote(loaded.notes, "2 rows without a price were passed over"));
}

TEST(BarFiles, shouldKeepAndCountDoubtfulBarsWhenTolerant) {
  const auto loaded =
      barsOf("20131206 09:00,1,2,1,2,5\n20131206 09:01,1,0.5,1,2,-1\n", R"({"tolerant": true})");
  ASSERT_EQ(loaded.series.bars.size(), 2U);
  EXPECT_EQ(KLineView(loaded.series.bars[1]).high(), 0.5);
  EXPECT_TRUE(hasNote(loaded.notes, "2 doubtful values were kept, the first in line 2"));
}

TEST(BarFiles, shouldReadOpenCloseHighLowWhenNoOtherOrderFits) {
  const auto loaded = barsOf(
      "20131206 09:00,1,2,2.5,0.5,5\n20131206 09:01,2,1,2.5,0.5,5\n"
      "20131206 09:02,2,1,2.5,0.5,5\n");
  EXPECT_EQ(plain(loaded.series.bars[0]), (PlainBar{1, 2.5, 0.5, 2, 5, 0, 0}));
  EXPECT_TRUE(hasNote(loaded.notes, "open, close, high, low"));
}

TEST(BarFiles, shouldMakeOneSeriesWhenSeveralFilesFollowEachOther) {
  const DataFolder folder;
  const auto late = folder.write("abc_20131207_1min.csv", "32400000,1,2,1,2,8\n");
  const auto early =
      folder.write("abc_20131206_1min.csv", "32400000,1,2,1,2,7\n32460000,1,2,1,2,7\n");
  std::vector<double> shares;
  const auto loaded =
      loadBars(requestOf({late, early}), [&](double share) { shares.push_back(share); });
  ASSERT_EQ(loaded.size(), 1U);
  EXPECT_EQ(loaded.front().code, "ABC");
  EXPECT_EQ(loaded.front().series.periodMs, kMinute);
  ASSERT_EQ(loaded.front().series.bars.size(), 3U);
  EXPECT_EQ(KLineView(loaded.front().series.bars[0]).beginTime(), kNine);
  EXPECT_EQ(KLineView(loaded.front().series.bars[2]).beginTime(), kNine + kDay);
  EXPECT_EQ(KLineView(loaded.front().series.bars[2]).volume(), 8);
  EXPECT_EQ(loaded.front().series.origin, early + ", " + late);
  EXPECT_EQ(shares.back(), 1.0);
}

TEST(BarFiles, shouldGiveOneSeriesForEachCodeWhenAFileHoldsSeveral) {
  const std::string text =
      "exchange,symbol,date,open,high,low,close\nSHFE,rb2401,20131206,1,2,1,2\n"
      "DCE,m2401,20131206,3,4,3,4\nSHFE,rb2401,20131207,1,2,1,2\nDCE,m2401,20131207,3,4,3,4\n";
  const DataFolder folder;
  const auto path = folder.write("x.csv", text);
  const auto loaded = loadBars(requestOf({path}));
  ASSERT_EQ(loaded.size(), 2U);
  EXPECT_EQ(loaded[0].code, "rb2401.SHFE");
  EXPECT_EQ(loaded[1].code, "m2401.DCE");
  EXPECT_EQ(loaded[1].series.bars.size(), 2U);
  EXPECT_EQ(KLineView(loaded[1].series.bars[0]).open(), 3);
  auto request = requestOf({path});
  request.code = "m2401";
  const auto chosen = loadBars(request);
  ASSERT_EQ(chosen.size(), 1U);
  EXPECT_EQ(chosen[0].code, "m2401");
  EXPECT_EQ(KLineView(chosen[0].series.bars[0]).open(), 3);
}

TEST(BarFiles, shouldPreferTheCodeThatIsGivenWhenTheFileHasOne) {
  const std::string text = "symbol,date,open,high,low,close\nA,20131206,1,2,1,2\n";
  EXPECT_EQ(barsOf(text).code, "A");
  EXPECT_EQ(barsOf(text, R"({"market": "XNYS"})").code, "A.XNYS");
  EXPECT_EQ(barsOf(text, R"({"code": "B", "market": "XNYS"})").code, "B.XNYS");
}

TEST(BarFiles, shouldSnapPricesToTheTickWhenItIsKnown) {
  const auto loaded = barsOf("20131206 09:00,3384.2000000000007,3384.4,3384.1999,3384.2,5\n",
                             R"({"priceTick": "0.2",
             "period": "5min"})");
  const KLineView view(loaded.series.bars[0]);
  EXPECT_EQ(view.open(), 3384.2);
  EXPECT_EQ(view.low(), 3384.1999);  // Off the grid: kept.
}

TEST(BarFiles, shouldIgnoreThePeriodOfTheNameWhenTheBarsSpeakAgainstIt) {
  const auto loaded = barsOf(
      "20131206 09:00,1,2,1,2,5\n20131206 09:05,1,2,1,2,5\n"
      "20131206 09:10,1,2,1,2,5\n20131206 09:15,1,2,1,2,5\n",
      "{}", "x_1h.csv");
  EXPECT_EQ(loaded.series.periodMs, 5 * kMinute);
  EXPECT_TRUE(hasNote(loaded.notes, "the name tells a period of 1 h, which the bars do not have"));
}

TEST(BarFiles, shouldNoteAPeriodThatNoTwoBarsHave) {
  const std::string days =
      "2013-12-06 00:00,1,2,1,2,5\n2013-12-09 00:00,1,2,1,2,5\n"
      "2013-12-10 00:00,1,2,1,2,5\n";
  EXPECT_TRUE(hasNote(barsOf(days, R"({"period": "5m"})").notes,
                      "\"period\" is 5 min, but the bars are mostly a day apart, and no two of "
                      "them 5 min"));
  const std::string sparse =
      "2013-12-06 09:00,1,2,1,2,5\n2013-12-06 09:20,1,2,1,2,5\n"
      "2013-12-06 09:25,1,2,1,2,5\n";
  EXPECT_FALSE(hasNote(barsOf(sparse, R"({"period": "5m"})").notes, "\"period\" is"));
}

TEST(BarFiles, shouldAcceptNegativePricesWhenASpreadHasThem) {
  EXPECT_EQ(
      KLineView(barsOf("20131206 09:00,-2,-1,-3,-1.5,5\n20131206 09:01,1,2,1,2,5\n").series.bars[0])
          .low(),
      -3);
}

TEST(BarFiles, shouldReadARepeatedHourWhenClocksGoBack) {
  std::string text = "datetime,open,high,low,close\n";
  for (const char* time : {"01:00", "01:30", "01:00", "01:30", "02:00"})
    text += std::string("2013-11-03 ") + time + ",1,2,1,2\n";
  const auto loaded = barsOf(text, R"({"timeZone": "America/New_York"})");
  ASSERT_EQ(loaded.series.bars.size(), 5U);
  for (std::size_t i = 1; i < 5; ++i)
    EXPECT_EQ(KLineView(loaded.series.bars[i]).beginTime() -
                  KLineView(loaded.series.bars[i - 1]).beginTime(),
              30 * kMinute);
}

}  // namespace
}  // namespace orvane
