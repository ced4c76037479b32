// The command line: its parser, and what the command writes about itself by it. That is here, since
// each further source that includes the parser takes ten seconds to compile.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <exception>
#include <string>
#include <utility>

#include "host/CommandPages.h"
#include "host/CommandTable.h"
#include "host/Console.h"
#include "host/DataCommand.h"
#include "host/GenerateCommand.h"
#include "host/InputError.h"
#include "host/InspectCommand.h"
#include "host/ModuleFinder.h"
#include "host/NewStrategyCommand.h"
#include "host/OptionChecks.h"
#include "host/OptionHints.h"
#include "host/RunCommand.h"
#include "host/Version.h"
#include "host/sweep/SweepCommand.h"
#include "platform/market/files/DataFiles.h"

namespace {

orvane::OptionEntry entryOf(const CLI::Option& option) {
  orvane::OptionEntry entry;
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
  orvane::setValue(entry, option.get_type_name());
  return entry;
}

bool isShown(const CLI::Option* option) { return !option->get_group().empty(); }

void addCommand(const CLI::App& app, const std::string& path, orvane::CommandTable& table) {
  orvane::CommandEntry command;
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

std::string pageOf(const std::string& kind, const CLI::App& app) {
  orvane::CommandTable table;
  addCommand(app, {}, table);
  if (kind == "man") return orvane::manualPage(table);
  if (kind == "markdown") return orvane::markdownPage(table);
  return kind == "bash" ? orvane::bashCompletion(table) : orvane::zshCompletion(table);
}

/// Adds the options that write something about the program itself and end it.
void addPageOptions(CLI::App& app) {
  app.add_option_function<std::string>(
         "--page",
         [&app](const std::string& kind) {
           orvane::say(pageOf(kind, app));
           throw CLI::Success();
         },
         "Write the manual page, the completion for a shell, or the reference, and exit")
      ->check(orvane::oneOf({"man", "bash", "zsh", "markdown"}));
  app.add_flag_callback(
         "--modules",
         [] {
           for (const std::string& name : orvane::strategyModuleNames()) orvane::say(name + "\n");
           throw CLI::Success();
         },
         "List the strategy modules that are found by a bare name, and exit")
      ->disable_flag_override();
}

/// The exit code of a command that has said everything.
int unlessOutputIsLost(int code) {
  const std::string failure = orvane::outputFailure();
  if (failure.empty()) return code;
  orvane::complain(failure);
  return orvane::kExitRunFailed;
}

int runCommandLine(int argc, char** argv) {
  CLI::App app("Plays market data through event-driven trading strategies.", "orvane");
  app.set_version_flag("--version", std::string("orvane ") + orvane::kVersion);
  app.require_subcommand(1);
  orvane::RunCommand run(app);
  orvane::SweepCommand sweep(app);
  orvane::GenerateCommand generate(app);
  orvane::InspectCommand inspect(app);
  orvane::DataCommand data(app);
  orvane::NewStrategyCommand newStrategy(app);
  addPageOptions(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& done) {
    return unlessOutputIsLost(app.exit(done));
  } catch (const CLI::ParseError& error) {
    orvane::complain(orvane::faultOf(error, app, argc, argv) +
                     "\nRun with --help for more information.");
    return orvane::kExitBadInput;
  }
  if (run.isChosen()) return run.execute();
  if (sweep.isChosen()) return sweep.execute();
  if (newStrategy.isChosen()) return newStrategy.execute();
  return unlessOutputIsLost(generate.isChosen()  ? generate.execute()
                            : inspect.isChosen() ? inspect.execute()
                                                 : data.execute());
}

/// A pipe that its reader closed and a file that may not grow are errors of one write, told like
/// any other, and not the death of a run with all its results.
void outliveFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

/// A standard stream that was closed would be the next file that is opened, and what is said go
/// into it. In its place stands what cannot be read, or written, so that the loss of results is
/// told; and nobody wants to hear what goes to a closed standard error.
void occupyClosedStreams() {
  constexpr int kInstead[] = {O_WRONLY, O_RDONLY, O_WRONLY};
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0 && errno == EBADF)
      open("/dev/null", kInstead[stream]);  // It gets the lowest number that is free.
}

}  // namespace

int main(int argc, char** argv) {
  occupyClosedStreams();
  outliveFailedWrites();
  try {
    return runCommandLine(argc, argv);
  } catch (const orvane::DataFileError& error) {
    orvane::complain(orvane::withOptions(error.what()));
    return orvane::kExitBadInput;
  } catch (const orvane::InputError& error) {
    orvane::complain(error.what());
    return orvane::kExitBadInput;
  } catch (const std::exception& error) {
    orvane::complain(error.what());
    return orvane::kExitRunFailed;
  }
}
