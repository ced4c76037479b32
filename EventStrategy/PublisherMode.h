#pragma once

#include "shared/Types.h"

namespace orvane {

/// The publisher's mode for a run's mode flags: 2 wins over 4, and neither gives 0.
inline RunnerModeFlag publisherMode(int flags) {
  if ((flags & 2) != 0) return 2;
  return (flags & 4) != 0 ? 4 : 0;
}

}  // namespace orvane
