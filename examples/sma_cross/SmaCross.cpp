#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include "ExactCross.h"

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IDepthMarketData;
using orvane::IKLine;
using orvane::int64;
using orvane::ResultStatus;

/// The crossing of two simple moving averages of the closes, for every bar series that the host
/// offers, each on its own. Logs its signals. Parameters:
/// - "fast" (5), "slow" (20): how many closes each mean takes; fast below slow.
/// - "volume" (1): the volume that a signal stands for.
///
/// Tells the host what it counted when it stops, as the environment values "bars", "ticks" and
/// "signals".
class SmaCross : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    fast_ = static_cast<std::size_t>(params.integer("fast", 5, 1, kLongest));
    slow_ = static_cast<std::size_t>(params.integer("slow", 20, 2, kLongest));
    volume_ = params.number("volume", 1, 0);
    if (fast_ >= slow_)
      params.addError("parameter \"fast\" (" + std::to_string(fast_) +
                      ") must be below \"slow\" (" + std::to_string(slow_) + ")");
    if (params.accept(context)) orvane::subscribeAllOrFail(context, json);
  }

  void onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                   const std::vector<IKLine>& bars, const ResultStatus& status, int) override {
    if (status.code != 0) return context->logWarn(code.code + ": " + status.message, true);
    ExactCross& cross = crosses_.try_emplace({code.id, frequency}, fast_, slow_).first->second;
    for (const IKLine& bar : bars) {
      ++bars_;
      const orvane::KLineView view(bar);
      try {
        const ExactCross::Signal signal = cross.add(view.close());
        if (signal != ExactCross::Signal::None)
          tell(context, code, frequency, view, cross, signal == ExactCross::Signal::Up);
      } catch (const std::range_error& error) {
        return context->setError(code.code + " " + frequency + " bar of " +
                                 orvane::utcText(view.beginTime()) + ": " + error.what());
      }
    }
  }

  void onQuote(IContext*, const IDepthMarketData&) override { ++ticks_; }

  void onTickSeries(IContext*, const ICodeID&, const std::vector<IDepthMarketData>& ticks,
                    const ResultStatus&, int) override {
    ticks_ += static_cast<int64>(ticks.size());
  }

  void onStop(IContext* context) override {
    context->logInfo("sma_cross: " + std::to_string(bars_) + " bars, " + std::to_string(ticks_) +
                         " ticks, " + std::to_string(signals_) + " signals",
                     true);
    context->setEnvs({{"bars", std::to_string(bars_)},
                      {"ticks", std::to_string(ticks_)},
                      {"signals", std::to_string(signals_)}},
                     true);
  }

 private:
  static constexpr int64 kLongest = 100'000;

  /// Ten digits of a mean: it is shown, never compared.
  static std::string meanText(double mean) {
    char text[40];
    std::snprintf(text, sizeof(text), "%.10g", mean);
    return text;
  }

  void tell(IContext* context, const ICodeID& code, const std::string& frequency,
            const orvane::KLineView& bar, const ExactCross& cross, bool isUp) {
    ++signals_;
    context->logInfo(
        std::string("signal ") + (isUp ? "buy " : "sell ") + orvane::numberText(volume_) + " " +
            code.code + " " + frequency + " at " + orvane::utcText(bar.endTime()) +
            " close=" + orvane::numberText(bar.close()) + " fast=" + meanText(cross.fastMean()) +
            " slow=" + meanText(cross.slowMean()),
        true);
  }

  std::size_t fast_ = 0, slow_ = 0;
  double volume_ = 0;
  std::map<std::pair<int64, std::string>, ExactCross> crosses_;  ///< By code id and frequency.
  int64 bars_ = 0, ticks_ = 0, signals_ = 0;
};

}  // namespace

ORVANE_STRATEGY(SmaCross)
