#pragma once

#include <string>
#include <vector>

namespace orvane {

/// A file of a run and what it is for, such as "--store". Texts are UTF-8.
struct FileRole {
  std::string role;
  std::string path;  ///< Empty counts for nothing.
};

/// Throws `InputError` if a file that the run writes is another one that it writes, or one that it
/// reads, by whatever name. Devices may be shared.
void checkFileRoles(const std::vector<FileRole>& written, const std::vector<FileRole>& read);

}  // namespace orvane
