#pragma once

#include <atomic>

#include "services/Common/IServiceRouter.h"
#include "tests/support/FakeCodeService.h"
#include "tests/support/FakeDataService.h"
#include "tests/support/FakeRealtimeQuoteService.h"
#include "tests/support/FakeTradeService.h"

namespace orvane::support {

/// The way to the fakes. Request ids count up from 1.
class FakeRouter final : public IServiceRouter, public IQuoteHub {
 public:
  explicit FakeRouter(CallLog& calls) : realtime(calls), codes(calls), data(calls), trade(calls) {}

  FakeRealtimeQuoteService realtime;
  FakeCodeService codes;
  FakeDataService data;
  FakeTradeService trade;
  bool hasRealtime = true;  ///< Whether the platform has market data at all.
  bool hasTrade = true;     ///< Whether it has a trade side.

  IQuoteHub* quoteHub() override { return this; }
  ITradeService* tradeService() override { return hasTrade ? &trade : nullptr; }
  int nextRequestId() override { return ++lastRequestId_; }

  IRealtimeQuoteService* realtimeQuoteService() override {
    return hasRealtime ? &realtime : nullptr;
  }
  ICodeService* codeService() override { return &codes; }
  IDataService* dataService() override { return &data; }

  int lastRequestId() const { return lastRequestId_; }

 private:
  std::atomic<int> lastRequestId_{0};
};

}  // namespace orvane::support
