#pragma once

#include "shared/Export.h"

namespace orvane {

class ICodeService;
class IDataService;
class IRealtimeQuoteService;
class ITradeService;

/// The quote side of a platform. Owned by the platform; any thread may call it.
class ORVANE_API IQuoteHub {
 public:
  virtual ~IQuoteHub();
  /// Null where the platform has no market data; the other two are never null.
  virtual IRealtimeQuoteService* realtimeQuoteService() = 0;
  virtual ICodeService* codeService() = 0;
  virtual IDataService* dataService() = 0;
};

/// The way to every service of the installed platform. Owned by the platform; any thread may call
/// it. What it returns is fetched anew for each use and never kept.
class ORVANE_API IServiceRouter {
 public:
  virtual ~IServiceRouter();
  static IServiceRouter* instance();

  virtual IQuoteHub* quoteHub() = 0;
  /// Null where the platform has no trade side.
  virtual ITradeService* tradeService() = 0;
  /// A fresh request id, above 0, unique in the process.
  virtual int nextRequestId() = 0;
};

}  // namespace orvane
