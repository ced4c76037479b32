#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/dictionary/DataRequests.h"

namespace orvane::detail {

/// Who asked for which dictionary data, and what nobody served yet. Any thread may call it. No
/// receiver is let go while the lock is held, since that may be its last reference.
///
/// A receiver that uses its id again gives up its older request. A cancel says only the id: with
/// several holders it ends them all once as many cancels came as there are holders.
class DataBook {
 public:
  void add(const std::shared_ptr<DataRequest>& request, const std::shared_ptr<DataSpi>& spi);
  void cancel(int requestId);
  /// Takes a request out of the books that has nothing more to come.
  void finish(const std::shared_ptr<DataRequest>& request);

  /// A second one of a receiver for the same key changes nothing.
  void addSnapshot(const SnapshotKey& key, const std::shared_ptr<DataSpi>& spi);
  void cancelSnapshot(const SnapshotKey& key, const DataSpi* spi);
  void cancelSnapshots(const DataSpi* spi);

  /// Whether anything waits to be served, or to be swept out of lists.
  bool anyWaiting() const { return waitingCount_.load() != 0 || endedSome_.load(); }
  /// The oldest request, or else snapshot, that waits; null without one.
  std::shared_ptr<DataRequest> takeRequest();
  std::shared_ptr<SnapshotRequest> takeSnapshot();
  /// Whether requests were ended since the last call.
  bool takeEndedMark() { return endedSome_.exchange(false); }

 private:
  struct IdSlot {
    std::vector<std::shared_ptr<DataRequest>> holders;
    std::size_t cancels = 0;
  };
  std::shared_ptr<DataReceiver> receiverOf(const std::shared_ptr<DataSpi>& spi);
  void endLocked(const std::shared_ptr<DataRequest>& request);
  void noteWaiting() { waitingCount_.store(waiting_.size() + waitingSnapshots_.size()); }

  std::atomic<std::size_t> waitingCount_{0};
  std::atomic<bool> endedSome_{false};
  std::mutex mutex_;  ///< Guards what follows.
  std::deque<std::shared_ptr<DataRequest>> waiting_;
  std::deque<std::shared_ptr<SnapshotRequest>> waitingSnapshots_;
  std::map<int, IdSlot> byId_;
  std::map<const DataSpi*, std::map<SnapshotKey, std::shared_ptr<SnapshotRequest>>> snapshots_;
  std::map<const DataSpi*, std::weak_ptr<DataReceiver>> receivers_;
};

}  // namespace orvane::detail
