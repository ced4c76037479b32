#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A folder that appears with all its files or not at all: they are written into a hidden one
/// beside their place, on the same disk, and moved there at the end. Until `keep`, whatever was
/// made is taken away again. What is refused throws `InputError`, what cannot be written throws as
/// `failToWrite` does: "place: what is wrong; remedy".
class NewFolder {
 public:
  /// The path is UTF-8. It must not be there, or be an empty folder; folders above it are made at
  /// the end.
  NewFolder(const std::string& path, std::string place, std::string remedy);
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  /// Writes a file; `name` is relative, and may have a folder of its own.
  void write(const std::string& name, std::string_view text);

  /// Puts everything into its place.
  void keep();

 private:
  [[noreturn]] void refuse(const std::string& why) const;
  [[noreturn]] void fail(const std::filesystem::path& path, int error) const;
  void moveInto();
  void moveThere();

  const std::string place_, remedy_;
  const std::filesystem::path target_;
  std::filesystem::path hidden_;              ///< Where the files are until they are moved.
  std::vector<std::filesystem::path> moved_;  ///< To be removed again where the rest fails.
  bool wasThere_ = false;
};

}  // namespace orvane
