#include "host/WriteError.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "host/InputError.h"

namespace orvane {

std::string reasonOf(int error) { return std::generic_category().message(error); }

void failToWrite(const std::string& message, int error) {
  constexpr int kOfDisk[] = {ENOSPC, EDQUOT, EFBIG, EIO, ENOMEM, EMFILE, ENFILE};
  if (std::ranges::find(kOfDisk, error) != std::end(kOfDisk)) throw WriteError(message);
  throw InputError(message);
}

}  // namespace orvane
