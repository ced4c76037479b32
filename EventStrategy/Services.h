#pragma once

#include "services/Common/IServiceRouter.h"

namespace orvane {

/// What sources ask most. Looked up at every call, since a router may change what it gives; null
/// where there is no such service.
inline ITradeService* tradeService() { return IServiceRouter::instance()->tradeService(); }
inline IDataService* dataService() { return IServiceRouter::instance()->quoteHub()->dataService(); }

}  // namespace orvane
