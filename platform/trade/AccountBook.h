#pragma once

#include <list>
#include <string>
#include <vector>

#include "platform/trade/TradeOptions.h"
#include "shared/AccountRecords.h"

namespace orvane::detail {

/// The accounts of a paper exchange, numbered from 1 in the order of the options. Immutable once
/// it is made; any thread may read it.
class AccountBook {
 public:
  /// Throws `std::invalid_argument`, in UTF-8, that names field and value if one is wrong or two
  /// accounts have one name.
  explicit AccountBook(const std::vector<AccountSpec>& specs);

  const std::vector<TradingAccountID>& all() const { return accounts_; }

  /// The complete record of an account, which is named by its key alone; null if there is none.
  const TradingAccountID* find(const TradingAccountID& account) const;
  const TradingAccountID* find(std::int32_t key) const;
  const TradingAccountID* named(const std::string& account) const;
  /// Whether there is an account of that text and counter type; type 0 means any.
  bool has(const AccountID& id) const;

  /// The connection that an account stands behind.
  static AccountID connectionOf(const TradingAccountID& account);
  /// The accounts of a text (an empty one means all) and a counter type (below 1 means any).
  std::list<AccountLinks> records(const std::string& account, int counterType) const;

 private:
  std::vector<TradingAccountID> accounts_;
};

}  // namespace orvane::detail
