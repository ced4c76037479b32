#pragma once

#include <QJsonObject>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "services/Common/IDataService.h"
#include "shared/AccountRecords.h"
#include "shared/CodeProperty.h"
#include "shared/DictionaryRecords.h"
#include "shared/EnvItem.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// The whole of what a strategy sees of the system. The runner owns it, it is the same object in
/// every call of a run, and it must not be used after `onStop` has returned.
///
/// An operation runs on the thread that calls it. Call it from within a call-back: the
/// subscription books have no lock, so other threads must not use them. Operations that answer
/// return a `ResultStatus` whose code 0 is success; 23 "不支持" means that this context does not
/// offer the operation. Text is GBK.
///
/// The order of the operations is part of the contract: modules are built apart from the host.
class ORVANE_API IContext {
 public:
  IContext();
  IContext(const IContext&) = delete;
  IContext& operator=(const IContext&) = delete;
  virtual ~IContext();

  // The run.

  /// The runner's name.
  virtual std::string name() = 0;
  /// Whether a stop, an error or a finish was asked for and the run is about to end.
  virtual bool isSetStop() = 0;
  /// Ends the run as an error with this text. Pending events are discarded, the present call goes
  /// on, `onStop` follows.
  virtual void setError(const std::string& message) = 0;
  /// Ends the run as finished.
  virtual void setFinish() = 0;
  /// Ends the run as stopped.
  virtual void stop() = 0;
  /// Passes `argument` to the host's `IRunnerSpi::onNotify`, untouched.
  virtual void notifySpi(const QJsonObject& argument) = 0;

  // The environment: texts that live as long as the run and that the host is told of.

  /// Tells the host these values, through `IRunnerSpi::onEnvs`, and keeps them if `store`.
  virtual void setEnvs(const std::map<std::string, std::string>& values, bool store) = 0;
  /// The same for one value.
  virtual void setEnv(const std::string& key, const std::string& value, bool store) = 0;
  /// Forgets all values that were kept; the host is not told.
  virtual void clearEnv() = 0;
  /// A value that was kept; `defaultValue` without one.
  virtual std::string env(const std::string& key, const std::string& defaultValue) = 0;
  /// All values that were kept.
  virtual std::map<std::string, std::string> envs() = 0;
  /// Tells the host these records, through `IRunnerSpi::onEnvItems`, and keeps them if `store`.
  virtual void setEnvItems(const std::list<EnvItem>& items, bool store) = 0;
  /// The same for one record.
  virtual void setEnvItem(const EnvItem& item, bool store) = 0;
  /// Forgets all records that were kept; the host is not told.
  virtual void clearEnvItems() = 0;
  /// The records of a group, in key order.
  virtual std::list<EnvItem> envItems(const std::string& group) = 0;

  /// A fresh id for the requests whose id the strategy chooses.
  virtual int generateRequestId() = 0;

  // Log lines, to the logger "Stg" if `toStg`, else to "StgF".

  /// A line of level trace.
  virtual void logTrace(const std::string& message, bool toStg) = 0;
  /// A line of level debug.
  virtual void logDebug(const std::string& message, bool toStg) = 0;
  /// A line of level info.
  virtual void logInfo(const std::string& message, bool toStg) = 0;
  /// A line of level warn.
  virtual void logWarn(const std::string& message, bool toStg) = 0;
  /// A line of level error.
  virtual void logError(const std::string& message, bool toStg) = 0;

  // Subscriptions. A second identical call answers what the first one answered and reaches no
  // service.

  /// Live quotes of a code, to `onQuote`.
  virtual ResultStatus subscribeQuote(const ICodeID& code, int flags) = 0;
  /// Bars of a period, or ticks with the frequency "tick", under an id of the caller's choice:
  /// history and then live data, to the `...ById` call-backs. Times are UTC milliseconds;
  /// `kUnsetTime` as begin means from the first record on, as end that live data follows.
  /// `count` limits the history to its newest records; 0 or less means no limit. A used id gives
  /// code -1.
  virtual ResultStatus subscribeKline(int requestId, const ICodeID& code,
                                      const std::string& frequency, int64 beginTime, int64 endTime,
                                      int count, int flags) = 0;
  /// The same, known by code and frequency alone.
  virtual ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency,
                                      int64 beginTime, int64 endTime, int count, int flags) = 0;
  /// Whether accounts subscribed from now on replay their present state on connection.
  virtual void setNotifyQuick(bool quick) = 0;
  /// An account, and all orders and fills of an event source in it.
  virtual void subscribeTrade(const TradingAccountID& account, EventSourceId source) = 0;
  /// An account, and a code in it.
  virtual void subscribeTrade(const TradingAccountID& account, const ICodeID& code) = 0;
  /// The records of a dictionary's target, `key`: history and then live ones, to `onDic`. Times are
  /// keys of records; `kUnsetTime` as begin means from the first on, as end that live ones follow.
  virtual ResultStatus subscribeDic(const std::string& name, const std::string& key,
                                    int64 beginTime, int64 endTime, int flags) = 0;
  /// The newest record of a dictionary's target, `key`, now and whenever it changes, to
  /// `onDicSnapshot`.
  virtual void subscribeDicSnapshot(const std::string& name, const std::string& key, int flags) = 0;
  /// A timer that first fires at `beginTime` (UTC milliseconds; one in the past keeps its phase)
  /// and every `interval` milliseconds from then on, `triggerCount` times. Returns its id.
  virtual int createTimer(int64 interval, int64 beginTime, int triggerCount) = 0;

  /// Ends a subscription of quotes: no `onQuote` of the code comes any more.
  virtual void unsubscribeQuote(const ICodeID& code) = 0;
  /// Ends the request of this id.
  virtual void unsubscribeKline(int requestId) = 0;
  /// Ends the request that is known by code and frequency.
  virtual void unsubscribeKline(const ICodeID& code, const std::string& frequency) = 0;
  /// Ends a subscription of records.
  virtual void unsubscribeDic(const std::string& name, const std::string& key) = 0;
  /// Ends a subscription of the newest record.
  virtual void unsubscribeDicSnapshot(const std::string& name, const std::string& key) = 0;
  /// Stops a timer: no `onTimer` of it comes any more.
  virtual void stopTimer(int timerId) = 0;

  /// The last quote of a code at or before now.
  virtual ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) = 0;

  // Publications; what they mean is the publisher's.

  /// Quotes, each with its code.
  virtual ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) = 0;
  /// Bars of a code; `term` is their period in milliseconds.
  virtual ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                          int term, int flags) = 0;
  /// Quotes of one code; theirs may be unset.
  virtual ResultStatus publishQuoteItems(const ICodeID& code,
                                         const std::list<IDepthMarketData>& ticks, int flags) = 0;
  /// Bars of a code; the period is how long they last, all alike.
  virtual ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                          int flags) = 0;
  /// On the embedded platform a general event: its target and its name.
  virtual ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) = 0;
  /// On the embedded platform announces a series: code and frequency.
  virtual ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) = 0;
  /// On the embedded platform one record of now: "dictionary/target" and its text.
  virtual ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) = 0;
  /// On the embedded platform a quote of now: code and last price.
  virtual ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) = 0;

  // Codes.

  /// The code of a text such as "IF2101.CFFEX". Code 22 if there is none.
  virtual ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) = 0;
  /// The properties of a code that hold now, or at `time` (UTC milliseconds) where it is set.
  virtual ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                           int64 time) = 0;
  /// The properties of the dominant contract behind a continuous code.
  virtual ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) = 0;
  /// The properties of the continuous code of a contract.
  virtual ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) = 0;
  /// The codes whose text begins with `prefix`: at most `limit` from the `first`-th on.
  virtual ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                                      std::list<ICodeID>& codes) = 0;

  // Accounts and orders.

  /// The create source of the runner's own orders.
  virtual std::string orderSource() = 0;
  /// Makes an account of the host available; for server runs.
  virtual ResultStatus attachAccount(const std::string& account, int counterType) = 0;
  /// Gives an account back that was attached; for server runs.
  virtual ResultStatus detachAccount(const std::string& account, int counterType) = 0;
  /// The trading account of an account text; a counter type below 1 matches any. Code 22 if there
  /// is none.
  virtual ResultStatus findTradingAccount(const std::string& account, int counterType,
                                          TradingAccountID& tradingAccount) = 0;
  /// How many trading accounts there are.
  virtual int tradingAccountCount() = 0;
  /// As `sendOrder`; appends the ids of the new orders.
  virtual ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) = 0;
  /// Sends an order in the name of its own create source, or of the runner's if that is empty, and
  /// answers the new orders. What becomes of them comes to `onOrder`.
  virtual ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) = 0;
  /// Cancels an order in the name of `source`, or of the runner's order source if that is empty.
  virtual ResultStatus cancelOrder(int64 orderId, const std::string& source) = 0;
  /// An order as it is now.
  virtual ResultStatus getOrder(int64 orderId, Order& order) = 0;
  /// Orders of an account in a code; an empty `source` takes those of all create sources.
  virtual ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                    std::list<Order>& orders, const std::string& source) = 0;
  /// Of these the ones that are not over.
  virtual ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                        std::list<Order>& orders, const std::string& source) = 0;
  /// Orders of a time that may lie before the run, UTC milliseconds.
  virtual ResultStatus historyOrders(const TradingAccountID& account, const ICodeID& code,
                                     std::list<Order>& orders, const std::string& source,
                                     int64 beginTime, int64 endTime) = 0;
  /// Fills of an account in a code; an empty `source` takes those of all create sources.
  virtual ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                                   std::list<OrderFill>& fills, const std::string& source) = 0;
  /// The fills of an order.
  virtual ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) = 0;
  /// Fills of a time that may lie before the run, UTC milliseconds.
  virtual ResultStatus historyFills(const TradingAccountID& account, const ICodeID& code,
                                    std::list<OrderFill>& fills, const std::string& source,
                                    int64 beginTime, int64 endTime) = 0;
  /// Passes an action on an order to the trade service.
  virtual ResultStatus orderActionForward(const Order& order, int action) = 0;
  /// A position; a missing one is an empty position and no error.
  virtual ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                                   Position& position, const std::string& source) = 0;
  /// All positions of an account.
  virtual ResultStatus getPositions(const TradingAccountID& account,
                                    std::list<Position>& positions) = 0;

  // Dictionary data. `name` is the dictionary and `target` the entry in it.

  /// Publishes records, which are sorted by key. They are stored when it returns; others see them
  /// from the next moment of quiet on. On success the message is how many publications wait.
  virtual ResultStatus publishRecords(const std::string& name, const std::string& target,
                                      int valueType, const std::list<Record>& records,
                                      int flags) = 0;
  /// The records from the key `begin` to the key `end`, by key.
  virtual ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                                   int64 end, std::list<Record>& records, int flags) = 0;
  /// Of each target the newest record at or before the key `time`; no targets mean all. Waits at
  /// most `wait` milliseconds for an answer.
  virtual ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                                   int64 time, std::map<std::string, Record>& records, int64 wait,
                                   int flags) = 0;
  /// The newest record at or before the key `time`. Code 22 if there is none.
  virtual ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                                  Record& record, int flags) = 0;
  /// The newest record of all. Code 22 if there is none.
  virtual ResultStatus readLatest(const std::string& name, const std::string& target,
                                  Record& record, int flags) = 0;
  /// Pairs of target and name.
  virtual ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                                      std::list<LatestOfName>& latest, int flags) = 0;
  /// Has the records of a range sent once more to all who subscribe to the target.
  virtual void requestRange(const std::string& name, const std::string& target, int64 begin,
                            int64 end, int flags) = 0;
  /// What is there of a dictionary.
  virtual ResultStatus dataDefine(const std::string& name, DataDefine& define) = 0;

  /// Undoes every subscription and stops every timer. The runner calls it at the end of each run.
  virtual void exit() = 0;
};

}  // namespace orvane
