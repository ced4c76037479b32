#pragma once

#include <string>

#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane {

/// Small text operations of the service library. Any thread may call them.
class ORVANE_API StringHelper {
 public:
  /// What `printf` makes of the format and the arguments.
  static std::string FormatString(const char* format, ...) __attribute__((format(printf, 1, 2)));

  /// The decimal number at the start of the text, after blanks; 0 if there is none. A number
  /// beyond 64 bits gives the nearest limit.
  static int64 ToInt64(const std::string& text);
};

}  // namespace orvane
