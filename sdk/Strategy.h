#pragma once

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "EventStrategy/ov.strategy.runner/StrategyLog.h"
#include "shared/InterfaceVersion.h"

namespace orvane {

/// The base of a strategy: every call-back is there and does nothing, so that a strategy overrides
/// those that it wants. See `IStrategy` for what each one means and when it comes.
class Strategy : public IStrategy {
 public:
  void onStart(IContext*, const QJsonObject&) override {}
  void onUpdate(IContext*, const QJsonObject&) override {}
  void onQuote(IContext*, const IDepthMarketData&) override {}
  void onTickSeriesById(IContext*, int, const ICodeID&, const std::vector<IDepthMarketData>&,
                        const ResultStatus&, int) override {}
  void onBarSeriesById(IContext*, int, const ICodeID&, const std::string&,
                       const std::vector<IKLine>&, const ResultStatus&, int) override {}
  void onTickSeries(IContext*, const ICodeID&, const std::vector<IDepthMarketData>&,
                    const ResultStatus&, int) override {}
  void onBarSeries(IContext*, const ICodeID&, const std::string&, const std::vector<IKLine>&,
                   const ResultStatus&, int) override {}
  void onBarProgressById(IContext*, int, const ICodeID&, const std::string&,
                         const KLineProgress&) override {}
  void onBarProgress(IContext*, const ICodeID&, const std::string&, const KLineProgress&) override {
  }
  void onAccountStatus(IContext*, const TradingAccountID&, int, const ResultStatus&) override {}
  void onCapital(IContext*, const TradingAccount&) override {}
  void onPosition(IContext*, const Position&) override {}
  void onStrategyPosition(IContext*, const SourcePosition&) override {}
  void onOrder(IContext*, const Order&) override {}
  void onFill(IContext*, const OrderFill&) override {}
  void onDicSnapshot(IContext*, const std::string&, const std::string&, const Record&) override {}
  void onDic(IContext*, const std::string&, const std::string&, const std::list<Record>&,
             const ResultStatus&, int) override {}
  void onDicDeleted(IContext*, const std::string&, const std::string&, int64, int64) override {}
  void onTimer(IContext*, int, int64) override {}
  void onStop(IContext*) override {}
};

/// The bit of a series' `batchFlag` that marks the batch which ends the history.
inline constexpr int kEndOfHistory = 16;

}  // namespace orvane

/// Makes `ClassName` the strategy of this module: exports the function that a host looks for, and
/// the version of the interfaces that the module was built with. Once in a module, outside every
/// namespace.
#define ORVANE_STRATEGY(ClassName)                                                          \
  ORVANE_EXPORT_INTERFACE_VERSION                                                           \
  extern "C" __attribute__((visibility("default"))) ::orvane::IStrategy* createStrategy() { \
    return new ClassName();                                                                 \
  }
