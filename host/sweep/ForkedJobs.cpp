#include "host/sweep/ForkedJobs.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "host/InputError.h"

namespace orvane {
namespace {

/// The first byte of what a job's process writes; an answer without it is not whole.
enum Kind : char { kAnswer = 'A', kInputError = 'I', kRuntimeError = 'R', kOtherError = 'O' };
constexpr char kEnd = '.';  ///< The last one.

sigset_t setOf(std::initializer_list<int> all) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : all) sigaddset(&set, signal);
  return set;
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Also for a signal's handler.
[[noreturn]] void endAtOnce() {
  constexpr std::string_view kText = "orvane: ended at once, without table and page\n";
  [[maybe_unused]] const ssize_t count = write(STDERR_FILENO, kText.data(), kText.size());
  _exit(kExitInterrupted);
}

[[noreturn]] void refuse(const char* what) {
  throw std::runtime_error(
      fmt::format("no process can be started: {}: {}", what, std::strerror(errno)));
}

void writeAll(int descriptor, const QByteArray& bytes) {
  for (qsizetype written = 0; written < bytes.size();) {
    const ssize_t count = write(descriptor, bytes.constData() + written,
                                static_cast<std::size_t>(bytes.size() - written));
    if (count < 0 && errno != EINTR) return;
    if (count > 0) written += count;
  }
}

std::string endOf(int status) {
  if (!WIFSIGNALED(status))
    return fmt::format("it ended its process, exit code {}", WEXITSTATUS(status));
  const int signal = WTERMSIG(status);
  const char* const name = sigabbrev_np(signal);
  return fmt::format("signal {} ({}) ended its process{}",
                     name != nullptr ? "SIG" + std::string(name) : std::to_string(signal),
                     strsignal(signal),
                     signal == SIGKILL ? ", as the system does where memory is out" : "");
}

/// Where memory runs out, this process goes and not the one that keeps the results.
void goFirst() {
  const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
  if (file < 0) return;
  [[maybe_unused]] const ssize_t count = write(file, "800", 3);
  close(file);
}

QByteArray answerOf(const std::function<QByteArray(int)>& job, int stopDescriptor) {
  try {
    return QByteArray(1, kAnswer) + job(stopDescriptor);
  } catch (const InputError& error) {
    return QByteArray(1, kInputError) + error.what();
  } catch (const std::runtime_error& error) {
    return QByteArray(1, kRuntimeError) + error.what();
  } catch (const std::exception& error) {
    return QByteArray(1, kOtherError) + error.what();
  }
}

bool isWhole(const QByteArray& written) { return written.size() >= 2 && written.back() == kEnd; }

JobEnd endOf(const QByteArray& written, int status) {
  if (!isWhole(written) || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return {std::nullopt, endOf(status)};
  const QByteArray text = written.mid(1, written.size() - 2);
  if (written.front() == kInputError) throw InputError(text.toStdString());
  if (written.front() == kRuntimeError) throw std::runtime_error(text.toStdString());
  if (written.front() == kOtherError) return {std::nullopt, "it failed: " + text.toStdString()};
  return {text, {}};
}

/// A pipe that no program gets which is started meanwhile.
struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) refuse("pipe");
    out = ends[0];
    in = ends[1];
  }
  ~Pipe() {
    closeOut();
    closeIn();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  void closeOut() { closeEnd(out); }
  void closeIn() { closeEnd(in); }

  int out = -1, in = -1;

 private:
  static void closeEnd(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }
};

}  // namespace

/// The process of one job, as the one that waits for it sees it.
class ForkedJobs::Running {
 public:
  Running(const std::function<QByteArray(int)>& job, const SignalState& before) {
    // What stands in the buffers would be written twice.
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t parent = getpid();
    child_ = fork();
    if (child_ < 0) refuse("fork");
    if (child_ == 0) work(job, before, parent);
    answer_.closeIn();
    stop_.closeOut();
    fcntl(answer_.out, F_SETFL, O_NONBLOCK);
  }
  ~Running() {
    kill();
    if (child_ > 0) waitpid(child_, nullptr, 0);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  int descriptor() const { return answer_.out; }
  void askToStop() { writeAll(stop_.in, "s"); }
  /// A process that has ended may have left its id to another one: that is not touched.
  void kill() {
    if (!hasEnded()) ::kill(child_, SIGKILL);
  }

  void readSome() {
    char buffer[65536];
    for (;;) {
      const ssize_t count = read(answer_.out, buffer, sizeof(buffer));
      if (count > 0) {
        written_.append(buffer, count);
        continue;
      }
      if (count < 0 && errno == EINTR) continue;
      // Something that the job started may hold the other end: it says nothing about the job.
      if (count == 0) isClosed_ = true;
      return;
    }
  }
  bool isClosed() const { return isClosed_; }

  /// Whether the process has ended.
  bool hasEnded() {
    if (child_ < 0) return true;
    const pid_t ended = waitpid(child_, &status_, WNOHANG);
    // Somebody else has taken how it ended.
    if (ended < 0 && errno == ECHILD) isUnknown_ = true;
    if (ended == child_ || isUnknown_) child_ = -1;
    return child_ < 0;
  }
  JobEnd end() {
    readSome();
    if (isUnknown_ && !isWhole(written_))
      return {std::nullopt, "its process ended, nobody knows how"};
    return endOf(written_, status_);
  }

 private:
  [[noreturn]] void work(const std::function<QByteArray(int)>& job, const SignalState& before,
                         pid_t parent) {
    answer_.closeOut();
    stop_.closeIn();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(kExitInterrupted);
    goFirst();
    // Where many crash, their images would fill the disk; a run by hand leaves one.
    const rlimit noImage{0, 0};
    setrlimit(RLIMIT_CORE, &noImage);
    sigaction(SIGCHLD, &before.ofChildren, nullptr);
    sigset_t blocked = before.mask;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&blocked, signal);
    pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
    // Whoever calls `exit` amid other threads ends the process, and destroys nothing under them.
    on_exit([](int code, void*) { _exit(code); }, nullptr);
    const QByteArray answer = answerOf(job, stop_.out) + kEnd;
    std::cout.flush();
    std::fflush(nullptr);
    writeAll(answer_.in, answer);
    _exit(0);
  }

  Pipe answer_, stop_;
  QByteArray written_;
  bool isClosed_ = false, isUnknown_ = false;
  pid_t child_ = -1;
  int status_ = 0;
};

ForkedJobs::ForkedJobs() {
  // Whoever ignores it, which a parent may have left so, is never told how a process ended.
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  sigaction(SIGCHLD, &usual, &before_.ofChildren);
  sigset_t taken = setOf({SIGINT, SIGTERM, SIGCHLD});
  // Ignored by those who want it to go on when they leave.
  if (!isIgnored(SIGHUP)) sigaddset(&taken, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &taken, &before_.mask);
  signals_ = signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals_ < 0)
    throw std::system_error(errno, std::generic_category(), "cannot watch for interrupts");
}

ForkedJobs::~ForkedJobs() {
  takeSignals(nullptr);
  close(signals_);
  if (isInterrupted_) {
    // One more that comes late must not change how the process ends, unless somebody insists.
    for (const int signal : {SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
    std::signal(SIGINT, [](int) { endAtOnce(); });
  }
  sigaction(SIGCHLD, &before_.ofChildren, nullptr);
  pthread_sigmask(SIG_SETMASK, &before_.mask, nullptr);
}

bool ForkedJobs::isInterrupted() {
  takeSignals(nullptr);
  return isInterrupted_;
}

void ForkedJobs::takeSignals(Running* running) {
  signalfd_siginfo info;
  while (read(signals_, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info))) {
    if (info.ssi_signo == SIGCHLD) continue;
    if (info.ssi_signo == SIGINT && ++presses_ > 1) {
      if (running != nullptr) running->kill();
      endAtOnce();
    }
    isInterrupted_ = true;
    if (running != nullptr) running->askToStop();
  }
}

JobEnd ForkedJobs::run(const std::function<QByteArray(int stopDescriptor)>& job) {
  Running running(job, before_);
  if (isInterrupted_) running.askToStop();
  while (!running.hasEnded()) {
    pollfd waits[2] = {{signals_, POLLIN, 0}, {running.descriptor(), POLLIN, 0}};
    if (poll(waits, running.isClosed() ? 1 : 2, -1) < 0 && errno != EINTR) refuse("poll");
    running.readSome();
    takeSignals(&running);
  }
  return running.end();
}

}  // namespace orvane
