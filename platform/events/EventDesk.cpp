#include "platform/events/EventDesk.h"

#include <algorithm>

#include "platform/market/QuoteService.h"
#include "platform/reference/CodeService.h"
#include "platform/trade/TradeDesk.h"

namespace orvane::detail {

bool EventDesk::anyWaiting() const {
  return parts_.events.anyWaiting() || parts_.publications.anyWaiting() ||
         parts_.codes.anyChangeWaiting();
}

bool EventDesk::serve() {
  if (parts_.cancelled.load(std::memory_order_relaxed)) {
    dropWaiting();
    return false;
  }
  // So it is after nearly every record.
  if (!parts_.codes.anyChangeWaiting() && parts_.publications.isIdle() && parts_.events.isIdle())
    return false;
  parts_.codes.takeChanges();
  const auto onHistory = [this](MarketStream& stream) { parts_.quotes.passOver(stream); };
  if (MarketStream* stream = parts_.publications.takeNext(onHistory)) {
    play(*stream);
    return true;
  }
  return parts_.events.serve();
}

bool EventDesk::serveTurn() {
  constexpr int kMostOfATurn = 256;
  for (int served = 0; served < kMostOfATurn; ++served)
    if (!serve()) return false;
  return true;
}

void EventDesk::play(MarketStream& stream) {
  // As a record of the feed: the exchange sees it first, and what it tells is digested first.
  if (parts_.trade.beforeRecord(stream)) {
    if (reportsWait_ != nullptr)
      reportsWait_();
    else
      parts_.trade.serve();
  }
  parts_.quotes.deliverNext(stream);
}

int64 EventDesk::nextDue() const {
  return std::min(parts_.events.nextDue(), parts_.index.nextDue());
}

void EventDesk::tellNext() {
  if (parts_.events.nextDue() <= parts_.index.nextDue())
    parts_.events.tellNext();
  else
    parts_.index.tellNext();
}

void EventDesk::startAt(int64 begin, int64 end) {
  parts_.events.startAt(begin, end);
  parts_.index.startAt(begin, end);
}

void EventDesk::beginRun(const TimeShift& shift) {
  parts_.events.setTimeShift(shift);
  parts_.events.followScript(true);
  parts_.index.setTimeShift(shift);
  parts_.index.followTimes();
  parts_.publications.beginRun(shift);
}

void EventDesk::dropWaiting() {
  parts_.codes.dropChanges();
  parts_.publications.dropWaiting();
  parts_.events.dropWaiting();
}

}  // namespace orvane::detail
