#pragma once

#include <list>
#include <optional>
#include <vector>

#include "platform/trade/TradeResults.h"

namespace orvane {

/// Trading days of a year, for figures that are made of daily returns.
inline constexpr double kTradingDaysPerYear = 252;

/// Of shorter spans nothing is told by the year: a good week is no year of good weeks.
inline constexpr double kLeastDaysOfAYear = 28;

/// The deepest fall of an equity curve from a peak before it.
struct Drawdown {
  double amount = 0;
  std::optional<double> share;  ///< Of the peak; none where the account began without money.
  int64 peakTime = kUnsetTime, troughTime = kUnsetTime;
  int64 recoveryTime = kUnsetTime;  ///< The first time at or above the peak again; unset if never.
};

/// The usual figures of a run. Each is defined in docs/report.md; those that the data do not allow
/// are empty.
struct Figures {
  double startBalance = 0, finalEquity = 0;
  double profit = 0;
  double days = 0;  ///< From the first point of the curve to the last.
  /// Of a span that is too short for a year, annual return and volatility are empty. Sharpe and
  /// Sortino are not, since they rank runs of one span; but people are not shown them.
  std::optional<double> totalReturn, annualReturn, annualVolatility, sharpe, sortino;
  Drawdown drawdown;
  std::size_t fills = 0, closings = 0;
  std::optional<double> winRate, profitFactor, meanWin, meanLoss;
  double turnover = 0, fees = 0;
  std::optional<double> exposure;  ///< Share of the time with a position.

  bool isLongEnoughForAYear() const { return days >= kLeastDaysOfAYear; }
};

Figures makeFigures(double startBalance, const EquityCurve& curve, const FillList& fills);

/// The fills of several sources, one source's after another's. None is null.
using FillLists = std::vector<const FillList*>;
/// The figures of several sources together.
Figures makeJointFigures(double startBalance, const EquityCurve& curve, const FillLists& lists);

/// Returns between the last equities of the UTC days of a curve, the first against the start.
std::vector<double> dailyReturns(double startBalance, const EquityCurve& curve);

/// The deepest one as a share of its peak; without a start balance, as an amount.
Drawdown deepestDrawdown(double startBalance, const EquityCurve& curve);

}  // namespace orvane
