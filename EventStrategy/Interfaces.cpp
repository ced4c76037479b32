// One home for the virtual tables of the library's interfaces.

#include "EventStrategy/IDataSrc.h"
#include "EventStrategy/IEventStrategy.h"
#include "EventStrategy/IGeneralEventSrc.h"
#include "EventStrategy/IIndexSrc.h"
#include "EventStrategy/IQuoteSrc.h"
#include "EventStrategy/ITradeSrc.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"

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
IStrategy::IStrategy() = default;
IStrategy::~IStrategy() = default;
IContext::IContext() = default;
IContext::~IContext() = default;
IRunnerSpi::IRunnerSpi() = default;
IRunnerSpi::~IRunnerSpi() = default;
IRunnerFactory::IRunnerFactory() = default;
IRunnerFactory::IRunnerFactory(const IRunnerFactory&) = default;
IRunnerFactory& IRunnerFactory::operator=(const IRunnerFactory&) = default;
IRunnerFactory::~IRunnerFactory() = default;

}  // namespace orvane
