// Which files are taken for a database of ours, and what happens to those that are not.

#include "platform/core/SqliteFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "tests/platform/dictionary/TempFolder.h"

namespace orvane::testing {
namespace {

constexpr detail::SqliteFormat kOurs{0x01020304, 7, "CREATE TABLE ours(x)"};

std::string bytesIn(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The text of the refusal; empty if the file was taken.
std::string refusalOf(const std::string& path, const detail::SqliteFormat& format = kOurs) {
  try {
    detail::openSqlite(path, format);
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

/// Runs `work` in a process of a user who owns nothing; returns what it printed.
std::string asNobody(const std::function<std::string()>& work) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    if (getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(2);
    const std::string text = work();
    const auto written = write(ends[1], text.data(), text.size());
    _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
  }
  close(ends[1]);
  std::string text(1000, '\0');
  const ssize_t size = read(ends[0], text.data(), text.size());
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return text;
}

TEST(SqliteFile, shouldMakeTheFileAndOpenItAgain) {
  const TempFolder folder;
  const std::string path = folder.file("a.db");
  detail::openSqlite(path, kOurs).exec("INSERT INTO ours VALUES(5)");
  auto again = detail::openSqlite(path, kOurs);
  EXPECT_EQ(again.execAndGet("SELECT x FROM ours").getInt(), 5);
  EXPECT_EQ(again.execAndGet("PRAGMA journal_mode").getString(), "wal");
}

TEST(SqliteFile, shouldTakeAnEmptyFileForANewOne) {
  const TempFolder folder;
  const std::string path = folder.file("empty.db");
  std::ofstream(path).close();
  EXPECT_EQ(refusalOf(path), "");
}

TEST(SqliteFile, shouldRefuseAndLeaveAloneWhenItIsNoDatabase) {
  const TempFolder folder;
  for (const std::string& text : {std::string("hello"), std::string(5000, 'x')}) {
    const std::string path = folder.file("notes.txt");
    std::ofstream(path) << text;
    EXPECT_EQ(refusalOf(path), "it is no database");
    EXPECT_EQ(bytesIn(path), text);
  }
}

TEST(SqliteFile, shouldRefuseAndLeaveAloneWhenItIsAStrangersDatabaseWithAnOpenLog) {
  const TempFolder folder;
  const std::string path = folder.file("theirs.db");
  const std::string copy = folder.file("copy.db");
  {
    SQLite::Database theirs(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    theirs.exec("PRAGMA journal_mode = WAL; CREATE TABLE theirs(x); INSERT INTO theirs VALUES(1)");
    // As a killed process leaves it: the log still beside it.
    std::filesystem::copy_file(path, copy);
    std::filesystem::copy_file(path + "-wal", copy + "-wal");
  }
  const std::string before = bytesIn(copy);
  const std::string logBefore = bytesIn(copy + "-wal");
  EXPECT_EQ(refusalOf(copy), "it is the database of another program");
  EXPECT_EQ(bytesIn(copy), before);
  EXPECT_EQ(bytesIn(copy + "-wal"), logBefore);
}

TEST(SqliteFile, shouldRefuseTablesOfAnotherVersion) {
  const TempFolder folder;
  const std::string path = folder.file("a.db");
  EXPECT_EQ(refusalOf(path), "");
  EXPECT_EQ(refusalOf(path, {kOurs.applicationId, 8, kOurs.tables}),
            "its tables are those of another version");
  EXPECT_EQ(refusalOf(path, {0x0A0B0C0D, 7, kOurs.tables}),
            "it is the database of another program");
}

TEST(SqliteFile, shouldRefuseAFolderAndAFileInNoFolder) {
  const TempFolder folder;
  EXPECT_EQ(refusalOf(folder.file("")), "it is a folder");
  EXPECT_EQ(refusalOf(folder.file("no/such.db")), "its folder does not exist");
  EXPECT_EQ(refusalOf("/dev/null"), "it is no plain file");
}

TEST(SqliteFile, shouldRefuseAndLeaveAloneWhenItMustNotBeWrittenOrRead) {
  const TempFolder folder;
  const std::string path = folder.file("a.db");
  EXPECT_EQ(refusalOf(path), "");
  const std::string before = bytesIn(path);
  chmod(folder.file("").c_str(), 0755);
  chmod(path.c_str(), 0444);
  EXPECT_EQ(asNobody([&] { return refusalOf(path); }), "it cannot be written");
  chmod(path.c_str(), 0000);
  EXPECT_EQ(asNobody([&] { return refusalOf(path); }), "it cannot be read");
  chmod(folder.file("").c_str(), 0555);
  EXPECT_EQ(asNobody([&] { return refusalOf(folder.file("new.db")); }),
            "its folder cannot be written");
  chmod(folder.file("").c_str(), 0755);
  chmod(path.c_str(), 0644);
  EXPECT_EQ(bytesIn(path), before);
  EXPECT_FALSE(std::filesystem::exists(folder.file("new.db")));
}

TEST(SqliteFile, shouldGiveBytesBackAsTheyWereWhenTheyAreNoText) {
  SQLite::Database database(detail::kSqliteInMemory, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  database.exec("CREATE TABLE t(x)");
  SQLite::Statement put(database, "INSERT INTO t VALUES(?)");
  const std::string chinese = "\xD6\xD0\xCE\xC4";  // Two characters, in GBK.
  const std::vector<std::string> texts = {
      "", "plain", chinese, std::string("a\0b", 3), "\xFF\xFE", std::string(1, '\0')};
  for (const std::string& text : texts) {
    detail::SqliteRow row(put);
    row.bytes(text).run();
  }
  SQLite::Statement all(database, "SELECT x, typeof(x) FROM t ORDER BY rowid");
  std::string kinds;
  for (const std::string& text : texts) {
    ASSERT_TRUE(all.executeStep());
    EXPECT_EQ(detail::bytesOf(all.getColumn(0)), text);
    kinds += all.getColumn(1).getString() + " ";
  }
  EXPECT_EQ(kinds, "text text text blob blob blob ");
}

}  // namespace
}  // namespace orvane::testing
