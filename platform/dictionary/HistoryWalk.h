#pragma once

#include <vector>

#include "platform/dictionary/DictionaryStore.h"
#include "services/Common/IDataService.h"

namespace orvane::detail {

/// The first key that a request wants: the largest time there is means no bound.
inline int64 firstKeyOf(const DataReq& query) {
  return query.beginTime == kUnsetTime ? -kUnsetTime - 1 : query.beginTime;
}

/// Walks over the records of a request, target by target and then by key, in batches. What it
/// finds is that of one view, whatever is published meanwhile. For one thread; what SQLite refuses
/// is thrown as `SQLite::Exception`.
class HistoryWalk {
 public:
  /// `query` and `store` outlive this object.
  HistoryWalk(DictionaryStore& store, const DataReq& query, int64 lastKey,
              const DictionaryView& view);

  int64 total() const { return total_; }
  int64 sent() const { return sent_; }
  bool atEnd() const { return at_ == parts_.size(); }

  /// The next records: at most `most` of one target and one type of value. Not at the end.
  DataResult next(std::size_t most);

 private:
  struct Part {
    RecordRange range;
    int64 left = 0;
    bool hasLast = false;
    StoredRecord last;  ///< The part goes on after it.
  };
  void addPart(const std::string& target, int64 lastKey);

  DictionaryStore& store_;
  const DataReq& query_;
  const DictionaryView view_;
  std::vector<Part> parts_;
  std::size_t at_ = 0;
  int64 sent_ = 0;
  int64 total_ = 0;
};

}  // namespace orvane::detail
