#include "tests/support/FakeRealtimeQuoteService.h"

#include <string>

namespace orvane::support {
namespace {

std::string idAndFlags(const ICodeID& code, int flags) {
  return std::to_string(code.id) + " flags=" + std::to_string(flags);
}

}  // namespace

ResultStatus FakeRealtimeQuoteService::subscribeQuote(const ICodeID& code,
                                                      const std::shared_ptr<QuoteSpi>& spi,
                                                      int flags) {
  {
    const std::lock_guard lock(mutex_);
    quotes_[code.id] = spi;
  }
  return calls_.record("quote.subscribeQuote", idAndFlags(code, flags));
}

ResultStatus FakeRealtimeQuoteService::unsubscribeQuote(const ICodeID& code,
                                                        const std::shared_ptr<QuoteSpi>&,
                                                        int flags) {
  return calls_.record("quote.unsubscribeQuote", idAndFlags(code, flags));
}

ResultStatus FakeRealtimeQuoteService::subscribeBars(const IMDQuery& query, const TermPair& term,
                                                     const std::shared_ptr<QuoteSpi>& spi,
                                                     int requestId) {
  {
    const std::lock_guard lock(mutex_);
    requests_[requestId] = {query, term, spi};
  }
  return calls_.record(
      "quote.subscribeBars",
      std::to_string(requestId) + " code=" + std::to_string(query.code.id) + " term=(" +
          std::to_string(term.timeType) + "," + std::to_string(term.count) +
          ") begin=" + std::to_string(query.beginTime) + " end=" + std::to_string(query.endTime) +
          " count=" + std::to_string(query.count) + " flags=" + std::to_string(query.flags));
}

ResultStatus FakeRealtimeQuoteService::cancelRequest(int requestId) {
  return calls_.record("quote.cancelRequest", std::to_string(requestId));
}

ResultStatus FakeRealtimeQuoteService::unsubscribeSpi(const std::shared_ptr<QuoteSpi>&) {
  return calls_.record("quote.unsubscribeSpi");
}

ResultStatus FakeRealtimeQuoteService::getQuote(const ICodeID& code, IDepthMarketData& quote,
                                                int flags) {
  const ResultStatus status = calls_.record("quote.getQuote", idAndFlags(code, flags));
  if (status.code == 0) quote.code = code;
  return status;
}

std::shared_ptr<QuoteSpi> FakeRealtimeQuoteService::quoteSpi(int64 codeId) const {
  const std::lock_guard lock(mutex_);
  const auto it = quotes_.find(codeId);
  return it == quotes_.end() ? nullptr : it->second;
}

std::shared_ptr<QuoteSpi> FakeRealtimeQuoteService::requestSpi(int requestId) const {
  const std::lock_guard lock(mutex_);
  const auto it = requests_.find(requestId);
  return it == requests_.end() ? nullptr : it->second.spi;
}

IMDQuery FakeRealtimeQuoteService::query(int requestId) const {
  const std::lock_guard lock(mutex_);
  return requests_.at(requestId).query;
}

TermPair FakeRealtimeQuoteService::term(int requestId) const {
  const std::lock_guard lock(mutex_);
  return requests_.at(requestId).term;
}

void FakeRealtimeQuoteService::forget() {
  std::map<int64, std::shared_ptr<QuoteSpi>> quotes;
  std::map<int, Request> requests;
  const std::lock_guard lock(mutex_);
  quotes.swap(quotes_);
  requests.swap(requests_);
}

}  // namespace orvane::support
