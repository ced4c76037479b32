#pragma once

#include <QByteArray>
#include <csignal>
#include <functional>
#include <optional>
#include <string>

namespace orvane {

/// How a job in a process of its own ended.
struct JobEnd {
  std::optional<QByteArray> answer;  ///< Nothing if its process ended before it had one.
  std::string fault;                 ///< How the process ended then, UTF-8; else empty.
};

/// Runs jobs one after another, each in a process that is forked from this one: it has all that
/// this one holds without reading or copying it, and whatever kills it harms nobody else.
///
/// While one of these lives, SIGINT, SIGTERM and, unless it was ignored, SIGHUP come here: the
/// first one asks the job to stop, a second SIGINT ends both processes at once, and says so. Jobs
/// are told by a pipe and never see the signals, which a terminal sends to all of its processes.
/// Should this process be killed, the job ends too. For one thread, and only while the process has
/// no other: a forked process has just the one.
class ForkedJobs {
 public:
  ForkedJobs();
  ~ForkedJobs();
  ForkedJobs(const ForkedJobs&) = delete;
  ForkedJobs& operator=(const ForkedJobs&) = delete;

  /// Runs `job` and waits for its end. In there, a byte on the descriptor asks it to stop, and its
  /// end says that nobody waits any more. Throws `InputError` or `std::runtime_error` if the job
  /// did, with its text, and `std::runtime_error` if there can be no process.
  JobEnd run(const std::function<QByteArray(int stopDescriptor)>& job);

  /// Whether a signal has come.
  bool isInterrupted();

 private:
  class Running;
  /// How the process took signals before.
  struct SignalState {
    sigset_t mask{};
    struct sigaction ofChildren {};
  };
  void takeSignals(Running* running);

  SignalState before_;
  int signals_ = -1;
  int presses_ = 0;  ///< SIGINT so far.
  bool isInterrupted_ = false;
};

}  // namespace orvane
