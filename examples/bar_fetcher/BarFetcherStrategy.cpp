#include <orvane/sdk/BarFetcher.h>
#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>
#include <QJsonArray>
#include <cstdio>
#include <set>
#include <string>

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IKLine;
using orvane::int64;
using orvane::KLineView;
using orvane::ResultStatus;
using orvane::utcText;

/// Sets each bar against the days before it: when a bar is complete it fetches the newest daily
/// bars of the code, inside the call-back, and logs how far the close lies from the mean of their
/// closes. Parameters:
/// - "bars" ("1h"): the frequency of the bars that it answers.
/// - "days" (5): how many daily bars it fetches.
class BarFetcherStrategy : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    const std::string frequency = params.text("bars", "1h");
    days_ = static_cast<int>(params.integer("days", 5, 1, 10'000));
    if (!params.accept(context)) return;
    const std::set<ICodeID> codes = loadedCodes(context, json);
    if (codes.empty()) return context->setError("no data: the parameter \"data\" names no code");
    for (const ICodeID& code : codes) {
      const ResultStatus status =
          context->subscribeKline(code, frequency, orvane::kUnsetTime, orvane::kUnsetTime, 0, 0);
      if (status.code != 0)
        return context->setError("cannot subscribe " + code.code + " bars " + frequency + ": " +
                                 status.message);
    }
  }

  void onBarSeries(IContext* context, const ICodeID& code, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus&, int) override {
    if (bars.empty()) return;
    const KLineView bar(bars.back());
    const auto days = fetcher_.newest(code, "1d", days_);
    if (days.status.code != 0)
      return context->logWarn("no days of " + code.code + ": " + days.status.message, true);
    ++fetches_;
    tell(context, code, bar, days.bars);
  }

  void onStop(IContext* context) override {
    context->logInfo("bar_fetcher: " + std::to_string(fetches_) + " fetches", true);
    context->setEnvs({{"fetches", std::to_string(fetches_)}}, true);
  }

 private:
  /// Each code once, however many series of it were loaded.
  static std::set<ICodeID> loadedCodes(IContext* context, const QJsonObject& json) {
    std::set<ICodeID> codes;
    const QJsonArray series = json.value(QLatin1String("data")).toArray();
    for (const auto& entry : series) {
      ICodeID code;
      const QString name = entry.toObject().value(QLatin1String("code")).toString();
      if (context->codeServiceQuery(orvane::gbk(name), code, 0).code == 0) codes.insert(code);
    }
    return codes;
  }

  static void tell(IContext* context, const ICodeID& code, const KLineView& bar,
                   const std::vector<IKLine>& days) {
    std::string line =
        code.code + " at " + utcText(bar.endTime()) + " close=" + orvane::numberText(bar.close());
    if (days.empty()) return context->logInfo(line + " before the first day's end", true);
    double sum = 0;
    for (const IKLine& day : days) sum += KLineView(day).close();
    const double mean = sum / static_cast<double>(days.size());
    char figures[80];
    std::snprintf(figures, sizeof(figures), " mean=%.10g deviation=%+.2f%%", mean,
                  mean == 0 ? 0.0 : (bar.close() / mean - 1) * 100);
    line += figures;
    line += " of " + std::to_string(days.size()) + " days, the last ended " +
            utcText(KLineView(days.back()).endTime());
    context->logInfo(line, true);
  }

  orvane::BarFetcher fetcher_;
  int days_ = 0;
  int64 fetches_ = 0;
};

}  // namespace

ORVANE_STRATEGY(BarFetcherStrategy)
