#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "shared/EnvItem.h"

namespace orvane {

class IRunnerSpi;

/// The values that a runner's handle, its context and the strategy share. Owned by
/// `RunnerContext`; any thread. Nothing is called while the mutex is held.
struct RunnerShared {
  explicit RunnerShared(std::string runnerName) : name(std::move(runnerName)) {}

  const std::string name;    ///< Read without the mutex.
  std::mutex mutex;          ///< Guards everything below.
  std::string strategyPath;  ///< GBK.
  std::string orderSource;
  std::shared_ptr<IRunnerSpi> spi;  ///< May be empty.
  std::map<std::string, std::string> envs;
  std::map<std::string, std::map<std::string, EnvItem>> envItems;  ///< By group, then key.

  std::string env(const std::string& key, const std::string& defaultValue) {
    const std::lock_guard lock(mutex);
    const auto it = envs.find(key);
    return it == envs.end() ? defaultValue : it->second;
  }

  std::map<std::string, std::string> allEnvs() {
    const std::lock_guard lock(mutex);
    return envs;
  }

  std::list<EnvItem> itemsOf(const std::string& group) {
    const std::lock_guard lock(mutex);
    std::list<EnvItem> items;
    if (const auto it = envItems.find(group); it != envItems.end())
      for (const auto& [key, item] : it->second) items.push_back(item);
    return items;
  }

  std::shared_ptr<IRunnerSpi> currentSpi() {
    const std::lock_guard lock(mutex);
    return spi;
  }
};

}  // namespace orvane
