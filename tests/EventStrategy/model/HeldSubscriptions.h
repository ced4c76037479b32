#pragma once

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "shared/TradeRecords.h"

namespace orvane::support {

/// What a trade service holds for one receiver, as its calls tell: entries such as
/// "OrderBySourceName own 5 2", which are the kind, its selector if it has one, the account and, if
/// the kind is by code, the code.
class HeldSubscriptions {
 public:
  /// Takes calls such as "trade.subscribePosition 5 2". Others than subscribes and unsubscribes
  /// change nothing.
  void take(const std::vector<std::string>& calls) {
    for (const std::string& call : calls) {
      if (call.starts_with(kSubscribe)) {
        if (!held_.insert(call.substr(kSubscribe.size())).second) twice_.push_back(call);
      } else if (call.starts_with(kUnsubscribeAccount)) {
        dropAccount(call.substr(kUnsubscribeAccount.size()));
      } else if (call.starts_with(kUnsubscribe)) {
        held_.erase(call.substr(kUnsubscribe.size()));
      }
    }
  }

  const std::set<std::string>& all() const { return held_; }
  /// The subscribes of something that was held already.
  const std::vector<std::string>& twice() const { return twice_; }

  /// Whether a record of an account goes to the receiver; `kind` is "Order" or "Fill".
  bool wants(const std::string& kind, const TradingAccountID& account, const ICodeID& code,
             const SourceId& source) const {
    const std::string ofAccount = " " + std::to_string(account.accountKey);
    if (held_.contains(kind + "BySourceName " + source.createSource + ofAccount) ||
        held_.contains(kind + "BySourceName " + source.createSource + ofAccount + " " +
                       std::to_string(code.id)))
      return true;
    for (int bit = 1; bit <= 128; bit *= 2)
      if ((source.sourceType & bit) != 0 &&
          held_.contains(kind + "ByEventSourceId " + std::to_string(bit) + ofAccount))
        return true;
    return false;
  }

 private:
  inline static const std::string kSubscribe = "trade.subscribe";
  inline static const std::string kUnsubscribe = "trade.unsubscribe";
  inline static const std::string kUnsubscribeAccount = "trade.unsubscribeAccount ";

  void dropAccount(const std::string& account) {
    std::erase_if(held_, [&](const std::string& entry) { return accountOf(entry) == account; });
  }

  static std::string accountOf(const std::string& entry) {
    std::istringstream in(entry);
    std::string kind, word;
    in >> kind >> word;
    const bool hasSelector = kind == "SourcePosition" || kind.find("By") != std::string::npos;
    if (hasSelector) in >> word;
    return word;
  }

  std::set<std::string> held_;
  std::vector<std::string> twice_;
};

}  // namespace orvane::support
