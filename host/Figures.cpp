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
  for (const FillList* const list : lists)
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

// What is asked of all points of a curve, in their order.

/// How long something was held.
class HeldTime {
 public:
  void take(const EquityPoint& point) {
    if (wasHeld_) held_ += point.time - before_;
    wasHeld_ = point.exposure > 0;
    before_ = point.time;
  }
  std::optional<double> shareOf(const EquityCurve& curve) const {
    if (curve.size() < 2 || curve.back().time <= curve.front().time) return std::nullopt;
    return static_cast<double>(held_) / static_cast<double>(curve.back().time - curve.front().time);
  }

 private:
  int64 held_ = 0, before_ = 0;
  bool wasHeld_ = false;
};

/// The last equities of the UTC days.
class DayCloses {
 public:
  void take(const EquityPoint& point) {
    if (!closes_.empty() && point.time >= dayBegin_ && point.time - dayBegin_ < kDayMs) {
      closes_.back() = point.equity;
      return;
    }
    closes_.push_back(point.equity);
    dayBegin_ = dayOf(point.time) * kDayMs;
  }
  std::vector<double> returns(double startBalance) const {
    std::vector<double> returns;
    returns.reserve(closes_.size());
    double before = startBalance;
    for (const double close : closes_) {
      if (before <= 0) return {};
      returns.push_back(close / before - 1);
      before = close;
    }
    return returns;
  }

 private:
  std::vector<double> closes_;
  int64 dayBegin_ = 0;
};

class DrawdownSearch {
 public:
  explicit DrawdownSearch(double startBalance) : hasShares_(startBalance > 0) {
    if (hasShares_) deepest_.share = 0;
  }
  void take(const EquityPoint& point) {
    const std::size_t at = seen_++;
    if (at == 0 || point.equity >= peak_.equity) {
      peak_ = point;
      return;
    }
    if (hasShares_ && peak_.equity <= 0) return;
    const double fall = peak_.equity - point.equity;
    // Most falls are nowhere near the deepest, and told apart without the division.
    constexpr double kSurelyLess = 1 - 1e-9;
    if (hasShares_ && fall < depth_ * peak_.equity * kSurelyLess) return;
    const double its = hasShares_ ? fall / peak_.equity : fall;
    if (its <= depth_) return;
    depth_ = its;
    deepest_ = {0, hasShares_ ? std::optional(its) : std::nullopt, peak_.time, point.time,
                kUnsetTime};
    peakEquity_ = peak_.equity;
    troughEquity_ = point.equity;
    trough_ = at;
  }
  /// Of the curve whose points were taken.
  Drawdown deepestOf(const EquityCurve& curve) const {
    Drawdown deepest = deepest_;
    if (deepest.troughTime == kUnsetTime) return deepest;
    deepest.amount = differenceOf(peakEquity_, troughEquity_);
    const auto recovered =
        std::find_if(curve.begin() + static_cast<std::ptrdiff_t>(trough_), curve.end(),
                     [&](const EquityPoint& point) {
                       return point.time > deepest.troughTime && point.equity >= peakEquity_;
                     });
    if (recovered != curve.end()) deepest.recoveryTime = recovered->time;
    return deepest;
  }

 private:
  bool hasShares_;
  std::size_t seen_ = 0, trough_ = 0;
  EquityPoint peak_;
  Drawdown deepest_;
  double peakEquity_ = 0, troughEquity_ = 0;
  double depth_ = 0;
};

}  // namespace

std::vector<double> dailyReturns(double startBalance, const EquityCurve& curve) {
  DayCloses closes;
  for (const EquityPoint& point : curve) closes.take(point);
  return closes.returns(startBalance);
}

Drawdown deepestDrawdown(double startBalance, const EquityCurve& curve) {
  DrawdownSearch search(startBalance);
  for (const EquityPoint& point : curve) search.take(point);
  return search.deepestOf(curve);
}

Figures makeFigures(double startBalance, const EquityCurve& curve, const FillList& fills) {
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
  // Together: a long curve is more than the caches hold.
  HeldTime held;
  DayCloses closes;
  DrawdownSearch search(startBalance);
  for (const EquityPoint& point : curve) {
    held.take(point);
    closes.take(point);
    search.take(point);
  }
  addReturnFigures(closes.returns(startBalance), figures);
  figures.drawdown = search.deepestOf(curve);
  addTradeFigures(lists, figures);
  figures.exposure = held.shareOf(curve);
  return figures;
}

}  // namespace orvane
