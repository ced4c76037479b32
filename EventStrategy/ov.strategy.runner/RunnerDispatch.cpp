// The second gate: turns a data event into its call of the strategy, unless its subscription is
// gone by now. The sources drop what comes after an unsubscribe; this drops what was queued before.

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/Events.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"

namespace orvane {

void RunnerContext::dispatchEvent(const IEvent& event) {
  switch (event.type) {
    case EventTypeAccountStatus:
      return dispatchAccountStatus(event);
    case EventTypeBarProcess:
      return dispatchBarProgress(event);
    case EventTypeBar:
      return dispatchBars(event);
    case EventTypeData:
      return dispatchData(event);
    case EventTypeTick:
      return dispatchQuote(event);
    case EventTypePosition:
      for (const auto& strategy : strategies_)
        strategy->onPosition(context_.get(), static_cast<const PositionEvent&>(event).position);
      return;
    case EventTypeOrder:
      for (const auto& strategy : strategies_)
        strategy->onOrder(context_.get(), static_cast<const OrderEvent&>(event).order);
      return;
    case EventTypeFill:
      for (const auto& strategy : strategies_)
        strategy->onFill(context_.get(), static_cast<const FillEvent&>(event).fill);
      return;
    case EventTypeTimer:
      return dispatchTimer(event);
    case EventTypeStrategyPosition:
      for (const auto& strategy : strategies_)
        strategy->onStrategyPosition(context_.get(),
                                     static_cast<const StrategyPositionEvent&>(event).position);
      return;
    case EventTypeCapital:
      for (const auto& strategy : strategies_)
        strategy->onCapital(context_.get(), static_cast<const CapitalEvent&>(event).capital);
      return;
    case EventTypeDataDeleted:
      return dispatchDataDeleted(event);
    case EventTypeDataSnapshot:
      return dispatchSnapshot(event);
    default:
      return;  // General events, rollovers, data progress and index changes end here.
  }
}

void RunnerContext::dispatchAccountStatus(const IEvent& event) {
  const AccountStatusInfo& info = static_cast<const AccountStatusEvent&>(event).info;
  for (const TradingAccountID& account : info.accounts)
    for (const auto& strategy : strategies_)
      strategy->onAccountStatus(context_.get(), account, info.statusCode, info.result);
}

void RunnerContext::dispatchBarProgress(const IEvent& event) {
  const auto& report = static_cast<const BarProcessEvent&>(event);
  const UserContext::KlineAnswer* const request = context_->klineRequest(report.requestId);
  if (request == nullptr) return;
  const auto& [requestId, byCaller, asked] = *request;
  const auto& [code, frequency] = asked;
  for (const auto& strategy : strategies_) {
    if (byCaller)
      strategy->onBarProgressById(context_.get(), requestId, code, frequency, report.progress);
    else
      strategy->onBarProgress(context_.get(), code, frequency, report.progress);
  }
}

void RunnerContext::dispatchBars(const IEvent& event) {
  const auto& batch = static_cast<const BarEvent&>(event);
  const UserContext::KlineAnswer* const request = context_->klineRequest(batch.requestId);
  if (request == nullptr) return;
  const auto& [requestId, byCaller, asked] = *request;
  const auto& [code, frequency] = asked;
  for (const auto& strategy : strategies_) {
    if (batch.isTick && byCaller)
      strategy->onTickSeriesById(context_.get(), requestId, code, batch.ticks, batch.status,
                                 batch.batchFlag);
    else if (batch.isTick)
      strategy->onTickSeries(context_.get(), code, batch.ticks, batch.status, batch.batchFlag);
    else if (byCaller)
      strategy->onBarSeriesById(context_.get(), requestId, code, frequency, batch.bars,
                                batch.status, batch.batchFlag);
    else
      strategy->onBarSeries(context_.get(), code, frequency, batch.bars, batch.status,
                            batch.batchFlag);
  }
}

void RunnerContext::dispatchQuote(const IEvent& event) {
  const IDepthMarketData& quote = static_cast<const TickEvent&>(event).quote;
  if (!quotes()->isSubscribeQuote(quote.code)) return;
  for (const auto& strategy : strategies_) strategy->onQuote(context_.get(), quote);
}

void RunnerContext::dispatchTimer(const IEvent& event) {
  const auto& fired = static_cast<const TimerEvent&>(event);
  if (!timers()->isTimerExist(fired.timerId)) return;
  for (const auto& strategy : strategies_)
    strategy->onTimer(context_.get(), fired.timerId, fired.value);
}

void RunnerContext::dispatchData(const IEvent& event) {
  const auto& batch = static_cast<const DataEvent&>(event);
  const auto it = context_->dicRequests().find(batch.requestId);
  if (it == context_->dicRequests().end()) return;
  const DicRequestKey request = it->second;
  for (const auto& strategy : strategies_)
    strategy->onDic(context_.get(), request.name, request.key, batch.records, batch.status,
                    batch.batchFlag);
}

void RunnerContext::dispatchDataDeleted(const IEvent& event) {
  const auto& deleted = static_cast<const DataDeletedEvent&>(event);
  const auto it = context_->dicRequests().find(deleted.requestId);
  if (it == context_->dicRequests().end()) return;
  const DicRequestKey request = it->second;
  // The strategy receives the first value twice: that is the call's form.
  for (const auto& strategy : strategies_)
    strategy->onDicDeleted(context_.get(), request.name, request.key, deleted.deleted1,
                           deleted.deleted1);
}

void RunnerContext::dispatchSnapshot(const IEvent& event) {
  const auto& snapshot = static_cast<const DataSnapshotEvent&>(event);
  if (!data()->isSubscribeDataSnapshot(snapshot.name, snapshot.target)) return;
  for (const auto& strategy : strategies_)
    strategy->onDicSnapshot(context_.get(), snapshot.name, snapshot.target, snapshot.record);
}

}  // namespace orvane
