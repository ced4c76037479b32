#include "platform/events/IndexFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "platform/core/JsonKeys.h"
#include "platform/core/JsonText.h"
#include "platform/market/files/CsvRows.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/FileText.h"
#include "platform/market/files/MomentText.h"
#include "platform/market/files/NumberParser.h"
#include "platform/market/files/ZoneClock.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

using detail::textOf;

[[noreturn]] void fail(const std::string& place, const std::string& what) {
  throw DataFileError(place + ": " + what);
}

/// "column "weight": "abc" is not a number", or the same of a key.
[[noreturn]] void failField(const std::string& place, const std::string& field,
                            std::string_view value, const std::string& what) {
  fail(place, field + ": \"" + std::string(value) + "\" " + what);
}

int64 timeOf(const std::string& place, const std::string& field, std::string_view text,
             detail::ZoneClock& zone) {
  detail::MomentText moment;
  if (detail::parseMoment(text, detail::DateOrder::Unknown, moment) != detail::DateResult::Good ||
      !moment.hasDate)
    failField(place, field, text, "is not a date or a date and time");
  const int64 local = moment.day * detail::kDayMs + (moment.hasTime ? moment.msOfDay : 0);
  return moment.hasOffset ? local - moment.offsetMs : zone.toUtc(local);
}

detail::ZoneClock zoneOf(const std::string& place, const std::string& name) {
  detail::ZoneClock zone(name);
  if (!zone.ok()) failField(place, "time zone", name, "is not a time zone");
  return zone;
}

/// The compositions of one file, by index and time.
class Compositions {
 public:
  /// The composition of an index and time; `isNew` tells whether it was not there.
  IndexComposition& at(const std::string& index, int64 time, const std::string& origin,
                       bool& isNew) {
    const auto [found, added] = places_.try_emplace({index, time}, all_.size());
    isNew = added;
    if (added) all_.push_back({utf8ToGbk(index), time, {}, origin});
    return all_[found->second];
  }

  /// Adds an element; `field` names where its code stands.
  static void add(IndexComposition& composition, const std::string& place, const std::string& field,
                  const std::string& code, double weight) {
    const std::string text = utf8ToGbk(code);
    if (text == composition.index) failField(place, field, code, "is the index itself");
    for (const IndexElementSpec& each : composition.elements)
      if (each.code == text) failField(place, field, code, "is an element twice");
    composition.elements.push_back({text, weight});
  }

  std::vector<IndexComposition> take() { return std::move(all_); }

 private:
  std::map<std::pair<std::string, int64>, std::size_t> places_;
  std::vector<IndexComposition> all_;
};

// CSV.

struct Columns {
  std::optional<std::size_t> index, time, element, weight;
};

Columns columnsOf(const std::string& place, std::span<const detail::CsvField> header) {
  Columns columns;
  for (std::size_t i = 0; i < header.size(); ++i) {
    std::string name;
    for (const char letter : header[i].text)
      name += static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
    std::optional<std::size_t>* role = nullptr;
    if (name == "index") role = &columns.index;
    if (name == "time" || name == "date" || name == "datetime") role = &columns.time;
    if (name == "element" || name == "code") role = &columns.element;
    if (name == "weight") role = &columns.weight;
    if (role == nullptr)
      failField(place, "header", header[i].text, "is not one of index, time, element and weight");
    if (role->has_value())
      failField(place, "header", header[i].text, "tells a column that is there");
    *role = i;
  }
  if (!columns.index) fail(place, "header: there is no column \"index\"");
  if (!columns.element) fail(place, "header: there is no column \"element\"");
  return columns;
}

std::vector<IndexComposition> readCsv(const detail::FileText& file, const std::string& timeZone) {
  detail::CsvRows rows(file.path, file.text, detail::detectDelimiter(file.text));
  if (!rows.next()) fail(file.path, "there is no header");
  const auto place = [&] { return file.path + ":" + std::to_string(rows.line()); };
  const Columns columns = columnsOf(place(), rows.fields());
  const std::size_t width = rows.fields().size();
  detail::ZoneClock zone = zoneOf(file.path, timeZone);
  Compositions all;
  while (rows.next()) {
    const std::span<const detail::CsvField> fields = rows.fields();
    if (fields.size() != width)
      fail(place(), "the header has " + std::to_string(width) + " columns, the row " +
                        std::to_string(fields.size()));
    const std::string index(fields[*columns.index].text), element(fields[*columns.element].text);
    if (index.empty()) failField(place(), "column \"index\"", index, "is empty");
    const std::string_view moment = columns.time ? fields[*columns.time].text : std::string_view();
    const int64 time = moment.empty() ? IndexComposition::kFromTheStart
                                      : timeOf(place(), "column \"time\"", moment, zone);
    double weight = 0;
    const std::string_view number =
        columns.weight ? fields[*columns.weight].text : std::string_view();
    if (!number.empty() && (!detail::NumberParser().parse(number, weight) || weight < 0))
      failField(place(), "column \"weight\"", number, "is not a number from 0 up");
    bool isNew = false;
    IndexComposition& composition = all.at(index, time, place(), isNew);
    // A row without an element says that the index has none from then on.
    if (element.empty() && !isNew)
      failField(place(), "column \"element\"", element, "is empty beside other elements");
    if (!isNew && composition.elements.empty())
      failField(place(), "column \"element\"", element, "stands beside a row that says none");
    if (!element.empty())
      Compositions::add(composition, place(), "column \"element\"", element, weight);
  }
  return all.take();
}

// JSON.

void checkKeys(const std::string& place, const QJsonObject& object,
               const std::set<std::string>& known) {
  for (auto at = object.begin(); at != object.end(); ++at)
    if (known.count(at.key().toStdString()) == 0)
      fail(place, "key \"" + at.key().toStdString() + "\" is not known");
}

std::string codeOf(const std::string& place, const std::string& key, const QJsonValue& value) {
  if (!value.isString() || value.toString().isEmpty())
    fail(place, "key \"" + key + "\": " + (value.isUndefined() ? "nothing" : textOf(value)) +
                    " is not a code");
  return value.toString().toStdString();
}

QJsonArray listOf(const std::string& place, const std::string& key, const QJsonValue& value) {
  if (!value.isArray())
    fail(place, "key \"" + key + "\": " +
                    (value.isUndefined() ? "is missing" : textOf(value) + " is not a list"));
  return value.toArray();
}

QJsonObject objectOf(const std::string& place, const QJsonValue& value) {
  if (!value.isObject()) fail(place, textOf(value) + " is not an object");
  return value.toObject();
}

class JsonReader {
 public:
  JsonReader(std::string path, const std::string& timeZone)
      : path_(std::move(path)), zone_(zoneOf(path_, timeZone)) {}

  std::vector<IndexComposition> read(const QJsonObject& root) {
    const QJsonArray indexes = listOf(path_, "indexes", root.value("indexes"));
    for (int i = 0; i < indexes.size(); ++i)
      readIndex(path_ + ": indexes[" + std::to_string(i) + "]", indexes[i]);
    return all_.take();
  }

 private:
  void readIndex(const std::string& place, const QJsonValue& value) {
    const QJsonObject object = objectOf(place, value);
    checkKeys(place, object, {"index", "elements", "changes"});
    const std::string index = codeOf(place, "index", object.value("index"));
    if (object.contains("elements") || !object.contains("changes"))
      readComposition(place, index, IndexComposition::kFromTheStart, object.value("elements"));
    if (!object.contains("changes")) return;
    const QJsonArray changes = listOf(place, "changes", object.value("changes"));
    for (int i = 0; i < changes.size(); ++i) {
      const std::string at = place + ".changes[" + std::to_string(i) + "]";
      const QJsonObject change = objectOf(at, changes[i]);
      checkKeys(at, change, {"time", "elements"});
      const QJsonValue time = change.value("time");
      if (!time.isString()) fail(at, "key \"time\": is missing or not a text");
      readComposition(at, index, timeOf(at, "key \"time\"", time.toString().toStdString(), zone_),
                      change.value("elements"));
    }
  }

  void readComposition(const std::string& place, const std::string& index, int64 time,
                       const QJsonValue& value) {
    const QJsonArray elements = listOf(place, "elements", value);
    bool isNew = false;
    IndexComposition& composition = all_.at(index, time, place, isNew);
    if (!isNew) fail(place, "\"" + index + "\" has a composition of that time already");
    for (int i = 0; i < elements.size(); ++i) {
      const std::string at = place + ".elements[" + std::to_string(i) + "]";
      readElement(composition, at, elements[i]);
    }
  }

  static void readElement(IndexComposition& composition, const std::string& place,
                          const QJsonValue& value) {
    if (value.isString()) {
      Compositions::add(composition, place, "code", codeOf(place, "code", value), 0);
      return;
    }
    const QJsonObject object = objectOf(place, value);
    checkKeys(place, object, {"code", "weight"});
    const QJsonValue weight = object.value("weight");
    if (!weight.isUndefined() && (!weight.isDouble() || weight.toDouble() < 0))
      fail(place, "key \"weight\": " + textOf(weight) + " is not a number from 0 up");
    Compositions::add(composition, place, "key \"code\"",
                      codeOf(place, "code", object.value("code")), weight.toDouble(0));
  }

  const std::string path_;
  detail::ZoneClock zone_;
  Compositions all_;
};

std::vector<IndexComposition> readJson(const detail::FileText& file, const std::string& timeZone) {
  const QByteArray bytes(file.text.data(), static_cast<qsizetype>(file.text.size()));
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError)
    fail(file.path + ":" + std::to_string(bytes.left(error.offset).count('\n') + 1),
         error.errorString().toStdString());
  if (const auto twice = detail::keyGivenTwice(file.text))
    fail(file.path + ":" + std::to_string(bytes.left(qsizetype(twice->offset)).count('\n') + 1),
         "key \"" + twice->key + "\" comes twice");
  if (!document.isObject())
    fail(file.path, "must hold a JSON object with the key \"indexes\", not a list");
  const QJsonObject root = document.object();
  checkKeys(file.path, root, {"indexes", "timeZone"});
  const QJsonValue zone = root.value("timeZone");
  if (!zone.isUndefined() && !zone.isString())
    fail(file.path, "key \"timeZone\": " + textOf(zone) + " is not a text");
  JsonReader reader(file.path, zone.isString() ? zone.toString().toStdString() : timeZone);
  return reader.read(root);
}

}  // namespace

std::vector<IndexComposition> loadIndexes(const std::string& path, const std::string& timeZone) {
  const detail::FileText file = detail::readFileText(path, "");
  const std::size_t first = file.text.find_first_not_of(" \t\r\n");
  const bool isJson =
      first != std::string::npos && (file.text[first] == '{' || file.text[first] == '[');
  return isJson ? readJson(file, timeZone) : readCsv(file, timeZone);
}

}  // namespace orvane
