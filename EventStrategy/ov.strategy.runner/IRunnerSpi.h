#pragma once

#include <QJsonObject>
#include <list>
#include <map>
#include <string>

#include "shared/EnvItem.h"
#include "shared/Export.h"

namespace orvane {

/// The status of a run, as `IRunnerSpi::onStatus` tells it.
enum RunnerStatusCode : int {
  RunnerStopped = 0,
  RunnerError = 1,
  RunnerFinished = 2,
  RunnerRunning = 3,
};

/// What a host hears of its runner. Implemented by the host and given to `IRunner::setSpi`, which
/// shares its ownership. No lock is held during a call, so a call may use the runner.
class ORVANE_API IRunnerSpi {
 public:
  IRunnerSpi();
  IRunnerSpi(const IRunnerSpi&) = delete;
  IRunnerSpi& operator=(const IRunnerSpi&) = delete;
  virtual ~IRunnerSpi();

  /// The run's status changed; a `RunnerStatusCode` and, for an error, its text (GBK). Called on
  /// a pool thread.
  virtual void onStatus(int status, const std::string& message) = 0;

  /// What the strategy passed to `IContext::notifySpi`. This one and the two below come on the
  /// thread that called the context, as a rule a pool thread.
  virtual void onNotify(const QJsonObject& argument) = 0;
  /// Values that the strategy told through `IContext::setEnvs`.
  virtual void onEnvs(const std::map<std::string, std::string>& values) = 0;
  /// Records that it told through `IContext::setEnvItems`.
  virtual void onEnvItems(const std::list<EnvItem>& items) = 0;
};

}  // namespace orvane
