#pragma once

#include <string>

#include "shared/ICodeID.h"
#include "shared/ResultStatus.h"
#include "shared/TradeRecords.h"
#include "shared/Types.h"

namespace orvane {

// What a `RecordingContext` keeps of what a strategy did, each in the order in which it was done.
// Texts are GBK, as they were given, unless it says otherwise.

/// A request for market data.
struct RecordedSubscription {
  ICodeID code;
  std::string frequency;  ///< Of bars, or "tick"; empty of live quotes.
  int requestId = 0;      ///< The strategy's own; 0 where it is known by code and frequency.
  int64 beginTime = kUnsetTime, endTime = kUnsetTime;
  int count = 0, flags = 0;
  ResultStatus status = {};  ///< What it was answered.
  bool isEnded = false;      ///< Unsubscribed.

  bool isQuotes() const { return frequency.empty(); }
};

/// A subscription of dictionary data.
struct RecordedDicSubscription {
  std::string name, target;
  bool isSnapshot = false;
  ResultStatus status = {};
  bool isEnded = false;
};

/// A subscription of trading: of a code, or of an event source where `code.id` is 0.
struct RecordedTradeSubscription {
  TradingAccountID account;
  ICodeID code;
  EventSourceId source = 0;
};

/// An order that the strategy sent.
struct RecordedOrder {
  OrderRequest request;
  ResultStatus status = {};
  int64 orderId = 0;  ///< 0 if it was refused.
};

/// A cancel, asked for once more or not.
struct RecordedCancel {
  int64 orderId = 0;
  std::string source;
  ResultStatus status = {};
};

/// A line of the strategy's log.
struct RecordedLog {
  enum class Level { Trace, Debug, Info, Warn, Error };
  Level level = Level::Info;
  std::string text;  ///< UTF-8.
  bool toStg = true;
};

/// A timer.
struct RecordedTimer {
  int id = 0;
  int64 interval = 0;  ///< Milliseconds.
  int64 due = 0;       ///< When it fires next, UTC milliseconds.
  int left = 0;        ///< Firings to come; -1 without end.
  bool isStopped = false;
};

/// A publication, of quotes, bars, ticks or records.
struct RecordedPublication {
  std::string operation;  ///< Such as "publishRecords".
  std::string name;    ///< The code's text, the dictionary or the key; empty of `publishQuoteList`.
  std::string target;  ///< Of records; the text of the numbered operations.
  std::size_t count = 0;  ///< How many records.
  int flags = 0;
  ResultStatus status = {};
};

}  // namespace orvane
