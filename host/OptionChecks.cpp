#include "host/OptionChecks.h"

#include <fmt/core.h>

#include <charconv>
#include <string>

#include "host/InputError.h"

namespace orvane {

namespace {

/// The names of all commands, as a list in words.
std::string commandsOf(const CLI::App& app) {
  const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
  std::string names;
  for (std::size_t i = 0; i < commands.size(); ++i)
    names += (i == 0 ? "" : i + 1 < commands.size() ? ", " : " and ") + commands[i]->get_name();
  return names;
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

void refuseEmptyTexts(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options())
    for (const std::string& given : option->results())
      if (given.empty())
        throw InputError(
            fmt::format("{}: \"\" is empty; give it a value or leave it out", option->get_name()));
}

std::string faultOf(const CLI::ParseError& error, const CLI::App& app, int argc, char** argv) {
  const std::string text = error.what();
  if (app.get_subcommands().empty() && argc > 1 && !std::string(argv[1]).starts_with("--page"))
    return fmt::format("\"{}\" is not a command; the commands are {}", argv[1], commandsOf(app));
  // Where a flag was given a value, the parser leaves out which.
  const auto end = text.find(" was given a disallowed flag override");
  for (int i = 1; i < argc && end != std::string::npos; ++i)
    if (std::string(argv[i]).starts_with("--" + text.substr(0, end) + "="))
      return std::string(argv[i]) + ": a flag takes no value";
  return text;
}

}  // namespace orvane
