#include "EventStrategy/ov.strategy.runner/RunnerFactory.h"

#include <atomic>

#include "EventStrategy/Log.h"
#include "EventStrategy/ov.strategy.runner/Runner.h"

namespace orvane {
namespace {

/// Later calls come here without the guard of the function-local static.
std::atomic<IRunnerFactory*> cachedFactory{nullptr};

}  // namespace

IRunnerFactory* IRunnerFactory::instance() {
  if (IRunnerFactory* factory = cachedFactory.load(std::memory_order_acquire)) return factory;
  static IRunnerFactory* const made = new RunnerFactory;
  cachedFactory.store(made, std::memory_order_release);
  return made;
}

std::shared_ptr<IRunner> RunnerFactory::createRunner(const std::string& name, int mode) {
  ORVANE_LOG(runner, Debug, name << ",create Runner");
  std::shared_ptr<IRunner> runner = std::make_shared<Runner>(name, mode);
  const std::lock_guard lock(mutex_);
  runners_[name] = runner;
  return runner;
}

void RunnerFactory::destroyRunner(const std::string& name) {
  ORVANE_LOG(runner, Debug, name << ",destroy Runner");
  const std::lock_guard lock(mutex_);
  const auto it = runners_.find(name);
  if (it == runners_.end()) return;
  it->second->setSpi({});
  it->second->stop();
  runners_.erase(it);
}

}  // namespace orvane
