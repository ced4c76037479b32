#include "host/watch/HeldOutput.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace orvane {
namespace {

constexpr std::int64_t kMostRead = 65536;

int copyOf(int descriptor) { return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1); }

}  // namespace

HeldOutput::HeldOutput() {
  std::fflush(stdout);
  held_ = memfd_create("orvane-output", MFD_CLOEXEC);
  out_ = copyOf(STDOUT_FILENO);
  err_ = copyOf(STDERR_FILENO);
  const bool isGood = held_ >= 0 && out_ >= 0 && err_ >= 0 && fcntl(held_, F_SETFL, O_APPEND) == 0;
  if (!isGood) {
    const std::error_code error(errno, std::generic_category());
    closeAll();
    throw std::system_error(error, "cannot hold the output");
  }
  // As on the terminal: what a strategy prints is seen line by line.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  dup2(held_, STDOUT_FILENO);
  dup2(held_, STDERR_FILENO);
}

HeldOutput::~HeldOutput() {
  std::fflush(stdout);
  if (isForgotten_) return;  // The files may be in use still, and the process ends.
  dup2(out_, STDOUT_FILENO);
  dup2(err_, STDERR_FILENO);
  char buffer[4096];
  off_t at = 0;
  for (ssize_t count = 0; (count = pread(held_, buffer, sizeof(buffer), at)) > 0; at += count)
    if (std::fwrite(buffer, 1, static_cast<std::size_t>(count), stderr) == 0) break;
  std::fflush(stderr);
  closeAll();
}

void HeldOutput::closeAll() {
  for (const int descriptor : {held_, out_, err_})
    if (descriptor >= 0) close(descriptor);
}

std::vector<std::string> HeldOutput::newLines() {
  struct stat now {};
  if (fstat(held_, &now) != 0) return {};
  if (now.st_size - readTo_ > kMostRead) {
    readTo_ = now.st_size - kMostRead;
    begun_.clear();
  }
  std::vector<std::string> lines;
  char buffer[4096];
  for (ssize_t count = 0;
       readTo_ < now.st_size && (count = pread(held_, buffer, sizeof(buffer), readTo_)) > 0;
       readTo_ += count)
    for (ssize_t i = 0; i < count; ++i) {
      if (buffer[i] != '\n') {
        begun_ += buffer[i];
      } else {
        lines.push_back(std::move(begun_));
        begun_.clear();
      }
    }
  return lines;
}

}  // namespace orvane
