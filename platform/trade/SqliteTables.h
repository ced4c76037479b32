#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/core/FileLock.h"
#include "platform/core/SqliteFile.h"
#include "platform/trade/SqliteStore.h"

namespace orvane::detail {

/// The tables of the database and the statements that fill them. For one thread at a time; what
/// SQLite refuses is thrown as `SQLite::Exception`.
class SqliteStore::Tables {
 public:
  /// Opens or makes the file and its tables. Throws `std::runtime_error` if another run has it.
  explicit Tables(const std::string& path);

  void begin() { database_.exec("BEGIN IMMEDIATE"); }
  void commit() { database_.exec("COMMIT"); }
  void rollback() noexcept { rollBack(database_); }
  /// Brings everything that was committed to the disk, into the database file itself.
  void sync();

  void add(const StoredRun& run);
  /// The run in hand is not in the database: what belongs to it must go into no other run.
  void forgetRun() { run_ = 0; }
  void add(const StoredNews& news);
  void add(const Completion& completion);

 private:
  void addCapital(const TradingAccount& capital);
  void addOrder(const Order& order);
  void addFill(const OrderFill& fill);

  const std::unique_ptr<const FileLock> lock_;  ///< Null in memory.
  SQLite::Database database_;
  int64 run_ = 0;  ///< 0: there is none.
  int64 fills_ = 0;
  int64 connections_ = 0;
  std::optional<SQLite::Statement> putCapital_, putOrder_, putFill_, putEquity_, putConnection_;
};

}  // namespace orvane::detail
