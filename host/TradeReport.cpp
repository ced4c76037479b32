#include "host/TradeReport.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "host/FigureText.h"
#include "host/Report.h"
#include "host/ReportJson.h"
#include "host/TimeArgument.h"
#include "platform/fields/CapitalView.h"
#include "platform/fields/FillView.h"
#include "shared/CodeTables.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// A longer curve is thinned in the JSON report; equity.csv has every point.
constexpr std::size_t kMostCurvePoints = 5000;

constexpr std::array kStatusNames = {"sent",          "working",   "partlyFilled", "filled",
                                     "cancelPending", "cancelled", "rejected",     "expired"};
constexpr std::array kTypeNames = {"limit", "market", "stop"};

QJsonValue numberOrNull(const std::optional<double>& value) {
  return value ? QJsonValue(*value) : QJsonValue();
}

template <std::size_t kCount>
QString nameOf(const std::array<const char*, kCount>& names, std::int32_t number) {
  const auto at = static_cast<std::size_t>(number);
  return number >= 0 && at < kCount ? QString(names[at]) : QString::number(number);
}

/// The condition that an order or a fill of a grid belongs to.
void addGrid(const SourceId& source, QJsonObject& object) {
  if (source.createSource == kGridOrderSource) object["grid"] = qt(gbkToUtf8(source.sourceText));
}

QJsonObject orderObject(const Order& order) {
  const OrderView view(order);
  QJsonObject result{{"id", static_cast<qint64>(order.id)},
                     {"time", timeOrNull(view.insertTime())},
                     {"updated", timeOrNull(view.updateTime())},
                     {"code", qt(reportedCode(order.code))},
                     {"side", qt(sideName(view.direction()))},
                     {"offset", qt(offsetName(view.offset()))},
                     {"type", nameOf(kTypeNames, static_cast<std::int32_t>(view.type()))},
                     {"volume", view.volume()},
                     {"filled", view.filledVolume()},
                     {"status", nameOf(kStatusNames, order.status())}};
  if (view.type() == order::Type::Limit) result["limitPrice"] = view.limitPrice();
  if (view.type() == order::Type::Stop) result["stopPrice"] = view.stopPrice();
  if (view.filledVolume() > 0) result["meanPrice"] = view.meanFillPrice();
  if (!view.message().empty()) result["message"] = qt(gbkToUtf8(view.message()));
  addGrid(order.source, result);
  return result;
}

QJsonObject tradeObject(const OrderFill& fill) {
  const FillView view(fill);
  QJsonObject result{{"time", timeOrNull(view.time())},
                     {"code", qt(reportedCode(fill.code))},
                     {"side", qt(sideName(view.direction()))},
                     {"offset", qt(offsetName(view.offset()))},
                     {"price", view.price()},
                     {"volume", view.volume()},
                     {"fee", view.fee()},
                     {"profit", view.profit()},
                     {"order", static_cast<qint64>(view.orderId())}};
  addGrid(fill.source, result);
  return result;
}

QJsonObject curveObject(const EquityCurve& curve) {
  const std::size_t step = curve.size() / kMostCurvePoints + 1;
  QJsonArray times, equities;
  std::size_t i = 0;
  for (const EquityPoint& point : curve) {
    const bool isLast = &point == &curve.back();
    if (i++ % step != 0 && !isLast) continue;
    times.append(timeOrNull(point.time));
    equities.append(point.equity);
  }
  return {{"points", static_cast<qint64>(curve.size())},
          {"every", static_cast<qint64>(step)},
          {"time", times},
          {"equity", equities}};
}

/// Why a span has no figures of a year; null where it has them.
QJsonValue annualNote(const Figures& figures) {
  if (figures.isLongEnoughForAYear()) return {};
  // Rounded down: 27.96 are not yet 28.
  const double days = std::floor(figures.days * 10) / 10;
  const std::string have = days < 1 ? std::string("less than a calendar day is too little")
                                    : fmt::format("{:.1f} calendar days are too few", days);
  return qt(fmt::format("{} for a figure of a year, which takes {:.0f}", have, kLeastDaysOfAYear));
}

QJsonObject figuresObject(const Figures& figures) {
  const Drawdown& fall = figures.drawdown;
  const QJsonObject drawdown{{"amount", fall.amount},
                             {"share", numberOrNull(fall.share)},
                             {"peak", timeOrNull(fall.peakTime)},
                             {"trough", timeOrNull(fall.troughTime)},
                             {"recovery", timeOrNull(fall.recoveryTime)}};
  return {{"startBalance", figures.startBalance},
          {"finalEquity", figures.finalEquity},
          {"profit", figures.profit},
          {"return", numberOrNull(figures.totalReturn)},
          {"days", figures.days},
          {"annualNote", annualNote(figures)},
          {"annualReturn", numberOrNull(figures.annualReturn)},
          {"annualVolatility", numberOrNull(figures.annualVolatility)},
          {"sharpe", numberOrNull(figures.sharpe)},
          {"sortino", numberOrNull(figures.sortino)},
          {"maxDrawdown", drawdown},
          {"fills", static_cast<qint64>(figures.fills)},
          {"closings", static_cast<qint64>(figures.closings)},
          {"winRate", numberOrNull(figures.winRate)},
          {"profitFactor", numberOrNull(figures.profitFactor)},
          {"meanWin", numberOrNull(figures.meanWin)},
          {"meanLoss", numberOrNull(figures.meanLoss)},
          {"turnover", figures.turnover},
          {"fees", figures.fees},
          {"exposure", numberOrNull(figures.exposure)}};
}

/// Its name; null where the account has none.
QJsonValue currencyOf(const AccountResult& account) {
  const std::int32_t currency = account.account.currency;
  const auto at = static_cast<std::size_t>(currency);
  if (currency == TradingAccountID().currency || at >= currencyNames.size() ||
      *currencyNames[at] == 0)
    return {};
  return currencyNames[at];
}

void addFillsOf(const AccountResult& account, FillLists& lists) {
  for (const SourceResult& source : account.sources) lists.push_back(&source.fills);
}

/// The sum of curves; each holds its last value until its next point.
EquityCurve sumOf(const std::vector<AccountResult>& accounts) {
  struct Step {
    std::size_t account;
    EquityPoint point;
  };
  std::map<int64, std::vector<Step>> steps;
  for (std::size_t i = 0; i < accounts.size(); ++i)
    for (const EquityPoint& point : accounts[i].curve) steps[point.time].push_back({i, point});
  std::vector<EquityPoint> now(accounts.size());
  for (std::size_t i = 0; i < accounts.size(); ++i)
    now[i].equity = CapitalView(accounts[i].capital).startBalance();
  EquityPoints sum;
  for (const auto& [time, changes] : steps) {
    for (const Step& change : changes) now[change.account] = change.point;
    EquityPoint total{time, 0, 0};
    for (const EquityPoint& each : now) {
      total.equity += each.equity;
      total.exposure += each.exposure;
    }
    sum.push_back(total);
  }
  return sum;
}

QJsonObject capitalObject(const TradingAccount& capital) {
  const CapitalView view(capital);
  return {{"balance", view.balance()},
          {"available", view.available()},
          {"frozen", view.frozen()},
          {"margin", view.margin()},
          {"fee", view.fee()},
          {"closedProfit", view.closedProfit()},
          {"floatingProfit", view.floatingProfit()},
          {"equity", view.equity()}};
}

std::string ratio(const std::optional<double>& value) {
  return value ? roundedText(*value, 2) : "-";
}
std::string percent(const std::optional<double>& share) {
  return share ? percentText(*share) : "-";
}

}  // namespace

std::string sideName(order::Direction direction) {
  return direction == order::Direction::Buy ? "buy" : "sell";
}

std::string offsetName(order::Offset offset) {
  switch (offset) {
    case order::Offset::Open:
      return "open";
    case order::Offset::Close:
      return "close";
    case order::Offset::CloseToday:
      return "closeToday";
  }
  return std::to_string(static_cast<int>(offset));
}

namespace {

QJsonObject sourceObject(const SourceResult& trading, double startBalance) {
  QJsonArray orders, trades;
  for (const Order& order : trading.orders) orders.append(orderObject(order));
  for (const OrderFill& fill : trading.fills) trades.append(tradeObject(fill));
  return {{"orderSource", qt(gbkToUtf8(trading.source))},
          {"orders", orders},
          {"trades", trades},
          {"equity", curveObject(trading.curve)},
          {"figures", figuresObject(makeFigures(startBalance, trading.curve, trading.fills))}};
}

/// Whether the trading is what a runner did on its own account.
bool isOwn(const RunOutcome& outcome, const std::string& account, const std::string& source) {
  return std::ranges::any_of(outcome.runners, [&](const RunnerOutcome& runner) {
    return runner.plan.account == account && runner.plan.orderSource == source;
  });
}

double startBalanceOf(const AccountResult& account) {
  return CapitalView(account.capital).startBalance();
}

}  // namespace

QJsonValue tradingReport(const RunnerOutcome& runner) {
  if (!runner.trading) return {};
  QJsonObject result = sourceObject(*runner.trading, runner.startBalance);
  result["account"] = qt(runner.plan.account);
  return result;
}

std::vector<OtherTrading> otherTrading(const RunOutcome& outcome) {
  std::vector<OtherTrading> result;
  for (const AccountResult& account : *outcome.accounts) {
    for (const SourceResult& trading : account.sources) {
      const std::string source = gbkToUtf8(trading.source);
      if (isOwn(outcome, gbkToUtf8(account.account.account), source)) continue;
      OtherTrading other{&account, &trading, source};
      for (const RunnerOutcome& runner : outcome.runners)
        if (runner.plan.orderSource == source) other.owner = runner.plan.name;
      result.push_back(std::move(other));
    }
  }
  return result;
}

QJsonArray accountsReport(const RunOutcome& outcome) {
  QJsonArray result;
  const std::vector<OtherTrading> others = otherTrading(outcome);
  for (const AccountResult& account : *outcome.accounts) {
    const double start = startBalanceOf(account);
    QJsonArray itsOthers;
    for (const OtherTrading& other : others)
      if (other.account == &account) itsOthers.append(sourceObject(*other.trading, start));
    FillLists fills;
    addFillsOf(account, fills);
    result.append(
        QJsonObject{{"name", qt(gbkToUtf8(account.account.account))},
                    {"otherTrading", itsOthers},
                    {"currency", currencyOf(account)},
                    {"startBalance", start},
                    {"final", capitalObject(account.capital)},
                    {"figures", figuresObject(makeJointFigures(start, account.curve, fills))}});
  }
  return result;
}

QJsonValue totalReport(const RunOutcome& outcome) {
  if (outcome.accounts->empty()) return {};
  const QJsonValue currency = currencyOf(outcome.accounts->front());
  double start = 0;
  FillLists fills;
  for (const AccountResult& account : *outcome.accounts) {
    if (currencyOf(account) != currency) return {};
    start += CapitalView(account.capital).startBalance();
    addFillsOf(account, fills);
  }
  return QJsonObject{
      {"currency", currency},
      {"accounts", static_cast<qint64>(outcome.accounts->size())},
      {"figures", figuresObject(makeJointFigures(start, sumOf(*outcome.accounts), fills))}};
}

EquityCurve totalCurve(const RunOutcome& outcome) {
  return totalReport(outcome).isObject() ? sumOf(*outcome.accounts) : EquityCurve();
}

namespace {

/// How many orders of a source were rejected, and why the first was; empty if none was.
std::string rejectionsOf(const std::string& name, const SourceResult& trading) {
  std::size_t count = 0;
  std::string first;
  for (const Order& order : trading.orders) {
    const OrderView view(order);
    if (view.status() != order::Status::Rejected) continue;
    if (count++ == 0) first = gbkToUtf8(view.message());
  }
  if (count == 0) return {};
  return fmt::format("{}: {} of {} orders rejected, the first: {}\n", name, count,
                     trading.orders.size(), first);
}

}  // namespace

std::string figuresTable(const RunOutcome& outcome) {
  std::string rows, rejections;
  bool hasShort = false;
  const auto addRow = [&](const std::string& name, const Figures& figures) {
    const bool isShort = !figures.isLongEnoughForAYear();
    hasShort = hasShort || isShort;
    const auto yearly = [isShort](const std::optional<double>& value) {
      return ratio(isShort ? std::nullopt : value);
    };
    rows += fmt::format("{:<16} {:>7} {:>14.2f} {:>9} {:>9} {:>7} {:>7} {:>8} {:>7} {:>7}\n", name,
                        figures.fills, figures.finalEquity, percent(figures.totalReturn),
                        percent(figures.annualReturn), yearly(figures.sharpe),
                        yearly(figures.sortino), percent(figures.drawdown.share),
                        percent(figures.winRate), ratio(figures.profitFactor));
  };
  std::size_t traders = 0;
  for (const RunnerOutcome& runner : outcome.runners) {
    if (!runner.trading) continue;
    ++traders;
    addRow(runner.plan.name,
           makeFigures(runner.startBalance, runner.trading->curve, runner.trading->fills));
    rejections += rejectionsOf(runner.plan.name, *runner.trading);
  }
  for (const OtherTrading& other : otherTrading(outcome)) {
    ++traders;
    const std::string name = other.owner == kGridOrderSource ? "grids" : other.owner;
    addRow(name + " on " + gbkToUtf8(other.account->account.account),
           makeFigures(startBalanceOf(*other.account), other.trading->curve, other.trading->fills));
  }
  if (traders == 0) return {};
  if (traders > 1 && totalReport(outcome).isObject()) {
    double start = 0;
    FillLists fills;
    for (const AccountResult& account : *outcome.accounts) {
      start += CapitalView(account.capital).startBalance();
      addFillsOf(account, fills);
    }
    addRow("all accounts", makeJointFigures(start, sumOf(*outcome.accounts), fills));
  }
  return fmt::format("\n{:<16} {:>7} {:>14} {:>9} {:>9} {:>7} {:>7} {:>8} {:>7} {:>7}\n", "trading",
                     "fills", "final equity", "return", "annual", "sharpe", "sortino", "max dd",
                     "wins", "pf") +
         rows +
         (hasShort ? fmt::format("annual, sharpe and sortino take {:.0f} calendar days\n",
                                 kLeastDaysOfAYear)
                   : "") +
         rejections;
}

}  // namespace orvane
