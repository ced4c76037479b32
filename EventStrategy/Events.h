#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/IEvent.h"
#include "shared/AccountRecords.h"
#include "shared/DictionaryRecords.h"
#include "shared/IndexTradeElement.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

// The data events: one record for each call-back of a source. Each is a deep copy and owns all
// that it holds, so that nothing of the service is touched after its call-back has returned.

/// The connection of an account changed.
struct AccountStatusEvent : IEvent {
  AccountStatusEvent() : IEvent(EventTypeAccountStatus) {}
  AccountID account;       ///< The account of the service whose state changed.
  AccountStatusInfo info;  ///< The state, with the trading accounts that the report covers.
};

/// How far the history of a bar request has come.
struct BarProcessEvent : IEvent {
  BarProcessEvent() : IEvent(EventTypeBarProcess) {}
  std::int32_t requestId = -1;
  ICodeID code;
  KLineProgress progress;
};

/// One batch of a bar or tick request: `isTick` says which, and the other vector stays empty.
struct BarEvent : IEvent {
  BarEvent() : IEvent(EventTypeBar) {}
  std::int32_t requestId = -1;
  ICodeID code;
  std::vector<IKLine> bars;
  std::vector<IDepthMarketData> ticks;
  ResultStatus status;
  std::int32_t batchFlag = 0;  ///< Passed from the service to the strategy unchanged.
  bool isTick = false;
};

/// One batch of dictionary records.
struct DataEvent : IEvent {
  DataEvent() : IEvent(EventTypeData) {}
  std::int32_t requestId = -1;
  std::list<Record> records;
  DataValueType valueType = DataValueType::None;
  ResultStatus status;
  std::int32_t batchFlag = 0;
  int64 batchTag = 0;
};

/// One live quote.
struct TickEvent : IEvent {
  TickEvent() : IEvent(EventTypeTick) {}
  explicit TickEvent(const IDepthMarketData& from) : IEvent(EventTypeTick), quote(from) {}
  IDepthMarketData quote;
  std::int32_t requestId = -1;  ///< Stays -1: live quotes answer no request.
};

/// A position of an account changed.
struct PositionEvent : IEvent {
  PositionEvent() : IEvent(EventTypePosition) {}
  explicit PositionEvent(const Position& of) : IEvent(EventTypePosition), position(of) {}
  Position position;
};

/// An order changed.
struct OrderEvent : IEvent {
  OrderEvent() : IEvent(EventTypeOrder) {}
  explicit OrderEvent(const Order& of) : IEvent(EventTypeOrder), order(of) {}
  Order order;
};

/// An order was filled, wholly or in part.
struct FillEvent : IEvent {
  FillEvent() : IEvent(EventTypeFill) {}
  explicit FillEvent(const OrderFill& of) : IEvent(EventTypeFill), fill(of) {}
  OrderFill fill;
};

/// A timer fired.
struct TimerEvent : IEvent {
  TimerEvent() : IEvent(EventTypeTimer) {}
  std::int32_t timerId = 0;
  int64 value = 0;  ///< What the timer passes with each firing.
};

/// The part of a position that one create source made changed.
struct StrategyPositionEvent : IEvent {
  StrategyPositionEvent() : IEvent(EventTypeStrategyPosition) {}
  explicit StrategyPositionEvent(const SourcePosition& of)
      : IEvent(EventTypeStrategyPosition), position(of) {}
  SourcePosition position;
};

/// A general event was told.
struct GeneralEvent : IEvent {
  GeneralEvent() : IEvent(EventTypeEvent) {}
  std::string topic;
  std::map<std::string, std::string> fields;
  std::string detail;
};

/// The money of an account changed.
struct CapitalEvent : IEvent {
  CapitalEvent() : IEvent(EventTypeCapital) {}
  explicit CapitalEvent(const TradingAccount& of) : IEvent(EventTypeCapital), capital(of) {}
  TradingAccount capital;
};

/// A continuous series went on to another contract.
struct RolloverEvent : IEvent {
  RolloverEvent() : IEvent(EventTypeRollover) {}
  std::int32_t requestId = -1;
  ICodeID code;
  RolloverCoefficient coefficient;
};

/// Dictionary records were deleted.
struct DataDeletedEvent : IEvent {
  DataDeletedEvent() : IEvent(EventTypeDataDeleted) {}
  std::int32_t requestId = 0;
  int64 deleted1 = 0;  ///< The one that reaches the strategy.
  int64 deleted2 = 0;
  int64 deleted3 = 0;
};

/// How far a request of dictionary records has come.
struct DataProcessEvent : IEvent {
  DataProcessEvent() : IEvent(EventTypeDataProcess) {}
  std::int32_t requestId = 0;
  std::int32_t progress1 = 0;
  std::int32_t progress2 = 0;
};

/// What an index is made of changed.
struct IndexElementChangeEvent : IEvent {
  IndexElementChangeEvent() : IEvent(EventTypeIndexElementChange) {}
  ICodeID code;
  std::list<IndexTradeElement> elements;
};

/// The newest record of a dictionary's target.
struct DataSnapshotEvent : IEvent {
  DataSnapshotEvent() : IEvent(EventTypeDataSnapshot) {}
  std::string name;
  std::string target;
  Record record;
};

}  // namespace orvane
