#include "host/JsonInput.h"

#include <fmt/core.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "host/InputError.h"
#include "platform/core/JsonKeys.h"
#include "shared/NearText.h"

namespace orvane {

QByteArray readWholeFile(const std::string& path) {
  QFile file(QString::fromStdString(path));
  if (QFileInfo(file).isDir()) throw InputError(fmt::format("{}: is a folder, not a file", path));
  if (!file.open(QIODevice::ReadOnly))
    throw InputError(fmt::format("{}: cannot be read: {}", path, file.errorString().toStdString()));
  return file.readAll();
}

namespace {

/// The usual mistake that is seen where the parser gave up, which is at it or right after; empty
/// where none is.
std::string jsonAdvice(const QByteArray& text, qsizetype offset) {
  const QByteArray before = text.left(offset).trimmed();
  const QByteArray after = text.mid(offset).trimmed();
  const QByteArray around = before.right(1) + after.left(1);
  if (around.contains('\'')) return "texts and keys stand in double quotes";
  if (around.contains('/') || around.contains('#')) return "JSON has no comments";
  const QByteArray wider =
      before.right(1) == "}" || before.right(1) == "]" ? before.chopped(1).trimmed() : before;
  if (wider.size() < before.size() && wider.endsWith(',')) return "there is a comma too many";
  const auto isLetter = [](const QByteArray& one) {
    return !one.isEmpty() && std::isalpha(static_cast<unsigned char>(one.front())) != 0;
  };
  const QByteArray ahead = before.chopped(1).trimmed();
  if (isLetter(before.right(1)) && (ahead.endsWith('{') || ahead.endsWith(',')))
    return "keys stand in double quotes";
  if (before.endsWith(':') && isLetter(after))
    return "texts stand in double quotes; other words are true, false and null";
  if (before.endsWith('"') && !ahead.endsWith(',') && !ahead.endsWith('{') && !ahead.endsWith(':'))
    return "a comma is missing";
  if (after.isEmpty()) return "the end is missing";
  return {};
}

std::string badJson(const QJsonParseError& error, const QByteArray& text) {
  const bool isSecond = error.error == QJsonParseError::GarbageAtEnd;
  const QByteArray behind = text.mid(error.offset).trimmed();
  if (isSecond && (behind.startsWith('{') || behind.startsWith('[')))
    return "bad JSON: a second value begins here; give one alone, not a line each (JSON Lines)";
  if (isSecond && behind.isEmpty())
    return "bad JSON: only blanks, tabs and line ends may stand behind the value";
  const std::string advice = jsonAdvice(text, error.offset);
  return "bad JSON: " + error.errorString().toStdString() + (advice.empty() ? "" : "; " + advice);
}

}  // namespace

QJsonValue parseJson(const QByteArray& given, const std::string& origin) {
  QByteArray text = given;
  if (text.startsWith("\xEF\xBB\xBF")) text.remove(0, 3);
  if (text.trimmed().isEmpty())
    throw InputError(fmt::format("{}: is empty; give JSON, at least {{}}", origin));
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(text, &error);
  const auto refuseAt = [&](qsizetype offset, const std::string& what) {
    const QByteArray before = text.left(offset);
    const auto line = before.count('\n') + 1;
    const auto column = offset - before.lastIndexOf('\n');
    throw InputError(fmt::format("{}:{}:{}: {}", origin, line, column, what));
  };
  if (error.error != QJsonParseError::NoError) refuseAt(error.offset, badJson(error, text));
  const std::string_view all(text.constData(), static_cast<std::size_t>(text.size()));
  if (const auto twice = detail::keyGivenTwice(all))
    refuseAt(static_cast<qsizetype>(twice->offset), "key \"" + twice->key + "\" comes twice");
  if (document.isArray()) return document.array();
  return document.object();
}

QJsonValue readJsonFile(const std::string& path) { return parseJson(readWholeFile(path), path); }

QJsonObject jsonObjectArgument(const std::string& argument, const std::string& option) {
  const auto first = argument.find_first_not_of(" \t\r\n");
  const bool isInline = first != std::string::npos && argument[first] == '{';
  if (!isInline && !QFileInfo::exists(QString::fromStdString(argument)))
    throw InputError(fmt::format("{}: \"{}\" is neither a JSON object nor the name of a file",
                                 option, argument));
  const QJsonValue value =
      isInline ? parseJson(QByteArray::fromStdString(argument), option) : readJsonFile(argument);
  if (!value.isObject())
    throw InputError(fmt::format("{}: must hold a JSON object, not {}",
                                 isInline ? option : argument, jsonText(value)));
  return value.toObject();
}

std::string jsonText(const QJsonValue& value) {
  const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
  std::string inner = text.mid(1, text.size() - 2).toStdString();
  constexpr std::size_t kLongest = 60;
  if (inner.size() > kLongest) {
    std::size_t end = kLongest;
    while (end > 0 && (static_cast<unsigned char>(inner[end]) & 0xC0) == 0x80) --end;
    inner = inner.substr(0, end) + "...";
  }
  return inner;
}

JsonReader::JsonReader(const QJsonValue& value, std::string place) : place_(std::move(place)) {
  if (!value.isObject())
    throw InputError(fmt::format("{}: must be a JSON object, not {}", place_, jsonText(value)));
  object_ = value.toObject();
}

std::string JsonReader::place(const char* key) const {
  const bool isInside = place_.find(": ") != std::string::npos;
  return place_ + (isInside ? "." : ": ") + key;
}

void JsonReader::refuse(const char* key, const std::string& what) const {
  throw InputError(
      fmt::format("{}: {}, not {}", place(key), what, jsonText(object_.value(QLatin1String(key)))));
}

bool JsonReader::has(const char* key) { return !value(key).isUndefined(); }

QJsonValue JsonReader::value(const char* key) {
  const QString name = QString::fromUtf8(key);
  if (std::find(asked_.begin(), asked_.end(), name) == asked_.end()) asked_.push_back(name);
  return object_.value(QLatin1String(key));
}

std::string JsonReader::text(const char* key, const std::string& defaultValue) {
  const QJsonValue found = value(key);
  if (found.isUndefined()) return defaultValue;
  if (!found.isString()) refuse(key, "must be a text");
  return found.toString().toStdString();
}

std::string JsonReader::requiredText(const char* key) {
  if (!has(key)) throw InputError(fmt::format("{}: is missing", place(key)));
  std::string found = text(key);
  if (found.empty()) refuse(key, "must not be empty");
  return found;
}

std::string JsonReader::filledText(const char* key) {
  return has(key) ? requiredText(key) : text(key);
}

bool JsonReader::flag(const char* key, bool defaultValue) {
  const QJsonValue found = value(key);
  if (found.isUndefined()) return defaultValue;
  if (!found.isBool()) refuse(key, "must be true or false");
  return found.toBool();
}

int JsonReader::integer(const char* key, int defaultValue, int lowest, int highest) {
  const QJsonValue found = value(key);
  if (found.isUndefined()) return defaultValue;
  const double number = found.toDouble(std::nan(""));
  if (!(number >= lowest && number <= highest) || number != std::floor(number))
    refuse(key, fmt::format("must be a whole number from {} to {}", lowest, highest));
  return static_cast<int>(number);
}

std::string JsonReader::decimal(const char* key) {
  std::string found = numberOrText(key);
  const QJsonValue given = object_.value(QLatin1String(key));
  static const QRegularExpression kDecimal("^-?([0-9]+[.]?[0-9]*|[.][0-9]+)$");
  if (given.isString() && !kDecimal.match(given.toString()).hasMatch())
    refuse(key, "must be a decimal number");
  return found;
}

std::string JsonReader::numberOrText(const char* key) {
  const QJsonValue found = value(key);
  if (found.isUndefined()) return {};
  if (found.isString()) return found.toString().toStdString();
  if (!found.isDouble()) refuse(key, "must be a number");
  char text[400];
  const auto end =
      std::to_chars(text, text + sizeof(text), found.toDouble(), std::chars_format::fixed).ptr;
  return std::string(text, end);
}

std::vector<std::string> JsonReader::texts(const char* key) {
  const QJsonValue found = value(key);
  if (found.isUndefined()) return {};
  if (!found.isArray() && !found.isString()) refuse(key, "must be a text or an array of texts");
  std::vector<std::string> result;
  const QJsonArray array = found.isArray() ? found.toArray() : QJsonArray{found};
  for (const auto& element : array) {
    if (!element.isString()) refuse(key, "must be a text or an array of texts");
    if (element.toString().isEmpty()) refuse(key, "must not be empty and hold no empty text");
    result.push_back(element.toString().toStdString());
  }
  return result;
}

namespace {

/// What somebody may do about a key that is none.
std::string keyAdvice(const std::vector<QString>& known, const QString& written) {
  if (const QString* const meant = textMeant(known, written))
    return fmt::format("is \"{}\" meant?", meant->toStdString());
  std::string list;
  for (const QString& key : known) list += (list.empty() ? "" : ", ") + key.toStdString();
  return "the keys here are " + list;
}

}  // namespace

void JsonReader::close() const {
  for (auto it = object_.begin(); it != object_.end(); ++it) {
    if (std::find(asked_.begin(), asked_.end(), it.key()) != asked_.end()) continue;
    throw InputError(fmt::format("{}: unknown key; {}", place(it.key().toStdString().c_str()),
                                 keyAdvice(asked_, it.key())));
  }
}

}  // namespace orvane
