// One home for the virtual tables of the notify interfaces, and their empty bodies.

#include "EventStrategy/DataNotify.h"
#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/GeneralEventNotify.h"
#include "EventStrategy/IEvent.h"
#include "EventStrategy/IndexNotify.h"
#include "EventStrategy/QuoteNotify.h"

namespace orvane {

IEvent::~IEvent() = default;

QuoteNotify::QuoteNotify() = default;
QuoteNotify::QuoteNotify(const QuoteNotify&) = default;
QuoteNotify& QuoteNotify::operator=(const QuoteNotify&) = default;
QuoteNotify::~QuoteNotify() = default;
void QuoteNotify::onQuote(const IDepthMarketData&) {}
void QuoteNotify::onKLine(int, const ICodeID&, const std::vector<IKLine>&, const ResultStatus&,
                          int) {}
void QuoteNotify::onKLineProgress(int, const ICodeID&, const KLineProgress&) {}
void QuoteNotify::onTick(int, const ICodeID&, const std::vector<IDepthMarketData>&,
                         const ResultStatus&, int) {}
void QuoteNotify::onRollover(int, const ICodeID&, const RolloverCoefficient&) {}

EventTradeNotify::EventTradeNotify() = default;
EventTradeNotify::EventTradeNotify(const EventTradeNotify&) = default;
EventTradeNotify& EventTradeNotify::operator=(const EventTradeNotify&) = default;
EventTradeNotify::~EventTradeNotify() = default;
void EventTradeNotify::onRtnPosition(const Position&) {}
void EventTradeNotify::onRtnStrategyPosition(const SourcePosition&) {}
void EventTradeNotify::onRtnOrder(const Order&) {}
void EventTradeNotify::onRtnTrade(const OrderFill&) {}
void EventTradeNotify::onRspStatus(const AccountID&, const AccountStatusInfo&) {}
void EventTradeNotify::onRtnCapital(const TradingAccount&) {}

DataNotify::DataNotify() = default;
DataNotify::DataNotify(const DataNotify&) = default;
DataNotify& DataNotify::operator=(const DataNotify&) = default;
DataNotify::~DataNotify() = default;
void DataNotify::onDataSnapshot(const std::string&, const std::string&, const Record&) {}
void DataNotify::onProgress(int, int, int) {}
void DataNotify::onData(int, const std::list<Record>&, DataValueType, const ResultStatus&, int,
                        int64) {}
void DataNotify::onDeleteData(int, int64, int64, int64) {}

GeneralEventNotify::GeneralEventNotify() = default;
GeneralEventNotify::GeneralEventNotify(const GeneralEventNotify&) = default;
GeneralEventNotify& GeneralEventNotify::operator=(const GeneralEventNotify&) = default;
GeneralEventNotify::~GeneralEventNotify() = default;
void GeneralEventNotify::onGeneralEvent(const std::string&,
                                        const std::map<std::string, std::string>&,
                                        const std::string&) {}

IndexNotify::IndexNotify() = default;
IndexNotify::IndexNotify(const IndexNotify&) = default;
IndexNotify& IndexNotify::operator=(const IndexNotify&) = default;
IndexNotify::~IndexNotify() = default;
void IndexNotify::onElementChange(const ICodeID&, std::list<IndexTradeElement>&) {}

}  // namespace orvane
