#include "host/SessionJson.h"

#include <QString>

namespace orvane {
namespace {

constexpr char kTimeZone[] = "Asia/Shanghai";
constexpr char kSessions[] = "09:30-11:30,13:00-15:00";

QString fromUtf8(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

QJsonObject instrumentJson(const SyntheticInstrument& instrument) {
  return {{"code", fromUtf8(instrument.code)},
          {"market", fromUtf8(instrument.market)},
          {"timeZone", kTimeZone},
          {"sessions", kSessions},
          {"currency", "CNY"},
          {"priceTick", fromUtf8(instrument.priceText(1))},
          {"lotSize", QString::number(instrument.lotSize)},
          {"multiplier", QString::number(instrument.multiplier)}};
}

QJsonDocument instrumentsJson(const QJsonArray& instruments) {
  return QJsonDocument(QJsonObject{{"instruments", instruments}});
}

QJsonDocument sessionFormatJson() {
  return QJsonDocument(QJsonObject{{"timeZone", kTimeZone}, {"stamp", "end"}});
}

std::string barFileName(const SyntheticInstrument& instrument) {
  return instrument.codeText() + "_1min.csv";
}

}  // namespace orvane
