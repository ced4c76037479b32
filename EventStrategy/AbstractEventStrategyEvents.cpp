// The call-backs of the event strategy: each copies its arguments into a record of its own and
// pushes it. None computes, filters or refuses anything.

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/Events.h"

namespace orvane {

void AbstractEventStrategy::pushKlineEvent(int requestId, const ICodeID& code,
                                           const std::vector<IKLine>& bars,
                                           const ResultStatus& status, int batchFlag) {
  static_cast<QuoteNotify*>(this)->onKLine(requestId, code, bars, status, batchFlag);
}

void AbstractEventStrategy::pushTickEvent(int requestId, const ICodeID& code,
                                          const std::vector<IDepthMarketData>& ticks,
                                          const ResultStatus& status, int batchFlag) {
  static_cast<QuoteNotify*>(this)->onTick(requestId, code, ticks, status, batchFlag);
}

void AbstractEventStrategy::onRtnPosition(const Position& position) {
  pushEvent(std::make_unique<PositionEvent>(position).release());
}

void AbstractEventStrategy::onRtnStrategyPosition(const SourcePosition& position) {
  pushEvent(std::make_unique<StrategyPositionEvent>(position).release());
}

void AbstractEventStrategy::onRtnOrder(const Order& order) {
  pushEvent(std::make_unique<OrderEvent>(order).release());
}

void AbstractEventStrategy::onRtnTrade(const OrderFill& fill) {
  pushEvent(std::make_unique<FillEvent>(fill).release());
}

void AbstractEventStrategy::onRspStatus(const AccountID& account, const AccountStatusInfo& info) {
  auto event = std::make_unique<AccountStatusEvent>();
  event->account = account;
  event->info = info;
  pushEvent(event.release());
}

void AbstractEventStrategy::onRtnCapital(const TradingAccount& capital) {
  pushEvent(std::make_unique<CapitalEvent>(capital).release());
}

void AbstractEventStrategy::onQuote(const IDepthMarketData& quote) {
  pushEvent(std::make_unique<TickEvent>(quote).release());
}

void AbstractEventStrategy::onKLine(int requestId, const ICodeID& code,
                                    const std::vector<IKLine>& bars, const ResultStatus& status,
                                    int batchFlag) {
  auto event = std::make_unique<BarEvent>();
  event->code = code;
  event->bars = bars;
  event->requestId = requestId;
  event->status = status;
  event->batchFlag = batchFlag;
  event->isTick = false;
  pushEvent(event.release());
}

void AbstractEventStrategy::onTick(int requestId, const ICodeID& code,
                                   const std::vector<IDepthMarketData>& ticks,
                                   const ResultStatus& status, int batchFlag) {
  auto event = std::make_unique<BarEvent>();
  event->code = code;
  event->ticks = ticks;
  event->requestId = requestId;
  event->status = status;
  event->batchFlag = batchFlag;
  event->isTick = true;
  pushEvent(event.release());
}

void AbstractEventStrategy::onKLineProgress(int requestId, const ICodeID& code,
                                            const KLineProgress& progress) {
  auto event = std::make_unique<BarProcessEvent>();
  event->requestId = requestId;
  event->code = code;
  event->progress = progress;
  pushEvent(event.release());
}

void AbstractEventStrategy::onRollover(int requestId, const ICodeID& code,
                                       const RolloverCoefficient& coefficient) {
  auto event = std::make_unique<RolloverEvent>();
  event->requestId = requestId;
  event->code = code;
  event->coefficient = coefficient;
  pushEvent(event.release());
}

void AbstractEventStrategy::onDataSnapshot(const std::string& name, const std::string& target,
                                           const Record& record) {
  auto event = std::make_unique<DataSnapshotEvent>();
  event->name = name;
  event->target = target;
  event->record = record;
  pushEvent(event.release());
}

void AbstractEventStrategy::onProgress(int requestId, int progress1, int progress2) {
  auto event = std::make_unique<DataProcessEvent>();
  event->requestId = requestId;
  event->progress1 = progress1;
  event->progress2 = progress2;
  pushEvent(event.release());
}

void AbstractEventStrategy::onData(int requestId, const std::list<Record>& records,
                                   DataValueType valueType, const ResultStatus& status,
                                   int batchFlag, int64 batchTag) {
  auto event = std::make_unique<DataEvent>();
  event->requestId = requestId;
  event->records = records;
  event->valueType = valueType;
  event->status = status;
  event->batchFlag = batchFlag;
  event->batchTag = batchTag;
  pushEvent(event.release());
}

void AbstractEventStrategy::onDeleteData(int requestId, int64 deleted1, int64 deleted2,
                                         int64 deleted3) {
  auto event = std::make_unique<DataDeletedEvent>();
  event->requestId = requestId;
  event->deleted1 = deleted1;
  event->deleted2 = deleted2;
  event->deleted3 = deleted3;
  pushEvent(event.release());
}

void AbstractEventStrategy::onTimer(int id, int64 value) {
  auto event = std::make_unique<TimerEvent>();
  event->timerId = id;
  event->value = value;
  pushEvent(event.release());
}

void AbstractEventStrategy::onGeneralEvent(const std::string& topic,
                                           const std::map<std::string, std::string>& fields,
                                           const std::string& detail) {
  auto event = std::make_unique<GeneralEvent>();
  event->topic = topic;
  event->fields = fields;
  event->detail = detail;
  pushEvent(event.release());
}

void AbstractEventStrategy::onElementChange(const ICodeID& code,
                                            std::list<IndexTradeElement>& elements) {
  auto event = std::make_unique<IndexElementChangeEvent>();
  event->code = code;
  event->elements = elements;
  pushEvent(event.release());
}

}  // namespace orvane
