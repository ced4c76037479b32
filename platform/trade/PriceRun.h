#pragma once

#include "platform/trade/Amounts.h"
#include "platform/trade/PositionSide.h"

namespace orvane::detail {

/// What an account is worth at one price of a code after the other, while nothing else of it
/// changes: it holds one side of the code, from one create source. Good as long as the account's
/// book stays as it is. For one thread at a time.
class PriceRun {
 public:
  struct Start {
    const PositionSide* side = nullptr;
    Multiplier multiplier;
    Price price;   ///< The last one.
    Money value;   ///< Of the side, at that price.
    Money most;    ///< What it may be worth; see `Ledger::mark`.
    Money others;  ///< What the account is worth without the side's floating profit.
  };

  PriceRun() = default;  ///< Of no side: of no use.
  explicit PriceRun(const Start& start)
      : at_(start),
        volume_(toDouble(start.side->volume())),
        multiplier_(toDouble(start.multiplier)) {}

  /// Takes the next price, as `Ledger::mark` would.
  void take(Price price) {
    const auto value = turnoverOf(price, at_.side->volume(), at_.multiplier);
    if (!value || *value > at_.most) return;
    at_.price = price;
    at_.value = *value;
  }

  /// The last price that was taken.
  Price price() const { return at_.price; }
  /// `Ledger::equity` and `Ledger::exposureOf` of the code, once it has the same price.
  Money equity() const { return at_.others + at_.side->floatingAt(at_.value); }
  double exposure() const { return volume_ * toDouble(at_.price) * multiplier_; }

 private:
  Start at_;
  double volume_ = 0, multiplier_ = 0;
};

}  // namespace orvane::detail
