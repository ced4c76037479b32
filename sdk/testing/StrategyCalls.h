#pragma once

#include <QJsonObject>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "sdk/Strategy.h"
#include "sdk/testing/RecordingContext.h"

namespace orvane {

/// Calls the call-backs of a strategy, each by a function of its own, with a recording context.
/// They come whether the strategy subscribed anything or not. Before `start` and after the end of
/// the run none comes: each answers whether it did.
class StrategyCalls {
 public:
  /// Takes the strategy over.
  explicit StrategyCalls(std::unique_ptr<IStrategy> strategy) : strategy_(std::move(strategy)) {}
  StrategyCalls(const StrategyCalls&) = delete;
  StrategyCalls& operator=(const StrategyCalls&) = delete;
  virtual ~StrategyCalls() = default;

  /// What the strategy is given as its context.
  RecordingContext& context() { return context_; }
  /// The same, to look at.
  const RecordingContext& context() const { return context_; }
  /// The strategy itself.
  IStrategy& strategy() { return *strategy_; }

  /// Whether the run has begun and has not ended.
  bool isRunning() const { return isStarted_ && !isOver_; }
  /// Whether the run has ended.
  bool isOver() const { return isOver_; }

  /// `onStart`; once.
  bool start(const QJsonObject& params) {
    if (isStarted_) return false;
    isStarted_ = true;
    return call([&] { strategy_->onStart(&context_, params); }) && isRunning();
  }
  /// The host stops the run: `onStop`, and every subscription ends.
  bool stop() {
    if (!isRunning()) return false;
    context_.stop();
    finish();
    return true;
  }
  /// `onUpdate`.
  bool update(const QJsonObject& params) {
    return call([&] { strategy_->onUpdate(&context_, params); });
  }

  /// `onQuote`.
  bool quote(const IDepthMarketData& quote) {
    return call([&] { strategy_->onQuote(&context_, quote); });
  }
  /// `onTickSeriesById`.
  bool tickSeriesById(int requestId, const ICodeID& code,
                      const std::vector<IDepthMarketData>& ticks, const ResultStatus& status = {},
                      int batchFlag = 0) {
    return call(
        [&] { strategy_->onTickSeriesById(&context_, requestId, code, ticks, status, batchFlag); });
  }
  /// `onBarSeriesById`.
  bool barSeriesById(int requestId, const ICodeID& code, const std::string& frequency,
                     const std::vector<IKLine>& bars, const ResultStatus& status = {},
                     int batchFlag = 0) {
    return call([&] {
      strategy_->onBarSeriesById(&context_, requestId, code, frequency, bars, status, batchFlag);
    });
  }
  /// `onTickSeries`.
  bool tickSeries(const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
                  const ResultStatus& status = {}, int batchFlag = 0) {
    return call([&] { strategy_->onTickSeries(&context_, code, ticks, status, batchFlag); });
  }
  /// `onBarSeries`.
  bool barSeries(const ICodeID& code, const std::string& frequency, const std::vector<IKLine>& bars,
                 const ResultStatus& status = {}, int batchFlag = 0) {
    return call(
        [&] { strategy_->onBarSeries(&context_, code, frequency, bars, status, batchFlag); });
  }
  /// `onBarProgressById`.
  bool barProgressById(int requestId, const ICodeID& code, const std::string& frequency,
                       const KLineProgress& progress) {
    return call(
        [&] { strategy_->onBarProgressById(&context_, requestId, code, frequency, progress); });
  }
  /// `onBarProgress`.
  bool barProgress(const ICodeID& code, const std::string& frequency,
                   const KLineProgress& progress) {
    return call([&] { strategy_->onBarProgress(&context_, code, frequency, progress); });
  }

  /// `onAccountStatus`.
  bool accountStatus(const TradingAccountID& account, int status, const ResultStatus& result = {}) {
    return call([&] { strategy_->onAccountStatus(&context_, account, status, result); });
  }
  /// `onCapital`.
  bool capital(const TradingAccount& capital) {
    return call([&] { strategy_->onCapital(&context_, capital); });
  }
  /// `onPosition`.
  bool position(const Position& position) {
    return call([&] { strategy_->onPosition(&context_, position); });
  }
  /// `onStrategyPosition`.
  bool strategyPosition(const SourcePosition& position) {
    return call([&] { strategy_->onStrategyPosition(&context_, position); });
  }
  /// `onOrder`.
  bool order(const Order& order) {
    return call([&] { strategy_->onOrder(&context_, order); });
  }
  /// `onFill`.
  bool fill(const OrderFill& fill) {
    return call([&] { strategy_->onFill(&context_, fill); });
  }

  /// `onDicSnapshot`.
  bool dicSnapshot(const std::string& name, const std::string& key, const Record& record) {
    return call([&] { strategy_->onDicSnapshot(&context_, name, key, record); });
  }
  /// `onDic`.
  bool dic(const std::string& name, const std::string& key, const std::list<Record>& records,
           const ResultStatus& status = {}, int batchFlag = 0) {
    return call([&] { strategy_->onDic(&context_, name, key, records, status, batchFlag); });
  }
  /// `onDicDeleted`.
  bool dicDeleted(const std::string& name, const std::string& key, int64 value1, int64 value2) {
    return call([&] { strategy_->onDicDeleted(&context_, name, key, value1, value2); });
  }
  /// `onTimer`.
  bool timer(int timerId, int64 value) {
    return call([&] { strategy_->onTimer(&context_, timerId, value); });
  }

 private:
  template <typename Call>
  bool call(Call make) {
    if (!isRunning()) return false;
    make();
    if (context_.isSetStop()) finish();
    return true;
  }

  void finish() {
    if (isOver_) return;
    isOver_ = true;
    strategy_->onStop(&context_);
    context_.exit();
  }

  RecordingContext context_;
  std::unique_ptr<IStrategy> strategy_;  ///< Gone before its context.
  bool isStarted_ = false, isOver_ = false;
};

}  // namespace orvane
