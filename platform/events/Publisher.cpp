#include "platform/events/Publisher.h"

#include <utility>

#include "platform/core/NotSupported.h"
#include "platform/core/Periods.h"
#include "platform/fields/QuoteView.h"
#include "platform/market/files/NumberParser.h"
#include "services/Common/ICodeService.h"
#include "services/QuoteClient/IGeneralEventManager.h"

namespace orvane::detail {
Publisher::Publisher(Parts parts)
    : parts_(std::move(parts)),
      number_(parts_.market.addPublisher()),
      dictionary_(parts_.dictionary) {
  parts_.book->add(this);
}

Publisher::~Publisher() { parts_.book->remove(this); }

// Market data.

ResultStatus Publisher::publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) {
  return parts_.market.publishTicks(number_, quotes, nullptr, flags);
}

ResultStatus Publisher::publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                           int term, int flags) {
  if (term <= 0) return statusWith(-2, "term " + std::to_string(term) + " is not a period");
  return parts_.market.publishBars(number_, code, bars, term, flags);
}

ResultStatus Publisher::publishQuoteItems(const ICodeID& code,
                                          const std::list<IDepthMarketData>& ticks, int flags) {
  return parts_.market.publishTicks(number_, ticks, &code, flags);
}

ResultStatus Publisher::publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                           int flags) {
  return parts_.market.publishBars(number_, code, bars, 0, flags);
}

ResultStatus Publisher::announce(const std::string& codeText, const std::string& frequency) {
  ICodeID code;
  if (ResultStatus status = parts_.codes.codeIdOf(codeText, code); status.code != 0) return status;
  int64 term = 0;
  bool extraFlag = false;
  if (ResultStatus status = parseFrequency(frequency, term, extraFlag); status.code != 0)
    return status;
  return parts_.market.announce(number_, code, term);
}

ResultStatus Publisher::publishPrice(const std::string& codeText, const std::string& price,
                                     double volume) {
  ICodeID code;
  if (ResultStatus status = parts_.codes.codeIdOf(codeText, code); status.code != 0) return status;
  ICodeProperty property;
  if (ResultStatus status = parts_.codes.currentCodeProperty(code, property, kUnsetTime);
      status.code != 0)
    return status;
  double value = 0;
  if (!NumberParser().parse(price, value))
    return statusWith(-2, "price \"" + price + "\" is not a number");
  IDepthMarketData tick;
  QuoteWriter writer(tick);
  writer.setTime(parts_.now());
  writer.set(quote::LastPrice, value);
  writer.set(quote::Volume, volume);
  writer.set(quote::Turnover, value * volume * property.multiplier);
  writer.set(quote::Flags, quote::kHasTrade);
  return parts_.market.publishTicks(number_, {tick}, &code, Publications::kLiveFlag);
}

// Dictionary data.

ResultStatus Publisher::publishRecords(const std::string& name, const std::string& target,
                                       int valueType, const std::list<Record>& records, int flags,
                                       int64 tag) {
  return dictionary_.publishRecords(name, target, valueType, records, flags, tag);
}

ResultStatus Publisher::requestRange(const DataReq& request, int64 tag) {
  return dictionary_.requestRange(request, tag);
}

// Short forms.

ResultStatus Publisher::publishOp5(const std::string& key, const std::string& text, int) {
  return parts_.events.publishEvent(key, {}, text);
}

ResultStatus Publisher::publishOp6(const std::string& key, const std::string& text, int) {
  return announce(key, text);
}

ResultStatus Publisher::publishOp7(const std::string& key, const std::string& text, int flags) {
  const std::size_t slash = key.find('/');
  if (slash == std::string::npos) return statusWith(-2, "key \"" + key + "\" has no slash");
  Record record;
  record.key = parts_.now();
  record.text = text;
  return publishRecords(key.substr(0, slash), key.substr(slash + 1), 0, {record}, flags, 0);
}

ResultStatus Publisher::publishOp8(const std::string& key, const std::string& text, int) {
  return publishPrice(key, text, 0);
}

ResultStatus Publisher::publisherOp1(const std::string& text1, const std::string& text2,
                                     int64 value1, int64 value2, const std::string& text3,
                                     std::int32_t count, int flags) {
  return publishRecords(text1, text2, count, {{value1, value2, text3}}, flags, 0);
}

ResultStatus Publisher::publisherOp2(const std::string& text1, const std::string& text2,
                                     int64 value1, int64 value2, const std::string& text3,
                                     std::int32_t count, int) {
  std::map<std::string, std::string> fields;
  if (!text3.empty()) fields["key"] = text3;
  if (value1 != 0) fields["value1"] = std::to_string(value1);
  if (value2 != 0) fields["value2"] = std::to_string(value2);
  if (count != 0) fields["count"] = std::to_string(count);
  return parts_.events.publishEvent(text1, fields, text2);
}

ResultStatus Publisher::publisherOp3(const std::string& text1, const std::string& text2, int64,
                                     int64, const std::string&, std::int32_t, int) {
  return announce(text1, text2);
}

ResultStatus Publisher::publisherOp4(const std::string& text1, const std::string& text2,
                                     int64 value1, int64, const std::string&, std::int32_t, int) {
  return publishPrice(text1, text2, static_cast<double>(value1));
}

// What has no meaning here.

ResultStatus Publisher::publisherOp5(const std::string&, const std::string&, int64, int64,
                                     const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp6(const std::string&, const std::string&, int64, int64,
                                     const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp7(const std::string&, const std::string&, int64, int64,
                                     const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp8(const std::string&, const std::string&, int64, int64,
                                     const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp9(const std::string&, const std::string&, int64, int64,
                                     const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp10(const std::string&, const std::string&, int64, int64,
                                      const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp11(const std::string&, const std::string&, int64, int64,
                                      const std::string&, std::int32_t, int) {
  return notSupported();
}
ResultStatus Publisher::publisherOp12(const std::string&, const std::string&, int64, int64,
                                      const std::string&, std::int32_t, int) {
  return notSupported();
}

}  // namespace orvane::detail
