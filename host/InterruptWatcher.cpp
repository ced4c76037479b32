#include "host/InterruptWatcher.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

#include "host/Console.h"
#include "host/InputError.h"
#include "host/watch/TerminalRescue.h"

namespace orvane {
namespace {

constexpr int kReminderMs = 1000;

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Whether something can be told without waiting for whoever reads it. A watcher that waited for a
/// full pipe would hear of no further press.
bool canTell() {
  pollfd err = {STDERR_FILENO, POLLOUT, 0};
  return poll(&err, 1, 0) == 1 && (err.revents & POLLOUT) != 0;
}

/// Says that the second press ends everything, and ends it. Nothing else may be touched here: other
/// threads go on.
[[noreturn]] void endAtOnce() {
  TerminalRescue::leave();
  constexpr std::string_view kText = "orvane: ended at once, without summary and report\n";
  for (const std::string_view text : {std::string_view(beforeMessage()), kText})
    if (canTell()) {
      [[maybe_unused]] const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
    }
  _exit(kExitInterrupted);
}

}  // namespace

InterruptWatcher::InterruptWatcher(std::initializer_list<int> more) : takesSignals_(true) {
  sigset_t watched;
  sigemptyset(&watched);
  for (const int signal : {SIGINT, SIGTERM}) sigaddset(&watched, signal);
  if (!isIgnored(SIGHUP)) sigaddset(&watched, SIGHUP);
  signals_ = watched;
  for (const int signal : more) sigaddset(&signals_, signal);
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  orderFd_ = signalfd(-1, &watched, SFD_CLOEXEC);
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
  isEnding_ = true;
  const std::uint64_t one = 1;
  if (write(wakeFd_, &one, sizeof(one)) == static_cast<ssize_t>(sizeof(one)))
    thread_.join();
  else
    thread_.detach();
  close(orderFd_);
  close(wakeFd_);
  if (!takesSignals_) return;
  // One more that comes late must not change how the process ends.
  if (isInterrupted_)
    for (const int signal : {SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
  pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
}

void InterruptWatcher::interrupt() {
  isAsked_ = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t count = write(wakeFd_, &one, sizeof(one));
}

void InterruptWatcher::setHandler(std::function<void()> handler) {
  const std::lock_guard lock(mutex_);
  handler_ = std::move(handler);
  if (isInterrupted_ && handler_) handler_();
}

void InterruptWatcher::setReminder(std::function<void(int)> reminder) {
  const std::lock_guard lock(mutex_);
  reminder_ = std::move(reminder);
}

void InterruptWatcher::press(int signal) {
  if (signal == SIGINT && ++presses_ > 1) endAtOnce();
  if (isInterrupted_.exchange(true)) return;
  const std::lock_guard lock(mutex_);
  if (handler_) handler_();
  if (reminder_ && canTell()) reminder_(0);
}

void InterruptWatcher::remind() {
  const std::lock_guard lock(mutex_);
  ++seconds_;
  if (reminder_ && canTell()) reminder_(seconds_);
}

void InterruptWatcher::watch() {
  pollfd waits[2] = {{orderFd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
  while (true) {
    const int count = poll(waits, 2, isInterrupted_ ? kReminderMs : -1);
    if (count < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (count == 0) {
      remind();
      continue;
    }
    if (waits[1].revents != 0) {
      std::uint64_t wakes = 0;
      if (read(wakeFd_, &wakes, sizeof(wakes)) < 0 || isEnding_) return;
      if (isAsked_.exchange(false)) press(SIGINT);
      continue;
    }
    takeOrder();
  }
}

void InterruptWatcher::takeOrder() {
  if (!takesSignals_) {
    char order = 0;
    const ssize_t count = read(orderFd_, &order, 1);
    if (count == 0) _exit(kExitInterrupted);
    if (count == 1) press(SIGTERM);
    return;
  }
  signalfd_siginfo info;
  if (read(orderFd_, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info)))
    press(static_cast<int>(info.ssi_signo));
}

}  // namespace orvane
