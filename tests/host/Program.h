#pragma once

#include <QJsonObject>
#include <filesystem>
#include <string>
#include <vector>

namespace orvane::test {

/// What a run of the command left behind.
struct ProgramResult {
  int exitCode = -1;
  std::string out, err;
};

/// What stands in the command's way.
struct ProgramLimits {
  std::string outFile;     ///< Where its standard output goes, and not to `out`.
  long mostFileBytes = 0;  ///< No file may grow beyond; 0: no limit.
  /// A folder that is a small disk of its own for it, empty at first.
  std::string diskFolder = {};
  long diskBytes = 0;  ///< How large that disk is.
  bool diskIsReadOnly = false;
  std::vector<int> closed = {};  ///< Standard streams that are closed for it.
};

/// The exit code where the small disk could not be made: not everybody may.
inline constexpr int kNoDisk = 126;

/// Runs the command with these arguments and waits for it. If `interruptOn` is not empty, the
/// command is sent SIGINT as soon as its standard output has that text.
ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::string& interruptOn = {}, const ProgramLimits& limits = {});

/// The path of a module that these tests build.
std::string testModule(const std::string& name);

/// A folder of its own, removed with everything in it.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// The path of a name in the folder.
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  /// Writes a file and answers its path.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path path_;
};

std::string readFile(const std::string& path);
QJsonObject readReport(const std::string& folder);

/// A small file of 1-minute bars, good or with one line replaced by another.
std::string barsCsv(const std::string& badLine = {});

}  // namespace orvane::test
