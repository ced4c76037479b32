// Rows that are read the short way, against the same rows with their moment in quotes, which only
// the long way knows.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "platform/market/files/PlainRows.h"
#include "platform/market/files/Table.h"
#include "platform/market/files/TableRows.h"
#include "tests/platform/files/DataFileSupport.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

/// The rows of a file of bars, taken apart at the moment of each.
struct PlainRow {
  std::string before;
  std::string moment;
  std::string behind;  ///< With the end of the line.

  std::string plain() const { return before + moment + behind; }
  std::string quoted() const { return before + '"' + moment + '"' + behind; }
};

/// Everything that loading bars tells, as one text; or the error.
std::string plainBarsAsText(const DataFolder& folder, const std::string& text,
                            const char* description,
                            std::size_t chunkBytes = std::size_t{1} << 30) {
  auto request = requestOf({folder.write("x.csv", text)}, description);
  request.pace = {chunkBytes < 1000 ? 2 : 1, chunkBytes};
  std::string all;
  const std::string error = messageOf(
      [&] {
        for (const LoadedBars& one : loadBars(request)) {
          all += one.code + " " + std::to_string(one.series.periodMs) + " " + one.series.timeZone;
          for (const std::string& note : one.notes) all += "\nnote " + note;
          for (const IKLine& bar : one.series.bars) {
            all += "\n";
            for (const Word word : bar.words) all += std::to_string(word) + ",";
          }
        }
      },
      folder);
  return error.empty() ? all : "error " + error;
}

void expectBothAlike(const std::string& header, const std::vector<PlainRow>& rows,
                     const char* description = "{}") {
  std::string plain = header + "\n", quoted = plain;
  for (const PlainRow& row : rows) plain += row.plain(), quoted += row.quoted();
  const DataFolder folder;
  const std::string expected = plainBarsAsText(folder, quoted, description);
  ASSERT_EQ(plainBarsAsText(folder, plain, description), expected) << plain;
  // Also in parts of a few rows.
  ASSERT_EQ(plainBarsAsText(folder, plain, description, 300), expected) << plain;
}

const std::string kPlainHeader = "datetime,open,high,low,close,volume";
const char* const kOfMinutes = R"({"period": "1min"})";

/// Good rows around the one that matters, so many that nobody looks at it beforehand.
void expectBothAlikeAround(const PlainRow& row, const std::string& header = kPlainHeader,
                           const std::string& numbers = ",2,3,1,2,5") {
  std::vector<PlainRow> rows;
  const auto addMinutes = [&](int from, int to) {
    for (int minute = from; minute < to; ++minute) {
      char moment[40];
      std::snprintf(moment, sizeof(moment), "2021-11-%02d %02d:%02d:00", 6 + minute / 1440,
                    minute / 60 % 24, minute % 60);
      rows.push_back({"", moment, numbers + "\n"});
    }
  };
  constexpr int kNine = 1440 + 9 * 60;  // On the second day.
  addMinutes(kNine - 1200, kNine + 2);
  rows.push_back(row);
  addMinutes(kNine + 9, kNine + 700);
  expectBothAlike(header, rows, kOfMinutes);
}

TEST(PlainRows, shouldBeTheSameWhereARowIsNotPlain) {
  const std::string at = "2021-11-07 09:02:00";
  for (const char* const behind : {",2,3,1,2,5\n",
                                   ",2,3,1,2,5\r\n",
                                   ",2,3,1,2,5\r\r\n",
                                   ",2,3,1,2,5,\n",
                                   ",2,3,1,2,5,7\n",
                                   ",2,3,1,2\n",
                                   ",2,3,1,2,\n",
                                   ", 2,3,1,2,5\n",
                                   ",2 ,3,1,2,5\n",
                                   ",2,3,1,2,5 \n",
                                   ",\"2\",3,1,2,5\n",
                                   ",2,3,1,2,\"5\"\n",
                                   ",+2,3,1,2,5\n",
                                   ",2e0,3,1,2,5\n",
                                   ",x,3,1,2,5\n",
                                   ",,3,1,2,5\n",
                                   ",.,3,1,2,5\n",
                                   ",2.,3,1,2,5\n",
                                   ",.5,3,.5,2,5\n",
                                   ",-,3,1,2,5\n",
                                   ",2.5.3,1,2,5\n",
                                   ",2.5-3,1,2,5\n",
                                   ",2x3,1,2,5\n",
                                   ",2,3,1,2.5.7\n",
                                   ",-1,3,-2,2,5\n",
                                   ",-0,3,-0,2,5\n",
                                   ",2,3,1,2,-5\n",
                                   ",2,3,1,2,-0\n",
                                   ",4,3,1,2,5\n",
                                   ",0,3,1,2,5\n",
                                   ",2,3,1,4,5\n",
                                   ",2,3,1,0,5\n",
                                   ",2,1,3,2,5\n",
                                   ",2.00000000000000001,3,1,2,5\n",
                                   ",2,3,1,2,123456789012345678\n",
                                   ",2,3,1,2,12345678901234567890\n",
                                   ",2.123456789012345678901234567890,3,1,2,5\n",
                                   ",2,3,1,2,5\n\n",
                                   ",2,3,1,2,5\n# a remark\n",
                                   ",2,3,1,2,1e400\n",
                                   ",nan,nan,nan,nan,0\n",
                                   ",,,,,\n"})
    expectBothAlikeAround({"", at, behind});
}

TEST(PlainRows, shouldBeTheSameWhateverTheMomentIs) {
  for (const char* const moment : {"2021-11-07 09:02",
                                   "2021-11-07 9:02:00",
                                   "2021-11-07 09:02:00.5",
                                   "2021-11-07 09:2:00",
                                   "2021-11-07 09:02:0",
                                   "2021-11-07 24:00:00",
                                   "2021-11-07 09:60:00",
                                   "2021-11-07 09:02:60",
                                   "2021-11-07 09:02 AM",
                                   "2021-11-07 09-02-00",
                                   "2021-11-07T09:02:00",
                                   "2021-11-07 09:02:00Z",
                                   "2021-11-08 09:02:00",
                                   "2021-11-07 09:02:0x",
                                   "2021-11-07",
                                   "09:02:00",
                                   "2021-11-07 ",
                                   "",
                                   "2021-11-07 09:01:00",
                                   "2021-11-07 09:00:30",
                                   "2021-11-07 09:20:00",
                                   "20211107 09:02:00",
                                   " 2021-11-07 09:02:00",
                                   "2021-11-07  09:02:00"})
    expectBothAlikeAround({"", moment, ",2,3,1,2,5\n"});
}

TEST(PlainRows, shouldBeTheSameWhereANumberWouldContinueTheTimeOfDay) {
  // "9:3:0,12" is a time of day with a fraction, were the comma no delimiter.
  expectBothAlikeAround({"", "2021-11-07 9:3:0", ",12,13,11,12,5\n"});
  expectBothAlikeAround({"", "2021-11-07 9:03", ",12,13,11,12,5\n"});
}

TEST(PlainRows, shouldBeTheSameWhereADateOfDigitsWouldContinueInATimeOfDay) {
  std::vector<PlainRow> rows;
  for (int day = 0; day < 2000; ++day) {
    char moment[40];
    std::snprintf(moment, sizeof(moment), "%d-%d-%d", 1900 + day / 36, 1 + day / 3 % 12,
                  1 + day % 3);
    rows.push_back({"", moment, ",2,3,1,2,5\n"});
  }
  rows[1201].moment = rows[1200].moment + "09:30";
  expectBothAlike(kPlainHeader, rows, R"({"period": "day"})");
}

TEST(PlainRows, shouldBeTheSameWithColumnsThatNobodyReads) {
  const std::string header = kPlainHeader + ",remark";
  for (const char* const behind :
       {",2,3,1,2,5,abc\n", ",2,3,1,2,5,\n", ",2,3,1,2,5,a b\n", ",2,3,1,2,5,\"a,b\"\n",
        ",2,3,1,2,5,a\"b\n", ",2,3,1,2,5,abc\r\n", ",2,3,1,2,5,a\rb\n", ",2,3,1,2,5\n",
        ",2,3,1,2,5,\"a\n"})
    expectBothAlikeAround({"", "2021-11-07 09:02:00", behind}, header, ",2,3,1,2,5,abc");
}

TEST(PlainRows, shouldBeTheSameWhereALineEndsInAColumnThatNobodyReads) {
  expectBothAlikeAround({"", "2021-11-07 09:02:00", ",a\nb,2,3,1,2,5\n"},
                        "datetime,remark,open,high,low,close,volume", ",abc,2,3,1,2,5");
}

TEST(PlainRows, shouldNotTakeMoreFieldsThanThereAreColumns) {
  for (const char* const behind :
       {",2,3,1,2,5,a,b,c\n", ",2,3,1,2,5,a,\n", ",2,3,1,2,5,a,,\n", ",2,3,1,2,5,,\r\n",
        ",2,3,1,2,5,a,2021-11-07 09:03:00,2,3,1,2,5,b\n"})
    expectBothAlikeAround({"", "2021-11-07 09:02:00", behind}, kPlainHeader + ",remark",
                          ",2,3,1,2,5,abc");
}

TEST(PlainRows, shouldNotTakeLinesThatAreNoRows) {
  const std::string head = "index,datetime,open,high,low,close,volume\n";
  std::string text = head, without = head;
  for (int minute = 0; minute < 50; ++minute) {
    char row[64];
    std::snprintf(row, sizeof(row), "%d,2021-11-07 09:%02d:00,2,3,1,2,5\n", minute, minute);
    const char* const mark = minute == 20 ? "#" : minute == 30 ? "  #" : minute == 40 ? "\t#" : "";
    text += mark + std::string(row);
    if (*mark == 0) without += row;
  }
  EXPECT_EQ(barsOf(text, kOfMinutes).series.bars.size(), 47U);
  EXPECT_EQ(barsOf(text, kOfMinutes).series.bars, barsOf(without, kOfMinutes).series.bars);
}

TEST(PlainRows, shouldNotTakeADelimiterForAPartOfTheDate) {
  const std::string row = "Jan 6, 2013 09:31:00,2,3,1,2,5\n";
  EXPECT_EQ(barError(kPlainHeader + "\n\"Jan 6, 2013 09:30:00\",2,3,1,2,5\n" + row, kOfMinutes),
            "x.csv:3: 7 fields, but there are 6 columns; \"5\" is too much");
}

TEST(PlainRows, shouldReadTheMomentWhereItReallyStands) {
  // The column of times holds all of it, also of days before 1970.
  for (const bool isNewestFirst : {false, true}) {
    std::vector<std::string> rows;
    for (int minute = 0; minute < 50; ++minute) {
      char row[80];
      std::snprintf(row, sizeof(row), "1969-11-07,1969-11-07 09:%02d:00,2,3,1,2,5\n", minute);
      rows.emplace_back(row);
    }
    if (isNewestFirst) std::reverse(rows.begin(), rows.end());
    std::string text = "date,time,open,high,low,close,volume\n";
    for (const std::string& row : rows) text += row;
    const auto bars = barsOf(text).series.bars;
    ASSERT_EQ(bars.size(), 50U);
    for (std::size_t i = 1; i < bars.size(); ++i)
      EXPECT_EQ(bars[i].words[0] - bars[i - 1].words[0], 60'000);
    EXPECT_EQ(bars[0].words[0], -55 * kDay + 9 * kHour);
  }
}

TEST(PlainRows, shouldTellFaultsAndReadOnWhereFaultsArePassedOver) {
  std::string plain = kPlainHeader + "\n", quoted = plain;
  for (int minute = 0; minute < 50; ++minute) {
    char moment[32];
    std::snprintf(moment, sizeof(moment), "2021-11-07 09:%02d:00", minute);
    const char* const numbers = minute == 20   ? ",2,3,1,x,5\n"
                                : minute == 30 ? ",2,1,3,2,5\n"
                                : minute == 40 ? ",2,3,1,2\n"
                                               : ",2,3,1,2,5\n";
    plain += moment + std::string(numbers);
    quoted += '"' + std::string(moment) + '"' + numbers;
  }
  const DataFolder folder;
  const auto faultsOf = [&](const std::string& text) {
    auto request = requestOf({folder.write("x.csv", text)}, kOfMinutes);
    std::vector<std::string> faults;
    request.onFault = [&](const std::string& fault) { faults.push_back(fault); };
    faults.push_back(std::to_string(loadBars(request).at(0).series.bars.size()));
    return faults;
  };
  const std::vector<std::string> faults = faultsOf(plain);
  EXPECT_EQ(faults, faultsOf(quoted));
  ASSERT_EQ(faults.size(), 4U);
  EXPECT_EQ(faults[3], "47");
}

TEST(PlainRows, shouldBeTheSameWhereTheMomentStandsLast) {
  const auto row = [](const std::string& moment, const std::string& end) {
    return PlainRow{"2,3,1,2,5,", moment, end};
  };
  for (const char* const end : {"\n", "\r\n", ",\n", " \n", "\n\n"})
    expectBothAlike("open,high,low,close,volume,datetime",
                    {row("2021-11-07 09:00:00", "\n"), row("2021-11-07 09:01:00", "\n"),
                     row("2021-11-07 09:02:00", end), row("2021-11-07 09:03", "\n"),
                     row("2021-11-07 09:04:00", "")},
                    kOfMinutes);
}

TEST(PlainRows, shouldBeTheSameWhereTheLastLineHasNoEnd) {
  for (const char* const end : {"", "\r", "\n", "5", " "})
    expectBothAlike(kPlainHeader,
                    {{"", "2021-11-07 09:00:00", ",2,3,1,2,5\n"},
                     {"", "2021-11-07 09:01:00", ",2,3,1,2,5\n"},
                     {"", "2021-11-07 09:02:00", std::string(",2,3,1,2,5") + end}},
                    kOfMinutes);
}

TEST(PlainRows, shouldBeTheSameWithTheNewestRowFirst) {
  expectBothAlike(kPlainHeader, {{"", "2021-11-07 09:03:00", ",2,3,1,2,5\n"},
                                 {"", "2021-11-07 09:02:00", ",3,4,1,2,6\n"},
                                 {"", "2021-11-07 09:00:00", ",2,3,1,2,7\n"},
                                 {"", "2021-11-06 15:00:00", ",2,3,1,2,8\n"},
                                 {"", "2021-11-06 14:59:00", ",2,3,1,2,9\n"}});
}

TEST(PlainRows, shouldBeTheSameWhereAnHourComesTwice) {
  const std::string rest = ",2,3,1,2,5\n";
  expectBothAlike(kPlainHeader,
                  {{"", "2021-11-07 01:15", rest},
                   {"", "2021-11-07 01:45", rest},
                   {"", "2021-11-07 01:15", rest},
                   {"", "2021-11-07 01:45", rest},
                   {"", "2021-11-07 02:15", rest}},
                  R"({"timeZone": "America/New_York", "period": "30min"})");
}

TEST(PlainRows, shouldBeTheSameWithAnotherPointAndAnotherStep) {
  const std::vector<PlainRow> rows{{"", "2021-11-07 09:00:00", ";2,5;3;1;2;5\n"},
                                   {"", "2021-11-07 09:01:00", ";2,4999;3;1;2;5\n"},
                                   {"", "2021-11-07 09:02:00", ";2.4999;3;1;2;5\n"}};
  const std::string header = "datetime;open;high;low;close;volume";
  expectBothAlike(header, rows, R"({"decimalPoint": ",", "period": "1min"})");
  expectBothAlike(header,
                  {rows[2],
                   {"", "2021-11-07 09:03:00", ";2.25000001;3;1;2;5\n"},
                   {"", "2021-11-07 09:04:00", ";2.1;3;1;2;5\n"}},
                  R"({"priceTick": "0.25", "period": "1min"})");
}

TEST(PlainRows, shouldBeTheSameWhereNumbersOfOneShapeAreScaledOrCleaned) {
  const auto minutes = [](const char* numbers) {
    std::vector<PlainRow> rows;
    for (int minute = 0; minute < 30; ++minute) {
      char moment[40];
      std::snprintf(moment, sizeof(moment), "2021-11-06 09:%02d:00", minute);
      rows.push_back({"", moment, numbers});
    }
    return rows;
  };
  expectBothAlike(kPlainHeader, minutes(",1816300,1816400,1816200,1816300,500\n"),
                  R"({"priceScale": 10000, "period": "1min"})");
  expectBothAlike(kPlainHeader, minutes(",2.24999999,3.00,1.00,2.25,5\n"),
                  R"({"priceTick": "0.25", "period": "1min"})");
}

/// Rows of minutes, mostly plain, with something else here and there.
std::vector<PlainRow> randomPlainRows(std::mt19937_64& random, bool hasRemark) {
  const auto below = [&](int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
  };
  static constexpr const char* kNumbers[] = {"2",    "2.5",  "2.25", "1.75",     "2.125000",
                                             "1.50", "2.10", "1.1",  "2.999999", "2.0000000000001"};
  static constexpr const char* kOdd[] = {"", " 2", "x", "1e0", "-2", "+2", "\"2\"", "9", "0.5"};
  const bool hasOdd = below(2) == 0;
  std::vector<PlainRow> rows;
  int minute = below(100);
  for (int count = 3 + below(60); count > 0; --count) {
    minute += below(20) == 0 ? 600 : 1;
    char moment[40];
    const char* const format =
        below(4) == 0 ? "2021-11-%02d %02d:%02d" : "2021-11-%02d %02d:%02d:00";
    std::snprintf(moment, sizeof(moment), format, 7 + minute / 1440, minute / 60 % 24, minute % 60);
    std::string behind;
    for (int column = 0; column < 5; ++column) {
      const bool isOdd = hasOdd && below(90) == 0;
      behind += ',';
      if (isOdd)
        behind += kOdd[below(9)];
      else if (column == 1 || column == 2)
        behind += column == 1 ? "3.00" : "1";
      else
        behind += kNumbers[below(10)];
    }
    if (hasRemark) behind += below(30) == 0 ? ",\"a,b\"" : below(30) == 0 ? ",a,b" : ",abc";
    if (below(30) == 0) behind += ',';
    rows.push_back({"", moment, behind + (below(10) == 0 ? "\r\n" : "\n")});
  }
  if (below(4) == 0) std::reverse(rows.begin(), rows.end());
  return rows;
}

TEST(PlainRows, shouldBeTheSameOnRandomRows) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const int runs = support::randomRuns(300);
  for (int run = 0; run < runs; ++run) {
    static constexpr const char* kDescriptions[] = {
        R"({"period": "1min"})", R"({"period": "1min", "tolerant": true, "skipEmpty": true})",
        R"({"timeZone": "America/New_York", "stamp": "end", "period": "1min"})"};
    const bool hasRemark = random() % 2 == 0;
    expectBothAlike(kPlainHeader + (hasRemark ? ",remark" : ""), randomPlainRows(random, hasRemark),
                    kDescriptions[random() % 3]);
    if (testing::Test::HasFatalFailure()) return;
  }
}

/// How many rows of a file are taken, one after the other, before one that is not plain.
std::size_t plainRowsTaken(const std::string& text, const char* description = "{}") {
  const DataFolder folder;
  const auto request = requestOf({folder.write("x.csv", text)}, description);
  const detail::Description read = detail::readDescription(request.description);
  const detail::Table table(request.paths[0], read, true);
  const detail::NumberParser parser(read.numbers, 0, {});
  const detail::ColumnMap& map = table.map();
  detail::PlainRows quick(table,
                          {{map.open, &parser}, {map.close, &parser}, {map.volume, &parser}});
  detail::TableRows rows(table, table.data(), 0);
  if (!quick.canBe() || !rows.next()) return 0;
  detail::RowTime time = rows.time(INT64_MIN);
  std::size_t taken = 0;
  while (const std::size_t length = rows.lookPlain(quick, time.utcMs + 1, time)) {
    EXPECT_EQ(quick.number(map.close), 2);
    EXPECT_EQ(quick.number(-1), 0);
    rows.pass(length);
    EXPECT_EQ(rows.line(), ++taken + 1);
  }
  return taken;
}

TEST(PlainRows, shouldBeTheSameWhereNumbersChangeTheirShapeAllTheTime) {
  std::vector<PlainRow> rows;
  const char* const shapes[] = {",20,30,10,20,5\n", ",2.5,3.5,1.25,2.5,50\n",
                                ",200,300,100.5,200,500\n"};
  for (int minute = 0; minute < 1000; ++minute) {
    char moment[40];
    std::snprintf(moment, sizeof(moment), "2021-11-06 %02d:%02d", minute / 60, minute % 60);
    // First by turns, so often that no more guesses are made, and then the same for long.
    rows.push_back({"", moment, shapes[minute < 700 ? minute % 3 : 1]});
  }
  expectBothAlike(kPlainHeader, rows);
}

TEST(PlainRows, shouldTakeNoRowsAnyMoreWhereMostAreNotPlain) {
  const DataFolder folder;
  std::string text = kPlainHeader + "\n";
  for (int minute = 0; minute < 60; ++minute) text += "2021-11-07 09:00:00,2,3,1, 2,5\n";
  const auto request = requestOf({folder.write("x.csv", text)});
  const detail::Description read = detail::readDescription(request.description);
  const detail::Table table(request.paths[0], read, true);
  const detail::NumberParser parser;
  detail::PlainRows quick(table, {{table.map().close, &parser}});
  detail::TableRows rows(table, table.data(), 0);
  ASSERT_TRUE(rows.next());
  detail::RowTime time = rows.time(INT64_MIN);
  int tries = 0;
  for (; quick.canBe() && tries < 1000; ++tries)
    EXPECT_EQ(rows.lookPlain(quick, INT64_MIN, time), 0U);
  EXPECT_EQ(tries, 65);
}

TEST(PlainRows, shouldTakePlainRows) {
  const std::string head = kPlainHeader + "\n2021-11-07 09:00:00,2,3,1,2,5\n";
  const std::string good = "2021-11-07 09:01:00,2.00,3,1,2,5\n";
  EXPECT_EQ(plainRowsTaken(head + good + "2021-11-07 09:02,2,3,1,2.0,5\r\n" + good), 3U);
  EXPECT_EQ(plainRowsTaken(head + "2021-11-07 09:02,22,33,11,2,5,\n" + good), 2U);
  EXPECT_EQ(plainRowsTaken("open,high,low,close,volume,datetime\n2,3,1,2,5,2021-11-07 09:00:00\n"
                           "2,3,1,2,5,2021-11-07 09:01\r\n2,3,1,2,5,2021-11-07 09:02:00\n"),
            2U);
  EXPECT_EQ(plainRowsTaken(kPlainHeader + ",remark\n2021-11-07 09:00:00,2,3,1,2,5,a\n"
                                          "2021-11-07 09:01:00,2,3,1,2,5,\r\n"),
            1U);
  EXPECT_EQ(plainRowsTaken(head + good + "\n" + good), 1U);
  EXPECT_EQ(plainRowsTaken(head + "2021-11-08 09:01:00,2,3,1,2,5\n" + good), 0U);
  EXPECT_EQ(plainRowsTaken(head + good, R"({"decimalPoint": ","})"), 0U);
  EXPECT_EQ(plainRowsTaken("symbol," + kPlainHeader + "\nA,2021-11-07 09:00:00,2,3,1,2,5\n" + "A," +
                           good),
            0U);
}

}  // namespace
}  // namespace orvane
