#include "platform/dictionary/DataBook.h"

#include <utility>

namespace orvane::detail {

std::shared_ptr<DataReceiver> DataBook::receiverOf(const std::shared_ptr<DataSpi>& spi) {
  std::weak_ptr<DataReceiver>& known = receivers_[spi.get()];
  std::shared_ptr<DataReceiver> receiver = known.lock();
  // An address may come again after its receiver went.
  if (receiver == nullptr || receiver->spi != spi) {
    std::erase_if(receivers_, [](const auto& each) { return each.second.expired(); });
    receiver = std::make_shared<DataReceiver>(spi);
    receivers_[spi.get()] = receiver;
  }
  return receiver;
}

void DataBook::add(const std::shared_ptr<DataRequest>& request,
                   const std::shared_ptr<DataSpi>& spi) {
  std::vector<std::shared_ptr<DataRequest>> ended;
  const std::lock_guard lock(mutex_);
  request->who = receiverOf(spi);
  ended = byId_[request->id].holders;
  for (const auto& older : ended)
    if (older->who == request->who) endLocked(older);
  byId_[request->id].holders.push_back(request);
  waiting_.push_back(request);
  noteWaiting();
}

void DataBook::cancel(int requestId) {
  std::vector<std::shared_ptr<DataRequest>> ended;
  const std::lock_guard lock(mutex_);
  const auto at = byId_.find(requestId);
  if (at == byId_.end() || ++at->second.cancels < at->second.holders.size()) return;
  ended = at->second.holders;
  for (const auto& request : ended) endLocked(request);
}

void DataBook::finish(const std::shared_ptr<DataRequest>& request) {
  const std::lock_guard lock(mutex_);
  if (!request->ended.load()) endLocked(request);
}

void DataBook::endLocked(const std::shared_ptr<DataRequest>& request) {
  // Whoever walks a list holds the request until the list is swept.
  request->ended.store(true);
  endedSome_.store(true);
  const auto slot = byId_.find(request->id);
  if (slot == byId_.end()) return;
  std::erase(slot->second.holders, request);
  if (slot->second.cancels > 0) --slot->second.cancels;
  if (slot->second.holders.empty()) byId_.erase(slot);
}

void DataBook::addSnapshot(const SnapshotKey& key, const std::shared_ptr<DataSpi>& spi) {
  const std::lock_guard lock(mutex_);
  std::shared_ptr<SnapshotRequest>& standing = snapshots_[spi.get()][key];
  if (standing != nullptr) return;
  standing = std::make_shared<SnapshotRequest>();
  standing->key = key;
  standing->who = receiverOf(spi);
  waitingSnapshots_.push_back(standing);
  noteWaiting();
}

void DataBook::cancelSnapshot(const SnapshotKey& key, const DataSpi* spi) {
  std::shared_ptr<SnapshotRequest> ended;
  const std::lock_guard lock(mutex_);
  const auto holder = snapshots_.find(spi);
  if (holder == snapshots_.end()) return;
  const auto at = holder->second.find(key);
  if (at == holder->second.end()) return;
  ended = at->second;
  ended->ended.store(true);
  endedSome_.store(true);
  holder->second.erase(at);
  if (holder->second.empty()) snapshots_.erase(holder);
}

void DataBook::cancelSnapshots(const DataSpi* spi) {
  std::map<SnapshotKey, std::shared_ptr<SnapshotRequest>> ended;
  const std::lock_guard lock(mutex_);
  const auto holder = snapshots_.find(spi);
  if (holder == snapshots_.end()) return;
  ended = std::move(holder->second);
  snapshots_.erase(holder);
  for (const auto& [key, request] : ended) request->ended.store(true);
  endedSome_.store(true);
}

std::shared_ptr<DataRequest> DataBook::takeRequest() {
  const std::lock_guard lock(mutex_);
  if (waiting_.empty()) return nullptr;
  std::shared_ptr<DataRequest> request = std::move(waiting_.front());
  waiting_.pop_front();
  noteWaiting();
  return request;
}

std::shared_ptr<SnapshotRequest> DataBook::takeSnapshot() {
  const std::lock_guard lock(mutex_);
  if (waitingSnapshots_.empty()) return nullptr;
  std::shared_ptr<SnapshotRequest> request = std::move(waitingSnapshots_.front());
  waitingSnapshots_.pop_front();
  noteWaiting();
  return request;
}

}  // namespace orvane::detail
