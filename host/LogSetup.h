#pragma once

#include <string>

namespace orvane {

/// Where log lines go and which.
struct LogOptions {
  std::string file;                    ///< Empty: the standard error.
  std::string level = "warn";          ///< Of the system's own lines.
  std::string strategyLevel = "info";  ///< Of the lines that strategies write.
};

/// Throws `InputError` if the file cannot be written; leaves it as it is.
void checkLogFile(const LogOptions& options);

/// Configures the loggers of the process. Lines are UTF-8, whatever the locale. Throws
/// `InputError` if the file cannot be written.
void setUpLog(const LogOptions& options);

}  // namespace orvane
