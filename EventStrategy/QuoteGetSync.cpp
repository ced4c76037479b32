#include "EventStrategy/QuoteGetSync.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "EventStrategy/TermSplit.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/QuoteUtils.h"
#include "services/Common/Timestamp.h"

namespace orvane::detail {
namespace {

/// The longest that an end which wakes nobody goes unnoticed.
constexpr std::chrono::milliseconds kWaitSlice{100};

IRealtimeQuoteService* realtime() {
  return IServiceRouter::instance()->quoteHub()->realtimeQuoteService();
}

void cancel(int requestId) {
  if (IRealtimeQuoteService* service = realtime()) service->cancelRequest(requestId);
}

struct MaintainReleaser {
  void operator()(IDataMaintain* maintain) const { IDataMaintain::release(maintain); }
};

}  // namespace

QuoteGetSync::~QuoteGetSync() {
  // What is still here was left by an exception. First nothing reaches this object any more; then
  // the service is told, which may throw again.
  for (const Spi& spi : spis_) spi->forget();
  for (const Spi& spi : spis_) {
    try {
      cancel(spi->requestId());
    } catch (...) {
      // The caller is to see the first exception.
    }
  }
}

std::map<ICodeID, std::vector<IKLine>> QuoteGetSync::fetchBars(const std::list<OVDataRange>& ranges,
                                                               int64 timeoutMs) {
  for (const OVDataRange& range : ranges) requestBars(range);
  wait(timeoutMs);
  const std::lock_guard lock(mutex_);
  return barsByCode_;
}

ResultStatus QuoteGetSync::maintainData(const ICodeID& code, const std::string& frequency,
                                        int64 value, int64 timeoutMs) {
  std::unique_ptr<IDataMaintain, MaintainReleaser> maintain(IDataMaintain::Create());
  const Spi& spi = addSpi(code);
  spi->setMaintainCallback(
      [this](const ICodeID&, ITimeType, const ResultStatus& status) { onMaintainResult(status); });
  int64 term = 0;
  bool extraFlag = false;
  ResultStatus kept = QuoteUtils::freqToTerm(frequency, term, extraFlag);
  if (kept.code == 0) {
    kept = maintain->maintain(code, CommonMethod::MilFrequency2ITimeType(term), value, spi,
                              spi->requestId());
    if (kept.code != 0) spi->setDone();
  }
  wait(timeoutMs);
  maintain.reset();
  if (kept.code != 0) return kept;
  const std::lock_guard lock(mutex_);
  return status_;
}

const QuoteGetSync::Spi& QuoteGetSync::addSpi(const ICodeID& code) {
  const int requestId = IServiceRouter::instance()->nextRequestId();
  return spis_.emplace_back(std::make_shared<QuoteGetSyncSpi>(code, requestId));
}

void QuoteGetSync::requestBars(const OVDataRange& range) {
  const Spi& spi = addSpi(range.code);
  spi->setBarsCallback(
      [this](const ICodeID& code, const std::vector<IKLine>& bars) { onBars(code, bars); });
  spi->setTicksCallback(
      [this](const ICodeID&, const std::vector<IDepthMarketData>&) { onTicks(); });
  const IMDQuery query = CommonMethod::DataRange2IMDQuery(range);
  IRealtimeQuoteService* service = realtime();
  if (service == nullptr ||
      service->subscribeBars(query, termToTimeType(range.term), spi, spi->requestId()).code != 0)
    spi->setDone();
}

void QuoteGetSync::wait(int64 timeoutMs) {
  const Timestamp start = Timestamp::sysNow(0);
  while (countDone() < spis_.size()) {
    // Either way round: somebody may set the wall clock back.
    if (std::abs(Timestamp::sysNow(0) - start) > timeoutMs) break;
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, kWaitSlice);
  }
  endRequests();
}

std::size_t QuoteGetSync::countDone() {
  return static_cast<std::size_t>(
      std::count_if(spis_.begin(), spis_.end(), [](const Spi& spi) { return spi->isDone(); }));
}

void QuoteGetSync::endRequests() {
  while (!spis_.empty()) {
    // Out of the list first, so that an exception leaves the destructor those that remain.
    const Spi spi = std::move(spis_.front());
    spis_.pop_front();
    spi->forget();
    cancel(spi->requestId());
  }
}

void QuoteGetSync::onBars(const ICodeID& code, const std::vector<IKLine>& bars) {
  const std::lock_guard lock(mutex_);
  barsByCode_[code] = bars;
  arrived_.notify_all();
}

void QuoteGetSync::onTicks() {
  const std::lock_guard lock(mutex_);
  arrived_.notify_all();
}

void QuoteGetSync::onMaintainResult(const ResultStatus& status) {
  const std::lock_guard lock(mutex_);
  status_ = status;
}

}  // namespace orvane::detail
