// One home for the virtual tables of the service interfaces, and the empty bodies of the
// call-backs.

#include "services/Common/CmnFactory.h"
#include "services/Common/DllLoader.h"
#include "services/Common/IBlockingReceiver.h"
#include "services/Common/ICodeService.h"
#include "services/Common/IDataService.h"
#include "services/Common/IRealtimeQuoteService.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITimerNotify.h"
#include "services/Common/ITradeService.h"
#include "services/Common/ThreadPoolBase.h"
#include "services/Common/Timer.h"
#include "services/QuoteClient/IDataMaintain.h"
#include "services/QuoteClient/IGeneralEventManager.h"
#include "services/QuoteClient/IIndexTrade.h"
#include "services/QuoteClient/ISystemEvent.h"
#include "services/ov.publisher/IPublisher.h"

namespace orvane {

ThreadPoolBase::~ThreadPoolBase() = default;
IModuleLoader::~IModuleLoader() = default;
ITimerEngine::~ITimerEngine() = default;
IQuoteHub::~IQuoteHub() = default;
IServiceRouter::~IServiceRouter() = default;
IRealtimeQuoteService::~IRealtimeQuoteService() = default;
ICodeService::~ICodeService() = default;
IDataService::~IDataService() = default;
ICondService::~ICondService() = default;
ITradeService::~ITradeService() = default;
IGeneralEventManager::~IGeneralEventManager() = default;
IIndexTrade::~IIndexTrade() = default;
ISystemEvent::~ISystemEvent() = default;
IDataMaintain::~IDataMaintain() = default;
IPublisher::~IPublisher() = default;

ITimerNotify::ITimerNotify() = default;
ITimerNotify::~ITimerNotify() = default;

IBlockingReceiver::~IBlockingReceiver() = default;

QuoteSpi::~QuoteSpi() = default;
void QuoteSpi::onQuote(const IDepthMarketData&) {}
void QuoteSpi::onTick(int, const std::vector<IDepthMarketData>&, const ResultStatus&, int) {}
void QuoteSpi::onKLine(int, const std::vector<IKLine>&, const ResultStatus&, int) {}
void QuoteSpi::onTimesale(int) {}
void QuoteSpi::onDeallist(int) {}
void QuoteSpi::onKLineProgress(int, const KLineProgress&) {}
void QuoteSpi::onRollover(int, const RolloverCoefficient&) {}
void QuoteSpi::onDisconnected() {}

DataSpi::~DataSpi() = default;
void DataSpi::onSnapshot(const SnapshotKey&, const Record&) {}
void DataSpi::onProgress(int, int, int) {}
void DataSpi::onData(int, const DataResult&, const ResultStatus&, int, int64) {}
void DataSpi::onDelete(int, const SnapshotKey&, int64, int64, int64) {}
void DataSpi::onDisconnected() {}

CondSpi::~CondSpi() = default;
void CondSpi::onCondReserved1() {}
void CondSpi::onCondReserved2() {}
void CondSpi::onCondDetail(const int64&, const QList<GridOrderRecord>&,
                           const QList<GridFillRecord>&) {}
void CondSpi::onCondReserved4() {}
void CondSpi::onCondReserved5() {}
void CondSpi::onCondReserved6() {}

TradeMsgSpi::~TradeMsgSpi() = default;
void TradeMsgSpi::onRspStatus(const AccountID&, const AccountStatusInfo&) {}
void TradeMsgSpi::onMsgReserved2() {}
void TradeMsgSpi::onMsgReserved3() {}

TradeDataSpi::~TradeDataSpi() = default;
void TradeDataSpi::onRtnTrade(const OrderFill&) {}
void TradeDataSpi::onDataReserved2() {}
void TradeDataSpi::onRtnOrder(const Order&) {}
void TradeDataSpi::onDataReserved4() {}
void TradeDataSpi::onRtnPosition(const Position&) {}
void TradeDataSpi::onDataReserved6() {}
void TradeDataSpi::onRtnPositionChange(const Position&) {}
void TradeDataSpi::onDataReserved8() {}
void TradeDataSpi::onRtnSourcePosition(const SourcePosition&) {}
void TradeDataSpi::onDataReserved10() {}
void TradeDataSpi::onDataReserved11() {}
void TradeDataSpi::onDataReserved12() {}
void TradeDataSpi::onDataReserved13() {}
void TradeDataSpi::onRtnCapital(const TradingAccount&) {}
void TradeDataSpi::onDataReserved15() {}
void TradeDataSpi::onDataReserved16() {}
void TradeDataSpi::onDataReserved17() {}
void TradeDataSpi::onDataReserved18() {}
void TradeDataSpi::onDataReserved19() {}
void TradeDataSpi::onDataReserved20() {}
void TradeDataSpi::onDataReserved21() {}
void TradeDataSpi::onDataReserved22() {}
void TradeDataSpi::onDataReserved23() {}
void TradeDataSpi::onDataReserved24() {}
void TradeDataSpi::onDataReserved25() {}
void TradeDataSpi::onDataReserved26() {}
void TradeDataSpi::onDataReserved27() {}
void TradeDataSpi::onDataReserved28() {}
void TradeDataSpi::onDataReserved29() {}
void TradeDataSpi::onDataReserved30() {}
void TradeDataSpi::onDataReserved31() {}
void TradeDataSpi::onDataReserved32() {}

TradeEventSpi::~TradeEventSpi() = default;

GeneralEventSpi::~GeneralEventSpi() = default;

IDataMaintainSpi::~IDataMaintainSpi() = default;
void IDataMaintainSpi::onMaintainReserved1() {}
void IDataMaintainSpi::onMaintainReserved2() {}
void IDataMaintainSpi::onMaintainReserved3() {}
void IDataMaintainSpi::onMaintained(int, const ICodeID&, ITimeType, const ResultStatus&) {}
void IDataMaintainSpi::onMaintainReserved5() {}

IndexTradeSpi::~IndexTradeSpi() = default;
void IndexTradeSpi::onIndexReserved1() {}
void IndexTradeSpi::onIndexReserved2() {}
void IndexTradeSpi::onIndexReserved3() {}
void IndexTradeSpi::onIndexReserved4() {}
void IndexTradeSpi::onIndexReserved5() {}
void IndexTradeSpi::onIndexReserved6() {}
void IndexTradeSpi::onIndexReserved7() {}
void IndexTradeSpi::onElementChange(const ICodeID&, std::list<IndexTradeElement>&) {}

}  // namespace orvane
