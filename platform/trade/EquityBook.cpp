#include "platform/trade/EquityBook.h"

#include <iterator>
#include <optional>

namespace orvane::detail {
namespace {

constexpr int64 kTickPointMs = 60'000;
const std::string kEverySource;

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
  if (value == 0)
    curve.exposures.erase(codeId);
  else
    curve.exposures[codeId] = value;
}

}  // namespace

EquityBook::EquityBook(const PaperExchange& exchange, std::size_t accounts)
    : exchange_(exchange), accounts_(accounts), sourceCounts_(accounts) {}

void EquityBook::start(int64 time) {
  hasStarted_ = true;
  startTime_ = time;
  for (std::size_t i = 0; i < accounts_.size(); ++i)
    addAccountPoint(static_cast<std::int32_t>(i) + 1, time);
  for (auto& [key, curve] : sources_)
    if (curve.points.empty()) addSourcePoint(key, curve, time);
}

void EquityBook::addSource(std::int32_t account, const std::string& source) {
  const auto [at, isNew] = sources_.try_emplace({account, source});
  if (isNew) ++sourceCounts_[indexOf(account)];
  if (isNew && hasStarted_) addSourcePoint(at->first, at->second, startTime_);
}

void EquityBook::markCurve(Curve& curve, std::int32_t account, const std::string& source,
                           int64 codeId) const {
  setExposure(curve, codeId, exchange_.ledger(account)->exposureOf(source, codeId));
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
  const SourceKey key{account, source};
  addSource(account, source);
  Curve& curve = sources_.at(key);
  if (exchange_.ledger(account)->holds(source, codeId)) {
    holders_[codeId].try_emplace(key, &curve);
  } else if (const auto at = holders_.find(codeId); at != holders_.end()) {
    at->second.erase(key);
    if (at->second.empty()) holders_.erase(at);
  }
  markCurve(curve, account, source, codeId);
  markCurve(this->account(account), account, kEverySource, codeId);
  addAccountPoint(account, time);
  addSourcePoint(key, curve, time);
}

void EquityBook::noteMark(int64 codeId, int64 time, bool isTick) {
  const auto held = holders_.find(codeId);
  if (held == holders_.end()) return;
  const auto end = held->second.end();
  for (auto at = held->second.begin(); at != end;) {
    const auto first = at;
    while (at != end && at->first.first == first->first.first) ++at;
    noteMark(first, at, {codeId, time, isTick});
  }
}

void EquityBook::noteMark(Holders::iterator first, Holders::iterator last, const Mark& mark) {
  const std::int32_t key = first->first.first;
  const auto wantsPoint = [&](const Curve& curve) {
    return !mark.isTick || mark.time / kTickPointMs != curve.points.back().time / kTickPointMs;
  };
  Curve& whole = account(key);
  const Ledger& ledger = *exchange_.ledger(key);
  const double exposure = ledger.exposureOf(kEverySource, mark.codeId);
  setExposure(whole, mark.codeId, exposure);
  std::optional<double> equity;
  if (wantsPoint(whole)) append(whole, mark.time, equity.emplace(toDouble(ledger.equity())));
  const bool isOnlyHolder = std::next(first) == last;
  for (; first != last; ++first) {
    Curve& curve = *first->second;
    if (isOnlyHolder)
      setExposure(curve, mark.codeId, exposure);
    else
      markCurve(curve, key, first->first.second, mark.codeId);
    if (!wantsPoint(curve)) continue;
    // What an account is worth is what the one source made of it that it ever had.
    if (equity && sourceCounts_[indexOf(key)] == 1)
      append(curve, mark.time, *equity);
    else
      addSourcePoint(first->first, curve, mark.time);
  }
}

void EquityBook::finish(int64 time) {
  for (std::size_t i = 0; i < accounts_.size(); ++i)
    addAccountPoint(static_cast<std::int32_t>(i) + 1, time);
  for (auto& [key, curve] : sources_) addSourcePoint(key, curve, time);
}

void EquityBook::clear() {
  accounts_.assign(accounts_.size(), {});
  sources_.clear();
  sourceCounts_.assign(sourceCounts_.size(), 0);
  holders_.clear();
  hasStarted_ = false;
}

}  // namespace orvane::detail
