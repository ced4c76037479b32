#include "platform/trade/conditions/DetailBook.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/core/LostCalls.h"

namespace orvane::detail {
namespace {

bool isSame(const CondId& a, const CondId& b) {
  return a.first == b.first && a.second == b.second && a.third == b.third && a.text == b.text;
}

}  // namespace

void DetailBook::subscribeDetail(const CondId& condition, CondSpi* spi) {
  if (spi == nullptr) return;
  {
    const std::lock_guard lock(mutex_);
    auto at = std::ranges::find_if(entries_, [&](const auto& each) { return each->spi == spi; });
    if (at == entries_.end()) {
      entries_.push_back(std::make_shared<Entry>());
      at = entries_.end() - 1;
      (*at)->spi = spi;
    }
    std::list<Wanted>& wanted = (*at)->wanted;
    const auto same = std::ranges::find_if(
        wanted, [&](const Wanted& each) { return isSame(each.condition, condition); });
    if (same != wanted.end())
      same->isWaiting = true;
    else
      wanted.push_back({condition});
  }
  onRequest_();
}

void DetailBook::unsubscribeDetails(CondSpi* spi) {
  std::shared_ptr<Entry> ended;  // It may hold a receiver's last pointer: let go unlocked.
  const std::lock_guard lock(mutex_);
  const auto at =
      std::ranges::find_if(entries_, [&](const auto& each) { return each->spi == spi; });
  if (at == entries_.end()) return;
  ended = std::move(*at);
  entries_.erase(at);
}

void DetailBook::letGo(const std::shared_ptr<TradeEventSpi>& spi) {
  const auto* const details = dynamic_cast<CondSpi*>(spi.get());
  if (details == nullptr) return;
  const std::lock_guard lock(mutex_);
  for (const std::shared_ptr<Entry>& entry : entries_)
    if (entry->spi == details) entry->held = spi;
}

bool DetailBook::anyWaiting() const {
  const std::lock_guard lock(mutex_);
  return std::ranges::any_of(entries_, [](const auto& entry) {
    return std::ranges::any_of(entry->wanted, [](const Wanted& each) { return each.isWaiting; });
  });
}

bool DetailBook::wantsChange(const Entry& entry, const GridDetail& detail) {
  return std::ranges::any_of(entry.wanted, [&](const Wanted& each) {
    return !each.isNew && isNamedBy(detail, each.condition);
  });
}

bool DetailBook::wantsPicture(const Entry& entry, const GridDetail& detail) {
  return std::ranges::any_of(entry.wanted, [&](const Wanted& each) {
    return each.isWaiting && isNamedBy(detail, each.condition);
  });
}

bool DetailBook::tell(const std::vector<GridDetail>& changes,
                      const std::function<std::vector<GridDetail>()>& picture) {
  rounds_.begin();
  bool any = tellChanges(changes);
  if (!anyWaiting()) return any;
  const std::vector<GridDetail> pictures = picture();
  std::vector<std::pair<std::shared_ptr<Entry>, const GridDetail*>> calls;
  {
    const std::lock_guard lock(mutex_);
    for (const std::shared_ptr<Entry>& entry : entries_) {
      for (const GridDetail& detail : pictures)
        if (wantsPicture(*entry, detail)) calls.emplace_back(entry, &detail);
      for (Wanted& each : entry->wanted) each.isWaiting = each.isNew = false;
    }
  }
  for (const auto& [entry, detail] : calls) any = call(entry, *detail) || any;
  return any;
}

bool DetailBook::tellChanges(const std::vector<GridDetail>& changes) {
  bool any = false;
  for (const GridDetail& detail : changes) {
    Entries wanting;
    {
      const std::lock_guard lock(mutex_);
      std::ranges::copy_if(entries_, std::back_inserter(wanting),
                           [&](const auto& entry) { return wantsChange(*entry, detail); });
    }
    for (const std::shared_ptr<Entry>& entry : wanting) any = call(entry, detail) || any;
  }
  return any;
}

bool DetailBook::call(const std::shared_ptr<Entry>& entry, const GridDetail& detail) {
  rounds_.enter(entry->calledIn);
  {
    const std::lock_guard lock(mutex_);
    if (std::ranges::find(entries_, entry) == entries_.end()) return false;
  }
  guarded("a condition call-back threw", [&] { tellDetail(*entry->spi, detail); });
  return true;
}

}  // namespace orvane::detail
