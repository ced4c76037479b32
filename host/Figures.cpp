#include "host/Figures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "platform/fields/FillView.h"

namespace orvane {
namespace {

constexpr int64 kDayMs = 86'400'000;
constexpr double kYearDays = 365.25;

int64 dayOf(int64 utcMs) { return utcMs >= 0 ? utcMs / kDayMs : (utcMs - kDayMs + 1) / kDayMs; }

/// Sums of decimals gather binary noise in their last digits; amounts have no more than these.
double withoutNoise(double value) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.15g", value);
  return std::strtod(text, nullptr);
}

/// Both are the doubles nearest to decimals. What their difference has below the step between the
/// doubles there is noise: 1000260.55 - 1000000 is 260.55, and not 260.550000000047.
double differenceOf(double one, double other) {
  const double size = std::max({std::abs(one), std::abs(other), std::abs(one - other)});
  const double step = std::nextafter(size, HUGE_VAL) - size;
  // Each of the three is off by up to half a step; that is less than half of the last decimal.
  const int decimals = std::clamp(static_cast<int>(-std::log10(4 * step)), 0, 40);
  char text[512];
  std::snprintf(text, sizeof(text), "%.*f", decimals, one - other);
  return std::strtod(text, nullptr) + 0.0;  // Which makes a plain zero of a negative one.
}

double meanOf(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

void addReturnFigures(const std::vector<double>& returns, Figures& figures) {
  if (returns.size() < 2) return;
  const double mean = meanOf(returns);
  double squares = 0;
  double downSquares = 0;
  for (const double each : returns) {
    squares += (each - mean) * (each - mean);
    downSquares += std::min(each, 0.0) * std::min(each, 0.0);
  }
  const auto count = static_cast<double>(returns.size());
  const double deviation = std::sqrt(squares / (count - 1));
  const double downDeviation = std::sqrt(downSquares / count);
  const double scale = std::sqrt(kTradingDaysPerYear);
  if (figures.isLongEnoughForAYear()) figures.annualVolatility = deviation * scale;
  if (deviation > 0) figures.sharpe = mean / deviation * scale;
  if (downDeviation > 0) figures.sortino = mean / downDeviation * scale;
}

/// Sums over fills.
struct FillSums {
  double won = 0, lost = 0;
  std::size_t wins = 0, losses = 0;
};

void addFill(const FillView& view, FillSums& sums, Figures& figures) {
  ++figures.fills;
  figures.turnover += view.turnover();
  figures.fees += view.fee();
  if (view.offset() == order::Offset::Open) return;
  ++figures.closings;
  const double net = view.profit() - view.fee();
  if (net > 0) {
    sums.won += net;
    ++sums.wins;
  } else if (net < 0) {
    sums.lost -= net;
    ++sums.losses;
  }
}

void addTradeFigures(const FillLists& lists, Figures& figures) {
  FillSums sums;
  for (const ChunkedList<OrderFill>* const list : lists)
    for (const OrderFill& fill : *list) addFill(FillView(fill), sums, figures);
  const double won = withoutNoise(sums.won), lost = withoutNoise(sums.lost);
  figures.turnover = withoutNoise(figures.turnover);
  figures.fees = withoutNoise(figures.fees);
  if (figures.closings > 0)
    figures.winRate = static_cast<double>(sums.wins) / static_cast<double>(figures.closings);
  if (lost > 0) figures.profitFactor = won / lost;
  if (sums.wins > 0) figures.meanWin = won / static_cast<double>(sums.wins);
  if (sums.losses > 0) figures.meanLoss = -lost / static_cast<double>(sums.losses);
}

std::optional<double> exposureOf(const EquityCurve& curve) {
  if (curve.size() < 2 || curve.back().time <= curve.front().time) return std::nullopt;
  int64 held = 0;
  const EquityPoint* before = nullptr;
  for (const EquityPoint& point : curve) {
    if (before != nullptr && before->exposure > 0) held += point.time - before->time;
    before = &point;
  }
  return static_cast<double>(held) / static_cast<double>(curve.back().time - curve.front().time);
}

}  // namespace

std::vector<double> dailyReturns(double startBalance, const EquityCurve& curve) {
  std::vector<double> closes;
  int64 dayBegin = 0;
  for (const EquityPoint& point : curve) {
    if (!closes.empty() && point.time >= dayBegin && point.time - dayBegin < kDayMs) {
      closes.back() = point.equity;
      continue;
    }
    closes.push_back(point.equity);
    dayBegin = dayOf(point.time) * kDayMs;
  }
  std::vector<double> returns;
  returns.reserve(closes.size());
  double before = startBalance;
  for (const double close : closes) {
    if (before <= 0) return {};
    returns.push_back(close / before - 1);
    before = close;
  }
  return returns;
}

Drawdown deepestDrawdown(double startBalance, const EquityCurve& curve) {
  const bool hasShares = startBalance > 0;
  Drawdown deepest;
  if (hasShares) deepest.share = 0;
  if (curve.empty()) return deepest;
  EquityPoint peak = curve.front();
  double peakEquity = 0, troughEquity = 0;
  double depth = 0;
  for (const EquityPoint& point : curve) {
    if (point.equity >= peak.equity) {
      peak = point;
      continue;
    }
    if (hasShares && peak.equity <= 0) continue;
    const double fall = peak.equity - point.equity;
    // Most falls are nowhere near the deepest, and told apart without the division.
    constexpr double kSurelyLess = 1 - 1e-9;
    if (hasShares && fall < depth * peak.equity * kSurelyLess) continue;
    const double its = hasShares ? fall / peak.equity : fall;
    if (its <= depth) continue;
    depth = its;
    deepest = {0, hasShares ? std::optional(its) : std::nullopt, peak.time, point.time, kUnsetTime};
    peakEquity = peak.equity;
    troughEquity = point.equity;
  }
  if (deepest.troughTime == kUnsetTime) return deepest;
  deepest.amount = differenceOf(peakEquity, troughEquity);
  const auto recovered = std::ranges::find_if(curve, [&](const EquityPoint& point) {
    return point.time > deepest.troughTime && point.equity >= peakEquity;
  });
  if (recovered != curve.end()) deepest.recoveryTime = recovered->time;
  return deepest;
}

Figures makeFigures(double startBalance, const EquityCurve& curve,
                    const ChunkedList<OrderFill>& fills) {
  return makeJointFigures(startBalance, curve, {&fills});
}

Figures makeJointFigures(double startBalance, const EquityCurve& curve, const FillLists& lists) {
  Figures figures;
  figures.startBalance = startBalance;
  figures.finalEquity = curve.empty() ? startBalance : curve.back().equity;
  figures.profit = differenceOf(figures.finalEquity, startBalance);
  if (startBalance > 0) figures.totalReturn = figures.profit / startBalance;
  if (!curve.empty())
    figures.days = static_cast<double>(curve.back().time - curve.front().time) / kDayMs;
  if (startBalance > 0 && figures.finalEquity > 0 && figures.isLongEnoughForAYear())
    figures.annualReturn =
        std::pow(figures.finalEquity / startBalance, kYearDays / figures.days) - 1;
  addReturnFigures(dailyReturns(startBalance, curve), figures);
  figures.drawdown = deepestDrawdown(startBalance, curve);
  addTradeFigures(lists, figures);
  figures.exposure = exposureOf(curve);
  return figures;
}

}  // namespace orvane
