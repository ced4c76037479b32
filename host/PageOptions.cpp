#include "host/PageOptions.h"

#include <CLI/App.hpp>

#include "host/CommandPages.h"
#include "host/Console.h"
#include "host/ModuleFinder.h"

namespace orvane {
namespace {

std::string pageOf(const std::string& kind, const CLI::App& app) {
  const CommandTable table = commandTable(app);
  if (kind == "man") return manualPage(table);
  if (kind == "markdown") return markdownPage(table);
  return kind == "bash" ? bashCompletion(table) : zshCompletion(table);
}

}  // namespace

void addPageOptions(CLI::App& app) {
  app.add_option_function<std::string>(
         "--page",
         [&app](const std::string& kind) {
           say(pageOf(kind, app));
           throw CLI::Success();
         },
         "Write the manual page, the completion for a shell, or the reference, and exit")
      ->check(CLI::IsMember({"man", "bash", "zsh", "markdown"}));
  app.add_flag_callback(
         "--modules",
         [] {
           for (const std::string& name : strategyModuleNames()) say(name + "\n");
           throw CLI::Success();
         },
         "List the strategy modules that are found by a bare name, and exit")
      ->disable_flag_override();
}

}  // namespace orvane
