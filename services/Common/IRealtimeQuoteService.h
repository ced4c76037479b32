#pragma once

#include <memory>
#include <vector>

#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// Where market data call-backs go. Every operation has an empty body; a source overrides what it
/// needs. All are called on threads of the service, never inside a call to the service.
class ORVANE_API QuoteSpi {
 public:
  QuoteSpi() = default;
  QuoteSpi(const QuoteSpi&) = delete;
  QuoteSpi& operator=(const QuoteSpi&) = delete;
  virtual ~QuoteSpi();

  virtual void onQuote(const IDepthMarketData& quote);
  /// A batch of a tick request. Bit value 16 of `flags` marks the batch that ends the history.
  virtual void onTick(int requestId, const std::vector<IDepthMarketData>& ticks,
                      const ResultStatus& status, int flags);
  /// A batch of a bar request, flags as above.
  virtual void onKLine(int requestId, const std::vector<IKLine>& bars, const ResultStatus& status,
                       int flags);
  virtual void onTimesale(int requestId);
  virtual void onDeallist(int requestId);
  virtual void onKLineProgress(int requestId, const KLineProgress& progress);
  virtual void onRollover(int requestId, const RolloverCoefficient& coefficient);
  virtual void onDisconnected();
};

/// Bit value of the batch flags on the batch that ends a request's history.
inline constexpr int kLastBatchFlag = 16;

/// Live and past market data. Owned by the platform; any thread may call it. It keeps the spi it
/// was given, by shared pointer, as long as a subscription of it stands, and calls it on threads
/// of its own.
class ORVANE_API IRealtimeQuoteService {
 public:
  virtual ~IRealtimeQuoteService();

  /// Live quotes of a code, to `QuoteSpi::onQuote`.
  virtual ResultStatus subscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                                      int flags) = 0;
  virtual ResultStatus unsubscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                                        int flags) = 0;

  /// Past bars of a period, ended by a batch with bit value 16, and then the live ones if the
  /// query's end is open. A period of (8, 0) asks for ticks, to `QuoteSpi::onTick`.
  virtual ResultStatus subscribeBars(const IMDQuery& query, const TermPair& term,
                                     const std::shared_ptr<QuoteSpi>& spi, int requestId) = 0;
  virtual ResultStatus cancelRequest(int requestId) = 0;

  /// Ends every subscription and request of `spi`.
  virtual ResultStatus unsubscribeSpi(const std::shared_ptr<QuoteSpi>& spi) = 0;

  /// The last quote of a code at or before now. Code 4 if there is none yet.
  virtual ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) = 0;
};

}  // namespace orvane
