// One home for the virtual tables of what strategy modules and hosts implement or hold.

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerGlobal.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"

namespace orvane {

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
IRunnerGlobal::IRunnerGlobal() = default;
IRunnerGlobal::IRunnerGlobal(const IRunnerGlobal&) = default;
IRunnerGlobal& IRunnerGlobal::operator=(const IRunnerGlobal&) = default;
IRunnerGlobal::~IRunnerGlobal() = default;

}  // namespace orvane
