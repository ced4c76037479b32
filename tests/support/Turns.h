#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace orvane::support {

/// Real threads of which exactly one runs at a time, so that what they do together is repeatable.
///
/// A thread has the turn until what it was given to do returns, or until it hands the turn over
/// from within; who goes on is the choice of the test, which is asked on the thread that gives the
/// turn away. The threads live as long as the object and are known by their index.
class Turns {
 public:
  /// Answers the index of the thread that goes on, or `kNobody` to end the run. It is asked by
  /// whoever gives the turn away.
  using Choose = std::function<int()>;
  /// What a thread that was at rest does with a turn.
  using Act = std::function<void(int)>;

  static constexpr int kNobody = -1;

  explicit Turns(int count);
  ~Turns();
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  /// Gives the first turn away and returns when `choose` names nobody. A thread that is within a
  /// `handOver` by then goes on in the next run; when the object goes, none may be.
  void run(Choose choose, Act act);

  /// Gives the turn away and returns when it has come back. On one of the threads, with no lock
  /// held that another of them may want.
  void handOver();

  /// The index of the calling thread, `kNobody` for all others.
  static int current();

 private:
  void live(int index);
  void pass(int index);
  std::condition_variable& wakerOf(int index);

  std::mutex mutex_;  ///< Guards the two below.
  int turn_ = kNobody;
  bool ending_ = false;
  Choose choose_;  ///< This one and the next belong to whoever has the turn.
  Act act_;
  std::condition_variable mainWaker_;
  std::vector<std::unique_ptr<std::condition_variable>> wakers_;
  std::vector<std::thread> threads_;
};

}  // namespace orvane::support
