#pragma once

#include <QString>

#include "shared/Types.h"

namespace orvane {

/// The key of a condition. It is passed on to the condition service unread.
struct CondId {
  int64 first = 0;
  int64 second = 0;
  std::int32_t third = 0;
  QString text;
};

}  // namespace orvane
