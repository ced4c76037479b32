#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/trade/AccountBook.h"
#include "platform/trade/TradeOptions.h"

namespace orvane::detail {

/// Which accounts are connected, and when a script changes that. All are at first. Guarded by its
/// owner.
class ConnectionBook {
 public:
  struct Change {
    int64 time = 0;
    std::int32_t account = 0;
    bool isUp = false;
  };

  /// Throws `std::invalid_argument`, in UTF-8, if the script names an unknown account.
  ConnectionBook(const AccountBook& accounts, const std::vector<ConnectionChange>& script);

  bool isUp(std::int32_t account) const;
  /// The time of the next change, as the script gives it; `kUnsetTime` without one.
  int64 nextTime() const;
  /// Whose change comes next; only if there is one.
  std::int32_t nextAccount() const { return script_[next_].account; }
  /// Makes the next change and tells it; changes of one time keep the script's order.
  const Change& makeNext();

  void reset();

 private:
  std::vector<Change> script_;
  std::size_t next_ = 0;
  std::vector<bool> isUp_;
};

}  // namespace orvane::detail
