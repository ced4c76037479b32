#include "platform/market/RequestBook.h"

#include <algorithm>

namespace orvane::detail {

void RequestBook::add(std::shared_ptr<MarketRequest> request,
                      const std::shared_ptr<QuoteSpi>& spi) {
  {
    const std::lock_guard lock(mutex_);
    if (request->kind != MarketRequest::Kind::Quote) {
      const RequestList holders = byId_[request->id].holders;
      for (const auto& older : holders)
        if (older->who->spi == spi) endLocked(older);
    }
    Holder& holder = bySpi_[spi.get()];
    if (holder.who == nullptr) holder.who = std::make_shared<Subscriber>(spi);
    request->who = holder.who;
    holder.requests.push_back(request);
    if (request->kind != MarketRequest::Kind::Quote) byId_[request->id].holders.push_back(request);
    if (request->who->blocks) blockingCount_.fetch_add(1);
    waiting_.push_back(std::move(request));
    waitingCount_.store(waiting_.size());
  }
  onChange_();
}

bool RequestBook::hasQuote(int64 codeId, const QuoteSpi* spi) const {
  const std::lock_guard lock(mutex_);
  const auto at = bySpi_.find(spi);
  if (at == bySpi_.end()) return false;
  return std::any_of(
      at->second.requests.begin(), at->second.requests.end(), [&](const auto& request) {
        return request->kind == MarketRequest::Kind::Quote && request->query.code.id == codeId;
      });
}

void RequestBook::cancel(int requestId) {
  {
    const std::lock_guard lock(mutex_);
    const auto at = byId_.find(requestId);
    if (at == byId_.end() || ++at->second.cancels < at->second.holders.size()) return;
    const RequestList holders = at->second.holders;
    for (const auto& request : holders) endLocked(request);
  }
  onChange_();
}

void RequestBook::cancelQuote(int64 codeId, const QuoteSpi* spi) {
  {
    const std::lock_guard lock(mutex_);
    const auto at = bySpi_.find(spi);
    if (at == bySpi_.end()) return;
    const RequestList requests = at->second.requests;
    for (const auto& request : requests)
      if (request->kind == MarketRequest::Kind::Quote && request->query.code.id == codeId)
        endLocked(request);
  }
  onChange_();
}

void RequestBook::cancelSpi(const QuoteSpi* spi) {
  {
    const std::lock_guard lock(mutex_);
    const auto at = bySpi_.find(spi);
    if (at == bySpi_.end()) return;
    const RequestList requests = at->second.requests;
    for (const auto& request : requests) endLocked(request);
  }
  onChange_();
}

void RequestBook::finish(const std::shared_ptr<MarketRequest>& request) {
  const std::lock_guard lock(mutex_);
  if (!request->ended.load()) endLocked(request);
}

void RequestBook::endLocked(const std::shared_ptr<MarketRequest>& request) {
  request->ended.store(true);
  endedSome_.store(true);
  const auto holder = bySpi_.find(request->who->spi.get());
  if (holder != bySpi_.end()) {
    std::erase(holder->second.requests, request);
    // Whoever serves the receiver now knows it by this record, so it stays until that is done.
    if (holder->second.requests.empty()) bySpi_.erase(holder);
  }
  const auto slot = byId_.find(request->id);
  if (request->kind == MarketRequest::Kind::Quote || slot == byId_.end()) return;
  std::erase(slot->second.holders, request);
  if (slot->second.cancels > 0) --slot->second.cancels;
  if (slot->second.holders.empty()) byId_.erase(slot);
}

std::shared_ptr<MarketRequest> RequestBook::takeLocked(
    const std::deque<std::shared_ptr<MarketRequest>>::iterator& at) {
  std::shared_ptr<MarketRequest> request = std::move(*at);
  waiting_.erase(at);
  waitingCount_.store(waiting_.size());
  if (request->who->blocks) blockingCount_.fetch_sub(1);
  return request;
}

std::shared_ptr<MarketRequest> RequestBook::takeNext() {
  const std::lock_guard lock(mutex_);
  return waiting_.empty() ? nullptr : takeLocked(waiting_.begin());
}

std::shared_ptr<MarketRequest> RequestBook::takeOverdue(const Overdue& overdue) {
  const std::lock_guard lock(mutex_);
  std::set<const QuoteSpi*> passed;
  for (auto at = waiting_.begin(); at != waiting_.end(); ++at) {
    const MarketRequest& request = **at;
    const Subscriber& who = *request.who;
    const bool isOldest = passed.insert(who.spi.get()).second;
    const bool isLate = request.isOfTask ? overdue.withTasks : request.posted <= overdue.latest;
    const bool isDue = who.blocks || isLate;
    if (isOldest && isDue && !who.serving) return takeLocked(at);
  }
  return nullptr;
}

}  // namespace orvane::detail
