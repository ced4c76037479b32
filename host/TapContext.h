#pragma once

#include <atomic>
#include <thread>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "host/ActionKind.h"
#include "host/CallEncoder.h"
#include "host/RunRecord.h"

namespace orvane {

/// JSON as a digest has it.
std::string compactJson(const QJsonObject& object);

/// Stands between a strategy and its context: counts what the strategy publishes, writes what it
/// does, with the answers, into the digest of its run if there is one, and forwards every call
/// unchanged.
///
/// Queries and log lines are not written: they change nothing, and their texts may hold numbers
/// that are unique in the process. Neither is what is done outside a call-back or on a thread of
/// the strategy's own, whose order nobody can repeat. Of a publication that went well the message
/// is not written: it is how much waits in a queue that all runners share.
///
/// Belongs to a `TapStrategy`; context, record and encoder outlive it.
class TapContext final : public IContext {
 public:
  /// `encoder` is null where there is no digest.
  TapContext(IContext& inner, RunRecord& record, CallEncoder* encoder)
      : inner_(inner), record_(record), encoder_(encoder) {}

  /// While one exists, what its thread does is written.
  class Call {
   public:
    explicit Call(TapContext& tap) : tap_(tap) { tap_.setCaller(std::this_thread::get_id()); }
    ~Call() { tap_.setCaller({}); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    TapContext& tap_;
  };

  /// How often the strategy did or said something inside a call-back.
  std::uint64_t saidSoFar() const { return said_; }

  std::string name() override { return inner_.name(); }
  bool isSetStop() override { return inner_.isSetStop(); }
  void setError(const std::string& message) override;
  void setFinish() override;
  void stop() override;
  void notifySpi(const QJsonObject& argument) override;

  void setEnvs(const std::map<std::string, std::string>& values, bool store) override;
  void setEnv(const std::string& key, const std::string& value, bool store) override;
  void clearEnv() override;
  std::string env(const std::string& key, const std::string& defaultValue) override {
    return inner_.env(key, defaultValue);
  }
  std::map<std::string, std::string> envs() override { return inner_.envs(); }
  void setEnvItems(const std::list<EnvItem>& items, bool store) override;
  void setEnvItem(const EnvItem& item, bool store) override;
  void clearEnvItems() override;
  std::list<EnvItem> envItems(const std::string& group) override { return inner_.envItems(group); }

  int generateRequestId() override { return inner_.generateRequestId(); }

  void logTrace(const std::string& text, bool toStg) override {
    hear();
    inner_.logTrace(text, toStg);
  }
  void logDebug(const std::string& text, bool toStg) override {
    hear();
    inner_.logDebug(text, toStg);
  }
  void logInfo(const std::string& text, bool toStg) override {
    hear();
    inner_.logInfo(text, toStg);
  }
  void logWarn(const std::string& text, bool toStg) override {
    hear();
    inner_.logWarn(text, toStg);
  }
  void logError(const std::string& text, bool toStg) override {
    hear();
    inner_.logError(text, toStg);
  }

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

  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) override {
    return inner_.getQuote(code, quote, flags);
  }

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

  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) override {
    return inner_.codeServiceQuery(text, code, flags);
  }
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                   int64 time) override {
    return inner_.currentCodeProperty(code, property, time);
  }
  ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) override {
    return inner_.resolvedCodeProperty(code, property);
  }
  ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) override {
    return inner_.resolvedCodeProperty3(code, property);
  }
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& codes) override {
    return inner_.codeRangeQuery(prefix, first, limit, codes);
  }

  std::string orderSource() override { return inner_.orderSource(); }
  ResultStatus attachAccount(const std::string& account, int counterType) override;
  ResultStatus detachAccount(const std::string& account, int counterType) override;
  ResultStatus findTradingAccount(const std::string& account, int counterType,
                                  TradingAccountID& found) override {
    return inner_.findTradingAccount(account, counterType, found);
  }
  int tradingAccountCount() override {
    record_.hasPublished = true;  // Feels who else is there, as those do whom others hear.
    return inner_.tradingAccountCount();
  }
  ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) override;
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  ResultStatus cancelOrder(int64 orderId, const std::string& source) override;
  ResultStatus getOrder(int64 orderId, Order& order) override {
    return inner_.getOrder(orderId, order);
  }
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& orders, const std::string& source) override {
    return inner_.ordersByCode(account, code, orders, source);
  }
  ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                std::list<Order>& orders, const std::string& source) override {
    return inner_.openOrdersByCode(account, code, orders, source);
  }
  ResultStatus historyOrders(const TradingAccountID& account, const ICodeID& code,
                             std::list<Order>& orders, const std::string& source, int64 beginTime,
                             int64 endTime) override {
    return inner_.historyOrders(account, code, orders, source, beginTime, endTime);
  }
  ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                           std::list<OrderFill>& fills, const std::string& source) override {
    return inner_.fillsByCode(account, code, fills, source);
  }
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) override {
    return inner_.fillQueryForward(orderId, fills);
  }
  ResultStatus historyFills(const TradingAccountID& account, const ICodeID& code,
                            std::list<OrderFill>& fills, const std::string& source, int64 beginTime,
                            int64 endTime) override {
    return inner_.historyFills(account, code, fills, source, beginTime, endTime);
  }
  ResultStatus orderActionForward(const Order& order, int action) override;
  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code, Position& position,
                           const std::string& source) override {
    return inner_.getPosition(account, code, position, source);
  }
  ResultStatus getPositions(const TradingAccountID& account,
                            std::list<Position>& positions) override {
    return inner_.getPositions(account, positions);
  }

  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags) override;
  ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                           int64 end, std::list<Record>& records, int flags) override {
    return inner_.readRecords(name, target, begin, end, records, flags);
  }
  ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                           int64 time, std::map<std::string, Record>& records, int64 wait,
                           int flags) override {
    return inner_.readTargets(name, targets, time, records, wait, flags);
  }
  ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                          Record& record, int flags) override {
    return inner_.readRecord(name, target, time, record, flags);
  }
  ResultStatus readLatest(const std::string& name, const std::string& target, Record& record,
                          int flags) override {
    return inner_.readLatest(name, target, record, flags);
  }
  ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                              std::list<LatestOfName>& latest, int flags) override {
    return inner_.readLatestMany(keys, latest, flags);
  }
  void requestRange(const std::string& name, const std::string& target, int64 begin, int64 end,
                    int flags) override;
  ResultStatus dataDefine(const std::string& name, DataDefine& define) override {
    return inner_.dataDefine(name, define);
  }

  void exit() override { inner_.exit(); }

 private:
  /// Writes the action and its arguments, does it, and writes what it answered. The answer is
  /// written last, so an action that ends the run, or throws, has left its arguments.
  template <typename Do, typename... Arguments>
  auto act(ActionKind kind, const Do& doIt, const Arguments&... arguments);

  /// The same for a publication of `items` things, which it counts.
  template <typename Do, typename... Arguments>
  ResultStatus publish(ActionKind kind, PublishedCount& count, std::size_t items, int flags,
                       const Do& doIt, const Arguments&... arguments);

  // A thread asks for its own name alone, and sees what it wrote itself; no order is needed.
  void setCaller(std::thread::id caller) { caller_.store(caller, std::memory_order_relaxed); }
  bool isHeard() const {
    return caller_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }
  bool isWritten() const { return encoder_ != nullptr && isHeard(); }
  void hear() {
    if (isHeard()) ++said_;
  }

  IContext& inner_;
  RunRecord& record_;
  CallEncoder* const encoder_;
  std::atomic<std::thread::id> caller_{};  ///< Who is inside a call-back.
  std::uint64_t said_ = 0;                 ///< Written by that thread alone.
};

}  // namespace orvane
