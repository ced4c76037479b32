#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

#include <functional>
#include <map>
#include <string>

namespace {

using orvane::IContext;

/// Does the one thing that "act" names, with its order source as the only part that may differ
/// between two runs: the parameters stand in the digest themselves.
class Acting : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    const auto asked = orvane::subscribeAllOrFail(context, params);
    if (asked.empty()) return;
    const orvane::ICodeID& code = asked.front().code;
    const std::string value = context->orderSource();
    const auto length = static_cast<double>(value.size());
    const orvane::Record record = orvane::jsonRecord(1, {{"size", length}});
    const std::list<orvane::IDepthMarketData> quotes = {orvane::tradeQuote(code, 1, length)};
    orvane::IKLine bar;
    bar.words[0] = static_cast<orvane::int64>(value.size());
    const std::map<std::string, std::function<void()>> acts = {
        {"publishRecords", [&] { context->publishRecords("d", "t", 0, {record}, 1); }},
        {"publishRecordsOf", [&] { context->publishRecords("d", value, 0, {}, 1); }},
        {"publishQuoteList", [&] { context->publishQuoteList(quotes, 1); }},
        {"publishQuoteSeries", [&] { context->publishQuoteSeries(code, {bar}, 60, 1); }},
        {"publishQuoteItems", [&] { context->publishQuoteItems(code, quotes, 1); }},
        {"publishQuoteItems2", [&] { context->publishQuoteItems2(code, {bar}, 1); }},
        {"publishOp5", [&] { context->publishOp5("k", value, 0); }},
        {"publishOp6", [&] { context->publishOp6("k", value, 0); }},
        {"publishOp7", [&] { context->publishOp7("k", value, 0); }},
        {"publishOp8", [&] { context->publishOp8("k", value, 0); }},
        {"subscribeDic",
         [&] { context->subscribeDic("d", value, orvane::kUnsetTime, orvane::kUnsetTime, 0); }},
        {"subscribeDicSnapshot", [&] { context->subscribeDicSnapshot("d", value, 0); }},
        {"unsubscribeDic", [&] { context->unsubscribeDic("d", value); }},
        {"unsubscribeDicSnapshot", [&] { context->unsubscribeDicSnapshot("d", value); }},
        {"requestRange", [&] { context->requestRange("d", value, 0, 1, 0); }},
        {"attachAccount", [&] { context->attachAccount(value, 1); }},
        {"detachAccount", [&] { context->detachAccount(value, 1); }},
    };
    const auto act = acts.find(params["act"].toString().toStdString());
    if (act == acts.end()) return context->setError("no such act");
    act->second();
  }
};

}  // namespace

ORVANE_STRATEGY(Acting)
