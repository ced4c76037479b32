#pragma once

#include <array>
#include <cstddef>

namespace orvane {

/// The call-backs of a strategy. The values stand in digests, so they never change.
enum class CallKind : int {
  Start = 0,
  Update = 1,
  Quote = 2,
  TickSeriesById = 3,
  BarSeriesById = 4,
  TickSeries = 5,
  BarSeries = 6,
  BarProgressById = 7,
  BarProgress = 8,
  AccountStatus = 9,
  Capital = 10,
  Position = 11,
  StrategyPosition = 12,
  Order = 13,
  Fill = 14,
  DicSnapshot = 15,
  Dic = 16,
  DicDeleted = 17,
  Timer = 18,
  Stop = 19,
};

inline constexpr std::size_t kCallKinds = 20;

/// The names of the call-backs, by their value.
inline constexpr std::array<const char*, kCallKinds> kCallNames = {"onStart",
                                                                   "onUpdate",
                                                                   "onQuote",
                                                                   "onTickSeriesById",
                                                                   "onBarSeriesById",
                                                                   "onTickSeries",
                                                                   "onBarSeries",
                                                                   "onBarProgressById",
                                                                   "onBarProgress",
                                                                   "onAccountStatus",
                                                                   "onCapital",
                                                                   "onPosition",
                                                                   "onStrategyPosition",
                                                                   "onOrder",
                                                                   "onFill",
                                                                   "onDicSnapshot",
                                                                   "onDic",
                                                                   "onDicDeleted",
                                                                   "onTimer",
                                                                   "onStop"};

}  // namespace orvane
