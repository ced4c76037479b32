#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/DataSet.h"
#include "host/ReadingOptions.h"

namespace orvane {

/// `orvane data`: works on data files. Its one command, `convert`, writes what files hold as a
/// cache or as CSV.
class DataCommand {
 public:
  explicit DataCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` or `DataFileError` for bad input.
  int execute();

 private:
  DataSet load() const;
  DataSet loadKind(DataFileRequest::Kind kind) const;
  void lengthen(DataSet& data) const;
  void write(DataSet data) const;

  CLI::App* command_;
  CLI::App* convert_;
  std::vector<std::string> files_;
  std::string to_ = "cache", out_, code_, period_;
  bool onlyBars_ = false, onlyTicks_ = false;
  ReadingOptions reading_;
};

}  // namespace orvane
