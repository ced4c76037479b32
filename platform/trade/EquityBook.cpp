#include "platform/trade/EquityBook.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace orvane::detail {
namespace {

constexpr int64 kTickPointMs = 60'000;

void append(EquityBook::Curve& curve, const EquityPoint& point) {
  EquityPoints& points = curve.points;
  if (points.size() > 1 && points.back().time == point.time)
    points.back() = point;
  else
    points.push_back(point);
}

void append(EquityBook::Curve& curve, int64 time, double equity) {
  double exposure = 0;
  for (const auto& [codeId, value] : curve.exposures) exposure += value;
  append(curve, {time, equity, exposure});
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
  for (std::size_t i = 0; i < accounts_.size(); ++i) {
    const auto account = static_cast<std::int32_t>(i) + 1;
    // Who dealt before the start has a curve without this point.
    if (!accounts_[i].points.empty()) partFromAccount(account);
    addAccountPoint(account, time);
  }
  for (auto& [key, curve] : sources_)
    if (curve.own && curve.own->points.empty()) addSourcePoint(key, *curve.own, time);
}

void EquityBook::addSource(std::int32_t account, const std::string& source) {
  if (sources_.contains(std::pair{account, std::string_view(source)})) return;
  const SourceKey key{account, source};
  const auto first = sources_.lower_bound(std::pair{account, std::string_view()});
  const bool isAlone = first == sources_.end() || first->first.first != account;
  if (!isAlone) partFromAccount(account);
  SourceCurve& curve = sources_[key];
  // It begins with the run. An account that has more than its start by now has played without it.
  if (isAlone && this->account(account).points.size() <= 1) return;
  curve.own.emplace();
  if (hasStarted_) addSourcePoint(key, *curve.own, startTime_);
}

void EquityBook::partFromAccount(std::int32_t account) {
  for (auto at = sources_.lower_bound(std::pair{account, std::string_view()});
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
  auto& entry = *sources_.find(std::pair{account, std::string_view(source)});
  Holders& holders = holdersOn(account, codeId);
  const Ledger& ledger = *holders.ledger;
  std::erase(holders.sources, &entry);
  if (ledger.holds(source, codeId)) holders.sources.push_back(&entry);
  setExposure(this->account(account), codeId, ledger.exposureOf(codeId));
  addAccountPoint(account, time);
  std::optional<Curve>& own = entry.second.own;
  if (!own) return;
  setExposure(*own, codeId, ledger.exposureOf(source, codeId));
  addSourcePoint(entry.first, *own, time);
}

EquityBook::Holders& EquityBook::holdersOn(std::int32_t account, int64 codeId) {
  AllHolders& all = holders_[codeId];
  const auto at = std::ranges::find(all, account, &Holders::account);
  if (at != all.end()) return *at;
  return all.emplace_back(Holders{account, exchange_.ledger(account), {}});
}

bool EquityBook::noteMark(const AllHolders& all, const Mark& mark) {
  bool isHeld = false;
  for (const Holders& holders : all) {
    if (holders.sources.empty()) continue;
    isHeld = true;
    noteMarkOf(holders, mark);
  }
  return isHeld;
}

void EquityBook::noteMarkOf(const Holders& holders, const Mark& mark) {
  const auto wantsPoint = [&](const Curve& curve) {
    return !mark.isTick || mark.time / kTickPointMs != curve.points.back().time / kTickPointMs;
  };
  Curve& whole = account(holders.account);
  setExposure(whole, mark.codeId, holders.ledger->exposureOf(mark.codeId));
  if (wantsPoint(whole)) append(whole, mark.time, toDouble(holders.ledger->equity()));
  for (SourceCurves::value_type* const source : holders.sources) {
    auto& [key, curve] = *source;
    if (!curve.own) continue;
    setExposure(*curve.own, mark.codeId, holders.ledger->exposureOf(key.second, mark.codeId));
    if (wantsPoint(*curve.own)) addSourcePoint(key, *curve.own, mark.time);
  }
}

const EquityBook::Holders* EquityBook::soleHolders(const AllHolders& all) {
  const Holders* sole = nullptr;
  for (const Holders& holders : all) {
    if (holders.sources.empty()) continue;
    // Of several sources on an account each has a curve of its own.
    if (sole != nullptr || holders.sources.front()->second.own) return nullptr;
    sole = &holders;
  }
  return sole;
}

void EquityBook::noteWorth(std::int32_t account, const Mark& mark, double equity, double exposure) {
  Curve& whole = this->account(account);
  auto& all = whole.exposures;
  if (all.size() == 1 && all.front().first == mark.codeId) {
    all.front().second = exposure;
    return append(whole, {mark.time, equity, exposure});
  }
  setExposure(whole, mark.codeId, exposure);
  append(whole, mark.time, equity);
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
