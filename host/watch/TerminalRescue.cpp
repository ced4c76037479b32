#include "host/watch/TerminalRescue.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace orvane {
namespace {

enum State : int { kAtRest, kArmed, kLeaving, kLeft };

// What a handler of signals needs: no constructors, no memory that may go.
std::atomic<int> state{kAtRest};
std::atomic<pid_t> armedBy{0};  ///< A process that is forked off leaves the terminal alone.
int terminalFd = -1, drawnFd = -1, nothingFd = -1, heldFd = -1, outFd = -1, errFd = -1;
termios foundModes;
std::array<char, 512> leavingBytes;
std::size_t leavingSize = 0;

struct FatalSignal {
  int number;
  bool isFault;  ///< Of the code that runs: it comes again when that goes on.
  bool isSeized = false;
  struct sigaction former = {};
};
FatalSignal fatals[] = {
    {SIGSEGV, true},  {SIGBUS, true},   {SIGFPE, true},   {SIGILL, true},
    {SIGABRT, false}, {SIGSYS, false},  {SIGTRAP, false}, {SIGQUIT, false},
    {SIGXCPU, false}, {SIGUSR1, false}, {SIGUSR2, false}, {SIGALRM, false},
};

void writeAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = write(descriptor, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
}

void copyHeld() {
  char buffer[4096];
  off_t at = 0;
  for (ssize_t count = 0; (count = pread(heldFd, buffer, sizeof(buffer), at)) > 0; at += count)
    writeAll(errFd, buffer, static_cast<std::size_t>(count));
}

void onFatal(int number, siginfo_t* info, void*) {
  TerminalRescue::leave();
  for (const FatalSignal& fatal : fatals) {
    if (fatal.number != number) continue;
    sigaction(number, &fatal.former, nullptr);
    // A fault of the code meets the former handler by itself, with all that is known of it.
    if (!fatal.isFault || info == nullptr || info->si_code <= 0) raise(number);
  }
}

void atExit() {
  if (!TerminalRescue::isArmed()) return;
  std::fflush(stdout);
  TerminalRescue::leave();
}

void seizeSignals() {
  struct sigaction action {};
  action.sa_sigaction = onFatal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  for (FatalSignal& fatal : fatals) {
    sigaction(fatal.number, nullptr, &fatal.former);
    const bool isDefault =
        (fatal.former.sa_flags & SA_SIGINFO) == 0 && fatal.former.sa_handler == SIG_DFL;
    fatal.isSeized = (isDefault || fatal.isFault || fatal.number == SIGABRT) &&
                     sigaction(fatal.number, &action, nullptr) == 0;
  }
}

void releaseSignals() {
  for (FatalSignal& fatal : fatals) {
    struct sigaction now {};
    // Somebody else may have put his own there meanwhile.
    if (!std::exchange(fatal.isSeized, false)) continue;
    sigaction(fatal.number, nullptr, &now);
    if ((now.sa_flags & SA_SIGINFO) != 0 && now.sa_sigaction == onFatal)
      sigaction(fatal.number, &fatal.former, nullptr);
  }
}

}  // namespace

void TerminalRescue::arm(const Parts& parts) {
  static const bool isRegistered = std::atexit(atExit) == 0;
  static_cast<void>(isRegistered);
  terminalFd = parts.terminal;
  drawnFd = parts.drawn;
  heldFd = parts.held;
  outFd = parts.out;
  errFd = parts.err;
  foundModes = parts.found;
  if (nothingFd < 0) nothingFd = open("/dev/null", O_RDWR | O_CLOEXEC);
  leavingSize = std::min(parts.leaving.size(), leavingBytes.size());
  std::memcpy(leavingBytes.data(), parts.leaving.data(), leavingSize);
  seizeSignals();
  armedBy = getpid();
  state = kArmed;
}

bool TerminalRescue::disarm() {
  int expected = kArmed;
  const bool isOurs = state.compare_exchange_strong(expected, kAtRest);
  if (isOurs) releaseSignals();
  return isOurs;
}

bool TerminalRescue::isArmed() { return state == kArmed && armedBy == getpid(); }

bool TerminalRescue::hasLeft() { return state == kLeft; }

void TerminalRescue::leave() {
  if (armedBy != getpid()) return;
  int expected = kArmed;
  if (!state.compare_exchange_strong(expected, kLeaving)) {
    // Whoever does it must not be cut off by what the caller does next; but he may be the caller.
    for (int tries = 0; state == kLeaving && tries < 200; ++tries) poll(nullptr, 0, 10);
    return;
  }
  const int error = errno;
  dup2(nothingFd, drawnFd);
  writeAll(terminalFd, leavingBytes.data(), leavingSize);
  tcsetattr(terminalFd, TCSANOW, &foundModes);
  dup2(outFd, STDOUT_FILENO);
  dup2(errFd, STDERR_FILENO);
  copyHeld();
  errno = error;
  state = kLeft;
}

}  // namespace orvane
