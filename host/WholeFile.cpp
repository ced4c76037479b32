#include "host/WholeFile.h"

#include <fmt/core.h>
#include <unistd.h>

#include <QDir>
#include <QSaveFile>
#include <filesystem>

#include "host/InputError.h"

namespace orvane {

namespace fs = std::filesystem;

std::string whyNoFile(const std::string& path) {
  std::error_code error;
  switch (fs::status(path, error).type()) {
    case fs::file_type::regular:
      return {};
    case fs::file_type::directory:
      return "is a folder";
    case fs::file_type::not_found:
    case fs::file_type::none:  // Links that go round, or what may not be looked at.
      return fs::is_symlink(path, error) ? "is a link that leads nowhere" : "";
    default:
      return "is no ordinary file";
  }
}

std::string behindLinks(const std::string& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  const fs::path target = fs::weakly_canonical(path, error);
  return error ? path : target.string();
}

std::string writeWholeFile(const std::string& path, const QByteArray& text) {
  if (const std::string why = whyNoFile(path); !why.empty())
    return fmt::format("{}: cannot be written: it {}", path, why);
  QSaveFile file(QString::fromStdString(path));
  // What is only buffered would fail after the last look at errors.
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size() &&
      file.commit())
    return {};
  return fmt::format("{}: cannot be written: {}", path, file.errorString().toStdString());
}

void checkFolder(const std::string& folder, const std::string& option) {
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
