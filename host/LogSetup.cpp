#include "host/LogSetup.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <log4cxx/logmanager.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/InputError.h"
#include "host/LineAppender.h"
#include "host/WriteError.h"

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
std::shared_ptr<LineAppender> consoleAppender() {
  const bool isTerminal = isatty(STDERR_FILENO) != 0;
  return std::make_shared<LineAppender>("the standard error", isTerminal ? "\r\033[K" : "",
                                        STDERR_FILENO, false);
}

/// Opening a pipe that nobody reads must fail and not wait; writing to one may wait.
std::shared_ptr<LineAppender> fileAppender(const std::string& path) {
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0666);
  if (descriptor < 0)
    throw InputError(fmt::format("--log: \"{}\" cannot be written: {}", path,
                                 std::generic_category().message(errno)));
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  return std::make_shared<LineAppender>("--log " + path, "", descriptor, true);
}

/// Whether a file holds what a log may: nothing, or a first line that begins with a time.
bool mayBeLog(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return true;
  constexpr std::string_view kShape = "0000-00-00 00:00:00.000 [";
  std::string start(kShape.size(), '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  if (file.gcount() == 0) return true;
  for (char& c : start)
    if (c >= '0' && c <= '9') c = '0';
  return start == kShape;
}

}  // namespace

void checkLogFile(const LogOptions& options) {
  if (options.file.empty()) return;
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path file(options.file);
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  const bool isThere = fs::exists(file, error);
  int reason = 0;
  if (isThere && fs::is_directory(file, error))
    reason = EISDIR;
  else if (!isThere && !fs::is_directory(folder, error))
    reason = fs::exists(folder, error) ? ENOTDIR : ENOENT;
  else if (access((isThere ? file : folder).c_str(), W_OK) != 0)
    reason = errno;
  if (reason != 0)
    throw InputError(
        fmt::format("--log: \"{}\" cannot be written: {}", options.file, reasonOf(reason)));
  if (!mayBeLog(options.file))
    throw InputError(
        fmt::format("--log: \"{}\" holds something other than log lines, which would be lost; name "
                    "another file",
                    options.file));
}

std::shared_ptr<LineAppender> setUpLog(const LogOptions& options, std::shared_ptr<LogRing> ring) {
  auto appender = options.file.empty() ? consoleAppender() : fileAppender(options.file);
  if (!options.file.empty()) appender->setRing(std::move(ring));
  log4cxx::LogManager::resetConfiguration();
  const auto root = log4cxx::Logger::getRootLogger();
  root->addAppender(log4cxx::AppenderPtr(appender));
  root->setLevel(levelOf(options.level));
  for (const char* name : {"Stg", "StgF"})
    log4cxx::Logger::getLogger(name)->setLevel(levelOf(options.strategyLevel));
  return appender;
}

}  // namespace orvane
