#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Views.h>

#include <algorithm>
#include <deque>

// Says when a bar closes above the last `lookback` closes of its code.
class Breakout : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    lookback_ = static_cast<std::size_t>(params.integer("lookback", 20, 1, 10000));
    if (params.accept(context)) orvane::subscribeAllOrFail(context, json);
  }

  void onBarSeries(orvane::IContext* context, const orvane::ICodeID& code, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    std::deque<double>& last = closes_[code.id];
    for (const orvane::IKLine& bar : bars) {
      const double close = orvane::KLineView(bar).close();
      if (last.size() == lookback_ && close > *std::max_element(last.begin(), last.end()))
        context->logInfo(code.code + " breaks out at " + orvane::numberText(close), true);
      last.push_back(close);
      if (last.size() > lookback_) last.pop_front();
    }
  }

 private:
  std::size_t lookback_ = 0;
  std::map<orvane::int64, std::deque<double>> closes_;
};

ORVANE_STRATEGY(Breakout)
