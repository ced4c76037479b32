#include "platform/events/IndexService.h"

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>
#include <utility>

#include "platform/core/LostCalls.h"
#include "platform/core/Periods.h"
#include "platform/fields/IndexElementView.h"
#include "services/Common/ICodeService.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane::detail {
namespace {

[[noreturn]] void refuse(const std::string& origin, const std::string& code, const char* what) {
  throw std::invalid_argument(origin + ": \"" + gbkToUtf8(code) + "\" " + what);
}

}  // namespace

// Compositions.

IndexService::Change IndexService::changeOf(const IndexComposition& composition) const {
  Change change;
  change.time = composition.time;
  change.origin = composition.origin;
  if (codes_.codeIdOf(composition.index, change.index).code != 0)
    refuse(composition.origin, composition.index, "is not a code that is known");
  auto elements = std::make_shared<Elements>();
  std::set<int64> ids;
  for (const IndexElementSpec& spec : composition.elements) {
    IndexTradeElement element;
    if (codes_.codeIdOf(spec.code, element.code).code != 0)
      refuse(composition.origin, spec.code, "is not a code that is known");
    if (element.code.id == change.index.id)
      refuse(composition.origin, spec.code, "is the index itself");
    if (!ids.insert(element.code.id).second)
      refuse(composition.origin, spec.code, "is an element twice");
    IndexElementWriter(element).setWeight(spec.weight);
    elements->push_back(std::move(element));
  }
  change.elements = std::move(elements);
  return change;
}

void IndexService::checkCycles(const std::vector<Change>& changes) {
  std::map<int64, const Change*> present;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    present[changes[i].index.id] = &changes[i];
    if (i + 1 < changes.size() && changes[i + 1].time == changes[i].time) continue;
    // Every cycle that comes to be at this instant goes through one of its changes.
    for (std::size_t at = i + 1; at-- > 0 && changes[at].time == changes[i].time;) {
      const Change& start = changes[at];
      std::set<int64> seen;
      std::function<bool(int64)> leadsBack = [&](int64 id) {
        const auto made = present.find(id);
        if (made == present.end() || !seen.insert(id).second) return false;
        return std::any_of(made->second->elements->begin(), made->second->elements->end(),
                           [&](const auto& part) {
                             return part.code.id == start.index.id || leadsBack(part.code.id);
                           });
      };
      if (leadsBack(start.index.id))
        refuse(start.origin, start.index.code, "is made of itself by way of its elements");
    }
  }
}

void IndexService::add(const std::vector<IndexComposition>& compositions) {
  std::vector<Change> changes = changes_;
  std::set<std::pair<int64, int64>> taken;
  for (const Change& change : changes) taken.insert({change.time, change.index.id});
  for (const IndexComposition& composition : compositions) {
    changes.push_back(changeOf(composition));
    if (!taken.insert({composition.time, changes.back().index.id}).second)
      refuse(composition.origin, composition.index, "has a composition of that time already");
  }
  std::stable_sort(changes.begin(), changes.end(),
                   [](const Change& a, const Change& b) { return a.time < b.time; });
  checkCycles(changes);
  changes_ = std::move(changes);
}

// What subscribers ask.

void IndexService::subscribeElementChange(const ICodeID& code,
                                          const std::shared_ptr<IndexTradeSpi>& spi) {
  if (spi == nullptr) return;
  const std::lock_guard lock(mutex_);
  Receivers& receivers = receivers_[code.id];
  if (std::find(receivers.begin(), receivers.end(), spi) == receivers.end())
    receivers.push_back(spi);
}

void IndexService::unsubscribeElementChange(const ICodeID& code,
                                            const std::shared_ptr<IndexTradeSpi>& spi) {
  const std::lock_guard lock(mutex_);
  const auto at = receivers_.find(code.id);
  if (at == receivers_.end()) return;
  // The caller holds the spi, so nothing is let go of under the lock.
  std::erase(at->second, spi);
  if (at->second.empty()) receivers_.erase(at);
}

ResultStatus IndexService::indexElements(const ICodeID& code,
                                         std::list<IndexTradeElement>& elements) {
  std::shared_ptr<const Elements> present;
  {
    const std::lock_guard lock(mutex_);
    const auto at = present_.find(code.id);
    if (at != present_.end()) present = at->second;
  }
  if (present == nullptr) return statusWith(22, codeText(code));
  elements = *present;
  return {};
}

// Telling.

int64 IndexService::firstTime() const {
  for (const Change& change : changes_)
    if (change.time != IndexComposition::kFromTheStart) return change.time;
  return kUnsetTime;
}

int64 IndexService::nextDue() const {
  return followsTimes_ && next_ < end_ ? shift_.shown(changes_[next_].time) : kUnsetTime;
}

bool IndexService::isWanted(int64 codeId, const IndexTradeSpi* spi) const {
  const std::lock_guard lock(mutex_);
  const auto at = receivers_.find(codeId);
  return at != receivers_.end() && std::any_of(at->second.begin(), at->second.end(),
                                               [&](const auto& each) { return each.get() == spi; });
}

void IndexService::tellNext() {
  const Change& change = changes_[next_++];
  Receivers receivers;
  {
    const std::lock_guard lock(mutex_);
    present_[change.index.id] = change.elements;
    const auto at = receivers_.find(change.index.id);
    if (at != receivers_.end()) receivers = at->second;
  }
  for (const std::shared_ptr<IndexTradeSpi>& receiver : receivers) {
    if (!isWanted(change.index.id, receiver.get())) continue;
    Elements own = *change.elements;
    guarded("an index call-back threw", [&] { receiver->onElementChange(change.index, own); });
  }
}

void IndexService::startAt(int64 time, int64 end) {
  const auto at = [&](int64 limit) {
    const auto found =
        std::lower_bound(changes_.begin(), changes_.end(), limit,
                         [](const Change& change, int64 when) { return change.time < when; });
    return static_cast<std::size_t>(found - changes_.begin());
  };
  const std::lock_guard lock(mutex_);
  next_ = at(time);
  end_ = end == kUnsetTime ? changes_.size() : std::max(next_, at(end));
  present_.clear();
  for (std::size_t i = 0; i < next_; ++i) present_[changes_[i].index.id] = changes_[i].elements;
}

}  // namespace orvane::detail
