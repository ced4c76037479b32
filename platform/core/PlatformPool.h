#pragma once

#include "platform/core/WorkerPool.h"
#include "services/Common/ThreadPoolBase.h"

namespace orvane::detail {

/// What `ThreadPoolBase::create` hands out: a face of the process's pool, which outlives it.
class PlatformPool final : public ThreadPoolBase {
 public:
  void configure(const ThreadPoolConfig& config) override;
  ResultStatus start() override;
  ResultStatus addTask(std::function<void()> task) override;

  /// The number of threads that the present platform wants, whatever the library asks for; 0
  /// leaves it to the library. Holds for pools that are started already, too.
  static void overrideThreads(int count);

 private:
  int threadCount_ = 1;
};

}  // namespace orvane::detail
