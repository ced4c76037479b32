#include "platform/trade/EquityBook.h"

#include <algorithm>
#include <optional>

namespace orvane::detail {
namespace {

constexpr int64 kTickPointMs = 60'000;

void append(EquityBook::Curve& curve, int64 time, double equity) {
  double exposure = 0;
  for (const auto& [codeId, value] : curve.exposures) exposure += value;
  const EquityPoint point{time, equity, exposure};
  if (curve.points.size() > 1 && curve.points.back().time == time)
    curve.points.back() = point;
  else
    curve.points.push_back(point);
}

void setExposure(EquityBook::Curve& curve, int64 codeId, double value) {
  auto& all = curve.exposures;
  auto at = all.begin();
  while (at != all.end() && at->first < codeId) ++at;
  const bool isThere = at != all.end() && at->first == codeId;
  if (value == 0) {
    if (isThere) all.erase(at);
  } else if (isThere) {
    at->second = value;
  } else {
    all.insert(at, {codeId, value});
  }
}

}  // namespace

EquityBook::EquityBook(const PaperExchange& exchange, std::size_t accounts)
    : exchange_(exchange), accounts_(accounts) {}

void EquityBook::start(int64 time) {
  hasStarted_ = true;
  startTime_ = time;
  for (std::size_t i = 0; i < accounts_.size(); ++i)
    addAccountPoint(static_cast<std::int32_t>(i) + 1, time);
  for (auto& [key, curve] : sources_)
    if (curve.own && curve.own->points.empty()) addSourcePoint(key, *curve.own, time);
}

void EquityBook::addSource(std::int32_t account, const std::string& source) {
  const SourceKey key{account, source};
  if (sources_.contains(key)) return;
  const auto first = sources_.lower_bound({account, {}});
  const bool isAlone = first == sources_.end() || first->first.first != account;
  if (!isAlone) partFromAccount(account);
  SourceCurve& curve = sources_[key];
  // It begins with the run. An account that has more than its start by now has played without it.
  if (isAlone && this->account(account).points.size() <= 1) return;
  curve.own.emplace();
  if (hasStarted_) addSourcePoint(key, *curve.own, startTime_);
}

void EquityBook::partFromAccount(std::int32_t account) {
  for (auto at = sources_.lower_bound({account, {}});
       at != sources_.end() && at->first.first == account; ++at)
    if (!at->second.own) at->second.own = this->account(account);
}

void EquityBook::addAccountPoint(std::int32_t account, int64 time) {
  append(this->account(account), time, toDouble(exchange_.ledger(account)->equity()));
}

void EquityBook::addSourcePoint(const SourceKey& key, Curve& curve, int64 time) {
  const Ledger* ledger = exchange_.ledger(key.first);
  append(curve, time, toDouble(ledger->startBalance() + ledger->resultOf(key.second)));
}

void EquityBook::noteFill(std::int32_t account, const std::string& source, int64 codeId,
                          int64 time) {
  addSource(account, source);
  const Ledger& ledger = *exchange_.ledger(account);
  noteHolder(account, source, codeId, ledger.holds(source, codeId));
  setExposure(this->account(account), codeId, ledger.exposureOf(codeId));
  addAccountPoint(account, time);
  const SourceKey key{account, source};
  std::optional<Curve>& own = sources_.at(key).own;
  if (!own) return;
  setExposure(*own, codeId, ledger.exposureOf(source, codeId));
  addSourcePoint(key, *own, time);
}

void EquityBook::noteHolder(std::int32_t account, const std::string& source, int64 codeId,
                            bool holds) {
  std::vector<Holders>& all = holders_[codeId];
  auto at = std::ranges::find(all, account, &Holders::account);
  if (at == all.end()) at = all.insert(at, {account, exchange_.ledger(account), {}});
  if (holds)
    at->sources.try_emplace(source, &sources_.at({account, source}));
  else
    at->sources.erase(source);
  if (at->sources.empty()) all.erase(at);
  if (all.empty()) holders_.erase(codeId);
}

bool EquityBook::noteMark(int64 codeId, int64 time, bool isTick) {
  const auto held = holders_.find(codeId);
  if (held == holders_.end()) return false;
  for (const Holders& holders : held->second) noteMark(holders, {codeId, time, isTick});
  return true;
}

void EquityBook::noteMark(const Holders& holders, const Mark& mark) {
  const auto wantsPoint = [&](const Curve& curve) {
    return !mark.isTick || mark.time / kTickPointMs != curve.points.back().time / kTickPointMs;
  };
  Curve& whole = account(holders.account);
  setExposure(whole, mark.codeId, holders.ledger->exposureOf(mark.codeId));
  if (wantsPoint(whole)) append(whole, mark.time, toDouble(holders.ledger->equity()));
  for (const auto& [name, curve] : holders.sources) {
    if (!curve->own) continue;
    setExposure(*curve->own, mark.codeId, holders.ledger->exposureOf(name, mark.codeId));
    if (wantsPoint(*curve->own)) addSourcePoint({holders.account, name}, *curve->own, mark.time);
  }
}

void EquityBook::finish(int64 time) {
  for (std::size_t i = 0; i < accounts_.size(); ++i)
    addAccountPoint(static_cast<std::int32_t>(i) + 1, time);
  for (auto& [key, curve] : sources_)
    if (curve.own) addSourcePoint(key, *curve.own, time);
}

void EquityBook::clear() {
  accounts_.assign(accounts_.size(), {});
  sources_.clear();
  holders_.clear();
  hasStarted_ = false;
}

}  // namespace orvane::detail
