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

}  // namespace

void setUpLog(const LogOptions& options) {
  // The lines carry level, logger and time themselves.
  const auto layout = std::make_shared<log4cxx::PatternLayout>("%m%n");
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
