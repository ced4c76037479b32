#include "host/Console.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace orvane {

namespace {

std::atomic<bool> isLineOpen{false};

}  // namespace

void noteOpenLine(bool isOpen) { isLineOpen = isOpen; }

const char* beforeMessage() { return isLineOpen.exchange(false) ? "\r\033[K" : ""; }

void complain(const std::string& message) {
  const std::string line = beforeMessage() + ("orvane: " + message) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

void remark(const std::string& message) { complain("note: " + message); }

void say(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

std::string outputFailure() {
  const bool hadFailed = std::ferror(stdout) != 0;
  errno = 0;
  if (std::fflush(stdout) == 0 && !hadFailed) return {};
  const std::string reason =
      errno == 0 ? std::string() : ": " + std::generic_category().message(errno);
  return "the standard output could not be written" + reason;
}

}  // namespace orvane
