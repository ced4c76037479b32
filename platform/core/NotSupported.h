#pragma once

#include "shared/CodeTables.h"
#include "shared/ResultStatus.h"

namespace orvane::detail {

/// The answer of an operation that this platform does not have.
inline ResultStatus notSupported() { return {23, statusMessage(23)}; }

}  // namespace orvane::detail
