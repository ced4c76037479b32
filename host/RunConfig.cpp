#include "host/RunConfig.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <set>

#include "host/ConfigPaths.h"
#include "host/EventConfig.h"
#include "host/GridConfig.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/JsonInput.h"
#include "host/ModuleFinder.h"
#include "host/TimeArgument.h"
#include "host/TradeConfig.h"
#include "shared/NearText.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

/// An object, or the name of a file that holds one.
QJsonObject objectOrFile(JsonReader& reader, const char* key, const std::string& configPath,
                         std::vector<ReadFile>& files) {
  const QJsonValue found = reader.value(key);
  if (found.isUndefined()) return {};
  if (found.isObject()) return found.toObject();
  if (!found.isString()) reader.refuse(key, "must be an object or the name of a JSON file");
  reader.filledText(key);
  const std::string path = besides(configPath, found.toString().toStdString());
  files.push_back({reader.place(key), path});
  const QJsonValue value = readJsonFile(path);
  if (!value.isObject())
    throw InputError(fmt::format("{}: must hold a JSON object, not {}", path, jsonText(value)));
  return value.toObject();
}

RunnerPlan readRunner(const QJsonValue& json, const std::string& place,
                      const std::string& configPath, std::vector<ReadFile>& files) {
  JsonReader reader(json, place);
  RunnerPlan result;
  result.strategy = reader.requiredText("strategy");
  result.name = reader.filledText("name");
  result.orderSource = reader.filledText("orderSource");
  result.account = reader.filledText("account");
  result.isServer = reader.flag("server", false);
  result.limits = readLimits(reader);
  result.params = objectOrFile(reader, "params", configPath, files);
  reader.close();
  const bool isPath = result.strategy.find('/') != std::string::npos;
  const std::string beside = besides(configPath, result.strategy);
  std::error_code error;
  if (isPath || fs::is_regular_file(beside, error)) result.modulePath = beside;
  return result;
}

void readData(JsonReader& reader, const char* key, DataFileRequest::Kind kind,
              const std::string& configPath, RunPlan& plan) {
  const QJsonValue found = reader.value(key);
  if (found.isUndefined()) return;
  const QJsonArray list = found.isArray() ? found.toArray() : QJsonArray{found};
  for (qsizetype i = 0; i < list.size(); ++i) {
    const std::string place = fmt::format("{}[{}]", reader.place(key), i);
    DataInput input;
    input.kind = kind;
    input.places.place = place + ".format";
    if (list[i].isString()) {
      if (list[i].toString().isEmpty())
        throw InputError(fmt::format("{}: must be the name of a file, not \"\"", place));
      input.paths = {besides(configPath, list[i].toString().toStdString())};
    } else {
      if (!list[i].isObject())
        throw InputError(
            fmt::format("{}: must be the name of a file, or an object with \"file\" or "
                        "\"files\", not {}",
                        place, jsonText(list[i])));
      JsonReader entry(list[i], place);
      for (const std::string& name : entry.texts("files"))
        input.paths.push_back(besides(configPath, name));
      for (const std::string& name : entry.texts("file"))
        input.paths.push_back(besides(configPath, name));
      input.code = entry.filledText("code");
      input.description = objectOrFile(entry, "format", configPath, plan.otherFiles);
      entry.close();
      if (input.paths.empty())
        throw InputError(fmt::format("{}: names no file: give \"file\" or \"files\"", place));
    }
    plan.data.push_back(std::move(input));
  }
}

/// Series that will be published: codes of quotes, or objects that name a frequency.
void readPublished(JsonReader& reader, RunPlan& plan) {
  const QJsonValue found = reader.value("published");
  if (found.isUndefined()) return;
  const QJsonArray list = found.isArray() ? found.toArray() : QJsonArray{found};
  for (qsizetype i = 0; i < list.size(); ++i) {
    PublishedPlan series;
    series.place = fmt::format("{}[{}]", reader.place("published"), i);
    if (list[i].isString()) {
      series.code = list[i].toString().toStdString();
      if (series.code.empty())
        throw InputError(fmt::format("{}: must be a code, not \"\"", series.place));
    } else {
      if (!list[i].isObject())
        throw InputError(fmt::format("{}: must be a code, or an object with \"code\", not {}",
                                     series.place, jsonText(list[i])));
      JsonReader entry(list[i], series.place);
      series.code = entry.requiredText("code");
      if (entry.has("frequency")) series.frequency = entry.requiredText("frequency");
      entry.close();
    }
    plan.published.push_back(std::move(series));
  }
}

/// A configuration without its first key: a misspelt one, or another kind of file.
[[noreturn]] void refuseWithoutRunners(const JsonReader& reader, const QJsonObject& given) {
  for (const QString& key : given.keys())
    if (textMeant(std::vector<QString>{"runners"}, key) != nullptr)
      throw InputError(fmt::format("{}: unknown key; is \"runners\" meant?",
                                   reader.place(key.toStdString().c_str())));
  throw InputError(
      fmt::format("{}: is missing; a configuration begins like {{\"runners\": [{{\"strategy\": "
                  "\"sma_cross\"}}], \"bars\": \"if_1min.csv\"}}",
                  reader.place("runners")));
}

/// The name of an instruments file, or an array of short forms.
void readInstruments(JsonReader& reader, const std::string& configPath, RunPlan& plan) {
  const bool isFile = reader.value("instruments").isString();
  for (const std::string& given : reader.texts("instruments")) {
    if (!isFile) {
      plan.instruments.push_back(instrumentOf(given, reader.place("instruments")));
      continue;
    }
    const std::string path = besides(configPath, given);
    plan.instruments = instrumentsOfFile(path);
    plan.otherFiles.push_back({reader.place("instruments"), path});
    plan.instrumentsAreComplete = true;
  }
}

}  // namespace

double parseSpeed(const std::string& text, const std::string& option) {
  std::string number = text;
  if (number.ends_with('x') || number.ends_with('X')) number.pop_back();
  double result = 0;
  const char* end = number.data() + number.size();
  const auto parsed = std::from_chars(number.data(), end, result);
  if (parsed.ec != std::errc() || parsed.ptr != end || !(result > 0) || !std::isfinite(result))
    throw InputError(
        fmt::format("{}: \"{}\" is not a speed; write it like 10x, above 0", option, text));
  return result;
}

void readRunConfig(const std::string& path, RunPlan& plan) {
  const QJsonValue json = readJsonFile(path);
  JsonReader reader(json, path);
  const QJsonValue runners = reader.value("runners");
  if (runners.isUndefined()) refuseWithoutRunners(reader, json.toObject());
  if (!runners.isArray() || runners.toArray().isEmpty())
    reader.refuse("runners", "must be an array of at least one runner");
  const QJsonArray list = runners.toArray();
  for (qsizetype i = 0; i < list.size(); ++i)
    plan.runners.push_back(
        readRunner(list[i], fmt::format("{}: runners[{}]", path, i), path, plan.otherFiles));

  readData(reader, "bars", DataFileRequest::Kind::Bars, path, plan);
  readData(reader, "ticks", DataFileRequest::Kind::Ticks, path, plan);
  readInstruments(reader, path, plan);
  readTrade(reader, path, plan);
  readGrids(reader, plan);
  if (const std::string folder = reader.filledText("cache"); !folder.empty()) {
    plan.cacheFolder = besides(path, folder);
    plan.places["cacheFolder"] = fmt::format("{}: cache", path);
  }
  if (const std::string file = reader.filledText("dictionary"); !file.empty())
    plan.dictionaryFile = besides(path, file);
  for (const std::string& name : reader.texts("records"))
    plan.recordFiles.push_back(besides(path, name));
  for (const std::string& name : reader.texts("indexes"))
    plan.indexFiles.push_back(besides(path, name));
  readPublished(reader, plan);
  readEvents(reader, path, plan);
  plan.timeZone = reader.filledText("timeZone");
  if (!plan.timeZone.empty()) checkTimeZone(plan.timeZone, reader.place("timeZone"));
  plan.from = reader.filledText("from");
  plan.to = reader.filledText("to");
  for (const char* key : {"from", "to", "timeZone"}) plan.places[key] = reader.place(key);
  if (reader.has("threads")) plan.threads = reader.integer("threads", 0, 1, 1024);
  plan.isLive = reader.flag("live", false);
  plan.withDigest = reader.flag("digest", true);
  if (reader.has("speed"))
    plan.speed = parseSpeed(reader.numberOrText("speed"), reader.place("speed"));
  const std::string report = reader.filledText("report");
  if (!report.empty()) plan.reportFolder = besides(path, report);
  reader.close();
}

void completeRunners(RunPlan& plan, const std::string& place) {
  std::set<std::string> names;
  for (std::size_t i = 0; i < plan.runners.size(); ++i) {
    RunnerPlan& runner = plan.runners[i];
    const bool isAlone = plan.runners.size() == 1;
    const std::string here = isAlone ? place : fmt::format("{}: runners[{}]", place, i);
    const std::string given = runner.modulePath.empty() ? runner.strategy : runner.modulePath;
    runner.modulePath = findStrategyModule(given, here);
    checkStrategyModule(runner.modulePath, here);
    if (runner.name.empty()) runner.name = fs::path(runner.modulePath).stem().string();
    if (!names.insert(runner.name).second)
      throw InputError(
          fmt::format("{}.name: two runners are named \"{}\"; give each a \"name\" of its own",
                      here, runner.name));
  }
  completeTrade(plan, place);
  completeGrids(plan, place);
}

}  // namespace orvane
