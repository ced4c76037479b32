#pragma once

#include <stdexcept>
#include <string>

namespace orvane {

/// Something could not be written, though what the user asked for was right. `what()` is one clear
/// UTF-8 message; the command ends with `kExitRunFailed`.
class WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What an error code of the system says.
std::string reasonOf(int error);

/// Throws `WriteError` where the disk is at fault, as when it is full, and `InputError` where it is
/// the path, as when nobody may write there.
[[noreturn]] void failToWrite(const std::string& message, int error);

}  // namespace orvane
