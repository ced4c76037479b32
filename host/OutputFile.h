#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// A file that appears whole or not at all: it is written beside its place under a name of its own,
/// `PATH.new-NUMBER`, and is taken away again unless it is kept. A link stays one: what it leads to
/// is written. What fails throws as `failToWrite` does, with a message that names path and reason.
class OutputFile {
 public:
  /// The path is UTF-8.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(std::string_view text);

  /// Sees all of it onto the disk, where it stands under the name that this answers.
  const std::string& finish();

  /// Gives a finished file its true name, and the permissions of what it replaces.
  void keep();

 private:
  void open();
  void flush();
  [[noreturn]] void fail(int error) const;

  const std::string path_;
  const std::string target_;  ///< Where the path leads.
  std::string newPath_;
  std::string waiting_;  ///< Small texts are written together.
  int descriptor_ = -1;
  bool isThere_ = false;  ///< Whether there is a file to be taken away.
};

}  // namespace orvane
