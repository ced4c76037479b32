#pragma once

#include <benchmark/benchmark.h>

#include <vector>

#include "platform/fields/QuoteView.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane::bench {

/// A strategy, seen through a virtual call.
class BareStrategy {
 public:
  virtual ~BareStrategy() = default;
  virtual void take(const IDepthMarketData& quote) = 0;
  virtual void take(const std::vector<IKLine>& bars) = 0;
  virtual void take(const Order& order) = 0;
  virtual void take(const OrderFill& fill) = 0;
  virtual void take(const Position& position) = 0;
  virtual void take(const SourcePosition& position) = 0;
  virtual void take(const TradingAccount& capital) = 0;
};

/// Looks at each record, and does no more.
class BareCounting : public BareStrategy {
 public:
  void take(const IDepthMarketData& quote) override { see(quote.block1[quote::Time]); }
  void take(const std::vector<IKLine>& bars) override { see(bars.front().words[0]); }
  void take(const Order& order) override { see(order.id); }
  void take(const OrderFill& fill) override { see(fill.id); }
  void take(const Position& position) override { see(position.block1[0]); }
  void take(const SourcePosition& position) override { see(position.block1[0]); }
  void take(const TradingAccount& capital) override { see(capital.block1[0]); }

 private:
  void see(Word value) { benchmark::DoNotOptimize(sum_ += value); }

  Word sum_ = 0;
};

}  // namespace orvane::bench
