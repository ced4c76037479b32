#include "host/InstrumentInputs.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonObject>

#include "host/InputError.h"
#include "host/JsonInput.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

struct TextField {
  const char* key;
  std::string Instrument::*member;
};

constexpr TextField kTextFields[] = {{"name", &Instrument::name},
                                     {"timeZone", &Instrument::timeZone},
                                     {"currency", &Instrument::currency},
                                     {"sessions", &Instrument::sessions},
                                     {"dominant", &Instrument::dominant},
                                     {"underlying", &Instrument::underlying},
                                     {"continuous", &Instrument::continuous}};

constexpr TextField kDecimalFields[] = {
    {"priceTick", &Instrument::priceTick}, {"multiplier", &Instrument::multiplier},
    {"lotSize", &Instrument::lotSize},     {"marginRate", &Instrument::marginRate},
    {"feePerLot", &Instrument::feePerLot}, {"feeRate", &Instrument::feeRate}};

Instrument readInstrument(const QJsonValue& json, const std::string& place) {
  JsonReader reader(json, place);
  Instrument result;
  const std::string code = reader.requiredText("code");
  const std::string market = reader.text("market");
  if (market.empty()) {
    setCodeText(result, code);
  } else {
    result.code = utf8ToGbk(code);
    result.market = utf8ToGbk(market);
  }
  result.id = reader.integer("id", 0, 0, 2'000'000'000);
  for (const TextField& field : kTextFields)
    result.*field.member = utf8ToGbk(reader.text(field.key));
  for (const TextField& field : kDecimalFields) result.*field.member = reader.decimal(field.key);
  for (const std::string& category : reader.texts("categories"))
    result.categories.push_back(utf8ToGbk(category));
  reader.close();
  return result;
}

}  // namespace

void setCodeText(Instrument& instrument, const std::string& codeText) {
  const auto dot = codeText.rfind('.');
  const bool hasMarket = dot != std::string::npos && dot != 0 && dot + 1 != codeText.size();
  instrument.code = utf8ToGbk(hasMarket ? codeText.substr(0, dot) : codeText);
  instrument.market = hasMarket ? utf8ToGbk(codeText.substr(dot + 1)) : std::string();
}

std::string instrumentText(const Instrument& instrument) {
  return gbkToUtf8(instrument.market.empty() ? instrument.code
                                             : instrument.code + "." + instrument.market);
}

InstrumentInput parseInstrument(const std::string& text, const std::string& option) {
  QJsonObject json;
  std::string key;
  std::size_t begin = 0;
  for (bool isFirst = true; begin <= text.size(); isFirst = false) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string part = text.substr(begin, end - begin);
    begin = end + 1;
    if (isFirst) {
      json["code"] = QString::fromStdString(part);
      continue;
    }
    const auto equals = part.find('=');
    if (equals != std::string::npos) {
      key = part.substr(0, equals);
      json[QString::fromStdString(key)] = QString::fromStdString(part.substr(equals + 1));
    } else if (!key.empty()) {
      const QString before = json[QString::fromStdString(key)].toString();
      json[QString::fromStdString(key)] = before + "," + QString::fromStdString(part);
    } else {
      throw InputError(
          fmt::format("{}: \"{}\": must be CODE[.MARKET],key=value,...; \"{}\" has no \"=\"",
                      option, text, part));
    }
  }
  if (json.contains("id")) json["id"] = json["id"].toString().toInt();
  return {readInstrument(json, option + " " + text), option};
}

std::vector<InstrumentInput> parseInstruments(const QJsonValue& json, const std::string& origin) {
  QJsonValue list = json;
  if (json.isObject()) {
    JsonReader reader(json, origin);
    list = reader.value("instruments");
    reader.close();
  }
  if (!list.isArray())
    throw InputError(
        fmt::format("{}: must be an array of instruments, not {}", origin, jsonText(list)));
  std::vector<InstrumentInput> result;
  const QJsonArray array = list.toArray();
  for (qsizetype i = 0; i < array.size(); ++i) {
    const std::string place = fmt::format("{}: [{}]", origin, i);
    result.push_back({readInstrument(array[i], place), place});
  }
  return result;
}

}  // namespace orvane
