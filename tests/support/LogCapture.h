#pragma once

#include <log4cxx/level.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane::support {

/// One line that reached the root logger. Texts are UTF-8.
struct CapturedLine {
  std::string logger;
  std::string level;  ///< "TRACE" to "ERROR".
  std::string message;
  std::string file;  ///< Where the line was logged, as the logging library was told.
  std::string function;
  int lineNumber = 0;
};

/// Holds every log line, from TRACE on, from its construction to its destruction. Any thread may
/// log meanwhile. The levels of single loggers are left alone.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<CapturedLine> lines() const;

  /// The messages of one logger, or of all for an empty name.
  std::vector<std::string> messages(const std::string& logger = {}) const;

  /// How many lines have this logger and level, and as message the level's prefix, the logger's
  /// name, a blank and `text` (UTF-8).
  int count(const std::string& logger, const std::string& level, const std::string& text) const;

  /// How many messages hold `part`.
  int countContaining(const std::string& part) const;

  void clear();

  /// Runs inside every line, on the thread that logs and after the line was noted: to state what
  /// holds at that moment. It must not log. An empty hook takes it away.
  void onLine(std::function<void(const CapturedLine&)> hook);

  /// A line's whole message, as `count` wants it.
  static std::string message(const std::string& logger, const std::string& level,
                             const std::string& text);

 private:
  struct Appender;
  struct Store;

  std::shared_ptr<Store> store_;
  std::shared_ptr<Appender> appender_;
  log4cxx::LevelPtr formerLevel_;
};

}  // namespace orvane::support
