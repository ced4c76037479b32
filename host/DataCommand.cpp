#include "host/DataCommand.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <stdexcept>

#include "host/Console.h"
#include "host/DataCsv.h"
#include "host/FileAudit.h"
#include "host/FileRoles.h"
#include "host/InputError.h"
#include "host/OptionChecks.h"
#include "host/ProgressLine.h"
#include "host/TimeArgument.h"
#include "platform/market/LongerBars.h"
#include "platform/market/files/CacheFile.h"

namespace orvane {
namespace {

constexpr char kExamples[] =
    "A cache holds the rows as they are in memory, so that a run begins at once, with the same\n"
    "results. It is a file for --bars and --ticks like any other. See also --cache of orvane run,\n"
    "which makes and renews caches by itself.\n"
    "\n"
    "Examples:\n"
    "  orvane data convert if_1min.csv --timezone Asia/Shanghai --stamp end -o if.ovb\n"
    "  orvane data convert 2020.csv 2021.csv --code IF.CFFEX --to-period 5m -o if_5m.ovb\n"
    "  orvane data convert if.ovb --to csv -o if_1min.csv";

constexpr char kInspectExamples[] =
    "Reads every row, passing over those with faults, and tells the columns, range, period,\n"
    "trading days and sessions, holes, repeated and suspicious rows, and the state of a cache.\n"
    "Exit code 2 where a file cannot be read at all.\n"
    "\n"
    "Examples:\n"
    "  orvane data inspect if_1min.csv --timezone Asia/Shanghai --stamp end\n"
    "  orvane data inspect ticks.csv.gz --json";

void print(const std::string& code, const std::string& what, std::size_t rows, int64 first,
           int64 last, const std::vector<std::string>& notes) {
  fmt::print("{}: {} {}, {} .. {}\n", code, rows, what, isoTime(first), isoTime(last));
  for (const std::string& note : notes) fmt::print("  note   {}\n", note);
}

}  // namespace

DataCommand::DataCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("data", "Look at and convert market data");
  command_->require_subcommand(0, 1);
  addConvert();
  addInspect();
}

void DataCommand::addConvert() {
  convert_ = command_->add_subcommand("convert", "Write what data files hold as a cache or as CSV");
  convert_->footer(kExamples);
  convert_->add_option("files", files_, "Data files; those of one code make one series")
      ->required()
      ->type_name("FILE");
  convert_->add_option("--to", to_, "What to write")
      ->check(CLI::IsMember({"cache", "csv"}))
      ->capture_default_str();
  convert_->add_option("-o,--out", out_, "File to write; a cache is best named .ovb")
      ->required()
      ->type_name("FILE");
  auto* bars = convert_->add_flag("--bars", onlyBars_, "They are bars")->disable_flag_override();
  convert_->add_flag("--ticks", onlyTicks_, "They are ticks")
      ->disable_flag_override()
      ->excludes(bars);
  convert_->add_option("--code", code_, "Code of the files, such as IF2101.CFFEX")
      ->type_name("CODE");
  convert_
      ->add_option("--to-period", period_,
                   "Put bars together to a longer period, or make them of ticks: 5m, 1h, day, week")
      ->type_name("PERIOD");
  reading_.addTo(*convert_);
}

void DataCommand::addInspect() {
  inspect_ = command_->add_subcommand("inspect", "Look closely at data files");
  inspect_->footer(kInspectExamples);
  inspect_->add_option("files", files_, "Data files")->required()->type_name("FILE");
  auto* bars = inspect_->add_flag("--bars", onlyBars_, "They are bars")->disable_flag_override();
  inspect_->add_flag("--ticks", onlyTicks_, "They are ticks")
      ->disable_flag_override()
      ->excludes(bars);
  inspect_->add_option("--cache", cache_, "Folder of caches, to tell the state of theirs")
      ->type_name("DIR");
  inspect_
      ->add_option("--jump", jump_,
                   "A price that moves more than so many usual ranges is suspicious")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  inspect_->add_flag("--json", isJson_, "For programs: one JSON object a file, in an array")
      ->disable_flag_override();
  inspectReading_.addTo(*inspect_);
}

int DataCommand::execute() {
  if (convert_->parsed()) return convert();
  if (inspect_->parsed()) return inspect();
  say(command_->help());
  return kExitSuccess;
}

int DataCommand::inspect() const {
  refuseEmptyTexts(*inspect_);
  DataFileRequest request;
  request.description = inspectReading_.description();
  request.kind = onlyTicks_ ? DataFileRequest::Kind::Ticks : DataFileRequest::Kind::Bars;
  request.cacheFolder = cache_;
  request.checksCaches = true;
  QJsonArray all;
  bool isRead = true;
  for (const std::string& file : files_) {
    request.paths = {file};
    FileAudit audit;
    withPlaces(inspectReading_.places(),
               [&] { audit = auditFile(request, onlyBars_ || onlyTicks_, jump_); });
    isRead = isRead && audit.unread.empty();
    if (isJson_)
      all.append(auditJson(audit));
    else
      say(auditText(audit, localeHasUtf8()));
  }
  if (isJson_) say(QJsonDocument(all).toJson(QJsonDocument::Indented).toStdString());
  return isRead ? kExitSuccess : kExitBadInput;
}

int DataCommand::convert() {
  refuseEmptyTexts(*convert_);
  std::vector<FileRole> read{{"--format", reading_.format()}};
  for (const std::string& file : files_) read.push_back({"the market data", file});
  checkFileRoles({{"--out", out_}}, read);
  DataSet data = load();
  if (!period_.empty()) lengthen(data);
  for (const LoadedBars& loaded : data.bars)
    print(loaded.code, "bars of " + frequencyText(loaded.series.periodMs),
          loaded.series.bars.size(), KLineView(loaded.series.bars.front()).beginTime(),
          KLineView(loaded.series.bars.back()).endTime(), loaded.notes);
  for (const LoadedTicks& loaded : data.ticks)
    print(loaded.code, "ticks", loaded.series.rows(), loaded.series.times.front(),
          loaded.series.times.back(), loaded.notes);
  write(std::move(data));
  return kExitSuccess;
}

DataSet DataCommand::loadKind(DataFileRequest::Kind kind) const {
  RunPlan plan;
  DataInput input;
  input.kind = kind;
  input.code = code_;
  input.paths = files_;
  input.description = reading_.description();
  input.places = reading_.places();
  plan.data.push_back(std::move(input));
  ProgressLine progress;
  DataSet data = loadDataSet(
      plan, [&](const std::string& path, double share) { progress.showReading(path, share); });
  progress.clear();
  return data;
}

/// As bars, or as ticks if that is what the files look like, if nobody said which.
DataSet DataCommand::load() const {
  if (onlyTicks_) return loadKind(DataFileRequest::Kind::Ticks);
  if (onlyBars_) return loadKind(DataFileRequest::Kind::Bars);
  try {
    return loadKind(DataFileRequest::Kind::Bars);
  } catch (const OtherKindError& error) {
    refuseBarsBeside(error.what());
    return loadKind(DataFileRequest::Kind::Ticks);
  }
}

/// Bars could be read as ticks, but hardly anybody means that.
void DataCommand::refuseBarsBeside(const std::string& ticks) const {
  DataFileRequest request;
  request.description = reading_.description();
  for (const std::string& file : files_) {
    if (files_.size() == 1 || isDataCache(file)) continue;
    request.paths = {file};
    try {
      columnsOfFile(request);
    } catch (const OtherKindError&) {
      continue;
    }
    throw InputError(fmt::format("{} is a file of bars, but {}; convert them one by one", file,
                                 ticks.substr(0, ticks.find(';'))));
  }
}

namespace {

int64 endOf(const BarSeries& series) { return KLineView(series.bars.back()).endTime(); }
int64 endOf(const TickSeries& series) { return series.times.back(); }

}  // namespace

template <typename Loaded>
LoadedBars DataCommand::lengthened(const Loaded& loaded) const {
  LoadedBars longer;
  longer.code = loaded.code;
  longer.notes = loaded.notes;
  try {
    longer.series = barsOfPeriod(loaded.series, period_);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("--to-period: {}", error.what()));
  }
  if (longer.series.bars.empty())
    throw InputError(fmt::format("--to-period: the data of \"{}\" make no whole bar of {}{}",
                                 loaded.code, period_,
                                 std::is_same_v<Loaded, LoadedTicks>
                                     ? "; bars are made of ticks with a last price and a volume"
                                     : ""));
  if (const int64 end = endOf(longer.series); end < endOf(loaded.series))
    longer.notes.push_back(
        fmt::format("what comes after {} is left out: the data end before its bar of {} does",
                    isoTime(end), period_));
  return longer;
}

void DataCommand::lengthen(DataSet& data) const {
  for (LoadedBars& loaded : data.bars) loaded = lengthened(loaded);
  for (const LoadedTicks& loaded : data.ticks) data.bars.push_back(lengthened(loaded));
  data.ticks.clear();
}

void DataCommand::write(DataSet data) const {
  if (to_ == "csv") {
    writeCsv(out_, data);
    return;
  }
  DataCache cache;
  for (const std::string& file : files_) cache.sources.push_back(dataSourceOf(file));
  cache.reading =
      QJsonDocument(reading_.description()).toJson(QJsonDocument::Compact).toStdString();
  cache.bars = std::move(data.bars);
  cache.ticks = std::move(data.ticks);
  try {
    writeDataCache(out_, cache);
  } catch (const DataFileError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw InputError(error.what());
  }
}

}  // namespace orvane
