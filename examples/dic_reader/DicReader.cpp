#include <orvane/sdk/Params.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>

#include <list>
#include <string>

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IDepthMarketData;
using orvane::Record;
using orvane::ResultStatus;

/// Reads what `publisher_server` publishes. Parameters:
/// - "dictionary" ("means"): where it reads the target of each code that the host offers.
/// - "quotes" (""): a code whose quotes it takes.
///
/// Tells the host what it counted when it stops, as the environment values "records", "last" (the
/// last mean) and "quotes".
class DicReader : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    const std::string dictionary = params.text("dictionary", "means");
    const std::string quotes = params.text("quotes", "");
    if (!params.accept(context)) return;
    for (const auto& series : json.value(QLatin1String("data")).toArray()) {
      const std::string target = orvane::gbk(series.toObject()["code"].toString());
      const ResultStatus asked =
          context->subscribeDic(dictionary, target, orvane::kUnsetTime, orvane::kUnsetTime, 0);
      if (asked.code != 0)
        return context->setError(dictionary + " " + target + ": " + asked.message);
    }
    if (quotes.empty()) return;
    ICodeID code;
    ResultStatus asked = context->codeServiceQuery(quotes, code, 0);
    if (asked.code == 0) asked = context->subscribeQuote(code, 0);
    if (asked.code != 0) context->setError("quotes: " + quotes + ": " + asked.message);
  }

  void onDic(IContext* context, const std::string& name, const std::string& key,
             const std::list<Record>& records, const ResultStatus& status, int) override {
    if (status.code != 0) return context->logWarn(name + " " + key + ": " + status.message, true);
    for (const Record& record : records) {
      ++records_;
      lastMean_ = orvane::recordFields(record)["mean"].toDouble();
      context->logDebug(name + " " + key + " " + orvane::utcText(record.key) +
                            " mean=" + orvane::numberText(lastMean_),
                        true);
    }
  }

  void onQuote(IContext*, const IDepthMarketData&) override { ++quotes_; }

  void onStop(IContext* context) override {
    context->setEnvs({{"records", std::to_string(records_)},
                      {"last", orvane::numberText(lastMean_)},
                      {"quotes", std::to_string(quotes_)}},
                     true);
  }

 private:
  std::size_t records_ = 0, quotes_ = 0;
  double lastMean_ = 0;
};

}  // namespace

ORVANE_STRATEGY(DicReader)
