#include "host/OptionHints.h"

#include <array>
#include <string_view>
#include <utility>

namespace orvane {
namespace {

/// What the reader says, and the option that does it.
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kOptions{{
    {R"("columns" in a description)", "--columns"},
    {"name them in a description", "--columns"},
    {R"("timeZone" in a description)", "--timezone"},
    {R"("period" in a description)", "--period"},
    {R"("stamp": "end" in a description)", "--stamp end"},
    {R"("skipEmpty": true in a description)", "--set skipEmpty=true"},
    {R"("thousands" or "decimalPoint" of a description)", "--set decimalPoint=,"},
}};

}  // namespace

std::string withOptions(std::string message) {
  for (const auto& [phrase, option] : kOptions)
    if (const auto at = message.find(phrase); at != message.npos)
      message.insert(at + phrase.size(), " (" + std::string(option) + ")");
  return message;
}

}  // namespace orvane
