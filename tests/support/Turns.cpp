#include "tests/support/Turns.h"

#include <utility>

namespace orvane::support {
namespace {

thread_local int ownIndex = Turns::kNobody;

}  // namespace

Turns::Turns(int count) {
  for (int i = 0; i < count; ++i) wakers_.push_back(std::make_unique<std::condition_variable>());
  for (int i = 0; i < count; ++i) threads_.emplace_back([this, i] { live(i); });
}

Turns::~Turns() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    for (const auto& waker : wakers_) waker->notify_one();
  }
  for (std::thread& thread : threads_) thread.join();
}

int Turns::current() { return ownIndex; }

void Turns::run(Choose choose, Act act) {
  choose_ = std::move(choose);
  act_ = std::move(act);
  pass(kNobody);
}

void Turns::handOver() { pass(ownIndex); }

std::condition_variable& Turns::wakerOf(int index) {
  return index == kNobody ? mainWaker_ : *wakers_[static_cast<std::size_t>(index)];
}

void Turns::pass(int index) {
  const int to = choose_();
  if (to == index) return;
  std::unique_lock lock(mutex_);
  turn_ = to;
  wakerOf(to).notify_one();
  wakerOf(index).wait(lock, [&] { return turn_ == index || ending_; });
}

void Turns::live(int index) {
  ownIndex = index;
  {
    std::unique_lock lock(mutex_);
    wakerOf(index).wait(lock, [&] { return turn_ == index || ending_; });
  }
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      if (ending_) return;
    }
    act_(index);
    pass(index);
  }
}

}  // namespace orvane::support
