#include "EventStrategy/DataSrc.h"

#include "EventStrategy/Attempts.h"
#include "EventStrategy/DataNotify.h"
#include "EventStrategy/PublisherMode.h"
#include "EventStrategy/Services.h"

namespace orvane {
DataSrc::DataSrc(int mode) : publisher_(IPublisher::create(publisherMode(mode))) {}

DataSrc::~DataSrc() = default;

void DataSrc::setNotify(DataNotify* notify) {
  const std::lock_guard lock(notifyMutex_);
  notify_ = notify;
}

ResultStatus DataSrc::subscribeData(const DataReq& request, int requestId) {
  {
    const std::lock_guard lock(dataMutex_);
    requestIds_.insert(requestId);
  }
  return dataService()->subscribeData(request, shared_from_this(), requestId);
}

bool DataSrc::forgetRequest(int requestId) {
  const std::lock_guard lock(dataMutex_);
  return requestIds_.erase(requestId) > 0;
}

void DataSrc::subscribeDataSnapshot(const std::string& name, const std::string& target, int flags) {
  {
    const std::lock_guard lock(dataMutex_);
    const std::lock_guard spin(snapshotLock_);
    if (++snapshots_[{target, name}] > 1) return;
  }
  dataService()->subscribeSnapshot({{target, name}}, shared_from_this(), flags);
}

void DataSrc::unsubscribeDataSnapshot(const std::string& name, const std::string& target,
                                      int flags) {
  const SnapshotKey key{target, name};
  {
    const std::lock_guard lock(dataMutex_);
    if (snapshotCount(key) < 1) return;
    const std::lock_guard spin(snapshotLock_);
    const auto it = snapshots_.find(key);
    if (--it->second >= 1) return;
    snapshots_.erase(it);
  }
  dataService()->unsubscribeSnapshot({{target, name}}, shared_from_this(), flags);
}

bool DataSrc::isSubscribeData(int requestId) {
  const std::lock_guard lock(dataMutex_);
  return requestIds_.contains(requestId);
}

bool DataSrc::isSubscribeDataSnapshot(const std::string& name, const std::string& target) {
  const std::lock_guard lock(dataMutex_);
  return snapshotCount({target, name}) >= 1;
}

int DataSrc::snapshotCount(const SnapshotKey& key) {
  const std::lock_guard spin(snapshotLock_);
  const auto it = snapshots_.find(key);
  return it == snapshots_.end() ? 0 : it->second;
}

void DataSrc::release() {
  std::set<int> requests;
  {
    const std::lock_guard lock(dataMutex_);
    requests.swap(requestIds_);
    const std::lock_guard spin(snapshotLock_);
    snapshots_.clear();
  }
  detail::Attempts attempts;
  for (const int requestId : requests)
    attempts.take([&] { dataService()->unsubscribeData(requestId); });
  attempts.take([this] { dataService()->unsubscribeAllSnapshots(shared_from_this()); });
  attempts.finish();
}

void DataSrc::onSnapshot(const SnapshotKey& key, const Record& record) {
  if (!isSubscribeDataSnapshot(key.name, key.target)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onDataSnapshot(key.name, key.target, record);
}

void DataSrc::onProgress(int requestId, int progress1, int progress2) {
  if (!isSubscribeData(requestId)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onProgress(requestId, progress1, progress2);
}

void DataSrc::onData(int requestId, const DataResult& result, const ResultStatus& status,
                     int batchFlag, int64 batchTag) {
  if (!isSubscribeData(requestId)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ == nullptr) return;
  if (result.targets.empty())
    notify_->onData(requestId, {}, DataValueType::None, status, batchFlag, batchTag);
  else
    notify_->onData(requestId, result.targets.front().records, result.valueType, status, batchFlag,
                    batchTag);
}

void DataSrc::onDelete(int requestId, const SnapshotKey&, int64 deleted1, int64 deleted2,
                       int64 deleted3) {
  if (!isSubscribeData(requestId)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onDeleteData(requestId, deleted1, deleted2, deleted3);
}

}  // namespace orvane
