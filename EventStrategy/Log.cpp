#include "EventStrategy/Log.h"

#include <log4cxx/helpers/transcoder.h>

#include "services/Common/Timestamp.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

const log4cxx::LevelPtr& levelOf(LogLevel level) {
  static const log4cxx::LevelPtr levels[] = {log4cxx::Level::getTrace(), log4cxx::Level::getDebug(),
                                             log4cxx::Level::getInfo(), log4cxx::Level::getWarn(),
                                             log4cxx::Level::getError()};
  return levels[static_cast<int>(level)];
}

constexpr std::string_view kPrefixes[] = {"[TRACE] ", "[DEBUG] ", "[INFO ] ", "[WARN ] ",
                                          "[ERROR] "};

std::string nameOf(const log4cxx::LoggerPtr& logger) {
  std::string name;
  logger->getName(name);
  return name;
}

[[maybe_unused]] const Loggers& madeAtStart = loggers();

}  // namespace

const Loggers& loggers() {
  static const Loggers& made =
      *new Loggers{log4cxx::Logger::getLogger("Event"), log4cxx::Logger::getLogger("Runner"),
                   log4cxx::Logger::getLogger("Stg"), log4cxx::Logger::getLogger("StgF")};
  return made;
}

bool isEnabled(const log4cxx::LoggerPtr& logger, LogLevel level) {
  switch (level) {
    case LogLevel::Trace:
      return logger->isTraceEnabled();
    case LogLevel::Debug:
      return logger->isDebugEnabled();
    case LogLevel::Info:
      return logger->isInfoEnabled();
    case LogLevel::Warn:
      return logger->isWarnEnabled();
    default:
      return logger->isErrorEnabled();
  }
}

LogLine::LogLine(const log4cxx::LoggerPtr& logger, LogLevel level)
    : logger_(logger), level_(level) {
  if (isTimeEnabled()) {
    text_ += Timestamp::now(0).toDateTimeString();
    text_ += ' ';
  }
  text_ += kPrefixes[static_cast<int>(level)];
  text_ += nameOf(logger);
  text_ += ' ';
}

void LogLine::send(const log4cxx::spi::LocationInfo& location) const {
  log4cxx::LogString line;
  log4cxx::helpers::Transcoder::decodeUTF8(gbkToUtf8(text_), line);
  logger_->forcedLogLS(levelOf(level_), line, location);
}

}  // namespace orvane::detail
