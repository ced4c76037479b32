#include "host/NewFolder.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "host/InputError.h"
#include "host/WriteError.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

/// Where a folder is, without a slash at its end.
fs::path placeOf(const std::string& path) {
  const fs::path whole = fs::absolute(path).lexically_normal();
  return whole.has_filename() ? whole : whole.parent_path();
}

}  // namespace

NewFolder::NewFolder(const std::string& path, std::string place, std::string remedy)
    : place_(std::move(place)), remedy_(std::move(remedy)), target_(placeOf(path)) {
  std::error_code error;
  const fs::file_type type = fs::status(target_, error).type();
  if (type == fs::file_type::directory) {
    const bool isEmpty = fs::is_empty(target_, error);
    if (error) fail(target_, error.value());
    if (!isEmpty) refuse(fmt::format("the folder \"{}\" is not empty", path));
    wasThere_ = true;
  } else if (fs::symlink_status(target_, error).type() != fs::file_type::not_found) {
    refuse(fmt::format("\"{}\" is there, and is not a folder", path));
  }
  fs::path above = wasThere_ ? target_ : target_.parent_path();
  while (!fs::exists(above, error) && above.has_relative_path()) above = above.parent_path();
  if (!fs::is_directory(above, error))
    refuse(fmt::format("\"{}\" cannot be made: \"{}\" is not a folder", path, above.string()));
  const fs::path hidden = above / fmt::format(".orvane-new-{}", getpid());
  if (!fs::create_directory(hidden, error))
    fail(error ? above : hidden, error ? error.value() : EEXIST);
  hidden_ = hidden;
}

NewFolder::~NewFolder() {
  std::error_code error;
  for (auto path = moved_.rbegin(); path != moved_.rend(); ++path) fs::remove_all(*path, error);
  if (!hidden_.empty()) fs::remove_all(hidden_, error);
}

void NewFolder::write(const std::string& name, std::string_view text) {
  const fs::path path = hidden_ / name;
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) fail(target_ / name, error.value());
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (!file) fail(target_ / name, errno);
}

void NewFolder::keep() {
  if (wasThere_)
    moveInto();
  else
    moveThere();
  moved_.clear();
}

void NewFolder::moveInto() {
  std::error_code error;
  // All names first: what is read of a folder while it changes is anybody's guess.
  std::vector<fs::path> names;
  for (fs::directory_iterator at(hidden_, error), end; !error && at != end; at.increment(error))
    names.push_back(at->path().filename());
  if (error) fail(hidden_, error.value());
  for (const fs::path& name : names) {
    fs::rename(hidden_ / name, target_ / name, error);
    if (error) fail(target_ / name, error.value());
    moved_.push_back(target_ / name);
  }
}

void NewFolder::moveThere() {
  std::error_code error;
  std::vector<fs::path> above;
  for (fs::path folder = target_.parent_path(); !fs::exists(folder, error);
       folder = folder.parent_path())
    above.push_back(folder);
  for (auto folder = above.rbegin(); folder != above.rend(); ++folder) {
    fs::create_directory(*folder, error);
    if (error) fail(*folder, error.value());
    moved_.push_back(*folder);
  }
  fs::rename(hidden_, target_, error);
  if (error) fail(target_, error.value());
  hidden_.clear();
}

void NewFolder::refuse(const std::string& why) const {
  throw InputError(fmt::format("{}: {}; {}", place_, why, remedy_));
}

void NewFolder::fail(const fs::path& path, int error) const {
  failToWrite(
      fmt::format("{}: \"{}\" cannot be written: {}", place_, path.string(), reasonOf(error)),
      error);
}

}  // namespace orvane
