// The queries of the trade service, and the results of a run.

#include <algorithm>
#include <map>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "platform/trade/TradeService.h"
#include "shared/CodeTables.h"
#include "shared/GbkLiteral.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kNotConnected;
using status::kNotThere;
/// Bits of a history query's mask.
constexpr std::int32_t kHistoryOrders = 64;
constexpr std::int32_t kHistoryFills = 128;

const auto kAll = [](const auto& /*rest*/, const auto& /*part*/) { return true; };

auto ofCode(const ICodeID& code) {
  return [id = code.id](const auto& rest, const auto& /*part*/) { return rest.code.id == id; };
}

}  // namespace

ResultStatus TradeService::checkLocked(const TradingAccountID& account) const {
  if (state_.accounts.find(account) == nullptr) return {kNotThere, "账号不存在"_gbk};
  if (!state_.connections.isUp(account.accountKey))
    return {kNotConnected, statusMessage(kNotConnected)};
  return {};
}

template <typename Answer>
ResultStatus TradeService::ask(const TradingAccountID& account, Answer answer) const {
  const std::lock_guard lock(state_.mutex);
  ResultStatus status = checkLocked(account);
  if (status.code == 0 && !answer()) status = {kNotThere, statusMessage(kNotThere)};
  return status;
}

ResultStatus TradeService::getPosition(const TradingAccountID& account, const ICodeID& code,
                                       Position& position) {
  return ask(account, [&] {
    Position found;
    if (!state_.exchange().ledger(account.accountKey)->positionRecord(code.id, found)) return false;
    position = std::move(found);
    return true;
  });
}

ResultStatus TradeService::getPositions(const TradingAccountID& account,
                                        std::list<Position>& positions, int /*mask*/) {
  return ask(account, [&] {
    const Ledger* ledger = state_.exchange().ledger(account.accountKey);
    for (const int64 codeId : ledger->codes())
      ledger->positionRecord(codeId, positions.emplace_back());
    return true;
  });
}

ResultStatus TradeService::getSourcePosition(const TradingAccountID& account,
                                             const std::string& source, const ICodeID& code,
                                             SourcePosition& position) {
  return ask(account, [&] {
    const Ledger& ledger = *state_.exchange().ledger(account.accountKey);
    SourcePosition found;
    if (!ledger.sourcePositionRecord(code.id, source, found)) return false;
    position = std::move(found);
    return true;
  });
}

ResultStatus TradeService::sourcePositions(const TradingAccountID& account,
                                           std::list<SourcePosition>& positions) {
  return ask(account, [&] {
    const Ledger* ledger = state_.exchange().ledger(account.accountKey);
    for (const int64 codeId : ledger->codes())
      for (const std::string& source : ledger->sources(codeId))
        ledger->sourcePositionRecord(codeId, source, positions.emplace_back());
    return true;
  });
}

ResultStatus TradeService::getCapital(const TradingAccountID& account, TradingAccount& capital) {
  return ask(account, [&] {
    capital = state_.exchange().ledger(account.accountKey)->capitalRecord(now_());
    return true;
  });
}

ResultStatus TradeService::getOrder(int64 orderId, Order& order) {
  const std::lock_guard lock(state_.mutex);
  std::optional<Order> known = state_.store.order(orderId);
  if (!known) known = state_.inbox.waitingOrder(orderId);
  if (!known) return {kNotThere, statusMessage(kNotThere)};
  ResultStatus status = checkLocked(known->account);
  if (status.code == 0) order = *std::move(known);
  return status;
}

ResultStatus TradeService::ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                        std::list<Order>& orders) {
  return ask(account, [&] {
    state_.store.orders(account.accountKey, ofCode(code), orders);
    return true;
  });
}

ResultStatus TradeService::openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                            std::list<Order>& orders) {
  return ask(account, [&] {
    state_.store.openOrders(account.accountKey, ofCode(code), orders);
    return true;
  });
}

ResultStatus TradeService::openOrdersOfAccount(const TradingAccountID& account,
                                               std::list<Order>& orders) {
  return ask(account, [&] {
    state_.store.openOrders(account.accountKey, kAll, orders);
    return true;
  });
}

ResultStatus TradeService::ordersByKey(const TradingAccountID& account, const std::string& key,
                                       std::list<Order>& orders) {
  return ask(account, [&] {
    const auto hasKey = [&](const Order& /*rest*/, const OrderPart& part) {
      return part.orderRef == key || part.key == key;
    };
    state_.store.orders(account.accountKey, hasKey, orders);
    return true;
  });
}

ResultStatus TradeService::ordersOfAccount(const TradingAccountID& account,
                                           std::list<Order>& orders) {
  return ask(account, [&] {
    state_.store.orders(account.accountKey, kAll, orders);
    return true;
  });
}

ResultStatus TradeService::fillQueryForward(int64 orderId, std::list<OrderFill>& fills) {
  const std::lock_guard lock(state_.mutex);
  const std::optional<Order> order = state_.store.order(orderId);
  if (!order)
    return state_.inbox.waitingOrder(orderId) ? ResultStatus()
                                              : ResultStatus(kNotThere, statusMessage(kNotThere));
  ResultStatus status = checkLocked(order->account);
  if (status.code == 0) state_.store.fillsOfOrder(orderId, fills);
  return status;
}

ResultStatus TradeService::fillsByCode(const TradingAccountID& account, const ICodeID& code,
                                       std::list<OrderFill>& fills) {
  return ask(account, [&] {
    state_.store.fills(account.accountKey, ofCode(code), fills);
    return true;
  });
}

ResultStatus TradeService::fillsOfAccount(const TradingAccountID& account,
                                          std::list<OrderFill>& fills) {
  return ask(account, [&] {
    state_.store.fills(account.accountKey, kAll, fills);
    return true;
  });
}

int TradeService::tradingAccountCount() { return static_cast<int>(state_.accounts.all().size()); }

std::vector<TradingAccountID> TradeService::tradingAccounts() { return state_.accounts.all(); }

std::list<AccountLinks> TradeService::accountRecords(const std::string& account, int counterType) {
  return state_.accounts.records(account, counterType);
}

// History.

ResultStatus TradeService::queryHistory(const HistoryQuery& query,
                                        std::list<HistoryDayRecord>& days) {
  const std::lock_guard lock(state_.mutex);
  const std::vector<TradingAccountID>& accounts =
      query.accounts.empty() ? state_.accounts.all() : query.accounts;
  for (const TradingAccountID& account : accounts)
    if (ResultStatus status = checkLocked(account); status.code != 0) return status;
  for (const TradingAccountID& account : accounts)
    days.push_back(historyOf(*state_.accounts.find(account), query));
  return {};
}

HistoryDayRecord TradeService::historyOf(const TradingAccountID& account,
                                         const HistoryQuery& query) const {
  const auto wanted = [&](const auto& rest, int64 time) {
    const auto isCode = [&](const ICodeID& code) { return code.id == rest.code.id; };
    const auto isSource = [&](const std::string& source) {
      return source == rest.source.createSource;
    };
    return time >= query.begin && time <= query.end &&
           (query.codes.empty() || std::any_of(query.codes.begin(), query.codes.end(), isCode)) &&
           (query.sources.empty() ||
            std::any_of(query.sources.begin(), query.sources.end(), isSource));
  };
  const bool wantsOrders = (query.mask & kHistoryOrders) != 0;
  const bool wantsFills = (query.mask & kHistoryFills) != 0;
  const bool wantsDays = !wantsOrders && !wantsFills;
  std::map<std::int32_t, HistoryDayEntry> byDay;
  std::list<Order> orders;
  std::list<OrderFill> fills;
  if (wantsOrders || wantsDays)
    state_.store.orders(
        account.accountKey,
        [&](const Order& rest, const OrderPart& part) { return wanted(rest, part.insertTime()); },
        orders);
  if (wantsFills || wantsDays)
    state_.store.fills(
        account.accountKey,
        [&](const OrderFill& rest, const FillPart& part) { return wanted(rest, part.fillTime()); },
        fills);
  for (const Order& order : orders) {
    // An order that met no market event yet has no trading day.
    const std::int32_t tradingDay = OrderView(order).tradingDay();
    const std::int32_t day = tradingDay != 0 ? tradingDay : dayOf_(OrderView(order).insertTime());
    HistoryDayEntry& entry = byDay[day];
    if (wantsOrders) entry.orders.push_back(order);
  }
  for (const OrderFill& fill : fills) {
    HistoryDayEntry& entry = byDay[FillView(fill).tradingDay()];
    if (wantsFills) entry.fills.push_back(fill);
  }
  HistoryDayRecord record;
  record.account = account;
  for (auto& [day, entry] : byDay) {
    entry.date = day;
    record.entries.push_back(std::move(entry));
  }
  return record;
}

// Results.

/// Each account's result, with what `own` makes of its curves and of its sources' trades.
template <typename Own>
std::vector<AccountResult> TradeService::collect(Own own) const {
  std::vector<AccountResult> all;
  all.reserve(state_.accounts.all().size());
  const auto [exchange, equity] = state_.books();
  for (const TradingAccountID& account : state_.accounts.all()) {
    AccountResult result;
    result.account = account;
    result.capital = exchange.ledger(account.accountKey)->capitalRecord(now_());
    result.curve = own.curve(equity.account(account.accountKey));
    for (auto& [name, trades] : own.sources(account.accountKey)) {
      SourceResult& source = result.sources.emplace_back();
      source.source = name;
      source.orders = std::move(trades.orders);
      source.fills = std::move(trades.fills);
      const auto curve = equity.sources().find({account.accountKey, name});
      if (curve == equity.sources().end()) continue;
      source.curve = curve->second.own ? own.curve(*curve->second.own) : result.curve;
    }
    all.push_back(std::move(result));
  }
  return all;
}

std::vector<AccountResult> TradeService::results() const {
  struct Copying {
    const TradeStore& store;
    EquityCurve curve(const EquityBook::Curve& from) const { return from.points; }
    TradeStore::BySource sources(std::int32_t account) const { return store.sources(account); }
  };
  const std::lock_guard lock(state_.mutex);
  return collect(Copying{state_.store});
}

std::vector<AccountResult> TradeService::takeResults() {
  struct Taking {
    TradeStore& store;
    EquityCurve curve(EquityBook::Curve& from) { return std::move(from.points); }
    TradeStore::BySource sources(std::int32_t account) { return store.takeSources(account); }
  };
  /// Nothing stays that was moved from in part, whatever fails.
  struct Forgetting {
    TradeState& state;
    ~Forgetting() {
      state.store.clear();
      state.forgetCurves();
    }
  };
  const std::lock_guard lock(state_.mutex);
  const Forgetting forgetting{state_};
  return collect(Taking{state_.store});
}

std::vector<AccountGlance> TradeService::glance() const {
  const std::lock_guard lock(state_.mutex);
  std::vector<AccountGlance> all;
  all.reserve(state_.accounts.all().size());
  const PaperExchange& exchange = state_.exchange();
  for (const TradingAccountID& account : state_.accounts.all()) {
    const Ledger& ledger = *exchange.ledger(account.accountKey);
    all.push_back({account, toDouble(ledger.startBalance()), toDouble(ledger.balance()),
                   toDouble(ledger.equity()), ledger.sourceGlances()});
  }
  return all;
}

}  // namespace orvane::detail
