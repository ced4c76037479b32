#pragma once

#include "platform/fields/CapitalView.h"   // IWYU pragma: export
#include "platform/fields/FillView.h"      // IWYU pragma: export
#include "platform/fields/KLineView.h"     // IWYU pragma: export
#include "platform/fields/OrderView.h"     // IWYU pragma: export
#include "platform/fields/PositionView.h"  // IWYU pragma: export
#include "platform/fields/QuoteView.h"     // IWYU pragma: export
