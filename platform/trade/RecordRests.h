#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
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

// One number of many members; equal for equal ones.

inline std::size_t hashOf(const std::string& text) noexcept {
  return text.empty() ? 0 : std::hash<std::string_view>()(text);
}
template <std::integral Number>
std::size_t hashOf(Number number) noexcept {
  return static_cast<std::size_t>(number);
}
template <typename... Members>
std::size_t hashOf(const Members&... members) noexcept;
template <typename Members>
requires requires(const Members& of) { membersOf(of); }
std::size_t hashOf(const Members& of) noexcept {
  return std::apply([](const auto&... members) { return hashOf(members...); }, membersOf(of));
}
template <typename... Members>
std::size_t hashOf(const Members&... members) noexcept {
  std::size_t all = 0;
  ((all = (all ^ hashOf(members)) * 0x9E3779B97F4A7C15U, all ^= all >> 32), ...);
  return all;
}

}  // namespace orvane::detail
