#include "platform/trade/EquityBook.h"

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
    if (curve.points.empty()) addSourcePoint(key, time);
}

void EquityBook::addSource(std::int32_t account, const std::string& source) {
  const auto [at, isNew] = sources_.try_emplace({account, source});
  if (isNew && hasStarted_) addSourcePoint(at->first, startTime_);
}

double EquityBook::exposureOf(const SourceKey& key, int64 codeId) const {
  return exchange_.ledger(key.first)->exposureOf(key.second, codeId);
}

void EquityBook::addAccountPoint(std::int32_t account, int64 time) {
  append(this->account(account), time, toDouble(exchange_.ledger(account)->equity()));
}

void EquityBook::addSourcePoint(const SourceKey& key, int64 time) {
  const Ledger* ledger = exchange_.ledger(key.first);
  append(sources_[key], time, toDouble(ledger->startBalance() + ledger->resultOf(key.second)));
}

void EquityBook::noteFill(std::int32_t account, const std::string& source, int64 codeId,
                          int64 time) {
  const SourceKey key{account, source};
  if (exchange_.ledger(account)->holds(source, codeId)) {
    holders_[codeId].insert(key);
  } else if (const auto at = holders_.find(codeId); at != holders_.end()) {
    at->second.erase(key);
    if (at->second.empty()) holders_.erase(at);
  }
  setExposure(sources_[key], codeId, exposureOf(key, codeId));
  setExposure(this->account(account), codeId, exposureOf({account, ""}, codeId));
  addAccountPoint(account, time);
  addSourcePoint(key, time);
}

void EquityBook::noteMark(int64 codeId, int64 time, bool isTick) {
  const auto held = holders_.find(codeId);
  if (held == holders_.end()) return;
  std::int32_t last = 0;
  for (const SourceKey& key : held->second) {
    if (key.first != last) {
      last = key.first;
      Curve& curve = account(last);
      setExposure(curve, codeId, exposureOf({last, ""}, codeId));
      if (!isTick || time / kTickPointMs != curve.points.back().time / kTickPointMs)
        addAccountPoint(last, time);
    }
    Curve& curve = sources_[key];
    setExposure(curve, codeId, exposureOf(key, codeId));
    if (!isTick || time / kTickPointMs != curve.points.back().time / kTickPointMs)
      addSourcePoint(key, time);
  }
}

void EquityBook::finish(int64 time) {
  for (std::size_t i = 0; i < accounts_.size(); ++i)
    addAccountPoint(static_cast<std::int32_t>(i) + 1, time);
  for (const auto& [key, curve] : sources_) addSourcePoint(key, time);
}

void EquityBook::clear() {
  accounts_.assign(accounts_.size(), {});
  sources_.clear();
  holders_.clear();
  hasStarted_ = false;
}

}  // namespace orvane::detail
