#include "platform/core/WorkerPool.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/core/LostCalls.h"
#include "shared/LockSoon.h"

namespace orvane::detail {
namespace {

/// What waking a thread and its share of the locks costs, generously.
constexpr std::int64_t kWorthWakingNs = 40'000;
constexpr std::chrono::milliseconds kSentinelTurn{1};
/// How long a worker stays awake for the next task. Falling asleep and being woken takes longer
/// than most tasks; an idle process must not burn a processor.
constexpr std::chrono::microseconds kWatch{100};
using SteadyClock = std::chrono::steady_clock;

}  // namespace

// Looked at with each task. At a place that is known when the library is loaded they are found
// without a call. All that the library has of each thread lies there then, in a room that a process
// shares among whatever it loads later; glibc keeps more than a thousand bytes for it, the library
// takes a few words.
[[gnu::tls_model(
    "initial-exec")]] constinit thread_local WorkerPool::OfThread WorkerPool::ofThread_;

WorkerPool::WorkerPool(std::size_t processors) : processors_(processors) {}

WorkerPool::~WorkerPool() {
  std::unique_lock lock(mutex_);
  closing_ = true;
  wakeUp_.notify_all();
  left_.wait(lock, [this] { return threads_ == 0; });
}

WorkerPool& WorkerPool::shared() {
  static WorkerPool* const pool = new WorkerPool;
  return *pool;
}

void WorkerPool::resize(int count) {
  const std::lock_guard lock(mutex_);
  target_ = count;
  lanes_ = std::min({static_cast<std::size_t>(count) + 1, processors_, SharedCalls::kMostLanes});
  for (; threads_ < target_; ++threads_) {
    // Detached, since a surplus thread may still be inside a long task when the next platform
    // wants another number; the destructor counts them out instead.
    std::thread([this, number = static_cast<std::size_t>(threads_)] { work(number); }).detach();
  }
  wakeUp_.notify_all();
}

int WorkerPool::threadCount() const {
  const std::lock_guard lock(mutex_);
  return target_;
}

TaskOrigin WorkerPool::currentOrigin() { return ofThread_.origin; }

bool WorkerPool::keepForSharer(Task& task) {
  Sharing* const sharing = ofThread_.sharing;
  if (sharing == nullptr || sharing->pool != this || sharing->kept || ofThread_.origin.root != 0)
    return false;
  sharing->kept = std::move(task);
  return true;
}

bool WorkerPool::keepForHelper(Task& task) {
  if (ofThread_.helped != this || ofThread_.sharing != nullptr || kept_.task ||
      ofThread_.origin.root != 0 || !queue_.empty())
    return false;
  kept_.origin = {queue_.takeRoots(1), 0};
  kept_.task.swap(task);
  return true;
}

void WorkerPool::add(Task&& task) {
  if (keepForSharer(task)) return;
  signal_.addWork();
  if (keepForHelper(task)) return;
  TaskOrigin origin{ofThread_.origin.root, ofThread_.origin.depth + 1};
  if (origin.root == 0) origin = {ofThread_.sharing != nullptr ? ofThread_.sharing->root : 0, 0};
  try {
    queue_.push({std::move(task), origin});
  } catch (...) {
    signal_.endWork();  // Else nothing would ever be quiet again.
    throw;
  }
  const bool isSeen = !helping_.load() && watchers_.load() > 0;
  if (!isSeen && sleepers_.load() > 0 && workersMayTake())
    wakeOne();
  else
    signal_.wake();  // The helper may sleep, and nobody else be free.
}

void WorkerPool::wakeOne() {
  // Whoever is counted among the sleepers holds the lock until it sleeps.
  lockSoon(mutex_).unlock();
  wakeUp_.notify_one();
}

void WorkerPool::beginHelping() {
  const std::lock_guard lock(mutex_);
  helping_ = true;
  helperReady_ = true;
  ofThread_.helped = this;
  QuietSignal::setLane(0);
  wakeUp_.notify_one();  // Whoever wakes becomes the sentinel.
}

void WorkerPool::endHelping() {
  const std::lock_guard lock(mutex_);
  if (kept_.task) {
    queue_.push(std::move(kept_));
    kept_ = {};
  }
  helping_ = false;
  helperReady_ = false;
  ofThread_.helped = nullptr;
  if (!queue_.empty()) wakeUp_.notify_all();
}

void WorkerPool::runKept() {
  QueuedTask task;
  task.origin = kept_.origin;
  task.task.swap(kept_.task);
  // Who adds meanwhile and still sees it ready leaves its task to the sentinel, a moment later.
  helperReady_.store(false, std::memory_order_release);
  run(task);
  helperReady_.store(true, std::memory_order_release);
}

bool WorkerPool::helpOne() {
  if (kept_.task) {
    runKept();
    return true;
  }
  if (queue_.empty()) return false;
  QueuedTask task;
  bool othersWait = false;
  {
    const std::lock_guard lock(mutex_);
    if (queue_.empty()) return false;
    task = queue_.pop();
    helperReady_ = false;
    othersWait = !queue_.empty();
  }
  if (!othersWait) {
    run(task);
    helperReady_.store(true);
    return true;
  }
  const auto begin = std::chrono::steady_clock::now();
  run(task);
  const std::int64_t ns = (std::chrono::steady_clock::now() - begin).count();
  const std::lock_guard lock(mutex_);
  taskNs_.store(taskNs_.load() + (ns - taskNs_.load()) / 4);
  helperReady_ = true;
  if (sleepers_ > 0 && workersMayTake()) wakeUp_.notify_one();
  return true;
}

bool WorkerPool::workersMayTake() const {
  const std::size_t size = queue_.size();
  if (size == 0) return false;
  if (!helperReady_.load()) return true;
  return static_cast<std::int64_t>(size - 1) * taskNs_.load() > kWorthWakingNs;
}

void WorkerPool::helpUntilQuiet() {
  do {
    while (helpOne()) {
    }
  } while (!awaitTaskOrQuiet());
}

void WorkerPool::share(std::size_t count, const SharedCalls::Call& call) {
  if (kept_.task) giveKeptAway();
  signal_.addWork();
  helperReady_ = false;
  firstRoot_ = queue_.takeRoots(count);
  const auto begin = std::chrono::steady_clock::now();
  shared_.open(count, lanes_.load(), call);
  const bool areLong = callNs_.load(std::memory_order_relaxed) > kWorthWakingNs;
  if (areLong && watchers_.load() + 1 < static_cast<int>(lanes_.load())) wakeOne();
  makeCalls(0);
  const std::int64_t ns = (std::chrono::steady_clock::now() - begin).count();
  callNs_ = callNs_ + (ns - callNs_) / 4;
  helperReady_ = true;
  signal_.endWork();
  helpUntilQuiet();
}

/// What the helper meant to run next must not wait for the calls: they may wait for it.
void WorkerPool::giveKeptAway() {
  const std::lock_guard lock(mutex_);
  queue_.push(std::move(kept_));
  kept_ = {};
  if (sleepers_ > 0) wakeUp_.notify_one();
}

void WorkerPool::makeCalls(std::size_t lane) {
  Sharing mine{this};
  ofThread_.sharing = &mine;
  for (std::size_t at = 0; shared_.take(lane, at);) {
    mine.root = firstRoot_ + at;
    shared_.make(at);
    if (!mine.kept) continue;
    Task task = std::exchange(mine.kept, nullptr);
    ofThread_.origin = {mine.root, 0};
    guarded("a pool task threw", task);
    task = nullptr;  // What it lets go of may add a task, of the same tree.
    ofThread_.origin = {};
  }
  ofThread_.sharing = nullptr;
}

bool WorkerPool::awaitTaskOrQuiet() {
  // Most tasks are shorter than falling asleep and being woken takes.
  for (int i = 0; i < 200; ++i) {
    if (!queue_.empty()) return false;
    if (signal_.quiet()) return true;
    pauseFor(1);
  }
  // Who adds a task and has missed that the helper is ready would wake a worker, not the helper.
  helperReady_.store(true);
  signal_.wait([this] { return !queue_.empty() || signal_.quiet(); });
  return signal_.quiet();
}

int WorkerPool::mostWatchers() const { return helping_ ? static_cast<int>(lanes_.load()) - 1 : 1; }

void WorkerPool::watch(std::unique_lock<std::mutex>& lock, FloodSense& flood) {
  ++watchers_;
  const bool leavesTasks = helping_;
  lock.unlock();
  const auto isNeeded = [this, leavesTasks] {
    if (shared_.any()) return true;
    return !queue_.empty() && !(leavesTasks && helperReady_.load(std::memory_order_relaxed));
  };
  const auto begin = SteadyClock::now();
  auto now = begin;
  if (flood.isFlood() && !leavesTasks) {
    const auto waitUntil = [&now](SteadyClock::time_point time) {
      for (; now < time; now = SteadyClock::now()) pauseFor(8);
    };
    waitUntil(begin + FloodSense::kGather / 2);
    const std::uint64_t before = queue_.came();
    waitUntil(begin + FloodSense::kGather);
    flood.gathered(queue_.came() - before);
  }
  const auto ready = now;
  while (now < begin + kWatch && !isNeeded()) {
    for (int i = 0; i < 32 && !isNeeded(); ++i) pauseFor(1);
    now = SteadyClock::now();
  }
  flood.came(now - ready);
  // Whoever has added something lets go of the lock in a moment: no need to sleep for it.
  for (int i = 0; i < 100 && !lock.try_lock(); ++i) pauseFor(1);
  if (!lock.owns_lock()) lock.lock();
  --watchers_;
}

void WorkerPool::work(std::size_t number) {
  QuietSignal::setLane(number + 1);
  std::unique_lock lock(mutex_);
  bool mayWatch = !helping_;
  FloodSense flood;
  while (true) {
    if (const std::size_t lanes = lanes_.load(); lanes > 1 && shared_.any()) {
      signal_.addWork();
      // A call may be long, and what it waits for stand behind others.
      const bool leavesPost = helping_ && !hasSentinel_;
      ++sharers_;
      const bool needsMore = callNs_.load(std::memory_order_relaxed) > kWorthWakingNs &&
                             sharers_ + 1 < static_cast<int>(lanes);
      if (sleepers_ > 0 && (leavesPost || needsMore)) wakeUp_.notify_one();
      lock.unlock();
      makeCalls(1 + number % (lanes - 1));
      signal_.endWork();
      lock.lock();
      --sharers_;
      mayWatch = true;
    } else if (workersMayTake()) {
      QueuedTask task = queue_.pop();
      // Its task may be long: somebody else must take its place as sentinel.
      const bool leavesPost = helping_ && !hasSentinel_;
      if (sleepers_ > 0 && (leavesPost || workersMayTake())) wakeUp_.notify_one();
      lock.unlock();
      run(task);
      lock.lock();
      mayWatch = !helping_;
    } else if (threads_ > target_ || closing_) {
      break;
    } else if (mayWatch && watchers_ < mostWatchers()) {
      mayWatch = false;
      watch(lock, flood);
    } else if (helping_ && !hasSentinel_) {
      hasSentinel_ = true;
      ++sleepers_;
      if (!workersMayTake()) wakeUp_.wait_for(lock, kSentinelTurn);
      --sleepers_;
      hasSentinel_ = false;
    } else {
      ++sleepers_;
      if (!workersMayTake()) wakeUp_.wait(lock);
      --sleepers_;
      mayWatch = !helping_;
    }
  }
  --threads_;
  // Under the lock, so that the destructor cannot go on before this thread is done with us.
  left_.notify_all();
}

void WorkerPool::run(QueuedTask& entry) {
  ofThread_.origin = entry.origin;
  guarded("a pool task threw", entry.task);
  // What the task holds goes before it counts as ended: a runner's last reference may be in it.
  entry.task = nullptr;
  ofThread_.origin = {};
  signal_.endWork();
}

}  // namespace orvane::detail
