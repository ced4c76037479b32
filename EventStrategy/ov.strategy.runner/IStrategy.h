#pragma once

#include <QJsonObject>
#include <list>
#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

class IContext;

/// What a strategy module implements. The module exports an unmangled function "createStrategy"
/// that takes nothing and returns a new object of this class; the host owns it from then on and
/// ends it through the virtual destructor.
///
/// Calls are strictly serial: from `onStart` to `onStop` never two at once, though on changing
/// threads. No lock is held during a call, so a call may use everything of its context. References
/// do not outlive the call. An exception that leaves a call costs that event only.
///
/// The order of the operations is part of the contract: modules are built apart from the host.
class ORVANE_API IStrategy {
 public:
  IStrategy();
  IStrategy(const IStrategy&) = delete;
  IStrategy& operator=(const IStrategy&) = delete;
  virtual ~IStrategy();

  /// The run begins. `params` is the host's object, unread by the library.
  virtual void onStart(IContext* context, const QJsonObject& params) = 0;

  /// The host sent new parameters.
  virtual void onUpdate(IContext* context, const QJsonObject& params) = 0;

  /// A live quote of a code that `subscribeQuote` asked for.
  virtual void onQuote(IContext* context, const IDepthMarketData& quote) = 0;

  /// A batch of a tick or bar request whose id the strategy chose. Bit value 16 of `batchFlag`
  /// marks the batch that ends the history; live data follows. `code` and `frequency` are those
  /// of the subscription.
  virtual void onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                                const std::vector<IDepthMarketData>& ticks,
                                const ResultStatus& status, int batchFlag) = 0;
  /// A batch of a bar request whose id the strategy chose, as above.
  virtual void onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                               const std::string& frequency, const std::vector<IKLine>& bars,
                               const ResultStatus& status, int batchFlag) = 0;

  /// The same for a subscription that is known by code and frequency.
  virtual void onTickSeries(IContext* context, const ICodeID& code,
                            const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                            int batchFlag) = 0;
  /// The same for bars.
  virtual void onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                           const std::vector<IKLine>& bars, const ResultStatus& status,
                           int batchFlag) = 0;

  /// How far the history of a bar request has come.
  virtual void onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                                 const std::string& frequency, const KLineProgress& progress) = 0;
  /// The same for a subscription that is known by code and frequency.
  virtual void onBarProgress(IContext* context, const ICodeID& code, const std::string& frequency,
                             const KLineProgress& progress) = 0;

  /// The state of a trading account; 16 means connected.
  virtual void onAccountStatus(IContext* context, const TradingAccountID& account, int status,
                               const ResultStatus& result) = 0;
  /// The money of an account changed.
  virtual void onCapital(IContext* context, const TradingAccount& capital) = 0;
  /// The position of an account in a code changed.
  virtual void onPosition(IContext* context, const Position& position) = 0;
  /// The part of a position that one create source made changed.
  virtual void onStrategyPosition(IContext* context, const SourcePosition& position) = 0;
  /// An order of a create source that is listened to changed; see its status.
  virtual void onOrder(IContext* context, const Order& order) = 0;
  /// An order of a create source that is listened to was filled, wholly or in part.
  virtual void onFill(IContext* context, const OrderFill& fill) = 0;

  /// The newest record of a dictionary's target, now and after each change.
  virtual void onDicSnapshot(IContext* context, const std::string& name, const std::string& key,
                             const Record& record) = 0;
  /// A batch of records of a dictionary's target, `key`. `batchFlag` as for a series.
  virtual void onDic(IContext* context, const std::string& name, const std::string& key,
                     const std::list<Record>& records, const ResultStatus& status,
                     int batchFlag) = 0;
  /// Records of a dictionary's target were deleted. Both values are the first one told.
  virtual void onDicDeleted(IContext* context, const std::string& name, const std::string& key,
                            int64 value1, int64 value2) = 0;

  /// A timer fired. `value` is the time it was due at, in UTC milliseconds, on the embedded
  /// platform.
  virtual void onTimer(IContext* context, int timerId, int64 value) = 0;

  /// The run ends; the object is destroyed after it.
  virtual void onStop(IContext* context) = 0;
};

/// The unmangled name that a module exports, and the function's type.
inline constexpr const char* kCreateStrategyName = "createStrategy";
using CreateStrategyFunction = IStrategy* (*)();

}  // namespace orvane
