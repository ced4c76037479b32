#pragma once

#include <CLI/App.hpp>
#include <string>

#include "host/SessionGenerator.h"

namespace orvane {

/// `orvane generate`: writes a synthetic session, with all that is needed to run it.
class GenerateCommand {
 public:
  explicit GenerateCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` for bad input.
  int execute();

 private:
  void checkNothingIsThere() const;

  CLI::App* command_;
  std::string folder_, date_;
  GeneratorOptions options_;
  bool isForced_ = false;
};

}  // namespace orvane
