#include "host/DataCommand.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/Console.h"
#include "host/DataCsv.h"
#include "host/FileAudit.h"
#include "host/FileRoles.h"
#include "host/InputError.h"
#include "host/OptionChecks.h"
#include "host/OptionHints.h"
#include "host/PeriodText.h"
#include "host/ProgressLine.h"
#include "host/QuoteTrades.h"
#include "host/SessionEnd.h"
#include "host/TimeArgument.h"
#include "host/WholeFile.h"
#include "host/WriteError.h"
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

std::string summaryText(const DataSet& data) {
  std::string text;
  for (const SeriesSummary& series : data.summaries()) {
    text += fmt::format("{}: {} {}, {} .. {}\n", series.code, series.records,
                        series.isTicks ? "ticks" : "bars of " + shownPeriod(series.frequency),
                        isoTime(series.firstTime), isoTime(series.lastTime));
    for (const std::string& note : series.notes)
      text += fmt::format("  note   {}\n", withOptions(note));
  }
  return text;
}

/// Before all files are read for nothing.
void checkOutFile(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (fs::is_directory(path, error))
    throw InputError(fmt::format("--out: \"{}\" is a folder; name a file in it", path));
  if (const std::string why = whyNoFile(path); !why.empty())
    throw InputError(fmt::format("--out: \"{}\" {}; name a file", path, why));
  const std::string folder = fs::path(path).parent_path().string();
  if (folder.empty() || fs::is_directory(folder, error)) return;
  throw InputError(
      fmt::format("--out: \"{}\" cannot be written: there is no folder \"{}\"; make "
                  "it first",
                  path, folder));
}

/// The files' reader takes both letters for minutes; who writes the large one may mean months.
void refuseMonths(const std::string& period) {
  if (!period.ends_with('M') || period.find_first_not_of("0123456789 ") + 1 != period.size())
    return;
  throw InputError(
      fmt::format("--to-period: \"{}\" may mean minutes, which are \"{}m\", or months, of which "
                  "no bars can be made",
                  period, period.substr(0, period.size() - 1)));
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
      ->check(oneOf({"cache", "csv"}))
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
  convert_
      ->add_option("--of", of_,
                   "Make the bars of the bid, the ask or the mean of both (default: last prices)")
      ->check(oneOf({"bid", "ask", "mid"}));
  convert_
      ->add_flag("--keep-last", keepsLast_,
                 "Keep the last longer bar, though the data end before its interval does")
      ->disable_flag_override();
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
      ->check(numberAboveZero())
      ->type_name("NUMBER")
      ->capture_default_str();
  inspect_->add_flag("--json", isJson_, "For programs: one JSON object a file, in an array")
      ->disable_flag_override();
  inspectReading_.addTo(*inspect_);
}

int DataCommand::execute() {
  if (convert_->parsed()) return convert();
  if (inspect_->parsed()) return inspect();
  say(command_->help(command_->get_parent()->get_name()));
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
  checkOutFile(out_);
  for (const auto& [isGiven, option] :
       {std::pair(keepsLast_, "--keep-last"), {!of_.empty(), "--of"}})
    if (isGiven && period_.empty())
      throw InputError(fmt::format("{}: is for bars of a longer period; give --to-period", option));
  refuseMonths(period_);
  DataSet data = load();
  if (!period_.empty()) lengthen(data);
  const std::string summary = summaryText(data);
  write(std::move(data));
  say(summary);
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

template <typename Series>
BarSeries DataCommand::longerBars(const Series& series, std::vector<std::string>& notes) const {
  BarSeries longer;
  try {
    longer = barsOfPeriod(series, period_, OpenBar::Kept);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("--to-period: {}", error.what()));
  }
  const int64 dataEnd = endOf(series);
  if (longer.bars.empty() || endOf(longer) <= dataEnd) return longer;
  const std::string last = fmt::format("the last bar of {}, from {} on,", period_,
                                       isoTime(KLineView(longer.bars.back()).beginTime()));
  if (keepsLast_) {
    notes.push_back(fmt::format("{} is kept, though the data end at {}", last, isoTime(dataEnd)));
  } else if (const std::string end = sessionEndOf(series, longer.periodMs); !end.empty()) {
    notes.push_back(fmt::format("{} counts as whole: {}", last, end));
  } else {
    notes.push_back(fmt::format(
        "{} is left out, since the data end at {}, before it does; --keep-last keeps it", last,
        isoTime(dataEnd)));
    longer.bars.resize(longer.bars.size() - 1);
  }
  return longer;
}

LoadedBars DataCommand::lengthened(const LoadedBars& loaded) const {
  if (!of_.empty())
    throw InputError(fmt::format(
        "--of: \"{}\" is for ticks, and \"{}\" has bars; --side chooses for bars of bid and ask",
        of_, loaded.code));
  LoadedBars longer{loaded.code, {}, loaded.notes};
  longer.series = longerBars(loaded.series, longer.notes);
  if (longer.series.bars.empty())
    throw InputError(fmt::format(
        "--to-period: the data of \"{}\" make no whole bar of {}; --keep-last keeps the "
        "one that they begin",
        loaded.code, period_));
  return longer;
}

LoadedBars DataCommand::lengthened(const LoadedTicks& loaded) const {
  std::optional<TickSeries> quotes;
  if (!of_.empty()) quotes = tradesOfQuotes(loaded.series, of_, "--of");
  const TickSeries& series = quotes ? *quotes : loaded.series;
  LoadedBars longer{loaded.code, {}, loaded.notes};
  longer.series = longerBars(series, longer.notes);
  if (!longer.series.bars.empty()) return longer;
  const bool isCut = longer.notes.size() > loaded.notes.size();
  throw InputError(fmt::format(
      "--to-period: the ticks of \"{}\" make no whole bar of {}: {}", loaded.code, period_,
      isCut ? "they end before it does; --keep-last keeps it" : whyNoTrades(series, of_)));
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
    writeDataCache(behindLinks(out_), cache);
  } catch (const std::system_error& error) {
    failToWrite(error.what(), error.code().value());
  }
}

}  // namespace orvane
