// One home for the virtual tables of the library's interfaces.

#include "EventStrategy/IDataSrc.h"
#include "EventStrategy/IEventStrategy.h"
#include "EventStrategy/IGeneralEventSrc.h"
#include "EventStrategy/IIndexSrc.h"
#include "EventStrategy/IQuoteSrc.h"
#include "EventStrategy/ITradeSrc.h"

namespace orvane {

IEventStrategy::IEventStrategy() = default;
IEventStrategy::~IEventStrategy() = default;
IQuoteSrc::IQuoteSrc() = default;
IQuoteSrc::~IQuoteSrc() = default;
ITradeSrc::ITradeSrc() = default;
ITradeSrc::~ITradeSrc() = default;
IDataSrc::IDataSrc() = default;
IDataSrc::~IDataSrc() = default;
IGeneralEventSrc::IGeneralEventSrc() = default;
IGeneralEventSrc::~IGeneralEventSrc() = default;
IIndexSrc::IIndexSrc() = default;
IIndexSrc::~IIndexSrc() = default;

}  // namespace orvane
