#pragma once

#include "shared/Export.h"

namespace orvane {

/// Exists from a runner's first pending data event until its batch was delivered or discarded.
/// The installed platform counts the live ones: none alive means that every runner has digested
/// all the data it was given.
class ORVANE_API NotifyRefCounter {
 public:
  NotifyRefCounter();
  ~NotifyRefCounter();
  NotifyRefCounter(const NotifyRefCounter&) = delete;
  NotifyRefCounter& operator=(const NotifyRefCounter&) = delete;
};

}  // namespace orvane
