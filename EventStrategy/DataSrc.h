#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "EventStrategy/IDataSrc.h"
#include "EventStrategy/SpinLock.h"

namespace orvane {

class DataNotify;

namespace detail {
struct TestAccess;
}

/// One strategy's dictionary data: keeps its subscriptions, passes their call-backs on, answers
/// synchronous reads, and publishes.
///
/// Made with `make_shared`, owned by an `AbstractEventStrategy` and shared by the service while a
/// subscription stands. Any thread may call it. Lock order: `dataMutex_`, then `snapshotLock_`;
/// neither is held across a call to a service or to `notify_`, and the two mutexes are never held
/// together.
class DataSrc final : public IDataSrc,
                      public DataSpi,
                      public std::enable_shared_from_this<DataSrc> {
 public:
  /// `mode` chooses the publisher's mode.
  explicit DataSrc(int mode);
  ~DataSrc() override;

  /// Where call-backs go; null drops them. When it returns, no call-back runs through the old one.
  void setNotify(DataNotify* notify);

  /// Starts a request. A refusal keeps its id in the books.
  ResultStatus subscribeData(const DataReq& request, int requestId);
  /// Takes a request out of the books, without a call to the service; false if it is not there.
  bool forgetRequest(int requestId);
  /// Counts the subscribers of a snapshot: only the first and the last reach the service.
  void subscribeDataSnapshot(const std::string& name, const std::string& target, int flags);
  void unsubscribeDataSnapshot(const std::string& name, const std::string& target, int flags);
  bool isSubscribeData(int requestId);
  bool isSubscribeDataSnapshot(const std::string& name, const std::string& target);
  /// Withdraws everything from the service, whatever single withdrawals throw; then throws the
  /// first of that. The object stays usable.
  void release();

  // IDataSrc
  ResultStatus publisherOp1(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp2(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp3(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp4(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp5(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp6(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp7(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp8(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp9(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp10(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp11(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp12(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags, int64 tag) override;
  ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                           int64 end, const Cancel& cancelled, std::list<Record>& records,
                           int flags, int64 wait) override;
  ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                           int64 time, const Cancel& cancelled,
                           std::map<std::string, Record>& records, int flags, int64 wait) override;
  ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                          const Cancel& cancelled, Record& record, int flags, int64 wait) override;
  ResultStatus readLatest(const std::string& name, const std::string& target, Record& record,
                          int flags) override;
  ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                              std::list<LatestOfName>& latest, int flags) override;
  ResultStatus requestRange(const std::string& name, const std::string& target, int64 begin,
                            int64 end, int64 tag, int flags) override;
  ResultStatus requestRangeAll(const std::string& name, int64 begin, int64 end, int64 tag,
                               int flags) override;
  ResultStatus dataDefine(const std::string& name, DataDefine& define) override;
  ResultStatus dataBrief(const std::string& name, DataBrief& brief) override;
  std::list<std::string> targetsOfName(const std::string& name) override;
  ResultStatus dataServiceQuery(const std::string& question, std::string& answer) override;

  // DataSpi
  void onSnapshot(const SnapshotKey& key, const Record& record) override;
  void onProgress(int requestId, int progress1, int progress2) override;
  void onData(int requestId, const DataResult& result, const ResultStatus& status, int batchFlag,
              int64 batchTag) override;
  void onDelete(int requestId, const SnapshotKey& key, int64 deleted1, int64 deleted2,
                int64 deleted3) override;

 private:
  friend struct detail::TestAccess;

  /// How many subscribers a snapshot has. Called with `dataMutex_` held.
  int snapshotCount(const SnapshotKey& key);

  std::mutex notifyMutex_;
  DataNotify* notify_ = nullptr;  ///< Borrowed; guarded by `notifyMutex_`, held while called.

  std::mutex dataMutex_;  ///< Guards `requestIds_` and, with the spin lock, `snapshots_`.
  std::set<int> requestIds_;
  detail::SpinLock snapshotLock_;
  std::map<SnapshotKey, int> snapshots_;

  std::unique_ptr<IPublisher> publisher_;
};

}  // namespace orvane
