#include "platform/core/SqliteFile.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

constexpr int kBusyWaitMs = 5000;

bool isEmptyDatabase(SQLite::Database& database) {
  return database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0;
}

void check(SQLite::Database& database, const SqliteFormat& format) {
  if (isEmptyDatabase(database)) return;
  if (database.execAndGet("PRAGMA application_id").getInt() != format.applicationId)
    throw std::runtime_error("it is the database of another program");
  if (database.execAndGet("PRAGMA user_version").getInt() != format.version)
    throw std::runtime_error("its tables are those of another version");
}

bool hasHead(const std::filesystem::path& file) {
  constexpr std::string_view kHead("SQLite format 3\0", 16);
  std::string begin(kHead.size(), ' ');
  std::ifstream(file, std::ios::binary).read(begin.data(), static_cast<int>(begin.size()));
  return begin == kHead;
}

/// Looks without the right to write: a stranger's file, and its log, stay as they are.
void lookAt(const std::string& path, const SqliteFormat& format) {
  const std::filesystem::path file(path);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) {
    const std::filesystem::path folder = file.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
      throw std::runtime_error("its folder does not exist");
    const std::string where = folder.empty() ? "." : folder.string();
    if (access(where.c_str(), W_OK | X_OK) != 0)
      throw std::runtime_error("its folder cannot be written");
    return;
  }
  if (std::filesystem::is_directory(status)) throw std::runtime_error("it is a folder");
  if (!std::filesystem::is_regular_file(status)) throw std::runtime_error("it is no plain file");
  if (access(path.c_str(), R_OK) != 0) throw std::runtime_error("it cannot be read");
  if (access(path.c_str(), W_OK) != 0) throw std::runtime_error("it cannot be written");
  if (std::filesystem::file_size(file, error) == 0) return;
  // SQLite takes a file that is shorter than a head for an empty one, and would write over it.
  if (!hasHead(file)) throw std::runtime_error("it is no database");
  SQLite::Database database(path, SQLite::OPEN_READONLY, kBusyWaitMs);
  check(database, format);
}

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char each) { return static_cast<unsigned char>(each) - 1U < 0x7F; });
}

}  // namespace

SQLite::Database openSqlite(const std::string& path, const SqliteFormat& format) {
  const bool isFile = path != kSqliteInMemory;
  if (isFile) lookAt(path, format);
  SQLite::Database database(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyWaitMs);
  // A file that must not be written is opened all the same, for reading.
  if (sqlite3_db_readonly(database.getHandle(), "main") == 1)
    throw std::runtime_error("it cannot be written");
  // The tables come before the log: so the file's own head says whose it is, whenever the process
  // ends. Two programs may come at once, and only the first one makes them.
  database.exec("PRAGMA synchronous = FULL; BEGIN IMMEDIATE");
  try {
    if (isEmptyDatabase(database)) {
      database.exec("PRAGMA application_id = " + std::to_string(format.applicationId) +
                    "; PRAGMA user_version = " + std::to_string(format.version));
      database.exec(format.tables);
    }
    check(database, format);
    database.exec("COMMIT");
  } catch (...) {
    rollBack(database);
    throw;
  }
  if (isFile) database.exec("PRAGMA journal_mode = WAL");
  return database;
}

void failToOpen(const std::string& name, const std::exception& error) {
  const auto* its = dynamic_cast<const SQLite::Exception*>(&error);
  const int code = its == nullptr ? SQLITE_OK : its->getErrorCode() & 0xff;
  const bool lacksMemory = its != nullptr && its->getExtendedErrorCode() == SQLITE_IOERR_NOMEM;
  const std::string what = name + ": " + error.what();
  if (code == SQLITE_FULL) throw std::system_error(ENOSPC, std::generic_category(), what);
  if (code == SQLITE_IOERR && !lacksMemory)
    throw std::system_error(EIO, std::generic_category(), what);
  throw std::runtime_error(what);
}

SQLite::Database openSqliteAgain(const std::string& path) {
  SQLite::Database database(path, SQLite::OPEN_READWRITE, kBusyWaitMs);
  database.exec("PRAGMA synchronous = FULL");
  return database;
}

void rollBack(SQLite::Database& database) noexcept {
  try {
    database.exec("ROLLBACK");
  } catch (const std::exception&) {
    // SQLite rolls back by itself after some errors; there is nothing to roll back then.
  }
}

std::string isoTime(int64 utcMs) {
  using namespace std::chrono;
  const sys_time<milliseconds> time{milliseconds(utcMs)};
  const auto day = floor<days>(time);
  const year_month_day date{day};
  const hh_mm_ss clock{time - day};
  char text[64];
  std::snprintf(
      text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

int64 wallClockMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

SqliteRow& SqliteRow::text(const std::string& gbk) { return add(gbkToUtf8(gbk)); }

SqliteRow& SqliteRow::bytes(const std::string& gbk) {
  if (isAscii(gbk)) return add(gbk);
  std::string utf8 = gbkToUtf8(gbk);
  if (gbk.find('\0') == std::string::npos && utf8ToGbk(utf8) == gbk) return add(utf8);
  statement_.bind(++at_, gbk.data(), static_cast<int>(gbk.size()));
  return *this;
}

std::string bytesOf(const SQLite::Column& column) {
  std::string stored(static_cast<const char*>(column.getBlob()),
                     static_cast<std::size_t>(column.getBytes()));
  if (column.getType() != SQLITE_TEXT || isAscii(stored)) return stored;
  return utf8ToGbk(stored);
}

}  // namespace orvane::detail
