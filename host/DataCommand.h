#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/DataSet.h"
#include "host/ReadingOptions.h"

namespace orvane {

/// `orvane data`: works on data files. `convert` writes what files hold as a cache or as CSV, and
/// `inspect` looks closely at them. Alone it lists its commands.
class DataCommand {
 public:
  explicit DataCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` or `DataFileError` for bad input.
  int execute();

 private:
  void addConvert();
  void addInspect();
  int convert();
  int inspect() const;
  DataSet load() const;
  void refuseBarsBeside(const std::string& ticks) const;
  DataSet loadKind(DataFileRequest::Kind kind) const;
  /// Bars of the longer period; what becomes of the last one is noted.
  template <typename Series>
  BarSeries longerBars(const Series& series, std::vector<std::string>& notes) const;
  LoadedBars lengthened(const LoadedBars& loaded) const;
  LoadedBars lengthened(const LoadedTicks& loaded) const;
  void lengthen(DataSet& data) const;
  void write(DataSet data) const;

  CLI::App* command_;
  CLI::App* convert_ = nullptr;
  CLI::App* inspect_ = nullptr;
  std::vector<std::string> files_;
  std::string to_ = "cache", out_, code_, period_;
  std::string of_;
  bool onlyBars_ = false, onlyTicks_ = false, keepsLast_ = false;
  ReadingOptions reading_;
  ReadingOptions inspectReading_;
  std::string cache_;
  double jump_ = 20;
  bool isJson_ = false;
};

}  // namespace orvane
