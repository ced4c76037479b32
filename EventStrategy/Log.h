#pragma once

#include <log4cxx/logger.h>

#include <concepts>
#include <string>
#include <string_view>

namespace orvane::detail {

/// The library's four loggers, got by name at start. They live for ever: pool threads may log
/// while the process ends.
struct Loggers {
  log4cxx::LoggerPtr event;   ///< "Event": the strategy base and the sources.
  log4cxx::LoggerPtr runner;  ///< "Runner": the host and the context.
  log4cxx::LoggerPtr stg;     ///< "Stg" and "StgF": the strategy's own log calls.
  log4cxx::LoggerPtr stgF;
};
const Loggers& loggers();

enum class LogLevel { Trace, Debug, Info, Warn, Error };

bool isEnabled(const log4cxx::LoggerPtr& logger, LogLevel level);

/// One line in the making: the time if the platform wants it, the level's prefix, the logger's
/// name, and what is streamed into it. Made only after the level test. Text is GBK; `send`
/// converts it, because the logging library would read the bytes in the process's locale and turn
/// each of them that is not ASCII into "?".
class LogLine {
 public:
  LogLine(const log4cxx::LoggerPtr& logger, LogLevel level);

  LogLine& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }
  LogLine& operator<<(std::integral auto number) {
    text_ += std::to_string(number);
    return *this;
  }

  void send(const log4cxx::spi::LocationInfo& location) const;

 private:
  const log4cxx::LoggerPtr& logger_;
  LogLevel level_;
  std::string text_;
};

}  // namespace orvane::detail

/// Logs one line; the fields, joined by <<, are only evaluated if the level is enabled.
#define ORVANE_LOG(logger, level, fields)                                                    \
  do {                                                                                       \
    const auto& orvaneLogger = ::orvane::detail::loggers().logger;                           \
    if (::orvane::detail::isEnabled(orvaneLogger, ::orvane::detail::LogLevel::level)) {      \
      ::orvane::detail::LogLine orvaneLine(orvaneLogger, ::orvane::detail::LogLevel::level); \
      orvaneLine << fields;                                                                  \
      orvaneLine.send(LOG4CXX_LOCATION);                                                     \
    }                                                                                        \
  } while (false)
