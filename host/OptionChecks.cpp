#include "host/OptionChecks.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "shared/NearText.h"

namespace orvane {

namespace {

std::vector<std::string> commandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

/// Texts as a list in words.
std::string listed(const std::vector<std::string>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i)
    list += (i == 0 ? "" : i + 1 < texts.size() ? ", " : " and ") + texts[i];
  return list;
}

/// "data inspect" of the application of that name.
std::string pathOf(const CLI::App& command) {
  const CLI::App* const parent = command.get_parent();
  if (parent == nullptr) return {};
  const std::string path = pathOf(*parent);
  return path.empty() ? command.get_name() : path + " " + command.get_name();
}

/// The command that the line names, however deep it lies.
const CLI::App& chosenCommand(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : chosenCommand(*chosen.front());
}

/// The first argument that is an option's in its form, but of no option of the command.
std::string unknownOption(const CLI::App& command, int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string given = argv[i];
    std::string name = given.substr(0, given.find('='));
    if (name == "--") break;
    if (name.starts_with("--") && command.get_option_no_throw(name) == nullptr) return name;
  }
  return {};
}

std::string optionFault(const CLI::App& command, const std::string& name) {
  std::vector<std::string> known;
  for (const CLI::Option* option : command.get_options())
    for (const std::string& its : option->get_lnames()) known.push_back("--" + its);
  const std::string* const meant = textMeant(known, name);
  return fmt::format("\"{}\" is not an option of {}{}", name, pathOf(command),
                     meant == nullptr ? "" : fmt::format("; is \"{}\" meant?", *meant));
}

std::string commandFault(const CLI::App& app, const std::string& name) {
  const auto commands = commandsOf(app);
  const std::string* const meant = textMeant(commands, name);
  const std::string path = pathOf(app);
  return fmt::format(
      "\"{}\" is not a command{}{}; {} commands are {}", name, path.empty() ? "" : " of ", path,
      meant == nullptr ? "the" : fmt::format("is \"{}\" meant? The", *meant), listed(commands));
}

/// An option that takes one value and was given several; empty without one.
std::string repeatedFault(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options()) {
    const std::vector<std::string>& given = option->results();
    if (option->get_items_expected_max() != 1 || given.size() < 2) continue;
    return fmt::format("{}: is given {} times, as \"{}\" and \"{}\"; give it once",
                       option->get_name(), given.size(), given[0], given[1]);
  }
  return {};
}

/// An argument without a name that must be given and was not; empty where none is missing.
std::string missingFault(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options())
    if (option->get_required() && !option->nonpositional() && option->results().empty())
      return fmt::format("give {}{} (see {} --help)", option->get_type_name(),
                         option->get_items_expected_max() > 1 ? "..." : "", pathOf(command));
  return {};
}

/// An argument that no option takes.
std::string extraFault(const CLI::App& command, const std::string& given) {
  const std::string path = pathOf(command);
  const std::string advice =
      path == "sweep"
          ? ": it takes no configuration; give --strategy, --bars or --ticks, and --grid"
          : "";
  return fmt::format("\"{}\" is an argument that {} does not take{} (see {} --help)", given, path,
                     advice, path);
}

}  // namespace

CLI::Validator wholeNumber(std::uint64_t lowest, std::uint64_t highest) {
  const auto check = [lowest, highest](const std::string& given) -> std::string {
    std::uint64_t number = 0;
    const char* const end = given.data() + given.size();
    const auto parsed = std::from_chars(given.data(), end, number);
    if (parsed.ec == std::errc() && parsed.ptr == end && number >= lowest && number <= highest)
      return {};
    return fmt::format("\"{}\" is not a whole number from {} to {}", given, lowest, highest);
  };
  return CLI::Validator(check, "");
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  const auto check = [words](const std::string& given) -> std::string {
    if (std::ranges::find(words, given) != words.end()) return {};
    const std::string* const meant = textMeant(words, given);
    return fmt::format("\"{}\" is not one of {}{}", given, fmt::join(words, ", "),
                       meant == nullptr ? "" : fmt::format("; is \"{}\" meant?", *meant));
  };
  return CLI::Validator(check, fmt::format("{{{}}}", fmt::join(words, ",")));
}

CLI::Validator numberAboveZero() {
  const auto check = [](const std::string& given) -> std::string {
    double number = 0;
    const char* const end = given.data() + given.size();
    const auto parsed = std::from_chars(given.data(), end, number);
    if (parsed.ec == std::errc() && parsed.ptr == end && number > 0 && std::isfinite(number))
      return {};
    return fmt::format("\"{}\" is not a number above 0", given);
  };
  return CLI::Validator(check, "");
}

void refuseEmptyTexts(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options())
    for (const std::string& given : option->results())
      if (given.empty())
        throw InputError(
            fmt::format("{}: \"\" is empty; give it a value or leave it out", option->get_name()));
}

std::string faultOf(const CLI::ParseError& error, const CLI::App& app, int argc, char** argv) {
  std::string text = error.what();
  if (app.get_subcommands().empty() && argc > 1 && !std::string(argv[1]).starts_with("--page"))
    return commandFault(app, argv[1]);
  if (argc == 1) return "give a command: " + listed(commandsOf(app));
  const CLI::App& chosen = chosenCommand(app);
  const auto extras = chosen.remaining();
  if (!commandsOf(chosen).empty() && !extras.empty() && !extras.front().starts_with('-'))
    return commandFault(chosen, extras.front());
  if (!extras.empty() && !extras.front().starts_with('-'))
    return extraFault(chosen, extras.front());
  if (!extras.empty() && !extras.front().starts_with("--"))
    return optionFault(chosen, extras.front().substr(0, 2));
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
    if (std::string fault = missingFault(chosen); !fault.empty()) return fault;
  if (const std::string name = unknownOption(chosen, argc, argv); !name.empty())
    return optionFault(chosen, name);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
    if (std::string fault = repeatedFault(chosen); !fault.empty()) return fault;
  // Where a flag was given a value, the parser leaves out which.
  const auto end = text.find(" was given a disallowed flag override");
  for (int i = 1; i < argc && end != std::string::npos; ++i)
    if (std::string(argv[i]).starts_with("--" + text.substr(0, end) + "="))
      return std::string(argv[i]) + ": a flag takes no value";
  return text;
}

}  // namespace orvane
