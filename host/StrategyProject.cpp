#include "host/StrategyProject.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "host/SessionGenerator.h"
#include "host/SessionJson.h"
#include "host/StrategyTemplates.h"

namespace orvane {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr int kDays = 5;
constexpr char kSuffix[] = "Strategy";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

using Replacements = std::vector<std::pair<std::string, std::string>>;

std::string replaced(std::string_view text, const Replacements& replacements) {
  std::string result(text);
  for (const auto& [from, to] : replacements)
    for (std::size_t at = 0; (at = result.find(from, at)) != std::string::npos; at += to.size())
      result.replace(at, from.size(), to);
  return result;
}

void addData(SessionGenerator& generator, std::vector<ProjectFile>& files) {
  const SyntheticInstrument& its = generator.instrument();
  std::string bars = SessionGenerator::barHeader();
  generator.generate({}, [&](std::string_view row) { bars += row; });
  files.push_back({"data/" + barFileName(its), std::move(bars)});
  files.push_back(
      {"data/instruments.json", instrumentsJson({instrumentJson(its)}).toJson().toStdString()});
  files.push_back({"data/format.json", sessionFormatJson().toJson().toStdString()});
}

}  // namespace

std::string strategyNameFault(const std::string& name) {
  const bool isGood =
      !name.empty() && name.size() <= kLongestName && isLetter(name.front()) &&
      std::ranges::all_of(name, [](char c) { return isLetter(c) || isDigit(c) || c == '_'; });
  if (isGood) return {};
  return fmt::format(
      "\"{}\" cannot name a strategy: letters, digits and underscores alone, a letter first, at "
      "most {} of them",
      name, kLongestName);
}

std::string strategyClassName(const std::string& name) {
  std::string result;
  bool isFirst = true;
  for (const char c : name) {
    if (c != '_') result += isFirst && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    isFirst = c == '_';
  }
  return result.ends_with(kSuffix) ? result : result + kSuffix;
}

std::vector<ProjectFile> strategyProject(const std::string& name) {
  GeneratorOptions options;
  options.days = kDays;
  SessionGenerator generator(options, 0);
  const Replacements replacements{{"@NAME@", name},
                                  {"@CLASS@", strategyClassName(name)},
                                  {"@CODE@", generator.instrument().codeText()},
                                  {"@BARS@", barFileName(generator.instrument())}};
  std::vector<ProjectFile> files;
  for (const StrategyTemplate& each : strategyTemplates())
    files.push_back({replaced(each.name, replacements), replaced(each.text, replacements)});
  addData(generator, files);
  return files;
}

}  // namespace orvane
