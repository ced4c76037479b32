#include "platform/events/PublicationChecks.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "platform/market/files/MomentText.h"
#include "platform/market/files/NumberParser.h"
#include "platform/trade/Amounts.h"

namespace orvane::detail {
namespace {

constexpr int64 kEarliest = -5'364'662'400'000;  ///< 1800-01-01.
constexpr int64 kLatest = 7'258'118'400'000;     ///< 2200-01-01.
constexpr double kMostMoney = 1e16;

/// How much longer than its period a bar of whole days may last: an hour where the clocks change,
/// and since a month counts as 30 days and a year as 365, what those are short of.
constexpr int64 slackOf(int64 periodMs) {
  if (periodMs < 24 * kHourMs) return 0;
  return kHourMs + (periodMs < 28 * 24 * kHourMs ? 0 : periodMs / 20);
}

/// Collects the first fault.
class Check {
 public:
  bool found() const { return !fault_.empty(); }
  std::string take() { return std::move(fault_); }

  void refuse(const std::string& name, double value, const char* what) {
    if (fault_.empty()) fault_ = name + " " + textOf(value) + " " + what;
  }
  void price(const std::string& name, double value) {
    if (!priceOf(value)) refuse(name, value, "is not a price");
  }
  void volume(const std::string& name, double value) {
    if (!(value >= 0) || !volumeOf(value)) refuse(name, value, "is not a volume");
  }
  void money(const std::string& name, double value) {
    if (!(std::abs(value) <= kMostMoney)) refuse(name, value, "is not an amount");
  }
  void order(const char* high, double highValue, const char* low, double lowValue) {
    if (fault_.empty() && highValue < lowValue)
      fault_ =
          std::string(high) + " " + textOf(highValue) + " is below " + low + " " + textOf(lowValue);
  }
  void time(const char* name, int64 value) {
    if (fault_.empty() && (value < kEarliest || value >= kLatest))
      fault_ = std::string(name) + " " + std::to_string(value) + " is not a time";
  }
  void tradingDay(int value) {
    std::int64_t day = 0;
    if (fault_.empty() && value != 0 && !dayOfNumber(value, day))
      fault_ = "trading day " + std::to_string(value) + " is not a date";
  }
  void when(bool wrong, const std::string& fault) {
    if (fault_.empty() && wrong) fault_ = fault;
  }

 private:
  static std::string textOf(double value) {
    return std::isfinite(value) ? decimalText(value) : std::isnan(value) ? "NaN" : "infinity";
  }

  std::string fault_;
};

}  // namespace

std::string faultOf(const IKLine& bar, int64 periodMs, int64 now) {
  const KLineView view(bar);
  Check check;
  check.time("begin time", view.beginTime());
  check.time("end time", view.endTime());
  // Words that are no times may differ by more than a word holds.
  if (check.found()) return check.take();
  check.when(view.beginTime() >= view.endTime(), "begin time " + std::to_string(view.beginTime()) +
                                                     " is not before end time " +
                                                     std::to_string(view.endTime()));
  check.when(view.endTime() - view.beginTime() > periodMs + slackOf(periodMs),
             "it lasts longer than its period of " + std::to_string(periodMs) + " ms");
  check.when(view.endTime() > now, "it has not ended yet");
  check.price("open", view.open());
  check.price("high", view.high());
  check.price("low", view.low());
  check.price("close", view.close());
  check.order("high", view.high(), "open", view.open());
  check.order("high", view.high(), "close", view.close());
  check.order("open", view.open(), "low", view.low());
  check.order("close", view.close(), "low", view.low());
  if (view.isQuoteBar()) {
    check.volume("bid size", view.bidSize());
    check.volume("ask size", view.askSize());
  } else {
    check.volume("volume", view.volume());
    check.money("turnover", view.turnover());
  }
  check.volume("open interest", view.openInterest());
  check.price("ask close", view.askClose());
  check.tradingDay(view.tradingDay());
  return check.take();
}

std::string faultOf(const IDepthMarketData& tick, int64 now) {
  static constexpr std::pair<const char*, double (QuoteView::*)() const> kPrices[] = {
      {"last price", &QuoteView::lastPrice},
      {"open", &QuoteView::open},
      {"high", &QuoteView::high},
      {"low", &QuoteView::low},
      {"previous close", &QuoteView::preClose},
      {"previous settlement", &QuoteView::preSettle},
      {"settlement", &QuoteView::settle},
      {"upper limit", &QuoteView::upperLimit},
      {"lower limit", &QuoteView::lowerLimit}};
  const QuoteView view(tick);
  Check check;
  check.time("time", view.time());
  check.when(view.time() > now, "it lies after now");
  for (const auto& [name, price] : kPrices) check.price(name, (view.*price)());
  if (view.high() != 0 && view.low() != 0) check.order("high", view.high(), "low", view.low());
  check.volume("total volume", view.totalVolume());
  check.volume("volume", view.volume());
  check.money("total turnover", view.totalTurnover());
  check.money("turnover", view.turnover());
  check.volume("open interest", view.openInterest());
  for (const int levels : {view.bidLevels(), view.askLevels()})
    check.when(levels < 0 || levels > 10, std::to_string(levels) + " levels are none");
  for (std::size_t level = 0; level < tick.levels.size(); ++level) {
    const std::string number = std::to_string(level + 1);
    check.price("bid price " + number, view.bidPrice(level));
    check.price("ask price " + number, view.askPrice(level));
    check.volume("bid size " + number, view.bidSize(level));
    check.volume("ask size " + number, view.askSize(level));
  }
  check.tradingDay(view.tradingDay());
  return check.take();
}

}  // namespace orvane::detail
