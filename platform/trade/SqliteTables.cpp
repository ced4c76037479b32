#include "platform/trade/SqliteTables.h"

#include <bit>

#include "platform/core/SqliteFile.h"
#include "platform/fields/CapitalView.h"
#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "shared/CodeTables.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane::detail {
namespace {

/// "ORVS": says in the file's head whose database it is.
constexpr int kStoreId = 0x4F525653;
constexpr int kStoreVersion = 1;

constexpr const char* kStoreTables = R"(
CREATE TABLE runs(
  run_id INTEGER PRIMARY KEY, mode TEXT NOT NULL,
  begin_ms INTEGER NOT NULL, begin_at TEXT NOT NULL,
  last_ms INTEGER NOT NULL, last_at TEXT NOT NULL,
  started_at TEXT NOT NULL, written_at TEXT NOT NULL, is_complete INTEGER NOT NULL DEFAULT 0);
CREATE TABLE accounts(
  run_id INTEGER NOT NULL REFERENCES runs, account_key INTEGER NOT NULL,
  name TEXT NOT NULL, currency TEXT NOT NULL, counter_type INTEGER NOT NULL,
  start_balance REAL NOT NULL, balance REAL NOT NULL, equity REAL NOT NULL,
  available REAL NOT NULL, frozen REAL NOT NULL, margin REAL NOT NULL, fee REAL NOT NULL,
  closed_profit REAL NOT NULL, floating_profit REAL NOT NULL,
  PRIMARY KEY(run_id, account_key));
CREATE TABLE orders(
  run_id INTEGER NOT NULL REFERENCES runs, order_id INTEGER NOT NULL,
  account_key INTEGER NOT NULL, code_id INTEGER NOT NULL, code TEXT NOT NULL,
  source TEXT NOT NULL, order_ref TEXT NOT NULL,
  side TEXT NOT NULL, offset TEXT NOT NULL, type TEXT NOT NULL, time_in_force TEXT NOT NULL,
  volume REAL NOT NULL, filled_volume REAL NOT NULL, limit_price REAL, stop_price REAL,
  mean_price REAL, turnover REAL NOT NULL, fee REAL NOT NULL,
  status INTEGER NOT NULL, state TEXT NOT NULL, reason INTEGER NOT NULL, message TEXT NOT NULL,
  sent_ms INTEGER NOT NULL, sent_at TEXT NOT NULL, arrived_ms INTEGER, arrived_at TEXT,
  updated_ms INTEGER NOT NULL, updated_at TEXT NOT NULL, trading_day INTEGER,
  PRIMARY KEY(run_id, order_id));
CREATE TABLE fills(
  run_id INTEGER NOT NULL REFERENCES runs, number INTEGER NOT NULL,
  fill_id INTEGER NOT NULL, fill_text TEXT NOT NULL, order_id INTEGER NOT NULL,
  account_key INTEGER NOT NULL, code_id INTEGER NOT NULL, code TEXT NOT NULL,
  source TEXT NOT NULL, side TEXT NOT NULL, offset TEXT NOT NULL,
  price REAL NOT NULL, volume REAL NOT NULL, turnover REAL NOT NULL, fee REAL NOT NULL,
  profit REAL NOT NULL, had_rested INTEGER NOT NULL,
  time_ms INTEGER NOT NULL, time_at TEXT NOT NULL, trading_day INTEGER NOT NULL,
  PRIMARY KEY(run_id, number));
CREATE TABLE equity(
  run_id INTEGER NOT NULL REFERENCES runs, account_key INTEGER NOT NULL, source TEXT NOT NULL,
  number INTEGER NOT NULL, time_ms INTEGER NOT NULL, time_at TEXT NOT NULL,
  equity REAL NOT NULL, exposure REAL NOT NULL,
  PRIMARY KEY(run_id, account_key, source, number)) WITHOUT ROWID;
CREATE TABLE connections(
  run_id INTEGER NOT NULL REFERENCES runs, number INTEGER NOT NULL,
  account_key INTEGER NOT NULL, time_ms INTEGER NOT NULL, time_at TEXT NOT NULL,
  is_connected INTEGER NOT NULL,
  PRIMARY KEY(run_id, number));
)";

constexpr SqliteFormat kFormat{kStoreId, kStoreVersion, kStoreTables};

template <std::size_t N>
const char* nameOf(const char* const (&names)[N], std::int32_t at) {
  return at >= 0 && static_cast<std::size_t>(at) < N ? names[at] : "?";
}

constexpr const char* kSides[] = {"buy", "sell"};
constexpr const char* kOffsets[] = {"open", "close", "closeToday"};
constexpr const char* kTypes[] = {"limit", "market", "stop"};
constexpr const char* kTimesInForce[] = {"day", "ioc", "fok", "gtc"};
constexpr const char* kStates[] = {"sent",          "working",   "partlyFilled", "filled",
                                   "cancelPending", "cancelled", "rejected",     "expired"};

std::string codeName(const ICodeID& code) {
  std::string text = gbkToUtf8(codeText(code));
  if (!text.empty() && text.back() == '.') text.pop_back();
  return text;
}

std::string insertInto(const char* table, int columns) {
  std::string text = std::string("INSERT OR REPLACE INTO ") + table + " VALUES(?";
  for (int i = 1; i < columns; ++i) text += ",?";
  return text + ")";
}

}  // namespace

SqliteStore::Tables::Tables(const std::string& path)
    : lock_(path == kSqliteInMemory ? nullptr : std::make_unique<const FileLock>(path)),
      database_(openSqlite(path, kFormat)) {
  // What the end of a run brings to the disk may wait until then.
  database_.exec("PRAGMA synchronous = NORMAL");
  putCapital_.emplace(database_, insertInto("accounts", 14));
  putOrder_.emplace(database_, insertInto("orders", 29));
  putFill_.emplace(database_, insertInto("fills", 20));
  putEquity_.emplace(database_, insertInto("equity", 8));
  putConnection_.emplace(database_, insertInto("connections", 6));
}

void SqliteStore::Tables::sync() {
  SQLite::Statement checkpoint(database_, "PRAGMA wal_checkpoint(TRUNCATE)");
  checkpoint.executeStep();
}

void SqliteStore::Tables::add(const StoredRun& run) {
  SQLite::Statement statement(
      database_,
      "INSERT INTO runs(mode, begin_ms, begin_at, last_ms, last_at, started_at, written_at) "
      "VALUES(?,?,?,?,?,?,?)");
  const std::string wall = isoTime(wallClockMs());
  SqliteRow(statement)
      .add(run.isPlayback ? "playback" : "live")
      .time(run.time)
      .time(run.time)
      .add(wall)
      .add(wall)
      .run();
  run_ = database_.getLastInsertRowid();
  fills_ = 0;
  connections_ = 0;
  for (const TradingAccount& account : run.accounts) addCapital(account);
}

void SqliteStore::Tables::add(const Completion& /*completion*/) {
  if (run_ == 0) return;
  SQLite::Statement statement(database_, "UPDATE runs SET is_complete = 1 WHERE run_id = ?");
  SqliteRow(statement).add(run_).run();
}

void SqliteStore::Tables::add(const StoredNews& news) {
  if (run_ == 0) return;
  for (const Order& order : news.orders) addOrder(order);
  for (const OrderFill& fill : news.fills) addFill(fill);
  for (const StoredNews::Equity& row : news.equity)
    SqliteRow(*putEquity_)
        .add(run_)
        .add(row.account)
        .text(row.source)
        .add(static_cast<int64>(row.number))
        .time(row.point.time)
        .add(row.point.equity)
        .add(row.point.exposure)
        .run();
  for (const StoredNews::Connection& row : news.connections)
    SqliteRow(*putConnection_)
        .add(run_)
        .add(++connections_)
        .add(row.account)
        .time(row.time)
        .add(row.isUp ? 1 : 0)
        .run();
  for (const TradingAccount& capital : news.capitals) addCapital(capital);
  SQLite::Statement statement(
      database_, "UPDATE runs SET last_ms = ?, last_at = ?, written_at = ? WHERE run_id = ?");
  SqliteRow(statement).time(news.time).add(isoTime(wallClockMs())).add(run_).run();
}

void SqliteStore::Tables::addCapital(const TradingAccount& capital) {
  const CapitalView view(capital);
  const TradingAccountID& account = capital.account;
  const auto currency = static_cast<std::size_t>(account.currency);
  SqliteRow(*putCapital_)
      .add(run_)
      .add(account.accountKey)
      .text(account.account)
      .add(currency < currencyNames.size() ? currencyNames[currency] : "")
      .add(account.counterType)
      .add(view.startBalance())
      .add(view.balance())
      .add(view.equity())
      .add(view.available())
      .add(view.frozen())
      .add(view.margin())
      .add(view.fee())
      .add(view.closedProfit())
      .add(view.floatingProfit())
      .run();
}

void SqliteStore::Tables::addOrder(const Order& order) {
  const OrderView view(order);
  SqliteRow row(*putOrder_);
  row.add(run_).add(order.id).add(order.account.accountKey).add(order.code.id);
  row.add(codeName(order.code)).text(order.source.createSource).text(order.orderRef);
  row.add(nameOf(kSides, order.ints[order::DirectionAt]));
  row.add(nameOf(kOffsets, order.ints[order::OffsetAt]));
  row.add(nameOf(kTypes, order.ints[order::TypeAt]));
  row.add(nameOf(kTimesInForce, order.ints[order::TimeInForceAt]));
  row.add(view.volume()).add(view.filledVolume());
  row.numberOrNull(view.limitPrice(), view.type() == order::Type::Limit);
  row.numberOrNull(view.stopPrice(), view.type() == order::Type::Stop);
  row.numberOrNull(view.meanFillPrice(), view.filledVolume() > 0);
  row.add(view.turnover()).add(view.fee());
  row.add(order.status()).add(nameOf(kStates, order.status()));
  row.add(view.reason()).text(view.message());
  row.time(view.insertTime())
      .timeOrNull(view.arrivalTime(), view.arrivalTime() != 0)
      .time(view.updateTime());
  if (view.tradingDay() != 0) row.add(view.tradingDay());
  row.run();
}

void SqliteStore::Tables::addFill(const OrderFill& fill) {
  const FillView view(fill);
  SqliteRow row(*putFill_);
  row.add(run_).add(++fills_).add(fill.id).text(fill.fillText).add(view.orderId());
  row.add(fill.account.accountKey).add(fill.code.id).add(codeName(fill.code));
  row.text(fill.source.createSource);
  row.add(nameOf(kSides, fill.direction()));
  row.add(nameOf(kOffsets, fill.ints[fill::OffsetAt]));
  row.add(view.price()).add(view.volume());
  row.add(std::bit_cast<double>(fill.numbers[fill::Turnover])).add(view.fee()).add(view.profit());
  row.add(view.hadRested() ? 1 : 0).time(view.time()).add(view.tradingDay());
  row.run();
}

}  // namespace orvane::detail
