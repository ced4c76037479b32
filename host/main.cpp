#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "host/GenerateCommand.h"
#include "host/InputError.h"
#include "host/InspectCommand.h"
#include "host/RunCommand.h"
#include "host/Version.h"
#include "platform/market/files/DataFiles.h"

namespace {

int runCommandLine(int argc, char** argv) {
  CLI::App app("Plays market data through event-driven trading strategies.", "orvane");
  app.set_version_flag("--version", std::string("orvane ") + orvane::kVersion);
  app.require_subcommand(1);
  orvane::RunCommand run(app);
  orvane::GenerateCommand generate(app);
  orvane::InspectCommand inspect(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& done) {
    return app.exit(done);
  } catch (const CLI::ParseError& error) {
    fmt::print(stderr, "orvane: {}\nRun with --help for more information.\n", error.what());
    return orvane::kExitBadInput;
  }
  if (run.isChosen()) return run.execute();
  if (generate.isChosen()) return generate.execute();
  return inspect.execute();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommandLine(argc, argv);
  } catch (const orvane::DataFileError& error) {
    fmt::print(stderr, "orvane: {}\n", error.what());
    return orvane::kExitBadInput;
  } catch (const orvane::InputError& error) {
    fmt::print(stderr, "orvane: {}\n", error.what());
    return orvane::kExitBadInput;
  } catch (const std::exception& error) {
    fmt::print(stderr, "orvane: {}\n", error.what());
    return orvane::kExitRunFailed;
  }
}
