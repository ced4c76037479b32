#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

const std::string kHead = "datetime,open,high,low,close,volume\n2013-12-06 09:00:00,2,3,1,2,5\n";

TEST(DataFileErrors, shouldNameTheFieldWhenItIsNoNumber) {
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,abc,5\n"),
            "x.csv:3: column \"close\": \"abc\" is not a number");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,nan,5\n"),
            "x.csv:3: column \"close\": \"nan\" is not a number");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,inf,1,2,5\n"),
            "x.csv:3: column \"high\": \"inf\" is not a number");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,0x2,5\n"),
            "x.csv:3: column \"close\": \"0x2\" is not a number");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2,\"1,234\"\n"),
            "x.csv:3: column \"volume\": \"1,234\" is not a number; \"thousands\" or "
            "\"decimalPoint\" of a description tells what the comma is");
  EXPECT_EQ(tickError("20131206 09:00:00,1.5,3,A\n20131206 09:00:01,1.5,x3,A\n",
                      R"({"columns": ["datetime", "lastPrice", "volume"]})"),
            "x.csv:2: column \"3 (volume)\": \"x3\" is not a number");
}

TEST(DataFileErrors, shouldNameTheFieldWhenAPriceIsEmpty) {
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,,5\n"),
            "x.csv:3: column \"close\" is empty");
}

TEST(DataFileErrors, shouldNameTheValueWhenABarContradictsItself) {
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,0.5,1,2,5\n"),
            "x.csv:3: column \"high\": \"0.5\" is below the low, 1");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,4,3,1,2,5\n"),
            "x.csv:3: column \"open\": \"4\" is above the high, 3");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,0.5,5\n"),
            "x.csv:3: column \"close\": \"0.5\" is below the low, 1");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2,-5\n"),
            "x.csv:3: column \"volume\": \"-5\" is negative");
  EXPECT_EQ(tickError("time,price,size\n09:00:00,1,-2\n", R"({"date": 20131206})"),
            "x.csv:2: column \"size\": \"-2\" is negative");
}

TEST(DataFileErrors, shouldNameTheTimeWhenItRunsTheWrongWay) {
  EXPECT_EQ(barError(kHead + "2013-12-06 08:59:00,2,3,1,2,5\n2013-12-06 09:01:00,2,3,1,2,5\n"),
            "x.csv:3: column \"datetime\": \"2013-12-06 08:59:00\" runs backwards");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:00:00,2,3,1,2,5\n2013-12-06 09:01:00,2,3,1,2,5\n"),
            "x.csv:3: column \"datetime\": \"2013-12-06 09:00:00\" repeats the time of an earlier "
            "row");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2,5\n2013-12-06 08:59:00,2,3,1,2,5\n"),
            "x.csv:3: column \"datetime\": \"2013-12-06 09:01:00\" runs forwards, but the newest "
            "row comes first in this file");
  EXPECT_EQ(barError(kHead + "2013-12-06 08:59:00,2,3,1,2,5\n", R"({"order": "ascending"})"),
            "x.csv:3: column \"datetime\": \"2013-12-06 08:59:00\" runs backwards");
  EXPECT_EQ(tickError("date,time,price\n20131206,09:00:01,1\n20131206,09:00:00,1\n"
                      "20131206,09:00:02,1\n"),
            "x.csv:3: column \"time\": \"09:00:00\" runs backwards");
}

TEST(DataFileErrors, shouldNameTheValueWhenItIsNoTime) {
  EXPECT_EQ(barError(kHead + "2013-13-06 09:01:00,2,3,1,2,5\n"),
            "x.csv:3: column \"datetime\": \"2013-13-06 09:01:00\" is not a date or time");
  EXPECT_EQ(barError(kHead + ",2,3,1,2,5\n"), "x.csv:3: column \"datetime\" is empty");
  EXPECT_EQ(
      barError("date,time,open,high,low,close\n20131206,0900,1,2,1,2\n20131206,0975,1,2,1,2\n",
               R"({"timeFormat": "HHMM"})"),
      "x.csv:3: column \"time\": \"0975\" is not a time");
}

TEST(DataFileErrors, shouldAskForTheOrderWhenADateMayBeReadTwoWays) {
  EXPECT_EQ(barError("date,open,high,low,close\n01/02/2013,1,2,1,2\n"),
            "x.csv: column \"date\": \"01/02/2013\" may begin with the day or with the month; say "
            "which in the description: \"dateOrder\": \"DMY\" or \"MDY\"");
}

TEST(DataFileErrors, shouldAskForTheDateWhenRowsHaveATimeOfDayOnly) {
  EXPECT_EQ(barError("time,open,high,low,close\n09:00,1,2,1,2\n"),
            "x.csv: column \"time\" is a time of day, and nothing tells the date: give \"date\" in "
            "the description, or put YYYYMMDD into the file's name");
}

TEST(DataFileErrors, shouldNameTheLineWhenARowHasTooFewOrTooManyFields) {
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2\n"),
            "x.csv:3: 5 fields, but 6 are needed; column \"volume\" is missing");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2,5,6\n"),
            "x.csv:3: 7 fields, but there are 6 columns; \"6\" is too much");
}

TEST(DataFileErrors, shouldListTheColumnsWhenOneIsMissing) {
  EXPECT_EQ(barError("date,open,high,low\n20131206,1,2,1\n"),
            "x.csv:1: no column for \"close\" (the columns are: date, open, high, low); name it "
            "with \"columns\" in a description");
  EXPECT_EQ(barError("open,high,low,close\n1,2,1,2\n"),
            "x.csv:1: no column for the time (the columns are: open, high, low, close); name it "
            "with \"columns\" in a description");
  EXPECT_EQ(tickError("datetime,foo\n20131206 09:00:00,1\n"),
            "x.csv:1: no column for a price (\"lastPrice\", \"bidPrice1\" or \"askPrice1\") (the "
            "columns are: datetime, foo); name it with \"columns\" in a description");
}

TEST(DataFileErrors, shouldShowTheFirstRowWhenNothingIsRecognised) {
  EXPECT_EQ(barError("20131206 09:00,1,2,1,2,5,6,7\n"),
            "x.csv:1: no header, and the columns of \"20131206 09:00,1,2,1,2,5,6,7\" are of no "
            "known shape; name them in a description, such as \"columns\": [\"date\", \"time\", "
            "\"open\", \"high\", \"low\", \"close\", \"volume\"], with \"-\" for one to pass over");
}

TEST(DataFileErrors, shouldNameTheLineWhenAQuoteIsNotClosed) {
  EXPECT_EQ(barError(kHead + "\"2013-12-06 09:01:00,2,3,1,2,5\n"),
            "x.csv:3: a quote is not closed");
  EXPECT_EQ(barError(kHead + "\"2013-12-06 09:01:00\"x,2,3,1,2,5\n"),
            "x.csv:3: text after a closing quote");
}

TEST(DataFileErrors, shouldTellWhenARowHasNoPrice) {
  EXPECT_EQ(
      barError("32400000,,,,,0,,,,,0\n32460000,1,1,1,1,1,1,1,1,1,1\n", "{}", "x_20131206.csv"),
      "x_20131206.csv:1: neither a bid nor an ask; \"skipEmpty\": true in a description "
      "passes over such rows");
}

TEST(DataFileErrors, shouldTellWhatIsWrongWithTheFileWhenItCannotBeRead) {
  const DataFolder folder;
  const auto load = [&](const std::string& path) {
    return messageOf([&] { loadBars(requestOf({path})); }, folder);
  };
  EXPECT_EQ(load(folder.path("none.csv")), "none.csv: cannot be read: No such file or directory");
  std::filesystem::create_directory(folder.path("sub"));
  EXPECT_EQ(load(folder.path("sub")), "sub: is a folder, not a file");
  EXPECT_EQ(load(folder.write("empty.csv", "")), "empty.csv: is empty");
  EXPECT_EQ(load(folder.write("blank.csv", "\n # x\n\n")), "blank.csv: has no rows");
  EXPECT_EQ(load(folder.write("header.csv", "date,open,high,low,close\n")),
            "header.csv: has a header but no rows");
  EXPECT_EQ(load(folder.write("zero.csv", kHead + std::string("a\0b", 3))),
            "zero.csv:3: a zero byte; this is not text");
  EXPECT_EQ(load(folder.write("x.zip", "PK\x03\x04 and more")),
            "x.zip: is a zip archive: unpack or export it to CSV first");
  EXPECT_EQ(messageOf([&] { loadBars(requestOf({})); }, folder), "no file is named");
}

TEST(DataFileErrors, shouldTellThatGzipIsBrokenWhenItIsCutOrChanged) {
  const DataFolder folder;
  std::string text = kHead;
  for (int i = 10; i < 60; ++i) text += "2013-12-06 09:" + std::to_string(i) + ":00,2,3,1,2,5\n";
  const auto whole = folder.writeGzip("whole.gz", text);
  std::ifstream in(whole, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  const auto load = [&](const std::string& content) {
    const auto path = folder.write("x.csv.gz", content);
    return messageOf([&] { loadBars(requestOf({path})); }, folder);
  };
  EXPECT_EQ(load(bytes), "");
  EXPECT_EQ(load(bytes.substr(0, bytes.size() - 9)), "x.csv.gz: broken gzip: it ends too early");
  EXPECT_EQ(load(bytes + "tail"), "x.csv.gz: broken gzip: bytes after its end");
  std::string changed = bytes;
  changed[changed.size() - 6] ^= 1;
  EXPECT_EQ(load(changed), "x.csv.gz: broken gzip: incorrect data check");
}

TEST(DataFileErrors, shouldSayThatAFileIsOfAnotherForm) {
  const DataFolder folder;
  for (const auto& [text, form] : {std::pair{"{\"runners\": []}\n", "JSON"},
                                   {"[\n  {}\n]\n", "JSON"},
                                   {"\n<!DOCTYPE html>\n<html>\n", "HTML"},
                                   {"<?xml version=\"1.0\"?>\n", "HTML"}}) {
    const auto path = folder.write("x.csv", text);
    EXPECT_EQ(messageOf([&] { loadBars(requestOf({path})); }, folder),
              std::string("x.csv: looks like ") + form + ", not a table");
  }
  const auto angled =
      folder.write("y.csv",
                   "<DATE>,<TIME>,<OPEN>,<HIGH>,<LOW>,<CLOSE>,<VOL>\n20210104,093000,1,2,1,2,3\n"
                   "20210104,093100,1,2,1,2,3\n");
  EXPECT_EQ(messageOf([&] { loadBars(requestOf({angled})); }, folder), "");
}

TEST(DataFileErrors, shouldStopWhenAFileUnpacksToFarMoreThanMarketDataDoes) {
  const DataFolder folder;
  const auto path = folder.writeGzip("bomb.csv.gz", std::string(std::size_t{80} << 20, '\n'));
  EXPECT_EQ(messageOf([&] { loadBars(requestOf({path})); }, folder),
            "bomb.csv.gz: unpacks to more than 64 MiB, which no market data of its size does; "
            "unpack it first if it is genuine");
}

TEST(DataFileErrors, shouldNameBothFilesWhenTheyOverlap) {
  const DataFolder folder;
  const auto a =
      folder.write("es_20131206_1min_quote.csv", "32400000,1,1,1,1,5\n32460000,1,1,1,1,5\n");
  const auto b =
      folder.write("es_20131206_1min_trade.csv", "32430000,1,1,1,1,5\n32490000,1,1,1,1,5\n");
  EXPECT_EQ(messageOf(
                [&] {
                  loadBars(requestOf({a, b}));
                },
                folder),
            "es_20131206_1min_trade.csv overlaps es_20131206_1min_quote.csv: it begins at "
            "2013-12-06 09:00:30.000 UTC, and the other ends at 2013-12-06 09:01:00.000 UTC");
}

TEST(DataFileErrors, shouldNameBothFilesWhenTheirPeriodsDiffer) {
  const DataFolder folder;
  const auto a = folder.write("es_20131206_1min.csv", "32400000,1,1,1,1,5\n32460000,1,1,1,1,5\n");
  const auto b = folder.write("es_20131207_5min.csv", "32400000,1,1,1,1,5\n32700000,1,1,1,1,5\n");
  EXPECT_EQ(messageOf(
                [&] {
                  loadBars(requestOf({a, b}));
                },
                folder),
            "es_20131207_5min.csv has bars of 5 min and es_20131206_1min.csv of 1 min by their "
            "names; one series has one period");
}

TEST(DataFileErrors, shouldTellWhenThePeriodCannotBeHad) {
  EXPECT_EQ(barError(kHead),
            "x.csv: one bar does not tell its period; give \"period\" in a description");
  EXPECT_EQ(barError("date,open,high,low,close\n20130101,1,2,1,2\n20130201,1,2,1,2\n"),
            "x.csv: the bars are mostly 31 days apart; periods above a week are not known. For "
            "daily bars with gaps give \"period\": \"day\"");
  EXPECT_EQ(barError(kHead + "2013-12-06 09:01:00,2,3,1,2,5\n", R"({"period": "5min"})"),
            "x.csv: \"period\" is 5 min, but the bars are mostly 1 min apart");
  EXPECT_EQ(barError("date,open,high,low,close\n20130101,1,2,1,2\n", R"({"period": "5min"})"),
            "x.csv: \"period\" is 5 min, but the bars have dates without times");
}

TEST(DataFileErrors, shouldNameTheCodesWhenTheOneAskedForIsNotThere) {
  const DataFolder folder;
  auto request = requestOf({folder.write(
      "x.csv", "code,date,open,high,low,close\nA,20131206,1,2,1,2\nB,20131206,1,2,1,2\n")});
  request.code = "C";
  EXPECT_EQ(messageOf([&] { loadBars(request); }, folder),
            "x.csv: no rows of the code \"C\"; there are A, B");
}

TEST(DataFileErrors, shouldTellWhenTheDescriptionDoesNotFitTheFile) {
  EXPECT_EQ(barError(kHead, R"({"columns": {"open": "Opn"}})"),
            "x.csv:1: the description names a column \"Opn\", which is not there; did you mean "
            "\"open\"?");
  EXPECT_EQ(barError(kHead, R"({"columns": {"open": 9}})"),
            "x.csv:1: the description names column 9, but there are 6");
  EXPECT_EQ(barError("20131206,1\n", R"({"columns": ["date", "open", "high", "low", "close"]})"),
            "x.csv:1: 2 fields, but \"columns\" names 5");
  EXPECT_EQ(barError(kHead, R"({"kind": "ticks"})"),
            "description: \"kind\" is \"ticks\", but the files are to be read as bars");
}

}  // namespace
}  // namespace orvane
