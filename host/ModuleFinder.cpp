#include "host/ModuleFinder.h"

#include <dlfcn.h>
#include <fmt/core.h>
#include <fmt/ranges.h>

#include <filesystem>
#include <set>

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "host/ElfSymbols.h"
#include "host/InputError.h"
#include "platform/core/ModuleTrial.h"
#include "shared/NearText.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

fs::path commandFolder() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path(".") : self.parent_path();
}

std::vector<fs::path> moduleFolders() {
  const fs::path beside = commandFolder();
  return {beside, beside / ".." / ORVANE_MODULE_FOLDER};
}

/// What somebody may have meant who named no module.
std::string moduleAdvice(const std::string& given) {
  const std::vector<std::string> names = strategyModuleNames();
  if (const std::string* const meant = textMeant(names, given))
    return fmt::format("; is \"{}\" meant?", *meant);
  return names.empty() ? "" : fmt::format("; there are {}", fmt::join(names, ", "));
}

}  // namespace

std::string findStrategyModule(const std::string& given, const std::string& place) {
  std::error_code error;
  const bool isBareName = given.find('/') == std::string::npos;
  if (fs::is_regular_file(given, error)) return isBareName ? "./" + given : given;
  if (fs::exists(given, error) && !isBareName)
    throw InputError(fmt::format("{}: \"{}\" is not a file", place, given));
  if (isBareName) {
    for (const fs::path& folder : moduleFolders())
      for (const std::string& name : {given, given + ".so"})
        if (fs::is_regular_file(folder / name, error))
          return (folder / name).lexically_normal().string();
    throw InputError(fmt::format(
        "{}: there is no strategy module \"{}\", neither here nor beside the command ({}){}", place,
        given, commandFolder().string(), moduleAdvice(given)));
  }
  throw InputError(fmt::format("{}: the strategy module \"{}\" does not exist", place, given));
}

void checkStrategyModule(const std::string& path, const std::string& place) {
  if (const std::string fault = tryModule(path); !fault.empty())
    throw InputError(fmt::format("{}: \"{}\" {}", place, path, fault));
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr)
    throw InputError(
        fmt::format("{}: \"{}\" is not a strategy module: {}", place, path, dlerror()));
  if (dlsym(module, kCreateStrategyName) != nullptr) return;
  dlclose(module);
  throw InputError(fmt::format("{}: the module \"{}\" does not export \"{}\"", place, path,
                               kCreateStrategyName));
}

std::vector<std::string> strategyModuleNames() {
  std::set<std::string> names;
  for (const fs::path& folder : moduleFolders()) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code ignored;
      if (entry->path().extension() == ".so" && entry->is_regular_file(ignored) &&
          offersFunction(entry->path().string(), kCreateStrategyName))
        names.insert(entry->path().stem().string());
    }
  }
  return {names.begin(), names.end()};
}

}  // namespace orvane
