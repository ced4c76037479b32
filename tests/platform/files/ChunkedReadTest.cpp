#include <algorithm>
#include <cstdio>
#include <random>

#include "tests/platform/files/DataFileSupport.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

/// Everything that loading bars tells, as one text; or the error.
std::string barsAsText(DataFileRequest request) {
  std::string text;
  try {
    for (const LoadedBars& one : loadBars(request)) {
      const BarSeries& series = one.series;
      text += one.code + " " + std::to_string(series.periodMs) + " " + series.timeZone + "\n";
      for (const std::string& note : one.notes) text += "note " + note + "\n";
      for (const IKLine& bar : series.bars) {
        for (const Word word : bar.words) text += std::to_string(word) + ",";
        text += "\n";
      }
    }
  } catch (const DataFileError& error) {
    return std::string("error ") + error.what();
  }
  return text;
}

std::string ticksAsText(DataFileRequest request) {
  std::string text;
  try {
    for (const LoadedTicks& one : loadTicks(request)) {
      const TickSeries& series = one.series;
      text += one.code + " " + series.timeZone + "\n";
      for (const std::string& note : one.notes) text += "note " + note + "\n";
      for (const TickColumnId& id : series.columns)
        text += std::to_string(static_cast<int>(id.column)) + "/" + std::to_string(id.level) + " ";
      for (std::size_t row = 0; row < series.rows(); ++row) {
        text += "\n" + std::to_string(series.times[row]) + " " +
                std::to_string(series.tradingDays[row]);
        for (std::size_t i = 0; i < series.columns.size(); ++i)
          text += " " + std::to_string(std::bit_cast<std::uint64_t>(
                            series.cells[row * series.columns.size() + i]));
      }
    }
  } catch (const DataFileError& error) {
    return std::string("error ") + error.what();
  }
  return text;
}

/// Writes files that are mostly good, with a fault here and there.
class FileWriter {
 public:
  explicit FileWriter(std::mt19937_64& random) : random_(random) {}

  std::string write(bool ticks) {
    hasCode_ = chance(3);
    isDescending_ = chance(4);
    // Near the hour that the clocks of New York run through twice, on 2021-11-07.
    minute_ = isDescending_ ? 420 : 0;
    faults_ = chance(2) ? 0 : 120;
    std::string text = hasCode_ ? "symbol,datetime," : "datetime,";
    text += ticks ? "price,size,bid1,ask1\n" : "open,high,low,close,volume\n";
    const int rows = 1 + below(300);
    for (int i = 0; i < rows; ++i) {
      if (chance(20)) text += chance(2) ? "\n" : "# a remark, with a comma\n";
      text += row(ticks);
      text += chance(30) ? "\r\n" : "\n";
    }
    if (chance(3)) text.pop_back();
    return text;
  }

 private:
  int below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
  bool chance(int oneOf) { return below(oneOf) == 0; }
  bool fault() { return faults_ > 0 && chance(faults_); }

  std::string row(bool ticks) {
    const int step = ticks ? (chance(3) ? 0 : 1) : (chance(20) ? 2 : 1);
    minute_ += isDescending_ ? -step : step;
    if (fault()) minute_ += isDescending_ ? 5 : -5;
    char time[48];
    // Local minutes: after 1:59 comes 1:00 once more.
    const int local = minute_ < 120 ? minute_ : minute_ - 60;
    std::snprintf(time, sizeof(time), chance(15) ? "11/7/2021 %d:%02d" : "2021-11-07 %02d:%02d:00",
                  std::max(local, 0) / 60 % 24, std::max(local, 0) % 60);
    std::string text = hasCode_ ? std::string(1, static_cast<char>('A' + below(2))) + "," : "";
    text += chance(25) ? "\"" + std::string(time) + "\"" : time;
    for (int column = 0; column < (ticks ? 4 : 5); ++column) text += "," + number(ticks, column);
    if (fault()) text += ",9";
    if (chance(40)) text += ",";
    return text;
  }

  std::string number(bool ticks, int column) {
    if (fault()) return chance(2) ? "x" : "\"1";
    if (fault()) return "";
    if (ticks) return std::to_string(below(900)) + "." + std::to_string(below(100));
    static constexpr const char* kBar[][5] = {
        {"10.25", "11.5", "9", "10", "700"},
        {"\"10.25\"", "1.15e1", "\"9.0\"", "+10", " 700"},
        {"10.250000000000000000001", "11.50", "9.00000000000000001", "10.0", "700.000"}};
    return fault() ? "8.5" : kBar[chance(20) ? 1 + below(2) : 0][column];
  }

  std::mt19937_64& random_;
  bool hasCode_ = false;
  bool isDescending_ = false;
  int minute_ = 0;
  int faults_ = 0;
};

constexpr const char* kChunkDescriptions[] = {
    R"({"timeZone": "America/New_York", "dateOrder": "MDY", "period": "1min"})",
    R"({"timeZone": "America/New_York", "dateOrder": "MDY", "tolerant": true, "skipEmpty": true})",
    R"({"dateOrder": "MDY", "stamp": "end", "priceTick": "0.25", "skipEmpty": true})"};

TEST(ChunkedRead, shouldReadTheSameInChunksOfAnySizeAsInOneGo) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  const DataFolder folder;
  int good = 0;
  int bad = 0;
  const int runs = support::randomRuns(500);
  for (int run = 0; run < runs; ++run) {
    const bool ticks = random() % 2 == 0;
    const std::string text = FileWriter(random).write(ticks);
    auto request =
        requestOf({run % 5 == 0 ? folder.writeGzip("x.csv.gz", text) : folder.write("x.csv", text)},
                  kChunkDescriptions[random() % std::size(kChunkDescriptions)]);
    request.pace = {1, std::size_t{1} << 30};
    const std::string whole = ticks ? ticksAsText(request) : barsAsText(request);
    for (int cut = 0; cut < 3; ++cut) {
      request.pace = {1 + static_cast<int>(random() % 3), 1 + random() % 500};
      ASSERT_EQ(ticks ? ticksAsText(request) : barsAsText(request), whole)
          << "run " << run << ", chunks of " << request.pace.chunkBytes << "\n"
          << text;
    }
    ++(whole.starts_with("error") ? bad : good);
  }
  EXPECT_GT(good, runs / 40);
  EXPECT_GT(bad, runs / 40);
}

TEST(ChunkedRead, shouldTellTheFirstFaultWhenSeveralChunksHaveOne) {
  const DataFolder folder;
  std::string text = "datetime,open,high,low,close\n";
  for (int i = 0; i < 40; ++i) {
    char row[64];
    std::snprintf(row, sizeof(row), "2021-01-04 09:%02d,1,2,1,%s\n", i,
                  i == 17 || i == 18 || i == 35 ? "x" : "2");
    text += row;
  }
  for (const std::size_t bytes : {1U, 30U, 100U, 300U, 10'000U}) {
    auto request = requestOf({folder.write("a.csv", text)});
    request.pace = {3, bytes};
    EXPECT_EQ(messageOf([&] { loadBars(request); }, folder),
              "a.csv:19: column \"close\": \"x\" is not a number");
  }
}

TEST(ChunkedRead, shouldChooseBetweenHoursByTheRowsOfTheChunkBefore) {
  // 1:30 comes twice; behind 1:45 it is the second one.
  const std::string text =
      "datetime,open,high,low,close\n2021-11-07 01:15,1,2,1,2\n2021-11-07 01:45,1,2,1,2\n"
      "2021-11-07 01:15,1,2,1,2\n2021-11-07 01:45,1,2,1,2\n";
  const DataFolder folder;
  for (const std::size_t bytes : {1U, 25U, 60U, 10'000U}) {
    auto request = requestOf({folder.write("a.csv", text)},
                             R"({"timeZone": "America/New_York", "period": "30min"})");
    request.pace = {2, bytes};
    const auto loaded = loadBars(request);
    ASSERT_EQ(loaded.size(), 1U);
    ASSERT_EQ(loaded[0].series.bars.size(), 4U);
    EXPECT_EQ(loaded[0].series.bars[2].words[0] - loaded[0].series.bars[0].words[0], kHour);
  }
}

TEST(ChunkedRead, shouldFindThePeriodBetweenChunksWhereEachHasOneRow) {
  const std::string head = "datetime,open,high,low,close\n";
  const std::string rows[] = {"2021-11-08 09:00,1,2,1,2\n", "2021-11-08 09:05,1,2,1,2\n",
                              "2021-11-08 09:20,1,2,1,2\n", "2021-11-08 09:25,1,2,1,2\n"};
  std::string ascending = head, descending = head;
  for (const std::string& row : rows) {
    ascending += row;
    descending.insert(head.size(), row);
  }
  const DataFolder folder;
  for (const std::string& text : {ascending, descending}) {
    for (const std::size_t bytes : {1U, 10'000U}) {
      auto request = requestOf({folder.write("a.csv", text)});
      request.pace = {2, bytes};
      const auto loaded = loadBars(request);
      ASSERT_EQ(loaded.size(), 1U);
      EXPECT_EQ(loaded[0].series.periodMs, 5 * 60'000) << text;
    }
  }
}

TEST(ChunkedRead, shouldTakeNothingFromTheRowsBeforeToReadADate) {
  // Behind "2021-11-1" a "0:30" is no time of day: the text by itself has no blank there.
  EXPECT_EQ(barError("datetime,open,high,low,close\n2021-11-1,1,2,1,2\n2021-11-10:30,1,2,1,2\n"),
            "x.csv:3: column \"datetime\": \"2021-11-10:30\" is not a date or time");
}

}  // namespace
}  // namespace orvane
