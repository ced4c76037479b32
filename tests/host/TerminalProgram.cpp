#include "tests/host/TerminalProgram.h"

#include <pty.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace orvane::test {
namespace {

constexpr char kOtherScreen[] = "\033[?1049h", kUsualScreen[] = "\033[?1049l";

/// Whether `last` was written after `other` was written last, or neither was.
bool isLast(const std::string& text, const std::string& last, const std::string& other) {
  const std::size_t at = text.rfind(other);
  return at == std::string::npos ||
         (text.rfind(last) != std::string::npos && text.rfind(last) > at);
}

/// What a shell does: starts the command in the foreground of the terminal, and tells its id and
/// how it ended. It ends when nobody listens any more: with it the terminal is hung up, and what
/// was not read yet would be gone.
[[noreturn]] void lead(char** argv, const TerminalSetting& setting, int control) {
  std::signal(SIGTTOU, SIG_IGN);
  const pid_t child = fork();
  if (child == 0) {
    setpgid(0, 0);
    tcsetpgrp(STDIN_FILENO, getpid());
    std::signal(SIGTTOU, SIG_DFL);
    if (setting.kind.empty())
      unsetenv("TERM");
    else
      setenv("TERM", setting.kind.c_str(), 1);
    if (setting.ignoresHangUp) std::signal(SIGHUP, SIG_IGN);
    execv(argv[0], argv);
    _exit(127);
  }
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(descriptor);
  int status = 0;
  char nothing = 0;
  const bool isTold =
      write(control, &child, sizeof(child)) > 0 && waitpid(child, &status, 0) == child &&
      write(control, &status, sizeof(status)) > 0 && read(control, &nothing, 1) >= 0;
  _exit(isTold ? 0 : 1);
}

}  // namespace

TerminalProgram::TerminalProgram(std::vector<std::string> arguments,
                                 const TerminalSetting& setting) {
  arguments.insert(arguments.begin(), ORVANE_TEST_PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  winsize size{};
  size.ws_col = static_cast<unsigned short>(setting.columns);
  size.ws_row = static_cast<unsigned short>(setting.rows);
  int inner = -1;
  if (openpty(&terminal_, &inner, nullptr, nullptr, &size) != 0)
    throw std::runtime_error("cannot open a terminal");
  tcgetattr(inner, &before_);
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::runtime_error("cannot make a pair of sockets");
  session_ = fork();
  if (session_ < 0) throw std::runtime_error("cannot fork");
  if (session_ == 0) {
    close(terminal_);
    close(ends[0]);
    login_tty(inner);
    lead(argv.data(), setting, ends[1]);
  }
  close(inner);
  close(ends[1]);
  control_ = ends[0];
  if (read(control_, &child_, sizeof(child_)) != static_cast<ssize_t>(sizeof(child_)))
    throw std::runtime_error("cannot start the command");
}

TerminalProgram::~TerminalProgram() {
  if (child_ > 0) kill(child_, SIGKILL);
  close(control_);
  close(terminal_);
  waitpid(session_, nullptr, 0);
}

bool TerminalProgram::readSome() {
  char buffer[4096];
  // An error means that nobody has the other end open any more.
  const ssize_t count = read(terminal_, buffer, sizeof(buffer));
  if (count > 0) output_.append(buffer, static_cast<std::size_t>(count));
  return count > 0;
}

bool TerminalProgram::awaitOutput(const std::string& text) {
  while (output_.find(text) == std::string::npos)
    if (!readSome()) return false;
  return true;
}

void TerminalProgram::type(const std::string& keys) const {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    throw std::runtime_error("cannot type");
}

void TerminalProgram::resize(int columns, int rows) const {
  winsize size{};
  size.ws_col = static_cast<unsigned short>(columns);
  size.ws_row = static_cast<unsigned short>(rows);
  ioctl(terminal_, TIOCSWINSZ, &size);
}

void TerminalProgram::send(int signal) const { kill(child_, signal); }

int TerminalProgram::end() {
  while (readSome()) {
  }
  int status = 0;
  if (read(control_, &status, sizeof(status)) != static_cast<ssize_t>(sizeof(status)))
    throw std::runtime_error("the end of the command is not known");
  child_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

bool TerminalProgram::hasModesOfBefore() const {
  termios now{};
  if (tcgetattr(terminal_, &now) != 0) return false;
  return now.c_iflag == before_.c_iflag && now.c_oflag == before_.c_oflag &&
         now.c_cflag == before_.c_cflag && now.c_lflag == before_.c_lflag &&
         std::equal(std::begin(now.c_cc), std::end(now.c_cc), std::begin(before_.c_cc));
}

bool TerminalProgram::showsUsualScreen() const {
  return isLast(output_, kUsualScreen, kOtherScreen) && isLast(output_, "\033[?25h", "\033[?25l");
}

std::string TerminalProgram::afterView() const {
  const std::size_t at = output_.rfind(kUsualScreen);
  return at == std::string::npos ? std::string() : output_.substr(at);
}

}  // namespace orvane::test
