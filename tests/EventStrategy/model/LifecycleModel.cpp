#include "tests/EventStrategy/model/LifecycleModel.h"

#include <algorithm>
#include <utility>

#include "EventStrategy/EventTypes.h"
#include "shared/GbkLiteral.h"

namespace orvane::support {
namespace {

bool isOrder(const EventModel& event) { return event.type == EventTypeOrder; }

std::string shown(int number) { return std::to_string(number); }

void append(Flow::Parts& parts, Flow::Parts more) {
  for (Flow::Part& part : more) parts.push_back(std::move(part));
}

}  // namespace

// What hosts do.

RunnerModel& LifecycleModel::create(Flow& flow, const std::string& name) {
  const std::size_t id = runners.size();
  runners.push_back(std::make_unique<RunnerModel>());
  RunnerModel& fresh = *runners.back();
  fresh.id = static_cast<int>(id);
  fresh.name = name;
  fresh.handles = 2;
  flow.firstOp({});
  const auto former = idByName.find(name);
  if (former != idByName.end()) release(flow, *runners[former->second]);
  idByName[name] = id;
  return fresh;
}

void LifecycleModel::destroy(Flow& flow, const std::string& name) {
  flow.firstOp({});
  const auto it = idByName.find(name);
  if (it == idByName.end()) return;
  RunnerModel& runner = *runners[it->second];
  idByName.erase(it);
  runner.spi = 0;
  end(runner, Control::Stop);
  release(flow, runner);
}

void LifecycleModel::drop(Flow& flow, RunnerModel& runner) {
  flow.firstOp({});
  release(flow, runner);
}

void LifecycleModel::release(Flow& flow, RunnerModel& runner) {
  if (--runner.handles > 0) return;
  runner.attached = false;
  if (!runner.isKept()) flow.first(destruct(runner));
}

void LifecycleModel::start(RunnerModel& runner, int mark) {
  request(runner, {.control = Control::Start, .mark = mark});
  runner.stopping = false;
}

void LifecycleModel::update(RunnerModel& runner, int mark) {
  request(runner, {.control = Control::Update, .mark = mark});
}

void LifecycleModel::reset(RunnerModel& runner, int mark) {
  if (!runner.stopping) request(runner, {.control = Control::Reset, .mark = mark});
}

void LifecycleModel::end(RunnerModel& runner, Control control, const std::string& reason) {
  discard(runner);
  request(runner, {.control = control, .text = reason});
  runner.stopping = true;
}

// The pump.

void LifecycleModel::push(RunnerModel& runner, EventModel event) {
  if (!runner.pendingCounter) ++counters;
  runner.pendingCounter = true;
  orders += isOrder(event) ? 1 : 0;
  request(runner, std::move(event));
}

void LifecycleModel::request(RunnerModel& runner, EventModel event) {
  runner.pending.push_back(std::move(event));
  schedule(runner);
}

void LifecycleModel::schedule(RunnerModel& runner) {
  if (runner.scheduled || runner.pending.empty()) return;
  runner.scheduled = true;
  tasks.push_back(static_cast<std::size_t>(runner.id));
}

void LifecycleModel::discard(RunnerModel& runner) {
  for (const EventModel& event : runner.pending) orders -= isOrder(event) ? 1 : 0;
  runner.pending.clear();
  if (std::exchange(runner.pendingCounter, false)) --counters;
}

void LifecycleModel::beginTask(Flow& flow) {
  RunnerModel& runner = *nextTask();
  tasks.pop_front();
  if (!runner.alive) return;
  runner.inTask = true;
  runner.batch.swap(runner.pending);
  runner.batchCounter = std::exchange(runner.pendingCounter, false);
  flow.first({Flow::act([&] { nextEvent(flow, runner); })});
}

void LifecycleModel::nextEvent(Flow& flow, RunnerModel& runner) {
  if (runner.batch.empty()) return endTask(flow, runner);
  const EventModel event = runner.batch.front();
  runner.batch.pop_front();
  flow.first({Flow::eventEnd([&, counted = isOrder(event)] {
    orders -= counted ? 1 : 0;
    nextEvent(flow, runner);
  })});
  deliver(flow, runner, event);
}

void LifecycleModel::endTask(Flow& flow, RunnerModel& runner) {
  if (std::exchange(runner.batchCounter, false)) --counters;
  runner.scheduled = false;
  schedule(runner);
  runner.inTask = false;
  if (!runner.isKept()) flow.first(destruct(runner));
}

Flow::Parts LifecycleModel::destruct(RunnerModel& runner) {
  runner.alive = false;
  discard(runner);
  Flow::Parts parts;
  if (runner.strategy != 0) parts.push_back(destroyed(runner));
  runner.strategy = 0;
  append(parts, runner.subscriptions.release());
  return parts;
}

void LifecycleModel::deliver(Flow& flow, RunnerModel& runner, const EventModel& event) {
  if (event.type != 0) {
    if (runner.wantsData() && runner.strategy != 0) flow.first(dispatched(runner, event));
    return;
  }
  if (event.control == Control::Start) return flow.first(started(flow, runner, event.mark));
  if (!runner.isRunning()) return;
  Flow::Parts parts;
  switch (event.control) {
    case Control::Stop:
    case Control::Error:
    case Control::Finish:
      parts = ended(flow, runner);
      parts.push_back(Flow::act([&flow, &runner, control = event.control, text = event.text, this] {
        runner.flags &= ~RunnerModel::kRunning;
        if (control == Control::Error) {
          runner.flags |= RunnerModel::kError;
          runner.message = text;
        }
        if (control == Control::Finish) runner.flags |= RunnerModel::kFinished;
        flow.first({told(flow, runner)});
      }));
      break;
    case Control::Update:
      if (runner.wantsData() && runner.strategy != 0)
        parts = {toStrategy(runner, "onUpdate " + shown(event.mark))};
      break;
    case Control::Reset:
      if (!runner.wantsData()) return;
      parts = ended(flow, runner);
      parts.push_back(Flow::act([&flow, &runner, mark = event.mark, this] {
        runner.flags &= ~RunnerModel::kRunning;
        flow.first(started(flow, runner, mark));
      }));
      break;
    default:
      break;
  }
  flow.first(std::move(parts));
}

// The life of a run.

Flow::Part LifecycleModel::toStrategy(const RunnerModel& runner, const std::string& call) {
  return Flow::call("s" + shown(runner.strategy) + " " + call);
}

Flow::Part LifecycleModel::destroyed(RunnerModel& runner) {
  return toStrategy(runner, "destroyed");
}

Flow::Part LifecycleModel::told(Flow& flow, RunnerModel& runner) {
  return Flow::act([&] {
    if (runner.spi == 0) return;
    flow.first({Flow::call("spi" + shown(runner.spi) + " status " + shown(runner.status()) + " " +
                           runner.message)});
  });
}

Flow::Parts LifecycleModel::started(Flow& flow, RunnerModel& runner, int mark) {
  if (runner.isRunning()) return {};
  Flow::Parts parts;
  if (runner.strategy != 0) parts.push_back(destroyed(runner));
  runner.strategy = 0;
  parts.push_back(Flow::act([&] {
    runner.flags = RunnerModel::kRunning;
    runner.message.clear();
  }));
  parts.push_back(told(flow, runner));
  parts.push_back(Flow::act([&flow, &runner, mark, this] { load(flow, runner, mark); }));
  return parts;
}

void LifecycleModel::load(Flow& flow, RunnerModel& runner, int mark) {
  if (runner.path != kGood) {
    runner.flags = RunnerModel::kError;
    runner.message = "加载"_gbk + runner.path + "失败,"_gbk + kLoadError;
    return flow.first({told(flow, runner)});
  }
  flow.first({Flow::call("create " + runner.name), Flow::act([&flow, &runner, mark, this] {
                runner.strategy = ++lastStrategy;
                runner.hearsAccounts = true;
                flow.first(
                    {toStrategy(runner, "onStart " + shown(mark) + " for " + runner.source)});
              })});
}

Flow::Parts LifecycleModel::ended(Flow& flow, RunnerModel& runner) {
  Flow::Parts parts;
  if (runner.strategy != 0) {
    parts.push_back(toStrategy(runner, "onStop"));
    parts.push_back(Flow::act([&] {
      const Flow::Part call = destroyed(runner);
      runner.strategy = 0;
      flow.first({call});
    }));
  }
  parts.push_back(Flow::act([&] { flow.first(runner.subscriptions.exit()); }));
  parts.push_back(Flow::act([&] { runner.envs.clear(); }));
  return parts;
}

bool LifecycleModel::isHeard(int spi) const {
  return std::ranges::any_of(
      runners, [=](const auto& runner) { return runner->alive && runner->spi == spi; });
}

// The second gate.

Flow::Parts LifecycleModel::dispatched(const RunnerModel& runner, const EventModel& event) {
  const SubscriptionModel& books = runner.subscriptions;
  const auto call = [&](const std::string& what, const std::string& who) {
    return Flow::Parts{toStrategy(runner, what + " " + who + " " + shown(event.mark))};
  };
  const auto ofRequest = [&](const std::string& what) -> Flow::Parts {
    if (const auto it = books.byCaller.find(event.id); it != books.byCaller.end())
      return call(what + "ById " + shown(event.id), shown(it->second));
    if (const auto it = books.drawn.find(event.id); it != books.drawn.end())
      return call(what, shown(it->second));
    return {};
  };
  const auto ofDic = [&](const std::string& what) -> Flow::Parts {
    const auto it = books.dics.find(event.id);
    return it == books.dics.end() ? Flow::Parts() : call(what, shown(it->second));
  };
  Flow::Parts parts;
  switch (event.type) {
    case EventTypeAccountStatus:
      for (const int account : event.accounts)
        append(parts, call("onAccountStatus", shown(account)));
      return parts;
    case EventTypeCapital:
      return call("onCapital", shown(event.id));
    case EventTypeOrder:
      return call("onOrder", shown(event.id));
    case EventTypeTick:
      return books.quoteGate.contains(event.id) ? call("onQuote", shown(event.id)) : parts;
    case EventTypeBar:
      return ofRequest(event.isTicks ? "onTickSeries" : "onBarSeries");
    case EventTypeBarProcess:
      return ofRequest("onBarProgress");
    case EventTypeTimer:
      return books.timers.contains(event.id) ? call("onTimer", shown(event.id)) : parts;
    case EventTypeData:
      return ofDic("onDic");
    case EventTypeDataDeleted:
      return ofDic("onDicDeleted");
    case EventTypeDataSnapshot:
      return books.snapshotGate.contains(event.id) ? call("onDicSnapshot", shown(event.id)) : parts;
    default:
      return parts;
  }
}

}  // namespace orvane::support
