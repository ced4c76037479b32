#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// What the value of an option is, as far as a shell can help to write it.
enum class ValueKind {
  None,       ///< A flag has no value.
  Text,       ///< Anything.
  Words,      ///< One of a few words.
  File,       ///< The name of a file.
  CodedFile,  ///< The name of a file, as it is or behind "CODE=".
  Folder,     ///< The name of a folder.
  Zone,       ///< A time zone, such as Asia/Shanghai.
  Module,     ///< A strategy module, by its bare name or as a file.
};

/// One option, or one positional argument, of a command.
struct OptionEntry {
  std::vector<std::string> names;  ///< With their dashes; of a positional one its bare name.
  std::string value;               ///< What its value is called, such as "FILE".
  std::vector<std::string> words;  ///< The words to choose from; empty if it is not `Words`.
  std::string text;                ///< What it is for. May have several lines.
  std::string group;               ///< The heading that it stands under.
  std::string defaultValue;        ///< What it is where it is not given; empty if not told.
  ValueKind kind = ValueKind::None;
  bool isPositional = false;
  bool isRequired = false;
  bool takesMany = false;  ///< Takes values up to the next option.
};

/// One command. The program itself is the one without a path.
struct CommandEntry {
  std::string path;  ///< The words behind "orvane", such as "run".
  std::string text;
  std::string footer;
  std::vector<OptionEntry> options;
  std::vector<std::string> children;  ///< The words that may follow the path.
};

/// All commands of a parser: the program first, each before those below it.
using CommandTable = std::vector<CommandEntry>;

/// Sets what the value of an option is from how the parser calls its type, such as "FILE" or
/// "TEXT:{start,end}".
void setValue(OptionEntry& option, const std::string& typeName);

/// The entries of a command in the order in which their headings first come, those of one heading
/// together.
std::vector<std::pair<std::string, std::vector<const OptionEntry*>>> groupsOf(
    const CommandEntry& command);

}  // namespace orvane
