#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/DataSrc.h"
#include "EventStrategy/GeneralEventSrc.h"
#include "EventStrategy/IndexSrc.h"
#include "EventStrategy/QuoteGetSyncSpi.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/RunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"

namespace orvane::detail {

/// The tests' way to state that the library hides. It reads, and calls what is private; it never
/// changes a member.
struct TestAccess {
  // The strategy base.
  static QuoteSrc& quotes(AbstractEventStrategy& s) { return *s.quoteSrc_; }
  static TradeSrc& trades(AbstractEventStrategy& s) { return *s.tradeSrc_; }
  static DataSrc& data(AbstractEventStrategy& s) { return *s.dataSrc_; }
  static TimerSrc& timers(AbstractEventStrategy& s) { return *s.timerSrc_; }
  static GeneralEventSrc& events(AbstractEventStrategy& s) { return *s.generalEventSrc_; }
  static IndexSrc& indexes(AbstractEventStrategy& s) { return *s.indexSrc_; }
  static std::shared_ptr<TimerSrc> timerSrc(AbstractEventStrategy& s) { return s.timerSrc_; }

  static QuoteNotify& quoteNotify(AbstractEventStrategy& s) { return s; }
  static DataNotify& dataNotify(AbstractEventStrategy& s) { return s; }
  static EventTradeNotify& tradeNotify(AbstractEventStrategy& s) { return s; }
  static ITimerNotify& timerNotify(AbstractEventStrategy& s) { return s; }
  static GeneralEventNotify& eventNotify(AbstractEventStrategy& s) { return s; }
  static IndexNotify& indexNotify(AbstractEventStrategy& s) { return s; }

  // The quote source.
  static std::map<int, IMDQuery> requests(QuoteSrc& src) {
    const std::lock_guard lock(src.dataMutex_);
    return src.requestsById_;
  }
  static std::map<ICodeID, std::int32_t> refCounts(QuoteSrc& src) {
    const std::lock_guard lock(src.dataMutex_);
    return src.codeRefCounts_;
  }
  static bool dataMutexIsFree(QuoteSrc& src) { return isFree(src.dataMutex_); }
  static bool notifyMutexIsFree(QuoteSrc& src) { return isFree(src.notifyMutex_); }
  static const QuoteNotify* notify(QuoteSrc& src) { return src.notify_; }

  static bool hasBarsCallback(const QuoteGetSyncSpi& spi) { return bool(spi.barsCallback_); }
  static bool hasTicksCallback(const QuoteGetSyncSpi& spi) { return bool(spi.ticksCallback_); }
  static bool hasMaintainCallback(const QuoteGetSyncSpi& spi) {
    return bool(spi.maintainCallback_);
  }

  // The other sources.
  static bool mutexIsFree(TimerSrc& src) { return isFree(src.mutex_); }
  static std::size_t timerCount(TimerSrc& src) {
    const std::lock_guard lock(src.mutex_);
    return src.timers_.size();
  }
  static const ITimerNotify* notify(TimerSrc& src) { return src.notify_; }
  static const DataNotify* notify(DataSrc& src) { return src.notify_; }
  static const EventTradeNotify* notify(TradeSrc& src) { return src.notify_; }
  static const GeneralEventNotify* notify(GeneralEventSrc& src) { return src.notify_; }
  static const IndexNotify* notify(IndexSrc& src) { return src.notify_; }
  static std::set<int> requestIds(DataSrc& src) {
    const std::lock_guard lock(src.dataMutex_);
    return src.requestIds_;
  }
  static std::map<SnapshotKey, int> snapshots(DataSrc& src) {
    const std::lock_guard lock(src.dataMutex_);
    return src.snapshots_;
  }
  static bool dataMutexIsFree(DataSrc& src) { return isFree(src.dataMutex_); }
  static bool notifyMutexIsFree(DataSrc& src) { return isFree(src.notifyMutex_); }
  static bool mutexIsFree(GeneralEventSrc& src) { return isFree(src.mutex_); }
  static bool mutexIsFree(IndexSrc& src) { return isFree(src.mutex_); }
  static std::map<std::string, std::set<std::string>> subscriptions(GeneralEventSrc& src) {
    const std::lock_guard lock(src.mutex_);
    return src.subscriptions_;
  }
  static std::set<ICodeID> codes(IndexSrc& src) {
    const std::lock_guard lock(src.mutex_);
    return src.codes_;
  }
  static std::map<std::string, CreateSourceTradeInfo> createSourceInfos(TradeSrc& src) {
    return src.createSourceInfos_;
  }
  static bool mutexIsFree(TradeSrc& src) { return isFree(src.mutex_); }
  static std::set<int64> finishedOrderIds(TradeSrc& src) {
    return {src.seen_.finishedOrderIds().begin(), src.seen_.finishedOrderIds().end()};
  }
  static std::set<std::string> deliveredFillKeys(TradeSrc& src) {
    return {src.seen_.deliveredFillKeys().begin(), src.seen_.deliveredFillKeys().end()};
  }
  static QMap<QString, int64> gridOrderIds(TradeSrc& src) { return src.gridOrderIds_; }
  static QMap<QString, int64> gridFillIds(TradeSrc& src) { return src.gridFillIds_; }
  static int64 eventMask(TradeSrc& src) { return src.eventMask_; }
  static bool notifyQuick(TradeSrc& src) { return src.notifyQuick_; }
  static std::set<ICodeID> relatedCodes(TradeSrc& src) { return src.relatedCodes_; }
  static std::string name(TradeSrc& src) { return src.name_; }
  static std::map<TradingAccountID, TradeSrcSubInfo> subInfos(TradeSrc& src) {
    const std::lock_guard lock(src.mutex_);
    return src.subInfos_;
  }
  static void sendSnapshot(TradeSrc& src, const TradingAccountID& account) {
    const std::lock_guard lock(src.mutex_);
    src.sendSnapshot(account, src.subInfos_.at(account));
  }
  static std::string name(GeneralEventSrc& src) { return src.name_; }
  static std::string name(IndexSrc& src) { return src.name_; }

  /// The mutex of the books of a source that has one for its notify pointer besides.
  static std::mutex& dataMutex(QuoteSrc& src) { return src.dataMutex_; }
  static std::mutex& dataMutex(DataSrc& src) { return src.dataMutex_; }

  /// The mutex under which each source writes its notify pointer.
  static std::mutex& attachMutex(DataSrc& src) { return src.notifyMutex_; }
  static std::mutex& attachMutex(QuoteSrc& src) { return src.notifyMutex_; }
  static std::mutex& attachMutex(TradeSrc& src) { return src.mutex_; }
  static std::mutex& attachMutex(TimerSrc& src) { return src.mutex_; }
  static std::mutex& attachMutex(GeneralEventSrc& src) { return src.mutex_; }
  static std::mutex& attachMutex(IndexSrc& src) { return src.mutex_; }

  // The factory.
  static bool mutexIsFree(RunnerFactory& factory) { return isFree(factory.mutex_); }

  // The runner's context.
  static const RunnerState& state(RunnerContext& c) { return *c.state_; }
  static UserContext& context(RunnerContext& c) { return *c.context_; }
  static ServerUserContext& serverContext(RunnerContext& c) {
    return dynamic_cast<ServerUserContext&>(*c.context_);
  }
  static std::map<std::pair<int, std::string>, int> accountRefs(const ServerUserContext& c) {
    return c.accountRefs_;
  }
  static std::map<std::string, int64> stats(const ServerUserContext& c) { return c.stats_; }
  static int64 statResetMs(const ServerUserContext& c) { return c.statResetMs_; }
  static int64 lastPublishMs(const ServerUserContext& c) { return c.lastPublishMs_; }
  static std::size_t strategyCount(RunnerContext& c) { return c.strategies_.size(); }
  static bool isScheduled(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    return c.running_;
  }
  static bool hasRefCounter(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    return c.notifyRefCounter().has_value();
  }
  /// The types of the pending events, in order; control events are 0.
  static std::vector<int> pendingTypes(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    std::vector<int> types;
    for (const auto& event : c.events_) types.push_back(event->type);
    return types;
  }
  static std::vector<const IEvent*> pending(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    std::vector<const IEvent*> all;
    for (const auto& event : c.events_) all.push_back(event.get());
    return all;
  }
  static std::size_t spareCount(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    return c.spare_.size();
  }
  static void schedulePoolTask(RunnerContext& c) {
    const std::lock_guard lock(c.mutex_);
    c.schedulePoolTask();
  }
  static bool mutexIsFree(RunnerContext& c) { return isFree(c.mutex_); }
  static bool sharedMutexIsFree(RunnerContext& c) { return isFree(c.shared_->mutex); }
  static StrategyLoadResult loadStrategy(RunnerContext& c, const std::string& path) {
    return c.loadStrategy(path);
  }

 private:
  /// Whether a mutex can be had, asked on a thread of its own since the present one may hold it.
  static bool isFree(std::mutex& mutex);
};

}  // namespace orvane::detail
