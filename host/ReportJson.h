#pragma once

#include <QJsonValue>
#include <QString>
#include <cstdint>
#include <string>

#include "host/TimeArgument.h"
#include "shared/Types.h"

namespace orvane {

/// How the report writes texts, counts and times.
inline QString qt(const std::string& text) { return QString::fromStdString(text); }
inline qint64 count(std::uint64_t value) { return static_cast<qint64>(value); }
inline QJsonValue timeOrNull(int64 utcMs) {
  return utcMs == kUnsetTime ? QJsonValue() : QJsonValue(qt(isoTime(utcMs)));
}

}  // namespace orvane
