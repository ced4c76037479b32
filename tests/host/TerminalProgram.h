#pragma once

#include <sys/types.h>
#include <termios.h>

#include <string>
#include <vector>

namespace orvane::test {

/// Where a command on a terminal runs.
struct TerminalSetting {
  std::string kind = "xterm-256color";  ///< TERM; empty: not set.
  int columns = 100, rows = 30;
  bool ignoresHangUp = false;  ///< As "nohup" makes it.
};

/// The command on a terminal of its own, for tests that look at what it writes there, press keys
/// and send signals.
class TerminalProgram {
 public:
  explicit TerminalProgram(std::vector<std::string> arguments, const TerminalSetting& setting = {});
  ~TerminalProgram();
  TerminalProgram(const TerminalProgram&) = delete;
  TerminalProgram& operator=(const TerminalProgram&) = delete;

  /// Waits until it has written `text`; false if it ended without.
  bool awaitOutput(const std::string& text);
  void type(const std::string& keys) const;
  void resize(int columns, int rows) const;
  void send(int signal) const;
  /// Waits for its end; the exit code, or 1000 and the signal that ended it.
  int end();

  const std::string& output() const { return output_; }
  /// Whether the terminal's modes are those from before it began.
  bool hasModesOfBefore() const;
  /// Whether the terminal shows its usual screen, with a cursor, as far as what was written tells.
  bool showsUsualScreen() const;
  /// What was written since the usual screen was shown again.
  std::string afterView() const;

 private:
  bool readSome();

  pid_t session_ = -1;  ///< Who leads the terminal's session.
  pid_t child_ = -1;
  int terminal_ = -1;
  int control_ = -1;  ///< To the leader.
  termios before_{};
  std::string output_;
};

}  // namespace orvane::test
