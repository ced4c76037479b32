#include "platform/core/ModuleTrial.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <mutex>
#include <set>
#include <utility>

#include "platform/core/ModuleLoader.h"

namespace orvane {
namespace {

constexpr char kLoading[] = " while it was loaded";
/// What the second process says first once the module is open or has been refused.
constexpr char kMark = '=';

/// A file in memory: what the second process writes outlives it, and nobody waits for its end.
class Slip {
 public:
  explicit Slip(const char* name) : file_(memfd_create(name, MFD_CLOEXEC)) {
    if (file_ < 0 || file_ > STDERR_FILENO) return;
    // A standard stream was closed, and the second process puts others in their place.
    const int low = std::exchange(file_, fcntl(file_, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    close(low);
  }
  ~Slip() {
    if (file_ >= 0) close(file_);
  }
  Slip(const Slip&) = delete;
  Slip& operator=(const Slip&) = delete;

  bool isGood() const { return file_ >= 0; }
  int file() const { return file_; }
  void write(const std::string& text) const {
    [[maybe_unused]] const ssize_t count = ::write(file_, text.data(), text.size());
  }
  /// The last so many bytes of it.
  std::string read() const {
    constexpr off_t kMost = 4096;
    const off_t size = lseek(file_, 0, SEEK_END);
    std::array<char, kMost> buffer;
    const ssize_t count =
        pread(file_, buffer.data(), buffer.size(), size > kMost ? size - kMost : 0);
    return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
  }

 private:
  int file_;
};

/// Where the second process leaves its answer; for its handler of exceptions.
const Slip* answerSlip = nullptr;

/// Where an exception does not get through the dynamic linker, it ends here, with the process.
[[noreturn]] void tellException() {
  std::string text = "threw" + std::string(kLoading);
  try {
    if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::exception& error) {
    text += std::string(": ") + error.what();
  } catch (...) {
    text += " what is no standard exception";
  }
  answerSlip->write(kMark + text);
  _exit(0);
}

[[noreturn]] void openInSecondProcess(const std::string& path, const Slip& answer,
                                      const Slip& output) {
  dup2(output.file(), STDOUT_FILENO);
  dup2(output.file(), STDERR_FILENO);
  answerSlip = &answer;
  std::set_terminate(tellException);
  void* module = nullptr;
  // It is declared as never throwing, and compilers would leave out the handler.
  void* (*volatile open)(const char*, int) = dlopen;
  try {
    module = open(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  } catch (...) {
    tellException();
  }
  answer.write(kMark + (module != nullptr ? detail::interfaceFault(module)
                                          : std::string("is not a strategy module: ") + dlerror()));
  _exit(0);
}

/// The last line that the module wrote before it went.
std::string lastWords(const std::string& output) {
  const std::size_t end = output.find_last_not_of(" \r\n");
  if (end == std::string::npos) return {};
  const std::size_t begin = output.find_last_of('\n', end);
  return ": " + output.substr(begin == std::string::npos ? 0 : begin + 1, end - begin);
}

std::string endOf(int status) {
  if (WIFSIGNALED(status))
    return "crashed" + std::string(kLoading) + ", " + strsignal(WTERMSIG(status));
  return "ended the process" + std::string(kLoading) + ", exit code " +
         std::to_string(WEXITSTATUS(status));
}

/// Without a second process there is no trial, and nothing to say.
std::string tryInSecondProcess(const std::string& path) {
  const Slip answer("answer"), output("output");
  if (!answer.isGood() || !output.isGood()) return {};
  // Else a module that ends the process in good order would write it once more.
  std::cout.flush();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) openInSecondProcess(path, answer, output);
  if (child < 0) return {};
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  const std::string text = answer.read();
  if (!text.empty() && text.front() == kMark) return text.substr(1);
  return endOf(status) + lastWords(output.read());
}

}  // namespace

std::string tryModule(const std::string& path) {
  static std::mutex mutex;
  static auto& good = *new std::set<std::string>;
  const std::lock_guard lock(mutex);
  if (good.count(path) != 0) return {};
  std::string fault = tryInSecondProcess(path);
  if (fault.empty()) good.insert(path);
  return fault;
}

}  // namespace orvane
