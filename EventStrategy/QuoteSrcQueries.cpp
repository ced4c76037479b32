// The query side of the quote source: forwards to the code service, the realtime service and the
// publisher. Each call goes through the router anew, since a platform may replace its services.

#include "EventStrategy/QuoteGetSync.h"
#include "EventStrategy/QuoteSrc.h"
#include "services/Common/ICodeService.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/QuoteUtils.h"
#include "services/QuoteClient/ISystemEvent.h"
#include "services/ov.publisher/IPublisher.h"
#include "shared/CodeTables.h"

namespace orvane {
namespace {

ICodeService& codes() { return *IServiceRouter::instance()->quoteHub()->codeService(); }

}  // namespace

ResultStatus QuoteSrc::getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) {
  return IServiceRouter::instance()->quoteHub()->realtimeQuoteService()->getQuote(code, quote,
                                                                                  flags);
}

std::vector<IDepthMarketData> QuoteSrc::getQuotes(const std::vector<ICodeID>& codes, int flags) {
  std::vector<IDepthMarketData> quotes;
  for (const ICodeID& code : codes) {
    IDepthMarketData quote;
    if (getQuote(code, quote, flags).code == 0) quotes.push_back(std::move(quote));
  }
  return quotes;
}

ResultStatus QuoteSrc::codeNameOf(const ICodeID& code, std::string& name) {
  return codes().codeNameOf(code, name);
}

ResultStatus QuoteSrc::codeIdOf(const std::string& text, ICodeID& code) {
  return codes().codeIdOf(text, code);
}

ResultStatus QuoteSrc::codeQueryA(int kind, std::list<ICodeID>& found) {
  return codes().codeQueryA(kind, found);
}

ResultStatus QuoteSrc::codeQueryB(int kind, int market, int limit, std::list<ICodeID>& found) {
  return codes().codeQueryB(kind, market, limit, found);
}

ResultStatus QuoteSrc::codeQueryC(int kind, int market, std::list<ICodeID>& found) {
  return codes().codeQueryC(kind, market, found);
}

ResultStatus QuoteSrc::codeRangeQuery(const std::string& prefix, int first, int limit,
                                      std::list<ICodeID>& found) {
  return codes().codeRangeQuery(prefix, first, limit, found, 0);
}

ResultStatus QuoteSrc::codeQueryD(const int& market, std::string& name) {
  return codes().codeQueryD(market, name);
}

ResultStatus QuoteSrc::codeQueryE(const std::string& name, int& market) {
  return codes().codeQueryE(name, market);
}

ResultStatus QuoteSrc::codeServiceQuery(const std::string& text, ICodeID& code, int flags) {
  return codes().codeServiceQuery(text, code, flags);
}

ResultStatus QuoteSrc::currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                           int64 time) {
  return codes().currentCodeProperty(code, property, time);
}

ResultStatus QuoteSrc::codeProperty(const std::string& text, ICodeProperty& property, int64 time) {
  ICodeID code;
  if (ResultStatus status = codeIdOf(text, code); status.code != 0) return status;
  return codeProperty(code, property, time);
}

ResultStatus QuoteSrc::codeProperty(const ICodeID& code, ICodeProperty& property, int64 time) {
  if (time != kUnsetTime) return codes().codePropertyAt(code.id, property, time);
  ResultStatus status = currentCodeProperty(code, property, kUnsetTime);
  if (status.code == 0) property.time = 0;
  return status;
}

ResultStatus QuoteSrc::historyCodeProperties(const std::string& text,
                                             std::vector<ITimeCodeProp>& properties, int flags) {
  ICodeID code;
  if (ResultStatus status = codeIdOf(text, code); status.code != 0) return status;
  return CodePropertyUtils::getHistoryCodeProperties(code, properties, flags);
}

ResultStatus QuoteSrc::historyCodeProperties(const ICodeID& code,
                                             std::vector<ITimeCodeProp>& properties, int flags) {
  return CodePropertyUtils::getHistoryCodeProperties(code, properties, flags);
}

ResultStatus QuoteSrc::codeQueryF(int market, std::list<ICodeProperty>& properties) {
  return codes().codeQueryF(market, properties, kUnsetTime);
}

ResultStatus QuoteSrc::resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) {
  ICodeID resolved;
  if (ResultStatus status = codes().resolveDominant(code, resolved); status.code != 0)
    return status;
  return currentCodeProperty(resolved, property, kUnsetTime);
}

ResultStatus QuoteSrc::resolvedCodeProperty2(const ICodeID& code, ICodeProperty& property) {
  ICodeID resolved;
  if (ResultStatus status = codes().resolveUnderlying(code, resolved); status.code != 0)
    return status;
  return currentCodeProperty(resolved, property, kUnsetTime);
}

ResultStatus QuoteSrc::resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) {
  ICodeID resolved;
  if (ResultStatus status = codes().resolveContinuous(code, resolved); status.code != 0)
    return status;
  return currentCodeProperty(resolved, property, kUnsetTime);
}

ResultStatus QuoteSrc::resolvedCodeProperty4(const ICodeID& code, ICodeProperty& property) {
  ICodeID underlying;
  if (ResultStatus status = codes().resolveUnderlying(code, underlying); status.code != 0)
    return status;
  return resolvedCodeProperty3(underlying, property);
}

ResultStatus QuoteSrc::categories(std::vector<ICategoryID>& found) {
  static constexpr int kKinds[] = {1, 7};
  std::list<int> marketsOfKind[2];
  for (int i = 0; i < 2; ++i) codes().markets(kKinds[i], marketsOfKind[i]);
  for (int i = 0; i < 2; ++i) {
    for (const int market : marketsOfKind[i]) {
      std::vector<ICategoryID> ofMarket;
      if (codes().categoriesOf(market, kKinds[i], ofMarket).code != 0) continue;
      found.insert(found.end(), ofMarket.begin(), ofMarket.end());
    }
  }
  return {};
}

ResultStatus QuoteSrc::categoryQuery(const std::string& text, int flags,
                                     std::list<ICodeID>& found) {
  ICategoryID category;
  if (!CodePropertyUtils::getCategoryID(text, category)) return {-1, statusMessage(-1)};
  return codes().categoryQuery(category, flags, found);
}

ResultStatus QuoteSrc::setUserCodeProperty(const ICodeProperty& property) {
  ICodeProperty corrected = property;
  if (ResultStatus status = CodePropertyUtils::correctUserProp(corrected); status.code != 0)
    return status;
  if (ResultStatus status = codes().setUserCodeProperties({corrected}); status.code != 0)
    return status;
  ISystemEvent::instance()->codePropertyChanged(corrected, 1);
  return {};
}

std::map<ICodeID, std::vector<IKLine>> QuoteSrc::fetchBarsSync(const std::list<OVDataRange>& ranges,
                                                               int64 timeoutMs) {
  return detail::QuoteGetSync().fetchBars(ranges, timeoutMs);
}

ResultStatus QuoteSrc::maintainDataSync(const ICodeID& code, const std::string& frequency,
                                        int64 value, int64 timeoutMs) {
  return detail::QuoteGetSync().maintainData(code, frequency, value, timeoutMs);
}

ResultStatus QuoteSrc::freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) {
  return QuoteUtils::freqToTerm(frequency, term, extraFlag);
}

ResultStatus QuoteSrc::publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) {
  return publisher_->publishQuoteList(quotes, flags);
}

ResultStatus QuoteSrc::publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                          int term, int flags) {
  return publisher_->publishQuoteSeries(code, bars, term, flags);
}

ResultStatus QuoteSrc::publishQuoteItems(const ICodeID& code,
                                         const std::list<IDepthMarketData>& ticks, int flags) {
  return publisher_->publishQuoteItems(code, ticks, flags);
}

ResultStatus QuoteSrc::publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                          int flags) {
  return publisher_->publishQuoteItems2(code, bars, flags);
}

ResultStatus QuoteSrc::publishOp5(const std::string& key, const std::string& text, int flags) {
  return publisher_->publishOp5(key, text, flags);
}

ResultStatus QuoteSrc::publishOp6(const std::string& key, const std::string& text, int flags) {
  return publisher_->publishOp6(key, text, flags);
}

ResultStatus QuoteSrc::publishOp7(const std::string& key, const std::string& text, int flags) {
  return publisher_->publishOp7(key, text, flags);
}

ResultStatus QuoteSrc::publishOp8(const std::string& key, const std::string& text, int flags) {
  return publisher_->publishOp8(key, text, flags);
}

int QuoteSrc::generateRequestId() { return IServiceRouter::instance()->nextRequestId(); }

}  // namespace orvane
