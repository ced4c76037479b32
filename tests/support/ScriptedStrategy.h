#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"

namespace orvane::support {

/// What a test tells its strategies to do, and what they tell the test. It outlives the strategy
/// objects, of which one script may have several, one after the other or on several threads.
///
/// A call is noted as the call-back's name and, after a blank, its contents; "create" and
/// "destroy" tell the life of the objects. The hook of a call-back runs inside it, after the note,
/// and may throw. Set hooks before the runner starts or from within a call-back.
class StrategyScript {
 public:
  using Hook = std::function<void(IContext*)>;

  /// Runs in each call-back of this name, such as "onQuote".
  void on(const std::string& callback, Hook hook);

  /// Runs in every call-back, before its own hook.
  void onAny(Hook hook);

  /// Runs while a strategy is made; may throw.
  void onCreate(std::function<void()> hook);

  std::vector<std::string> calls() const;

  /// The calls whose text begins with `prefix`.
  std::vector<std::string> calls(const std::string& prefix) const;

  int count(const std::string& prefix) const;
  void clear();

  /// How many strategy objects were made, and how many are alive.
  int made() const { return made_; }
  int alive() const { return alive_; }

  /// The context of the last call.
  IContext* context() const { return context_; }

  /// True if two calls of one script ever overlapped.
  bool overlapped() const { return overlapped_; }

 private:
  friend class ScriptedStrategy;

  void note(const std::string& call);
  void enter(IContext* context, const std::string& callback, const std::string& contents);

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
  std::map<std::string, Hook> hooks_;
  Hook anyHook_;
  std::function<void()> createHook_;
  std::atomic<int> made_{0};
  std::atomic<int> alive_{0};
  std::atomic<int> inside_{0};
  std::atomic<bool> overlapped_{false};
  std::atomic<IContext*> context_{nullptr};
};

/// A strategy that does what its script says and notes every call with its contents.
class ScriptedStrategy final : public IStrategy {
 public:
  explicit ScriptedStrategy(std::shared_ptr<StrategyScript> script);
  ~ScriptedStrategy() override;

  /// What a module's "createStrategy" would do.
  static std::function<IStrategy*()> maker(std::shared_ptr<StrategyScript> script);

  void onStart(IContext* context, const QJsonObject& params) override;
  void onUpdate(IContext* context, const QJsonObject& params) override;
  void onQuote(IContext* context, const IDepthMarketData& quote) override;
  void onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                        const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                        int batchFlag) override;
  void onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                       const std::string& frequency, const std::vector<IKLine>& bars,
                       const ResultStatus& status, int batchFlag) override;
  void onTickSeries(IContext* context, const ICodeID& code,
                    const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                    int batchFlag) override;
  void onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                   const std::vector<IKLine>& bars, const ResultStatus& status,
                   int batchFlag) override;
  void onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                         const std::string& frequency, const KLineProgress& progress) override;
  void onBarProgress(IContext* context, const ICodeID& code, const std::string& frequency,
                     const KLineProgress& progress) override;
  void onAccountStatus(IContext* context, const TradingAccountID& account, int status,
                       const ResultStatus& result) override;
  void onCapital(IContext* context, const TradingAccount& capital) override;
  void onPosition(IContext* context, const Position& position) override;
  void onStrategyPosition(IContext* context, const SourcePosition& position) override;
  void onOrder(IContext* context, const Order& order) override;
  void onFill(IContext* context, const OrderFill& fill) override;
  void onDicSnapshot(IContext* context, const std::string& name, const std::string& key,
                     const Record& record) override;
  void onDic(IContext* context, const std::string& name, const std::string& key,
             const std::list<Record>& records, const ResultStatus& status, int batchFlag) override;
  void onDicDeleted(IContext* context, const std::string& name, const std::string& key,
                    int64 value1, int64 value2) override;
  void onTimer(IContext* context, int timerId, int64 value) override;
  void onStop(IContext* context) override;

 private:
  const std::shared_ptr<StrategyScript> script_;
};

/// The names of all call-backs of a strategy, in their order.
const std::vector<std::string>& strategyCallbacks();

}  // namespace orvane::support
