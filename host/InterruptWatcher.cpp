#include "host/InterruptWatcher.h"

#include <fcntl.h>
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

InterruptWatcher::InterruptWatcher() : takesSignals_(true) {
  const sigset_t interrupts = interruptSignals();
  pthread_sigmask(SIG_BLOCK, &interrupts, nullptr);
  orderFd_ = signalfd(-1, &interrupts, SFD_CLOEXEC);
  begin();
}

InterruptWatcher::InterruptWatcher(int stopDescriptor)
    : takesSignals_(false), orderFd_(fcntl(stopDescriptor, F_DUPFD_CLOEXEC, 0)) {
  begin();
}

void InterruptWatcher::begin() {
  wakeFd_ = eventfd(0, EFD_CLOEXEC);
  if (orderFd_ < 0 || wakeFd_ < 0)
    throw std::system_error(errno, std::generic_category(), "cannot watch for interrupts");
  thread_ = std::thread([this] { watch(); });
}

InterruptWatcher::~InterruptWatcher() {
  const std::uint64_t one = 1;
  if (write(wakeFd_, &one, sizeof(one)) == static_cast<ssize_t>(sizeof(one)))
    thread_.join();
  else
    thread_.detach();
  close(orderFd_);
  close(wakeFd_);
  if (!takesSignals_) return;
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
  pollfd waits[2] = {{orderFd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
  while (true) {
    if (poll(waits, 2, -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (waits[1].revents != 0) return;
    if (!takeOrder()) continue;
    if (isInterrupted_.exchange(true)) continue;
    const std::lock_guard lock(mutex_);
    if (handler_) handler_();
  }
}

bool InterruptWatcher::takeOrder() {
  if (!takesSignals_) {
    char order = 0;
    const ssize_t count = read(orderFd_, &order, 1);
    if (count == 0) _exit(kExitInterrupted);
    return count == 1;
  }
  signalfd_siginfo info;
  if (read(orderFd_, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) return false;
  if (info.ssi_signo == SIGINT && ++presses_ > 1) _exit(kExitInterrupted);
  return true;
}

}  // namespace orvane
