#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>

#include <charconv>
#include <list>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "CrossTrader.h"
#include "ExactCross.h"

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IDepthMarketData;
using orvane::IKLine;
using orvane::int64;
using orvane::ResultStatus;

/// The crossing of two simple moving averages of the closes, for every bar series that the host
/// offers, each on its own. Parameters:
/// - "fast" (5), "slow" (20): how many closes each mean takes; fast below slow.
/// - "volume": the volume of an order; where it is not given, a lot of the instrument (1 where that
///   is not known). With 0 it only logs its signals.
/// - "mode" ("longOnly"): buys on an up-cross when flat and sells on a down-cross what it holds;
///   "longShort" also closes and reverses.
///
/// A signal is taken when its bar is complete, and traded with a market order on the account that
/// the host gives; without one it only logs. Bars of the history give signals but no orders.
/// Where it trades, signals are logged at the level "debug", since the orders tell of them.
///
/// Tells the host what it counted when it stops, as the environment values "bars", "ticks",
/// "signals" and "fills".
class SmaCross : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    if (!readParameters(context, json)) return;
    if (!orvane::accountName(json).empty() && volume_ != 0.0) {
      const ResultStatus found = orvane::findOwnAccount(context, json, account_.emplace());
      if (found.code != 0)
        return context->setError("account " + orvane::accountName(json) + ": " + found.message);
    }
    for (const auto& asked : orvane::subscribeAllOrFail(context, json))
      if (account_ && !asked.isTicks) context->subscribeTrade(*account_, asked.code);
  }

  void onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                   const std::vector<IKLine>& bars, const ResultStatus& status,
                   int batchFlag) override {
    if (status.code != 0) return context->logWarn(code.code + ": " + status.message, true);
    Series& series = seriesOf(context, code, frequency);
    for (const IKLine& bar : bars) {
      ++bars_;
      const orvane::KLineView view(bar);
      try {
        const ExactCross::Signal signal = series.cross.add(view.close());
        if (signal == ExactCross::Signal::None) continue;
        const bool isUp = signal == ExactCross::Signal::Up;
        tell(context, code, frequency, view, series, isUp);
        if (series.trader && series.isLive) trade(context, *series.trader, isUp);
      } catch (const std::range_error& error) {
        return context->setError(code.code + " " + frequency + " bar of " +
                                 orvane::utcText(view.beginTime()) + ": " + error.what());
      }
    }
    if ((batchFlag & orvane::kEndOfHistory) != 0) series.isLive = true;
  }

  void onOrder(IContext* context, const orvane::Order& order) override {
    CrossTrader* const trader = traderOf(order.id);
    if (trader == nullptr) return;
    trader->onOrder(order);
    const orvane::OrderView view(order);
    if (view.status() == orvane::order::Status::Rejected)
      context->logWarn("order " + std::to_string(order.id) + " rejected: " + view.message(), true);
  }

  void onFill(IContext*, const orvane::OrderFill& fill) override {
    CrossTrader* const trader = traderOf(orvane::FillView(fill).orderId());
    if (trader == nullptr) return;
    trader->onFill(fill);
    ++fills_;
  }

  void onQuote(IContext*, const IDepthMarketData&) override { ++ticks_; }

  void onTickSeries(IContext*, const ICodeID&, const std::vector<IDepthMarketData>& ticks,
                    const ResultStatus&, int) override {
    ticks_ += static_cast<int64>(ticks.size());
  }

  void onStop(IContext* context) override {
    context->logInfo("sma_cross: " + std::to_string(bars_) + " bars, " + std::to_string(ticks_) +
                         " ticks, " + std::to_string(signals_) + " signals, " +
                         std::to_string(fills_) + " fills",
                     true);
    context->setEnvs({{"bars", std::to_string(bars_)},
                      {"ticks", std::to_string(ticks_)},
                      {"signals", std::to_string(signals_)},
                      {"fills", std::to_string(fills_)}},
                     true);
  }

 private:
  static constexpr int64 kLongest = 100'000;

  /// What belongs to one code and frequency.
  struct Series {
    explicit Series(std::size_t fast, std::size_t slow) : cross(fast, slow) {}
    ExactCross cross;
    double volume = 0;  ///< Of an order.
    std::optional<CrossTrader> trader;
    bool isLive = false;  ///< The history is over.
  };

  bool readParameters(IContext* context, const QJsonObject& json) {
    orvane::Params params(json);
    fast_ = static_cast<std::size_t>(params.integer("fast", 5, 1, kLongest));
    slow_ = static_cast<std::size_t>(params.integer("slow", 20, 2, kLongest));
    const double volume = params.number("volume", 1, 0);
    if (params.has("volume")) volume_ = volume;
    if (params.choice("mode", "longOnly", {"longOnly", "longShort"}) == "longShort")
      mode_ = CrossTrader::Mode::LongShort;
    if (fast_ >= slow_)
      params.addError("parameter \"fast\" (" + std::to_string(fast_) +
                      ") must be below \"slow\" (" + std::to_string(slow_) + ")");
    return params.accept(context);
  }

  Series& seriesOf(IContext* context, const ICodeID& code, const std::string& frequency) {
    if (last_ != nullptr && last_->first.first == code.id && last_->first.second == frequency)
      return last_->second;
    const auto [at, isNew] = series_.try_emplace({code.id, frequency}, fast_, slow_);
    last_ = &*at;
    Series& series = at->second;
    if (!isNew) return series;
    series.volume = volume_ ? *volume_ : lotOf(context, code);
    if (account_) series.trader.emplace(*account_, code, mode_, series.volume);
    return series;
  }

  static double lotOf(IContext* context, const ICodeID& code) {
    orvane::ICodeProperty property;
    return context->resolvedCodeProperty(code, property).code == 0 ? property.lotSize : 1;
  }

  CrossTrader* traderOf(int64 orderId) {
    for (auto& [key, series] : series_)
      if (series.trader && series.trader->knows(orderId)) return &*series.trader;
    return nullptr;
  }

  void trade(IContext* context, CrossTrader& trader, bool isUp) {
    for (const orvane::OrderRequest& request : trader.ordersFor(isUp)) {
      std::list<orvane::Order> sent;
      const ResultStatus status = context->sendOrder(request, sent);
      if (status.code != 0)
        context->logWarn("order of " + request.code.code + " refused: " + status.message, true);
      for (const orvane::Order& order : sent) trader.sent(order);
    }
  }

  /// Ten digits of a mean: it is shown, never compared.
  static std::string meanText(double mean) {
    char text[40];
    const auto format = std::chars_format::general;
    return {text, std::to_chars(text, text + sizeof(text), mean, format, 10).ptr};
  }

  void tell(IContext* context, const ICodeID& code, const std::string& frequency,
            const orvane::KLineView& bar, const Series& series, bool isUp) {
    ++signals_;
    using Level = orvane::StrategyLogLevel;
    if (!orvane::isStrategyLogged(series.trader ? Level::Debug : Level::Info)) return;
    const std::string text =
        std::string("signal ") + (isUp ? "buy " : "sell ") + orvane::numberText(series.volume) +
        " " + code.code + " " + frequency + " at " + orvane::utcText(bar.endTime()) +
        " close=" + orvane::numberText(bar.close()) + " fast=" + meanText(series.cross.fastMean()) +
        " slow=" + meanText(series.cross.slowMean());
    series.trader ? context->logDebug(text, true) : context->logInfo(text, true);
  }

  std::size_t fast_ = 0, slow_ = 0;
  std::optional<double> volume_;  ///< As it was given.
  CrossTrader::Mode mode_ = CrossTrader::Mode::LongOnly;
  std::optional<orvane::TradingAccountID> account_;
  using AllSeries = std::map<std::pair<int64, std::string>, Series>;
  AllSeries series_;                       ///< By code id and frequency.
  AllSeries::value_type* last_ = nullptr;  ///< The one that had the last bars.
  int64 bars_ = 0, ticks_ = 0, signals_ = 0, fills_ = 0;
};

}  // namespace

ORVANE_STRATEGY(SmaCross)
