#include "EventStrategy/QuoteSrc.h"

#include "EventStrategy/Attempts.h"
#include "EventStrategy/PublisherMode.h"
#include "EventStrategy/QuoteNotify.h"
#include "EventStrategy/TermSplit.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/QuoteUtils.h"
#include "services/ov.publisher/IPublisher.h"
#include "shared/GbkLiteral.h"
#include "shared/LockSoon.h"

namespace orvane {
namespace {

constexpr int kFlagExtraTerm = 256;
constexpr int kFlagsOfText = 1 | 2;  ///< The bits that the text form lets pass.
constexpr int kFlag512 = 512;
constexpr int kFlag1024 = 1024;

IRealtimeQuoteService* realtime() {
  return IServiceRouter::instance()->quoteHub()->realtimeQuoteService();
}

ResultStatus badCode(const std::string& code) { return {-2, std::string("无效合约 "_gbk) + code}; }

}  // namespace

QuoteSrc::QuoteSrc(const int& mode) : publisher_(IPublisher::create(publisherMode(mode))) {}

QuoteSrc::~QuoteSrc() = default;

void QuoteSrc::setNotify(QuoteNotify* notify) {
  const std::lock_guard lock(notifyMutex_);
  notify_ = notify;
}

ResultStatus QuoteSrc::subscribeQuote(const std::string& code, int flags) {
  ICodeID id;
  if (codeIdOf(code, id).code != 0) return badCode(code);
  return subscribeQuote(id, flags);
}

ResultStatus QuoteSrc::subscribeQuote(const ICodeID& code, int flags) {
  {
    const std::lock_guard lock(dataMutex_);
    const std::lock_guard spin(codeSpinLock_);
    if (++codeRefCounts_[code] > 1) return {};
  }
  return realtime()->subscribeQuote(code, shared_from_this(), flags);
}

ResultStatus QuoteSrc::unsubscribeQuote(const std::string& code, int flags) {
  ICodeID id;
  if (codeIdOf(code, id).code != 0) return badCode(code);
  return unsubscribeQuote(id, flags);
}

ResultStatus QuoteSrc::unsubscribeQuote(const ICodeID& code, int flags) {
  {
    const std::lock_guard lock(dataMutex_);
    const auto it = codeRefCounts_.find(code);
    if (it == codeRefCounts_.end() || it->second == 0) return {};
    const std::lock_guard spin(codeSpinLock_);
    if (--it->second >= 1) return {};
    codeRefCounts_.erase(it);
  }
  realtime()->unsubscribeQuote(code, shared_from_this(), flags);
  return {};
}

ResultStatus QuoteSrc::subscribeKline(const ICodeID& code, const std::string& frequency,
                                      int64 beginTime, int64 endTime, int count, int flags,
                                      int requestId) {
  int64 term = 0;
  bool extraFlag = false;
  if (ResultStatus status = freqToTerm(frequency, term, extraFlag); status.code != 0) return status;
  IMDQuery query;
  query.code = code;
  query.beginTime = beginTime;
  query.endTime = endTime;
  query.count = count > 0 ? count : kNoLimit;
  query.flags = flags | (extraFlag ? kFlagExtraTerm : 0);
  return request(query, term, requestId);
}

ResultStatus QuoteSrc::subscribeKline(const std::string& code, const std::string& frequency,
                                      int64 value, int flags, int requestId, int extraFlags) {
  OVDataRange range;
  if (codeIdOf(code, range.code).code != 0) return badCode(code);
  bool extraFlag = false;
  if (ResultStatus status = freqToTerm(frequency, range.term, extraFlag); status.code != 0)
    return status;
  range.mode = 2;
  range.beginTime = value;
  range.endTime = 0;
  range.flags = flags & kFlagsOfText;
  if ((flags & kFlag512) != 0)
    range.flags |= kFlag512;
  else
    range.flags |= flags & kFlag1024;
  if (extraFlag) range.flags |= kFlagExtraTerm;
  return subscribeKline(range, requestId, extraFlags);
}

ResultStatus QuoteSrc::subscribeKline(const OVDataRange& range, int requestId, int extraFlags) {
  IMDQuery query = CommonMethod::DataRange2IMDQuery(range);
  query.flags |= extraFlags;
  return request(query, range.term, requestId);
}

ResultStatus QuoteSrc::request(const IMDQuery& query, int64 term, int requestId) {
  const TermPair pair = termToTimeType(term);
  {
    const std::lock_guard lock(dataMutex_);
    requestsById_[requestId] = query;
  }
  return realtime()->subscribeBars(query, pair, shared_from_this(), requestId);
}

ResultStatus QuoteSrc::unsubscribeKline(int requestId) {
  {
    const std::lock_guard lock(dataMutex_);
    if (requestsById_.erase(requestId) == 0) return {};
  }
  realtime()->cancelRequest(requestId);
  return {};
}

bool QuoteSrc::isSubscribeKline(int requestId) {
  const std::lock_guard lock(dataMutex_);
  return requestsById_.contains(requestId);
}

bool QuoteSrc::isSubscribeQuote(const ICodeID& code) {
  // With each quote the service asks on its thread, and the runner on a thread of the pool.
  const auto lock = detail::lockSoon(dataMutex_);
  const std::lock_guard spin(codeSpinLock_);
  const auto it = codeRefCounts_.find(code);
  return it != codeRefCounts_.end() && it->second >= 1;
}

void QuoteSrc::release() {
  std::map<int, IMDQuery> requests;
  {
    const std::lock_guard lock(dataMutex_);
    requests.swap(requestsById_);
    const std::lock_guard spin(codeSpinLock_);
    codeRefCounts_.clear();
  }
  IRealtimeQuoteService* service = realtime();
  if (service == nullptr) return;
  detail::Attempts attempts;
  for (const auto& request : requests)
    attempts.take([&] { service->cancelRequest(request.first); });
  attempts.take([&] { service->unsubscribeSpi(shared_from_this()); });
  attempts.finish();
}

bool QuoteSrc::findCode(int requestId, ICodeID& code) {
  const auto lock = detail::lockSoon(dataMutex_);
  const auto it = requestsById_.find(requestId);
  if (it == requestsById_.end()) return false;
  code = it->second.code;
  return true;
}

void QuoteSrc::onQuote(const IDepthMarketData& quote) {
  if (!isSubscribeQuote(quote.code)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onQuote(quote);
}

void QuoteSrc::onTick(int requestId, const std::vector<IDepthMarketData>& ticks,
                      const ResultStatus& status, int flags) {
  ICodeID code;
  if (!findCode(requestId, code)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onTick(requestId, code, ticks, status, flags);
}

void QuoteSrc::onKLine(int requestId, const std::vector<IKLine>& bars, const ResultStatus& status,
                       int flags) {
  ICodeID code;
  if (!findCode(requestId, code)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onKLine(requestId, code, bars, status, flags);
}

void QuoteSrc::onKLineProgress(int requestId, const KLineProgress& progress) {
  ICodeID code;
  if (!findCode(requestId, code)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onKLineProgress(requestId, code, progress);
}

void QuoteSrc::onRollover(int requestId, const RolloverCoefficient& coefficient) {
  ICodeID code;
  if (!findCode(requestId, code)) return;
  const std::lock_guard lock(notifyMutex_);
  if (notify_ != nullptr) notify_->onRollover(requestId, code, coefficient);
}

}  // namespace orvane
