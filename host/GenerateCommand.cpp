#include "host/GenerateCommand.h"

#include <fmt/core.h>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "host/Console.h"
#include "host/FreshFiles.h"
#include "host/InputError.h"
#include "host/OptionChecks.h"
#include "host/OutputFile.h"
#include "host/SessionJson.h"
#include "host/TimeArgument.h"
#include "host/WholeFile.h"

namespace orvane {
namespace {

QString fromUtf8(const std::string& text) { return QString::fromStdString(text); }

std::string tickFile(const SyntheticInstrument& its) { return its.codeText() + "_ticks.csv"; }

std::string dateText(const std::chrono::year_month_day& date) {
  return fmt::format("{}-{:02}-{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

/// The files of a session, which appear together at the end.
class SessionFiles {
 public:
  explicit SessionFiles(std::string folder) : folder_(std::move(folder)) {}

  OutputFile& add(const std::string& name) {
    return *files_.emplace_back(std::make_unique<OutputFile>(folder_ + "/" + name));
  }
  void addJson(const std::string& name, const QJsonDocument& json) {
    OutputFile& file = add(name);
    file.write(json.toJson(QJsonDocument::Indented).toStdString());
    file.finish();
  }
  void keep() {
    for (const auto& file : files_) file->keep();
  }

 private:
  const std::string folder_;
  std::vector<std::unique_ptr<OutputFile>> files_;
};

void writeInstrument(SessionFiles& files, SessionGenerator& generator) {
  OutputFile& ticks = files.add(tickFile(generator.instrument()));
  OutputFile& bars = files.add(barFileName(generator.instrument()));
  ticks.write(SessionGenerator::tickHeader());
  bars.write(SessionGenerator::barHeader());
  generator.generate([&](std::string_view row) { ticks.write(row); },
                     [&](std::string_view row) { bars.write(row); });
  ticks.finish();
  bars.finish();
}

/// Answers what it wrote.
std::string writeSession(SessionFiles& files, const GeneratorOptions& options) {
  std::string summary;
  QJsonArray instruments, bars, ticks;
  for (int index = 0; index < options.instruments; ++index) {
    SessionGenerator generator(options, index);
    const SyntheticInstrument& its = generator.instrument();
    instruments.append(instrumentJson(its));
    for (const auto& [list, file] : {std::pair{&bars, barFileName(its)}, {&ticks, tickFile(its)}})
      list->append(QJsonObject{
          {"code", fromUtf8(its.codeText())}, {"file", fromUtf8(file)}, {"format", "format.json"}});
    writeInstrument(files, generator);
    summary += fmt::format("{}: {} and {}\n", its.codeText(), barFileName(its), tickFile(its));
  }
  files.addJson("instruments.json", instrumentsJson(instruments));
  files.addJson("format.json", sessionFormatJson());
  const QJsonObject runner{{"strategy", "sma_cross"},
                           {"params", QJsonObject{{"fast", 5}, {"slow", 20}}}};
  files.addJson("run.json", QJsonDocument(QJsonObject{{"runners", QJsonArray{runner}},
                                                      {"instruments", "instruments.json"},
                                                      {"bars", bars},
                                                      {"ticks", ticks}}));
  return summary;
}

}  // namespace

GenerateCommand::GenerateCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("generate", "Make a synthetic session of market data");
  command_->footer(
      "Writes, for each instrument, ten-level ticks and 1-minute bars as CSV, and "
      "instruments.json,\n"
      "format.json (how the files are to be read) and run.json (a run of sma_cross over it all).\n"
      "The same seed gives the same bytes.\n"
      "\n"
      "Example: orvane generate --out session && orvane run session/run.json");
  command_->add_option("-o,--out", folder_, "Folder to write into; made if need be")
      ->required()
      ->type_name("DIR");
  command_->add_option("--seed", options_.seed, "Seed of the random numbers")
      ->check(wholeNumber(0, std::numeric_limits<std::uint64_t>::max()))
      ->capture_default_str();
  command_->add_option("--instruments", options_.instruments, "How many instruments")
      ->check(wholeNumber(1, 99))
      ->capture_default_str();
  command_->add_option("--days", options_.days, "How many trading days")
      ->check(wholeNumber(1, 1000))
      ->capture_default_str();
  command_->add_option("--minutes", options_.minutes, "Minutes of each day's session")
      ->check(wholeNumber(1, 240))
      ->capture_default_str();
  command_->add_option("--date", date_, "First day")
      ->type_name("DATE")
      ->default_str(dateText(options_.firstDay));
  command_->add_flag("--force", isForced_, "Write over files that are there")
      ->disable_flag_override();
}

/// Nobody's file goes unasked: all names are looked at before the first is written.
void GenerateCommand::checkNothingIsThere() const {
  std::vector<std::string> names = {"run.json", "instruments.json", "format.json"};
  for (int index = 0; index < options_.instruments; ++index) {
    const SessionGenerator generator(options_, index);
    names.push_back(barFileName(generator.instrument()));
    names.push_back(tickFile(generator.instrument()));
  }
  for (const std::string& name : names)
    if (const std::string path = folder_ + "/" + name; QFileInfo::exists(fromUtf8(path)))
      throw InputError(fmt::format(
          "--out: {} is there already; choose another folder, or write over it with --force",
          path));
}

int GenerateCommand::execute() {
  refuseEmptyTexts(*command_);
  if (!date_.empty()) options_.firstDay = parseDateArgument(date_, "--date");
  if (!isForced_) checkNothingIsThere();
  FreshFiles fresh({}, folder_);
  makeFolder(folder_, "--out");
  SessionFiles files(folder_);
  const std::string summary = writeSession(files, options_);
  files.keep();
  fresh.keep();
  say(summary + fmt::format("run it: orvane run {}/run.json\n", folder_));
  return kExitSuccess;
}

}  // namespace orvane
