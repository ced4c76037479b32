#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::detail {

/// What a column of a file holds.
enum class Role : std::uint8_t {
  None,  ///< Not used.
  DateTime,
  OpenTime,
  CloseTime,
  Date,
  TradeDate,
  ActionDate,
  TradingDay,
  Time,
  Millis,
  Code,
  Market,
  Open,
  High,
  Low,
  Close,
  LastPrice,
  Volume,
  TotalVolume,
  Turnover,
  TotalTurnover,
  Amount,
  OpenInterest,
  PreClose,
  PreSettle,
  Settle,
  UpperLimit,
  LowerLimit,
  BidPrice,
  BidSize,
  AskPrice,
  AskSize,  ///< With a level.
  BidOpen,
  BidHigh,
  BidLow,
  BidClose,
  AskOpen,
  AskHigh,
  AskLow,
  AskClose,
  Until,  ///< The moment a bar ends at, exclusive.
  Period,
  TimeZone,
};

/// A role and, for the ladder, the level as it was written: 0 means none was.
struct NamedRole {
  Role role = Role::None;
  int level = 0;
  bool hasLevel = false;
  friend bool operator==(const NamedRole&, const NamedRole&) = default;
};

/// The role of a column by its name, in whatever style it is written: "Open", "<OPEN>",
/// "open_price", "开盘价". Nothing if the name is not known.
std::optional<NamedRole> roleOfName(std::string_view name);

/// The role of a name of ours, as descriptions use them, such as "bidPrice1"; "-" is `None`. Other
/// known names are taken as well.
std::optional<NamedRole> roleOfOurName(std::string_view name);

/// Our name of a role.
std::string ourName(Role role, int level = 0);

/// All our names.
std::vector<std::string> ourNames();

/// The nearest of some names to a mistyped one.
std::string nearestName(std::string_view name, const std::vector<std::string>& known);

}  // namespace orvane::detail
