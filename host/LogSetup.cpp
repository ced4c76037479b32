#include "host/LogSetup.h"

#include <fmt/core.h>
#include <log4cxx/basicconfigurator.h>
#include <log4cxx/consoleappender.h>
#include <log4cxx/fileappender.h>
#include <log4cxx/helpers/pool.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/patternlayout.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "host/InputError.h"

namespace orvane {
namespace {

log4cxx::LevelPtr levelOf(const std::string& name) {
  if (name == "trace") return log4cxx::Level::getTrace();
  if (name == "debug") return log4cxx::Level::getDebug();
  if (name == "info") return log4cxx::Level::getInfo();
  if (name == "warn") return log4cxx::Level::getWarn();
  if (name == "error") return log4cxx::Level::getError();
  return log4cxx::Level::getOff();
}

/// The lines carry level, logger and time themselves. On a terminal, each first wipes the line of
/// progress that may stand there.
std::string patternOf(const LogOptions& options) {
  const bool isTerminal = options.file.empty() && isatty(STDERR_FILENO) != 0;
  return isTerminal ? "\r\033[K%m%n" : "%m%n";
}

}  // namespace

void checkLogFile(const LogOptions& options) {
  if (options.file.empty()) return;
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path file(options.file);
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  const bool isThere = fs::exists(file, error);
  const bool isGood = isThere
                          ? !fs::is_directory(file, error) && access(file.c_str(), W_OK) == 0
                          : fs::is_directory(folder, error) && access(folder.c_str(), W_OK) == 0;
  if (!isGood) throw InputError(fmt::format("--log: \"{}\" cannot be written", options.file));
}

void setUpLog(const LogOptions& options) {
  const auto layout = std::make_shared<log4cxx::PatternLayout>(patternOf(options));
  log4cxx::helpers::Pool pool;
  log4cxx::AppenderPtr appender;
  if (options.file.empty()) {
    const auto console = std::make_shared<log4cxx::ConsoleAppender>();
    console->setLayout(layout);
    console->setTarget(log4cxx::ConsoleAppender::getSystemErr());
    console->setEncoding("UTF-8");
    console->activateOptions(pool);
    appender = console;
  } else {
    if (!std::ofstream(options.file, std::ios::app))
      throw InputError(fmt::format("--log: \"{}\" cannot be written", options.file));
    const auto file = std::make_shared<log4cxx::FileAppender>();
    file->setLayout(layout);
    file->setOption("ENCODING", "UTF-8");
    file->setAppend(false);
    file->setFile(options.file);
    file->activateOptions(pool);
    appender = file;
  }
  log4cxx::LogManager::resetConfiguration();
  const auto root = log4cxx::Logger::getRootLogger();
  root->addAppender(appender);
  root->setLevel(levelOf(options.level));
  for (const char* name : {"Stg", "StgF"})
    log4cxx::Logger::getLogger(name)->setLevel(levelOf(options.strategyLevel));
}

}  // namespace orvane
