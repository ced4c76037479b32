#include "host/TradeConfig.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <limits>
#include <set>

#include "host/ConfigPaths.h"
#include "host/InputError.h"
#include "host/TimeArgument.h"
#include "shared/CodeTables.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

constexpr int kLargestInt = std::numeric_limits<int>::max();

AccountSpec readAccount(const QJsonValue& json, const std::string& place) {
  JsonReader reader(json, place);
  AccountSpec account;
  account.name = utf8ToGbk(reader.requiredText("name"));
  account.currency = utf8ToGbk(reader.filledText("currency"));
  const auto isNamed = [&account](const char* name) { return account.currency == name; };
  if (!account.currency.empty() && std::ranges::none_of(currencyNames, isNamed))
    reader.refuse("currency", "is not a currency that is known, such as CNY or USD");
  account.startBalance = reader.decimal("startBalance");
  account.counterType = reader.integer("counterType", 1, 0, kLargestInt);
  reader.close();
  return account;
}

ConnectionPlan readConnection(const QJsonValue& json, const std::string& place) {
  JsonReader reader(json, place);
  ConnectionPlan change;
  change.place = place;
  change.account = reader.requiredText("account");
  change.time = reader.requiredText("time");
  if (!reader.has("up")) throw InputError(fmt::format("{}: is missing", reader.place("up")));
  change.isUp = reader.flag("up", false);
  reader.close();
  return change;
}

/// One of two words; true for the second.
bool secondOf(JsonReader& reader, const char* key, const char* first, const char* second) {
  const std::string word = reader.text(key, first);
  if (word != first && word != second)
    reader.refuse(key, fmt::format("must be \"{}\" or \"{}\"", first, second));
  return word == second;
}

QJsonArray arrayOf(JsonReader& reader, const char* key) {
  const QJsonValue found = reader.value(key);
  if (found.isUndefined()) return {};
  if (!found.isArray()) reader.refuse(key, "must be an array");
  return found.toArray();
}

void readExchange(JsonReader& reader, RunPlan& plan) {
  TradeOptions& trade = plan.trade;
  trade.entryLatencyMs = reader.integer("entryLatencyMs", 0, 0, kLargestInt);
  trade.reportLatencyMs = reader.integer("reportLatencyMs", 0, 0, kLargestInt);
  trade.slippage = reader.decimal("slippage");
  trade.slippageTicks = reader.integer("slippageTicks", 0, 0, kLargestInt);
  trade.marginRate = reader.decimal("marginRate");
  trade.feePerLot = reader.decimal("feePerLot");
  trade.feeRate = reader.decimal("feeRate");
  trade.barVolumeShare = reader.decimal("barVolumeShare");
  if (secondOf(reader, "limitFill", "through", "touch"))
    trade.limitFill = TradeOptions::LimitFill::Touch;
  if (secondOf(reader, "queue", "behind", "front")) trade.queue = TradeOptions::Queue::Front;
  trade.settlesDaily = reader.flag("dailySettlement", false);
  trade.rejectsOutsideSessions = reader.flag("rejectOutsideSessions", false);
  for (const char* key :
       {"slippage", "slippageTicks", "marginRate", "feePerLot", "feeRate", "barVolumeShare"})
    plan.places[key] = reader.place(key);
  const QJsonArray script = arrayOf(reader, "connection");
  for (qsizetype i = 0; i < script.size(); ++i)
    plan.connections.push_back(
        readConnection(script[i], fmt::format("{}[{}]", reader.place("connection"), i)));
  reader.close();
}

bool hasAccount(const RunPlan& plan, const std::string& gbkName) {
  return std::ranges::any_of(plan.trade.accounts, [&gbkName](const AccountSpec& account) {
    return account.name == gbkName;
  });
}

}  // namespace

void readTrade(JsonReader& reader, const std::string& configPath, RunPlan& plan) {
  const QJsonArray accounts = arrayOf(reader, "accounts");
  std::set<std::string> names;
  for (qsizetype i = 0; i < accounts.size(); ++i) {
    const std::string place = fmt::format("{}[{}]", reader.place("accounts"), i);
    plan.trade.accounts.push_back(readAccount(accounts[i], place));
    const std::string& name = plan.trade.accounts.back().name;
    if (name.empty()) throw InputError(fmt::format("{}.name: must not be empty", place));
    if (!names.insert(name).second)
      throw InputError(
          fmt::format("{}.name: two accounts are named \"{}\"", place, gbkToUtf8(name)));
  }
  plan.startBalance = reader.decimal("capital");
  plan.places["startBalance"] = reader.place(plan.startBalance.empty() ? "accounts" : "capital");
  const std::string store = reader.filledText("store");
  if (!store.empty()) plan.trade.storePath = besides(configPath, store);
  const QJsonValue trade = reader.value("trade");
  if (trade.isUndefined()) return;
  JsonReader exchange(trade, reader.place("trade"));
  if (trade.toObject().contains("capital"))
    throw InputError(fmt::format("{}: unknown key; \"capital\" stands at the top, beside \"trade\"",
                                 exchange.place("capital")));
  readExchange(exchange, plan);
}

RiskLimits readLimits(JsonReader& runner) {
  RiskLimits limits;
  const QJsonValue found = runner.value("limits");
  if (found.isUndefined()) return limits;
  JsonReader reader(found, runner.place("limits"));
  const auto limit = [&reader](const char* key) {
    std::string given = reader.decimal(key);
    if (given.starts_with('-')) reader.refuse(key, "must not be below 0");
    return given;
  };
  limits.maxOrder = limit("maxOrder");
  limits.maxPosition = limit("maxPosition");
  limits.maxLoss = limit("maxLoss");
  limits.maxOrdersPerSecond = reader.integer("maxOrdersPerSecond", 0, 0, kLargestInt);
  reader.close();
  return limits;
}

namespace {

void checkNotOfGrids(const RunnerPlan& runner, const std::string& place, const std::string& here) {
  const bool isItsName = runner.name == kGridOrderSource;
  if (!isItsName && runner.orderSource != kGridOrderSource) return;
  const bool isOption = place.starts_with("--");
  const std::string where = isOption ? (isItsName ? "--name" : "--order-source")
                                     : here + (isItsName ? ": name" : ": orderSource");
  throw InputError(fmt::format("{}: \"{}\" is the order source of grid conditions; choose another",
                               where, kGridOrderSource));
}

/// Limits, figures and tables are of a source: two runners with one would be told as one.
void checkOwnSource(const RunPlan& plan, std::size_t at, const std::string& here) {
  const RunnerPlan& runner = plan.runners[at];
  for (std::size_t i = 0; i < at; ++i)
    if (plan.runners[i].orderSource == runner.orderSource)
      throw InputError(fmt::format("{}: orderSource: \"{}\" is that of the runner \"{}\" already",
                                   here, runner.orderSource, plan.runners[i].name));
}

/// The capital of the run is that of each account which has no balance of its own.
void giveCapital(RunPlan& plan) {
  if (plan.startBalance.starts_with('-'))
    throw InputError(
        fmt::format("{}: \"{}\" is below 0", plan.places["startBalance"], plan.startBalance));
  if (plan.startBalance.empty()) return;
  bool isTaken = false;
  for (AccountSpec& account : plan.trade.accounts) {
    if (!account.startBalance.empty()) continue;
    account.startBalance = plan.startBalance;
    isTaken = true;
  }
  if (!isTaken)
    throw InputError(fmt::format("{}: \"{}\" is nobody's: each account has a \"startBalance\"",
                                 plan.places["startBalance"], plan.startBalance));
}

}  // namespace

void completeTrade(RunPlan& plan, const std::string& place) {
  const bool isAlone = plan.runners.size() == 1;
  for (std::size_t i = 0; i < plan.runners.size(); ++i) {
    RunnerPlan& runner = plan.runners[i];
    const std::string here = isAlone ? place : fmt::format("{}: runners[{}]", place, i);
    if (runner.orderSource.empty()) runner.orderSource = runner.name;
    checkNotOfGrids(runner, place, here);
    checkOwnSource(plan, i, here);
    if (runner.account.empty()) {
      // An account of its own, unless the parameters name one.
      const QJsonValue chosen = runner.params.value("account");
      runner.account = chosen.isString() ? chosen.toString().toStdString() : runner.name;
      if (!chosen.isString() && !hasAccount(plan, utf8ToGbk(runner.account))) {
        AccountSpec own;
        own.name = utf8ToGbk(runner.account);
        plan.trade.accounts.push_back(std::move(own));
      }
    }
    if (!hasAccount(plan, utf8ToGbk(runner.account)))
      throw InputError(
          fmt::format("{}: account: there is no account \"{}\"", here, runner.account));
  }
  giveCapital(plan);
  for (const ConnectionPlan& change : plan.connections)
    if (!hasAccount(plan, utf8ToGbk(change.account)))
      throw InputError(
          fmt::format("{}.account: there is no account \"{}\"", change.place, change.account));
}

TradeOptions tradeOptions(const RunPlan& plan, const std::string& timeZone) {
  TradeOptions options = plan.trade;
  for (const RunnerPlan& runner : plan.runners) {
    const std::string source = utf8ToGbk(runner.orderSource);
    options.sources.push_back(source);
    RiskLimits limits = runner.limits;
    limits.source = source;
    options.limits.push_back(std::move(limits));
  }
  for (const ConnectionPlan& change : plan.connections)
    options.script.push_back({utf8ToGbk(change.account),
                              parseTimeArgument(change.time, timeZone, change.place + ".time"),
                              change.isUp});
  return options;
}

}  // namespace orvane
