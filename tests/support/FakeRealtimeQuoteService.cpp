#include "tests/support/FakeRealtimeQuoteService.h"

#include <algorithm>
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
                                                        const std::shared_ptr<QuoteSpi>& spi,
                                                        int flags) {
  keep(spi);
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

ResultStatus FakeRealtimeQuoteService::unsubscribeSpi(const std::shared_ptr<QuoteSpi>& spi) {
  keep(spi);
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

std::vector<std::shared_ptr<QuoteSpi>> FakeRealtimeQuoteService::spis() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<QuoteSpi>> all = withdrawn_;
  const auto add = [&all](const std::shared_ptr<QuoteSpi>& spi) {
    if (std::ranges::find(all, spi) == all.end()) all.push_back(spi);
  };
  for (const auto& quote : quotes_) add(quote.second);
  for (const auto& request : requests_) add(request.second.spi);
  return all;
}

void FakeRealtimeQuoteService::keep(const std::shared_ptr<QuoteSpi>& spi) {
  const std::lock_guard lock(mutex_);
  if (std::ranges::find(withdrawn_, spi) == withdrawn_.end()) withdrawn_.push_back(spi);
}

void FakeRealtimeQuoteService::forget() {
  std::map<int64, std::shared_ptr<QuoteSpi>> quotes;
  std::map<int, Request> requests;
  std::vector<std::shared_ptr<QuoteSpi>> withdrawn;
  const std::lock_guard lock(mutex_);
  quotes.swap(quotes_);
  requests.swap(requests_);
  withdrawn.swap(withdrawn_);
}

}  // namespace orvane::support
