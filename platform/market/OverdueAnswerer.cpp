#include "platform/market/OverdueAnswerer.h"

#include "platform/core/LostCalls.h"

namespace orvane::detail {
namespace {

/// How often the thread looks for what has waited too long.
constexpr std::chrono::milliseconds kTurn{10};

}  // namespace

OverdueAnswerer::OverdueAnswerer(QuoteService& quotes, const QuietSignal& runners, int stillTurns)
    : quotes_(quotes), stall_(runners, stillTurns), thread_([this] { work(); }) {}

OverdueAnswerer::~OverdueAnswerer() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void OverdueAnswerer::noteRequest() {
  if (watching_.exchange(true) && !quotes_.book().anyBlocking()) return;
  const std::lock_guard lock(mutex_);
  changed_.notify_all();
}

void OverdueAnswerer::work() {
  const RequestBook& book = quotes_.book();
  std::unique_lock lock(mutex_);
  int idleTurns = 0;
  bool hurry = true;
  while (!closing_) {
    if (!watching_.load()) {
      changed_.wait(lock, [this] { return closing_ || watching_.load(); });
      idleTurns = 0;
      continue;
    }
    const bool isTurn =
        !changed_.wait_for(lock, kTurn, [&] { return closing_ || (hurry && book.anyBlocking()); });
    if (closing_) return;
    lock.unlock();
    if (book.anyWaiting() || book.endedMark()) {
      idleTurns = 0;
      // What blocks and yet cannot be served is no reason to look again at once.
      hurry = false;
      guarded("an answer to a request that waits failed",
              [&] { hurry = answer(isTurn) || !book.anyBlocking(); });
    } else if (++idleTurns > 100) {
      watching_.store(false);
      // A request that came just before found the thread watching.
      if (book.anyWaiting() || book.endedMark()) watching_.store(true);
    }
    lock.lock();
  }
}

bool OverdueAnswerer::answer(bool isTurn) {
  const bool isStalled = isTurn && stall_.look();
  std::unique_lock turn(quotes_.turn(), std::defer_lock);
  // Whoever has the turn may be delivering for long, and serves requests itself afterwards. But
  // for the runner that blocks it waits, and lets go of the turn meanwhile.
  if (quotes_.book().anyBlocking())
    turn.lock();
  else if (!turn.try_lock())
    return false;
  const bool any = quotes_.serveOverdue({std::chrono::steady_clock::now() - kPatience, isStalled});
  // Who has an answer goes on, though nothing else may tell of it.
  if (any) stall_.begin();
  return any;
}

}  // namespace orvane::detail
