#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "tests/shared/Iconv.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualPool.h"
#include "tests/support/TestAccess.h"

namespace orvane::support {

using detail::TestAccess;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Runs `work` on a thread of its own and waits for its end: what a service's thread does.
template <typename Work>
void onAnotherThread(Work&& work) {
  std::thread(std::forward<Work>(work)).join();
}

/// What `work` threw, if it threw.
template <typename Work>
std::optional<std::string> thrownBy(Work&& work) {
  try {
    std::forward<Work>(work)();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

inline ICodeID codeOf(int64 id, const std::string& text = "C") { return {id, 0, 1, text}; }

inline IDepthMarketData quoteOf(int64 codeId, Word mark = 0) {
  IDepthMarketData quote;
  quote.code = codeOf(codeId);
  quote.block1[0] = mark;
  return quote;
}

inline IKLine barOf(Word mark) {
  IKLine bar;
  bar.words[0] = mark;
  return bar;
}

/// A platform of fakes, every log line, and a pool that runs by hand.
class LibraryTest : public ::testing::Test {
 protected:
  LibraryTest() { pool.reset(); }
  ~LibraryTest() override {
    pool.runAll();
    pool.reset();
  }

  /// Whether the line was logged exactly once.
  bool loggedOnce(const std::string& logger, const std::string& level, const std::string& text) {
    return logs.count(logger, level, text) == 1;
  }

  FakePlatform platform;
  LogCapture logs;
  ManualPool& pool = ManualPool::shared();
};

}  // namespace orvane::support
