#include "host/ExitTeller.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "host/Console.h"
#include "host/InputError.h"

namespace orvane {
namespace {

std::atomic<pid_t> watched{0};

void atExit() {
  if (watched != getpid()) return;
  std::fflush(nullptr);
  complain("a strategy ended the process by exit, before summary and report were complete");
  // Threads of the run go on, so nothing is torn down below them.
  _exit(kExitRunFailed);
}

}  // namespace

ExitTeller::ExitTeller() {
  static const bool isRegistered = std::atexit(atExit) == 0 && std::at_quick_exit(atExit) == 0;
  static_cast<void>(isRegistered);
  watched = getpid();
}

ExitTeller::~ExitTeller() { watched = 0; }

}  // namespace orvane
