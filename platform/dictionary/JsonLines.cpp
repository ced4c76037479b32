#include "platform/dictionary/JsonLines.h"

namespace orvane::detail {

JsonLines::JsonLines(std::string_view text, std::string_view key) : text_(text) {
  if (key.empty()) readList();
  if (key.empty() || peek() != '{') return;
  ++at_;
  while (peek() == '"') {
    const std::string_view name = takeString();
    peek();
    ++at_;  // The colon.
    if (name == key && peek() == '[') {
      // Of a list that comes twice the parser takes the last.
      elements_.clear();
      readList();
    } else {
      passValue();
    }
    if (peek() == ',') ++at_;
  }
}

/// The next character that is no blank; 0 at the end.
char JsonLines::peek() {
  for (; at_ < text_.size(); ++at_) {
    const char each = text_[at_];
    if (each == '\n') ++line_;
    if (each != ' ' && each != '\t' && each != '\r' && each != '\n') return each;
  }
  return '\0';
}

/// Passes over a string and returns it as it is written, without its quotes.
std::string_view JsonLines::takeString() {
  const std::size_t begin = ++at_;
  while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
  const std::string_view found = text_.substr(begin, at_ - begin);
  ++at_;
  return found;
}

void JsonLines::passObject(Element* element) {
  ++at_;
  while (peek() == '"') {
    const std::size_t line = line_;
    const std::string_view name = takeString();
    if (element != nullptr) {
      Place& place = element->keys[std::string(name)];
      place.line = line;
      ++place.count;
    }
    peek();
    ++at_;  // The colon.
    passValue();
    if (peek() == ',') ++at_;
  }
  ++at_;
}

void JsonLines::passValue() {
  // Nesting is as deep as the parser let pass.
  const char first = peek();
  if (first == '"') {
    takeString();
  } else if (first == '{') {
    passObject(nullptr);
  } else if (first == '[') {
    ++at_;
    while (peek() != ']' && peek() != '\0') {
      passValue();
      if (peek() == ',') ++at_;
    }
    ++at_;
  } else {
    while (at_ < text_.size() &&
           std::string_view(",]} \t\r\n").find(text_[at_]) == std::string_view::npos)
      ++at_;
  }
}

void JsonLines::readList() {
  if (peek() != '[') return;
  ++at_;
  while (peek() != ']' && peek() != '\0') {
    elements_.push_back({line_, {}});
    if (peek() == '{')
      passObject(&elements_.back());
    else
      passValue();
    if (peek() == ',') ++at_;
  }
  ++at_;
}

std::size_t JsonLines::line(std::size_t element) const {
  return element < elements_.size() ? elements_[element].line : 1;
}

std::size_t JsonLines::line(std::size_t element, const std::string& key) const {
  if (element >= elements_.size()) return 1;
  const auto at = elements_[element].keys.find(key);
  return at == elements_[element].keys.end() ? elements_[element].line : at->second.line;
}

std::size_t JsonLines::count(std::size_t element, const std::string& key) const {
  if (element >= elements_.size()) return 0;
  const auto at = elements_[element].keys.find(key);
  return at == elements_[element].keys.end() ? 0 : at->second.count;
}

}  // namespace orvane::detail
