#include "host/NewStrategyCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "host/Console.h"
#include "host/InputError.h"
#include "host/NewFolder.h"
#include "host/OptionChecks.h"
#include "host/StrategyProject.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

/// A text as one word of a shell's line.
std::string shellWord(const std::string& text) {
  const auto isPlain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_-./+,:@%=").find(c) != std::string_view::npos;
  };
  if (std::ranges::all_of(text, isPlain)) return text;
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

/// Where this command is: what its user must say so that a shell finds it, and CMake its package.
struct Place {
  std::string command = "orvane";
  std::string option;       ///< For CMake; empty where it needs none.
  bool hasPackage = false;  ///< Whether it was installed with one.
};

Place placeOfCommand() {
  Place place;
  std::error_code error;
  const fs::path command = fs::read_symlink("/proc/self/exe", error);
  if (error) return place;
  const fs::path prefix = command.parent_path().parent_path();
  const fs::path package = prefix / ORVANE_PACKAGE_FOLDER / "EventStrategyConfig.cmake";
  place.hasPackage = fs::exists(package, error);
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');)
    if (fs::equivalent(folder, command.parent_path(), error)) return place;
  place.command = shellWord(command.string());
  if (place.hasPackage) place.option = " " + shellWord("-DCMAKE_PREFIX_PATH=" + prefix.string());
  return place;
}

}  // namespace

NewStrategyCommand::NewStrategyCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("new-strategy", "Write the project of a strategy of your own");
  command_->footer(
      "Writes a strategy, its test, a run with data to run it on, and what builds them with "
      "CMake.\n"
      "NAME is made of letters, digits and underscores, a letter first.\n"
      "\n"
      "Example: orvane new-strategy my_first && cd my_first && cmake -B build && cmake --build "
      "build");
  command_->add_option("name", name_, "Name of the strategy and its module")
      ->required()
      ->type_name("NAME");
  command_->add_option("--dir", folder_, "Folder to write into, empty or not there (default: NAME)")
      ->type_name("DIR");
}

int NewStrategyCommand::execute() {
  refuseEmptyTexts(*command_);
  if (const std::string fault = strategyNameFault(name_); !fault.empty())
    throw InputError("name: " + fault);
  const std::string folder = folder_.empty() ? name_ : folder_;
  NewFolder made(folder, folder_.empty() ? "name" : "--dir",
                 folder_.empty() ? "take another name, or name a folder by --dir"
                                 : "name a folder that is empty, or not there yet");
  const std::vector<ProjectFile> files = strategyProject(name_);
  for (const ProjectFile& file : files) made.write(file.name, file.text);
  made.keep();
  tell(folder, files.size());
  return kExitSuccess;
}

void NewStrategyCommand::tell(const std::string& folder, std::size_t files) const {
  say(fmt::format("{}: {} files of the strategy {}; next:\n", folder, files, name_));
  if (fs::path(folder) != ".") say(fmt::format("  cd {}\n", shellWord(folder)));
  const Place place = placeOfCommand();
  say(
      fmt::format("  cmake -B build{}\n"
                  "  cmake --build build\n"
                  "  ctest --test-dir build\n"
                  "  {} run run.json\n",
                  place.option, place.command));
  if (!place.hasPackage)
    say("This command was not installed with its package. Where CMake does not find EventStrategy, "
        "tell it\nwhere that is installed: cmake -B build -DCMAKE_PREFIX_PATH=PREFIX\n");
  if (const std::string failure = outputFailure(); !failure.empty())
    throw std::runtime_error(failure);
}

}  // namespace orvane
