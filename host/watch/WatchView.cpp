#include "host/watch/WatchView.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <future>
#include <system_error>
#include <utility>

#include "host/InputError.h"
#include "host/watch/TerminalRescue.h"
#include "host/watch/WatchLayout.h"

namespace orvane {
namespace {

constexpr auto kPace = std::chrono::milliseconds(100);
constexpr std::size_t kMostLogLines = 200;  // No screen has more.

}  // namespace

void WatchView::checkTerminal() {
  if (const std::string obstacle = Terminal::obstacle(); !obstacle.empty())
    throw InputError("--watch: " + obstacle);
}

WatchView::WatchView(InterruptWatcher& interrupts) : interrupts_(interrupts) { checkTerminal(); }

void WatchView::begin() {
  try {
    sigset_t suspending;
    sigemptyset(&suspending);
    sigaddset(&suspending, kHeldSignal);
    wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    suspendFd_ = signalfd(-1, &suspending, SFD_CLOEXEC | SFD_NONBLOCK);
    if (wakeFd_ < 0 || suspendFd_ < 0)
      throw std::system_error(errno, std::generic_category(), "cannot wait for keys");
    held_.emplace();
    std::promise<void> begun;
    std::future<void> hasBegun = begun.get_future();
    thread_ = std::thread([this, begun = std::move(begun)]() mutable {
      std::optional<Terminal> terminal;
      try {
        terminal.emplace(*held_);
      } catch (...) {
        begun.set_exception(std::current_exception());
        return;
      }
      begun.set_value();
      run(*terminal);
    });
    hasBegun.get();
  } catch (const std::runtime_error& error) {
    end();
    throw InputError(std::string("--watch: ") + error.what());
  }
}

void WatchView::end() {
  isEnding_ = true;
  if (thread_.joinable()) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t count = write(wakeFd_, &one, sizeof(one));
    thread_.join();
  }
  // The process may be about to end in another way, on another thread.
  TerminalRescue::leave();
  if (held_ && TerminalRescue::hasLeft()) held_->forget();
  held_.reset();
  for (int* descriptor : {&wakeFd_, &suspendFd_})
    if (const int open = std::exchange(*descriptor, -1); open >= 0) close(open);
}

void WatchView::setSource(Source source) {
  const std::lock_guard lock(mutex_);
  source_ = std::move(source);
}

void WatchView::look(Glance& glance) {
  for (std::string& line : held_->newLines()) log_->add(std::move(line));
  {
    const std::lock_guard lock(mutex_);
    if (source_) glance = source_();
  }
  glance.log = log_->last(kMostLogLines);
}

void WatchView::run(Terminal& terminal) {
  using Clock = std::chrono::steady_clock;
  Glance glance;
  auto due = Clock::now();
  while (!isEnding_ && TerminalRescue::isArmed()) {
    if (!choice_.isPaused && Clock::now() >= due) {
      look(glance);
      due = Clock::now() + kPace;
    }
    const Terminal::Size size = terminal.size();
    const WatchLayout layout(size.columns, size.rows);
    terminal.draw(layout.picture(glance, choice_));
    wait(terminal);
    const std::size_t seen = layout.runnersSeen(glance), last = glance.runners.size() - seen;
    for (Terminal::Key key; (key = terminal.read()) != Terminal::Key::None;) {
      choice_.first = layout.firstSeen(glance, choice_);
      take(key, seen, last);
    }
  }
}

void WatchView::wait(Terminal& terminal) {
  pollfd waits[] = {{terminal.keys(), POLLIN, 0}, {wakeFd_, POLLIN, 0}, {suspendFd_, POLLIN, 0}};
  const int most = static_cast<int>(std::chrono::milliseconds(kPace).count());
  if (poll(waits, std::size(waits), most) <= 0) return;
  if ((waits[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) terminal.forgetKeys();
  if ((waits[2].revents & POLLIN) == 0) return;
  signalfd_siginfo info;
  if (read(suspendFd_, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info)))
    terminal.suspend();
}

void WatchView::take(Terminal::Key key, std::size_t seen, std::size_t last) {
  using Key = Terminal::Key;
  std::size_t& first = choice_.first;
  const std::size_t page = std::max<std::size_t>(seen, 1);
  switch (key) {
    case Key::Up:
      first -= std::min<std::size_t>(first, 1);
      return;
    case Key::Down:
      first = std::min(first + 1, last);
      return;
    case Key::PageUp:
      first -= std::min(first, page);
      return;
    case Key::PageDown:
      first = std::min(first + page, last);
      return;
    case Key::Home:
      first = 0;
      return;
    case Key::End:
      first = last;
      return;
    case Key::Pause:
      choice_.isPaused = !choice_.isPaused;
      return;
    case Key::Help:
      choice_.showsHelp = !choice_.showsHelp;
      return;
    case Key::Quit:
      if (!interrupts_.isInterrupted()) interrupts_.interrupt();
      return;
    default:
      return;
  }
}

}  // namespace orvane
