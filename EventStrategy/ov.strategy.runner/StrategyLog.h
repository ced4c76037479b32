#pragma once

#include "shared/Export.h"

namespace orvane {

/// The levels of the lines that a strategy logs through its context.
enum class StrategyLogLevel { Trace, Debug, Info, Warn, Error };

/// Whether the logger of a strategy's lines takes that level; `toStg` as `IContext::logInfo` and
/// its kin take it. Ask before a text that takes long to make: a context can only drop it. The
/// answer changes when the host changes its logging, so it is no ground for a decision. Any thread.
ORVANE_API bool isStrategyLogged(StrategyLogLevel level, bool toStg = true);

}  // namespace orvane
