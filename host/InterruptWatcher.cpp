#include "host/InterruptWatcher.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "host/InputError.h"

namespace orvane {
namespace {

sigset_t interruptSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

}  // namespace

InterruptWatcher::InterruptWatcher() {
  const sigset_t interrupts = interruptSignals();
  pthread_sigmask(SIG_BLOCK, &interrupts, nullptr);
  signalFd_ = signalfd(-1, &interrupts, SFD_CLOEXEC);
  wakeFd_ = eventfd(0, EFD_CLOEXEC);
  if (signalFd_ < 0 || wakeFd_ < 0)
    throw std::system_error(errno, std::generic_category(), "cannot watch for interrupts");
  thread_ = std::thread([this] { watch(); });
}

InterruptWatcher::~InterruptWatcher() {
  const std::uint64_t one = 1;
  if (write(wakeFd_, &one, sizeof(one)) == static_cast<ssize_t>(sizeof(one)))
    thread_.join();
  else
    thread_.detach();
  close(signalFd_);
  close(wakeFd_);
  // One more that comes late must not change how the process ends.
  if (isInterrupted_) std::signal(SIGTERM, SIG_IGN);
  const sigset_t interrupts = interruptSignals();
  pthread_sigmask(SIG_UNBLOCK, &interrupts, nullptr);
}

void InterruptWatcher::setHandler(std::function<void()> handler) {
  const std::lock_guard lock(mutex_);
  handler_ = std::move(handler);
  if (isInterrupted_ && handler_) handler_();
}

void InterruptWatcher::watch() {
  pollfd waits[2] = {{signalFd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
  while (true) {
    if (poll(waits, 2, -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (waits[1].revents != 0) return;
    signalfd_siginfo info;
    if (read(signalFd_, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) continue;
    if (info.ssi_signo == SIGINT && ++presses_ > 1) _exit(kExitInterrupted);
    if (isInterrupted_.exchange(true)) continue;
    const std::lock_guard lock(mutex_);
    if (handler_) handler_();
  }
}

}  // namespace orvane
