#pragma once

#include <functional>
#include <string>

#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// The settings of a pool. `idleTimeoutMs` and `name` are the pool's own business.
struct ThreadPoolConfig {
  int threadCount = 1;
  int idleTimeoutMs = 0;
  std::string name;
};

/// A pool of threads that runs tasks, each once, in no promised order.
///
/// Made by `create` and owned by the caller; the library makes one for the process and never
/// destroys it. `addTask` may be called from any thread, also from inside a task.
class ORVANE_API ThreadPoolBase {
 public:
  ThreadPoolBase() = default;
  virtual ~ThreadPoolBase();
  ThreadPoolBase(const ThreadPoolBase&) = delete;
  ThreadPoolBase& operator=(const ThreadPoolBase&) = delete;

  /// A new pool of the installed platform, not started.
  static ThreadPoolBase* create();

  /// Takes the settings; call it before `start`.
  virtual void configure(const ThreadPoolConfig& config) = 0;

  virtual ResultStatus start() = 0;

  /// Runs `task` once, later, on a thread of the pool or one that helps it: never inside this
  /// call, since callers hold locks. A task must not throw.
  virtual ResultStatus addTask(std::function<void()> task) = 0;
};

}  // namespace orvane
