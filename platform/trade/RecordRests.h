#pragma once

#include <tuple>

#include "shared/TradeRecords.h"

namespace orvane::detail {

// All members of records that other records hold, for a comparison of everything: their own `==`
// look at keys alone. A member more is a binding too few, which does not compile.

inline auto membersOf(const ICodeID& of) {
  const auto& [id, kind, market, code] = of;
  return std::tie(id, kind, market, code);
}

inline auto membersOf(const SourceId& of) {
  const auto& [sourceType, createSource, sourceText] = of;
  return std::tie(sourceType, createSource, sourceText);
}

inline auto membersOf(const TradingAccountID& of) {
  const auto& [accountKey, second, counterType, fourth, text1, text2, account, currency, infoKey,
               hedgeFlag, eighth, text4] = of;
  return std::tie(accountKey, second, counterType, fourth, text1, text2, account, currency, infoKey,
                  hedgeFlag, eighth, text4);
}

template <typename Member>
bool areSame(const Member& a, const Member& b) {
  return membersOf(a) == membersOf(b);
}

inline bool areSame(const OrderLeg& a, const OrderLeg& b) {
  const auto& [code, values] = a;
  return areSame(code, b.code) && values == b.values;
}

}  // namespace orvane::detail
