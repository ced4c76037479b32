#pragma once

#include <memory>
#include <string>

namespace orvane {

class LineAppender;
class LogRing;

/// Where log lines go and which.
struct LogOptions {
  std::string file;                    ///< Empty: the standard error.
  std::string level = "warn";          ///< Of the system's own lines.
  std::string strategyLevel = "info";  ///< Of the lines that strategies write.
};

/// Throws `InputError` if the file cannot be written; leaves it as it is.
void checkLogFile(const LogOptions& options);

/// Configures the loggers of the process. Lines are UTF-8, whatever the locale. Answers what the
/// lines go through, which knows of those that got lost. Lines that go to a file are given to
/// `ring` too, if there is one. Throws `InputError` if the file cannot be written; loggers and file
/// are as they were then.
std::shared_ptr<LineAppender> setUpLog(const LogOptions& options,
                                       std::shared_ptr<LogRing> ring = nullptr);

}  // namespace orvane
