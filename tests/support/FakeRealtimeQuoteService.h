#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "services/Common/IRealtimeQuoteService.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A market data service that delivers nothing of its own accord. It notes every call as
/// "quote.<operation>", answers as scripted, and remembers which spi asked for what, so that a
/// test can call back as the service would. Any thread may use it.
class FakeRealtimeQuoteService final : public IRealtimeQuoteService {
 public:
  explicit FakeRealtimeQuoteService(CallLog& calls) : calls_(calls) {}

  ResultStatus subscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                              int flags) override;
  ResultStatus unsubscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                                int flags) override;
  ResultStatus subscribeBars(const IMDQuery& query, const TermPair& term,
                             const std::shared_ptr<QuoteSpi>& spi, int requestId) override;
  ResultStatus cancelRequest(int requestId) override;
  ResultStatus unsubscribeSpi(const std::shared_ptr<QuoteSpi>& spi) override;
  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) override;

  /// The spi that last asked for this code's quotes, or for this request. It stays known after an
  /// unsubscribe, as it does to a service with a call-back under way; `forget` lets all go.
  std::shared_ptr<QuoteSpi> quoteSpi(int64 codeId) const;
  std::shared_ptr<QuoteSpi> requestSpi(int requestId) const;
  /// Every spi that is known from a subscription or that a withdrawal brought, once each.
  std::vector<std::shared_ptr<QuoteSpi>> spis() const;

  /// The query and the period of a request, as they came.
  IMDQuery query(int requestId) const;
  TermPair term(int requestId) const;

  void forget();

 private:
  struct Request {
    IMDQuery query;
    TermPair term;
    std::shared_ptr<QuoteSpi> spi;
  };

  void keep(const std::shared_ptr<QuoteSpi>& spi);

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::map<int64, std::shared_ptr<QuoteSpi>> quotes_;
  std::map<int, Request> requests_;
  std::vector<std::shared_ptr<QuoteSpi>> withdrawn_;
};

}  // namespace orvane::support
