#include "host/CommandTable.h"

#include <CLI/App.hpp>
#include <algorithm>

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

OptionEntry entryOf(const CLI::Option& option) {
  OptionEntry entry;
  entry.isPositional = !option.nonpositional();
  for (const std::string& name : option.get_snames()) entry.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) entry.names.push_back("--" + name);
  if (entry.isPositional) entry.names = {option.get_name(true)};
  entry.text = option.get_description();
  entry.group = option.get_group();
  entry.isRequired = option.get_required();
  if (option.get_items_expected_max() == 0) return entry;
  entry.takesMany = option.get_items_expected_max() > 1;
  entry.defaultValue = option.get_default_str();
  const std::string typeName = option.get_type_name();
  entry.words = wordsOf(typeName);
  entry.value = entry.words.empty() ? typeName : joined(entry.words);
  entry.kind = entry.words.empty() ? kindOf(entry.value) : ValueKind::Words;
  return entry;
}

bool isShown(const CLI::Option* option) { return !option->get_group().empty(); }

void addCommand(const CLI::App& app, const std::string& path, CommandTable& table) {
  CommandEntry command;
  command.path = path;
  command.text = app.get_description();
  command.footer = app.get_footer();
  for (const CLI::Option* option : app.get_options(isShown))
    command.options.push_back(entryOf(*option));
  const auto children = app.get_subcommands([](const CLI::App*) { return true; });
  for (const CLI::App* child : children) command.children.push_back(child->get_name());
  table.push_back(std::move(command));
  for (const CLI::App* child : children)
    addCommand(*child, path.empty() ? child->get_name() : path + " " + child->get_name(), table);
}

}  // namespace

CommandTable commandTable(const CLI::App& app) {
  CommandTable table;
  addCommand(app, {}, table);
  return table;
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
