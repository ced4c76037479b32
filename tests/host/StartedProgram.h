#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/host/Program.h"

namespace orvane::test {

/// The command while it runs, for tests that send it signals.
class StartedProgram {
 public:
  /// Its standard error is a copy of the descriptor; -1: it is not kept.
  explicit StartedProgram(std::vector<std::string> arguments, int standardError = -1);
  ~StartedProgram();
  StartedProgram(const StartedProgram&) = delete;
  StartedProgram& operator=(const StartedProgram&) = delete;

  /// Waits until the standard output has `text`; false if it ended without.
  bool awaitOutput(const std::string& text);
  /// Sends a signal, and waits until the process has taken it or ended.
  void send(int signal);
  /// Waits for the end of the process; `err` of the result stays empty.
  ProgramResult end();

 private:
  bool readSome();

  pid_t child_ = -1;
  int output_ = -1;
  std::string out_;
};

}  // namespace orvane::test
