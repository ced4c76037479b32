#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/dictionary/DictionaryTables.h"
#include "shared/ResultStatus.h"

namespace orvane::detail {

/// The records of a dictionary and the publications that nobody was told of yet.
///
/// A publication is on the disk before `publish` returns. It belongs to the open round until
/// `admit` closes that one: then, and not before, others see it. The order of a round's
/// publications is that of the sources' numbers and, within one source, that of its calls; so it
/// does not depend on how threads raced. Any thread may call any operation.
class DictionaryStore {
 public:
  /// An empty path keeps the records in memory. Throws `std::runtime_error`, which names the path
  /// (UTF-8), if the file cannot be used.
  DictionaryStore(const std::string& path, bool isPlayback);
  ~DictionaryStore();
  DictionaryStore(const DictionaryStore&) = delete;
  DictionaryStore& operator=(const DictionaryStore&) = delete;

  /// The number of one more source.
  int addSource();

  /// Stores a publication of a source, made at `now`. On success the message is the number of
  /// publications of the source that wait for `admit`, this one included. Input stays when a run
  /// is taken back.
  ResultStatus publish(int source, RecordPublication publication, int64 now, bool isInput);

  /// Stores what was there from the start; what is there already is not stored again. Throws
  /// `std::runtime_error`, which names the path, if it cannot be written; nothing is stored then.
  void load(const std::vector<RecordPublication>& publications);

  /// How many records earlier runs left in the file.
  int64 earlierRecords();

  bool anyWaiting() const { return waiting_.load() != 0; }
  /// Closes the open round and returns its publications in order, without the records whose time
  /// comes after `now`.
  std::list<Arrival> admit(int64 now);

  /// The last round that was closed.
  int64 admitted() const { return admitted_.load(); }

  /// Why publications could not be stored, by the first of them, with the path (UTF-8); empty if
  /// none failed since the last call.
  std::string takeFailure();

  /// Takes away what was published through this store, but for input.
  void removeRun();

  /// Calls `use` with the tables, for reading alone. What SQLite refuses is thrown as
  /// `SQLite::Exception`.
  template <typename Use>
  auto read(Use use) {
    if (reading_ != nullptr) {
      const std::lock_guard lock(readMutex_);
      return use(*reading_);
    }
    const std::lock_guard lock(mutex_);
    return use(*tables_);
  }

 private:
  struct Source {
    int64 published = 0;
    int64 waiting = 0;
  };
  ResultStatus failed(const std::string& what);

  const std::string path_;
  const bool inMemory_;
  std::atomic<std::size_t> waiting_{0};
  std::atomic<int64> admitted_{0};

  std::mutex mutex_;  ///< Guards what follows; held while a publication goes to the disk.
  std::unique_ptr<DictionaryTables> tables_;
  int64 base_ = 0;       ///< The round of what was there from the start.
  int64 openRound_ = 0;  ///< That of the next publication.
  int64 loaded_ = 0;
  std::map<int, Source> sources_;
  std::list<Arrival> arrivals_;  ///< Of the open round, as they came.
  std::string failure_;          ///< The first, until it is taken.

  std::mutex readMutex_;  ///< Guards `reading_`.
  /// A second connection, so that nobody who reads waits for the disk. Null in memory.
  std::unique_ptr<DictionaryTables> reading_;
};

}  // namespace orvane::detail
