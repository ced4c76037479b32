#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <exception>
#include <string>

#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane::detail {

/// How a database of ours is told from all others.
struct SqliteFormat {
  int applicationId = 0;         ///< Stands in the file's head. Never changes.
  int version = 0;               ///< Of the tables.
  const char* tables = nullptr;  ///< The statements that make them.
};

/// The path of a database that lives in memory.
inline constexpr const char* kSqliteInMemory = ":memory:";

/// Opens the database at `path` (UTF-8), or makes it, with write-ahead log; what is committed is
/// on the disk (`synchronous` FULL). Throws `std::runtime_error` or `SQLite::Exception`, neither
/// of which names the path, if it cannot be read and written, or is anything else than a database
/// of this format; it is then as it was before.
ORVANE_API SQLite::Database openSqlite(const std::string& path, const SqliteFormat& format);

/// Throws what `error` says of the database called `name`, which could not be opened or begun: as
/// `std::system_error` where the disk is at fault, as when it is full, else as
/// `std::runtime_error`.
[[noreturn]] void failToOpen(const std::string& name, const std::exception& error);

/// One more connection to a file that `openSqlite` opened in this process. It does not look into
/// the file by itself: whoever closes a file takes away the locks that SQLite holds on it for the
/// whole process, and another program could then throw away what was written.
SQLite::Database openSqliteAgain(const std::string& path);

/// Takes back what the connection has not committed; never throws.
void rollBack(SQLite::Database& database) noexcept;

/// A time such as "2021-01-04T01:31:00.000Z"; `utcMs` is in UTC milliseconds.
std::string isoTime(int64 utcMs);

/// The number of milliseconds since 1970 by the wall clock.
int64 wallClockMs();

/// Fills the parameters of a statement one after another, and runs it.
class SqliteRow {
 public:
  explicit SqliteRow(SQLite::Statement& statement) : statement_(statement) {
    statement_.reset();
    statement_.clearBindings();
  }
  template <typename Value>
  SqliteRow& add(const Value& value) {
    statement_.bind(++at_, value);
    return *this;
  }
  /// A text in GBK, as UTF-8. What is no good GBK is replaced.
  SqliteRow& text(const std::string& gbk);
  /// Bytes that come back as they are: UTF-8 text where they are good GBK without a zero, a blob
  /// where not. Equal bytes give equal values.
  SqliteRow& bytes(const std::string& gbk);
  /// A time as number and as text.
  SqliteRow& time(int64 utcMs) { return add(utcMs).add(isoTime(utcMs)); }
  /// A time, or nothing at all.
  SqliteRow& timeOrNull(int64 utcMs, bool isThere) { return isThere ? time(utcMs) : skip(2); }
  /// A number, or nothing at all if there is none.
  SqliteRow& numberOrNull(double value, bool isThere) { return isThere ? add(value) : skip(1); }
  SqliteRow& skip(int columns) { return at_ += columns, *this; }
  void run() { statement_.exec(); }

 private:
  SQLite::Statement& statement_;
  int at_ = 0;
};

/// What `SqliteRow::bytes` stored.
std::string bytesOf(const SQLite::Column& column);

}  // namespace orvane::detail
