#include "platform/trade/EquityBook.h"

#include <iterator>

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
    : exchange_(exchange), accounts_(accounts) {}

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
  if (isNew && hasStarted_) addSourcePoint(at->first, at->second, startTime_);
}

void EquityBook::markCurve(Curve& curve, std::int32_t account, const std::string& source,
                           int64 codeId) const {
  setExposure(curve, codeId, exchange_.ledger(account)->exposureOf(source, codeId));
}

void EquityBook::addAccountPoint(std::int32_t account, int64 time) {
  append(this->account(account), time, inDouble(exchange_.ledger(account)->equity()));
}

void EquityBook::addSourcePoint(const SourceKey& key, Curve& curve, int64 time) {
  const Ledger* ledger = exchange_.ledger(key.first);
  append(curve, time, inDouble(ledger->startBalance() + ledger->resultOf(key.second)));
}

double EquityBook::inDouble(Money money) {
  if (money != lastMoney_) {
    lastMoney_ = money;
    lastDouble_ = toDouble(money);
  }
  return lastDouble_;
}

void EquityBook::noteFill(std::int32_t account, const std::string& source, int64 codeId,
                          int64 time) {
  const SourceKey key{account, source};
  Curve& curve = sources_[key];
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
  const auto wantsPoint = [&](const Curve& curve) {
    return !isTick || time / kTickPointMs != curve.points.back().time / kTickPointMs;
  };
  const auto end = held->second.end();
  for (auto at = held->second.begin(); at != end;) {
    const std::int32_t key = at->first.first;
    Curve& whole = account(key);
    const double exposure = exchange_.ledger(key)->exposureOf(kEverySource, codeId);
    setExposure(whole, codeId, exposure);
    if (wantsPoint(whole)) addAccountPoint(key, time);
    const auto first = at;
    while (at != end && at->first.first == key) ++at;
    const bool isOnlyOne = std::next(first) == at;
    for (auto each = first; each != at; ++each) {
      Curve& curve = *each->second;
      if (isOnlyOne)
        setExposure(curve, codeId, exposure);
      else
        markCurve(curve, key, each->first.second, codeId);
      if (wantsPoint(curve)) addSourcePoint(each->first, curve, time);
    }
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
  holders_.clear();
  hasStarted_ = false;
}

}  // namespace orvane::detail
