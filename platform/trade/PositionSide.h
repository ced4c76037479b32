#pragma once

#include <deque>
#include <optional>

#include "platform/trade/ContractTerms.h"

namespace orvane::detail {

/// One side, long or short, of what one create source holds in one code: lots in the order they
/// were opened, and their sums. For one thread at a time.
class PositionSide {
 public:
  explicit PositionSide(bool isLong) : isLong_(isLong) {}

  Volume volume() const { return volume_; }
  Volume today() const { return today_; }
  Volume yesterday() const { return volume_ - today_; }
  Volume frozen() const { return frozen_; }
  Money margin() const { return margin_; }
  Money openTurnover() const { return openTurnover_; }
  bool isEmpty() const { return lots_.empty(); }

  /// How much can still be closed: in all, or of today's part.
  Volume closable(bool ofToday) const;
  void freeze(Volume volume, bool ofToday);
  void unfreeze(Volume volume, bool ofToday);

  void open(const ContractTerms& terms, Price price, Volume volume);
  /// Closes the oldest volume, or the oldest of today's. There is enough of it. Returns what it
  /// was opened for.
  Money close(const ContractTerms& terms, Volume volume, bool ofToday);
  /// Today's part becomes yesterday's.
  void beginDay();
  /// All lots become one at this price, with the margin of it. Returns the profit that they made.
  Money settle(const ContractTerms& terms, Price price);
  /// The profit at this price.
  Money floating(const ContractTerms& terms, Price price) const;
  /// The same where all of it is worth that; it holds something.
  Money floatingAt(Money value) const {
    return isLong_ ? value - openTurnover_ : openTurnover_ - value;
  }

 private:
  struct Lot {
    Price price;
    Volume volume;
    Money turnover;
    Money margin;
    bool isToday = true;
  };
  Lot lotOf(const ContractTerms& terms, Price price, Volume volume, bool isToday) const;
  void take(const Lot& lot);
  void drop(const Lot& lot);

  bool isLong_;
  std::deque<Lot> lots_;
  Volume volume_, today_, frozen_, frozenToday_;
  Money openTurnover_, margin_;
};

}  // namespace orvane::detail
