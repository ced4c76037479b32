#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Text.h"
#include "shared/NearText.h"

namespace orvane {

/// Typed reading of a strategy's parameters. A wrong value does not throw: the default is
/// answered, the error is kept, and `accept` ends the run with all of them at once.
///
///     Params params(json);
///     fast_ = params.integer("fast", 5, 1, 1000);
///     if (!params.accept(context)) return;
///
/// Where parameters are read in more than one place, or may change while the run goes on, declare
/// them once in a `ParamList`. Made and used on one thread, as a rule inside `onStart`.
class Params {
 public:
  /// Reads from a copy of `object`.
  explicit Params(const QJsonObject& object) : object_(object) {}

  /// Whether the key was given. Asking this way does not count as reading it.
  bool has(const char* key) const { return object_.contains(QLatin1String(key)); }

  /// A whole number from `lowest` to `highest`; `defaultValue` where the key is missing.
  int64 integer(const char* key, int64 defaultValue,
                int64 lowest = std::numeric_limits<int64>::min(),
                int64 highest = std::numeric_limits<int64>::max()) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    // Of a number with a fraction, or one too large to be whole, either default is answered.
    if (!value.isDouble() || value.toInteger(0) != value.toInteger(1))
      return refuse(key, "must be a whole number", value), defaultValue;
    const int64 whole = value.toInteger();
    if (whole < lowest || whole > highest)
      return refuse(key, rangeText(lowest, highest), value), defaultValue;
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
      return refuse(key, rangeText(lowest, highest), value), defaultValue;
    return result;
  }

  /// True or false.
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

  /// One of some texts, at least one, all plain ASCII.
  std::string choice(const char* key, const std::string& defaultValue,
                     const std::vector<std::string>& choices) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    std::string given = value.toString().toStdString();
    if (value.isString() && std::ranges::find(choices, given) != choices.end()) return given;
    return refuse(key, "must be " + listed(choices, " or "), value), defaultValue;
  }

  /// An array of texts, converted to GBK; one text alone counts as an array of it.
  std::vector<std::string> texts(const char* key, const std::vector<std::string>& defaultValue) {
    const QJsonValue value = take(key);
    if (value.isUndefined()) return defaultValue;
    std::vector<std::string> result;
    const QJsonArray list = value.isArray() ? value.toArray() : QJsonArray{value};
    for (const auto& each : list) {
      if (!each.isString()) return refuse(key, "must be an array of texts", value), defaultValue;
      result.push_back(gbk(each.toString()));
    }
    return result;
  }

  /// Makes a key that is missing an error. Ask it as well for its value.
  void require(const char* key) {
    if (!has(key)) addError("parameter " + quoted(key) + " is missing; it has no default");
  }

  /// Adds an error of the caller's own (UTF-8), such as one between two parameters.
  void addError(const std::string& message) {
    errors_ += errors_.empty() ? "" : "; ";
    errors_ += message;
  }

  /// A number as the messages show it.
  static std::string textOf(std::integral auto value) { return std::to_string(value); }
  /// The same of one that need not be whole.
  static std::string textOf(double value) { return numberText(value); }

  /// All errors so far, UTF-8; empty if there are none.
  const std::string& errors() const { return errors_; }

  /// Closes the reading: a key that was never asked for is an error too, so that a misspelt one is
  /// noticed ("data" and "account", which the host gives, are not). Answers all errors, UTF-8.
  const std::string& close() {
    for (const QString& key : object_.keys())
      if (key != QLatin1String("data") && key != QLatin1String("account") && !taken_.contains(key))
        addError("parameter " + quoted(key.toStdString()) + " is not known; " + meant(key));
    return errors_;
  }

  /// Closes the reading. If there was any error, ends the run with it (`IContext::setError`) and
  /// answers false.
  bool accept(IContext* context) {
    if (close().empty()) return true;
    context->setError(gbk(errors_));
    return false;
  }

 private:
  QJsonValue take(const char* key) {
    taken_.insert(QString::fromUtf8(key));
    return object_.value(QLatin1String(key));
  }

  void refuse(const char* key, const std::string& what, const QJsonValue& value) {
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    addError("parameter " + quoted(key) + " " + what + ", not " +
             json.mid(1, json.size() - 2).toStdString());
  }

  static std::string quoted(const std::string& text) { return "\"" + text + "\""; }
  static std::string listed(const std::vector<std::string>& texts, const char* last) {
    std::string list;
    for (std::size_t i = 0; i < texts.size(); ++i)
      list += (i == 0 ? "" : i + 1 < texts.size() ? ", " : last) + quoted(texts[i]);
    return list;
  }
  template <typename Number>
  static std::string rangeText(Number lowest, Number highest) {
    using Limits = std::numeric_limits<Number>;
    const Number bottom = Limits::has_infinity ? -Limits::infinity() : Limits::min();
    const Number top = Limits::has_infinity ? Limits::infinity() : Limits::max();
    if (highest == top) return "must be at least " + textOf(lowest);
    if (lowest == bottom) return "must be at most " + textOf(highest);
    return "must be from " + textOf(lowest) + " to " + textOf(highest);
  }

  /// The key that was probably meant, one that at most two letters tell apart; else all there are.
  std::string meant(const QString& key) const {
    if (taken_.empty()) return "there are none";
    if (const QString* const nearest = textMeant(taken_, key))
      return "is " + quoted(nearest->toStdString()) + " meant?";
    std::vector<std::string> known;
    for (const QString& its : taken_) known.push_back(its.toStdString());
    return "there " + std::string(known.size() == 1 ? "is " : "are ") + listed(known, " and ");
  }

  QJsonObject object_;
  std::set<QString> taken_;
  std::string errors_;
};

}  // namespace orvane
