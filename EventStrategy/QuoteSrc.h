#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "EventStrategy/IQuoteSrc.h"
#include "EventStrategy/SpinLock.h"
#include "services/Common/IRealtimeQuoteService.h"

namespace orvane {

class IPublisher;
class QuoteNotify;

namespace detail {
struct TestAccess;
}

/// One strategy's market data: counts the subscribers of each code, so that many of them are one
/// subscription at the service, and keeps every bar or tick request by its id, so that a call-back
/// finds its code and a late one is dropped.
///
/// Made with `make_shared` and owned by an `AbstractEventStrategy`; the service shares it while a
/// subscription stands. Any thread may subscribe; the service calls back on its own threads.
/// No service is called with a lock held, since it may call back at once. Lock order: `dataMutex_`,
/// then `codeSpinLock_` inside it; `notifyMutex_` is never held together with `dataMutex_`.
class QuoteSrc final : public IQuoteSrc,
                       public QuoteSpi,
                       public std::enable_shared_from_this<QuoteSrc> {
 public:
  /// `mode` chooses the publisher's mode.
  explicit QuoteSrc(const int& mode);
  ~QuoteSrc() override;

  /// Where call-backs go; null drops them. When it returns, no call-back runs through the old one.
  void setNotify(QuoteNotify* notify);

  ResultStatus subscribeQuote(const std::string& code, int flags);
  /// Adds a subscriber; the flags of all but the first are lost. A refusal keeps the count.
  ResultStatus subscribeQuote(const ICodeID& code, int flags);
  ResultStatus unsubscribeQuote(const std::string& code, int flags);
  /// Takes a subscriber away; unknown codes are no error.
  ResultStatus unsubscribeQuote(const ICodeID& code, int flags);

  /// Starts a request under an id, in place of one that had it. A count of 0 or less means no
  /// limit. A refusal of the service keeps the request in the books.
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags, int requestId);
  ResultStatus subscribeKline(const std::string& code, const std::string& frequency, int64 value,
                              int flags, int requestId, int extraFlags);
  ResultStatus subscribeKline(const OVDataRange& range, int requestId, int extraFlags);
  ResultStatus unsubscribeKline(int requestId);

  /// Whether a request stands under the id.
  bool isSubscribeKline(int requestId);
  /// Whether the code has at least one subscriber.
  bool isSubscribeQuote(const ICodeID& code);

  /// Withdraws everything from the service. The object stays usable.
  void release();

  // IQuoteSrc
  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) override;
  std::vector<IDepthMarketData> getQuotes(const std::vector<ICodeID>& codes, int flags) override;
  ResultStatus codeNameOf(const ICodeID& code, std::string& name) override;
  ResultStatus codeIdOf(const std::string& text, ICodeID& code) override;
  ResultStatus codeQueryA(int kind, std::list<ICodeID>& codes) override;
  ResultStatus codeQueryB(int kind, int market, int limit, std::list<ICodeID>& codes) override;
  ResultStatus codeQueryC(int kind, int market, std::list<ICodeID>& codes) override;
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& codes) override;
  ResultStatus codeQueryD(const int& market, std::string& name) override;
  ResultStatus codeQueryE(const std::string& name, int& market) override;
  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) override;
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                   int64 time) override;
  ResultStatus codeProperty(const std::string& text, ICodeProperty& property, int64 time) override;
  ResultStatus codeProperty(const ICodeID& code, ICodeProperty& property, int64 time) override;
  ResultStatus historyCodeProperties(const std::string& text,
                                     std::vector<ITimeCodeProp>& properties, int flags) override;
  ResultStatus historyCodeProperties(const ICodeID& code, std::vector<ITimeCodeProp>& properties,
                                     int flags) override;
  ResultStatus codeQueryF(int market, std::list<ICodeProperty>& properties) override;
  ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus resolvedCodeProperty2(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus resolvedCodeProperty4(const ICodeID& code, ICodeProperty& property) override;
  ResultStatus categories(std::vector<ICategoryID>& categories) override;
  ResultStatus categoryQuery(const std::string& text, int flags,
                             std::list<ICodeID>& codes) override;
  ResultStatus setUserCodeProperty(const ICodeProperty& property) override;
  std::map<ICodeID, std::vector<IKLine>> fetchBarsSync(const std::list<OVDataRange>& ranges,
                                                       int64 timeoutMs) override;
  ResultStatus maintainDataSync(const ICodeID& code, const std::string& frequency, int64 value,
                                int64 timeoutMs) override;
  ResultStatus freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) override;
  ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) override;
  ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars, int term,
                                  int flags) override;
  ResultStatus publishQuoteItems(const ICodeID& code, const std::list<IDepthMarketData>& ticks,
                                 int flags) override;
  ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                  int flags) override;
  ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) override;
  int generateRequestId() override;

  // QuoteSpi
  void onQuote(const IDepthMarketData& quote) override;
  void onTick(int requestId, const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
              int flags) override;
  void onKLine(int requestId, const std::vector<IKLine>& bars, const ResultStatus& status,
               int flags) override;
  void onKLineProgress(int requestId, const KLineProgress& progress) override;
  void onRollover(int requestId, const RolloverCoefficient& coefficient) override;

 private:
  friend struct detail::TestAccess;

  ResultStatus request(const IMDQuery& query, int64 term, int requestId);
  bool findCode(int requestId, ICodeID& code);

  std::mutex notifyMutex_;
  QuoteNotify* notify_ = nullptr;  ///< Borrowed; guarded by `notifyMutex_`, held while called.

  std::mutex dataMutex_;  ///< Guards `requestsById_` and, with the spin lock, `codeRefCounts_`.
  std::map<int, IMDQuery> requestsById_;
  detail::SpinLock codeSpinLock_;
  std::map<ICodeID, std::int32_t> codeRefCounts_;

  IPublisher* publisher_;  ///< The platform keeps it: this object does not release it.
};

}  // namespace orvane
