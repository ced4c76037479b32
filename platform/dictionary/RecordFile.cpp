#include "platform/dictionary/RecordFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

#include "platform/core/JsonText.h"
#include "platform/dictionary/JsonLines.h"
#include "platform/fields/DictionaryFlags.h"
#include "platform/market/files/CsvRows.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/FileText.h"
#include "platform/market/files/MomentText.h"
#include "platform/market/files/ZoneClock.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

using detail::textOf;

enum Field { Name, Target, Key, Text, Value2, ValueType, Tag, Time, Flags, kFields };
constexpr std::array<const char*, kFields> kNames = {
    "name", "target", "key", "text", "value2", "valueType", "tag", "time", "flags"};

/// One record as the file has it. A field that is not there has no value.
struct Row {
  const std::string& path;
  std::size_t line = 0;
  std::array<std::optional<std::string>, kFields> fields = {};  ///< UTF-8.
  std::array<std::size_t, kFields> lines = {};                  ///< 0: the row's.
};

[[noreturn]] void failAt(const std::string& path, std::size_t line, const std::string& what) {
  throw DataFileError(path + ":" + std::to_string(line) + ": " + what);
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

[[noreturn]] void fail(const Row& row, Field field, const std::string& what) {
  failAt(row.path, row.lines[field] != 0 ? row.lines[field] : row.line,
         "field " + quoted(kNames[field]) + ": " + quoted(row.fields[field].value_or("")) + " " +
             what);
}

bool isThere(const Row& row, Field field) {
  return row.fields[field] && !row.fields[field]->empty();
}

const std::string& given(const Row& row, Field field) {
  if (!row.fields[field])
    failAt(row.path, row.line, "field " + quoted(kNames[field]) + " is missing");
  return *row.fields[field];
}

/// The text as GBK; a character that GBK lacks would be lost.
std::string gbkOf(const Row& row, Field field) {
  std::string gbk = utf8ToGbk(given(row, field));
  if (gbkToUtf8(gbk) != *row.fields[field]) fail(row, field, "has a character that GBK lacks");
  return gbk;
}

std::string nonEmpty(const Row& row, Field field) {
  if (given(row, field).empty()) fail(row, field, "is empty");
  return gbkOf(row, field);
}

template <typename Number>
Number numberOf(const Row& row, Field field) {
  if (!isThere(row, field)) return 0;
  const std::string& text = *row.fields[field];
  Number value = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end.ptr != text.data() + text.size() || end.ec == std::errc::invalid_argument)
    fail(row, field, "is not a whole number");
  if (end.ec != std::errc()) fail(row, field, "is too large a number");
  return value;
}

int flagsOf(const Row& row) {
  if (!isThere(row, Flags)) return 0;
  if (*row.fields[Flags] != "delete") fail(row, Flags, "is not a flag; \"delete\" is");
  if (isThere(row, Text)) fail(row, Text, "stands in a deletion, which has none");
  return dictionary::kDeletes;
}

bool isAlike(const RecordPublication& a, const RecordPublication& b) {
  return a.name == b.name && a.target == b.target && a.valueType == b.valueType && a.tag == b.tag &&
         a.flags == b.flags && a.time == b.time;
}

/// Turns rows into publications.
class RowReader {
 public:
  explicit RowReader(const std::string& zone) : zone_(zone) {}

  void add(const Row& row);
  std::vector<RecordPublication> takeAll();

 private:
  int64 momentOf(const Row& row, Field field);

  detail::ZoneClock zone_;
  std::vector<RecordPublication> all_;
};

int64 RowReader::momentOf(const Row& row, Field field) {
  const std::string& text = given(row, field);
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  if (text.size() > sign && text.find_first_not_of("0123456789", sign) == std::string::npos)
    return numberOf<int64>(row, field);
  detail::MomentText moment;
  if (detail::parseMoment(text, detail::DateOrder::Unknown, moment) != detail::DateResult::Good ||
      !moment.hasDate)
    fail(row, field, "is neither a number of milliseconds nor a date and time");
  const int64 local = moment.day * detail::kDayMs + moment.msOfDay;
  return moment.hasOffset ? local - moment.offsetMs : zone_.toUtc(local);
}

void RowReader::add(const Row& row) {
  RecordPublication publication;
  publication.name = nonEmpty(row, Name);
  publication.target = nonEmpty(row, Target);
  publication.valueType = numberOf<std::int32_t>(row, ValueType);
  publication.tag = numberOf<int64>(row, Tag);
  publication.flags = flagsOf(row);
  if (isThere(row, Time)) publication.time = momentOf(row, Time);
  Record record;
  record.key = momentOf(row, Key);
  record.value2 = numberOf<int64>(row, Value2);
  if (publication.flags == 0)
    record.text = gbkOf(row, Text);
  else if (publication.time == kUnsetTime)
    fail(row, Flags, "needs a time");
  if (all_.empty() || !isAlike(all_.back(), publication)) all_.push_back(std::move(publication));
  all_.back().records.push_back(std::move(record));
}

std::vector<RecordPublication> RowReader::takeAll() {
  for (RecordPublication& publication : all_)
    publication.records.sort([](const Record& a, const Record& b) { return a.key < b.key; });
  return std::move(all_);
}

/// `kFields` if there is no such field.
Field fieldOf(const std::string& name) {
  return static_cast<Field>(std::find(kNames.begin(), kNames.end(), name) - kNames.begin());
}

// CSV.

std::vector<Field> readHeader(const std::string& path, const detail::CsvRows& rows) {
  std::vector<Field> columns;
  for (const detail::CsvField& name : rows.fields()) {
    const std::string text(name.text);
    const Field field = fieldOf(text);
    if (field == kFields) failAt(path, rows.line(), "field " + quoted(text) + " is not known");
    if (std::find(columns.begin(), columns.end(), field) != columns.end())
      failAt(path, rows.line(), "field " + quoted(text) + " comes twice");
    columns.push_back(field);
  }
  for (const Field field : {Name, Target, Key, Text})
    if (std::find(columns.begin(), columns.end(), field) == columns.end())
      failAt(path, rows.line(), "field " + quoted(kNames[field]) + " is missing");
  return columns;
}

std::vector<RecordPublication> readCsv(const detail::FileText& file) {
  detail::CsvRows rows(file.path, file.text, ',');
  RowReader reader("UTC");
  if (!rows.next()) throw DataFileError(file.path + ": there is no header");
  const std::vector<Field> columns = readHeader(file.path, rows);
  while (rows.next()) {
    if (rows.fields().size() != columns.size())
      failAt(file.path, rows.line(),
             "has " + std::to_string(rows.fields().size()) + " fields instead of " +
                 std::to_string(columns.size()));
    Row row{file.path, rows.line()};
    for (std::size_t i = 0; i < columns.size(); ++i)
      row.fields[columns[i]] = std::string(rows.fields()[i].text);
    reader.add(row);
  }
  return reader.takeAll();
}

// JSON.

/// Puts a field's value into the row, as text. Whole numbers keep all their digits.
void setField(Row& row, Field field, QJsonValue value) {
  if (field == Flags && value.isArray() && value.toArray().size() == 1)
    value = value.toArray().first();
  const bool takesNumber = field >= Value2 || field == Key;
  const bool takesText = field != Value2 && field != ValueType && field != Tag;
  row.fields[field] = textOf(value);
  if (value.isNull()) fail(row, field, "is no value");
  if (field == Flags && value.isArray() && value.toArray().isEmpty()) {
    row.fields[field] = std::string();
  } else if (value.isString() && takesText) {
    row.fields[field] = value.toString().toStdString();
  } else if (value.isDouble() && takesNumber && field != Flags) {
    constexpr qint64 kNone = std::numeric_limits<qint64>::min();
    if (value.toInteger(kNone) == kNone) fail(row, field, "is not a whole number");
    row.fields[field] = std::to_string(value.toInteger());
  } else if (field != Text || !(value.isObject() || value.isArray())) {
    fail(row, field, takesText ? "is not a text" : "is not a number");
  }
}

std::string zoneOf(const std::string& path, const QJsonObject& whole) {
  std::string zone = "UTC";
  for (auto at = whole.begin(); at != whole.end(); ++at) {
    if (at.key() == "records") continue;
    const std::string field = path + ": field " + quoted(at.key().toStdString());
    if (at.key() != "timeZone") throw DataFileError(field + " is not known");
    zone = at.value().toString().toStdString();
    if (!at.value().isString() || !detail::ZoneClock(zone).ok())
      throw DataFileError(field + ": " + textOf(at.value()) + " is not a time zone");
  }
  return zone;
}

QJsonDocument parse(const detail::FileText& file) {
  QJsonParseError error;
  const QByteArray bytes =
      QByteArray::fromRawData(file.text.data(), static_cast<qsizetype>(file.text.size()));
  QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError)
    failAt(file.path, static_cast<std::size_t>(bytes.left(error.offset).count('\n')) + 1,
           error.errorString().toStdString());
  return document;
}

std::vector<RecordPublication> readJson(const detail::FileText& file) {
  const QJsonDocument document = parse(file);
  const QJsonObject whole = document.object();
  RowReader reader(zoneOf(file.path, whole));
  const QJsonValue list =
      document.isArray() ? QJsonValue(document.array()) : whole.value("records");
  if (!list.isArray())
    throw DataFileError(file.path + ": field \"records\" " +
                        (list.isUndefined() ? "is missing" : "is not a list"));
  const detail::JsonLines lines(file.text, document.isArray() ? "" : "records");
  const QJsonArray records = list.toArray();
  for (qsizetype i = 0; i < records.size(); ++i) {
    const auto number = static_cast<std::size_t>(i);
    Row row{file.path, lines.line(number)};
    if (!records[i].isObject())
      failAt(file.path, row.line, textOf(records[i]) + " is not an object");
    const QJsonObject object = records[i].toObject();
    for (auto at = object.begin(); at != object.end(); ++at) {
      const std::string key = at.key().toStdString();
      const std::size_t line = lines.line(number, key);
      const Field field = fieldOf(key);
      if (field == kFields) failAt(file.path, line, "field " + quoted(key) + " is not known");
      if (lines.count(number, key) > 1)
        failAt(file.path, line, "field " + quoted(key) + " comes twice");
      row.lines[field] = line;
      setField(row, field, at.value());
    }
    reader.add(row);
  }
  return reader.takeAll();
}

}  // namespace

std::vector<RecordPublication> loadRecords(const std::string& path) {
  const detail::FileText file = detail::readFileText(path, "utf-8");
  const std::size_t first = file.text.find_first_not_of(" \t\r\n");
  const bool isJson =
      first != std::string::npos && (file.text[first] == '{' || file.text[first] == '[');
  return isJson ? readJson(file) : readCsv(file);
}

}  // namespace orvane
