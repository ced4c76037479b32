#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <mutex>

#include "tests/support/HostThread.h"

namespace orvane::support {

/// Expects each of the operations, in its turn, to wait for the mutex.
inline void expectToWait(std::mutex& mutex,
                         std::initializer_list<std::function<void()>> operations) {
  int number = 0;
  for (const std::function<void()>& operation : operations) {
    ASSERT_TRUE(mutex.try_lock());
    const HostThread host(operation);
    EXPECT_TRUE(host.awaitSleep()) << "operation " << number++;
    mutex.unlock();
  }
}

}  // namespace orvane::support
