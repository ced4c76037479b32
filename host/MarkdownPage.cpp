// The reference of every option, as a page of the documentation.

#include <fmt/core.h>

#include "host/CommandPages.h"

namespace orvane {
namespace {

/// Text for a cell of a table.
std::string cell(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\n')
      result += ' ';
    else if (letter == '|')
      result += "\\|";
    else if (letter == '<')
      result += "&lt;";
    else
      result += letter;
  }
  return result;
}

void addOption(const OptionEntry& option, std::string& page) {
  std::string names;
  for (const std::string& name : option.names) {
    names += names.empty() ? "`" : ", `";
    names += name + "`";
  }
  if (!option.value.empty())
    names += " `" + cell(option.value) + "`" + (option.takesMany ? " ..." : "");
  std::string text = cell(option.text);
  if (option.isRequired) text += "; required";
  if (!option.defaultValue.empty()) text += "; default `" + cell(option.defaultValue) + "`";
  page += fmt::format("| {} | {} |\n", names, text);
}

}  // namespace

std::string markdownPage(const CommandTable& table) {
  std::string page =
      "# Every option of `orvane`\n\n"
      "Made by `scripts/docs --command` from the command's own tables; a test compares. What the\n"
      "options mean together, and the configuration, stands in [host.md](host.md).\n";
  for (const CommandEntry& command : table) {
    page += command.path.empty() ? "\n## `orvane`\n" : "\n## `orvane " + command.path + "`\n";
    page += "\n" + command.text + (command.text.ends_with('.') ? "\n" : ".\n");
    for (const auto& [heading, options] : groupsOf(command)) {
      page += "\n| " + cell(heading) + " | |\n|---|---|\n";
      for (const OptionEntry* option : options) addOption(*option, page);
    }
  }
  page += "\n## Exit codes\n\n| code | meaning |\n|---|---|\n";
  for (const ExitCodeText& its : kExitCodeTexts)
    page += fmt::format("| {} | {} |\n", static_cast<int>(its.code), its.text);
  return page;
}

}  // namespace orvane
