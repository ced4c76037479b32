#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::detail {

/// Where the objects of a list, and their keys, stand in a JSON text, which the parser does not
/// tell. The text is known to be good JSON.
class JsonLines {
 public:
  /// `key` is that of the list in the outermost object; empty: the text itself is the list.
  JsonLines(std::string_view text, std::string_view key);

  /// The line, from 1, of a list's element; 1 if there is no such element.
  std::size_t line(std::size_t element) const;
  /// The line of a key of an element that is an object; the element's where it has no such key.
  std::size_t line(std::size_t element, const std::string& key) const;
  /// How often an element has a key.
  std::size_t count(std::size_t element, const std::string& key) const;

 private:
  struct Place {
    std::size_t line = 1;
    std::size_t count = 0;
  };
  struct Element {
    std::size_t line = 1;
    std::map<std::string, Place> keys;
  };
  char peek();
  std::string_view takeString();
  void passValue();
  void passObject(Element* element);
  void readList();

  const std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::vector<Element> elements_;
};

}  // namespace orvane::detail
