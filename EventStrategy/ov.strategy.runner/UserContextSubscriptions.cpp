// The books of a strategy's subscriptions, its timers, and the teardown at the end of a run.

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "services/Common/Timestamp.h"
#include "shared/CodeTables.h"
#include "shared/GbkLiteral.h"
#include "shared/TextForms.h"

namespace orvane {
namespace {

constexpr int kFlagNoBegin = 64;
constexpr int kDicFlagOpenEnd = 1;
constexpr int kDicFlagHasBegin = 2;
constexpr int kDicFlagAlways = 16384;

int withNoBegin(int flags, int64 beginTime) {
  return beginTime == kUnsetTime ? flags | kFlagNoBegin : flags;
}

}  // namespace

ResultStatus UserContext::subscribeQuote(const ICodeID& code, int flags) {
  if (const auto it = quoteSubscriptions_.find(code); it != quoteSubscriptions_.end())
    return it->second;
  ORVANE_LOG(
      runner, Debug,
      runnerName() << ",subscribe quote," << codeText(code) << ",flags=" << flagBitText(flags));
  return quoteSubscriptions_[code] = runnerContext_->quotes()->subscribeQuote(code, flags);
}

ResultStatus UserContext::subscribeKline(const ICodeID& code, const std::string& frequency,
                                         int64 beginTime, int64 endTime, int count, int flags) {
  if (const auto byCode = klineSubscriptions_.find(code.id); byCode != klineSubscriptions_.end())
    if (const auto it = byCode->second.find(frequency); it != byCode->second.end())
      return it->second.status;
  const int requestId = generateRequestId();
  ORVANE_LOG(runner, Debug,
             runnerName() << ",subscribe kline," << codeText(code) << "," << frequency
                          << ",beginTime=" << beginTime << ",endTime=" << endTime
                          << ",count=" << count << ",flags=" << flagBitText(flags)
                          << ",requestId=" << requestId);
  ResultStatus status = runnerContext_->quotes()->subscribeKline(
      code, frequency, beginTime, endTime, count, withNoBegin(flags, beginTime), requestId);
  klineSubscriptions_[code.id][frequency] = {requestId, status};
  klineRequests_[requestId] = {code, frequency};  // New, so no answer changes.
  return status;
}

ResultStatus UserContext::subscribeKline(int requestId, const ICodeID& code,
                                         const std::string& frequency, int64 beginTime,
                                         int64 endTime, int count, int flags) {
  if (klineRequestsByCaller_.contains(requestId))
    return {-1, "reqId=" + std::to_string(requestId) + "重复订阅"_gbk};
  ORVANE_LOG(runner, Debug,
             runnerName() << ",subscribe kline by reqId," << codeText(code) << "," << frequency
                          << ",beginTime=" << beginTime << ",endTime=" << endTime
                          << ",count=" << count << ",flags=" << flagBitText(flags)
                          << ",requestId=" << requestId);
  ResultStatus status = runnerContext_->quotes()->subscribeKline(
      code, frequency, beginTime, endTime, count, withNoBegin(flags, beginTime), requestId);
  isLastKlineKnown_ = false;
  klineRequestsByCaller_[requestId] = {code, frequency};
  return status;
}

void UserContext::subscribeTrade(const TradingAccountID& account, const ICodeID& code) {
  if (tradeAccounts_.insert(account).second) {
    ORVANE_LOG(runner, Debug, runnerName() << ",subscribe trade," << account.account);
    runnerContext_->trades()->subscribeTrade(account);
  }
  if (!tradeCodes_.insert(code).second) return;
  ORVANE_LOG(runner, Debug, runnerName() << ",subscribe trade," << codeText(code));
  runnerContext_->trades()->onRelatedCodeIdChange({tradeCodes_.begin(), tradeCodes_.end()});
}

void UserContext::subscribeTrade(const TradingAccountID& account, EventSourceId source) {
  runnerContext_->trades()->addSubscribeTradeByCreateId(orderSource(), source);
  if (!tradeAccounts_.insert(account).second) return;
  ORVANE_LOG(runner, Debug, runnerName() << ",subscribe trade," << account.account);
  runnerContext_->trades()->subscribeTrade(account);
}

ResultStatus UserContext::subscribeDic(const std::string& name, const std::string& key,
                                       int64 beginTime, int64 endTime, int flags) {
  if (const auto byName = dicSubscriptions_.find(name); byName != dicSubscriptions_.end())
    if (const auto it = byName->second.find(key); it != byName->second.end())
      return it->second.status;
  DataReq request;
  request.name = name;
  request.targets = {key};
  request.beginTime = beginTime;
  request.endTime = endTime;
  request.count = kNoLimit;
  request.flags = flags | (beginTime != kUnsetTime ? kDicFlagHasBegin : 0) |
                  (endTime == kUnsetTime ? kDicFlagOpenEnd : 0) | kDicFlagAlways;
  const int requestId = generateRequestId();
  ORVANE_LOG(runner, Debug,
             runnerName() << ",subscribe data," << name << "," << key << ",beginTime=" << beginTime
                          << ",endTime=" << endTime << ",requestId=" << requestId);
  ResultStatus status = runnerContext_->data()->subscribeData(request, requestId);
  dicSubscriptions_[name][key] = {requestId, status};
  dicRequests_[requestId] = {name, key};
  return status;
}

void UserContext::subscribeDicSnapshot(const std::string& name, const std::string& key, int flags) {
  if (dicSnapshots_.contains({key, name})) return;
  ORVANE_LOG(runner, Debug,
             runnerName() << ",subscribe data snapshot," << name << "," << key
                          << ",flags=" << flagBitText(flags));
  runnerContext_->data()->subscribeDataSnapshot(name, key, flags);
  dicSnapshots_.insert({key, name});
}

void UserContext::unsubscribeQuote(const ICodeID& code) {
  const auto it = quoteSubscriptions_.find(code);
  if (it == quoteSubscriptions_.end()) return;
  ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe quote," << codeText(code));
  runnerContext_->quotes()->unsubscribeQuote(code, 0);
  quoteSubscriptions_.erase(it);
}

void UserContext::unsubscribeKline(const ICodeID& code, const std::string& frequency) {
  const auto byCode = klineSubscriptions_.find(code.id);
  if (byCode == klineSubscriptions_.end()) return;
  const auto it = byCode->second.find(frequency);
  if (it == byCode->second.end()) return;
  const int requestId = it->second.requestId;
  ORVANE_LOG(runner, Debug,
             runnerName() << ",unsubscribe kline," << codeText(code) << "," << frequency
                          << ",requestId=" << requestId);
  runnerContext_->quotes()->unsubscribeKline(requestId);
  isLastKlineKnown_ = false;
  klineRequests_.erase(requestId);
  byCode->second.erase(it);
  if (byCode->second.empty()) klineSubscriptions_.erase(byCode);
}

void UserContext::unsubscribeKline(int requestId) {
  const auto it = klineRequestsByCaller_.find(requestId);
  if (it == klineRequestsByCaller_.end()) return;
  ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe kline by reqId,requestId=" << requestId);
  runnerContext_->quotes()->unsubscribeKline(requestId);
  isLastKlineKnown_ = false;
  klineRequestsByCaller_.erase(it);
}

void UserContext::unsubscribeDic(const std::string& name, const std::string& key) {
  const auto byName = dicSubscriptions_.find(name);
  if (byName == dicSubscriptions_.end()) return;
  const auto it = byName->second.find(key);
  if (it == byName->second.end()) return;
  const int requestId = it->second.requestId;
  ORVANE_LOG(
      runner, Debug,
      runnerName() << ",unsubscribe data," << name << "," << key << ",requestId=" << requestId);
  runnerContext_->unsubscribeData(requestId);
  dicRequests_.erase(requestId);
  byName->second.erase(it);
  if (byName->second.empty()) dicSubscriptions_.erase(byName);
}

void UserContext::unsubscribeDicSnapshot(const std::string& name, const std::string& key) {
  const auto it = dicSnapshots_.find({key, name});
  if (it == dicSnapshots_.end()) return;
  ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe data snapshot," << name << "," << key);
  runnerContext_->data()->unsubscribeDataSnapshot(name, key, 0);
  dicSnapshots_.erase(it);
}

int UserContext::createTimer(int64 interval, int64 beginTime, int triggerCount) {
  const int id = Timer::genId();
  ORVANE_LOG(runner, Debug,
             runnerName() << ",create timer,"
                          << ",interval=" << interval << ",beginTime=" << beginTime
                          << ",triggerCount=" << triggerCount << ",timerId=" << id);
  const int64 now = Timestamp::now(0).toUTCMilisecsinceEponch();
  int64 firstFireTime = beginTime;
  if (beginTime < now) {
    const bool hasGrid = beginTime > 0 && interval > 0;
    firstFireTime = hasGrid ? now - (now - beginTime) % interval : now;
  }
  runnerContext_->timers()->createTimer(id, firstFireTime, interval, triggerCount);
  return id;
}

void UserContext::stopTimer(int timerId) {
  ORVANE_LOG(runner, Debug, runnerName() << ",stop timer,timerId=" << timerId);
  runnerContext_->timers()->stopTimer(timerId);
}

bool UserContext::resolveKlineRequest(int requestId, ICodeID& code, std::string& frequency,
                                      bool& byCaller) const {
  auto it = klineRequestsByCaller_.find(requestId);
  byCaller = it != klineRequestsByCaller_.end();
  if (!byCaller) {
    it = klineRequests_.find(requestId);
    if (it == klineRequests_.end()) return false;
  }
  code = it->second.code;
  frequency = it->second.frequency;
  return true;
}

const UserContext::KlineAnswer* UserContext::klineRequest(int requestId) {
  auto& [lastId, byCaller, asked] = lastKline_;
  if (!isLastKlineKnown_ || lastId != requestId) {
    isLastKlineKnown_ = false;
    lastId = requestId;
    isLastKlineKnown_ = resolveKlineRequest(requestId, asked.code, asked.frequency, byCaller);
  }
  return isLastKlineKnown_ ? &lastKline_ : nullptr;
}

void UserContext::exit() {
  ORVANE_LOG(runner, Debug, runnerName() << ",context exit");
  exitMarketData();
  exitTrade();
  exitData();
  ORVANE_LOG(runner, Debug, runnerName() << ",stop all timer");
  runnerContext_->timers()->stopAllTimer();
}

void UserContext::exitMarketData() {
  for (const auto& [code, status] : quoteSubscriptions_) {
    ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe quote," << codeText(code));
    runnerContext_->quotes()->unsubscribeQuote(code, 0);
  }
  quoteSubscriptions_.clear();
  for (const auto* requests : {&klineRequests_, &klineRequestsByCaller_}) {
    for (const auto& [requestId, request] : *requests) {
      ORVANE_LOG(runner, Debug,
                 runnerName() << ",unsubscribe kline," << codeText(request.code) << ","
                              << request.frequency << ",requestId=" << requestId);
      runnerContext_->quotes()->unsubscribeKline(requestId);
    }
  }
  klineSubscriptions_.clear();
  isLastKlineKnown_ = false;
  klineRequests_.clear();
  klineRequestsByCaller_.clear();
}

void UserContext::exitTrade() {
  for (const TradingAccountID& account : tradeAccounts_) {
    ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe trade," << account.account);
    runnerContext_->trades()->unsubscribeTrade(account);
  }
  runnerContext_->trades()->setRelatedCodeId({});
  tradeAccounts_.clear();
  tradeCodes_.clear();
}

void UserContext::exitData() {
  for (const auto& [requestId, request] : dicRequests_) {
    ORVANE_LOG(runner, Debug,
               runnerName() << ",unsubscribe data," << request.name << "," << request.key
                            << ",requestId=" << requestId);
    runnerContext_->unsubscribeData(requestId);
  }
  dicSubscriptions_.clear();
  dicRequests_.clear();
  for (const auto& [key, name] : dicSnapshots_) {
    ORVANE_LOG(runner, Debug, runnerName() << ",unsubscribe data snapshot," << name << "," << key);
    runnerContext_->data()->unsubscribeDataSnapshot(name, key, 0);
  }
  dicSnapshots_.clear();
}

}  // namespace orvane
