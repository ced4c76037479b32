#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <string>

namespace orvane::detail {

/// A value of JSON as it would stand in a file, in UTF-8.
inline std::string textOf(const QJsonValue& value) {
  return QJsonDocument(QJsonArray{value})
      .toJson(QJsonDocument::Compact)
      .mid(1)
      .chopped(1)
      .toStdString();
}

}  // namespace orvane::detail
