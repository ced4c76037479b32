#pragma once

#include <functional>
#include <memory>
#include <string>

#include "EventStrategy/QuoteGetSyncSpi.h"
#include "EventStrategy/QuoteSrc.h"
#include "tests/EventStrategy/LibraryTest.h"

namespace orvane::support {

inline OVDataRange rangeOf(int64 codeId, int64 term = 60000) {
  OVDataRange range;
  range.code = codeOf(codeId, "C" + std::to_string(codeId));
  range.term = term;
  return range;
}

/// A quote source whose service keeps every spi that it was given, and a wall clock that moves when
/// it is looked at. Request ids count up from 1.
class SyncFetchTest : public LibraryTest {
 protected:
  SyncFetchTest() {
    platform.calls.clear();
    platform.onSysNow = [this] {
      if (++clockReads > 1) platform.sysClock.advance(clockStep);
      if (const auto at = clockHooks.find(clockReads); at != clockHooks.end()) at->second();
    };
  }
  ~SyncFetchTest() override { platform.onSysNow = nullptr; }

  std::shared_ptr<QuoteSpi> spiOf(int requestId) const {
    return platform.routes.realtime.requestSpi(requestId);
  }
  std::shared_ptr<detail::QuoteGetSyncSpi> syncSpiOf(int requestId) const {
    return std::dynamic_pointer_cast<detail::QuoteGetSyncSpi>(spiOf(requestId));
  }

  /// Runs inside every request for bars.
  void onRequest(std::function<void(int requestId)> hook) {
    platform.calls.onCall("quote.subscribeBars", [this, hook = std::move(hook)] {
      hook(platform.routes.lastRequestId());
    });
  }
  /// Every request is answered with one bar from within the request.
  void answerAtOnce() {
    onRequest([this](int id) { spiOf(id)->onKLine(id, {barOf(1)}, {}, kLastBatchFlag); });
  }
  /// Runs before the wall clock's n-th reading, counted from 1; the first one notes the start.
  void beforeClockRead(int n, std::function<void()> hook) { clockHooks[n] = std::move(hook); }

  static void expectDeaf(const detail::QuoteGetSyncSpi& spi) {
    EXPECT_FALSE(TestAccess::hasBarsCallback(spi));
    EXPECT_FALSE(TestAccess::hasTicksCallback(spi));
    EXPECT_FALSE(TestAccess::hasMaintainCallback(spi));
  }
  void expectDeaf(int requestId) const { expectDeaf(*syncSpiOf(requestId)); }

  int clockReads = 0;
  int64 clockStep = 0;  ///< By how much the wall clock moves before each reading but the first.
  std::map<int, std::function<void()>> clockHooks;
  std::shared_ptr<QuoteSrc> src = std::make_shared<QuoteSrc>(0);
};

}  // namespace orvane::support
