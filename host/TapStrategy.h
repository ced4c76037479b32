#pragma once

#include <memory>
#include <optional>
#include <string>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "host/CallEncoder.h"
#include "host/RunRecord.h"
#include "host/TapContext.h"

namespace orvane {

/// Stands between a runner and a strategy: counts and hashes every call-back and what the strategy
/// does in it, and forwards it unchanged. An exception of the strategy is recorded and goes on its
/// way.
///
/// Owned by the runner like the strategy itself, which it owns. Calls come one at a time.
class TapStrategy final : public IStrategy {
 public:
  /// `failure` (GBK) is not empty where the module gave no object: the run then ends with it as
  /// its error. `records` outlives the tap.
  TapStrategy(std::unique_ptr<IStrategy> inner, std::string failure, RunRecords& records);
  ~TapStrategy() override;

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
  /// Counts and encodes a call-back, then makes it, with the context that hears what it does.
  template <typename Encode, typename Forward>
  void pass(CallKind kind, IContext* context, const Encode& encode, const Forward& forward);

  void noteException(CallKind kind, const std::string& what);
  void noteBars(const ICodeID& code, const std::string& frequency, const std::vector<IKLine>& bars);
  void noteTick(const IDepthMarketData& tick, const std::string& frequency);
  void noteTime(int64 utcMs);
  static void noteRecord(DictionaryRecord& found, const Record& record);
  DictionaryRecord& dictionary(const std::string& name, const std::string& target);
  SeriesRecord& series(const ICodeID& code, const std::string& frequency, bool isTicks);

  std::unique_ptr<IStrategy> inner_;
  const std::string failure_;
  RunRecords& records_;
  std::shared_ptr<RunRecord> record_;
  std::optional<CallEncoder> encoder_;    ///< Empty where there is no digest.
  std::optional<TapContext> tapContext_;  ///< What the strategy gets.
  SeriesRecord* lastSeries_ = nullptr;    ///< The one found last: most calls are of it again.
};

}  // namespace orvane
