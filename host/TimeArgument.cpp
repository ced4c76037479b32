#include "host/TimeArgument.h"

#include <fmt/core.h>

#include <QDateTime>
#include <QTimeZone>

#include "host/InputError.h"

namespace orvane {
namespace {

/// Cuts "Z" or "+08:00" off the end of a time and answers its seconds east of Greenwich.
bool takeOffset(QString& text, int& offsetSeconds) {
  if (text.endsWith('Z') || text.endsWith('z')) {
    text.chop(1);
    offsetSeconds = 0;
    return true;
  }
  const QString tail = text.right(6);
  if (text.size() <= 11 || tail.size() != 6 || (tail[0] != '+' && tail[0] != '-') || tail[3] != ':')
    return false;
  bool isHour = false, isMinute = false;
  const int hours = tail.mid(1, 2).toInt(&isHour);
  const int minutes = tail.mid(4, 2).toInt(&isMinute);
  if (!isHour || !isMinute) return false;
  offsetSeconds = (hours * 3600 + minutes * 60) * (tail[0] == '-' ? -1 : 1);
  text.chop(6);
  return true;
}

QDate dayOf(const QString& text) {
  QDate day;
  for (const char* format : {"yyyy-M-d", "yyyyMMdd", "yyyy/M/d"})
    if (!day.isValid()) day = QDate::fromString(text, QLatin1String(format));
  return day;
}

}  // namespace

void checkTimeZone(const std::string& name, const std::string& option) {
  if (!QTimeZone(QByteArray::fromStdString(name)).isValid())
    throw InputError(
        fmt::format("{}: \"{}\" is not a time zone; give an IANA name such as "
                    "\"Asia/Shanghai\" or \"UTC\"",
                    option, name));
}

int64 parseTimeArgument(const std::string& given, const std::string& timeZone,
                        const std::string& option) {
  QString text = QString::fromStdString(given).trimmed();
  int offsetSeconds = 0;
  const bool hasOffset = takeOffset(text, offsetSeconds);
  text.replace('T', ' ');
  const qsizetype blank = text.indexOf(' ');
  const QString dayText = blank < 0 ? text : text.left(blank);
  const QString timeText = blank < 0 ? QString() : text.mid(blank + 1).trimmed();

  const QDate day = dayOf(dayText);
  QTime time(0, 0);
  if (!timeText.isEmpty()) {
    time = QTime();
    for (const char* format : {"H:m:s", "H:m", "H:m:s.z"})
      if (!time.isValid()) time = QTime::fromString(timeText, QLatin1String(format));
  }
  if (!day.isValid() || !time.isValid())
    throw InputError(
        fmt::format("{}: \"{}\" is not a time; write it like 2021-01-04 or 2021-01-04T09:30:00",
                    option, given));
  const QTimeZone zone =
      hasOffset ? QTimeZone(offsetSeconds) : QTimeZone(QByteArray::fromStdString(timeZone));
  return QDateTime(day, time, zone).toMSecsSinceEpoch();
}

std::chrono::sys_days parseDateArgument(const std::string& given, const std::string& option) {
  const QDate day = dayOf(QString::fromStdString(given).trimmed());
  if (!day.isValid())
    throw InputError(
        fmt::format("{}: \"{}\" is not a date; write it like 2021-01-04", option, given));
  return std::chrono::sys_days{
      std::chrono::days{day.toJulianDay() - QDate(1970, 1, 1).toJulianDay()}};
}

std::string isoTime(int64 utcMs) {
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(utcMs, Qt::UTC);
  return time.toString(Qt::ISODateWithMs).toStdString();
}

}  // namespace orvane
