#pragma once

#include "platform/fields/KLineView.h"  // IWYU pragma: export
#include "platform/fields/QuoteView.h"  // IWYU pragma: export
