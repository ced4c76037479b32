#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <cmath>
#include <limits>
#include <set>
#include <string>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Text.h"

namespace orvane {

/// Typed reading of a strategy's parameters. A wrong value does not throw: the default is
/// answered, the error is kept, and `accept` ends the run with all of them at once.
///
///     Params params(json);
///     fast_ = params.integer("fast", 5, 1, 1000);
///     if (!params.accept(context)) return;
///
/// Made and used on one thread, as a rule inside `onStart`.
class Params {
 public:
  explicit Params(const QJsonObject& object) : object_(object) {}

  bool has(const char* key) const { return object_.contains(QLatin1String(key)); }

  /// A whole number from `lowest` to `highest`; `defaultValue` where the key is missing.
  int64 integer(const char* key, int64 defaultValue,
                int64 lowest = std::numeric_limits<int64>::min(),
                int64 highest = std::numeric_limits<int64>::max()) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!value.isDouble() || number != std::floor(number))
      return refuse(key, "must be a whole number", value), defaultValue;
    const int64 whole = value.toInteger();
    if (whole < lowest || whole > highest)
      return refuse(key, rangeText(lowest, highest).c_str(), value), defaultValue;
    return whole;
  }

  /// A number from `lowest` to `highest`.
  double number(const char* key, double defaultValue,
                double lowest = -std::numeric_limits<double>::infinity(),
                double highest = std::numeric_limits<double>::infinity()) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    if (!value.isDouble()) return refuse(key, "must be a number", value), defaultValue;
    const double result = value.toDouble();
    if (result < lowest || result > highest)
      return refuse(key,
                    ("must be from " + numberText(lowest) + " to " + numberText(highest)).c_str(),
                    value),
             defaultValue;
    return result;
  }

  bool flag(const char* key, bool defaultValue) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    if (!value.isBool()) refuse(key, "must be true or false", value);
    return value.toBool(defaultValue);
  }

  /// A text, converted to GBK.
  std::string text(const char* key, const std::string& defaultValue) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    if (!value.isString()) return refuse(key, "must be a text", value), defaultValue;
    return gbk(value.toString());
  }

  /// Adds an error of the caller's own (UTF-8), such as one between two parameters.
  void addError(const std::string& message) {
    errors_ += errors_.empty() ? "" : "; ";
    errors_ += message;
  }

  /// All errors so far, UTF-8; empty if there are none.
  const std::string& errors() const { return errors_; }

  /// Closes the reading: a key that was never asked for is an error too, so that a misspelt one is
  /// noticed ("data" and "account", which the host gives, are not). If there was any error, ends
  /// the run with it
  /// (`IContext::setError`) and answers false.
  bool accept(IContext* context) {
    for (auto it = object_.begin(); it != object_.end(); ++it)
      if (it.key() != QLatin1String("data") && it.key() != QLatin1String("account") &&
          !taken_.contains(it.key()))
        addError("parameter \"" + it.key().toStdString() + "\" is not known");
    if (errors_.empty()) return true;
    context->setError(gbk(errors_));
    return false;
  }

 private:
  QJsonValue take(const char* key) {
    taken_.insert(QString::fromUtf8(key));
    return object_.value(QLatin1String(key));
  }

  void refuse(const char* key, const char* what, const QJsonValue& value) {
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    addError("parameter \"" + std::string(key) + "\" " + what + ", not " +
             json.mid(1, json.size() - 2).toStdString());
  }

  static std::string rangeText(int64 lowest, int64 highest) {
    if (highest == std::numeric_limits<int64>::max())
      return "must be at least " + std::to_string(lowest);
    if (lowest == std::numeric_limits<int64>::min())
      return "must be at most " + std::to_string(highest);
    return "must be from " + std::to_string(lowest) + " to " + std::to_string(highest);
  }

  QJsonObject object_;
  std::set<QString> taken_;
  std::string errors_;
};

}  // namespace orvane
