#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>

#include "platform/reference/Instrument.h"
#include "platform/trade/OrderChecks.h"
#include "platform/trade/SessionRule.h"
#include "platform/trade/TradeOptions.h"

namespace orvane::detail {

/// One code at the exchange: what is known of it, its market as it stands, its orders at work.
struct Contract {
  ContractTerms terms;
  std::optional<SessionRule> sessions;
  Price slippage;

  // Of the run.
  std::optional<Price> mark;
  PriceLimits limits;
  int day = 0;                     ///< The trading day of the last event; 0 before.
  std::list<WorkingOrder> orders;  ///< By arrival, those of one instant in the order they came.
  std::set<Ledger*, bool (*)(const Ledger*, const Ledger*)> ledgers{
      [](const Ledger* a, const Ledger* b) { return a->account() < b->account(); }};
};

/// The codes that an exchange deals in, with their terms. For one thread at a time; a contract
/// stays where it is.
class ContractBook {
 public:
  /// Throws `std::invalid_argument`, in UTF-8, that names the field and the value.
  explicit ContractBook(const TradeOptions& options);

  /// Adds a code or changes its terms; what the instrument does not say, the options do.
  void add(const ICodeID& code, const Instrument& instrument);
  Contract* find(int64 codeId);
  const Contract* find(int64 codeId) const;
  /// As if nothing had been played.
  void reset();

 private:
  Rate marginRate_, feeRate_;
  Money feePerLot_;
  Price slippage_;
  int slippageTicks_;
  std::map<int64, Contract> contracts_;
};

}  // namespace orvane::detail
