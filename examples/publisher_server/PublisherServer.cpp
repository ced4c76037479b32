#include <orvane/sdk/Params.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>

#include <deque>
#include <list>
#include <map>
#include <numeric>
#include <optional>
#include <string>

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IDepthMarketData;
using orvane::IKLine;
using orvane::int64;
using orvane::Record;
using orvane::ResultStatus;

/// A server run: for every bar series that the host offers, publishes the mean of the last closes.
/// Parameters:
/// - "dictionary" ("means"): each mean is a record of it, under the code's text as target and the
///   bar's end time as key, with the fields "mean" and "close".
/// - "window" (5): how many closes a mean takes.
/// - "quotes" (""): a code; each mean of the live bars is also published as a quote of it.
///
/// What the history gives is published as history, what comes live as live.
class PublisherServer : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    dictionary_ = params.text("dictionary", "means");
    window_ = static_cast<std::size_t>(params.integer("window", 5, 1, 10'000));
    const std::string quotes = params.text("quotes", "");
    if (!params.accept(context)) return;
    if (!quotes.empty()) {
      const ResultStatus found = context->codeServiceQuery(quotes, quoteCode_.emplace(), 0);
      if (found.code != 0) return context->setError("quotes: " + quotes + ": " + found.message);
    }
    for (const auto& asked : orvane::subscribeAllOrFail(context, json))
      targets_[asked.code.id] = asked.name;
  }

  void onBarSeries(IContext* context, const ICodeID& code, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus& status,
                   int batchFlag) override {
    if (status.code != 0) return context->logWarn(code.code + ": " + status.message, true);
    Series& series = series_[code.id];
    std::list<Record> records;
    std::list<IDepthMarketData> quotes;
    for (const IKLine& bar : bars) {
      const orvane::KLineView view(bar);
      const std::optional<double> mean = series.add(view.close(), window_);
      if (!mean) continue;
      records.push_back(
          orvane::jsonRecord(view.endTime(), {{"mean", *mean}, {"close", view.close()}}));
      if (quoteCode_ && series.isLive)
        quotes.push_back(orvane::tradeQuote(*quoteCode_, view.endTime(), *mean));
    }
    publish(context, targets_[code.id], records, quotes, series.isLive ? orvane::kLive : 0);
    if ((batchFlag & orvane::kEndOfHistory) != 0) series.isLive = true;
  }

  void onStop(IContext* context) override {
    context->setEnvs({{"records", std::to_string(records_)}, {"quotes", std::to_string(quotes_)}},
                     true);
  }

 private:
  /// What belongs to one code.
  struct Series {
    std::deque<double> closes;
    bool isLive = false;  ///< The history is over.

    /// The mean, once there are enough closes for one.
    std::optional<double> add(double close, std::size_t window) {
      closes.push_back(close);
      if (closes.size() > window) closes.pop_front();
      if (closes.size() < window) return std::nullopt;
      return std::accumulate(closes.begin(), closes.end(), 0.0) / static_cast<double>(window);
    }
  };

  void publish(IContext* context, const std::string& target, const std::list<Record>& records,
               const std::list<IDepthMarketData>& quotes, int flags) {
    if (!records.empty() &&
        isTaken(context, "records of " + target,
                context->publishRecords(dictionary_, target, 0, records, flags)))
      records_ += records.size();
    if (!quotes.empty() &&
        isTaken(context, "quotes of " + target, context->publishQuoteList(quotes, flags)))
      quotes_ += quotes.size();
  }

  static bool isTaken(IContext* context, const std::string& what, const ResultStatus& status) {
    if (status.code == 0) return true;
    context->logWarn(what + " refused: " + std::to_string(status.code) + " " + status.message,
                     true);
    return false;
  }

  std::string dictionary_;
  std::size_t window_ = 0;
  std::optional<ICodeID> quoteCode_;
  std::map<int64, std::string> targets_;  ///< By code id: its text.
  std::map<int64, Series> series_;        ///< By code id.
  std::size_t records_ = 0, quotes_ = 0;
};

}  // namespace

ORVANE_STRATEGY(PublisherServer)
