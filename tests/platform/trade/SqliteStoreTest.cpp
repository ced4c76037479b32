// What the database of a run holds, read as any other program would.

#include "platform/trade/SqliteStore.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/core/SqliteFile.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;
using order::Direction;

/// A folder that is gone with the test.
class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane-store-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TempFolder() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

/// The rows of a query, their columns joined by "|".
Lines storedRows(const std::string& path, const std::string& query) {
  SQLite::Database database(path, SQLite::OPEN_READONLY);
  SQLite::Statement statement(database, query);
  Lines rows;
  while (statement.executeStep()) {
    std::string row;
    for (int i = 0; i < statement.getColumnCount(); ++i)
      row += (i == 0 ? "" : "|") + statement.getColumn(i).getString();
    rows.push_back(row);
  }
  return rows;
}

PlatformOptions storing(const std::string& path) {
  PlatformOptions options = tradeOptions();
  options.trade.storePath = path;
  return options;
}

/// Buys two at 0:01, sells one at 0:04, and leaves a limit order and a rejection behind.
void trade(TradePlatform& platform) {
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:01") platform.buy(2);
    if (line == "bar 0:04")
      platform.send(
          makeRequest(platform.account(), platform.code, Direction::Sell, 1, order::Offset::Close));
    if (line == "bar 0:05")
      platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 0.5));
    if (line == "bar 0:06")
      platform.send(
          makeRequest(platform.account(), platform.code, Direction::Sell, 9, order::Offset::Close));
  };
  platform.subscribeBars(spi);
  platform->run();
  platform->drain();
}

TEST(SqliteStore, shouldMakeNoFileAndLetOthersDoTheSameInMemory) {
  const TempFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.file("."));
  {
    const detail::SqliteStore one(detail::kSqliteInMemory), other(detail::kSqliteInMemory);
    EXPECT_TRUE(std::filesystem::is_empty("."));
  }
  std::filesystem::current_path(before);
}

TEST(SqliteStore, shouldHoldARunBeforeItsFirstEvent) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  Lines begun;
  TradePlatform platform(storing(path));
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string&) {
    if (begun.empty()) begun = storedRows(path, "SELECT run_id, is_complete FROM runs");
    if (begun.empty()) begun = {"nothing"};
  };
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(begun, Lines{"1|0"});
}

TEST(SqliteStore, shouldNotPutARunThatItCouldNotBeginIntoTheOneBefore) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path));
  trade(platform);
  const auto everything = [&] {
    Lines rows = storedRows(path, "SELECT * FROM runs");
    for (const char* table : {"accounts", "orders", "fills", "equity"})
      for (const std::string& row : storedRows(path, std::string("SELECT * FROM ") + table))
        rows.push_back(row);
    return rows;
  };
  const auto change = [&](const char* statement) {
    SQLite::Database database(path, SQLite::OPEN_READWRITE);
    database.setBusyTimeout(60'000);
    database.exec(statement);
  };
  change("CREATE TRIGGER refused BEFORE INSERT ON runs BEGIN SELECT RAISE(ABORT, 'refused'); END");
  platform->rewind();
  platform->checkWritten();
  const Lines first = everything();
  EXPECT_EQ(storedRows(path, "SELECT last_at FROM runs"), Lines{"2021-01-04T00:10:00.000Z"});
  platform.buy(3);
  EXPECT_THROW(platform->run(), std::runtime_error);
  platform->drain();
  EXPECT_EQ(everything(), first);
  change("DROP TRIGGER refused");
  platform->rewind();
  platform->run();
  EXPECT_EQ(storedRows(path, "SELECT run_id, is_complete FROM runs"), (Lines{"1|1", "2|1"}));
}

/// What is stored of a curve is the curve, without a gap and nothing twice.
void expectStoredCurve(const std::string& path, const std::string& source,
                       const EquityCurve& curve) {
  Lines expected;
  for (const EquityPoint& point : curve)
    expected.push_back(std::to_string(point.time) + "|" + number(point.equity) + "|" +
                       number(point.exposure));
  Lines stored;
  SQLite::Database database(path, SQLite::OPEN_READONLY);
  SQLite::Statement statement(
      database, "SELECT time_ms, equity, exposure FROM equity WHERE source = ? ORDER BY number");
  statement.bind(1, source);
  while (statement.executeStep())
    stored.push_back(std::to_string(statement.getColumn(0).getInt64()) + "|" +
                     number(statement.getColumn(1).getDouble()) + "|" +
                     number(statement.getColumn(2).getDouble()));
  EXPECT_EQ(stored, expected) << source;
}

TEST(SqliteStore, shouldHoldWhatTheResultsHold) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path));
  trade(platform);
  EXPECT_EQ(storedRows(path, "SELECT run_id, mode, begin_at, last_at, is_complete FROM runs"),
            Lines{"1|playback|2021-01-04T00:01:00.000Z|2021-01-04T00:10:00.000Z|1"});
  EXPECT_EQ(
      storedRows(path, "SELECT account_key, name, currency, start_balance, equity FROM accounts"),
      Lines{"1|A1|CNY|1000000.0|1000011.0"});
  EXPECT_EQ(storedRows(path,
                       "SELECT order_id, code, source, side, offset, type, volume, filled_volume, "
                       "limit_price, mean_price, state FROM orders ORDER BY order_id"),
            (Lines{"1000000001|A.X|S|buy|open|market|2.0|2.0||2.0|filled",
                   "1000000002|A.X|S|sell|close|market|1.0|1.0||5.0|filled",
                   "1000000003|A.X|S|buy|open|limit|1.0|0.0|0.5||working",
                   "1000000004|A.X|S|sell|close|market|9.0|0.0|||rejected"}));
  EXPECT_EQ(storedRows(path, "SELECT number, order_id, side, price, volume, profit FROM fills"),
            (Lines{"1|1000000001|buy|2.0|2.0|0.0", "2|1000000002|sell|5.0|1.0|3.0"}));
  const AccountResult result = platform->tradeResults().at(0);
  expectStoredCurve(path, "", result.curve);
  expectStoredCurve(path, "S", result.sources.at(0).curve);
  EXPECT_GT(result.curve.size(), 5u);
}

/// The variable that names the file to the second process below.
constexpr const char* kReadVariable = "ORVANE_STORE_TO_READ";

TEST(SqliteStore, shouldGoOnWithACurveThatWasSharedWhenAnotherSourceComes) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path));
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy(2);
    // So much news that it goes to the file at once, and the points so far with it.
    if (line == "bar 0:05")
      for (int i = 0; i < 1100; ++i) platform.buy(1'000'000'000);
    if (line == "bar 0:07")
      platform.send(makeRequest(platform.account(), platform.code, order::Direction::Buy, 1,
                                order::Offset::Open, "T"));
  };
  platform.subscribeBars(spi);
  platform->run();
  const AccountResult result = platform->tradeResults().at(0);
  ASSERT_EQ(result.sources.size(), 2u);
  expectStoredCurve(path, "", result.curve);
  expectStoredCurve(path, "S", result.sources.at(0).curve);
  expectStoredCurve(path, "T", result.sources.at(1).curve);
  EXPECT_LT(result.sources.at(1).curve.size(), result.sources.at(0).curve.size());
  EXPECT_EQ(result.curve.size(), result.sources.at(0).curve.size());
}

TEST(SqliteStoreReader, shouldFindTheOrdersOfAnotherProcess) {
  const char* path = std::getenv(kReadVariable);
  if (path == nullptr) GTEST_SKIP() << "runs as the second process of another test";
  EXPECT_EQ(storedRows(path, "SELECT count(*) FROM orders"), Lines{"4"});
}

TEST(SqliteStore, shouldBeReadByASecondProcessWhileTheFirstStillHasItOpen) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path));
  trade(platform);
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  // Else the child runs its share of the tests alone, if this process has only one.
  const std::string command = "env -u GTEST_TOTAL_SHARDS -u GTEST_SHARD_INDEX " +
                              std::string(kReadVariable) + "='" + path + "' '" + self +
                              "' --gtest_filter='SqliteStoreReader.*' >/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(SqliteStore, shouldSurviveThePlatformAndTakeASecondRun) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  for (int i = 0; i < 2; ++i) {
    TradePlatform platform(storing(path));
    trade(platform);
  }
  EXPECT_EQ(storedRows(path, "SELECT run_id, count(*) FROM orders GROUP BY run_id"),
            (Lines{"1|4", "2|4"}));
  EXPECT_EQ(storedRows(path, "SELECT count(*) FROM runs"), Lines{"2"});
}

TEST(SqliteStore, shouldMakeARewoundPlaybackARunOfItsOwn) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path));
  trade(platform);
  platform->rewind();
  trade(platform);
  EXPECT_EQ(storedRows(path, "SELECT run_id, count(*) FROM orders GROUP BY run_id"),
            (Lines{"1|4", "2|8"}));
  EXPECT_EQ(storedRows(path, "SELECT run_id, is_complete FROM runs"), (Lines{"1|1", "2|1"}));
}

TEST(SqliteStore, shouldHoldWhatWasDoneWhenTheRunWasCancelled) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  TradePlatform platform(storing(path), 1000);
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:01") platform.buy();
    if (line == "bar 0:05") platform->cancel();
  };
  platform.subscribeBars(spi);
  platform->run();
  EXPECT_EQ(storedRows(path, "SELECT order_id, state FROM orders"), Lines{"1000000001|filled"});
  EXPECT_EQ(storedRows(path, "SELECT last_at, is_complete FROM runs"),
            Lines{"2021-01-04T00:05:00.000Z|0"});
}

TEST(SqliteStore, shouldHoldTheConnectionsAsTheyChanged) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  PlatformOptions options = storing(path);
  options.trade.script = {{"A1", kMonday + 3 * kMinute, false},
                          {"A1", kMonday + 4 * kMinute, true}};
  TradePlatform platform(options);
  platform->run();
  EXPECT_EQ(storedRows(path, "SELECT account_key, time_at, is_connected FROM connections"),
            (Lines{"1|2021-01-04T00:03:00.000Z|0", "1|2021-01-04T00:04:00.000Z|1"}));
}

TEST(SqliteStore, shouldRefuseAFileOfAnotherProgramAndNameIt) {
  TempFolder folder;
  const std::string text = folder.file("notes.txt");
  std::ofstream(text) << "these are notes and no database, long enough to be looked at as one, "
                         "since a file that is shorter than a page's head counts as empty";
  const std::string foreign = folder.file("foreign.db");
  {
    SQLite::Database database(foreign, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("CREATE TABLE theirs(x)");
  }
  for (const std::string& path : {text, foreign, folder.file("no/such/folder.db")}) {
    try {
      detail::SqliteStore store(path);
      ADD_FAILURE() << path << " was taken";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
  }
  EXPECT_EQ(storedRows(foreign, "SELECT name FROM sqlite_master"), Lines{"theirs"});
}

TEST(SqliteStore, shouldTellWithThePathWhatCouldNotBeWritten) {
  TempFolder folder;
  const std::string path = folder.file("run.db");
  detail::SqliteStore store(path);
  {
    SQLite::Database database(path, SQLite::OPEN_READWRITE);
    database.exec("DROP TABLE equity");
  }
  store.beginRun({});
  detail::StoredNews news;
  news.equity.push_back({1, "", 0, {}});
  store.write(std::move(news));
  try {
    store.flush();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
  }
  EXPECT_NO_THROW(store.flush());
}

}  // namespace
}  // namespace orvane::testing
