// The manual page: prose for the whole, and every option from the parser's tables.

#include <fmt/core.h>

#include "host/CommandPages.h"
#include "host/Version.h"

namespace orvane {
namespace {

/// Text as the formatter takes it: nothing in it is a request or an escape, and a dash can be
/// copied into a shell.
std::string plain(const std::string& text) {
  std::string result;
  bool isLineStart = true;
  for (const char letter : text) {
    if (isLineStart && (letter == '.' || letter == '\'')) result += "\\&";
    isLineStart = letter == '\n';
    switch (letter) {
      case '\\':
        result += "\\e";
        break;
      case '-':
        result += "\\-";
        break;
      case '\'':
        result += "\\(aq";
        break;
      case '`':
        result += "\\(ga";
        break;
      case '^':
        result += "\\(ha";
        break;
      case '~':
        result += "\\(ti";
        break;
      case '"':
        result += "\\(dq";
        break;
      default:
        result += letter;
    }
  }
  return result;
}

std::string bold(const std::string& text) { return "\\fB" + plain(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + plain(text) + "\\fR"; }

void addOption(const OptionEntry& option, std::string& page) {
  page += ".TP\n";
  std::string names;
  for (const std::string& name : option.names) {
    names += names.empty() ? "" : ", ";
    names += option.isPositional ? italic(name) : bold(name);
  }
  page += names;
  if (!option.value.empty()) page += " " + italic(option.value) + (option.takesMany ? " ..." : "");
  page += "\n" + plain(option.text);
  std::string more;
  if (option.isRequired) more += "\nRequired.";
  if (!option.defaultValue.empty()) more += "\nDefault: " + plain(option.defaultValue) + ".";
  page += (more.empty() ? "" : ".") + more + "\n";
}

void addOptions(const CommandEntry& command, std::string& page) {
  for (const auto& [heading, options] : groupsOf(command)) {
    if (!heading.empty()) page += ".SS \"" + plain(heading) + "\"\n";
    for (const OptionEntry* option : options) addOption(*option, page);
  }
}

void addLiteral(const std::string& text, std::string& page) {
  if (text.empty()) return;
  page += ".PP\n.nf\n" + plain(text) + (text.back() == '\n' ? "" : "\n") + ".fi\n";
}

constexpr char kDescription[] =
    R"(Plays files of market data through strategy modules, as fast as they digest them and, bit for
bit, the same on every run; tells what they did; tries many combinations of their parameters; shows
how data files are read; and turns them into caches, which need not be read again.
A strategy module is a shared library that was built with the strategy kit.
Text on the command line and in files is UTF-8.
)";

constexpr char kSignals[] =
    R"(SIGINT once, or SIGTERM however often, stops the runs in order: strategies are told, and
summary and report are written. SIGINT a second time ends the process at once. A sweep keeps what
is done, also where it is killed: the same command goes on.
)";

constexpr char kFiles[] =
    R"(Bare names of modules are looked for in the present folder, beside the command, and in the
folder of installed modules.
)";

}  // namespace

std::string manualPage(const CommandTable& table) {
  std::string page = fmt::format(
      ".\\\" Written by \"orvane --page man\".\n.TH ORVANE 1 \"\" \"orvane {}\" \"User "
      "Commands\"\n",
      kVersion);
  page += ".SH NAME\norvane \\- play market data through event\\-driven trading strategies\n";
  page += ".SH SYNOPSIS\n";
  for (const CommandEntry& command : table) {
    if (!command.children.empty()) continue;
    page += ".B orvane " + plain(command.path) + "\n[\\fIoptions\\fR]";
    for (const OptionEntry& option : command.options)
      if (option.isPositional)
        page += (option.isRequired ? " " : " [") + italic(option.names.front()) +
                (option.takesMany ? " ..." : "") + (option.isRequired ? "" : "]");
    page += "\n.br\n";
  }
  page += "\\fBorvane\\fR [\\fIoption\\fR]\n";
  page += ".SH DESCRIPTION\n" + plain(kDescription);
  for (const CommandEntry& command : table) {
    if (command.path.empty()) {
      page += ".SH OPTIONS\n";
    } else {
      page += ".SH \"ORVANE " + plain(command.path) + "\"\n" + plain(command.text) + ".\n";
    }
    addOptions(command, page);
    addLiteral(command.footer, page);
  }
  page += ".SH \"EXIT STATUS\"\n";
  for (const ExitCodeText& its : kExitCodeTexts)
    page += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(its.code), plain(its.text));
  page += ".SH SIGNALS\n" + plain(kSignals);
  page += ".SH FILES\n" + plain(kFiles);
  page += ".SH \"SEE ALSO\"\nThe guide and the reference of all file formats lie in the folder\n";
  page += ".I /usr/share/doc/orvane\nwhere the package of the system brought them.\n";
  return page;
}

}  // namespace orvane
