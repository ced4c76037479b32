#include "platform/trade/EquityBook.h"

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
  append(this->account(account), time, toDouble(exchange_.ledger(account)->equity()));
}

void EquityBook::addSourcePoint(const SourceKey& key, Curve& curve, int64 time) {
  const Ledger* ledger = exchange_.ledger(key.first);
  append(curve, time, toDouble(ledger->startBalance() + ledger->resultOf(key.second)));
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
  std::int32_t last = 0;
  const auto wantsPoint = [&](const Curve& curve) {
    return !isTick || time / kTickPointMs != curve.points.back().time / kTickPointMs;
  };
  for (const auto& [key, curve] : held->second) {
    if (key.first != last) {
      last = key.first;
      markCurve(account(last), last, kEverySource, codeId);
      if (wantsPoint(account(last))) addAccountPoint(last, time);
    }
    markCurve(*curve, key.first, key.second, codeId);
    if (wantsPoint(*curve)) addSourcePoint(key, *curve, time);
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
