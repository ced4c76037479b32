#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/trade/Ledger.h"
#include "platform/trade/TradeOptions.h"

namespace orvane::detail {

/// Holds the orders of create sources against their limits. For one thread at a time.
class RiskGuard {
 public:
  /// Throws `std::invalid_argument`, in UTF-8, that names the field and the value.
  explicit RiskGuard(const std::vector<RiskLimits>& limits);

  /// What a limit may look at beside the order.
  struct Standing {
    Volume held;     ///< On the side that the order opens, in its code.
    Volume opening;  ///< Of opening orders at work on that side.
    Money result;    ///< Profit minus fees of the source.
  };

  bool hasLimits(const std::string& source) const { return limits_.contains(source); }
  /// Why an order that arrives now is not let in. Every order counts for the rate, also one that
  /// is refused.
  std::optional<Refusal> check(const std::string& source, bool opens, Volume volume,
                               const Standing& standing, int64 now);
  /// Forgets the orders it saw.
  void reset();

 private:
  struct Limits {
    std::optional<Volume> maxOrder, maxPosition;
    std::optional<Money> maxLoss;
    int maxOrdersPerSecond = 0;
    std::deque<int64> times;  ///< Of the orders within the last second.
  };
  static std::optional<Refusal> checkRate(Limits& limits, int64 now);

  std::map<std::string, Limits> limits_;
};

}  // namespace orvane::detail
