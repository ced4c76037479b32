#include "host/PublicationReport.h"

#include <fmt/core.h>

#include <QJsonObject>

#include "host/ReportJson.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

QString qtOfGbk(const std::string& gbkText) { return QString::fromStdString(gbkToUtf8(gbkText)); }

QJsonObject countObject(const PublishedCount& published) {
  return {{"live", count(published.live)},
          {"history", count(published.history)},
          {"refused", count(published.refused)}};
}

std::string countText(const char* what, const PublishedCount& published) {
  if (published.sum() == 0) return {};
  std::string text =
      fmt::format("  published          {:>12} {}", published.live + published.history, what);
  if (published.refused != 0) text += fmt::format(", {} refused", published.refused);
  return text + "\n";
}

}  // namespace

QJsonValue publishedReport(const RunRecord& record) {
  if (record.publishedQuotes.sum() + record.publishedBars.sum() + record.publishedRecords.sum() ==
      0)
    return {};
  return QJsonObject{{"quotes", countObject(record.publishedQuotes)},
                     {"bars", countObject(record.publishedBars)},
                     {"records", countObject(record.publishedRecords)}};
}

QJsonArray recordsReport(const RunRecord& record) {
  QJsonArray result;
  for (const auto& [key, one] : record.dictionaries) {
    QJsonObject entry{{"dictionary", qtOfGbk(key.first)},
                      {"target", qtOfGbk(key.second)},
                      {"records", count(one.records)},
                      {"snapshots", count(one.snapshots)},
                      {"deletions", count(one.deletions)}};
    const bool hasAny = one.records + one.snapshots != 0;
    entry["firstKey"] = hasAny ? QJsonValue(static_cast<qint64>(one.firstKey)) : QJsonValue();
    entry["lastKey"] = hasAny ? QJsonValue(static_cast<qint64>(one.lastKey)) : QJsonValue();
    result.append(entry);
  }
  return result;
}

std::string publicationText(const RunRecord& record) {
  std::string text;
  for (const auto& [key, one] : record.dictionaries) {
    text += fmt::format("  received           {:>12} records", one.records);
    if (one.snapshots != 0) text += fmt::format(", {} snapshots", one.snapshots);
    if (one.deletions != 0) text += fmt::format(", {} deletions", one.deletions);
    text += fmt::format(" of {} {}\n", gbkToUtf8(key.first), gbkToUtf8(key.second));
  }
  return text + countText("quotes", record.publishedQuotes) +
         countText("bars", record.publishedBars) + countText("records", record.publishedRecords);
}

}  // namespace orvane
