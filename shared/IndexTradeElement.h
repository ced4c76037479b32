#pragma once

#include "shared/ICodeID.h"

namespace orvane {

/// One element of an index.
struct IndexTradeElement {
  ICodeID code;
  Word value = 0;  ///< Carried.
};

}  // namespace orvane
