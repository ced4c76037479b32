#include "platform/market/files/CsvRows.h"

#include <gtest/gtest.h>

#include "platform/fields/KLineView.h"
#include "tests/platform/files/DataFileSupport.h"

namespace orvane::detail {
namespace {

/// The fields of a row, those that were read as numbers with a "#" and their digits behind.
std::string shown(const CsvRows& rows) {
  std::string all;
  for (const CsvField& field : rows.fields()) {
    all += all.empty() ? "" : "|";
    all += field.text;
    if (field.number.digits != 0) all += "#" + std::to_string(field.number.digits);
  }
  return all;
}

std::vector<std::string> rowsOf(const std::string& text, char delimiter = ',') {
  const std::string file = "x.csv";
  CsvRows rows(file, text, delimiter);
  std::vector<std::string> all;
  while (rows.next()) all.push_back(shown(rows));
  return all;
}

TEST(CsvRows, shouldTellNumbersWhileTheEndsOfFieldsAreLookedFor) {
  EXPECT_EQ(rowsOf("a,-1.25,,7\n12345678,123456789.5,0.,.5\n"),
            (std::vector<std::string>{"a|-1.25#3||7#1", "12345678#8|123456789.5#10|0.#1|.5#1"}));
}

TEST(CsvRows, shouldEndTheLastNumberOfALineWithTheLine) {
  // What follows on the next line would go on with it, were there no end between them.
  for (const char* const end : {"\n", "\r\n"})
    EXPECT_EQ(rowsOf(std::string("1,2") + end + ".5,6" + end + "7,8."),
              (std::vector<std::string>{"1#1|2#1", ".5#1|6#1", "7#1|8.#1"}));
}

TEST(CsvRows, shouldLeaveRowsAsTheyAreWhateverTheirColumnsHeldBefore) {
  // A column that has shown a date is split by its delimiters alone from there on.
  EXPECT_EQ(rowsOf("2020-01-02,5\n20200103,6\n7,8\n"),
            (std::vector<std::string>{"2020-01-02|5#1", "20200103|6#1", "7|8#1"}));
  EXPECT_EQ(rowsOf("1,2,3\n4\n5,6\n\n7,8,9,10\n"),
            (std::vector<std::string>{"1#1|2#1|3#1", "4#1", "5#1|6#1", "7#1|8#1|9#1|10#2"}));
}

TEST(CsvRows, shouldTellNumbersInMoreColumnsThanItRemembersTextsOf) {
  std::string line, expected;
  for (int i = 0; i < 70; ++i) {
    line += (i == 0 ? "" : ",") + std::string(i == 64 ? "1-2" : "3");
    expected += (i == 0 ? "" : "|") + std::string(i == 64 ? "1-2" : "3#1");
  }
  EXPECT_EQ(rowsOf(line + "\n" + line + "\n"), (std::vector<std::string>{expected, expected}));
}

TEST(CsvRows, shouldReadNumbersInColumnsThatHeldOnesOfAnotherForm) {
  const LoadedBars loaded = barsOf(
      "time,open,high,low,close,volume\n"
      "2021-01-04 09:30:00,1,1,1,1,1e3\n"
      "2021-01-04 09:31:00,2,2,2,2,250\n"
      "2021-01-04 09:32:00,1.5e0,2,1,2,250\n"
      "2021-01-04 09:33:00,1.75,2,1,2,\n");
  std::vector<double> opens, volumes;
  for (const IKLine& bar : loaded.series.bars) {
    opens.push_back(KLineView(bar).open());
    volumes.push_back(KLineView(bar).volume());
  }
  EXPECT_EQ(opens, (std::vector<double>{1, 2, 1.5, 1.75}));
  EXPECT_EQ(volumes, (std::vector<double>{1000, 250, 250, 0}));
}

}  // namespace
}  // namespace orvane::detail
