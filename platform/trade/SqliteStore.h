#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "platform/trade/TradeResults.h"

namespace orvane::detail {

/// What a run begins with.
struct StoredRun {
  bool isPlayback = true;
  int64 time = 0;                        ///< By the platform's clock, UTC milliseconds.
  std::vector<TradingAccount> accounts;  ///< All of them, as they were opened.
};

/// What happened since the last news. Orders are in their last state and may come again.
struct StoredNews {
  struct Equity {
    std::int32_t account = 0;
    std::string source;  ///< GBK; empty: the whole account.
    std::size_t number = 0;
    EquityPoint point;
  };
  struct Connection {
    std::int32_t account = 0;
    int64 time = 0;
    bool isUp = false;
  };
  int64 time = 0;
  std::vector<Order> orders;
  std::vector<OrderFill> fills;
  std::vector<Equity> equity;
  std::vector<Connection> connections;
  std::vector<TradingAccount> capitals;  ///< Of all accounts, as they are now.
};

/// Writes runs to a SQLite database, on a thread of its own; docs/store.md tells the tables. Any
/// thread may call it. Only `beginRun` and `flush` wait, and `write` where the disk is much too
/// slow: what waits is kept in memory, and is bounded so.
class SqliteStore {
 public:
  /// Opens or makes the database. `path` is UTF-8. Throws `std::runtime_error`, which names the
  /// path, if it cannot be written or belongs to another program.
  explicit SqliteStore(const std::string& path);
  /// Writes what is left.
  ~SqliteStore();
  SqliteStore(const SqliteStore&) = delete;
  SqliteStore& operator=(const SqliteStore&) = delete;

  /// Blocks until the run is written, or could not be, which `flush` tells: killed at its first
  /// event, it is one that was begun. What belongs to a run that could not be written is dropped.
  void beginRun(StoredRun run);
  /// News of the run that was begun last.
  void write(StoredNews news);
  /// Marks the run as one that was played to its end.
  void completeRun();
  /// Blocks until all is on the disk. Throws `std::runtime_error`, which names the path, if
  /// anything could not be written since the last call.
  void flush();

 private:
  struct Completion {};
  /// How many things may wait to be written.
  static constexpr std::size_t kMostJobs = 64;
  using Job = std::variant<StoredRun, StoredNews, Completion>;
  class Tables;

  static bool isBeginning(const Job& job);
  void awaitWritten();
  void post(Job job);
  void work();
  /// Writes what waits; `room_` is empty, and so again afterwards.
  void writeWaiting(std::unique_lock<std::mutex>& lock);

  const std::string path_;
  std::unique_ptr<Tables> tables_;  ///< For the thread alone, once that runs.
  std::mutex mutex_;                ///< Guards what follows.
  std::condition_variable changed_;
  std::deque<Job> jobs_;
  bool isWriting_ = false;
  bool wantsSync_ = false;
  bool closing_ = false;
  std::string error_;
  /// What is being written; the thread's alone. Made before the thread is: a deque needs memory
  /// even to be empty, and whoever starts late may find none.
  std::deque<Job> room_;
  std::thread thread_;
};

}  // namespace orvane::detail
