#include "host/DataCommand.h"

#include <fmt/core.h>

#include <QJsonDocument>
#include <stdexcept>

#include "host/DataCsv.h"
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

void print(const std::string& code, const std::string& what, std::size_t rows, int64 first,
           int64 last, const std::vector<std::string>& notes) {
  fmt::print("{}: {} {}, {} .. {}\n", code, rows, what, isoTime(first), isoTime(last));
  for (const std::string& note : notes) fmt::print("  note   {}\n", note);
}

}  // namespace

DataCommand::DataCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("data", "Convert market data");
  command_->require_subcommand(1);
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
                   "Put the bars together to a longer period, such as 5m, 1h, day or week")
      ->type_name("PERIOD");
  reading_.addTo(*convert_);
}

int DataCommand::execute() {
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

/// As bars or else as ticks, if nobody said which.
DataSet DataCommand::load() const {
  if (onlyTicks_) return loadKind(DataFileRequest::Kind::Ticks);
  if (onlyBars_) return loadKind(DataFileRequest::Kind::Bars);
  std::string barError;
  try {
    return loadKind(DataFileRequest::Kind::Bars);
  } catch (const std::runtime_error& error) {
    barError = error.what();
  }
  try {
    return loadKind(DataFileRequest::Kind::Ticks);
  } catch (const std::runtime_error&) {
    throw InputError(barError);
  }
}

void DataCommand::lengthen(DataSet& data) const {
  if (data.bars.empty()) throw InputError("--to-period: ticks have no period; it is for bars");
  for (LoadedBars& loaded : data.bars) {
    try {
      loaded.series = barsOfPeriod(loaded.series, period_);
    } catch (const std::invalid_argument& error) {
      throw InputError(fmt::format("--to-period: {}", error.what()));
    }
    if (loaded.series.bars.empty())
      throw InputError(fmt::format("--to-period: the bars of \"{}\" make no whole bar of {}",
                                   loaded.code, period_));
  }
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
