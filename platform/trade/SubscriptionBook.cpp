#include "platform/trade/SubscriptionBook.h"

#include <algorithm>
#include <utility>

namespace orvane::detail {

bool SubscriptionBook::subscribe(const std::shared_ptr<TradeEventSpi>& spi,
                                 const TradeSelector& selector, std::uint64_t number) {
  Holder& holder = bySpi_[spi.get()];
  if (holder.receiver == nullptr)
    holder.receiver = std::make_shared<TradeReceiver>(TradeReceiver{spi, ++receivers_});
  std::vector<Entry>& entries = bySelector_[selector];
  for (const Entry& entry : entries)
    if (entry.receiver == holder.receiver) return false;
  forgetAnswers();
  entries.push_back({holder.receiver, number});
  holder.selectors.push_back(selector);
  return true;
}

template <typename Ends>
std::shared_ptr<TradeReceiver> SubscriptionBook::endWhere(const TradeEventSpi* spi, Ends ends) {
  const auto at = bySpi_.find(spi);
  if (at == bySpi_.end()) return nullptr;
  ++endings_;
  forgetAnswers();
  Holder& holder = at->second;
  std::shared_ptr<TradeReceiver> receiver = holder.receiver;
  std::erase_if(holder.selectors, [&](const TradeSelector& selector) {
    if (!ends(selector)) return false;
    const auto entries = bySelector_.find(selector);
    std::erase_if(entries->second,
                  [&](const Entry& entry) { return entry.receiver == holder.receiver; });
    if (entries->second.empty()) bySelector_.erase(entries);
    return true;
  });
  if (holder.selectors.empty()) bySpi_.erase(at);
  return receiver;
}

std::shared_ptr<TradeReceiver> SubscriptionBook::unsubscribe(const TradeEventSpi* spi,
                                                             const TradeSelector& selector) {
  return endWhere(spi, [&](const TradeSelector& each) { return each == selector; });
}

std::shared_ptr<TradeReceiver> SubscriptionBook::unsubscribeAccount(const TradeEventSpi* spi,
                                                                    std::int32_t account) {
  return endWhere(spi, [&](const TradeSelector& each) { return each.account == account; });
}

std::shared_ptr<TradeReceiver> SubscriptionBook::unsubscribeAll(const TradeEventSpi* spi) {
  return endWhere(spi, [](const TradeSelector&) { return true; });
}

template <typename Visit>
void SubscriptionBook::eachSelector(const TradeSubject& subject, Visit visit) const {
  const auto look = [&](int64 codeId, EventSourceId eventSource, std::string_view source) {
    const auto at =
        bySelector_.find(Wanted{subject.topic, subject.account, codeId, eventSource, source});
    if (at != bySelector_.end()) visit(at->second);
  };
  look(subject.codeId, 0, subject.source);
  if (subject.topic != TradeTopic::Order && subject.topic != TradeTopic::Fill) return;
  look(TradeSelector::kEveryCode, 0, subject.source);
  for (EventSourceId bit = 1; bit <= 128; bit <<= 1)
    if ((subject.eventSources & bit) != 0) look(TradeSelector::kEveryCode, bit, {});
}

TradeReceivers SubscriptionBook::receiversOf(const TradeSubject& subject,
                                             std::uint64_t number) const {
  TradeReceivers found;
  receiversOf(subject, number, found);
  return found;
}

void SubscriptionBook::receiversOf(const TradeSubject& subject, std::uint64_t number,
                                   TradeReceivers& found) const {
  Answer& last = answers_[static_cast<std::size_t>(subject.topic)];
  if (last.isKnown && last.subject == subject) {
    found = last.receivers;
    return;
  }
  found.clear();
  bool isForAll = true;
  eachSelector(subject, [&](const std::vector<Entry>& entries) {
    for (const Entry& entry : entries) {
      if (entry.number < number)
        found.push_back(entry.receiver);
      else
        isForAll = false;
    }
  });
  if (found.size() > 1) {
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a->order < b->order; });
    found.erase(std::unique(found.begin(), found.end()), found.end());
  }
  // Numbers grow: whom it was told once it is told again, until somebody comes or goes.
  last.isKnown = false;
  if (!isForAll) return;
  last.subject = subject;
  last.receivers = found;
  last.isKnown = true;
}

void SubscriptionBook::forgetAnswers() {
  for (Answer& answer : answers_) {
    answer.isKnown = false;
    answer.receivers.clear();
  }
}

bool SubscriptionBook::reaches(const TradeReceiver& receiver, const TradeSubject& subject) const {
  bool found = false;
  eachSelector(subject, [&](const std::vector<Entry>& entries) {
    for (const Entry& entry : entries) found = found || entry.receiver.get() == &receiver;
  });
  return found;
}

std::shared_ptr<TradeReceiver> SubscriptionBook::receiverOf(const TradeEventSpi* spi) const {
  const auto at = bySpi_.find(spi);
  return at == bySpi_.end() ? nullptr : at->second.receiver;
}

}  // namespace orvane::detail
