// What an audit of a file looks like.

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/DataSet.h"
#include "host/FileAudit.h"
#include "host/OptionHints.h"
#include "host/PeriodText.h"
#include "host/TimeArgument.h"
#include "platform/market/PeriodText.h"

namespace orvane {
namespace {

constexpr int kPictureRows = 6;

/// Columns of the height of the prices.
std::string pictureOf(const std::vector<double>& prices, bool isUtf8) {
  if (prices.size() < 2) return {};
  const auto [low, high] = std::minmax_element(prices.begin(), prices.end());
  if (!(*high > *low)) return {};
  static constexpr const char* kBlocks[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  static constexpr const char* kPlain[] = {" ", ".", ".", ".", ":", ":", ":", "|", "|"};
  const double unit = (*high - *low) / (kPictureRows * 8 - 1);
  std::string text;
  for (int row = kPictureRows - 1; row >= 0; --row) {
    std::string line = row == kPictureRows - 1 ? fmt::format("{:>12} ", *high)
                       : row == 0              ? fmt::format("{:>12} ", *low)
                                               : std::string(13, ' ');
    for (const double price : prices) {
      const int height = static_cast<int>(std::lround((price - *low) / unit)) + 1;
      const int filled = std::clamp(height - row * 8, 0, 8);
      line += (isUtf8 ? kBlocks : kPlain)[filled];
    }
    text += "  " + line + "\n";
  }
  return text;
}

void addFindings(std::string& text, const std::string& what, const Findings& findings) {
  text += fmt::format("  {}: {}\n", what, findings.count);
  for (const std::string& one : findings.first) text += "    " + withOptions(one) + "\n";
  if (findings.count > findings.first.size()) text += "    ...\n";
}

std::string seriesText(const SeriesAudit& its, bool isUtf8) {
  std::string text = fmt::format(
      "{}: {} rows of {}, zone {}\n", its.code, its.rows,
      its.isTicks ? "ticks" : "bars of " + shownPeriod(frequencyText(its.periodMs)), its.timeZone);
  if (its.rows == 0) return text;
  text += fmt::format("  range: {} .. {}, {} trading day{}\n", isoTime(its.first),
                      isoTime(its.last), its.tradingDays, its.tradingDays == 1 ? "" : "s");
  if (!its.sessions.empty()) text += fmt::format("  usual sessions: {}\n", its.sessions);
  if (its.isTicks || its.periodMs < 86'400'000)
    text += its.nightDays > 0
                ? fmt::format("  night sessions: {} trading days begin on the date before\n",
                              its.nightDays)
            : its.hasLateRows
                ? "  night sessions: not recognised; rows of the evening are of the trading day of "
                  "their date,\n    since no column tells another (\"tradingDay\")\n"
                : "  night sessions: none; each row is of the trading day of its date\n";
  text += fmt::format(
      "  holes: {}{}\n", its.holeCount,
      its.missingBars > 0 ? fmt::format(", {} bars are missing", its.missingBars) : std::string());
  for (const Hole& hole : its.holes)
    text += fmt::format("    {} .. {}{}\n", isoTime(hole.from), isoTime(hole.to),
                        hole.missing > 0 ? fmt::format(", {} bars", hole.missing) : std::string());
  if (its.holeCount > its.holes.size()) text += "    ... (these are the longest)\n";
  if (its.suspicious.empty()) text += "  suspicious rows: none\n";
  for (const auto& [what, findings] : its.suspicious)
    addFindings(text, "suspicious, " + what, findings);
  for (const std::string& note : its.notes) text += "  note: " + withOptions(note) + "\n";
  return text + pictureOf(its.prices, isUtf8);
}

QJsonArray arrayOf(const std::vector<std::string>& texts) {
  QJsonArray array;
  for (const std::string& text : texts) array.append(QString::fromStdString(text));
  return array;
}

QJsonObject jsonOf(const Findings& findings) {
  return {{"count", static_cast<qint64>(findings.count)}, {"first", arrayOf(findings.first)}};
}

QJsonObject jsonOf(const SeriesAudit& its) {
  QJsonObject json{{"code", QString::fromStdString(its.code)},
                   {"kind", its.isTicks ? "ticks" : "bars"},
                   {"timeZone", QString::fromStdString(its.timeZone)},
                   {"rows", static_cast<qint64>(its.rows)},
                   {"first", QString::fromStdString(isoTime(its.first))},
                   {"last", QString::fromStdString(isoTime(its.last))},
                   {"tradingDays", static_cast<qint64>(its.tradingDays)},
                   {"nightDays", static_cast<qint64>(its.nightDays)},
                   {"hasLateRows", its.hasLateRows},
                   {"missingBars", static_cast<qint64>(its.missingBars)},
                   {"holeCount", static_cast<qint64>(its.holeCount)},
                   {"notes", arrayOf(its.notes)}};
  if (!its.isTicks) json["period"] = QString::fromStdString(frequencyText(its.periodMs));
  if (!its.sessions.empty()) json["sessions"] = QString::fromStdString(its.sessions);
  QJsonArray holes;
  for (const Hole& hole : its.holes)
    holes.append(QJsonObject{{"from", QString::fromStdString(isoTime(hole.from))},
                             {"to", QString::fromStdString(isoTime(hole.to))},
                             {"missing", static_cast<qint64>(hole.missing)}});
  json["holes"] = holes;
  QJsonObject suspicious;
  for (const auto& [what, findings] : its.suspicious)
    suspicious[QString::fromStdString(what)] = jsonOf(findings);
  json["suspicious"] = suspicious;
  return json;
}

}  // namespace

std::string auditText(const FileAudit& audit, bool isUtf8) {
  std::string text =
      fmt::format("{}: {} bytes{}\n", audit.path, audit.bytes, audit.isCache ? ", a cache" : "");
  std::string known, passed;
  for (const FileColumn& column : audit.columns) {
    std::string& list = column.meaning.empty() ? passed : known;
    list += list.empty() ? "" : ", ";
    list += column.name;
    if (!column.meaning.empty() && column.name.find(column.meaning) == std::string::npos)
      list += " (" + column.meaning + ")";
  }
  if (!known.empty()) text += "  columns: " + known + "\n";
  if (!passed.empty()) text += "  passed over: " + passed + "\n";
  if (!audit.cache.empty()) text += "  cache: " + audit.cache + "\n";
  if (!audit.unread.empty()) text += "  cannot be read: " + withOptions(audit.unread) + "\n";
  if (audit.faults.count > 0) addFindings(text, "rows with faults", audit.faults);
  if (audit.duplicates > 0) text += fmt::format("  repeated rows: {}\n", audit.duplicates);
  for (const SeriesAudit& series : audit.series) text += seriesText(series, isUtf8);
  return text;
}

QJsonObject auditJson(const FileAudit& audit) {
  QJsonArray columns, series;
  for (const FileColumn& column : audit.columns)
    columns.append(QJsonObject{{"name", QString::fromStdString(column.name)},
                               {"meaning", QString::fromStdString(column.meaning)}});
  for (const SeriesAudit& its : audit.series) series.append(jsonOf(its));
  QJsonObject json{{"file", QString::fromStdString(audit.path)},
                   {"bytes", static_cast<qint64>(audit.bytes)},
                   {"isCache", audit.isCache},
                   {"cache", QString::fromStdString(audit.cache)},
                   {"columns", columns},
                   {"faults", jsonOf(audit.faults)},
                   {"repeatedRows", static_cast<qint64>(audit.duplicates)},
                   {"series", series}};
  if (!audit.unread.empty()) json["unread"] = QString::fromStdString(audit.unread);
  return json;
}

bool localeHasUtf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == 0) continue;
    std::string text = value;
    std::erase(text, '-');
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text.find("utf8") != std::string::npos;
  }
  return false;
}

}  // namespace orvane
