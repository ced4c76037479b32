#include "host/CsvText.h"

#include <charconv>

namespace orvane {

std::string csvNumber(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  return {text, end};
}

std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace orvane
