#pragma once

#include <vector>

#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// Where a quote source's call-backs go. Called on threads of the quote service, with the source's
/// notify mutex held: an implementation must not call back into the source. References do not
/// outlive a call. Every operation has an empty body, so that a subclass may override one alone.
class ORVANE_API QuoteNotify {
 public:
  QuoteNotify();
  QuoteNotify(const QuoteNotify&);
  QuoteNotify& operator=(const QuoteNotify&);
  virtual ~QuoteNotify();

  virtual void onQuote(const IDepthMarketData& quote);
  virtual void onKLine(int requestId, const ICodeID& code, const std::vector<IKLine>& bars,
                       const ResultStatus& status, int batchFlag);
  virtual void onKLineProgress(int requestId, const ICodeID& code, const KLineProgress& progress);
  virtual void onTick(int requestId, const ICodeID& code,
                      const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                      int batchFlag);
  virtual void onRollover(int requestId, const ICodeID& code,
                          const RolloverCoefficient& coefficient);
};

}  // namespace orvane
