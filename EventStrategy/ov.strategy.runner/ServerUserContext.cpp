#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"

#include <cstdlib>
#include <list>

#include "EventStrategy/Services.h"
#include "EventStrategy/ov.strategy.runner/IRunnerGlobal.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "services/Common/ITradeService.h"
#include "services/Common/StringHelper.h"
#include "services/Common/Timestamp.h"
#include "shared/GbkLiteral.h"
#include "shared/StatusCodes.h"

namespace orvane {
namespace {

constexpr int kServerFlag = 0x100000;
constexpr int64 kServerSourceType = 65536;
using status::kNotThere;
constexpr int kRealtimeFlag = 1;
constexpr int64 kOneDayMs = 86400000;
constexpr int64 kCutOverMs = 64800000;  ///< 18:00, when a server's day begins.

constexpr const char* kQuotesRealtime = "301";
constexpr const char* kQuotesHistory = "304";
constexpr const char* kRecordsRealtime = "601";
constexpr const char* kRecordsHistory = "604";
constexpr const char* kPublisherQueue = "pubque";

int64 cutOverOfTheDayOf(Timestamp time) {
  time.setTicksSinceMidnight(kCutOverMs);
  return time.toUtcMsEponch();
}

ResultStatus noSuchAccount() { return {kNotThere, "账号不存在"_gbk}; }

bool hostAccount(const std::string& account, int counterType, AccountRecord& record) {
  return IRunnerGlobal::instance()->getAccount(counterType, account, record).code == 0;
}

}  // namespace

ServerUserContext::ServerUserContext(RunnerContext* runnerContext)
    : UserContext(runnerContext), statResetMs_(cutOverOfTheDayOf(Timestamp::now(0))) {}

std::string ServerUserContext::env(const std::string& key, const std::string& defaultValue) {
  return key == "#STAT#" ? statistics() : UserContext::env(key, defaultValue);
}

std::string ServerUserContext::statistics() {
  const Timestamp now = Timestamp::now(0);
  if (std::abs(now.toUtcMsEponch() - statResetMs_) >= kOneDayMs) {
    statResetMs_ = cutOverOfTheDayOf(now);
    ORVANE_LOG(runner, Debug, runnerName() << ",clear stat data");
    stats_.clear();
  }
  const auto counter = [this](const char* key) { return static_cast<int>(stats_[key]); };
  const Timestamp published(lastPublishMs_, 0);
  return StringHelper::FormatString(
      "%d %06d QtReal:%d, QtHist:%d, DtReal:%8d, DtHist:%7d, PubQue:%5d", published.date(),
      published.time() / 1000, counter(kQuotesRealtime), counter(kQuotesHistory),
      counter(kRecordsRealtime), counter(kRecordsHistory), counter(kPublisherQueue));
}

void ServerUserContext::countPublished(const char* realtimeKey, const char* historyKey,
                                       std::size_t items, int flags) {
  lastPublishMs_ = Timestamp::now(0).toUtcMsEponch();
  stats_[(flags & kRealtimeFlag) != 0 ? realtimeKey : historyKey] += static_cast<int64>(items);
}

ResultStatus ServerUserContext::subscribeQuote(const ICodeID& code, int flags) {
  return UserContext::subscribeQuote(code, flags | kServerFlag);
}

ResultStatus ServerUserContext::subscribeKline(int requestId, const ICodeID& code,
                                               const std::string& frequency, int64 beginTime,
                                               int64 endTime, int count, int flags) {
  return UserContext::subscribeKline(requestId, code, frequency, beginTime, endTime, count,
                                     flags | kServerFlag);
}

ResultStatus ServerUserContext::subscribeKline(const ICodeID& code, const std::string& frequency,
                                               int64 beginTime, int64 endTime, int count,
                                               int flags) {
  return UserContext::subscribeKline(code, frequency, beginTime, endTime, count,
                                     flags | kServerFlag);
}

ResultStatus ServerUserContext::publishQuoteList(const std::list<IDepthMarketData>& quotes,
                                                 int flags) {
  countPublished(kQuotesRealtime, kQuotesHistory, quotes.size(), flags);
  return UserContext::publishQuoteList(quotes, flags);
}

ResultStatus ServerUserContext::publishQuoteSeries(const ICodeID& code,
                                                   const std::list<IKLine>& bars, int term,
                                                   int flags) {
  countPublished(kQuotesRealtime, kQuotesHistory, bars.size(), flags);
  return UserContext::publishQuoteSeries(code, bars, term, flags);
}

ResultStatus ServerUserContext::publishQuoteItems(const ICodeID& code,
                                                  const std::list<IDepthMarketData>& ticks,
                                                  int flags) {
  countPublished(kQuotesRealtime, kQuotesHistory, ticks.size(), flags);
  return UserContext::publishQuoteItems(code, ticks, flags);
}

ResultStatus ServerUserContext::publishQuoteItems2(const ICodeID& code,
                                                   const std::list<IKLine>& bars, int flags) {
  countPublished(kQuotesRealtime, kQuotesHistory, bars.size(), flags);
  return UserContext::publishQuoteItems2(code, bars, flags);
}

ResultStatus ServerUserContext::attachAccount(const std::string& account, int counterType) {
  AccountRecord record;
  if (!hostAccount(account, counterType, record)) return noSuchAccount();
  ++accountRefs_[{counterType, account}];
  ITradeService* service = tradeService();
  return service != nullptr ? service->attachAccount(record) : notSupported();
}

ResultStatus ServerUserContext::detachAccount(const std::string& account, int counterType) {
  AccountRecord record;
  if (!hostAccount(account, counterType, record)) return noSuchAccount();
  const auto refs = accountRefs_.find({counterType, account});
  if (refs == accountRefs_.end()) return {};
  for (int i = 0; i < refs->second; ++i)
    if (ITradeService* service = tradeService()) service->detachAccount(record);
  accountRefs_.erase(refs);
  return {};
}

ResultStatus ServerUserContext::findTradingAccount(const std::string& account, int counterType,
                                                   TradingAccountID& tradingAccount) {
  AccountRecord record;
  if (!hostAccount(account, counterType, record) || record.tradingAccounts.empty())
    return noSuchAccount();
  tradingAccount = record.tradingAccounts.front();
  return {};
}

ResultStatus ServerUserContext::sendOrderIds(const OrderRequest&, std::list<int64>&) {
  return notSupported();
}

ResultStatus ServerUserContext::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  std::string source;
  {
    const std::lock_guard lock(runnerContext_->shared().mutex);
    source = runnerContext_->shared().orderSource;
  }
  return sendCompleted(request, kServerSourceType, source, orders);
}

ResultStatus ServerUserContext::publishRecords(const std::string& name, const std::string& target,
                                               int valueType, const std::list<Record>& records,
                                               int flags) {
  countPublished(kRecordsRealtime, kRecordsHistory, records.size(), flags);
  ResultStatus status = UserContext::publishRecords(name, target, valueType, records, flags);
  // A publisher's word for success is the length of its queue.
  if (status.code == 0) stats_[kPublisherQueue] = StringHelper::ToInt64(status.message);
  return status;
}

void ServerUserContext::exit() {
  UserContext::exit();
  std::list<std::pair<int, std::string>> attached;
  for (const auto& [key, count] : accountRefs_) attached.push_back(key);
  for (const auto& [counterType, account] : attached)
    ServerUserContext::detachAccount(account, counterType);
  accountRefs_.clear();
}

}  // namespace orvane
