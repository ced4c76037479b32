#pragma once

// Rolling indicators, each a small class of its own: add the values as they come, ask for the
// present one. Header-only, without an allocation after they were made; a member of the strategy,
// for one thread at a time.
#include "sdk/indicators/Atr.h"             // IWYU pragma: export
#include "sdk/indicators/Bollinger.h"       // IWYU pragma: export
#include "sdk/indicators/Ema.h"             // IWYU pragma: export
#include "sdk/indicators/RollingExtreme.h"  // IWYU pragma: export
#include "sdk/indicators/Rsi.h"             // IWYU pragma: export
#include "sdk/indicators/Sma.h"             // IWYU pragma: export
