#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <string>
#include <vector>

namespace orvane {

/// Reads a whole file. Throws `InputError` that names it.
QByteArray readWholeFile(const std::string& path);

/// Parses JSON. `origin` is what messages begin with, such as the file's name; an error names
/// origin, line and column. Throws `InputError`.
QJsonValue parseJson(const QByteArray& text, const std::string& origin);
QJsonValue readJsonFile(const std::string& path);

/// A JSON object given on the command line: itself, if it begins with "{", else a file's name.
/// `option` is the option's name, for messages.
QJsonObject jsonObjectArgument(const std::string& argument, const std::string& option);

/// Typed reading of the keys of a JSON object. Every error is an `InputError` that names the
/// place, the field and the value. `close` refuses keys that were never asked for.
class JsonReader {
 public:
  /// `place` is the file and the path inside it, such as "run.json: runners[0]".
  JsonReader(const QJsonValue& value, std::string place);

  bool has(const char* key);
  QJsonValue value(const char* key);
  std::string place(const char* key) const;

  std::string text(const char* key, const std::string& defaultValue = {});
  std::string requiredText(const char* key);
  /// A text that is not empty where it is given; empty where the key is missing.
  std::string filledText(const char* key);
  bool flag(const char* key, bool defaultValue);
  int integer(const char* key, int defaultValue, int lowest, int highest);
  /// A number or a text that holds one, as decimal text; empty where the key is missing.
  std::string decimal(const char* key);
  /// As `decimal`, with whatever text.
  std::string numberOrText(const char* key);
  /// A text, or an array of texts; none may be empty.
  std::vector<std::string> texts(const char* key);

  void close() const;

  [[noreturn]] void refuse(const char* key, const std::string& what) const;

 private:
  QJsonObject object_;
  std::string place_;
  std::vector<QString> asked_;
};

/// A JSON value as compact text, for messages.
std::string jsonText(const QJsonValue& value);

}  // namespace orvane
