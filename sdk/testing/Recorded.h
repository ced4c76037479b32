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
  ICodeID code;                  ///< Of what.
  std::string frequency;         ///< Of bars, or "tick"; empty of live quotes.
  int requestId = 0;             ///< The strategy's own; 0 where it is known by code and frequency.
  int64 beginTime = kUnsetTime;  ///< From when on, UTC milliseconds.
  int64 endTime = kUnsetTime;    ///< Before when.
  int count = 0;                 ///< How many of the history at most; 0 for all.
  int flags = 0;                 ///< As they were given.
  ResultStatus status = {};      ///< What it was answered.
  bool isEnded = false;          ///< Unsubscribed.

  /// Whether it is of live quotes.
  bool isQuotes() const { return frequency.empty(); }
};

/// A subscription of dictionary data.
struct RecordedDicSubscription {
  std::string name;          ///< The dictionary.
  std::string target;        ///< Whose records.
  bool isSnapshot = false;   ///< Of the newest record alone.
  ResultStatus status = {};  ///< What it was answered.
  bool isEnded = false;      ///< Unsubscribed.
};

/// A subscription of trading: of a code, or of an event source where `code.id` is 0.
struct RecordedTradeSubscription {
  TradingAccountID account;  ///< On which account.
  ICodeID code;              ///< Of which code.
  EventSourceId source = 0;  ///< Or of which event source.
};

/// An order that the strategy sent.
struct RecordedOrder {
  OrderRequest request;      ///< As it was given.
  ResultStatus status = {};  ///< What it was answered.
  int64 orderId = 0;         ///< 0 if it was refused.
};

/// A cancel, asked for once more or not.
struct RecordedCancel {
  int64 orderId = 0;         ///< Of the order.
  std::string source;        ///< Who cancels, as it was given.
  ResultStatus status = {};  ///< What it was answered.
};

/// A line of the strategy's log.
struct RecordedLog {
  /// As the operations are called.
  enum class Level { Trace, Debug, Info, Warn, Error };
  Level level = Level::Info;  ///< By which it was logged.
  std::string text;           ///< UTF-8.
  bool toStg = true;          ///< Whether it is for the strategy's own log.
};

/// A timer.
struct RecordedTimer {
  int id = 0;              ///< As the context answered it.
  int64 interval = 0;      ///< Milliseconds.
  int64 due = 0;           ///< When it fires next, UTC milliseconds.
  int left = 0;            ///< Firings to come; -1 without end.
  bool isStopped = false;  ///< It fires no more.
};

/// A publication, of quotes, bars, ticks or records.
struct RecordedPublication {
  std::string operation;  ///< Such as "publishRecords".
  std::string name;    ///< The code's text, the dictionary or the key; empty of `publishQuoteList`.
  std::string target;  ///< Of records; the text of the numbered operations.
  std::size_t count = 0;     ///< How many records.
  int flags = 0;             ///< As they were given.
  ResultStatus status = {};  ///< What it was answered.
};

}  // namespace orvane
