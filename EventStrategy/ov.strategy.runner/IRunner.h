#pragma once

#include <QJsonObject>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "shared/EnvItem.h"

namespace orvane {

class IRunnerSpi;

/// One named runner, as a host holds it: made by `IRunnerFactory::createRunner`, owned by its
/// holders. Any thread may call any operation; none blocks on the strategy. Many runs can follow
/// one another on one runner.
///
/// `start`, `update`, `stop` and `reset4PlayBack` only queue: what comes of them is told through
/// `IRunnerSpi::onStatus`.
class IRunner {
 public:
  IRunner() = default;
  IRunner(const IRunner&) = delete;
  IRunner& operator=(const IRunner&) = delete;
  virtual ~IRunner() = default;

  /// The name it was made under.
  virtual std::string name() = 0;

  /// The path of the strategy module, GBK. Read when a start is carried out.
  virtual void setStrategyPath(const std::string& path) = 0;

  /// The host's call-back; empty for none.
  virtual void setSpi(const std::shared_ptr<IRunnerSpi>& spi) = 0;

  /// The create source of this runner's orders.
  virtual void setOrderSource(const std::string& source) = 0;

  /// Begins a run: loads the module and calls `onStart` with `params`. Ignored by a runner that
  /// runs already.
  virtual void start(const QJsonObject& params) = 0;

  /// Calls `onUpdate` with `params`; dropped if nothing runs or a stop is under way.
  virtual void update(const QJsonObject& params) = 0;

  /// Discards pending events and ends the run.
  virtual void stop() = 0;

  /// Ends the run silently and begins a new one with a new strategy object; ignored once a stop
  /// was asked for.
  virtual void reset4PlayBack(const QJsonObject& params) = 0;

  /// Stores values in the run's environment, without a call of the spi.
  virtual void setEnvs(const std::map<std::string, std::string>& values) = 0;
  /// The same for records.
  virtual void setEnvItems(const std::list<EnvItem>& items) = 0;
};

}  // namespace orvane
