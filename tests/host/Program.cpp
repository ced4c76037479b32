#include "tests/host/Program.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QJsonDocument>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvane::test {
namespace {

void put(const char* path, const std::string& text) {
  const int file = open(path, O_WRONLY);
  [[maybe_unused]] const ssize_t count = write(file, text.data(), text.size());
  close(file);
}

/// In a process of its own: mounts the small disk where no other process sees it.
bool makeDisk(const ProgramLimits& limits) {
  if (geteuid() == 0) {
    if (unshare(CLONE_NEWNS) != 0) return false;
  } else {
    const std::string user = std::to_string(geteuid()), group = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    put("/proc/self/setgroups", "deny");
    put("/proc/self/uid_map", "0 " + user + " 1");
    put("/proc/self/gid_map", "0 " + group + " 1");
  }
  const std::string size = "size=" + std::to_string(limits.diskBytes);
  const unsigned long flags = limits.diskIsReadOnly ? MS_RDONLY : 0;
  return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("none", limits.diskFolder.c_str(), "tmpfs", flags, size.c_str()) == 0;
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments, const std::string& interruptOn,
                         const ProgramLimits& limits) {
  const TempFolder folder;
  const std::string errPath = folder / "err";
  std::vector<std::string> all = {ORVANE_TEST_PROGRAM};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : all) argv.push_back(argument.data());
  argv.push_back(nullptr);
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(pipeEnds[1], STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (!limits.outFile.empty()) dup2(open(limits.outFile.c_str(), O_WRONLY), STDOUT_FILENO);
    if (limits.mostFileBytes > 0) {
      const auto most = static_cast<rlim_t>(limits.mostFileBytes);
      const rlimit limit{most, most};
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    for (const int stream : limits.closed) close(stream);
    if (!limits.diskFolder.empty() && !makeDisk(limits)) _exit(kNoDisk);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(pipeEnds[1]);
  ProgramResult result;
  bool isDue = !interruptOn.empty();
  char buffer[4096];
  for (ssize_t count = 0; (count = read(pipeEnds[0], buffer, sizeof(buffer))) > 0;) {
    result.out.append(buffer, static_cast<std::size_t>(count));
    if (!isDue || result.out.find(interruptOn) == std::string::npos) continue;
    kill(child, SIGINT);
    isDue = false;
  }
  close(pipeEnds[0]);
  int status = 0;
  waitpid(child, &status, 0);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  result.err = readFile(errPath);
  return result;
}

std::string testModule(const std::string& name) {
  std::string path = ORVANE_TEST_MODULES "/";
  path += name;
  path += ".so";
  return path;
}

TempFolder::TempFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "orvane-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder");
  path_ = pattern;
}

TempFolder::~TempFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::string TempFolder::write(const std::string& name, const std::string& text) const {
  const std::string path = *this / name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

QJsonObject readReport(const std::string& folder) {
  return QJsonDocument::fromJson(QByteArray::fromStdString(readFile(folder + "/report.json")))
      .object();
}

std::string barsCsv(const std::string& badLine) {
  std::string text = "datetime,open,high,low,close,volume\n";
  for (int minute = 1; minute <= 30; ++minute) {
    if (minute == 7 && !badLine.empty())
      text += badLine + "\n";
    else
      text += fmt::format("2021-01-04 09:{:02}:00,10.{},11.5,9.5,10.{},100\n", minute, minute % 10,
                          (minute + 1) % 10);
  }
  return text;
}

}  // namespace orvane::test
