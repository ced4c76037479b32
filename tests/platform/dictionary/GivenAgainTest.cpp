// What a dictionary's file shows when the same input is given to it once more.

#include <SQLiteCpp/SQLiteCpp.h>

#include "services/Common/ITradeService.h"
#include "tests/platform/dictionary/DictionaryFixture.h"
#include "tests/platform/events/EventFixture.h"

namespace orvane::testing {
namespace {

constexpr int64 kNever = kUnsetTime;

int64 minuteOf(int minute) { return kMonday + minute * kMinute; }

RecordPublication record(int minute, const std::string& text, int64 time = kNever) {
  return {"N", "a", 0, 0, 0, time, {{minuteOf(minute), 0, text}}};
}

RecordPublication deletion(int minute, int64 time) {
  return {"N", "a", 0, dictionary::kDeletes, 0, time, {{minuteOf(minute), 0, {}}}};
}

class GivenAgain : public ::testing::Test {
 protected:
  /// What a receiver of a playback of ten bars is told on this file.
  Lines told(const std::vector<RecordPublication>& given) {
    PlatformOptions options;
    options.dictionary.file = path_;
    InstalledPlatform platform(options);
    platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 10));
    platform->addRecords(given);
    const auto runner = std::make_shared<RunnerSpi>(RunnerSpi::Handler());
    dictionary().subscribeData(wanting("N", {"a"}), std::make_shared<RunnerData>(runner), 1);
    platform->run();
    left_ = readAll("N", "a");
    return runner->handled();
  }

  int rows() const {
    SQLite::Database database(path_, SQLite::OPEN_READONLY);
    return database.execAndGet("SELECT count(*) FROM records").getInt();
  }

  const TempFolder folder_;
  const std::string path_ = folder_.file("d.db");
  std::string left_;  ///< What a reader found at the end.
};

TEST_F(GivenAgain, shouldTellRecordsAndDeletionsAlikeInEachRunAndStoreThemOnce) {
  const std::vector<RecordPublication> given = {record(3, "x"), deletion(3, minuteOf(5))};
  const Lines first = told(given);
  EXPECT_EQ(first,
            (Lines{"@0:01 data#1 f16", "@0:03 data#1 a 0:03=x f0", "@0:05 delete#1 a 0:03 n1"}));
  EXPECT_EQ(left_, "");
  for (int run = 2; run <= 3; ++run) {
    EXPECT_EQ(told(given), first) << run;
    EXPECT_EQ(left_, "");
    EXPECT_EQ(rows(), 2);
  }
}

TEST_F(GivenAgain, shouldTellADeletionOnceThatAnEarlierVersionStoredTwice) {
  told({record(3, "x"), deletion(3, minuteOf(5))});
  {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE);
    database.exec(
        "INSERT INTO records SELECT series_id, key, round, rank + 1, item, value2, text,"
        " value_type, tag, is_deletion, is_input, shown_ms, published_ms, published_at"
        " FROM records WHERE is_deletion = 1");
  }
  EXPECT_EQ(told({}).back(), "@0:05 delete#1 a 0:03 n1");
}

TEST_F(GivenAgain, shouldNotBringARecordBackThatARunDeleted) {
  told({record(3, "x")});
  {
    PlatformOptions options;
    options.mode = PlatformOptions::Mode::Live;
    options.dictionary.file = path_;
    InstalledPlatform platform(options);
    makePublisher()->publishRecords("N", "a", 0, {{minuteOf(3), 0, {}}}, dictionary::kDeletes, 0);
    platform->addRecords({record(3, "x")});
    EXPECT_EQ(readAll("N", "a"), "");
  }
  EXPECT_EQ(rows(), 2);
}

TEST_F(GivenAgain, shouldHoldToTheLastThatAChangedListSaysOfAKey) {
  told({record(3, "x"), deletion(3, minuteOf(5)), record(3, "x", minuteOf(7))});
  EXPECT_EQ(left_, std::to_string(minuteOf(3)) + "=x");
  // Another text at the front: it is deleted at its time as the first one was, and comes back.
  const Lines second =
      told({record(3, "y"), deletion(3, minuteOf(5)), record(3, "x", minuteOf(7))});
  EXPECT_EQ(left_, std::to_string(minuteOf(3)) + "=x");
  EXPECT_EQ(second.back(), "@0:07 data#1 a 0:03=x f0");
  // Another time of the deletion: none is left when it comes.
  told({record(3, "y"), deletion(3, minuteOf(8))});
  EXPECT_EQ(left_, "");
}

}  // namespace
}  // namespace orvane::testing
