#pragma once

#include <map>

#include "platform/trade/Ledger.h"

namespace orvane::detail {

/// What a market has left: one thing for all accounts, or one for each of them, which begins as it
/// was for all. For one thread at a time.
template <typename What>
class PerAccount {
 public:
  PerAccount(What whole, bool isShared) : whole_(std::move(whole)), isShared_(isShared) {}

  What& of(const Ledger* account) {
    return isShared_ ? whole_ : own_.try_emplace(account, whole_).first->second;
  }
  /// As it was before anybody took anything, where it is not shared.
  const What& whole() const { return whole_; }

 private:
  What whole_;
  const bool isShared_;
  std::map<const Ledger*, What> own_;
};

}  // namespace orvane::detail
