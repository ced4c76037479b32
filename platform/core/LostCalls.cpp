#include "platform/core/LostCalls.h"

#include <cstdio>
#include <exception>

namespace orvane::detail {

LostCalls& LostCalls::shared() {
  static LostCalls made;
  return made;
}

void LostCalls::note(const char* what) noexcept {
  char text[sizeof first_];
  try {
    throw;
  } catch (const std::exception& error) {
    std::snprintf(text, sizeof text, "%s: %s", what, error.what());
  } catch (...) {
    std::snprintf(text, sizeof text, "%s", what);
  }
  std::fprintf(stderr, "%s\n", text);
  const std::lock_guard lock(mutex_);
  if (count_++ == 0) std::snprintf(first_, sizeof first_, "%s", text);
}

std::string LostCalls::take() {
  const std::lock_guard lock(mutex_);
  if (count_ == 0) return {};
  std::string text =
      count_ == 1 ? "a call was lost: " : std::to_string(count_) + " calls were lost, the first: ";
  text += first_;
  count_ = 0;
  return text;
}

}  // namespace orvane::detail
