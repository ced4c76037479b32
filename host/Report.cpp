#include "host/Report.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

#include "host/FileHash.h"
#include "host/OptionHints.h"
#include "host/OutputFile.h"
#include "host/PeriodText.h"
#include "host/PublicationReport.h"
#include "host/ReportJson.h"
#include "host/ReportPage.h"
#include "host/TimeArgument.h"
#include "host/TradeCsv.h"
#include "host/TradeReport.h"
#include "host/Version.h"
#include "host/WholeFile.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane {
namespace {

constexpr int kReportFormat = 2;

QJsonArray texts(const std::vector<std::string>& list) {
  QJsonArray result;
  for (const std::string& text : list) result.append(qt(text));
  return result;
}

QJsonObject barObject(const IKLine& bar) {
  const KLineView view(bar);
  QJsonObject result{{"begin", timeOrNull(view.beginTime())},
                     {"end", timeOrNull(view.endTime())},
                     {"open", view.open()},
                     {"high", view.high()},
                     {"low", view.low()},
                     {"close", view.close()}};
  if (view.isQuoteBar()) {
    result["bidSize"] = view.bidSize();
    result["askClose"] = view.askClose();
    result["askSize"] = view.askSize();
  } else {
    result["volume"] = view.volume();
    result["turnover"] = view.turnover();
    result["openInterest"] = view.openInterest();
  }
  return result;
}

QJsonObject tickObject(const TickGlance& tick) {
  QJsonObject result{{"time", timeOrNull(tick.time)}};
  if ((tick.flags & quote::kHasTrade) != 0) {
    result["last"] = tick.last;
    result["volume"] = tick.volume;
  }
  if ((tick.flags & quote::kHasBid) != 0) {
    result["bid"] = tick.bid;
    result["bidSize"] = tick.bidSize;
  }
  if ((tick.flags & quote::kHasAsk) != 0) {
    result["ask"] = tick.ask;
    result["askSize"] = tick.askSize;
  }
  return result;
}

QJsonObject seriesObject(const SeriesRecord& series) {
  QJsonObject result{{"code", qt(reportedCode(series.code))},
                     {"kind", series.isTicks ? "ticks" : "bars"},
                     {"records", count(series.records)}};
  if (!series.frequency.empty()) result["frequency"] = qt(gbkToUtf8(series.frequency));
  result["first"] = series.isTicks ? tickObject(series.firstTick) : barObject(series.firstBar);
  result["last"] = series.isTicks ? tickObject(series.lastTick) : barObject(series.lastBar);
  return result;
}

QJsonObject runnerObject(const RunnerOutcome& runner) {
  QJsonObject envs;
  for (const auto& [key, value] : runner.state.envs) envs[qt(key)] = qt(value);
  QJsonObject result{{"name", qt(runner.plan.name)},
                     {"strategy", qt(runner.plan.strategy)},
                     {"params", runner.plan.params},
                     {"status", runnerStatusName(runner.state.status)},
                     {"message", qt(runner.state.message)},
                     {"digest", runner.digest.empty() ? QJsonValue() : qt(runner.digest)},
                     {"env", envs},
                     {"notifications", count(runner.state.notifications)}};
  const RunRecord empty;
  const RunRecord& record = runner.record ? *runner.record : empty;
  QJsonObject events;
  for (std::size_t i = 0; i < kCallKinds; ++i)
    if (record.calls[i] != 0) events[kCallNames[i]] = count(record.calls[i]);
  QJsonArray series;
  for (const auto& [key, one] : record.series) series.append(seriesObject(one));
  result["events"] = events;
  result["eventCount"] = count(record.events());
  result["bars"] = count(record.bars);
  result["ticks"] = count(record.ticks);
  result["series"] = series;
  result["span"] =
      QJsonObject{{"begin", timeOrNull(record.firstTime)}, {"end", timeOrNull(record.lastTime)}};
  result["trading"] = tradingReport(runner);
  result["server"] = runner.plan.isServer;
  result["records"] = recordsReport(record);
  result["published"] = publishedReport(record);
  result["exceptions"] =
      QJsonObject{{"count", count(record.exceptions)}, {"first", qt(record.firstException)}};
  return result;
}

QJsonArray hashesArray(const std::vector<FileHash>& hashes) {
  QJsonArray result;
  for (const FileHash& hash : hashes)
    result.append(QJsonObject{
        {"file", qt(hash.file)}, {"bytes", count(hash.bytes)}, {"xxh3", qt(hash.xxh3)}});
  return result;
}

QJsonObject dataObject(const SeriesSummary& series, const std::vector<FileHash>& files) {
  QJsonObject result{{"code", qt(series.code)},
                     {"kind", series.isTicks ? "ticks" : "bars"},
                     {"records", count(series.records)},
                     {"begin", timeOrNull(series.firstTime)},
                     {"end", timeOrNull(series.lastTime)},
                     {"timeZone", qt(series.timeZone)},
                     {"files", qt(series.origin)},
                     {"hashes", hashesArray(hashesIn(files, series.origin))},
                     {"notes", texts(series.notes)}};
  if (!series.isTicks) {
    result["frequency"] = qt(series.frequency);
    result["periodMs"] = static_cast<qint64>(series.periodMs);
  }
  return result;
}

double perSecond(std::uint64_t number, double seconds) {
  return seconds > 0 ? static_cast<double>(number) / seconds : 0;
}

std::string notesText(const std::vector<std::string>& notes) {
  std::string text;
  for (const std::string& note : notes) text += fmt::format("  note: {}\n", withOptions(note));
  return text;
}

/// `from` is where the playback began; what was received from before it is history.
std::string runnerText(const RunnerOutcome& runner, int64 from) {
  std::string text = fmt::format("\nrunner {} ({}): {}\n", runner.plan.name, runner.plan.strategy,
                                 runnerStatusName(runner.state.status));
  if (!runner.state.message.empty()) text += fmt::format("  message    {}\n", runner.state.message);
  if (!runner.record) return text;
  const RunRecord& record = *runner.record;
  for (std::size_t i = 0; i < kCallKinds; ++i)
    if (record.calls[i] != 0)
      text += fmt::format("  {:<18} {:>12}\n", kCallNames[i], record.calls[i]);
  for (const auto& [key, series] : record.series)
    text +=
        fmt::format("  received           {:>12} {} of {}\n", series.records,
                    series.isTicks ? "ticks" : "bars " + shownPeriod(gbkToUtf8(series.frequency)),
                    reportedCode(series.code));
  if (record.firstTime != kUnsetTime)
    text += fmt::format(
        "  simulated span     {} .. {}\n",
        isoTime(from == kUnsetTime || from >= record.lastTime ? record.firstTime
                                                              : std::max(from, record.firstTime)),
        isoTime(record.lastTime));
  if (record.exceptions != 0)
    text += fmt::format("  exceptions         {:>12}, the first in {}\n", record.exceptions,
                        record.firstException);
  text += publicationText(record);
  if (runner.plan.isServer)
    text += fmt::format("  statistics         {}\n", gbkToUtf8(record.statisticsLine));
  for (const auto& [key, value] : runner.state.envs)
    text += fmt::format("  {:<18} {:>12}\n", key, value);
  if (!runner.digest.empty()) text += fmt::format("  digest             {}\n", runner.digest);
  return text;
}

}  // namespace

std::string reportedCode(const ICodeID& code) {
  std::string text = gbkToUtf8(codeText(code));
  if (text.ends_with('.')) text.pop_back();
  return text;
}

QJsonObject makeReport(const RunOutcome& outcome) {
  QJsonArray data, runners;
  for (const SeriesSummary& series : outcome.data) data.append(dataObject(series, outcome.files));
  for (const RunnerOutcome& runner : outcome.runners) runners.append(runnerObject(runner));
  const double elapsed = outcome.elapsedSeconds;
  return {{"format", kReportFormat},
          {"version", kVersion},
          {"mode", outcome.isLive ? "live" : "playback"},
          {"outcome", outcome.isInterrupted     ? "interrupted"
                      : outcome.exitCode() == 0 ? "completed"
                                                : "failed"},
          {"from", timeOrNull(outcome.from)},
          {"to", timeOrNull(outcome.to)},
          {"timeZone", qt(outcome.timeZone)},
          {"data", data},
          {"runners", runners},
          {"accounts", accountsReport(outcome)},
          {"total", totalReport(outcome)},
          {"failures", texts(outcome.failures)},
          {"timing", QJsonObject{{"loadSeconds", outcome.loadSeconds},
                                 {"elapsedSeconds", elapsed},
                                 {"eventsPerSecond", perSecond(outcome.events(), elapsed)},
                                 {"recordsPerSecond", perSecond(outcome.records(), elapsed)},
                                 {"threads", outcome.threads},
                                 {"speed", outcome.speed}}}};
}

void checkReportFolder(const std::string& folder) { checkFolder(folder, "--report"); }

namespace {

/// Carries out a step; what goes wrong becomes a failure of the run.
void attempt(RunOutcome& outcome, const std::function<void()>& step) {
  try {
    step();
  } catch (const std::runtime_error& error) {
    outcome.failures.emplace_back(error.what());
  }
}

/// The files of a report while they stand beside their places.
class NewReport {
 public:
  NewReport(std::string folder, RunOutcome& outcome)
      : folder_(std::move(folder)), outcome_(outcome) {}

  void add(const char* name, const QByteArray& text) {
    attempt(outcome_, [&] {
      auto file = std::make_unique<OutputFile>(folder_ + "/" + name);
      file->write({text.data(), static_cast<std::size_t>(text.size())});
      file->finish();
      files_.push_back(std::move(file));
    });
  }

  /// Half a report over an older one would be of neither run.
  void keep() {
    if (files_.size() < kReportFiles.size() && isOverAnother()) {
      outcome_.failures.push_back(folder_ + ": the report that was there stays as it was");
      return;
    }
    for (const auto& file : files_) attempt(outcome_, [&] { file->keep(); });
  }

 private:
  bool isOverAnother() const {
    return std::ranges::any_of(kReportFiles, [this](const char* name) {
      std::error_code error;
      return std::filesystem::is_regular_file(folder_ + "/" + name, error);
    });
  }

  const std::string folder_;
  RunOutcome& outcome_;
  std::vector<std::unique_ptr<OutputFile>> files_;
};

}  // namespace

void writeReport(const std::string& folder, RunOutcome& outcome) {
  NewReport files(folder, outcome);
  files.add("trades.csv", QByteArray::fromStdString(tradesCsv(outcome)));
  files.add("equity.csv", QByteArray::fromStdString(equityCsv(outcome)));
  QJsonObject report = makeReport(outcome);
  const std::size_t failures = outcome.failures.size();
  files.add("report.html", reportPage(outcome, report));
  // The report comes last, since it tells what went wrong before it.
  if (outcome.failures.size() != failures) report = makeReport(outcome);
  files.add("report.json", QJsonDocument(report).toJson(QJsonDocument::Indented));
  files.keep();
}

std::string summaryText(const RunOutcome& outcome) {
  std::string text;
  for (const SeriesSummary& series : outcome.data)
    text += fmt::format("data {} {}: {} records, {} .. {}, {}\n", series.code,
                        series.isTicks ? "ticks" : "bars " + shownPeriod(series.frequency),
                        series.records, isoTime(series.firstTime), isoTime(series.lastTime),
                        series.timeZone) +
            notesText(series.notes);
  for (const RunnerOutcome& runner : outcome.runners) text += runnerText(runner, outcome.from);
  text += figuresTable(outcome);
  text += fmt::format("\n{}: {} events in {:.3f} s, {:.0f} events/s, {:.0f} records/s\n",
                      outcome.isInterrupted ? "interrupted"
                      : outcome.isLive      ? "live run"
                                            : "playback",
                      outcome.events(), outcome.elapsedSeconds,
                      perSecond(outcome.events(), outcome.elapsedSeconds),
                      perSecond(outcome.records(), outcome.elapsedSeconds));
  return text;
}

}  // namespace orvane
