#include "platform/trade/TradeDesk.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/core/LostCalls.h"
#include "platform/core/MadeInPlace.h"
#include "platform/trade/EventSources.h"
#include "shared/CodeTables.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kConnected;
using status::kDisconnected;
using status::kNotConnected;
/// How much news a playback lets gather before it goes to the file.
constexpr std::size_t kNewsPerBatch = 1024;

/// For a report that is made of a whole record.
constexpr auto kAsItIs = [](const auto&) {};

TradeSubject subjectOf(TradeTopic topic, const Order& order) {
  return {topic, order.account.accountKey, order.code.id, eventSourcesOf(order.source),
          order.source.createSource};
}

}  // namespace

TradeDesk::TradeDesk(Parts parts)
    : parts_(std::move(parts)), feed_(parts_.market), followsScript_(parts_.isPlayback) {
  noteDue();
}

// What is due.

bool TradeDesk::serveDue() {
  if (parts_.cancelled.load(std::memory_order_relaxed)) admits_ = false;
  const int64 now = parts_.now();
  if (!anyWaiting() && nextDue_ > now) return false;
  if (parts_.grids.isInUse()) watchNewCodes(now);
  bool any = false;
  {
    const std::lock_guard lock(parts_.state.mutex);
    any = changeConnections(now);
    any = takeWishes(now) || any;
    any = admit(now) || any;
    any = letArrive(now) || any;
    noteDue();
  }
  any = deliver(now) || any;
  if (parts_.grids.isInUse()) any = parts_.grids.serve(!any) || any;
  persist(false);
  return any;
}

void TradeDesk::watchNewCodes(int64 now) {
  const std::vector<int64> codes = parts_.grids.takeNewCodes();
  if (codes.empty()) return;
  const std::lock_guard lock(parts_.state.mutex);
  for (const int64 codeId : codes) feed_.begin(codeId, parts_.state.exchange());
  takeEvents(now);
}

int64 TradeDesk::scriptTime() const {
  const int64 time = parts_.state.connections.nextTime();
  return followsScript_ && time != kUnsetTime ? feed_.shown(time) : kUnsetTime;
}

void TradeDesk::noteDue() {
  nextDue_ = scriptTime();
  if (!arriving_.empty()) nextDue_ = std::min(nextDue_, arriving_.begin()->first);
  if (!reports_.empty()) nextDue_ = std::min(nextDue_, reports_.nextDue());
}

bool TradeDesk::changeConnections(int64 now) {
  TradeState& state = parts_.state;
  bool any = false;
  while (scriptTime() <= now) {
    any = true;
    const std::int32_t next = state.connections.nextAccount();
    const bool wasUp = state.connections.isUp(next);
    const ConnectionBook::Change& change = state.connections.makeNext();
    if (change.isUp == wasUp) continue;
    if (parts_.file != nullptr) changes_.emplace_back(now, change);
    // What was on its way is lost; whoever fetches the account's state later finds it there.
    std::vector<ReportQueue::Report> lost = reports_.takeIf([&](const TradeReport& report) {
      return report.subject.account == change.account && report.subject.topic != TradeTopic::Status;
    });
    std::ranges::move(lost, std::back_inserter(lost_));
    ++state.number;
    const TradeSubject subject{
        TradeTopic::Status, change.account, TradeSelector::kEveryCode, 0, {}};
    reportStatus(change.account, now, state.subscriptions.receiversOf(subject, state.number));
  }
  return any;
}

bool TradeDesk::takeWishes(int64 now) {
  TradeState& state = parts_.state;
  const std::vector<TradeState::StatusWish> wishes = std::exchange(state.statusWishes, {});
  for (const TradeState::StatusWish& wish : wishes)
    if (std::shared_ptr<TradeReceiver> receiver = wish.receiver.lock())
      reportStatus(wish.account, now, {std::move(receiver)});
  return !wishes.empty();
}

bool TradeDesk::admit(int64 now) {
  TradeState& state = parts_.state;
  if (admits_) {
    state.inbox.takeAll(actions_);
    for (TradeAction& action : actions_)
      action.isCancel ? admitCancel(std::move(action), now) : admitOrder(std::move(action), now);
    actions_.clear();
  }
  const bool any = admits_ && state.waiting.load() != 0;
  state.waiting.store(state.inbox.empty() ? 0 : 1);
  return any;
}

void TradeDesk::admitOrder(TradeAction action, int64 now) {
  TradeState& state = parts_.state;
  const Order& order = *action.order;
  state.store.addOrder(order);
  state.equity().addSource(order.account.accountKey, order.source.createSource);
  if (state.connections.isUp(order.account.accountKey))
    arriving_.emplace(action.sentAt + parts_.options.entryLatencyMs, std::move(action));
  else
    rejectOrder(order, now);
}

void TradeDesk::rejectOrder(Order order, int64 now) {
  OrderWriter(order).setStatus(order::Status::Rejected);
  order.ints[order::ReasonAt] = kNotConnected;
  order.text5 = "account not connected";
  order.updateTime() = now;
  parts_.state.store.updateOrder(order);
}

void TradeDesk::admitCancel(TradeAction action, int64 now) {
  TradeState& state = parts_.state;
  std::optional<Order> order = state.store.order(action.order->id);
  if (!order || OrderView(*order).isFinal()) return;
  if (!state.connections.isUp(order->account.accountKey)) return;
  const bool isTold =
      parts_.options.entryLatencyMs > 0 && OrderView(*order).status() != order::Status::Sent;
  if (isTold) cancelling_[action.order->id] = action.order->cancelSource;
  arriving_.emplace(action.sentAt + parts_.options.entryLatencyMs, std::move(action));
  if (!isTold) return;
  auto pending = std::make_unique<Order>(*std::move(order));
  pending->updateTime() = now;
  ++state.number;
  reportOrder(std::move(pending), now + parts_.options.reportLatencyMs);
}

bool TradeDesk::letArrive(int64 now) {
  TradeState& state = parts_.state;
  bool any = false;
  while (!arriving_.empty() && arriving_.begin()->first <= now) {
    any = true;
    TradeAction action = std::move(arriving_.begin()->second);
    arriving_.erase(arriving_.begin());
    if (action.isCancel) {
      state.exchange().cancel(action.order->id, action.order->cancelSource, now);
    } else {
      feed_.begin(action.order->code.id, state.exchange());
      state.exchange().place(std::move(action.order), now);
    }
    takeEvents(now);
  }
  return any;
}

// What the exchange tells.

bool TradeDesk::feedRecord(const MarketStream& stream) {
  TradeState& state = parts_.state;
  const std::size_t row = stream.known.load(std::memory_order_relaxed);
  if (feed_.mayWait(stream, row) && !state.postponed.isFull()) {
    state.postponed.add(stream, row);
    feed_.skip(stream, row);
    return nextDue_ <= parts_.now();
  }
  const int64 codeId = stream.code().id;
  {
    const std::lock_guard lock(state.mutex);
    const int64 time = feed_.shown(stream.timeAt(row));
    feed_.feedNext(stream, state.exchange(), time);
    takeEvents(time);
    const bool isHeld = state.equity().noteMark({codeId, time, stream.isTicks()});
    const bool isAwaited = state.exchange().isBusy(codeId) || parts_.grids.isWatched(codeId);
    // Live, times are shown otherwise than the data have them.
    feed_.noteQuiet(stream, isHeld && !isAwaited && parts_.isPlayback);
    if (!isHeld && !isAwaited) feed_.rest(stream);
    noteDue();
  }
  parts_.grids.onRecord(codeId);
  return nextDue_ <= parts_.now() || parts_.grids.anyWaiting();
}

void TradeDesk::takeEvents(int64 now) {
  if (!parts_.state.exchange().hasEvents()) return;
  parts_.state.exchange().takeEvents(events_);
  for (TradeEvent& event : events_) takeEvent(event, now);
}

void TradeDesk::takeEvent(TradeEvent& event, int64 now) {
  TradeState& state = parts_.state;
  ++state.number;
  const int64 due = std::max(event.time + parts_.options.reportLatencyMs, now);
  if (auto* order = std::get_if<std::unique_ptr<Order>>(&event.what)) {
    reportOrder(std::move(*order), due);
  } else if (auto* told = std::get_if<std::unique_ptr<OrderFill>>(&event.what)) {
    const OrderFill& fill = **told;
    state.store.addFill(fill);
    // A fill inside a bar is known, and its price marked, when the bar is over.
    state.equity().noteFill(fill.account.accountKey, fill.source.createSource, fill.code.id, now);
    report<std::unique_ptr<OrderFill>>({TradeTopic::Fill, fill.account.accountKey, fill.code.id,
                                        eventSourcesOf(fill.source), fill.source.createSource},
                                       due, kAsItIs, std::move(*told));
  } else if (auto* position = std::get_if<TradeEvent::PositionChanged>(&event.what)) {
    reportPosition(*position, due);
  } else {
    const std::int32_t account = std::get<TradeEvent::CapitalChanged>(event.what).accountKey;
    report<TradingAccount>(
        {TradeTopic::Capital, account, TradeSelector::kEveryCode, 0, {}}, due, kAsItIs,
        MadeInPlace([&] { return state.exchange().ledger(account)->capitalRecord(event.time); }));
  }
}

void TradeDesk::reportOrder(std::unique_ptr<Order> told, int64 due) {
  Order& order = *told;
  if (const auto at = cancelling_.find(order.id); at != cancelling_.end()) {
    if (OrderView(order).isFinal()) {
      cancelling_.erase(at);
    } else {
      OrderWriter(order).setStatus(order::Status::CancelPending);
      order.cancelSource = at->second;
    }
  }
  parts_.state.store.updateOrder(order);
  report<std::unique_ptr<Order>>(subjectOf(TradeTopic::Order, order), due, kAsItIs,
                                 std::move(told));
}

void TradeDesk::reportPosition(const TradeEvent::PositionChanged& changed, int64 due) {
  const Ledger* ledger = parts_.state.exchange().ledger(changed.accountKey);
  report<Position>({TradeTopic::Position, changed.accountKey, changed.codeId, 0, {}}, due,
                   [&](Position& position) { ledger->positionRecord(changed.codeId, position); });
  report<SourcePosition>(
      {TradeTopic::SourcePosition, changed.accountKey, changed.codeId, 0, changed.source}, due,
      [&](SourcePosition& position) {
        ledger->sourcePositionRecord(changed.codeId, changed.source, position);
      });
}

template <typename What, typename Fill, typename... Args>
void TradeDesk::report(TradeSubject subject, int64 due, const Fill& fill, Args&&... args) {
  TradeState& state = parts_.state;
  if (!state.connections.isUp(subject.account)) return;
  ReportQueue::Report made = reports_.blank();
  state.subscriptions.receiversOf(subject, state.number, made->receivers);
  if (made->receivers.empty()) {
    reports_.giveBack(std::move(made));
    return;
  }
  made->due = due;
  made->subject = std::move(subject);
  made->endings = state.subscriptions.endings();
  // Before it stands in the queue: half a record is told to nobody, whatever fails.
  fill(made->what.emplace<What>(std::forward<Args>(args)...));
  reports_.put(std::move(made));
}

void TradeDesk::reportStatus(std::int32_t account, int64 due, TradeReceivers receivers) {
  const TradingAccountID& id = *parts_.state.accounts.find(account);
  const bool isUp = parts_.state.connections.isUp(account);
  ReportQueue::Report made = reports_.blank();
  made->due = due;
  made->subject = {TradeTopic::Status, account, TradeSelector::kEveryCode, 0, {}};
  made->receivers = std::move(receivers);
  made->endings = TradeReport::kNotKnown;  // Who wished for it may have gone since.
  auto& status = made->what.emplace<TradeReport::Status>();
  status.account = AccountBook::connectionOf(id);
  status.info.statusCode = isUp ? kConnected : kDisconnected;
  if (!isUp) status.info.result = {kNotConnected, statusMessage(kNotConnected)};
  status.info.accounts = {id};
  reports_.put(std::move(made));
}

// Delivering.

bool TradeDesk::deliver(int64 now) {
  bool any = false;
  lost_.clear();
  rounds_.begin();
  while (!reports_.empty() && reports_.nextDue() <= now) {
    any = true;
    ReportQueue::Report report = reports_.takeNext();
    for (const std::shared_ptr<TradeReceiver>& receiver : report->receivers) {
      rounds_.enter(receiver->calledIn);
      if (isStillWanted(*receiver, *report)) call(*receiver, *report);
    }
    reports_.giveBack(std::move(report));
  }
  const std::lock_guard lock(parts_.state.mutex);
  noteDue();
  return any;
}

bool TradeDesk::isStillWanted(const TradeReceiver& receiver, const TradeReport& report) const {
  const SubscriptionBook& subscriptions = parts_.state.subscriptions;
  if (report.endings == subscriptions.endings()) return true;
  const std::lock_guard lock(parts_.state.mutex);
  return subscriptions.reaches(receiver, report.subject);
}

void TradeDesk::call(TradeReceiver& receiver, const TradeReport& report) {
  guarded("a trade call-back threw", [&] { callTradeSpi(*receiver.spi, report.what); });
}

// The run.

void TradeDesk::beginRun(const TimeShift& shift) {
  parts_.grids.beginRun();
  std::optional<StoredRun> run = openRun(shift);
  if (run && parts_.file != nullptr) parts_.file->beginRun(std::move(*run));
}

/// What the store is told of a run that begins; nothing if it has begun before.
std::optional<StoredRun> TradeDesk::openRun(const TimeShift& shift) {
  TradeState& state = parts_.state;
  const std::lock_guard lock(state.mutex);
  feed_.setTimeShift(shift);
  followsScript_ = true;
  admits_ = !parts_.cancelled.load();
  noteDue();
  if (state.equity().hasStarted()) return std::nullopt;
  state.equity().start(parts_.now());
  StoredRun run{parts_.isPlayback, parts_.now(), {}};
  for (const TradingAccountID& account : state.accounts.all())
    run.accounts.push_back(
        state.exchange().ledger(account.accountKey)->capitalRecord(parts_.now()));
  return run;
}

void TradeDesk::endRun() {
  {
    const std::lock_guard lock(parts_.state.mutex);
    parts_.state.equity().finish(parts_.now());
  }
  persist(true);
  if (parts_.cancelled.load())
    admits_ = false;
  else if (parts_.file != nullptr)
    parts_.file->completeRun();
}

void TradeDesk::rewind() {
  parts_.grids.rewind();
  TradeState& state = parts_.state;
  const ReportQueue ended = std::exchange(reports_, {});
  const std::lock_guard lock(state.mutex);
  state.resetExchange();
  state.store.clear();
  state.forgetCurves();
  state.inbox.reset();
  state.connections.reset();
  state.waiting.store(state.statusWishes.empty() ? 0 : 1);
  feed_.reset();
  admits_ = true;
  followsScript_ = parts_.isPlayback;
  arriving_.clear();
  cancelling_.clear();
  changes_.clear();
  noteDue();
}

void TradeDesk::persist(bool isEnd) {
  if (parts_.file == nullptr) return;
  if (std::optional<StoredNews> news = takeNews(isEnd)) parts_.file->write(std::move(*news));
}

std::optional<StoredNews> TradeDesk::takeNews(bool isEnd) {
  TradeState& state = parts_.state;
  const std::lock_guard lock(state.mutex);
  const std::size_t count =
      state.store.changedCount() + changes_.size() + state.store.newFillCount();
  if (!isEnd && count < (parts_.isPlayback ? kNewsPerBatch : 1)) return std::nullopt;
  // Before the first run there is nothing to file the news under.
  if (!state.equity().hasStarted()) return std::nullopt;
  StoredNews news;
  news.time = parts_.now();
  news.orders = state.store.takeChanged();
  news.fills = state.store.takeNewFills();
  for (const auto& [time, change] : std::exchange(changes_, {}))
    news.connections.push_back({change.account, time, change.isUp});
  const auto take = [&](const EquityPoints& points, std::size_t& stored, std::int32_t account,
                        const std::string& source) {
    const std::size_t end = points.size() - (isEnd || points.empty() ? 0 : 1);
    for (; stored < end; ++stored) news.equity.push_back({account, source, stored, points[stored]});
  };
  for (const TradingAccountID& account : state.accounts.all()) {
    EquityBook::AccountCurve& curve = state.equity().account(account.accountKey);
    take(curve.points, curve.stored, account.accountKey, {});
    news.capitals.push_back(state.exchange().ledger(account.accountKey)->capitalRecord(news.time));
  }
  for (auto& [key, curve] : state.equity().sources())
    take(state.equity().pointsOf(key, curve), curve.stored, key.first, key.second);
  return news;
}

}  // namespace orvane::detail
