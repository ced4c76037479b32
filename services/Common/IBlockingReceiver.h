#pragma once

#include "shared/Export.h"

namespace orvane {

/// Marks a receiver, beside its spi base, that somebody waits for: the thread that made the request
/// stands still until the request is answered, inside a strategy's call-back maybe. A service that
/// serves requests when all is quiet would wait for ever; it is to serve such a receiver at once,
/// on a thread that waits for nobody.
class ORVANE_API IBlockingReceiver {
 public:
  IBlockingReceiver() = default;
  IBlockingReceiver(const IBlockingReceiver&) = delete;
  IBlockingReceiver& operator=(const IBlockingReceiver&) = delete;
  virtual ~IBlockingReceiver();
};

}  // namespace orvane
