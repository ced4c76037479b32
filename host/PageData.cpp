#include "host/PageData.h"

#include <QJsonArray>
#include <algorithm>
#include <map>
#include <optional>

#include "host/MonthlyReturns.h"
#include "host/Report.h"
#include "host/ReportJson.h"
#include "host/TradeReport.h"
#include "host/ZoneOffsets.h"
#include "platform/fields/CapitalView.h"
#include "platform/fields/FillView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// Of all curves of a page, and of one.
constexpr std::size_t kMostPointsOfAll = 400'000, kMostPoints = 20'000, kLeastPoints = 500;

/// Ascending times as the first and the steps from each to the next, which are far shorter.
class TimeColumn {
 public:
  void add(int64 utcMs) {
    steps_.append(static_cast<qint64>(utcMs - last_));
    last_ = utcMs;
  }
  operator QJsonValue() const { return steps_; }

 private:
  int64 last_ = 0;
  QJsonArray steps_;
};

QJsonObject candlesObject(const SeriesRecord& series) {
  TimeColumn times;
  QJsonArray open, high, low, close, volume;
  for (const Candle& candle : series.candles->candles()) {
    times.add(candle.time);
    open.append(candle.open);
    high.append(candle.high);
    low.append(candle.low);
    close.append(candle.close);
    volume.append(candle.volume);
  }
  return {{"time", times}, {"open", open},   {"high", high},
          {"low", low},    {"close", close}, {"volume", volume}};
}

/// All series that runners received. Runners that received the same share one.
class SeriesPool {
 public:
  /// The place of a series in the pool, which takes it up if it is new.
  qsizetype placeOf(const SeriesRecord& series) {
    const std::string code = reportedCode(series.code);
    for (const Entry& known : known_)
      if (known.code == code && known.series->frequency == series.frequency &&
          known.series->candles->widthMs() == series.candles->widthMs() &&
          known.series->candles->candles() == series.candles->candles())
        return known.place;
    const CandleSeries& candles = *series.candles;
    list_.append(QJsonObject{{"code", qt(code)},
                             {"kind", series.isTicks ? "ticks" : "bars"},
                             {"frequency", qt(gbkToUtf8(series.frequency))},
                             {"records", count(candles.records())},
                             {"passedOver", count(candles.passedOver())},
                             {"widthMs", static_cast<qint64>(candles.widthMs())},
                             {"candles", candlesObject(series)}});
    known_.push_back({code, &series, list_.size() - 1});
    return list_.size() - 1;
  }

  const QJsonArray& list() const { return list_; }

 private:
  struct Entry {
    std::string code;
    const SeriesRecord* series;
    qsizetype place;
  };
  std::vector<Entry> known_;
  QJsonArray list_;
};

QJsonObject tradesObject(const FillList& fills) {
  TimeColumn times;
  QJsonArray codes, code, isBuy, offset, price, volume, fee, profit, order, grid;
  std::map<std::string, qsizetype> places;
  for (const OrderFill& fill : fills) {
    const FillView view(fill);
    const auto [at, isNew] = places.try_emplace(reportedCode(fill.code), codes.size());
    if (isNew) codes.append(qt(at->first));
    times.add(view.time());
    code.append(at->second);
    isBuy.append(view.isBuy() ? 1 : 0);
    offset.append(qt(offsetName(view.offset())));
    price.append(view.price());
    volume.append(view.volume());
    fee.append(view.fee());
    profit.append(view.profit());
    order.append(static_cast<qint64>(view.orderId()));
    if (fill.source.createSource == kGridOrderSource)
      grid.append(qt(gbkToUtf8(fill.source.sourceText)));
  }
  QJsonObject result{{"time", times},    {"codes", codes}, {"code", code}, {"isBuy", isBuy},
                     {"offset", offset}, {"price", price}, {"fee", fee},   {"volume", volume},
                     {"profit", profit}, {"order", order}};
  if (!grid.isEmpty()) result["grid"] = grid;
  return result;
}

QJsonObject curveObject(const EquityCurve& curve, std::size_t most) {
  TimeColumn times;
  QJsonArray equity;
  for (const EquityPoint& point : thinnedCurve(curve, most)) {
    times.add(point.time);
    equity.append(point.equity);
  }
  return {{"points", count(curve.size())}, {"time", times}, {"equity", equity}};
}

QJsonArray monthsArray(double startBalance, const EquityCurve& curve, const ZoneOffsets& zone) {
  QJsonArray result;
  for (const MonthlyReturn& each : monthlyReturns(startBalance, curve, zone))
    result.append(QJsonArray{each.year, each.month, each.value});
  return result;
}

/// How many orders ended in which way, and what the first rejection said.
QJsonObject ordersObject(const QJsonArray& orders) {
  std::map<QString, qint64> numbers;
  QString rejection;
  for (const auto& each : orders) {
    const QJsonObject order = each.toObject();
    ++numbers[order["status"].toString()];
    if (rejection.isEmpty() && order["status"].toString() == "rejected")
      rejection = order["message"].toString();
  }
  QJsonObject byStatus;
  for (const auto& [status, number] : numbers) byStatus[status] = number;
  return {{"count", orders.size()}, {"byStatus", byStatus}, {"firstRejection", rejection}};
}

/// Pairs of the time from which on an offset from UTC holds, and the offset.
QJsonArray offsetsOf(const std::vector<ZoneOffsets::Span>& spans, int64 from) {
  QJsonArray result;
  for (const ZoneOffsets::Span& span : spans)
    result.append(QJsonArray{static_cast<qint64>(std::max(span.begin, from)),
                             static_cast<qint64>(span.offsetMs)});
  return result;
}

/// Makes the page's data, piece by piece.
class PageMaker {
 public:
  PageMaker(const RunOutcome& outcome, const QJsonObject& report)
      : outcome_(outcome),
        report_(report),
        zone_(outcome.timeZone),
        others_(otherTrading(outcome)) {
    const std::size_t curves = outcome.runners.size() + others_.size() + 1;
    mostPoints_ = std::clamp(kMostPointsOfAll / curves, kLeastPoints, kMostPoints);
  }

  QJsonObject make() {
    QJsonObject data = report_;
    data.remove("timing");
    QJsonArray entries;
    const QJsonArray runners = report_["runners"].toArray();
    for (std::size_t i = 0; i < outcome_.runners.size(); ++i)
      entries.append(
          runnerEntry(outcome_.runners[i], runners[static_cast<qsizetype>(i)].toObject()));
    for (const OtherTrading& other : others_) entries.append(otherEntry(other));
    data.remove("runners");
    data["entries"] = entries;
    data["series"] = pool_.list();
    data["accounts"] = accounts();
    if (data["total"].isObject()) {
      QJsonObject total = data["total"].toObject();
      const EquityCurve curve = totalCurve(outcome_);
      see(curve);
      total["equity"] = curveObject(curve, mostPoints_);
      total["months"] =
          monthsArray(total["figures"].toObject()["startBalance"].toDouble(), curve, zone_);
      data["total"] = total;
    }
    const int64 begin = begin_.value_or(0);
    data["zone"] = offsetsOf(zone_.spansOf(begin, end_.value_or(0)), begin);
    return data;
  }

 private:
  QJsonObject runnerEntry(const RunnerOutcome& runner, QJsonObject entry) {
    entry["kind"] = "runner";
    entry["received"] = entry.take("series");
    QJsonArray series;
    if (runner.record) {
      for (const auto& [key, one] : runner.record->series) {
        if (!one.candles || one.candles->candles().empty()) continue;
        see(one.candles->candles().front().time);
        see(one.candles->candles().back().time);
        series.append(pool_.placeOf(one));
      }
    }
    entry["series"] = series;
    if (runner.trading)
      entry["trading"] = tradingObject(*runner.trading, runner.startBalance,
                                       entry["trading"].toObject(), runner.plan.account);
    return entry;
  }

  QJsonObject otherEntry(const OtherTrading& other) {
    const std::string account = gbkToUtf8(other.account->account.account);
    const std::string owner = other.owner == kGridOrderSource ? "grids" : other.owner;
    QJsonObject reported;
    for (const auto& each : report_["accounts"].toArray())
      if (each.toObject()["name"].toString() == qt(account))
        for (const auto& trading : each.toObject()["otherTrading"].toArray())
          if (trading.toObject()["orderSource"].toString() == qt(gbkToUtf8(other.trading->source)))
            reported = trading.toObject();
    return {{"kind", "other"},
            {"name", qt(owner + " on " + account)},
            {"series", QJsonArray()},
            {"trading",
             tradingObject(*other.trading, CapitalView(other.account->capital).startBalance(),
                           reported, account)}};
  }

  QJsonObject tradingObject(const SourceResult& trading, double startBalance,
                            const QJsonObject& reported, const std::string& account) {
    see(trading.curve);
    return {{"account", qt(account)},
            {"currency", currencyOf(account)},
            {"orderSource", reported["orderSource"]},
            {"startBalance", startBalance},
            {"figures", reported["figures"]},
            {"orders", ordersObject(reported["orders"].toArray())},
            {"months", monthsArray(startBalance, trading.curve, zone_)},
            {"equity", curveObject(trading.curve, mostPoints_)},
            {"trades", tradesObject(trading.fills)}};
  }

  QJsonValue currencyOf(const std::string& account) const {
    for (const auto& each : report_["accounts"].toArray())
      if (each.toObject()["name"].toString() == qt(account)) return each.toObject()["currency"];
    return {};
  }

  /// Without what stands in the entries.
  QJsonArray accounts() const {
    QJsonArray result;
    for (const auto& each : report_["accounts"].toArray()) {
      QJsonObject account = each.toObject();
      account.remove("otherTrading");
      result.append(account);
    }
    return result;
  }

  void see(int64 utcMs) {
    begin_ = std::min(begin_.value_or(utcMs), utcMs);
    end_ = std::max(end_.value_or(utcMs), utcMs);
  }
  void see(const EquityCurve& curve) {
    if (curve.empty()) return;
    see(curve.front().time);
    see(curve.back().time);
  }

  const RunOutcome& outcome_;
  const QJsonObject& report_;
  const ZoneOffsets zone_;
  const std::vector<OtherTrading> others_;
  std::size_t mostPoints_ = kMostPoints;
  SeriesPool pool_;
  std::optional<int64> begin_, end_;  ///< Of all times of the page.
};

}  // namespace

EquityCurve thinnedCurve(const EquityCurve& curve, std::size_t most) {
  if (curve.size() <= most) return curve;
  const std::size_t stretch = 2 * curve.size() / std::max<std::size_t>(most, 1) + 1;
  EquityPoints result = {curve.front()};
  for (std::size_t begin = 1; begin + 1 < curve.size(); begin += stretch) {
    const auto first = curve.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto last =
        curve.begin() + static_cast<std::ptrdiff_t>(std::min(begin + stretch, curve.size() - 1));
    const auto [low, high] = std::minmax_element(
        first, last,
        [](const EquityPoint& a, const EquityPoint& b) { return a.equity < b.equity; });
    result.push_back(low < high ? *low : *high);
    if (low != high) result.push_back(low < high ? *high : *low);
  }
  result.push_back(curve.back());
  return result;
}

QJsonObject pageData(const RunOutcome& outcome, const QJsonObject& report) {
  return PageMaker(outcome, report).make();
}

}  // namespace orvane
