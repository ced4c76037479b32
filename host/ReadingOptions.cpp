#include "host/ReadingOptions.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonDocument>

#include "host/InputError.h"
#include "host/JsonInput.h"
#include "host/OptionChecks.h"

namespace orvane {
namespace {

/// A list of names, or an object where the parts are pairs of name and header or position.
QJsonValue columnsValue(const std::string& given) {
  QJsonArray list;
  QJsonObject named;
  const QStringList parts = QString::fromStdString(given).split(',');
  for (const QString& part : parts) {
    const qsizetype equals = part.indexOf('=');
    if (equals < 0) {
      list.append(part.trimmed());
      continue;
    }
    const QString value = part.mid(equals + 1).trimmed();
    bool isPosition = false;
    const int position = value.toInt(&isPosition);
    named[part.left(equals).trimmed()] = isPosition ? QJsonValue(position) : QJsonValue(value);
  }
  if (named.isEmpty()) return list;
  if (list.isEmpty()) return named;
  throw InputError(fmt::format(
      "--columns: \"{}\" mixes a list of names with NAME=HEADER; use one of the two", given));
}

}  // namespace

void ReadingOptions::addTo(CLI::App& command) {
  const std::string group = "How to read the files (what is common is recognised)";
  const auto add = [&](const char* name, auto& value, const char* help) {
    return command.add_option(name, value, help)->group(group);
  };
  add("--format", format_, "Description of the files: FILE.json or {...}; see docs/formats.md")
      ->type_name("JSON");
  add("--columns", columns_,
      "Columns in order, as in datetime,open,high,low,close,volume; \"-\" passes over one.\n"
      "Or some by header or position: close=Settle,volume=7")
      ->type_name("LIST");
  add("--delimiter", delimiter_, "What separates the fields")->type_name("CHAR");
  add("--timezone", timeZone_, "Zone of the times in the files, such as Asia/Shanghai")
      ->type_name("ZONE");
  add("--stamp", stamp_, "Whether a bar's time is its start or its end")
      ->check(oneOf({"start", "end"}));
  add("--period", period_, "Period of the bars, such as 1m, 5m, 1d")->type_name("PERIOD");
  add("--date", date_, "Date of files whose times count from midnight")->type_name("DATE");
  add("--price-scale", priceScale_, "What prices are to be divided by, such as 10000")
      ->type_name("NUMBER");
  add("--price-tick", priceTick_, "Smallest price step, to clean binary noise, such as 0.2")
      ->type_name("NUMBER");
  add("--side", side_, "Which side the prices of bid and ask bars come from")
      ->check(oneOf({"bid", "ask", "mid"}));
  add("--set", sets_, "Any other key of a description, as KEY=VALUE; may be repeated")
      ->type_name("KEY=VALUE");
}

std::vector<std::tuple<const char*, const char*, const std::string*>> ReadingOptions::ownKeys()
    const {
  return {{"--columns", "columns", &columns_},
          {"--delimiter", "delimiter", &delimiter_},
          {"--timezone", "timeZone", &timeZone_},
          {"--stamp", "stamp", &stamp_},
          {"--period", "period", &period_},
          {"--date", "date", &date_},
          {"--price-scale", "priceScale", &priceScale_},
          {"--price-tick", "priceTick", &priceTick_},
          {"--side", "side", &side_}};
}

DescriptionPlaces ReadingOptions::places() const {
  DescriptionPlaces result;
  for (const auto& [option, key, value] : ownKeys())
    if (!value->empty()) result.options[key] = option;
  for (const std::string& set : sets_)
    result.options[set.substr(0, set.find('='))] = "--set " + set.substr(0, set.find('='));
  if (format_.empty())
    result.place = "--set";
  else if (format_.find('{') == std::string::npos)
    result.place = "--format " + format_;
  return result;
}

QJsonObject ReadingOptions::description() const {
  QJsonObject result;
  if (!format_.empty()) result = jsonObjectArgument(format_, "--format");
  for (const auto& [option, key, value] : ownKeys())
    if (!value->empty()) result[QLatin1String(key)] = QString::fromStdString(*value);
  if (!columns_.empty()) result["columns"] = columnsValue(columns_);
  for (const std::string& set : sets_) {
    const auto equals = set.find('=');
    if (equals == std::string::npos || equals == 0)
      throw InputError(fmt::format("--set: \"{}\" is not KEY=VALUE", set));
    const QByteArray text = QByteArray::fromStdString(set.substr(equals + 1));
    // A value that is JSON is taken as such, anything else as a text.
    const QJsonDocument json = QJsonDocument::fromJson("[" + text + "]");
    const bool isJson = json.isArray() && json.array().size() == 1;
    result[QString::fromStdString(set.substr(0, equals))] =
        isJson ? json.array().at(0) : QJsonValue(QString::fromUtf8(text));
  }
  return result;
}

}  // namespace orvane
