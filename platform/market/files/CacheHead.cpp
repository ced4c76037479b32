#include "platform/market/files/CacheHead.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "platform/market/files/ColumnNames.h"

namespace orvane {
namespace detail {
namespace {

QString fromUtf8(const std::string& text) { return QString::fromStdString(text); }

/// Whole numbers stand as texts: a number of JSON keeps 53 bits.
template <typename Number>
QString digits(Number number) {
  return QString::fromStdString(std::to_string(number));
}

QJsonArray listOf(const std::vector<std::string>& texts) {
  QJsonArray list;
  for (const std::string& text : texts) list.append(fromUtf8(text));
  return list;
}

/// The names of the words of a bar, in turn.
QJsonArray barColumns() {
  return {"beginTime", "endTime",  "open",         "high",        "low",     "close",
          "volume",    "turnover", "openInterest", "dayAndFlags", "askClose"};
}

constexpr std::pair<TickColumn, Role> kRoles[] = {
    {TickColumn::LastPrice, Role::LastPrice},
    {TickColumn::Open, Role::Open},
    {TickColumn::High, Role::High},
    {TickColumn::Low, Role::Low},
    {TickColumn::PreClose, Role::PreClose},
    {TickColumn::PreSettle, Role::PreSettle},
    {TickColumn::Settle, Role::Settle},
    {TickColumn::UpperLimit, Role::UpperLimit},
    {TickColumn::LowerLimit, Role::LowerLimit},
    {TickColumn::TotalVolume, Role::TotalVolume},
    {TickColumn::Volume, Role::Volume},
    {TickColumn::TotalTurnover, Role::TotalTurnover},
    {TickColumn::Turnover, Role::Turnover},
    {TickColumn::OpenInterest, Role::OpenInterest},
    {TickColumn::BidPrice, Role::BidPrice},
    {TickColumn::BidSize, Role::BidSize},
    {TickColumn::AskPrice, Role::AskPrice},
    {TickColumn::AskSize, Role::AskSize},
};

/// Places the sections one behind the other.
class Layout {
 public:
  explicit Layout(std::vector<CacheSection>& sections) : sections_(sections) {}

  template <typename T>
  QString place(const Rows<T>& rows) {
    const std::uint64_t bytes = rows.size() * sizeof(T);
    sections_.push_back({end_, bytes, rows.data()});
    QString offset = digits(end_);
    end_ = alignedForCache(end_ + bytes);
    return offset;
  }

 private:
  std::vector<CacheSection>& sections_;
  std::uint64_t end_ = 0;
};

template <typename Loaded>
QJsonObject commonMeta(const Loaded& loaded, std::size_t rows) {
  return {{"code", fromUtf8(loaded.code)},
          {"timeZone", fromUtf8(loaded.series.timeZone)},
          {"origin", fromUtf8(loaded.series.origin)},
          {"notes", listOf(loaded.notes)},
          {"rows", digits(rows)}};
}

/// Reads the values of the description.
class MetaReader {
 public:
  MetaReader(const std::string& path, const FindRows& find, std::shared_ptr<void> keeper)
      : path_(path), find_(find), keeper_(std::move(keeper)) {}

  [[noreturn]] void fail(const char* key) const {
    throw DataFileError(path_ + ": damaged: its description has no good \"" + key + "\"");
  }

  std::string text(const QJsonObject& object, const char* key) const {
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isString()) fail(key);
    return value.toString().toStdString();
  }

  std::uint64_t number(const QJsonObject& object, const char* key) const {
    bool isGood = false;
    const qlonglong value = fromUtf8(text(object, key)).toLongLong(&isGood);
    if (!isGood || value < 0) fail(key);
    return static_cast<std::uint64_t>(value);
  }

  QJsonArray list(const QJsonObject& object, const char* key) const {
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isArray()) fail(key);
    return value.toArray();
  }

  template <typename T>
  Rows<T> rows(const QJsonObject& object, const char* key, std::uint64_t count) const {
    void* const data = find_(number(object, key), count, sizeof(T));
    return Rows<T>::over(keeper_, static_cast<T*>(data), count);
  }

  template <typename Loaded>
  void common(const QJsonObject& object, Loaded& loaded) const {
    loaded.code = text(object, "code");
    loaded.series.timeZone = text(object, "timeZone");
    loaded.series.origin = text(object, "origin");
    for (const QJsonValue note : list(object, "notes"))
      loaded.notes.push_back(note.toString().toStdString());
  }

  LoadedBars bars(const QJsonObject& object) const {
    LoadedBars loaded;
    common(object, loaded);
    loaded.series.periodMs = static_cast<int64>(number(object, "periodMs"));
    if (loaded.series.periodMs == 0) fail("periodMs");
    if (list(object, "columns") != barColumns()) fail("columns");
    loaded.series.bars = rows<IKLine>(object, "records", number(object, "rows"));
    return loaded;
  }

  LoadedTicks ticks(const QJsonObject& object) const {
    LoadedTicks loaded;
    common(object, loaded);
    TickSeries& series = loaded.series;
    for (const QJsonValue name : list(object, "columns"))
      series.columns.push_back(column(name.toString().toStdString()));
    if (series.columns.empty()) fail("columns");
    const std::uint64_t count = number(object, "rows");
    series.times = rows<int64>(object, "times", count);
    series.tradingDays = rows<std::int32_t>(object, "tradingDays", count);
    // Each row has a time of 8 bytes in the file, so that the product is no larger than it looks.
    series.cells = rows<double>(object, "cells", count * series.columns.size());
    return loaded;
  }

 private:
  TickColumnId column(const std::string& name) const {
    for (const auto& [id, role] : kRoles) {
      const std::uint8_t levels = id >= TickColumn::BidPrice ? 10 : 1;
      for (std::uint8_t level = 0; level < levels; ++level)
        if (nameOfTickColumn({id, level}) == name) return {id, level};
    }
    fail("columns");
  }

  const std::string& path_;
  const FindRows& find_;
  const std::shared_ptr<void> keeper_;
};

}  // namespace

std::string cacheMeta(const DataCache& cache, std::vector<CacheSection>& sections) {
  Layout layout(sections);
  QJsonArray bars;
  for (const LoadedBars& loaded : cache.bars) {
    QJsonObject object = commonMeta(loaded, loaded.series.bars.size());
    object["periodMs"] = digits(loaded.series.periodMs);
    object["columns"] = barColumns();
    object["records"] = layout.place(loaded.series.bars);
    bars.append(object);
  }
  QJsonArray ticks;
  for (const LoadedTicks& loaded : cache.ticks) {
    QJsonObject object = commonMeta(loaded, loaded.series.rows());
    QJsonArray columns;
    for (const TickColumnId& id : loaded.series.columns)
      columns.append(fromUtf8(nameOfTickColumn(id)));
    object["columns"] = columns;
    object["times"] = layout.place(loaded.series.times);
    object["tradingDays"] = layout.place(loaded.series.tradingDays);
    object["cells"] = layout.place(loaded.series.cells);
    ticks.append(object);
  }
  QJsonArray sources;
  for (const DataSource& source : cache.sources)
    sources.append(QJsonObject{{"path", fromUtf8(source.path)},
                               {"bytes", digits(source.bytes)},
                               {"modifiedNs", digits(source.modifiedNs)},
                               {"hash", fromUtf8(source.hash)}});
  const QJsonObject all{
      {"bars", bars}, {"ticks", ticks}, {"sources", sources}, {"reading", fromUtf8(cache.reading)}};
  return QJsonDocument(all).toJson(QJsonDocument::Compact).toStdString();
}

DataCache readCacheMeta(const std::string& path, std::string_view meta, const FindRows& find,
                        const std::shared_ptr<void>& keeper) {
  const MetaReader reader(path, find, keeper);
  const QJsonDocument document = QJsonDocument::fromJson(
      QByteArray::fromRawData(meta.data(), static_cast<qsizetype>(meta.size())));
  if (!document.isObject()) reader.fail("bars");
  const QJsonObject all = document.object();
  DataCache cache;
  for (const QJsonValue one : reader.list(all, "bars"))
    cache.bars.push_back(reader.bars(one.toObject()));
  for (const QJsonValue one : reader.list(all, "ticks"))
    cache.ticks.push_back(reader.ticks(one.toObject()));
  for (const QJsonValue one : reader.list(all, "sources")) {
    const QJsonObject object = one.toObject();
    cache.sources.push_back({reader.text(object, "path"), reader.number(object, "bytes"),
                             static_cast<std::int64_t>(reader.number(object, "modifiedNs")),
                             reader.text(object, "hash")});
  }
  cache.reading = reader.text(all, "reading");
  return cache;
}

}  // namespace detail

std::string nameOfTickColumn(const TickColumnId& id) {
  for (const auto& [column, role] : detail::kRoles)
    if (column == id.column)
      return detail::ourName(role, id.column >= TickColumn::BidPrice ? id.level + 1 : 0);
  return {};
}

}  // namespace orvane
