#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/core/CallRounds.h"
#include "platform/dictionary/DataBook.h"
#include "platform/dictionary/DictionaryStore.h"
#include "services/Common/IDataService.h"

namespace orvane::detail {

/// The dictionary of a platform. Its operations answer from the store or take down what is wanted;
/// any thread may call them, with locks held. Only `publish` waits: for the disk.
///
/// Call-backs come from `serve`, on the service loop's thread. In lockstep it is called when every
/// runner is quiet: it closes the round of publications, delivers them in an order that does not
/// depend on threads, then what becomes due by the clock, then serves requests; and no receiver is
/// called twice without quiet in between.
class DictionaryService final : public IDataService {
 public:
  struct Parts {
    bool isPlayback = true;
    std::string file;              ///< UTF-8; empty: in memory.
    std::function<int64()> clock;  ///< UTC milliseconds.
    /// Whether the clock means anything: a playback without data has no time yet.
    std::function<bool()> hasTime;
    /// Whether the calling thread runs no call-back of a runner, and none runs elsewhere.
    std::function<bool()> isOutside;
    std::function<void()> onRequest;  ///< Something waits for `serve`. Called without locks.
    std::function<void()> onEnded;    ///< Something waits for `sweep`. Called without locks.
    std::function<int64()> steadyMs;  ///< Milliseconds of a clock that only bounds waits.
    const std::atomic<bool>& cancelled;
  };
  using Cancel = std::function<bool()>;
  /// Records of one batch of history, and of one page of a blocking read.
  static constexpr std::size_t kRecordsPerBatch = 1'000;

  /// Throws `std::runtime_error`, which names the path, if the file cannot be used.
  explicit DictionaryService(Parts parts);
  ~DictionaryService() override;

  // Asked by strategies.
  ResultStatus dataDefines(std::list<DataDefine>& defines, const std::list<std::string>& names,
                           int flags) override;
  ResultStatus dataBriefs(std::list<DataBrief>& briefs,
                          const std::list<std::string>& names) override;
  ResultStatus queryOp(const std::string& question, std::string& answer) override;
  ResultStatus requestAll(const DataReq& request, int64 tag) override;
  ResultStatus subscribeData(const DataReq& request, const std::shared_ptr<DataSpi>& spi,
                             int requestId) override;
  void unsubscribeData(int requestId) override;
  void subscribeSnapshot(const std::list<TargetNamePair>& keys, const std::shared_ptr<DataSpi>& spi,
                         int flags) override;
  void unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>& spi) override;
  void unsubscribeSnapshot(const std::list<TargetNamePair>& keys,
                           const std::shared_ptr<DataSpi>& spi, int flags) override;
  ResultStatus readLatest(const std::list<TargetNamePair>& keys, std::list<LatestOfName>& latest,
                          int flags) override;

  // Behind the static entry points. Answered at once, on the calling thread.
  std::list<std::string> targetsOfName(const std::string& name);
  ResultStatus readRecords(const RecordRange& range, std::list<Record>& records,
                           const Cancel& cancelled, int64 waitMs);
  ResultStatus readTargets(const std::list<std::string>& targets, const std::string& name,
                           int64 time, std::list<TargetRecord>& records, const Cancel& cancelled,
                           int64 waitMs);

  // Behind publishers.
  int addSource() { return store_.addSource(); }
  /// As `DictionaryStore::takeFailure`.
  std::string takeFailure() { return store_.takeFailure(); }
  ResultStatus publish(int source, RecordPublication publication);
  ResultStatus requestRange(int source, const DataReq& request, int64 tag);

  /// Records that are there from the start. Throws `std::invalid_argument`, in UTF-8, if a part is
  /// wrong, and `std::runtime_error`, which names the path, if they cannot be stored.
  void load(const std::vector<RecordPublication>& publications);

  /// As `DictionaryStore::earlierRecords`.
  int64 earlierRecords() { return store_.earlierRecords(); }

  // On the service loop's thread.

  /// Delivers and serves what waits. Returns whether there was anything to do. Throws nothing.
  bool serve();
  /// Lets go of receivers that gave up their last request.
  void sweep();
  /// Whether `serve` would do anything. Any thread may ask.
  bool anyWaiting() const;
  /// When `serve` is to be called next; `kUnsetTime` if nothing becomes due by the clock.
  int64 nextDue() { return dueIsStale_.load(std::memory_order_relaxed) ? findDue() : nextDue_; }
  void beginRun();
  /// As if nothing had been published but what was there from the start. Throws
  /// `std::runtime_error`, which names the path, if the file cannot be written.
  void rewind();
  void setQuietWait(std::function<void()> wait) { rounds_.setQuietWait(std::move(wait)); }

 private:
  using Requests = std::vector<std::shared_ptr<DataRequest>>;

  DictionaryView viewOfReader() const;
  DictionaryView viewOfReceivers() const;
  ResultStatus failed(const std::string& what) const;
  template <typename Answer>
  ResultStatus answer(Answer answer);
  void noteWish(RangeWish wish);
  std::vector<RangeWish> takeWishes();

  DictionaryView viewOfDelivery();
  int64 findDue();
  bool serveAll();
  bool deliverPublished();
  bool deliverDue();
  void deliver(const Arrival& arrival, const DictionaryView& view);
  void deliverTo(const std::shared_ptr<DataRequest>& request, const Arrival& arrival,
                 const DictionaryView& view);
  void tellDeletions(const std::shared_ptr<DataRequest>& request, const Arrival& arrival,
                     const DictionaryView& view);
  void tellSnapshot(SnapshotRequest& request, const DictionaryView& view);
  bool serveWishes();
  bool serveRequests();
  bool serveSnapshots();
  void sendRange(const std::shared_ptr<DataRequest>& request, const DataReq& range, int flags,
                 int64 tag, bool tellsProgress);
  bool goesOn(const DataRequest& request) const;
  template <typename Wanted, typename Call>
  void callSpi(DataReceiver& who, Wanted isWanted, Call call);

  const Parts parts_;
  DictionaryStore store_;
  DataBook book_;
  std::atomic<bool> delivers_{true};  ///< A run that was cancelled delivers nothing more.
  std::atomic<bool> dueIsStale_{true};

  std::mutex wishMutex_;  ///< Guards what follows.
  std::vector<RangeWish> wishes_;
  int64 wishCount_ = 0;
  std::atomic<std::size_t> waitingWishes_{0};

  // For the service loop alone.
  CallRounds rounds_;
  Requests live_;
  std::vector<std::shared_ptr<SnapshotRequest>> snapshots_;
  int64 nextDue_ = kUnsetTime;
  int64 shownThrough_ = -kUnsetTime;  ///< What became due until then was delivered.
  bool hadTime_ = false;              ///< Whether the clock meant something at the last look.
};

}  // namespace orvane::detail
