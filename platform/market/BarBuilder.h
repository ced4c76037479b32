#pragma once

#include <optional>
#include <vector>

#include "platform/market/BucketRule.h"
#include "platform/market/DecimalSum.h"
#include "platform/market/Series.h"

namespace orvane::detail {

/// Puts bars of a longer period together, from shorter bars or from trades. It is fed in the order
/// of the feed and gives out each bar once it is complete; a bar still open is nowhere seen.
/// What it gives depends on what it was fed alone. Not for use by two threads at once.
class BarBuilder {
 public:
  explicit BarBuilder(BucketRule rule) : rule_(std::move(rule)) {}

  /// Adds a shorter bar; what it completes is appended to `out`.
  void addBar(const IKLine& bar, std::vector<IKLine>& out);

  /// A trade, or a change of the open interest alone if `price` is 0.
  struct Trade {
    int64 time = 0;
    int tradingDay = 0;
    double price = 0;
    double volume = 0;
    double turnover = 0;
    double openInterest = 0;
  };
  /// Adds a trade. A bar that it completes has its end at or before the trade.
  void addTrade(const Trade& trade, std::vector<IKLine>& out);

  /// Completes the open bar if its interval ended at or before `time`.
  void closeAt(int64 time, std::vector<IKLine>& out);

  /// The end of the open bar's interval; the highest time without one.
  int64 openEnd() const { return open_ ? end_ : kUnsetTime; }
  /// The end of the last complete bar; the lowest time without one.
  int64 lastEnd() const { return lastEnd_; }

 private:
  void enter(int64 begin, int tradingDay, std::vector<IKLine>& out);
  void close(std::vector<IKLine>& out);
  void addPrices(double open, double high, double low, double close);

  BucketRule rule_;
  bool open_ = false;
  int64 begin_ = 0;
  int64 end_ = 0;
  int64 key_ = 0;
  int tradingDay_ = 0;
  int64 lastEnd_ = -kUnsetTime;  ///< End of the bar before; intervals never overlap.

  bool priced_ = false;
  bool fromAsk_ = false;  ///< The prices are the ask's, since no bid has come yet.
  int flags_ = 0;
  double openPrice_ = 0, high_ = 0, low_ = 0, closePrice_ = 0;
  double openInterest_ = 0, bidSize_ = 0, askSize_ = 0, askClose_ = 0;
  DecimalSum volume_, turnover_;
};

}  // namespace orvane::detail
