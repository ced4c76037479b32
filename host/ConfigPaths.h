#pragma once

#include <filesystem>
#include <string>

namespace orvane {

/// A name in a configuration, relative to the folder that the configuration stands in.
inline std::string besides(const std::string& configPath, const std::string& name) {
  const std::filesystem::path path(name);
  if (path.is_absolute()) return name;
  return (std::filesystem::path(configPath).parent_path() / path).string();
}

}  // namespace orvane
