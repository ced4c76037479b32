#pragma once

#include <CLI/App.hpp>
#include <string>

namespace orvane {

/// `orvane new-strategy`: writes the project of a first own strategy, which builds and runs as it
/// is.
class NewStrategyCommand {
 public:
  explicit NewStrategyCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` for bad input, and
  /// `std::runtime_error` if the standard output could not be written.
  int execute();

 private:
  void tell(const std::string& folder, std::size_t files) const;

  CLI::App* command_;
  std::string name_, folder_;
};

}  // namespace orvane
