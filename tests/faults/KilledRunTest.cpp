// A run that is killed without a word, at a random call-back: on the next start all is there that
// was acknowledged, and nothing that is half-written.

#include <SQLiteCpp/SQLiteCpp.h>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>

#include "host/InputError.h"
#include "tests/host/Program.h"
#include "tests/support/RandomRuns.h"

namespace orvane {
namespace {

constexpr int kBars = 600;

/// One-minute bars, some days long.
std::string manyBars() {
  std::string text = "datetime,open,high,low,close,volume\n";
  for (int i = 0; i < kBars; ++i)
    text += fmt::format("2021-01-{:02} {:02}:{:02}:00,10.{},11.5,9.5,10.{},100\n", 4 + i / 1440,
                        i / 60 % 24, i % 60, i % 10, (i + 1) % 10);
  return text;
}

/// How many processes are killed.
int kills() {
  const char* const wanted = std::getenv("ORVANE_RANDOM_RUNS");
  const int usual = support::kSanitizerDivisor == 1 ? 4 : 2;
  return wanted != nullptr ? std::max(1, std::atoi(wanted)) : usual;
}

class KilledRun : public testing::Test {
 protected:
  /// Runs the strategy to its end, or until its call-back number `dieAt`.
  test::ProgramResult run(int dieAt, const std::string& target) const {
    const std::string params =
        fmt::format(R"({{"dieAt": {}, "target": "{}", "acknowledged": "{}"}})", dieAt, target,
                    folder_ / ("acknowledged." + target));
    return test::runProgram({"run", "-s", test::testModule("dying_strategy"), "-p", params,
                             "--server", "-b", "A.X=" + bars_, "--store", store_, "--dictionary",
                             dictionary_, "--report", folder_ / "report"});
  }

  /// How many call-backs the strategy gets when nobody kills it.
  int callsOfAWholeRun() const {
    const auto result = run(0, "whole");
    EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
    const QJsonObject runner =
        test::readReport(folder_ / "report")["runners"].toArray()[0].toObject();
    return runner["env"].toObject()["calls"].toString().toInt();
  }

  /// The keys of the publications that were acknowledged to the strategy.
  std::set<long long> acknowledged(const std::string& target) const {
    std::istringstream lines(test::readFile(folder_ / ("acknowledged." + target)));
    std::set<long long> keys;
    for (long long key = 0; lines >> key;) keys.insert(key);
    return keys;
  }

  void expectWholeDictionary(const std::string& target) const {
    SQLite::Database database(dictionary_, SQLite::OPEN_READONLY);
    EXPECT_EQ(database.execAndGet("PRAGMA integrity_check").getString(), "ok");
    SQLite::Statement query(database, "SELECT key FROM dictionary WHERE target = ? ORDER BY key");
    query.bind(1, target);
    std::set<long long> keys;
    while (query.executeStep()) keys.insert(query.getColumn(0).getInt64());
    for (const long long key : acknowledged(target)) {
      EXPECT_EQ(keys.count(key), 1U) << "lost: " << key;
    }
    // A publication has two records: it is there as a whole or not at all.
    for (const long long key : keys) {
      EXPECT_TRUE(keys.count(key + 1) != 0 || keys.count(key - 1) != 0) << "half: " << key;
    }
    EXPECT_LE(keys.size(), 2 * acknowledged(target).size() + 2);
  }

  void expectWholeStore() const {
    SQLite::Database database(store_, SQLite::OPEN_READONLY);
    const auto number = [&](const char* query) { return database.execAndGet(query).getInt(); };
    EXPECT_EQ(database.execAndGet("PRAGMA integrity_check").getString(), "ok");
    EXPECT_EQ(number("SELECT count(*) FROM runs LEFT JOIN accounts USING (run_id) "
                     "WHERE account_key IS NULL"),
              0);
    EXPECT_EQ(number("SELECT count(*) FROM fills LEFT JOIN orders USING (run_id, order_id) "
                     "WHERE orders.state IS NULL"),
              0);
    EXPECT_EQ(number("SELECT count(*) FROM orders LEFT JOIN (SELECT run_id, order_id, "
                     "sum(volume) AS filled FROM fills GROUP BY run_id, order_id) "
                     "USING (run_id, order_id) WHERE filled_volume <> ifnull(filled, 0)"),
              0);
    EXPECT_EQ(number("SELECT count(*) FROM (SELECT count(*) AS fills, max(number) AS last "
                     "FROM fills GROUP BY run_id) WHERE fills <> last"),
              0);
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", manyBars());
  const std::string store_ = folder_ / "store.db";
  const std::string dictionary_ = folder_ / "dictionary.db";
};

TEST_F(KilledRun, shouldLeaveAllThatWasAcknowledgedAndNothingHalfWrittenWheneverItIsKilled) {
  const auto seed = static_cast<unsigned>(support::randomSeed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const int calls = callsOfAWholeRun();
  ASSERT_GT(calls, kBars);
  std::size_t kept = 0;
  for (int i = 0; i < kills(); ++i) {
    const int dieAt = std::uniform_int_distribution(1, calls)(random);
    const std::string target = "killed" + std::to_string(i);
    SCOPED_TRACE("killed at call-back " + std::to_string(dieAt));
    const auto result = run(dieAt, target);
    ASSERT_EQ(result.exitCode, 1000 + SIGKILL) << result.err;
    expectWholeDictionary(target);
    expectWholeStore();
    kept += acknowledged(target).size();
    if (HasFailure()) return;
  }
  // And once more to the end, on what all of them left behind.
  const auto result = run(0, "last");
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  expectWholeDictionary("killed0");
  expectWholeDictionary("last");
  expectWholeStore();
  std::printf("%d kills, %zu acknowledged publications kept\n", kills(), kept);
}

TEST_F(KilledRun, shouldBeRecordedAsOneThatDidNotReachItsEnd) {
  ASSERT_EQ(run(2 * kBars, "killed").exitCode, 1000 + SIGKILL);
  ASSERT_EQ(run(0, "whole").exitCode, kExitSuccess);
  SQLite::Database database(store_, SQLite::OPEN_READONLY);
  EXPECT_EQ(database.execAndGet("SELECT group_concat(is_complete) FROM runs").getString(), "0,1");
}

}  // namespace
}  // namespace orvane
