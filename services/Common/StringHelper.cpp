#include "services/Common/StringHelper.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace orvane {

std::string StringHelper::FormatString(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

int64 StringHelper::ToInt64(const std::string& text) {
  return std::strtoll(text.c_str(), nullptr, 10);
}

}  // namespace orvane
