#include "host/ConfigMistakes.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "host/InputError.h"
#include "host/ModuleFinder.h"

namespace orvane {
namespace {

bool endsWithAny(const std::string& text, const std::vector<std::string>& endings) {
  return std::ranges::any_of(endings, [&](const auto& ending) { return text.ends_with(ending); });
}

}  // namespace

void refuseWhatIsNoConfig(const std::string& path) {
  std::error_code error;
  const bool isThere = std::filesystem::exists(path, error);
  const auto names = strategyModuleNames();
  const bool isModule = path.ends_with(".so") || (!isThere && std::ranges::count(names, path) > 0);
  if (isModule)
    throw InputError(fmt::format(
        "{0}: is a strategy, not a configuration; run it by --strategy {0} and --bars or --ticks",
        path));
  if (endsWithAny(path, {".csv", ".csv.gz", ".txt", ".txt.gz", ".ovb"}))
    throw InputError(fmt::format(
        "{0}: is market data, not a configuration; play it by --bars {0} (or --ticks) and "
        "--strategy MODULE",
        path));
  if (endsWithAny(path, {".jsonl", ".ndjson"}))
    throw InputError(fmt::format(
        "{}: holds a JSON value a line, by its name; a configuration is one JSON object", path));
  if (!isThere)
    throw InputError(fmt::format(
        "{}: there is no such file; run takes a configuration in JSON, or --strategy and --bars",
        path));
}

}  // namespace orvane
