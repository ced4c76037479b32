#include "host/WholeFile.h"

#include <fmt/core.h>
#include <unistd.h>

#include <QDir>
#include <QSaveFile>
#include <filesystem>

#include "host/InputError.h"

namespace orvane {

std::string writeWholeFile(const std::string& path, const QByteArray& text) {
  QSaveFile file(QString::fromStdString(path));
  // What is only buffered would fail after the last look at errors.
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size() &&
      file.commit())
    return {};
  return fmt::format("{}: cannot be written: {}", path, file.errorString().toStdString());
}

void checkFolder(const std::string& folder, const std::string& option) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path there = fs::absolute(folder, error).lexically_normal();
  if (fs::exists(there, error) && !fs::is_directory(there, error))
    throw InputError(fmt::format("{}: \"{}\" is not a folder", option, folder));
  while (!fs::exists(there, error) && there.has_relative_path()) there = there.parent_path();
  if (!fs::is_directory(there, error) || access(there.c_str(), W_OK) != 0)
    throw InputError(fmt::format("{}: the folder \"{}\" cannot be written", option, folder));
}

void makeFolder(const std::string& folder, const std::string& option) {
  if (!QDir().mkpath(QString::fromStdString(folder)))
    throw InputError(fmt::format("{}: the folder \"{}\" cannot be made", option, folder));
}

}  // namespace orvane
