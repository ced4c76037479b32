#include "platform/reference/InstrumentFile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <charconv>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>

#include "platform/core/JsonKeys.h"
#include "platform/core/JsonText.h"
#include "platform/core/ZoneRules.h"
#include "shared/CodeTables.h"
#include "shared/NearText.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

using detail::textOf;

using TextField = std::string Instrument::*;

const std::map<std::string, TextField>& textKeys() {
  static const std::map<std::string, TextField> keys = {{"code", &Instrument::code},
                                                        {"market", &Instrument::market},
                                                        {"name", &Instrument::name},
                                                        {"timeZone", &Instrument::timeZone},
                                                        {"currency", &Instrument::currency},
                                                        {"sessions", &Instrument::sessions},
                                                        {"dominant", &Instrument::dominant},
                                                        {"underlying", &Instrument::underlying},
                                                        {"continuous", &Instrument::continuous}};
  return keys;
}

const std::map<std::string, TextField>& decimalKeys() {
  static const std::map<std::string, TextField> keys = {
      {"priceTick", &Instrument::priceTick}, {"multiplier", &Instrument::multiplier},
      {"lotSize", &Instrument::lotSize},     {"marginRate", &Instrument::marginRate},
      {"feePerLot", &Instrument::feePerLot}, {"feeRate", &Instrument::feeRate}};
  return keys;
}

/// The short names of the command line's form.
const std::map<std::string, std::string>& shortKeys() {
  static const std::map<std::string, std::string> keys = {{"tick", "priceTick"},
                                                          {"lot", "lotSize"},
                                                          {"tz", "timeZone"},
                                                          {"margin", "marginRate"},
                                                          {"fee", "feePerLot"}};
  return keys;
}

/// Which names of keys a text may have.
enum class KeyForms { Full, ShortToo };

[[noreturn]] void fail(const std::string& key, const std::string& value, const std::string& what) {
  throw std::invalid_argument("key \"" + key + "\": \"" + value + "\" " + what);
}

/// Names the key that was meant, or else all. A file has the full names alone.
[[noreturn]] void failUnknown(const std::string& key, KeyForms forms) {
  std::vector<std::string> known = {"id", "categories"};
  for (const auto& entry : textKeys()) known.push_back(entry.first);
  for (const auto& entry : decimalKeys()) known.push_back(entry.first);
  const bool hasShort = forms == KeyForms::ShortToo;
  if (hasShort)
    for (const auto& entry : shortKeys()) known.push_back(entry.first);
  const auto full = shortKeys().find(key);
  if (const std::string* const meant =
          full != shortKeys().end() ? &full->second : textMeant(known, key))
    throw std::invalid_argument("key \"" + key + "\": is not known; is \"" + *meant + "\" meant?");
  std::sort(known.begin(), known.end());
  std::string list;
  for (const std::string& one : known) {
    const auto whole = shortKeys().find(one);
    list += (list.empty() ? "" : ", ") + one +
            (whole == shortKeys().end() ? "" : " (for " + whole->second + ")");
  }
  throw std::invalid_argument("key \"" + key + "\": is not known; there are " + list);
}

bool isDecimal(const std::string& text) {
  static const std::regex form("[0-9]+(\\.[0-9]+)?");
  return std::regex_match(text, form);
}

bool isZero(const std::string& decimal) {
  return decimal.find_first_not_of("0.") == std::string::npos;
}

bool areSessions(const std::string& text) {
  static const std::regex form(
      "([01][0-9]|2[0-3]):[0-5][0-9]-([01][0-9]|2[0-4]):[0-5][0-9]"
      "(,([01][0-9]|2[0-3]):[0-5][0-9]-([01][0-9]|2[0-4]):[0-5][0-9])*");
  return std::regex_match(text, form);
}

std::string shortest(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed);
  return std::string(text, end.ptr);
}

int64 idOf(const std::string& key, const std::string& text) {
  int64 id = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), id);
  if (end.ec != std::errc() || end.ptr != text.data() + text.size() || id < 0)
    fail(key, text, "is not an id: a number from 0 up");
  return id;
}

void readKey(Instrument& instrument, const std::string& key, const QJsonValue& value,
             KeyForms forms = KeyForms::Full) {
  const auto text = textKeys().find(key);
  const auto decimal = decimalKeys().find(key);
  if (text != textKeys().end()) {
    if (!value.isString()) fail(key, textOf(value), "is not a text");
    instrument.*text->second = utf8ToGbk(value.toString().toStdString());
  } else if (decimal != decimalKeys().end()) {
    if (!value.isString() && !value.isDouble()) fail(key, textOf(value), "is not a number");
    instrument.*decimal->second =
        value.isString() ? value.toString().toStdString() : shortest(value.toDouble());
  } else if (key == "id") {
    instrument.id = idOf(key, value.isDouble() ? shortest(value.toDouble()) : textOf(value));
  } else if (key == "categories") {
    if (!value.isArray()) fail(key, textOf(value), "is not a list of texts");
    for (const QJsonValue one : value.toArray()) {
      if (!one.isString()) fail(key, textOf(one), "is not a text");
      instrument.categories.push_back(utf8ToGbk(one.toString().toStdString()));
    }
  } else {
    failUnknown(key, forms);
  }
}

Instrument readInstrument(const QJsonValue& value) {
  if (!value.isObject()) throw std::invalid_argument(textOf(value) + " is not an object");
  const QJsonObject object = value.toObject();
  Instrument instrument;
  for (auto at = object.begin(); at != object.end(); ++at)
    readKey(instrument, at.key().toStdString(), at.value());
  checkInstrument(instrument);
  return instrument;
}

std::vector<std::string> split(const std::string& text, char at) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(at, begin);
    parts.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
  }
  return parts;
}

}  // namespace

void checkInstrument(const Instrument& instrument) {
  if (instrument.code.empty()) fail("code", "", "is empty");
  if (instrument.id < 0) fail("id", std::to_string(instrument.id), "is below 0");
  for (const auto& [key, field] : decimalKeys()) {
    const std::string& value = instrument.*field;
    if (!value.empty() && !isDecimal(value))
      fail(key, gbkToUtf8(value), "is not a decimal number from 0 up");
  }
  for (const char* key : {"priceTick", "multiplier", "lotSize"}) {
    const std::string& value = instrument.*decimalKeys().at(key);
    if (!value.empty() && isZero(value)) fail(key, value, "is not above 0");
  }
  if (!instrument.timeZone.empty() && detail::ZoneRules::find(instrument.timeZone) == nullptr)
    fail("timeZone", gbkToUtf8(instrument.timeZone), "is not a time zone");
  if (!instrument.currency.empty() && std::find(currencyNames.begin(), currencyNames.end(),
                                                instrument.currency) == currencyNames.end())
    fail("currency", gbkToUtf8(instrument.currency), "is not a currency that is known");
  if (!instrument.sessions.empty() && !areSessions(instrument.sessions))
    fail("sessions", gbkToUtf8(instrument.sessions),
         "is not a list of sessions such as 09:30-11:30,13:00-15:00");
}

std::vector<Instrument> loadInstruments(const std::string& path) {
  QFile file(QString::fromStdString(path));
  if (!file.open(QIODevice::ReadOnly))
    throw std::invalid_argument(path + ": " + file.errorString().toStdString());
  QByteArray bytes = file.readAll();
  if (bytes.startsWith("\xEF\xBB\xBF")) bytes.remove(0, 3);
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError) {
    const auto line = bytes.left(error.offset).count('\n') + 1;
    throw std::invalid_argument(path + ":" + std::to_string(line) + ": " +
                                error.errorString().toStdString());
  }
  if (const auto twice = detail::keyGivenTwice({bytes.constData(), std::size_t(bytes.size())})) {
    const auto line = bytes.left(qsizetype(twice->offset)).count('\n') + 1;
    throw std::invalid_argument(path + ":" + std::to_string(line) + ": key \"" + twice->key +
                                "\" comes twice");
  }
  const QJsonValue list =
      document.isArray() ? QJsonValue(document.array()) : document.object().value("instruments");
  if (!list.isArray())
    throw std::invalid_argument(
        path + ": key \"instruments\": " + (list.isUndefined() ? "is missing" : "is not a list"));
  std::vector<Instrument> instruments;
  for (const QJsonValue value : list.toArray()) {
    try {
      instruments.push_back(readInstrument(value));
    } catch (const std::invalid_argument& wrong) {
      throw std::invalid_argument(path + ": instruments[" + std::to_string(instruments.size()) +
                                  "]: " + wrong.what());
    }
  }
  return instruments;
}

Instrument parseInstrument(const std::string& text) {
  const std::vector<std::string> parts = split(text, ',');
  Instrument instrument;
  const std::size_t point = parts[0].rfind('.');
  instrument.code = utf8ToGbk(parts[0].substr(0, point));
  if (point != std::string::npos) instrument.market = utf8ToGbk(parts[0].substr(point + 1));
  std::set<std::string> given;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const std::size_t equals = parts[i].find('=');
    if (equals == std::string::npos) fail(parts[i], "", "has no value");
    std::string key = parts[i].substr(0, equals);
    std::string value = parts[i].substr(equals + 1);
    const auto full = shortKeys().find(key);
    if (full != shortKeys().end()) key = full->second;
    if (key == "code" || key == "market") fail(key, value, "stands before the first comma");
    if (!given.insert(key).second) fail(key, value, "comes a second time");
    if (key == "sessions") std::replace(value.begin(), value.end(), '+', ',');
    if (key == "id") {
      instrument.id = idOf(key, value);
    } else if (key == "categories") {
      for (const std::string& one : split(value, '+'))
        instrument.categories.push_back(utf8ToGbk(one));
    } else {
      readKey(instrument, key, QJsonValue(QString::fromStdString(value)), KeyForms::ShortToo);
    }
  }
  checkInstrument(instrument);
  return instrument;
}

}  // namespace orvane
