#pragma once

#include <bit>

#include "shared/AccountRecords.h"

namespace orvane {

/// The positions in `block1` of a `TradingAccount`, as the embedded platform fills them. All are
/// doubles in the account's currency. At any time, exactly:
///
///     Balance   = StartBalance + ClosedProfit - Fee
///     Equity    = Balance + FloatingProfit
///     Available = Equity - Margin - Frozen
namespace capital {

enum Block1 : std::size_t {
  StartBalance = 0,
  Balance = 1,
  Available = 2,
  Frozen = 3,  ///< Held back by opening orders at work: margin and fees.
  Margin = 4,  ///< Of the positions held.
  Fee = 5,     ///< Since the start.
  ClosedProfit = 6,
  FloatingProfit = 7,
  Equity = 8,
};

}  // namespace capital

/// Reads an account's capital by name. Holds a reference; make it where you use it.
class CapitalView {
 public:
  explicit CapitalView(const TradingAccount& record) : record_(record) {}

  double startBalance() const { return number(capital::StartBalance); }
  double balance() const { return number(capital::Balance); }
  double available() const { return number(capital::Available); }
  double frozen() const { return number(capital::Frozen); }
  double margin() const { return number(capital::Margin); }
  double fee() const { return number(capital::Fee); }
  double closedProfit() const { return number(capital::ClosedProfit); }
  double floatingProfit() const { return number(capital::FloatingProfit); }
  double equity() const { return number(capital::Equity); }
  int64 time() const { return record_.value; }  ///< UTC milliseconds of the last change.

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(record_.block1[at]); }

  const TradingAccount& record_;
};

}  // namespace orvane
