#include "platform/dictionary/DictionaryTables.h"

#include <algorithm>
#include <limits>

#include "platform/core/SqliteFile.h"
#include "platform/fields/DictionaryFlags.h"

namespace orvane::detail {
namespace {

/// "ORVD": says in the file's head whose database it is.
constexpr int kDictionaryId = 0x4F525644;
constexpr int kDictionaryVersion = 1;
/// Rounds of one session.
constexpr int64 kRoundsPerSession = int64{1} << 32;
constexpr int64 kFirst = std::numeric_limits<int64>::min();

constexpr const char* kDictionaryTables = R"(
CREATE TABLE sessions(
  session_id INTEGER PRIMARY KEY, mode TEXT NOT NULL, started_at TEXT NOT NULL);
CREATE TABLE series(
  series_id INTEGER PRIMARY KEY, name TEXT NOT NULL, target TEXT NOT NULL, UNIQUE(name, target));
CREATE TABLE records(
  series_id INTEGER NOT NULL REFERENCES series, key INTEGER NOT NULL,
  round INTEGER NOT NULL, rank INTEGER NOT NULL, item INTEGER NOT NULL,
  value2 INTEGER NOT NULL, text TEXT NOT NULL,
  value_type INTEGER NOT NULL, tag INTEGER NOT NULL,
  is_deletion INTEGER NOT NULL, is_input INTEGER NOT NULL, shown_ms INTEGER NOT NULL,
  published_ms INTEGER, published_at TEXT,
  PRIMARY KEY(series_id, key, round, rank, item)) WITHOUT ROWID;
CREATE INDEX deletions ON records(series_id, key, round, rank, item) WHERE is_deletion = 1;
CREATE INDEX arrivals ON records(shown_ms, round, rank, item);
CREATE INDEX rounds ON records(round);
CREATE VIEW dictionary AS
  SELECT name, target, key, text, value2, value_type, published_ms, published_at,
         round, rank, item
  FROM records AS r JOIN series USING (series_id)
  WHERE is_deletion = 0 AND NOT EXISTS(
    SELECT 1 FROM records AS d
    WHERE d.series_id = r.series_id AND d.key = r.key AND d.is_deletion = 1
      AND (d.round, d.rank, d.item) > (r.round, r.rank, r.item));
)";

// Each of the statements below has the view as its first three parameters: now, round, rank.
#define ORVANE_IN_VIEW(row) " " row ".shown_ms <= ?1 AND (" row ".round, " row ".rank) <= (?2, ?3) "
#define ORVANE_NOT_DELETED                                                     \
  " AND NOT EXISTS(SELECT 1 FROM records AS d WHERE d.series_id = r.series_id" \
  " AND d.key = r.key AND d.is_deletion = 1 AND " ORVANE_IN_VIEW(              \
      "d") " AND (d.round, d.rank, d.item) > (r.round, r.rank, r.item)) "
#define ORVANE_VISIBLE ORVANE_IN_VIEW("r") " AND r.is_deletion = 0 " ORVANE_NOT_DELETED
#define ORVANE_IN_RANGE " r.series_id = ?4 AND r.key >= ?5 AND r.key <= ?6 AND " ORVANE_VISIBLE
#define ORVANE_COLUMNS " key, value2, text, value_type, round, rank, item "

constexpr const char* kNames =
    "SELECT DISTINCT name FROM series AS s WHERE EXISTS(SELECT 1 FROM records AS r"
    " WHERE r.series_id = s.series_id AND " ORVANE_VISIBLE ")";
constexpr const char* kTargets =
    "SELECT target FROM series AS s WHERE name = ?4 AND EXISTS(SELECT 1 FROM records AS r"
    " WHERE r.series_id = s.series_id AND " ORVANE_VISIBLE ")";
constexpr const char* kCount = "SELECT count(*) FROM records AS r WHERE " ORVANE_IN_RANGE;
constexpr const char* kPage = "SELECT" ORVANE_COLUMNS "FROM records AS r WHERE " ORVANE_IN_RANGE
                              " AND (r.key, r.round, r.rank, r.item) > (?7, ?8, ?9, ?10)"
                              " ORDER BY key, round, rank, item LIMIT ?11";
constexpr const char* kNewest = "SELECT" ORVANE_COLUMNS "FROM records AS r WHERE " ORVANE_IN_RANGE
                                " ORDER BY key DESC, round DESC, rank DESC, item DESC"
                                " LIMIT 1 OFFSET ?7";
constexpr const char* kArrivals = "SELECT" ORVANE_COLUMNS
                                  ", tag, is_deletion, shown_ms, name, target"
                                  " FROM records AS r JOIN series USING (series_id)"
                                  " WHERE r.shown_ms > ?4 AND " ORVANE_IN_VIEW(
                                      "r") " AND (r.is_deletion = 1 OR (1" ORVANE_NOT_DELETED
                                           "))"
                                           " ORDER BY shown_ms, round, rank, item";
constexpr const char* kNextArrival = "SELECT min(shown_ms) FROM records WHERE shown_ms > ?1";
constexpr const char* kFindSeries = "SELECT series_id FROM series WHERE name = ?1 AND target = ?2";
constexpr const char* kMakeSeries = "INSERT INTO series(name, target) VALUES(?1, ?2)";
constexpr const char* kAdd = "INSERT INTO records VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
// That nothing of the same key and of round ?3 stands behind a row.
#define ORVANE_LAST_OF_ROUND(deletion)                                \
  " AND NOT EXISTS(SELECT 1 FROM records AS o WHERE o.series_id = ?1" \
  " AND o.key = ?2 AND o.round = ?3 AND o.is_deletion = " deletion    \
  " AND (o.round, o.rank, o.item) > (r.round, r.rank, r.item)) LIMIT 1"
constexpr const char* kAlike =
    "SELECT 1 FROM records AS r WHERE series_id = ?1 AND key = ?2 AND shown_ms = ?4"
    " AND is_deletion = 0 AND value2 = ?5 AND text = ?6 AND value_type = ?7" ORVANE_LAST_OF_ROUND(
        "1");
constexpr const char* kAlikeDeletion =
    "SELECT 1 FROM records AS r WHERE series_id = ?1 AND key = ?2 AND shown_ms = ?4"
    " AND is_deletion = 1" ORVANE_LAST_OF_ROUND("0");
constexpr const char* kRemoveSession =
    "DELETE FROM records WHERE round >= ?1 AND round < ?2 AND is_input = 0";

RecordPlace placeOf(SQLite::Statement& row) {
  return {row.getColumn(4).getInt64(), row.getColumn(5).getInt64(), row.getColumn(6).getInt64()};
}

Record recordOf(SQLite::Statement& row) {
  return {row.getColumn(0).getInt64(), row.getColumn(1).getInt64(), bytesOf(row.getColumn(2))};
}

}  // namespace

/// A prepared statement with its parameters that is done with when this object goes: an unfinished
/// one would hold the database.
class DictionaryTables::Query {
 public:
  explicit Query(SQLite::Statement& statement) : statement_(statement), row_(statement) {}
  Query(SQLite::Statement& statement, const DictionaryView& view) : Query(statement) {
    row_.add(view.now).add(view.round).add(view.rank);
  }
  ~Query() { statement_.tryReset(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  SqliteRow* operator->() { return &row_; }
  SQLite::Statement& row() { return statement_; }
  bool next() { return statement_.executeStep(); }
  /// No record shows before its key's time, so the view bounds the keys too.
  Query& range(int64 series, const RecordRange& range, const DictionaryView& view) {
    row_.add(series).add(range.begin).add(std::min(range.end, view.now));
    return *this;
  }

 private:
  SQLite::Statement& statement_;
  SqliteRow row_;
};

DictionaryTables::DictionaryTables(const std::string& path, Connection connection)
    : lock_(connection == Connection::Further || path == kSqliteInMemory
                ? nullptr
                : std::make_unique<const FileLock>(path)),
      database_(connection == Connection::Further
                    ? openSqliteAgain(path)
                    : openSqlite(path, {kDictionaryId, kDictionaryVersion, kDictionaryTables})) {}

SQLite::Statement& DictionaryTables::prepared(const char* sql) {
  std::unique_ptr<SQLite::Statement>& statement = statements_[sql];
  if (statement == nullptr) statement = std::make_unique<SQLite::Statement>(database_, sql);
  return *statement;
}

int64 DictionaryTables::beginSession(bool isPlayback) {
  SQLite::Statement statement(database_, "INSERT INTO sessions(mode, started_at) VALUES(?1, ?2)");
  SqliteRow(statement).add(isPlayback ? "playback" : "live").add(isoTime(wallClockMs())).run();
  return database_.getLastInsertRowid() * kRoundsPerSession;
}

int64 DictionaryTables::publishedBefore(int64 base) {
  SQLite::Statement statement(
      database_,
      "SELECT COUNT(*) FROM records WHERE round < ?1 AND is_input = 0 AND is_deletion = 0");
  SqliteRow(statement).add(base);
  statement.executeStep();
  return statement.getColumn(0).getInt64();
}

void DictionaryTables::commit() {
  database_.exec("COMMIT");
  series_.merge(newSeries_);
  newSeries_.clear();
}

void DictionaryTables::rollback() noexcept {
  newSeries_.clear();
  rollBack(database_);
}

// Writing.

void DictionaryTables::add(const RecordPublication& publication, RecordPlace place,
                           int64 publishedAt, bool isInput, bool onlyNew) {
  if (publication.records.empty()) return;
  const int64 series = makeSeries(publication.name, publication.target);
  const bool deletes = (publication.flags & dictionary::kDeletes) != 0;
  const bool hasTime = publishedAt != -kUnsetTime;
  for (const Record& record : publication.records) {
    const int64 shownAt = deletes ? publishedAt : std::max(record.key, publishedAt);
    if (onlyNew &&
        (deletes ? hasAlikeDeletion(series, record.key, shownAt, place.round)
                 : hasAlike(series, record, publication.valueType, shownAt, place.round)))
      continue;
    Query query(prepared(kAdd));
    query->add(series).add(record.key).add(place.round).add(place.rank).add(place.item++);
    query->add(record.value2).bytes(deletes ? std::string() : record.text);
    query->add(publication.valueType).add(publication.tag);
    query->add(deletes ? 1 : 0).add(isInput ? 1 : 0).add(shownAt);
    query->timeOrNull(publishedAt, hasTime).run();
  }
}

bool DictionaryTables::hasAlike(int64 series, const Record& record, std::int32_t valueType,
                                int64 shownAt, int64 round) {
  Query query(prepared(kAlike));
  query->add(series).add(record.key).add(round).add(shownAt);
  query->add(record.value2).bytes(record.text).add(valueType);
  return query.next();
}

bool DictionaryTables::hasAlikeDeletion(int64 series, int64 key, int64 shownAt, int64 round) {
  Query query(prepared(kAlikeDeletion));
  query->add(series).add(key).add(round).add(shownAt);
  return query.next();
}

int64 DictionaryTables::findSeries(const std::string& name, const std::string& target) {
  const SeriesKey key(name, target);
  if (const auto known = series_.find(key); known != series_.end()) return known->second;
  if (const auto made = newSeries_.find(key); made != newSeries_.end()) return made->second;
  Query query(prepared(kFindSeries));
  query->bytes(name).bytes(target);
  if (!query.next()) return 0;
  // It may stand in this connection's own open transaction, which may yet be taken back.
  return newSeries_[key] = query.row().getColumn(0).getInt64();
}

int64 DictionaryTables::makeSeries(const std::string& name, const std::string& target) {
  if (const int64 known = findSeries(name, target); known != 0) return known;
  Query query(prepared(kMakeSeries));
  query->bytes(name).bytes(target).run();
  return newSeries_[{name, target}] = database_.getLastInsertRowid();
}

void DictionaryTables::removeSession(int64 base) {
  Query query(prepared(kRemoveSession));
  query->add(base).add(base + kRoundsPerSession).run();
}

// Reading.

std::vector<std::string> DictionaryTables::names(const DictionaryView& view) {
  std::vector<std::string> found;
  Query query(prepared(kNames), view);
  while (query.next()) found.push_back(bytesOf(query.row().getColumn(0)));
  std::sort(found.begin(), found.end());
  return found;
}

std::vector<std::string> DictionaryTables::targets(const std::string& name,
                                                   const DictionaryView& view) {
  std::vector<std::string> found;
  Query query(prepared(kTargets), view);
  query->bytes(name);
  while (query.next()) found.push_back(bytesOf(query.row().getColumn(0)));
  std::sort(found.begin(), found.end());
  return found;
}

int64 DictionaryTables::count(const RecordRange& range, const DictionaryView& view) {
  const int64 series = findSeries(range.name, range.target);
  if (series == 0) return 0;
  Query query(prepared(kCount), view);
  query.range(series, range, view).next();
  return query.row().getColumn(0).getInt64();
}

std::vector<StoredRecord> DictionaryTables::page(const RecordRange& range,
                                                 const DictionaryView& view,
                                                 const StoredRecord* after, std::size_t most) {
  const int64 series = findSeries(range.name, range.target);
  if (series == 0) return {};
  const RecordPlace from = after == nullptr ? RecordPlace{-1, 0, 0} : after->place;
  Query query(prepared(kPage), view);
  query.range(series, range, view);
  query->add(after == nullptr ? kFirst : after->record.key);
  query->add(from.round).add(from.rank).add(from.item);
  query->add(static_cast<int64>(std::min<std::size_t>(most, kUnsetTime)));
  std::vector<StoredRecord> found;
  while (query.next())
    found.push_back(
        {recordOf(query.row()), query.row().getColumn(3).getInt(), placeOf(query.row())});
  return found;
}

bool DictionaryTables::newest(const RecordRange& range, const DictionaryView& view,
                              std::size_t skip, StoredRecord& found) {
  const int64 series = findSeries(range.name, range.target);
  if (series == 0) return false;
  Query query(prepared(kNewest), view);
  query.range(series, range, view)->add(static_cast<int64>(skip));
  if (!query.next()) return false;
  found = {recordOf(query.row()), query.row().getColumn(3).getInt(), placeOf(query.row())};
  return true;
}

std::vector<Arrival> DictionaryTables::arrivals(int64 after, const DictionaryView& view) {
  std::vector<Arrival> found;
  Query query(prepared(kArrivals), view);
  query->add(after);
  while (query.next()) {
    SQLite::Statement& row = query.row();
    const RecordPlace place = placeOf(row);
    const int64 shownAt = row.getColumn(9).getInt64();
    const std::string name = bytesOf(row.getColumn(10));
    const std::string target = bytesOf(row.getColumn(11));
    Arrival* last = found.empty() ? nullptr : &found.back();
    if (last == nullptr || last->shownAt != shownAt || last->place.round != place.round ||
        last->place.rank != place.rank || last->name != name || last->target != target) {
      found.push_back({name,
                       target,
                       row.getColumn(3).getInt(),
                       row.getColumn(7).getInt64(),
                       row.getColumn(8).getInt() != 0,
                       false,
                       shownAt,
                       place,
                       {}});
      last = &found.back();
    }
    last->records.push_back(recordOf(row));
  }
  return found;
}

int64 DictionaryTables::nextArrival(int64 after) {
  Query query(prepared(kNextArrival));
  query->add(after);
  query.next();
  const SQLite::Column column = query.row().getColumn(0);
  return column.isNull() ? kUnsetTime : column.getInt64();
}

}  // namespace orvane::detail
