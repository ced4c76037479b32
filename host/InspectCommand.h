#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/ReadingOptions.h"
#include "platform/market/files/DataFiles.h"

namespace orvane {

/// `orvane inspect`: reads data files as `orvane run` would and shows what was recognised.
class InspectCommand {
 public:
  explicit InspectCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` or `DataFileError` for bad input.
  int execute();

 private:
  void show(DataFileRequest request) const;

  CLI::App* command_;
  std::vector<std::string> files_;
  bool onlyBars_ = false, onlyTicks_ = false;
  ReadingOptions reading_;
};

}  // namespace orvane
