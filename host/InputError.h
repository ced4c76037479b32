#pragma once

#include <stdexcept>

namespace orvane {

/// The user's input cannot be used. `what()` is one clear UTF-8 message; the command ends with
/// `kExitBadInput` and has written nothing.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the command's exit codes mean.
enum ExitCode : int {
  kExitSuccess = 0,        ///< Every run ended as Stopped or Finished.
  kExitRunFailed = 1,      ///< A run ended as an error, or something unforeseen happened.
  kExitBadInput = 2,       ///< The command line or a file was wrong; nothing ran.
  kExitInterrupted = 130,  ///< The user stopped it.
};

}  // namespace orvane
