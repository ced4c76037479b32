#pragma once

#include <array>
#include <string>

#include "host/CommandTable.h"
#include "host/InputError.h"

namespace orvane {

/// What an exit code of the command means.
struct ExitCodeText {
  ExitCode code;
  const char* text;
};

/// Every exit code of the command.
inline constexpr std::array<ExitCodeText, 4> kExitCodeTexts{{
    {kExitSuccess, "Every run ended as Stopped or Finished, or the command did what it says."},
    {kExitRunFailed,
     "A run ended as an error or crashed, something could not be written, or something unforeseen "
     "happened."},
    {kExitBadInput, "The input was wrong: nothing ran and nothing was written."},
    {kExitInterrupted, "Interrupted: the runs were stopped, and told how far they came."},
}};

// Each of these writes all commands with all their options from the parser's own tables, so none
// can miss one. All end with a line end.

/// The manual page, for man(1).
std::string manualPage(const CommandTable& table);

/// The reference of the documentation, as Markdown.
std::string markdownPage(const CommandTable& table);

/// A script that completes command lines in bash. It needs nothing but bash itself.
std::string bashCompletion(const CommandTable& table);

/// The same for zsh; the file must be called "_orvane".
std::string zshCompletion(const CommandTable& table);

}  // namespace orvane
