#include "platform/dictionary/DictionaryStore.h"

#include <stdexcept>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/core/SqliteFile.h"
#include "platform/fields/DictionaryFlags.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kStorageFailed;
/// Publications of one source.
constexpr int64 kRanksPerSource = int64{1} << 40;

}  // namespace

DictionaryStore::DictionaryStore(const std::string& path, bool isPlayback)
    : path_(path), inMemory_(path.empty()) {
  try {
    using Connection = DictionaryTables::Connection;
    tables_ =
        std::make_unique<DictionaryTables>(inMemory_ ? kSqliteInMemory : path, Connection::First);
    base_ = tables_->beginSession(isPlayback);
    if (!inMemory_) reading_ = std::make_unique<DictionaryTables>(path, Connection::Further);
  } catch (const std::exception& error) {
    failToOpen("dictionary " + path, error);
  }
  openRound_ = base_ + 1;
  admitted_.store(base_);
}

DictionaryStore::~DictionaryStore() = default;

int DictionaryStore::addSource() {
  const std::lock_guard lock(mutex_);
  const int number = static_cast<int>(sources_.size()) + 1;
  sources_[number];
  return number;
}

ResultStatus DictionaryStore::publish(int source, RecordPublication publication, int64 now,
                                      bool isInput) {
  const bool deletes = (publication.flags & dictionary::kDeletes) != 0;
  const std::lock_guard lock(mutex_);
  Source& from = sources_[source];
  const RecordPlace place{openRound_, source * kRanksPerSource + from.published + 1, 0};
  // All that can fail comes first: what is on the disk is told to the receivers.
  std::list<Arrival> arrival;
  std::string depth;
  try {
    depth = std::to_string(from.waiting + 1);
    tables_->begin();
    tables_->add(publication, place, now, isInput, false);
    arrival.push_back({std::move(publication.name), std::move(publication.target),
                       publication.valueType, publication.tag, deletes, isInput, now, place,
                       std::move(publication.records)});
    tables_->commit();
  } catch (const std::exception& error) {
    tables_->rollback();
    return failed(error.what());
  }
  ++from.published;
  ++from.waiting;
  arrivals_.splice(arrivals_.end(), arrival);
  waiting_.store(arrivals_.size());
  return {0, std::move(depth)};
}

ResultStatus DictionaryStore::failed(const std::string& what) {
  if (failure_.empty()) failure_ = "dictionary " + path_ + ": " + what;
  return statusWith(kStorageFailed, (inMemory_ ? std::string() : path_ + ": ") + what);
}

std::string DictionaryStore::takeFailure() {
  const std::lock_guard lock(mutex_);
  return std::exchange(failure_, {});
}

void DictionaryStore::load(const std::vector<RecordPublication>& publications) {
  const std::lock_guard lock(mutex_);
  try {
    tables_->begin();
    for (const RecordPublication& publication : publications)
      tables_->add(publication, {base_, ++loaded_, 0},
                   publication.time == kUnsetTime ? -kUnsetTime : publication.time, true, true);
    tables_->commit();
  } catch (const std::exception& error) {
    tables_->rollback();
    throw std::runtime_error("dictionary " + path_ + ": " + error.what());
  }
}

int64 DictionaryStore::earlierRecords() {
  return read([this](DictionaryTables& tables) { return tables.publishedBefore(base_); });
}

std::list<Arrival> DictionaryStore::admit(int64 now) {
  std::list<Arrival> taken;
  {
    const std::lock_guard lock(mutex_);
    taken.swap(arrivals_);
    waiting_.store(0);
    for (auto& [number, source] : sources_) source.waiting = 0;
    admitted_.store(openRound_++);
  }
  taken.sort([](const Arrival& a, const Arrival& b) { return a.place.rank < b.place.rank; });
  for (Arrival& arrival : taken)
    if (!arrival.isDeletion)
      arrival.records.remove_if([now](const Record& record) { return record.key > now; });
  taken.remove_if([](const Arrival& arrival) { return arrival.records.empty(); });
  return taken;
}

void DictionaryStore::removeRun() {
  const std::lock_guard lock(mutex_);
  try {
    tables_->begin();
    tables_->removeSession(base_);
    tables_->commit();
  } catch (const std::exception& error) {
    tables_->rollback();
    throw std::runtime_error("dictionary " + path_ + ": " + error.what());
  }
  arrivals_.remove_if([](const Arrival& arrival) { return !arrival.isInput; });
  waiting_.store(arrivals_.size());
  for (auto& [number, source] : sources_) source.waiting = 0;
}

}  // namespace orvane::detail
