#include "host/MonthlyReturns.h"

#include <chrono>

namespace orvane {

std::vector<MonthlyReturn> monthlyReturns(double startBalance, const EquityCurve& curve,
                                          const ZoneOffsets& zone) {
  using namespace std::chrono;
  std::vector<MonthlyReturn> result;
  double before = startBalance;
  double last = startBalance;
  for (const EquityPoint& point : curve) {
    const year_month_day day{
        floor<days>(sys_time<milliseconds>(milliseconds(zone.toLocal(point.time))))};
    const int year = static_cast<int>(day.year());
    const int month = static_cast<int>(static_cast<unsigned>(day.month()));
    if (result.empty() || result.back().year != year || result.back().month != month) {
      before = last;
      if (before <= 0) return result;
      result.push_back({year, month, 0});
    }
    last = point.equity;
    result.back().value = last / before - 1;
  }
  return result;
}

}  // namespace orvane
