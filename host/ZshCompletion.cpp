// The script for zsh: a function for each command, with the specifications of all its options.

#include <fmt/core.h>

#include <algorithm>

#include "host/CommandPages.h"

namespace orvane {
namespace {

constexpr char kHead[] =
    R"ZSH(#compdef orvane
# Completion of orvane for zsh, written by "orvane --page zsh" into a file "_orvane" of $fpath.

_orvane_modules() {
  local -a modules
  modules=(${(f)"$($orvane_program --modules 2>/dev/null)"})
  _alternative 'modules:strategy module:compadd -a modules' \
    'files:module file:_files -g "*.so(-.)"'
}

_orvane_coded_files() {
  compset -P '*='
  _files
}
)ZSH";

constexpr char kTail[] = R"(
# The file is the body of the function when it is loaded at need, and may be sourced as well.
if [[ $funcstack[1] == _orvane ]]; then
  _orvane "$@"
else
  compdef _orvane orvane
fi
)";

/// Text between single quotes.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char letter : text)
    result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  return result + "'";
}

/// Text inside a specification, whose own marks must not stand in it.
std::string marked(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\\' || letter == ':' || letter == '[' || letter == ']') result += '\\';
    result += letter == '\n' ? ' ' : letter;
  }
  return result;
}

std::string actionOf(const OptionEntry& option) {
  switch (option.kind) {
    case ValueKind::Words: {
      std::string words;
      for (const std::string& word : option.words) words += (words.empty() ? "" : " ") + word;
      return "(" + words + ")";
    }
    case ValueKind::File:
      return "_files";
    case ValueKind::CodedFile:
      return "_orvane_coded_files";
    case ValueKind::Folder:
      return "_files -/";
    case ValueKind::Zone:
      return "_time_zone";
    case ValueKind::Module:
      return "_orvane_modules";
    case ValueKind::None:
    case ValueKind::Text:
      break;
  }
  return " ";
}

std::vector<std::string> specificationsOf(const OptionEntry& option) {
  const std::string value =
      option.value.empty() ? "" : ":" + marked(option.value) + ":" + actionOf(option);
  if (option.isPositional) {
    if (option.takesMany) return {"*:" + marked(option.text) + ":" + actionOf(option)};
    return {(option.isRequired ? "1:" : "1::") + marked(option.text) + ":" + actionOf(option)};
  }
  std::string others;
  for (const std::string& name : option.names) others += (others.empty() ? "" : " ") + name;
  std::vector<std::string> result;
  for (const std::string& name : option.names) {
    // With it the value may stand in the same word as well.
    const bool takesEqual = !value.empty() && !option.takesMany && name.starts_with("--");
    result.push_back((option.takesMany ? "*" : "(" + others + ")") + name +
                     (takesEqual ? "=" : "") + "[" + marked(option.text) + "]" +
                     (option.takesMany ? ":*-*" : "") + value);
  }
  return result;
}

std::string functionName(std::string path) {
  std::replace(path.begin(), path.end(), ' ', '_');
  return path.empty() ? "_orvane" : "_orvane_" + path;
}

const CommandEntry& childOf(const CommandTable& table, const std::string& path) {
  return *std::find_if(table.begin(), table.end(),
                       [&path](const CommandEntry& command) { return command.path == path; });
}

std::string functionOf(const CommandEntry& command, const CommandTable& table) {
  std::string code = "\n" + functionName(command.path) + "() {\n";
  const bool hasChildren = !command.children.empty();
  if (command.path.empty()) code += "  local orvane_program=$words[1]\n";
  if (hasChildren) code += "  local context state state_descr line\n  typeset -A opt_args\n";
  code += hasChildren ? "  _arguments -C" : "  _arguments";
  for (const OptionEntry& option : command.options)
    for (const std::string& specification : specificationsOf(option))
      code += " \\\n    " + quoted(specification);
  if (!hasChildren) return code + "\n}\n";
  code += " \\\n    '1: :->command' '*:: :->arguments'\n  case $state in\n    command)\n";
  code += "      local -a commands=(";
  const std::string prefix = command.path.empty() ? "" : command.path + " ";
  for (const std::string& child : command.children)
    code += "\n        " + quoted(child + ":" + marked(childOf(table, prefix + child).text));
  code += ")\n      _describe command commands\n      ;;\n    arguments)\n      case $line[1] in\n";
  for (const std::string& child : command.children)
    code += fmt::format("        {}) {} ;;\n", child, functionName(prefix + child));
  return code + "      esac\n      ;;\n  esac\n}\n";
}

}  // namespace

std::string zshCompletion(const CommandTable& table) {
  std::string code = kHead;
  for (const CommandEntry& command : table) code += functionOf(command, table);
  return code + kTail;
}

}  // namespace orvane
