#pragma once

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sdk/testing/RecordingRun.h"
#include "shared/CodeTables.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {

/// The part of a `RecordingContext` that is about codes, market data and its publication.
class RecordingMarket : public RecordingRun {
 public:
  std::vector<RecordedSubscription> subscriptions;  ///< In their order, those that ended too.
  std::vector<RecordedPublication> publications;    ///< In their order.

  /// Makes a code known, by a text such as "IF2101.CFFEX", UTF-8; answers the one that it has.
  ICodeID addCode(const std::string& text, ICodeProperty property = {}) {
    const std::string key = gbk(text);
    const auto [at, isNew] = codes_.try_emplace(key);
    Known& known = at->second;
    if (isNew) {
      known.code.id = static_cast<int64>(codes_.size());
      known.code.kind = 0;
      known.code.market = 1;
      known.code.code = key.substr(0, key.rfind('.'));
    }
    property.code = known.code;
    known.property = std::move(property);
    return known.code;
  }
  /// What `getQuote` answers from now on.
  void setQuote(const IDepthMarketData& quote) { quotes_[quote.code.id] = quote; }

  /// The subscription of a series that stands; null if there is none. An empty frequency means
  /// live quotes.
  const RecordedSubscription* subscription(const ICodeID& code,
                                           const std::string& frequency = {}) const {
    for (const RecordedSubscription& each : subscriptions)
      if (each.code == code && each.frequency == frequency && !each.isEnded &&
          each.status.code == 0)
        return &each;
    return nullptr;
  }

  ResultStatus subscribeQuote(const ICodeID& code, int flags) override {
    for (const RecordedSubscription& each : subscriptions)
      if (each.isQuotes() && each.code == code && !each.isEnded) return each.status;
    RecordedSubscription asked;
    asked.code = code;
    asked.flags = flags;
    asked.status = answer("subscribeQuote");
    return subscriptions.emplace_back(std::move(asked)).status;
  }
  ResultStatus subscribeKline(int requestId, const ICodeID& code, const std::string& frequency,
                              int64 beginTime, int64 endTime, int count, int flags) override {
    for (const RecordedSubscription& each : subscriptions)
      if (each.requestId == requestId && requestId != 0 && !each.isEnded)
        return {-1, "request id " + std::to_string(requestId) + " is used"};
    RecordedSubscription asked{code, frequency, requestId, beginTime, endTime, count, flags};
    asked.status = answer("subscribeKline");
    return subscriptions.emplace_back(std::move(asked)).status;
  }
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags) override {
    for (const RecordedSubscription& each : subscriptions)
      if (each.requestId == 0 && each.code == code && each.frequency == frequency && !each.isEnded)
        return each.status;
    return subscribeKline(0, code, frequency, beginTime, endTime, count, flags);
  }
  void unsubscribeQuote(const ICodeID& code) override {
    endWhere(
        [&](const RecordedSubscription& each) { return each.isQuotes() && each.code == code; });
  }
  void unsubscribeKline(int requestId) override {
    endWhere([&](const RecordedSubscription& each) {
      return requestId != 0 && each.requestId == requestId;
    });
  }
  void unsubscribeKline(const ICodeID& code, const std::string& frequency) override {
    endWhere([&](const RecordedSubscription& each) {
      return each.requestId == 0 && each.code == code && each.frequency == frequency;
    });
  }
  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int) override {
    ResultStatus status;
    if (script.take("getQuote", status)) return status;
    const auto found = quotes_.find(code.id);
    if (found == quotes_.end()) return notThere();
    quote = found->second;
    return {};
  }

  ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) override {
    return published("publishQuoteList", {}, {}, quotes.size(), flags);
  }
  ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars, int,
                                  int flags) override {
    return published("publishQuoteSeries", code.code, {}, bars.size(), flags);
  }
  ResultStatus publishQuoteItems(const ICodeID& code, const std::list<IDepthMarketData>& ticks,
                                 int flags) override {
    return published("publishQuoteItems", code.code, {}, ticks.size(), flags);
  }
  ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                  int flags) override {
    return published("publishQuoteItems2", code.code, {}, bars.size(), flags);
  }
  ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) override {
    return published("publishOp5", key, text, 1, flags);
  }
  ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) override {
    return published("publishOp6", key, text, 1, flags);
  }
  ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) override {
    return published("publishOp7", key, text, 1, flags);
  }
  ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) override {
    return published("publishOp8", key, text, 1, flags);
  }

  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int) override {
    ResultStatus status;
    if (script.take("codeServiceQuery", status)) return status;
    const auto found = codes_.find(text);
    if (found == codes_.end()) return notThere();
    code = found->second.code;
    return {};
  }
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property, int64) override {
    return propertyOf("currentCodeProperty", code, property);
  }
  ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) override {
    return propertyOf("resolvedCodeProperty", code, property);
  }
  ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) override {
    return propertyOf("resolvedCodeProperty3", code, property);
  }
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& codes) override {
    int at = 0;
    for (const auto& [text, known] : codes_)
      if (text.starts_with(prefix) && at++ >= first && static_cast<int>(codes.size()) < limit)
        codes.push_back(known.code);
    return answer("codeRangeQuery");
  }

 protected:
  /// The answer to a question for something that nobody made known.
  static ResultStatus notThere() { return {status::kNotThere, statusMessage(status::kNotThere)}; }

  /// Notes a publication and answers it.
  ResultStatus published(const char* operation, const std::string& name, const std::string& target,
                         std::size_t count, int flags) {
    publications.push_back({operation, name, target, count, flags, answer(operation)});
    return publications.back().status;
  }

  /// Ends the subscriptions that are meant.
  template <typename Condition>
  void endWhere(Condition isMeant) {
    for (RecordedSubscription& each : subscriptions)
      if (isMeant(each)) each.isEnded = true;
  }

 private:
  struct Known {
    ICodeID code;
    ICodeProperty property;
  };

  ResultStatus propertyOf(const char* operation, const ICodeID& code, ICodeProperty& property) {
    ResultStatus status;
    if (script.take(operation, status)) return status;
    for (const auto& [text, known] : codes_)
      if (known.code == code) return property = known.property, ResultStatus();
    return notThere();
  }

  std::map<std::string, Known> codes_;  ///< By text, GBK.
  std::map<int64, IDepthMarketData> quotes_;
};

}  // namespace orvane::detail
