#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace orvane {

/// Some bytes as a file without a place on any disk, for readers that want a path.
class InputFile {
 public:
  InputFile(const std::uint8_t* data, std::size_t size)
      : handle_(memfd_create("input", 0)), path_("/proc/self/fd/" + std::to_string(handle_)) {
    if (handle_ < 0 || write(handle_, data, size) != static_cast<ssize_t>(size)) std::abort();
  }
  ~InputFile() { close(handle_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  int handle_;
  std::string path_;
};

/// Ends the process if what must hold does not: that is how a fuzzer learns of it.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace orvane
