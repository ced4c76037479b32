#pragma once

#include <log4cxx/spi/location/locationinfo.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "EventStrategy/Log.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"

namespace orvane {

class RunnerContext;

namespace detail {
struct TestAccess;
}

/// A kline subscription, with the status of its first attempt.
struct KlineSubscription {
  int requestId = 0;
  ResultStatus status;
};

/// What a kline request id stands for.
struct KlineRequestKey {
  ICodeID code;
  std::string frequency;
};

/// A dictionary subscription, with the status of its first attempt.
struct DicSubscription {
  int requestId = 0;
  ResultStatus status;
};

/// What a dictionary request id stands for.
struct DicRequestKey {
  std::string name;
  std::string key;
};

/// The context of ordinary runs: keeps the books of a strategy's subscriptions, so that it can
/// subscribe twice without harm and everything still standing is undone at `exit`, and forwards
/// the rest to the sources and services.
///
/// Made and owned by its `RunnerContext`, kept across runs. The books have no lock: they belong to
/// the pool task, which runs the strategy's calls and the dispatch.
class UserContext : public IContext {
 public:
  /// `runnerContext` is borrowed and never null.
  explicit UserContext(RunnerContext* runnerContext);
  ~UserContext() override;

  std::string name() override;
  bool isSetStop() override;
  void setError(const std::string& message) override;
  void setFinish() override;
  void stop() override;
  void notifySpi(const QJsonObject& argument) override;
  void setEnvs(const std::map<std::string, std::string>& values, bool store) override;
  void setEnv(const std::string& key, const std::string& value, bool store) override;
  void clearEnv() override;
  std::string env(const std::string& key, const std::string& defaultValue) override;
  std::map<std::string, std::string> envs() override;
  void setEnvItems(const std::list<EnvItem>& items, bool store) override;
  void setEnvItem(const EnvItem& item, bool store) override;
  void clearEnvItems() override;
  std::list<EnvItem> envItems(const std::string& group) override;
  int generateRequestId() override;
  void logTrace(const std::string& message, bool toStg) override;
  void logDebug(const std::string& message, bool toStg) override;
  void logInfo(const std::string& message, bool toStg) override;
  void logWarn(const std::string& message, bool toStg) override;
  void logError(const std::string& message, bool toStg) override;
  ResultStatus subscribeQuote(const ICodeID& code, int flags) override;
  ResultStatus subscribeKline(int requestId, const ICodeID& code, const std::string& frequency,
                              int64 beginTime, int64 endTime, int count, int flags) override;
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags) override;
  void setNotifyQuick(bool quick) override;
  void subscribeTrade(const TradingAccountID& account, EventSourceId source) override;
  void subscribeTrade(const TradingAccountID& account, const ICodeID& code) override;
  ResultStatus subscribeDic(const std::string& name, const std::string& key, int64 beginTime,
                            int64 endTime, int flags) override;
  void subscribeDicSnapshot(const std::string& name, const std::string& key, int flags) override;
  int createTimer(int64 interval, int64 beginTime, int triggerCount) override;
  void unsubscribeQuote(const ICodeID& code) override;
  void unsubscribeKline(int requestId) override;
  void unsubscribeKline(const ICodeID& code, const std::string& frequency) override;
  void unsubscribeDic(const std::string& name, const std::string& key) override;
  void unsubscribeDicSnapshot(const std::string& name, const std::string& key) override;
  void stopTimer(int timerId) override;
  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) override;
  ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) override;
  ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars, int term,
                                  int flags) override;
  ResultStatus publishQuoteItems(const ICodeID& code, const std::list<IDepthMarketData>& ticks,
                                 int flags) override;
  ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                  int flags) override;
  ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) override;
  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) override;
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                   int64 time) override;
  ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& codes) override;
  std::string orderSource() override;
  ResultStatus attachAccount(const std::string& account, int counterType) override;
  ResultStatus detachAccount(const std::string& account, int counterType) override;
  ResultStatus findTradingAccount(const std::string& account, int counterType,
                                  TradingAccountID& tradingAccount) override;
  int tradingAccountCount() override;
  ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) override;
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  ResultStatus cancelOrder(int64 orderId, const std::string& source) override;
  ResultStatus getOrder(int64 orderId, Order& order) override;
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& orders, const std::string& source) override;
  ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                std::list<Order>& orders, const std::string& source) override;
  ResultStatus historyOrders(const TradingAccountID& account, const ICodeID& code,
                             std::list<Order>& orders, const std::string& source, int64 beginTime,
                             int64 endTime) override;
  ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                           std::list<OrderFill>& fills, const std::string& source) override;
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) override;
  ResultStatus historyFills(const TradingAccountID& account, const ICodeID& code,
                            std::list<OrderFill>& fills, const std::string& source, int64 beginTime,
                            int64 endTime) override;
  ResultStatus orderActionForward(const Order& order, int action) override;
  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code, Position& position,
                           const std::string& source) override;
  ResultStatus getPositions(const TradingAccountID& account,
                            std::list<Position>& positions) override;
  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags) override;
  ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                           int64 end, std::list<Record>& records, int flags) override;
  ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                           int64 time, std::map<std::string, Record>& records, int64 wait,
                           int flags) override;
  ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                          Record& record, int flags) override;
  ResultStatus readLatest(const std::string& name, const std::string& target, Record& record,
                          int flags) override;
  ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                              std::list<LatestOfName>& latest, int flags) override;
  void requestRange(const std::string& name, const std::string& target, int64 begin, int64 end,
                    int flags) override;
  ResultStatus dataDefine(const std::string& name, DataDefine& define) override;
  void exit() override;

  /// What a kline request stands for, ids of the caller's choice first. False if it is not in the
  /// books.
  bool resolveKlineRequest(int requestId, ICodeID& code, std::string& frequency,
                           bool& byCaller) const;
  /// What a kline request stood for when it was asked for last.
  struct KlineAnswer {
    int requestId = 0;
    bool byCaller = false;
    KlineRequestKey asked;
  };
  /// The same as an answer that stays until the next one, whatever becomes of the request; null if
  /// it is not in the books. For the pool task.
  const KlineAnswer* klineRequest(int requestId);
  const std::map<int, DicRequestKey>& dicRequests() const { return dicRequests_; }

 protected:
  /// Sends a copy of the request, completed with this numeric source id if it has none above 1,
  /// and with this create source if it has none.
  ResultStatus sendCompleted(const OrderRequest& request, int64 defaultSourceType,
                             const std::string& defaultSource, std::list<Order>& orders);
  static ResultStatus notSupported();
  const std::string& runnerName() const;

  RunnerContext* const runnerContext_;

 private:
  friend struct detail::TestAccess;

  static void log(detail::LogLevel level, const std::string& message, bool toStg,
                  const log4cxx::spi::LocationInfo& location);
  void exitMarketData();
  void exitTrade();
  void exitData();

  std::map<ICodeID, ResultStatus> quoteSubscriptions_;
  std::map<int64, std::map<std::string, KlineSubscription>> klineSubscriptions_;
  std::map<int, KlineRequestKey> klineRequests_;
  std::map<int, KlineRequestKey> klineRequestsByCaller_;
  KlineAnswer lastKline_;          ///< Mostly it is asked for again.
  bool isLastKlineKnown_ = false;  ///< It is in the books still, as it was.
  std::set<TradingAccountID> tradeAccounts_;
  std::set<ICodeID> tradeCodes_;
  std::map<std::string, std::map<std::string, DicSubscription>> dicSubscriptions_;
  std::map<int, DicRequestKey> dicRequests_;
  std::set<std::pair<std::string, std::string>> dicSnapshots_;  ///< Key, then name.
};

}  // namespace orvane
