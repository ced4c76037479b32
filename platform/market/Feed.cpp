#include "platform/market/Feed.h"

#include <algorithm>
#include <utility>

namespace orvane::detail {

Feed::Feed(const std::vector<MarketStream*>& streams, int64 to) {
  for (MarketStream* stream : streams) {
    const std::size_t first = stream->known.load();
    const std::size_t end = to == kUnsetTime ? stream->rows() : stream->lowerBound(to);
    if (first >= end) continue;
    heap_.push_back({stream->timeAt(first), stream, end});
    firstTime_ = total_ == 0 ? stream->timeAt(first) : std::min(firstTime_, stream->timeAt(first));
    lastTime_ =
        total_ == 0 ? stream->timeAt(end - 1) : std::max(lastTime_, stream->timeAt(end - 1));
    total_ += end - first;
  }
  std::make_heap(heap_.begin(), heap_.end(), later);
}

bool Feed::later(const Entry& a, const Entry& b) {
  if (a.time != b.time) return a.time > b.time;
  const int64 periodA = a.stream->periodMs(), periodB = b.stream->periodMs();
  if (periodA != periodB) return periodA > periodB;  // Ticks have 0.
  return a.stream->order() > b.stream->order();
}

void Feed::advance() {
  Entry& front = heap_.front();
  const std::size_t row = front.stream->known.load(std::memory_order_relaxed);
  if (row < front.end) {
    front.time = front.stream->timeAt(row);
  } else {
    front = heap_.back();
    heap_.pop_back();
  }
  sink();
}

void Feed::sink() {
  std::size_t at = 0;
  while (2 * at + 1 < heap_.size()) {
    std::size_t child = 2 * at + 1;
    if (child + 1 < heap_.size() && later(heap_[child], heap_[child + 1])) ++child;
    if (!later(heap_[at], heap_[child])) return;
    std::swap(heap_[at], heap_[child]);
    at = child;
  }
}

}  // namespace orvane::detail
