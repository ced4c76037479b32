#include "tests/host/StartedProgram.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

namespace orvane::test {
namespace {

/// The value of a line of /proc/PID/status; empty if there is none.
std::string statusOf(pid_t process, const std::string& key) {
  std::istringstream lines(readFile("/proc/" + std::to_string(process) + "/status"));
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with(key + ":"))
      return line.substr(line.find_first_not_of(" \t", key.size() + 1));
  return {};
}

bool isPending(pid_t process, int signal) {
  const std::string state = statusOf(process, "State");
  const std::string pending = statusOf(process, "ShdPnd");
  if (pending.empty() || state.starts_with('Z') || state.starts_with('X')) return false;
  return (std::stoull(pending, nullptr, 16) >> (signal - 1) & 1) != 0;
}

}  // namespace

StartedProgram::StartedProgram(std::vector<std::string> arguments, int standardError) {
  arguments.insert(arguments.begin(), ORVANE_TEST_PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  child_ = fork();
  if (child_ < 0) throw std::runtime_error("cannot fork");
  if (child_ == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(standardError >= 0 ? standardError : open("/dev/null", O_WRONLY), STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(ends[1]);
  output_ = ends[0];
}

StartedProgram::~StartedProgram() {
  if (child_ > 0) {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  close(output_);
}

bool StartedProgram::readSome() {
  char buffer[4096];
  const ssize_t count = read(output_, buffer, sizeof(buffer));
  if (count > 0) out_.append(buffer, static_cast<std::size_t>(count));
  return count > 0;
}

bool StartedProgram::awaitOutput(const std::string& text) {
  while (out_.find(text) == std::string::npos)
    if (!readSome()) return false;
  return true;
}

void StartedProgram::send(int signal) {
  kill(child_, signal);
  while (isPending(child_, signal)) sched_yield();
}

ProgramResult StartedProgram::end() {
  while (readSome()) {
  }
  int status = 0;
  waitpid(child_, &status, 0);
  child_ = -1;
  ProgramResult result;
  result.out = out_;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  return result;
}

}  // namespace orvane::test
