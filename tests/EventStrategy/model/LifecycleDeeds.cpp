// What hosts, strategies and services do in a schedule: each deed is told to the model and done.

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/CountedOrder.h"
#include "tests/EventStrategy/model/LifecycleWorld.h"
#include "tests/support/RunnerAccess.h"

namespace orvane::support {
namespace {

using Control = LifecycleModel::Control;

constexpr const char* kNames[] = {"life-a", "life-b", "life-c"};

/// Each runner has codes, keys and request ids of its own, so that a text tells whose it is.
constexpr int kPerRunner = 10;
constexpr int kFirstCallersId = 1000000;

int ofRunner(const RunnerModel& runner, Draw& draw) {
  return runner.id * kPerRunner + draw.below(2);
}

QJsonObject params(int mark) { return {{"v", mark}}; }

template <typename Numbers>
int oneOf(const Numbers& numbers, Draw& draw) {
  return *std::next(numbers.begin(), draw.below(static_cast<int>(numbers.size())));
}

std::string text(int number) { return std::to_string(number); }

}  // namespace

template <typename Call>
void LifecycleWorld::op(Flow::Parts parts, Call call) {
  thread().flow.firstOp(std::move(parts));
  call();
  settle();
}

// What hosts do.

LifecycleWorld::Slot* LifecycleWorld::aSlot(Draw& draw) {
  std::vector<Slot*> filled;
  for (Slot& slot : slots_)
    if (slot.handle) filled.push_back(&slot);
  return filled.empty()
             ? nullptr
             : filled[static_cast<std::size_t>(draw.below(static_cast<int>(filled.size())))];
}

void LifecycleWorld::hostDeed(Draw& draw) {
  // The factory holds its lock while a runner goes: nobody else may come in between.
  Thread& own = thread();
  ++own.closed;
  const int what = draw.below(100);
  Slot* const slot = aSlot(draw);
  if (slot == nullptr || what < 4) {
    create(draw);
  } else if (what < 6) {
    destroy(kNames[draw.below(3)]);
  } else if (what < 9) {
    say("drop " + slot->model->name);
    drop(*slot);
  } else if (what < 38) {
    const int mark = ++lastMark_;
    say("start " + slot->model->name + " " + text(mark));
    model_.start(*slot->model, mark);
    slot->handle->start(params(mark));
  } else if (what < 43) {
    say("stop " + slot->model->name);
    end(*slot->model, Control::Stop);
    slot->handle->stop();
  } else if (what < 73) {
    const int mark = ++lastMark_;
    say("update " + slot->model->name + " " + text(mark));
    model_.update(*slot->model, mark);
    slot->handle->update(params(mark));
  } else if (what < 80) {
    const int mark = ++lastMark_;
    say("reset " + slot->model->name + " " + text(mark));
    seen_.resets += slot->model->stopping ? 0 : 1;
    model_.reset(*slot->model, mark);
    slot->handle->reset4PlayBack(params(mark));
  } else if (what < 86) {
    giveSpi(*slot, draw);
  } else if (what < 92) {
    givePath(*slot, draw);
  } else if (what < 97) {
    giveEnv(*slot, draw);
  } else {
    slot->model->source = "source " + text(++lastMark_);
    say("orders of " + slot->model->name + " from " + slot->model->source);
    slot->handle->setOrderSource(slot->model->source);
    require(slot->handle->name() == slot->model->name, "a runner changed its name");
  }
  --own.closed;
}

void LifecycleWorld::create(Draw& draw) {
  Slot& slot = slots_[static_cast<std::size_t>(draw.below(static_cast<int>(slots_.size())))];
  const std::string name = kNames[draw.below(3)];
  RunnerModel& model = model_.create(thread().flow, name);
  say("create " + name + " as runner " + text(model.id));
  auto handle = IRunnerFactory::instance()->createRunner(name, draw.below(2));
  settle();
  RunnerContext& context = detail::RunnerAccess::context(static_cast<Runner&>(*handle));
  watched_.push_back({context.weak_from_this(), TestAccess::quotes(context).shared_from_this(),
                      TestAccess::data(context).shared_from_this(),
                      TestAccess::trades(context).shared_from_this(),
                      TestAccess::timerSrc(context)});
  drop(slot);
  slot = {std::move(handle), &model};
  if (!draw.oneIn(5)) giveSpi(slot, draw);
  givePath(slot, draw);
}

void LifecycleWorld::destroy(const std::string& name) {
  say("destroy " + name);
  model_.destroy(thread().flow, name);
  IRunnerFactory::instance()->destroyRunner(name);
  settle();
}

void LifecycleWorld::drop(Slot& slot) {
  if (!slot.handle) return;
  model_.drop(thread().flow, *slot.model);
  slot = {};
  settle();
}

void LifecycleWorld::giveSpi(Slot& slot, Draw& draw) {
  if (draw.oneIn(4)) {
    say("no ear for " + slot.model->name);
    slot.model->spi = 0;
    return slot.handle->setSpi({});
  }
  const auto spi = std::make_shared<ProbeSpi>(*this, ++lastSpi_);
  say("give spi" + text(lastSpi_) + " to " + slot.model->name);
  spis_[lastSpi_] = spi;
  slot.model->spi = lastSpi_;
  slot.handle->setSpi(spi);
}

void LifecycleWorld::givePath(Slot& slot, Draw& draw) {
  const int what = draw.below(8);
  slot.model->path = what == 0   ? LifecycleModel::kBroken
                     : what == 1 ? LifecycleModel::kEmpty
                                 : LifecycleModel::kGood;
  say("module of " + slot.model->name + ": " + slot.model->path);
  slot.handle->setStrategyPath(slot.model->path);
}

void LifecycleWorld::giveEnv(Slot& slot, Draw& draw) {
  const std::string key = text(draw.below(3)), value = text(++lastMark_);
  say("value for " + slot.model->name + ": " + key + "=" + value);
  slot.model->envs[key] = value;
  slot.handle->setEnvs({{key, value}});
}

void LifecycleWorld::end(RunnerModel& runner, Control control, const std::string& reason) {
  seen_.discarded += static_cast<std::int64_t>(runner.pending.size());
  model_.end(runner, control, reason);
}

// What a strategy does within a call.

void LifecycleWorld::contextDeed(RunnerModel& runner, IContext& context, Draw& draw) {
  const int what = draw.below(10);
  if (what < 7)
    subscribeDeed(runner, context, draw);
  else if (what < 8)
    unsubscribeDeed(runner, context, draw);
  else if (what < 9)
    hostHears(runner, context, draw);
  else
    endDeed(runner, context, draw);
}

void LifecycleWorld::endDeed(RunnerModel& runner, IContext& context, Draw& draw) {
  ++seen_.ends;
  const int what = draw.below(3);
  if (what == 0) {
    say("stops itself");
    end(runner, Control::Stop);
    context.stop();
  } else if (what == 1) {
    const std::string why = "why " + text(++lastMark_);
    say("sets error " + why);
    end(runner, Control::Error, why);
    context.setError(why);
  } else {
    say("finishes");
    end(runner, Control::Finish);
    context.setFinish();
  }
}

void LifecycleWorld::hostHears(RunnerModel& runner, IContext& context, Draw& draw) {
  const int mark = ++lastMark_;
  const auto call = [&](const std::string& what) {
    Flow::Parts parts;
    if (runner.spi != 0) parts.push_back(Flow::call("spi" + text(runner.spi) + " " + what));
    return parts;
  };
  if (draw.oneIn(2))
    return op(call("notify " + text(mark)), [&] { context.notifySpi(params(mark)); });
  const std::string key = text(draw.below(3));
  const bool store = draw.oneIn(2);
  if (store) runner.envs[key] = text(mark);
  op(call("envs " + key + "=" + text(mark)), [&] { context.setEnv(key, text(mark), store); });
}

void LifecycleWorld::subscribeDeed(RunnerModel& runner, IContext& context, Draw& draw) {
  SubscriptionModel& books = runner.subscriptions;
  const int code = ofRunner(runner, draw);
  switch (draw.below(6)) {
    case 0:
      return op(books.subscribeQuote(code), [&] { context.subscribeQuote(codeOf(code), 0); });
    case 1:
      return op(books.subscribeBars(code, model_.lastRequest),
                [&] { context.subscribeKline(codeOf(code), "1m", 1, 2, 0, 0); });
    case 2: {
      // Now and then an id that the platform has drawn for another request of the runner.
      const bool clash = !books.drawn.empty() && draw.oneIn(2);
      const int id = clash ? books.drawn.begin()->first : kFirstCallersId + code;
      return op(books.subscribeBarsById(id, code),
                [&] { context.subscribeKline(id, codeOf(code), "1m", 1, 2, 0, 0); });
    }
    case 3:
      return op(books.subscribeDic(code, model_.lastRequest),
                [&] { context.subscribeDic("dictionary", text(code), 1, 2, 0); });
    case 4:
      return op(books.subscribeSnapshot(code),
                [&] { context.subscribeDicSnapshot("dictionary", text(code), 0); });
    default:
      return op(books.createTimer(model_.lastTimer), [&] { context.createTimer(1000, 0, 0); });
  }
}

void LifecycleWorld::unsubscribeDeed(RunnerModel& runner, IContext& context, Draw& draw) {
  SubscriptionModel& books = runner.subscriptions;
  const int code = ofRunner(runner, draw);
  switch (draw.below(6)) {
    case 0:
      return op(books.unsubscribeQuote(code), [&] { context.unsubscribeQuote(codeOf(code)); });
    case 1:
      return op(books.unsubscribeBars(code), [&] { context.unsubscribeKline(codeOf(code), "1m"); });
    case 2: {
      const bool known = !books.byCaller.empty() && !draw.oneIn(4);
      const int id = known ? books.byCaller.begin()->first : kFirstCallersId + code;
      return op(books.unsubscribeBarsById(id), [&] { context.unsubscribeKline(id); });
    }
    case 3:
      return op(books.unsubscribeDic(code),
                [&] { context.unsubscribeDic("dictionary", text(code)); });
    case 4:
      return op(books.unsubscribeSnapshot(code),
                [&] { context.unsubscribeDicSnapshot("dictionary", text(code)); });
    default: {
      const int id = books.timers.empty() ? 1 + draw.below(9) : oneOf(books.timers, draw);
      return op(books.stopTimer(id), [&] { context.stopTimer(id); });
    }
  }
}

// What services do. They keep what they were given for as long as they like.

void LifecycleWorld::serviceDeed(Draw& draw) {
  if (model_.runners.empty()) return;
  // Most often one that runs.
  const int newest = static_cast<int>(model_.runners.size()) - 1;
  const auto any = [&]() -> RunnerModel& {
    return *model_.runners[static_cast<std::size_t>(newest - draw.below(std::min(newest + 1, 5)))];
  };
  RunnerModel* chosen = &any();
  for (int i = 0; i < 3 && !chosen->wantsData(); ++i) chosen = &any();
  RunnerModel& runner = *chosen;
  seen_.lateData += runner.attached ? 0 : 1;
  switch (draw.below(4)) {
    case 0:
      return requestDeed(runner, draw);
    case 1:
      return dictionaryDeed(runner, draw);
    default:
      return pushDeed(runner, draw);
  }
}

void LifecycleWorld::requestDeed(RunnerModel& runner, Draw& draw) {
  const std::set<int>& gate = runner.subscriptions.requestGate;
  const int id =
      gate.empty() || draw.oneIn(8) ? 1 + draw.below(model_.lastRequest + 1) : oneOf(gate, draw);
  const int mark = ++lastMark_;
  const bool passes = runner.attached && gate.contains(id);
  QuoteSpi& spi = *watched(runner).quotes;
  const auto push = [&](int type, bool isTicks) {
    say(EventTypeNames.at(type) + " for request " + text(id) + " of runner " + text(runner.id));
    if (passes) model_.push(runner, {.type = type, .id = id, .mark = mark, .isTicks = isTicks});
  };
  switch (draw.below(5)) {
    case 0:
      push(EventTypeBarProcess, false);
      return spi.onKLineProgress(id, {mark, 0, 0, 0, {}});
    case 1:
      push(EventTypeRollover, false);
      return spi.onRollover(id, {});
    case 2:
      push(EventTypeBar, true);
      return spi.onTick(id, {IDepthMarketData()}, {}, mark);
    default:
      push(EventTypeBar, false);
      return spi.onKLine(id, {IKLine()}, {}, mark);
  }
}

void LifecycleWorld::dictionaryDeed(RunnerModel& runner, Draw& draw) {
  SubscriptionModel& books = runner.subscriptions;
  const int key = ofRunner(runner, draw);
  const int id =
      books.dataGate.empty() ? 1 + draw.below(model_.lastRequest + 1) : oneOf(books.dataGate, draw);
  const int mark = ++lastMark_;
  DataSpi& spi = *watched(runner).data;
  const auto push = [&](bool passes, int type, int about) {
    say(EventTypeNames.at(type) + " about " + text(about) + " to runner " + text(runner.id));
    if (runner.attached && passes) model_.push(runner, {.type = type, .id = about, .mark = mark});
  };
  switch (draw.below(4)) {
    case 0:
      push(books.snapshotGate.contains(key), EventTypeDataSnapshot, key);
      return spi.onSnapshot({text(key), "dictionary"}, {mark, 0, {}});
    case 1:
      push(books.dataGate.contains(id), EventTypeDataDeleted, id);
      return spi.onDelete(id, {}, mark, mark + 1, mark + 2);
    case 2:
      push(books.dataGate.contains(id), EventTypeDataProcess, id);
      return spi.onProgress(id, 1, 2);
    default:
      push(books.dataGate.contains(id), EventTypeData, id);
      return spi.onData(id, {}, {}, mark, 0);
  }
}

void LifecycleWorld::pushDeed(RunnerModel& runner, Draw& draw) {
  SubscriptionModel& books = runner.subscriptions;
  Watched& real = watched(runner);
  const int mark = ++lastMark_;
  const int what = draw.below(10);
  const auto push = [&](bool passes, EventModel event) {
    say("tells of " + EventTypeNames.at(event.type) + " to runner " + text(runner.id));
    if (passes) model_.push(runner, std::move(event));
  };
  if (what < 3) {
    const int code = ofRunner(runner, draw);
    push(runner.attached && books.quoteGate.contains(code),
         {.type = EventTypeTick, .id = code, .mark = mark});
    real.quotes->onQuote(quoteOf(code, mark));
  } else if (what < 5) {
    if (books.runningTimers.empty()) return;
    const int id = oneOf(books.runningTimers, draw);
    push(runner.attached, {.type = EventTypeTimer, .id = id, .mark = mark});
    require(platform_.timers.fire(id, mark), "a timer that should run does not");
  } else if (what < 6) {
    TradingAccount capital;
    capital.account.accountKey = draw.below(3);
    capital.value = mark;
    push(runner.attached,
         {.type = EventTypeCapital, .id = capital.account.accountKey, .mark = mark});
    static_cast<TradeEventSpi&>(*real.trades).onRtnCapital(capital);
  } else if (what < 7) {
    AccountStatusInfo info;
    info.statusCode = 1000 + mark;  // None that means something to the source.
    EventModel event{.type = EventTypeAccountStatus, .mark = info.statusCode};
    for (int key = draw.below(4); key > 0; --key) {
      event.accounts.push_back(key);
      info.accounts.emplace_back().accountKey = key;
    }
    push(runner.attached && runner.hearsAccounts, std::move(event));
    static_cast<TradeEventSpi&>(*real.trades).onRspStatus({}, info);
  } else if (const auto context = real.context.lock()) {
    if (what == 9 && draw.oneIn(2)) {
      const int type = draw.oneIn(2) ? 0 : EventTypeSignal;  // A record that nobody knows.
      push(true, {.type = type});
      return context->pushEvent(new IEvent(type));
    }
    auto* const order = new CountedOrder;
    order->order.id = mark;
    order->order.account.accountKey = draw.below(3);
    push(true, {.type = EventTypeOrder, .id = order->order.account.accountKey, .mark = mark});
    context->pushEvent(order);
  }
}

}  // namespace orvane::support
