// How threads take turns in a schedule, what the library calls, and what is compared.

#include "tests/EventStrategy/model/LifecycleWorld.h"

#include <stdexcept>
#include <utility>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "shared/TextCodec.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/CountedOrder.h"

namespace orvane::support {
namespace {

/// Called with no lock held, so that a thread may give its turn away inside.
constexpr const char* kServiceCalls[] = {"quote.subscribeQuote",
                                         "quote.unsubscribeQuote",
                                         "quote.subscribeBars",
                                         "quote.cancelRequest",
                                         "quote.unsubscribeSpi",
                                         "data.subscribeData",
                                         "data.unsubscribeData",
                                         "data.subscribeSnapshot",
                                         "data.unsubscribeSnapshot",
                                         "data.unsubscribeAllSnapshots",
                                         "timer.start",
                                         "timer.stop"};

bool isWorker(int index) { return index >= LifecycleWorld::kHosts + LifecycleWorld::kServices; }
bool isHost(int index) { return index < LifecycleWorld::kHosts; }

/// Counts up while it lives.
struct Counted {
  explicit Counted(int& target) : count(target) { ++count; }
  ~Counted() { --count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  int& count;
};

std::string whoIs(int index) {
  if (isHost(index)) return "host " + std::to_string(index);
  if (isWorker(index))
    return "worker " + std::to_string(index - LifecycleWorld::kHosts - LifecycleWorld::kServices);
  return "service " + std::to_string(index - LifecycleWorld::kHosts);
}

}  // namespace

LifecycleWorld::LifecycleWorld(Turns& turns, LogCapture& logs, Seen& seen, bool telling)
    : turns_(turns), logs_(logs), seen_(seen), telling_(telling) {
  pool_.reset();
  CountedOrder::live = 0;
  platform_.modules.put(LifecycleModel::kGood, [this] { return createStrategy(); });
  platform_.modules.putBroken(LifecycleModel::kBroken, LifecycleModel::kLoadError);
  platform_.modules.putWithoutExport(LifecycleModel::kEmpty, LifecycleModel::kLoadError);
  for (const char* operation : kServiceCalls)
    platform_.calls.onCall(operation, [this, operation] { onService(operation); });
  logs_.onLine([this](const CapturedLine& line) { onLine(line); });
}

LifecycleWorld::~LifecycleWorld() {
  for (Slot& slot : slots_) slot = {};
  // After a failure there may be anything left.
  for (const auto& runner : model_.runners) IRunnerFactory::instance()->destroyRunner(runner->name);
  for (int i = 0; i < 1000 && pool_.step(); ++i) {
  }
  pool_.reset();
  logs_.onLine({});
  logs_.clear();
}

std::string LifecycleWorld::play(const std::vector<Step>& steps) {
  steps_ = &steps;
  turns_.run([this] { return next(); }, [this](int index) { act(index); });
  if (failed_) return failure_;
  for (const auto& runner : model_.runners)
    require(!runner->alive, runner->name + " is left over in the model");
  require(strategies_.empty(), "strategies are left over");
  require(CountedOrder::live == 0, "records are left over");
  require(platform_.liveRefCounters() == 0, "counters are left over");
  for (const auto& [number, spi] : spis_)
    require(spi.expired(), "spi" + std::to_string(number) + " is left over");
  return failure_;
}

// Turns.

int LifecycleWorld::next() {
  if (!failed_) check();
  const auto inside = [this] {
    for (int i = 0; i < kThreads; ++i)
      if (threads_[static_cast<std::size_t>(i)].inside > 0) return i;
    return Turns::kNobody;
  };
  if (failed_) return inside();
  while (at_ < steps_->size()) {
    step_ = (*steps_)[at_++];
    const Thread& thread = threads_[static_cast<std::size_t>(step_.thread)];
    if (thread.blockedUntil > at_) continue;
    if (isWorker(step_.thread) && thread.inside == 0 && pool_.pending() == 0) continue;
    ++seen_.steps;
    return step_.thread;
  }
  winding_ = true;
  require(++wound_ < 20000, "no end");
  if (const int index = inside(); index != Turns::kNobody || failed_) return index;
  if (pool_.pending() > 0) return kHosts + kServices;
  return letGo_ ? Turns::kNobody : 0;
}

void LifecycleWorld::act(int index) {
  Draw draw(step_.dice);
  if (isWorker(index))
    runTask(thread());
  else if (winding_)
    letGo();
  else if (isHost(index))
    hostDeed(draw);
  else
    serviceDeed(draw);
}

void LifecycleWorld::runTask(Thread& thread) {
  thread.task = model_.nextTask();
  require(thread.task != nullptr, "a task that should not be");
  if (failed_) return;
  say("task of " + thread.task->name);
  model_.beginTask(thread.flow);
  pool_.step();
  if (!failed_)
    if (const std::string wrong = thread.flow.taskReturned(); !wrong.empty()) fail(wrong);
  thread.task = nullptr;
}

void LifecycleWorld::letGo() {
  letGo_ = true;
  for (const auto& runner : model_.runners) destroy(runner->name);
  for (Slot& slot : slots_) drop(slot);
}

void LifecycleWorld::pause(Place place, RunnerModel* runner, IContext* context) {
  Thread& own = thread();
  while (!failed_ && own.closed == 0) {
    {
      const Counted inside(own.inside);
      turns_.handOver();
    }
    if (failed_ || winding_) return;
    Draw draw(step_.dice);
    const int what = draw.below(100);
    if (what < 2) {
      own.blockedUntil = at_ + 5 + static_cast<std::size_t>(draw.below(60));
      ++seen_.blocked;
      continue;
    }
    if (what < (place == Place::Strategy ? 40 : 75) || place == Place::Passing) return;
    if (what >= 96) throwSomething(*runner, draw);
    if (what < 44 || place != Place::Strategy) {
      ++seen_.fromWithin;
      hostDeed(draw);
    } else {
      contextDeed(*runner, *context, draw);
    }
  }
}

void LifecycleWorld::throwSomething(RunnerModel& runner, Draw& draw) {
  ++seen_.throws;
  if (draw.oneIn(2)) {
    const std::string why = "mark " + std::to_string(++lastMark_);
    say("throws " + why);
    thread().flow.thrown("log " + runner.name + " exception,msg=" + why);
    throw std::runtime_error(why);
  }
  say("throws a number");
  thread().flow.thrown("log " + runner.name + " system exception");
  throw 7;
}

// What the library calls.

void LifecycleWorld::onStrategy(int number, IContext* context, const std::string& call) {
  if (failed_ || Turns::current() == Turns::kNobody) return;
  RunnerModel* const runner = thread().task;
  if (runner == nullptr) return fail("outside a task: " + call);
  const Counted called(called_[runner->id]);
  require(called_[runner->id] == 1, "two calls at once");
  require(strategies_.contains(number), "a strategy that is gone is called");
  std::string heard = "s" + std::to_string(number) + " " + call;
  if (call.starts_with("onStart")) {
    ++seen_.starts;
    const auto self = watched(*runner).context.lock();
    for (const auto& [source, info] : TestAccess::createSourceInfos(TestAccess::trades(*self)))
      heard += (info.override == TradeEventTypeMask ? " for " : " not for ") + source;
  }
  hear(heard);
  if (call == "onStop") {
    ++seen_.stops;
    strategies_[number] = true;
  }
  seen_.updates += call.starts_with("onUpdate") ? 1 : 0;
  seen_.data += call.starts_with("onSt") || call.starts_with("onUpdate") ? 0 : 1;
  require(context->envs() == runner->envs, "other values in the environment");
  require(context->isSetStop() == runner->stopping, "isSetStop differs inside a call");
  require(context->name() == runner->name, "another runner's context");
  if (++checks_ % 8 == 0) requireNoLock();
  pause(Place::Strategy, runner, context);
}

void LifecycleWorld::onDestroyed(int number) {
  if (Turns::current() == Turns::kNobody) return;
  const auto it = strategies_.find(number);
  if (it == strategies_.end()) return fail("a strategy is destroyed twice");
  seen_.unstopped += it->second ? 0 : 1;
  strategies_.erase(it);
  hear("s" + std::to_string(number) + " destroyed");
  pause(Place::Passing, nullptr, nullptr);
}

void LifecycleWorld::onSpi(int number, const std::string& call) {
  if (failed_ || Turns::current() == Turns::kNobody) return;
  const Counted speaks(speaking_[number]);
  hear("spi" + std::to_string(number) + " " + call);
  requireNoLock();
  seen_.failedLoads += call.find(LifecycleModel::kLoadError) != std::string::npos ? 1 : 0;
  pause(Place::Host, thread().task, nullptr);
}

IStrategy* LifecycleWorld::createStrategy() {
  if (!failed_ && Turns::current() != Turns::kNobody) {
    RunnerModel* const runner = thread().task;
    hear("create " + (runner == nullptr ? std::string("outside a task") : runner->name));
    pause(Place::Create, runner, nullptr);
  }
  strategies_[++lastStrategy_] = false;
  return new ProbeStrategy(*this, lastStrategy_);
}

void LifecycleWorld::onService(const std::string& operation) {
  if (failed_ || Turns::current() == Turns::kNobody) return;
  // The log holds the operation and its arguments; of those one number tells enough.
  const std::string entry = platform_.calls.entries(operation).back();
  platform_.calls.clear();
  const std::size_t from = operation.ends_with("Snapshot") ? entry.find('/') : operation.size();
  const std::size_t digit = entry.find_first_of("0123456789", from);
  hear(digit == std::string::npos
           ? operation
           : operation + " " + std::to_string(std::stoi(entry.substr(digit))));
  pause(Place::Passing, nullptr, nullptr);
}

void LifecycleWorld::onLine(const CapturedLine& line) {
  if (failed_ || Turns::current() == Turns::kNobody || line.level != "ERROR") return;
  static const std::string kTag = ",do pool task error,";
  static const std::string kBegin = "[ERROR] Runner ";
  const std::size_t tag = line.message.find(kTag);
  if (tag == std::string::npos) return fail("logged: " + line.message);
  hear("log " + line.message.substr(kBegin.size(), tag - kBegin.size()) + " " +
       line.message.substr(tag + kTag.size()));
}

// What is compared.

void LifecycleWorld::hear(const std::string& text) {
  if (failed_) return;
  ++seen_.calls;
  say(text);
  if (const std::string wrong = thread().flow.hear(text); !wrong.empty()) fail(wrong);
}

void LifecycleWorld::settle() {
  if (failed_) return;
  if (const std::string wrong = thread().flow.opReturned(); !wrong.empty()) fail(wrong);
}

void LifecycleWorld::check() {
  int existing = 0, called = 0;
  for (const auto& runner : model_.runners) {
    checkRunner(*runner);
    existing += runner->strategy != 0 ? 1 : 0;
  }
  for (const auto& [runner, calls] : called_) called += calls;
  seen_.atOnce += called > 1 ? 1 : 0;
  require(static_cast<int>(strategies_.size()) == existing, "another number of strategies");
  require(CountedOrder::live == model_.orders, "another number of records");
  require(platform_.liveRefCounters() == model_.counters, "another number of counters");
  require(pool_.pending() == static_cast<int>(model_.tasks.size()), "another number of tasks");
  for (const auto& [number, spi] : spis_)
    require(spi.expired() != (model_.isHeard(number) || speaking_[number] > 0),
            "spi" + std::to_string(number) + " is kept or gone");
}

void LifecycleWorld::checkRunner(const RunnerModel& runner) {
  const auto context = watched(runner).context.lock();
  require((context != nullptr) == runner.alive, runner.name + " is kept or gone");
  require((TestAccess::notify(*watched(runner).quotes) != nullptr) == runner.attached,
          runner.name + " is attached or detached");
  if (failed_ || !context) return;
  std::vector<int> types;
  for (const EventModel& event : runner.pending) types.push_back(event.type);
  require(TestAccess::pendingTypes(*context) == types, "other pending records");
  require(TestAccess::isScheduled(*context) == runner.scheduled, "scheduled or not");
  require(TestAccess::hasRefCounter(*context) == runner.pendingCounter, "a counter or none");
  require(context->isSetStop() == runner.stopping, "stopping or not");
  require(TestAccess::state(*context).flags == static_cast<unsigned>(runner.flags), "other flags");
}

void LifecycleWorld::requireNoLock() {
  if (failed_) return;
  const auto context = watched(*thread().task).context.lock();
  require(TestAccess::mutexIsFree(*context) && TestAccess::sharedMutexIsFree(*context),
          "a call under a lock");
}

void LifecycleWorld::require(bool holds, const std::string& what) {
  if (!holds) fail(what);
}

void LifecycleWorld::fail(const std::string& what) {
  if (failed_) return;
  failed_ = true;
  failure_ = "after step " + std::to_string(at_) + ": " + gbkToUtf8(what);
  say("FAILED: " + what);
}

void LifecycleWorld::say(const std::string& text) {
  if (!telling_) return;
  const int index = Turns::current();
  story_ += (index == Turns::kNobody ? "at last" : whoIs(index)) + ": " + gbkToUtf8(text) + "\n";
}

}  // namespace orvane::support
