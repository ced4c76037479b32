#include "host/OutputFile.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "host/InputError.h"
#include "host/WholeFile.h"
#include "host/WriteError.h"

namespace orvane {
namespace {

constexpr std::size_t kPortion = std::size_t{1} << 20;

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), target_(behindLinks(path)) {
  open();
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (isThere_) unlink(newPath_.c_str());
}

void OutputFile::open() {
  if (const std::string why = whyNoFile(path_); !why.empty())
    throw InputError(fmt::format("{}: cannot be written: it {}", path_, why));
  // A new name in the folder would pass over what protects the old file.
  if (access(target_.c_str(), F_OK) == 0 && access(target_.c_str(), W_OK) != 0) fail(errno);
  // A process that was killed may have left its file, and another have its number now.
  constexpr int kMostLeftOver = 1000;
  for (int i = 0; i < kMostLeftOver && descriptor_ < 0; ++i) {
    newPath_ = fmt::format("{}.new-{}{}", target_, getpid(), i == 0 ? "" : fmt::format("-{}", i));
    descriptor_ = ::open(newPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0 && errno != EEXIST) break;
  }
  if (descriptor_ < 0) fail(errno);
  isThere_ = true;
}

void OutputFile::write(std::string_view text) {
  waiting_ += text;
  if (waiting_.size() >= kPortion) flush();
}

void OutputFile::flush() {
  for (std::string_view left = waiting_; !left.empty();) {
    const ssize_t count = ::write(descriptor_, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno);
    if (count == 0) fail(EIO);  // It takes nothing and does not say why: never try for ever.
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  waiting_.clear();
}

const std::string& OutputFile::finish() {
  flush();
  if (fsync(descriptor_) != 0) fail(errno);
  if (close(std::exchange(descriptor_, -1)) != 0) fail(errno);
  return newPath_;
}

void OutputFile::keep() {
  struct stat former {};
  if (stat(target_.c_str(), &former) == 0) chmod(newPath_.c_str(), former.st_mode & 07777);
  if (std::rename(newPath_.c_str(), target_.c_str()) != 0) fail(errno);
  isThere_ = false;
}

void OutputFile::fail(int error) const {
  failToWrite(fmt::format("{}: cannot be written: {}", path_, reasonOf(error)), error);
}

}  // namespace orvane
