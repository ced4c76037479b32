#pragma once

#include <memory>
#include <string>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "shared/Export.h"

namespace orvane {

/// The library's front door: one per process, made on first use and never destroyed. Any thread
/// may call it. A platform must be installed (`installPlatform`) before the first runner is made.
class ORVANE_API IRunnerFactory {
 public:
  IRunnerFactory();
  IRunnerFactory(const IRunnerFactory&);
  IRunnerFactory& operator=(const IRunnerFactory&);
  virtual ~IRunnerFactory();

  /// The one of the process.
  static IRunnerFactory* instance();

  /// A new runner under `name`. A runner that stood under that name leaves the factory and is not
  /// stopped. Bit 0 of `mode` asks for server behaviour.
  virtual std::shared_ptr<IRunner> createRunner(const std::string& name, int mode) = 0;

  /// Cuts the runner's spi, stops it and forgets it. An unknown name is only logged.
  virtual void destroyRunner(const std::string& name) = 0;
};

}  // namespace orvane
