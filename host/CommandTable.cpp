#include "host/CommandTable.h"

#include <algorithm>

#include "host/sweep/FigureList.h"

namespace orvane {
namespace {

/// The words of a check that knows a few; the parser appends them to the name of the value.
std::vector<std::string> wordsOf(const std::string& typeName) {
  const auto open = typeName.find('{');
  const auto close = typeName.rfind('}');
  if (open == std::string::npos || close == std::string::npos || close < open) return {};
  std::vector<std::string> words;
  const std::string list = typeName.substr(open + 1, close - open - 1);
  for (std::size_t from = 0; from <= list.size();) {
    const std::size_t comma = std::min(list.find(',', from), list.size());
    words.push_back(list.substr(from, comma - from));
    from = comma + 1;
  }
  return words;
}

ValueKind kindOf(const std::string& value) {
  if (value == "MODULE") return ValueKind::Module;
  if (value == "ZONE") return ValueKind::Zone;
  if (value == "DIR") return ValueKind::Folder;
  if (value == "[CODE=]FILE") return ValueKind::CodedFile;
  // What may be written out on the spot may come from a file too.
  for (const char* name : {"FILE", "JSON", ".json", "INSTRUMENT"})
    if (value.find(name) != std::string::npos) return ValueKind::File;
  return ValueKind::Text;
}

std::string joined(const std::vector<std::string>& words) {
  std::string result;
  for (const std::string& word : words) result += (result.empty() ? "" : "|") + word;
  return result;
}

}  // namespace

void setValue(OptionEntry& option, const std::string& typeName) {
  option.words = wordsOf(typeName);
  option.value = option.words.empty() ? typeName : joined(option.words);
  // There are too many for its line in the help.
  if (option.value == "FIGURE") option.words = figureNames();
  option.kind = option.words.empty() ? kindOf(option.value) : ValueKind::Words;
}

std::vector<std::pair<std::string, std::vector<const OptionEntry*>>> groupsOf(
    const CommandEntry& command) {
  std::vector<std::pair<std::string, std::vector<const OptionEntry*>>> groups;
  for (const OptionEntry& option : command.options) {
    const std::string name = option.isPositional ? "Arguments" : option.group;
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&name](const auto& group) { return group.first == name; });
    if (found != groups.end())
      found->second.push_back(&option);
    else
      groups.push_back({name, {&option}});
  }
  return groups;
}

}  // namespace orvane
