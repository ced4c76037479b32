// The dictionary's database: what survives, and which files are refused.

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <thread>

#include "platform/dictionary/DictionaryStore.h"
#include "tests/platform/dictionary/DictionaryFixture.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

PlatformOptions keeping(const std::string& path,
                        PlatformOptions::Mode mode = PlatformOptions::Mode::Live) {
  PlatformOptions options;
  options.mode = mode;
  options.dictionary.file = path;
  return options;
}

Lines rowsOf(const std::string& path, const std::string& query) {
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

void publish(const std::string& target, std::list<Record> records, int flags = 0) {
  const ResultStatus status = makePublisher()->publishRecords("N", target, 3, records, flags, 0);
  EXPECT_EQ(status.code, 0) << status.message;
}

std::string refusalOf(PlatformOptions options) {
  try {
    EmbeddedPlatform platform(std::move(options));
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

TEST(DictionaryFile, shouldHoldTheRecordsWhenItIsOpenedAgain) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  const std::string binary("a\0\xFF", 3);
  {
    InstalledPlatform platform(keeping(path));
    publish("a", {{1, 10, "x"}, {2, 20, binary}});
    publish("a", {{1, 0, {}}}, dictionary::kDeletes);
  }
  InstalledPlatform platform(keeping(path));
  std::list<Record> records;
  EXPECT_EQ(BarDataReadSyncWrapper::getRecords("a", "N", 0, 9, records, {}, 0, 0).code, 0);
  EXPECT_EQ(records, (std::list<Record>{{2, 20, binary}}));
}

TEST(DictionaryFile, shouldBeReadByAnyToolWhileItIsOpen) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  InstalledPlatform platform(keeping(path));
  publish("a", {{1, 10, "x"}, {2, 20, "y"}});
  publish("a", {{1, 0, {}}}, dictionary::kDeletes);
  EXPECT_EQ(rowsOf(path, "SELECT name, target, key, value2, text, value_type FROM dictionary"),
            Lines{"N|a|2|20|y|3"});
}

TEST(DictionaryFile, shouldNotAddRecordsAgainThatItHolds) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  for (int i = 0; i < 2; ++i) {
    InstalledPlatform platform(keeping(path));
    platform->addRecords({{"N", "a", 0, 0, 0, kUnsetTime, {{1, 0, "x"}, {2, 0, "y"}}}});
    EXPECT_EQ(readAll("N", "a"), "1=x 2=y");
  }
}

TEST(DictionaryFile, shouldShowAPlaybackWhatWasPublishedLiveFromItsTimeOn) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  {
    InstalledPlatform platform(keeping(path));
    publish("a", {{kMonday, 0, "x"}});  // Now, which is years after that Monday.
  }
  PlatformOptions options = keeping(path, PlatformOptions::Mode::Playback);
  options.from = kMonday + kDay;
  InstalledPlatform platform(options);
  EXPECT_EQ(readAll("N", "a"), "");
}

TEST(DictionaryFile, shouldRefuseTheTradeStoresFileAndMakeNeither) {
  const TempFolder folder;
  const std::string path = folder.file("both.db");
  for (const std::string& other : {path, folder.file("./both.db"), folder.file("link.db")}) {
    if (other.ends_with("link.db")) std::filesystem::create_symlink(path, other);
    PlatformOptions options = keeping(path);
    options.trade.storePath = other;
    const std::string refusal = refusalOf(options);
    EXPECT_NE(refusal.find(path), std::string::npos) << refusal;
    EXPECT_FALSE(std::filesystem::exists(path)) << other;
  }
}

TEST(DictionaryFile, shouldRefuseAFileThatIsNoDictionaryAndNameIt) {
  const TempFolder folder;
  const std::string store = folder.file("store.db");
  {
    PlatformOptions options;
    options.trade.storePath = store;
    const EmbeddedPlatform platform(options);
  }
  std::ofstream(folder.file("notes.txt")) << "notes";
  for (const std::string& path :
       {store, folder.file("notes.txt"), folder.file("no/such.db"), folder.file("")}) {
    const std::string refusal = refusalOf(keeping(path));
    EXPECT_TRUE(refusal.starts_with("dictionary " + path + ": ")) << refusal;
  }
  EXPECT_EQ(rowsOf(store, "SELECT count(*) FROM runs"), Lines{"0"});
}

TEST(DictionaryFile, shouldAnswerWithThePathAndTellNobodyWhenItCannotBeWritten) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  InstalledPlatform platform(keeping(path));
  publish("a", {{1, 0, "x"}});
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  spi->take();
  {
    SQLite::Database other(path, SQLite::OPEN_READWRITE);
    other.exec("DROP VIEW dictionary; ALTER TABLE records RENAME TO gone");
  }
  const ResultStatus status = makePublisher()->publishRecords("N", "a", 0, {{2, 0, "y"}}, 0, 0);
  EXPECT_EQ(status.code, 20);
  EXPECT_NE(status.message.find(path), std::string::npos) << status.message;
  EXPECT_EQ(readAll("N", "a"), "status 20");
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{});
  dictionary().subscribeData(wanting("N", {"a"}), spi, 2);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#2 status=20 f16"});
}

/// Names the database to the process below, which writes its acknowledgements to descriptor 9.
constexpr const char* kFileVariable = "ORVANE_DICTIONARY_TO_FILL";
constexpr int kAcknowledgements = 9;

TEST(DictionaryFiller, shouldPublishUntilItIsKilled) {
  const char* path = std::getenv(kFileVariable);
  if (path == nullptr) GTEST_SKIP() << "runs as the second process of another test";
  InstalledPlatform platform(keeping(path));
  const auto fill = [](const std::string& target) {
    const auto publisher = makePublisher();
    for (int i = 1;; ++i) {
      const std::list<Record> two = {{2 * i, i, "x"}, {2 * i + 1, i, "y"}};
      if (publisher->publishRecords("N", target, 0, two, 0, 0).code != 0) return;
      const std::string line = target + std::to_string(i) + "\n";
      if (write(kAcknowledgements, line.data(), line.size()) < 0) return;
    }
  };
  std::thread other([&] { fill("b"); });
  fill("a");
  other.join();
}

/// Starts the process above, kills it after so many bytes of acknowledgements, and returns the
/// last number acknowledged for each target.
std::map<std::string, int> fillAndKill(const std::string& path, std::size_t bytes) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], kAcknowledgements);
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    close(ends[0]);
    setenv(kFileVariable, path.c_str(), 1);
    // Else the child runs its share of the tests alone, if this process has only one.
    unsetenv("GTEST_TOTAL_SHARDS");
    unsetenv("GTEST_SHARD_INDEX");
    execl(self.c_str(), self.c_str(), "--gtest_filter=DictionaryFiller.*", nullptr);
    _exit(1);
  }
  close(ends[1]);
  std::string all;
  const auto take = [&] {
    char some[256];
    const ssize_t size = read(ends[0], some, sizeof some);
    if (size > 0) all.append(some, static_cast<std::size_t>(size));
    return size > 0;
  };
  while (all.size() < bytes && take()) {
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  while (take()) {
  }
  close(ends[0]);
  std::map<std::string, int> last;
  for (std::size_t begin = 0, end = 0; (end = all.find('\n', begin)) != std::string::npos;
       begin = end + 1)
    last[all.substr(begin, 1)] = std::stoi(all.substr(begin + 1, end - begin - 1));
  return last;
}

TEST(DictionaryFile, shouldLoseNothingThatWasAcknowledgedWhenTheProcessIsKilledAtAnyMoment) {
  const auto seed = static_cast<unsigned>(support::randomSeed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int round = 0; round < 3; ++round) {
    const TempFolder folder;
    const std::string path = folder.file("d.db");
    const auto bytes = std::uniform_int_distribution<std::size_t>(1, 150)(random);
    const std::map<std::string, int> last = fillAndKill(path, bytes);
    ASSERT_FALSE(last.empty());
    InstalledPlatform platform(keeping(path));
    for (const auto& [target, number] : last) {
      std::list<Record> records;
      BarDataReadSyncWrapper::getRecords(target, "N", 0, kUnsetTime, records, {}, 0, 0);
      ASSERT_GE(records.size(), 2U * static_cast<std::size_t>(number));
      // A publication is there as a whole or not at all, and one more may have been on its way.
      ASSERT_LE(records.size(), 2U * static_cast<std::size_t>(number) + 2);
      EXPECT_EQ(records.size() % 2, 0U);
      int64 key = 2;
      for (const Record& record : records) EXPECT_EQ(record.key, key++);
    }
  }
}

TEST(DictionaryFile, shouldKeepWhatAnEarlierSessionPublishedWhenALaterOneIsTakenBack) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  for (const char* const target : {"a", "b"}) {
    detail::DictionaryStore store(path, true);
    const ResultStatus status = store.publish(
        store.addSource(), {"N", target, 0, 0, 0, kUnsetTime, {{1, 0, "x"}}}, 1, false);
    EXPECT_EQ(status.code, 0) << status.message;
    if (target == std::string("a")) continue;
    EXPECT_EQ(rowsOf(path, "SELECT target FROM dictionary ORDER BY target"), (Lines{"a", "b"}));
    store.removeRun();
  }
  EXPECT_EQ(rowsOf(path, "SELECT target FROM dictionary"), Lines{"a"});
}

}  // namespace
}  // namespace orvane::testing
