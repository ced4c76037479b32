#include "platform/market/OverdueAnswerer.h"

namespace orvane::detail {

OverdueAnswerer::OverdueAnswerer(QuoteService& quotes)
    : quotes_(quotes), thread_([this] { work(); }) {}

OverdueAnswerer::~OverdueAnswerer() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void OverdueAnswerer::noteRequest() {
  if (watching_.exchange(true)) return;
  const std::lock_guard lock(mutex_);
  changed_.notify_all();
}

void OverdueAnswerer::work() {
  std::unique_lock lock(mutex_);
  int idleTurns = 0;
  while (!closing_) {
    if (!watching_.load()) {
      changed_.wait(lock, [this] { return closing_ || watching_.load(); });
      idleTurns = 0;
      continue;
    }
    changed_.wait_for(lock, kPatience, [this] { return closing_; });
    if (closing_) return;
    lock.unlock();
    RequestBook& book = quotes_.book();
    if (book.anyWaiting() || book.endedMark()) {
      idleTurns = 0;
      // Whoever has the turn may be delivering for long; it serves requests itself afterwards.
      const std::unique_lock turn(quotes_.turn(), std::try_to_lock);
      if (turn.owns_lock()) quotes_.serveOverdue(std::chrono::steady_clock::now() - kPatience);
    } else if (++idleTurns > 100) {
      watching_.store(false);
      // A request that came just before found the thread watching.
      if (book.anyWaiting() || book.endedMark()) watching_.store(true);
    }
    lock.lock();
  }
}

}  // namespace orvane::detail
