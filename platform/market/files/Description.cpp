#include "platform/market/files/Description.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <cmath>
#include <functional>
#include <map>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/ZoneClock.h"

namespace orvane::detail {
namespace {

std::string shown(const QJsonValue& value) {
  QJsonArray wrapped;
  wrapped.append(value);
  const std::string text = QJsonDocument(wrapped).toJson(QJsonDocument::Compact).toStdString();
  return text.substr(1, text.size() - 2);
}

[[noreturn]] void refuse(const std::string& key, const QJsonValue& value,
                         const std::string& wanted) {
  throw DataFileError("description: \"" + key + "\": " + shown(value) + " is not " + wanted);
}

std::string textOf(const std::string& key, const QJsonValue& value) {
  if (!value.isString()) refuse(key, value, "a text");
  return value.toString().toStdString();
}

bool boolOf(const std::string& key, const QJsonValue& value) {
  if (!value.isBool()) refuse(key, value, "true or false");
  return value.toBool();
}

template <typename T>
T choiceOf(const std::string& key, const QJsonValue& value,
           std::initializer_list<std::pair<const char*, T>> choices) {
  std::string wanted;
  for (const auto& [name, choice] : choices) {
    if (value.isString() && value.toString().compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
      return choice;
    wanted += (wanted.empty() ? "one of \"" : ", \"") + std::string(name) + "\"";
  }
  refuse(key, value, wanted);
}

char characterOf(const std::string& key, const QJsonValue& value) {
  const std::string text = textOf(key, value);
  if (text == "tab") return '\t';
  if (text == "space") return ' ';
  if (text.size() != 1) refuse(key, value, "one character");
  return text.front();
}

/// A scale of 10000 means that the file's numbers are to be divided by 10000.
int shiftOf(const std::string& key, const QJsonValue& value) {
  const double scale = value.isString() ? value.toString().toDouble() : value.toDouble();
  for (int shift = -12; shift <= 12; ++shift) {
    const std::string power = "1e" + std::to_string(shift);
    if (scale == std::stod(power)) return -shift;
  }
  refuse(key, value, "a power of ten such as 10000 or 0.01");
}

NamedRole roleNamed(const std::string& name) {
  const auto role = roleOfOurName(name);
  if (role) return *role;
  throw DataFileError("description: \"columns\": \"" + name +
                      "\" is no column name; did you mean \"" + nearestName(name, ourNames()) +
                      "\"? \"-\" passes over a column");
}

void readColumns(Description& out, const QJsonValue& value) {
  if (value.isArray()) {
    for (const QJsonValue item : value.toArray())
      out.columnList.push_back(roleNamed(textOf("columns", item)));
    if (out.columnList.empty()) refuse("columns", value, "a list of names");
    return;
  }
  if (!value.isObject()) refuse("columns", value, "a list of names or an object");
  const QJsonObject map = value.toObject();
  for (auto item = map.begin(); item != map.end(); ++item) {
    Description::Named named;
    named.role = roleNamed(item.key().toStdString());
    if (item.value().isString()) {
      named.header = item.value().toString().toStdString();
    } else {
      const double position = item.value().toDouble();
      if (!(position >= 1 && position <= 10000 && position == std::floor(position)))
        refuse("columns", item.value(), "a header's name or a position from 1");
      named.position = static_cast<int>(position);
    }
    out.columnMap.push_back(named);
  }
}

void readPeriod(Description& out, const QJsonValue& value) {
  if (value.isString()) out.periodMs = parsePeriod(value.toString().toStdString());
  const double ms = value.toDouble();
  if (value.isDouble() && ms >= 1 && ms <= static_cast<double>(kWeekMs) && ms == std::floor(ms))
    out.periodMs = static_cast<std::int64_t>(ms);
  if (out.periodMs == 0)
    refuse("period", value, "a period such as \"5min\", \"30s\", \"1h\", \"day\" or \"week\"");
}

void readDate(Description& out, const QJsonValue& value) {
  const std::string text = value.isDouble() ? decimalText(value.toDouble()) : textOf("date", value);
  std::int64_t day = 0;
  if (parseDate(text, DateOrder::Unknown, day) != DateResult::Good)
    refuse("date", value, "a date such as \"2021-01-04\"");
  out.date = day;
}

void readPriceTick(Description& out, const QJsonValue& value) {
  const std::string text =
      value.isDouble() ? decimalText(value.toDouble()) : textOf("priceTick", value);
  if (!parseStep(text, out.priceTick))
    refuse("priceTick", value, "a decimal above 0 such as \"0.2\"");
}

void readTimeZone(Description& out, const QJsonValue& value) {
  out.timeZone = textOf("timeZone", value);
  if (!ZoneClock(out.timeZone).ok())
    refuse("timeZone", value, "a time zone such as \"Asia/Shanghai\" or \"+08:00\"");
}

using Reader = std::function<void(Description&, const QJsonValue&)>;

const std::map<std::string, Reader>& readers() {
  using D = Description;
  using V = QJsonValue;
  static const std::map<std::string, Reader> table = {
      {"kind",
       [](D& d, const V& v) {
         d.kind = choiceOf<const char*>("kind", v, {{"bars", "bars"}, {"ticks", "ticks"}});
       }},
      {"columns", readColumns},
      {"header", [](D& d, const V& v) { d.header = boolOf("header", v); }},
      {"delimiter", [](D& d, const V& v) { d.delimiter = characterOf("delimiter", v); }},
      {"skipLines",
       [](D& d, const V& v) {
         const double count = v.toDouble(-1);
         if (!(count >= 0 && count <= 100000)) refuse("skipLines", v, "a number of lines");
         d.skipLines = static_cast<int>(count);
       }},
      {"encoding",
       [](D& d, const V& v) {
         d.encoding = choiceOf<const char*>(
             "encoding", v, {{"utf-8", "utf-8"}, {"gbk", "gbk"}, {"utf-16", "utf-16"}});
       }},
      {"decimalPoint",
       [](D& d, const V& v) { d.numbers.decimalPoint = characterOf("decimalPoint", v); }},
      {"thousands", [](D& d, const V& v) { d.numbers.thousands = characterOf("thousands", v); }},
      {"timeZone", readTimeZone},
      {"timeFormat",
       [](D& d, const V& v) {
         d.timeFormat = choiceOf<TimeFormat>("timeFormat", v,
                                             {{"text", TimeFormat::Text},
                                              {"epochS", TimeFormat::EpochSeconds},
                                              {"epochMs", TimeFormat::EpochMillis},
                                              {"epochUs", TimeFormat::EpochMicros},
                                              {"epochNs", TimeFormat::EpochNanos},
                                              {"msOfDay", TimeFormat::MsOfDay},
                                              {"secondsOfDay", TimeFormat::SecondsOfDay},
                                              {"HHMM", TimeFormat::HourMinute},
                                              {"HHMMSS", TimeFormat::HourMinuteSecond},
                                              {"HHMMSSmmm", TimeFormat::HourMinuteSecondMillis}});
       }},
      {"dateOrder",
       [](D& d, const V& v) {
         d.dateOrder = choiceOf<DateOrder>("dateOrder", v,
                                           {{"YMD", DateOrder::Unknown},
                                            {"DMY", DateOrder::DayFirst},
                                            {"MDY", DateOrder::MonthFirst}});
       }},
      {"date", readDate},
      {"stamp",
       [](D& d, const V& v) {
         d.stampIsEnd = choiceOf<bool>("stamp", v, {{"start", false}, {"end", true}});
       }},
      {"period", readPeriod},
      {"priceScale", [](D& d, const V& v) { d.priceShift = shiftOf("priceScale", v); }},
      {"volumeScale", [](D& d, const V& v) { d.volumeShift = shiftOf("volumeScale", v); }},
      {"turnoverScale", [](D& d, const V& v) { d.turnoverShift = shiftOf("turnoverScale", v); }},
      {"priceTick", readPriceTick},
      {"side",
       [](D& d, const V& v) {
         d.side = choiceOf<QuoteSide>(
             "side", v,
             {{"bid", QuoteSide::Bid}, {"ask", QuoteSide::Ask}, {"mid", QuoteSide::Mid}});
       }},
      {"code", [](D& d, const V& v) { d.code = textOf("code", v); }},
      {"market", [](D& d, const V& v) { d.market = textOf("market", v); }},
      {"order",
       [](D& d, const V& v) {
         d.order = choiceOf<RowOrder>("order", v,
                                      {{"ascending", RowOrder::Ascending},
                                       {"descending", RowOrder::Descending},
                                       {"auto", RowOrder::Auto}});
       }},
      {"skipEmpty", [](D& d, const V& v) { d.skipEmpty = boolOf("skipEmpty", v); }},
      {"tolerant", [](D& d, const V& v) { d.tolerant = boolOf("tolerant", v); }},
  };
  return table;
}

std::int64_t unitMs(std::string_view unit) {
  static constexpr std::pair<std::string_view, std::int64_t> kUnits[] = {{"ms", 1},
                                                                         {"s", 1000},
                                                                         {"sec", 1000},
                                                                         {"secs", 1000},
                                                                         {"second", 1000},
                                                                         {"seconds", 1000},
                                                                         {"m", 60'000},
                                                                         {"t", 60'000},
                                                                         {"min", 60'000},
                                                                         {"mins", 60'000},
                                                                         {"minute", 60'000},
                                                                         {"minutes", 60'000},
                                                                         {"h", 3'600'000},
                                                                         {"hr", 3'600'000},
                                                                         {"hour", 3'600'000},
                                                                         {"hours", 3'600'000},
                                                                         {"hourly", 3'600'000},
                                                                         {"d", kDayMs},
                                                                         {"day", kDayMs},
                                                                         {"days", kDayMs},
                                                                         {"daily", kDayMs},
                                                                         {"w", kWeekMs},
                                                                         {"wk", kWeekMs},
                                                                         {"week", kWeekMs},
                                                                         {"weeks", kWeekMs},
                                                                         {"weekly", kWeekMs},
                                                                         {"分钟", 60'000},
                                                                         {"日线", kDayMs},
                                                                         {"周线", kWeekMs},
                                                                         {"秒", 1000},
                                                                         {"小时", 3'600'000}};
  for (const auto& [name, ms] : kUnits)
    if (name == unit) return ms;
  return 0;
}

}  // namespace

std::int64_t parsePeriod(std::string_view text) {
  // Within a text a dash only parts number and unit; in front of it, it says something else.
  if (text.starts_with('-')) return 0;
  std::string small;
  for (const char c : text.substr(0, 40)) {
    if (c == ' ' || c == '-' || c == '_') continue;
    small += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  std::string_view unit = small;
  std::string_view count;
  const std::size_t ahead = std::min(unit.find_first_not_of("0123456789"), unit.size());
  if (ahead > 0) {
    count = unit.substr(0, ahead);
    unit.remove_prefix(ahead);
  } else if (const std::size_t behind = unit.find_first_of("0123456789"); behind != unit.npos) {
    count = unit.substr(behind);
    unit = unit.substr(0, behind);
  }
  std::int64_t times = 1;
  if (!count.empty() && (count.size() > 6 || !wholeNumber(count, times) || times == 0)) return 0;
  const std::int64_t ms = unitMs(unit) * times;
  return ms > kDayMs && ms != kWeekMs ? 0 : ms;
}

Description readDescription(const QJsonObject& json) {
  Description out;
  for (auto item = json.begin(); item != json.end(); ++item) {
    const std::string key = item.key().toStdString();
    const auto reader = readers().find(key);
    if (reader == readers().end()) {
      std::vector<std::string> known;
      for (const auto& entry : readers()) known.push_back(entry.first);
      throw DataFileError("description: unknown key \"" + key + "\"; did you mean \"" +
                          nearestName(key, known) + "\"?");
    }
    reader->second(out, item.value());
  }
  if (out.numbers.thousands == out.numbers.decimalPoint)
    throw DataFileError("description: \"thousands\" and \"decimalPoint\" are the same character");
  return out;
}

}  // namespace orvane::detail
