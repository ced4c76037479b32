#pragma once

#include <map>
#include <mutex>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"

namespace orvane {

namespace detail {
struct TestAccess;
}

/// The runners by name. The mutex is held while a runner is replaced, stopped or let go; none of
/// these calls back into the factory.
class RunnerFactory final : public IRunnerFactory {
 public:
  std::shared_ptr<IRunner> createRunner(const std::string& name, int mode) override;
  void destroyRunner(const std::string& name) override;

 private:
  friend struct detail::TestAccess;

  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<IRunner>> runners_;
};

}  // namespace orvane
