#pragma once

#include <vector>

#include "platform/market/MarketStore.h"

namespace orvane::detail {

/// The records of all streams in the order of the feed: by time; at one time ticks before bars,
/// shorter periods before longer ones, then in the order the series were added, then by row.
/// For one thread at a time.
class Feed {
 public:
  /// From where the streams stand to the end, or to the first record at or after `to`.
  Feed(const std::vector<MarketStream*>& streams, int64 to);

  bool atEnd() const { return heap_.empty(); }
  int64 nextTime() const { return heap_.front().time; }
  MarketStream& nextStream() const { return *heap_.front().stream; }
  /// Goes on; the present record is known to its stream by now.
  void advance();

  std::size_t total() const { return total_; }
  int64 firstTime() const { return firstTime_; }  ///< 0 without records.
  int64 lastTime() const { return lastTime_; }

 private:
  struct Entry {
    int64 time;
    MarketStream* stream;
    std::size_t end;  ///< Rows that are played.
  };
  static bool later(const Entry& a, const Entry& b);
  void sink();

  std::vector<Entry> heap_;  ///< The earliest record's stream in front.
  std::size_t total_ = 0;
  int64 firstTime_ = 0;
  int64 lastTime_ = 0;
};

}  // namespace orvane::detail
