#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <string>

#include "host/Console.h"
#include "host/DataCommand.h"
#include "host/GenerateCommand.h"
#include "host/InputError.h"
#include "host/InspectCommand.h"
#include "host/NewStrategyCommand.h"
#include "host/OptionChecks.h"
#include "host/PageOptions.h"
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
  orvane::DataCommand data(app);
  orvane::NewStrategyCommand newStrategy(app);
  orvane::addPageOptions(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& done) {
    return app.exit(done);
  } catch (const CLI::ParseError& error) {
    orvane::complain(orvane::faultOf(error, app, argc, argv) +
                     "\nRun with --help for more information.");
    return orvane::kExitBadInput;
  }
  if (run.isChosen()) return run.execute();
  if (newStrategy.isChosen()) return newStrategy.execute();
  const int code = generate.isChosen()  ? generate.execute()
                   : inspect.isChosen() ? inspect.execute()
                                        : data.execute();
  const std::string failure = orvane::outputFailure();
  if (failure.empty()) return code;
  orvane::complain(failure);
  return orvane::kExitRunFailed;
}

/// A pipe that its reader closed and a file that may not grow are errors of one write, told like
/// any other, and not the death of a run with all its results.
void outliveFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  outliveFailedWrites();
  try {
    return runCommandLine(argc, argv);
  } catch (const orvane::DataFileError& error) {
    orvane::complain(error.what());
    return orvane::kExitBadInput;
  } catch (const orvane::InputError& error) {
    orvane::complain(error.what());
    return orvane::kExitBadInput;
  } catch (const std::exception& error) {
    orvane::complain(error.what());
    return orvane::kExitRunFailed;
  }
}
