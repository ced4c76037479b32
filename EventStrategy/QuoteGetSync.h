#pragma once

#include <condition_variable>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "EventStrategy/QuoteGetSyncSpi.h"

namespace orvane::detail {

/// Turns requests that are answered by call-back into one plain return value. Made on the caller's
/// stack for a single call of either operation, which blocks the caller; it must not be a thread
/// that the service needs for its call-backs.
///
/// The service keeps the spis, never this object: however the call ends, an exception of a service
/// included, no call-back reaches it afterwards. Lock order: a spi's lock, then `mutex_` inside it;
/// the waiter never holds both, and none while it calls a service.
class QuoteGetSync {
 public:
  QuoteGetSync() = default;
  ~QuoteGetSync();
  QuoteGetSync(const QuoteGetSync&) = delete;
  QuoteGetSync& operator=(const QuoteGetSync&) = delete;

  /// The bars of each range; of two ranges of one code, those that came later. A range that was
  /// refused, or not answered in time, has no entry.
  std::map<ICodeID, std::vector<IKLine>> fetchBars(const std::list<OVDataRange>& ranges,
                                                   int64 timeoutMs);

  /// The status of the maintenance. Without an answer in time: code 0. A bad frequency's status
  /// comes after the whole timeout.
  ResultStatus maintainData(const ICodeID& code, const std::string& frequency, int64 value,
                            int64 timeoutMs);

 private:
  using Spi = std::shared_ptr<QuoteGetSyncSpi>;

  void onBars(const ICodeID& code, const std::vector<IKLine>& bars);
  void onTicks();
  void onMaintainResult(const ResultStatus& status);

  const Spi& addSpi(const ICodeID& code);
  void requestBars(const OVDataRange& range);
  /// Until all requests have ended or `timeoutMs` has passed by the wall clock; then ends them.
  void wait(int64 timeoutMs);
  std::size_t countDone();
  void endRequests();

  std::mutex mutex_;  ///< Guards `barsByCode_` and `status_`.
  std::condition_variable arrived_;
  std::map<ICodeID, std::vector<IKLine>> barsByCode_;
  std::list<Spi> spis_;  ///< One per request, in order of sending. The caller's alone.
  ResultStatus status_;
};

}  // namespace orvane::detail
