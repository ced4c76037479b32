#include "host/ModuleFinder.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fmt/core.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string_view>

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "host/ElfSymbols.h"
#include "host/InputError.h"
#include "host/WriteError.h"
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

/// Refuses what is seen to be no module before a dynamic linker, which says little, is asked.
void refuseOtherFiles(const std::string& path, const std::string& place) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file && errno == EACCES)
    throw InputError(fmt::format("{}: \"{}\" cannot be read: {}", place, path, reasonOf(EACCES)));
  if (!file) return;
  std::string begin(4, '\0');
  file.read(begin.data(), 4);
  if (begin == "\177ELF") return;
  const auto endsWith = [&](const char* ending) { return path.ends_with(ending); };
  const bool isData =
      std::ranges::any_of(std::array{".csv", ".csv.gz", ".txt", ".txt.gz", ".ovb"}, endsWith);
  throw InputError(fmt::format(
      "{}: \"{}\" is not a strategy module, but {}", place, path,
      isData              ? "market data; give it by --bars or --ticks"
      : endsWith(".json") ? "JSON; a configuration is given without --strategy, and parameters by "
                            "--params"
      : endsWith(".cpp")  ? "source text; build it, and give the .so file"
                          : "another kind of file; a module is a shared library (.so)"));
}

/// What a fault of the dynamic linker usually comes from.
std::string explained(const std::string& fault) {
  constexpr std::string_view kUndefined = "undefined symbol: ";
  if (const std::size_t at = fault.find(kUndefined); at != std::string::npos) {
    const std::size_t begin = at + kUndefined.size();
    const std::string symbol = fault.substr(begin, fault.find_first_of(", ;(", begin) - begin);
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), std::free);
    return fmt::format(
        "is not a strategy module: nobody defines {}, which it uses; usually a source file or a "
        "library is missing in its build, or it was built for another version of this one",
        name != nullptr ? std::string(name.get()) : symbol);
  }
  if (fault.find("cannot open shared object file: No such") != std::string::npos)
    return fault + "; install that library, or give its folder in LD_LIBRARY_PATH";
  return fault;
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
  refuseOtherFiles(path, place);
  if (const std::string fault = tryModule(path); !fault.empty())
    throw InputError(fmt::format("{}: \"{}\" {}", place, path, explained(fault)));
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
