#pragma once

#include <memory>

#include "EventStrategy/ov.strategy.runner/IRunner.h"

namespace orvane {

class RunnerContext;

namespace detail {
struct RunnerAccess;
}

/// The host's handle on a run: owns the context and forwards to it. The sources are wired to the
/// context exactly as long as the handle lives.
class Runner final : public IRunner {
 public:
  Runner(const std::string& name, int mode);
  ~Runner() override;

  std::string name() override;
  void setStrategyPath(const std::string& path) override;
  void setSpi(const std::shared_ptr<IRunnerSpi>& spi) override;
  void setOrderSource(const std::string& source) override;
  void start(const QJsonObject& params) override;
  void update(const QJsonObject& params) override;
  void stop() override;
  void reset4PlayBack(const QJsonObject& params) override;
  void setEnvs(const std::map<std::string, std::string>& values) override;
  void setEnvItems(const std::list<EnvItem>& items) override;

 private:
  friend struct detail::RunnerAccess;

  std::shared_ptr<RunnerContext> context_;
};

}  // namespace orvane
