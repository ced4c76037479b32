#include "tests/support/FakeTimerEngine.h"

#include <utility>

namespace orvane::support {

/// One timer of the board.
class FakeTimerEngine final : public ITimerEngine {
 public:
  FakeTimerEngine(TimerBoard& board, int id) : board_(board), id_(id) {}

  ~FakeTimerEngine() override {
    drop();
    board_.calls_.record("timer.gone", std::to_string(id_));
  }

  bool start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
             int triggerCount) override {
    {
      const std::lock_guard lock(board_.mutex_);
      board_.running_[id_] = std::move(notify);
      running_ = true;
    }
    board_.calls_.record(
        "timer.start", std::to_string(id_) + " begin=" + std::to_string(beginTime) + " interval=" +
                           std::to_string(interval) + " count=" + std::to_string(triggerCount));
    return board_.startResult;
  }

  void stop() override {
    board_.calls_.record("timer.stop", std::to_string(id_));
    drop();
  }

 private:
  void drop() {
    std::shared_ptr<ITimerNotify> held;
    const std::lock_guard lock(board_.mutex_);
    if (!running_) return;
    running_ = false;
    held = std::move(board_.running_[id_]);
    board_.running_.erase(id_);
  }

  TimerBoard& board_;
  const int id_;
  bool running_ = false;
};

std::unique_ptr<ITimerEngine> TimerBoard::create(int id) {
  return std::make_unique<FakeTimerEngine>(*this, id);
}

bool TimerBoard::fire(int id, int64 value) {
  const std::shared_ptr<ITimerNotify> notify = notifyOf(id);
  if (!notify) return false;
  notify->onTimer(id, value);
  return true;
}

std::shared_ptr<ITimerNotify> TimerBoard::notifyOf(int id) const {
  const std::lock_guard lock(mutex_);
  const auto it = running_.find(id);
  return it == running_.end() ? nullptr : it->second;
}

void TimerBoard::forget() {
  std::map<int, std::shared_ptr<ITimerNotify>> running;
  const std::lock_guard lock(mutex_);
  running.swap(running_);
}

int TimerBoard::nextId() {
  const std::lock_guard lock(mutex_);
  return ++nextId_;
}

}  // namespace orvane::support
