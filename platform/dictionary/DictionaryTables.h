#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/core/FileLock.h"
#include "platform/dictionary/RecordPublication.h"

namespace orvane::detail {

/// The place of a record among all: publications are ordered by round and rank, records within
/// one by item.
struct RecordPlace {
  int64 round = 0;
  int64 rank = 0;
  int64 item = 0;
};

/// What a reader may see: publications up to a round and a rank in it, and records whose time has
/// come by `now`.
struct DictionaryView {
  int64 now = kUnsetTime;
  int64 round = kUnsetTime;
  int64 rank = kUnsetTime;
};

/// Which records of a target; the bounds of the key are inclusive.
struct RecordRange {
  std::string name, target;
  int64 begin = -kUnsetTime;
  int64 end = kUnsetTime;
};

struct StoredRecord {
  Record record;
  std::int32_t valueType = 0;
  RecordPlace place;
};

/// Records of one publication that become visible at one time.
struct Arrival {
  std::string name, target;
  std::int32_t valueType = 0;
  int64 tag = 0;
  bool isDeletion = false;
  bool isInput = false;  ///< Stays when a run is taken back.
  int64 shownAt = 0;
  RecordPlace place;  ///< Of the publication.
  std::list<Record> records;
};

/// One connection to the tables of the dictionary, which docs/dictionary.md tells. For one thread
/// at a time; what SQLite refuses is thrown as `SQLite::Exception`.
///
/// Nothing is ever overwritten: a deletion is a row that hides the rows of its key that stand
/// before it, so each view of the past stays what it was.
class DictionaryTables {
 public:
  enum class Connection { First, Further };

  /// Opens or makes the file and its tables; `path` may be that of the memory. The first
  /// connection to a file keeps it for itself and for further ones of its process, which must go
  /// before it; throws `std::runtime_error` if another run has it.
  DictionaryTables(const std::string& path, Connection connection);

  /// Takes rounds for one more platform on this file, and returns the first of them.
  int64 beginSession(bool isPlayback);

  /// How many records sessions before the one that begins at round `base` published, without those
  /// that were taken away and what files gave.
  int64 publishedBefore(int64 base);

  void begin() { database_.exec("BEGIN IMMEDIATE"); }
  void commit();
  void rollback() noexcept;

  /// Between `begin` and `commit`. `publishedAt` is UTC milliseconds, or `-kUnsetTime` for records
  /// that were there from the start. With `onlyNew` records and deletions that are there already,
  /// alike in all parts, are passed over, unless something that was added at the same round stands
  /// between: what a list says last of a key holds, however much of it was known.
  void add(const RecordPublication& publication, RecordPlace place, int64 publishedAt, bool isInput,
           bool onlyNew);
  /// Between `begin` and `commit`: takes what was published in the session that begins at round
  /// `base` away but for the input. What other platforms published into the file stays.
  void removeSession(int64 base);

  std::vector<std::string> names(const DictionaryView& view);
  std::vector<std::string> targets(const std::string& name, const DictionaryView& view);
  int64 count(const RecordRange& range, const DictionaryView& view);
  /// At most `most` records in order of key and place, after those of which `after` is the last;
  /// null: from the first on.
  std::vector<StoredRecord> page(const RecordRange& range, const DictionaryView& view,
                                 const StoredRecord* after, std::size_t most);
  /// The record of a range before which `skip` newer ones stand; false if there is none.
  bool newest(const RecordRange& range, const DictionaryView& view, std::size_t skip,
              StoredRecord& found);
  /// What becomes visible after `after` up to `view.now`.
  std::vector<Arrival> arrivals(int64 after, const DictionaryView& view);
  /// When the next record after `after` becomes visible; `kUnsetTime` if none does.
  int64 nextArrival(int64 after);

 private:
  class Query;
  using SeriesKey = std::pair<std::string, std::string>;
  int64 findSeries(const std::string& name, const std::string& target);
  int64 makeSeries(const std::string& name, const std::string& target);
  bool hasAlike(int64 series, const Record& record, std::int32_t valueType, int64 shownAt,
                int64 round);
  bool hasAlikeDeletion(int64 series, int64 key, int64 shownAt, int64 round);
  SQLite::Statement& prepared(const char* sql);

  const std::unique_ptr<const FileLock> lock_;  ///< Null in memory and for further connections.
  SQLite::Database database_;
  std::map<const char*, std::unique_ptr<SQLite::Statement>> statements_;
  std::map<SeriesKey, int64> series_;     ///< Known and committed.
  std::map<SeriesKey, int64> newSeries_;  ///< Of the open transaction.
};

}  // namespace orvane::detail
