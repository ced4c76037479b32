#include <random>

#include "tests/platform/files/DataFileSupport.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

/// Whatever bytes a file holds, loading it ends, with a series in order or with an error.
void tryBoth(const std::string& bytes, const char* description, const DataFolder& folder) {
  const auto path = folder.write("x_20131206.csv", bytes);
  try {
    for (const auto& one : loadBars(requestOf({path}, description)))
      for (std::size_t i = 1; i < one.series.bars.size(); ++i)
        ASSERT_LT(KLineView(one.series.bars[i - 1]).endTime(),
                  KLineView(one.series.bars[i]).endTime());
  } catch (const DataFileError& error) {
    ASSERT_NE(std::string(error.what()), "");
  }
  try {
    for (const auto& one : loadTicks(requestOf({path}, description)))
      ASSERT_EQ(one.series.cells.size(), one.series.rows() * one.series.columns.size());
  } catch (const DataFileError& error) {
    ASSERT_NE(std::string(error.what()), "");
  }
}

const char* const kDatedBars =
    "date,time,open,high,low,close,volume\n20131206,0900,1,2,1,2,5\n20131206,0901,1,2,1,2,5\n";
const char* const kBidAskBars =
    "32400000,1.5,2.5,1.25,2,10,1.75,2.75,1.5,2.25,20\n32460000,,,,,0,1.75,2.75,1.5,2.25,20\n";
const char* const kTicks =
    "symbol,datetime,price,size,bid1,ask1\nA,2013-12-06T09:00:00.5+08:00,1.1,2,1,1.2\n"
    "B,2013-12-06T09:00:01.5+08:00,1.1,2,1,1.2\n";
const char* const kEpochBars = "1386320400000,10,12.5,9.5,11,7\n1386320460000,11,13.5,10.5,12,8\n";
const char* const kSeeds[] = {kDatedBars, kBidAskBars, kTicks, kEpochBars};

TEST(GarbageFiles, shouldNeverCrashWhenBytesAreChangedAtRandom) {
  const unsigned seed = 42;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const std::string alphabet = ",;\t|\"\n\r# 0123456789.-+:eETZ\xFF\xB0\xC8/abtime\xEF\xBB\xBF";
  const DataFolder folder;
  for (int round = 0; round < 3000 / support::kSanitizerDivisor; ++round) {
    std::string bytes = kSeeds[random() % std::size(kSeeds)];
    for (unsigned change = 1 + random() % 8; change > 0 && !bytes.empty(); --change) {
      const std::size_t at = random() % bytes.size();
      switch (random() % 4) {
        case 0:
          bytes[at] = alphabet[random() % alphabet.size()];
          break;
        case 1:
          bytes.erase(at, 1 + random() % 6);
          break;
        case 2:
          bytes.insert(at, 1, alphabet[random() % alphabet.size()]);
          break;
        default:
          bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 40));
      }
    }
    tryBoth(bytes,
            round % 3 == 0 ? R"({"tolerant": true, "skipEmpty": true, "period": "1min",
                                        "timeZone": "America/New_York"})"
                           : "{}",
            folder);
    if (HasFatalFailure()) FAIL() << bytes;
  }
}

TEST(GarbageFiles, shouldNeverCrashWhenBytesAreRandom) {
  const unsigned seed = 43;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const DataFolder folder;
  for (int round = 0; round < 500; ++round) {
    std::string bytes(random() % 300, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    if (round % 5 == 0) bytes = "\x1F\x8B\x08" + bytes;
    if (round % 5 == 1) bytes = "\xFF\xFE" + bytes;
    tryBoth(bytes, "{}", folder);
  }
}

TEST(GarbageFiles, shouldTakeNumbersAndTimesOfAnyLength) {
  const DataFolder folder;
  for (const std::size_t length : {17U, 19U, 20U, 40U, 400U, 5000U})
    for (const char digit : {'0', '1', '9'}) {
      const std::string run(length, digit);
      tryBoth(run + "," + run + "," + run + "," + run + "," + run + "\n", "{}", folder);
      tryBoth("time,open,high,low,close\n" + run + ",1,1,1,1\n", "{}", folder);
      tryBoth("date,time,price\n20131206," + run + "," + run + "\n", "{}", folder);
    }
}

}  // namespace
}  // namespace orvane
