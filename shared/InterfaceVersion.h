#pragma once

namespace orvane {

/// The number of what a strategy module and its host agree on: the operations of `IStrategy` and
/// `IContext`, their order, and the layout of the records that they pass. Rises with every change
/// that a module built before would not survive; an operation that is added at the end of
/// `IContext` is none.
inline constexpr int kInterfaceVersion = 1;

/// The export of a strategy module that answers the number which it was built with. A module
/// without it is taken for one that fits.
using InterfaceVersionFunction = int (*)();
inline constexpr char kInterfaceVersionName[] = "orvaneInterfaceVersion";

}  // namespace orvane

/// Exports that function. Once in a module, outside every namespace; `ORVANE_STRATEGY` does it.
#define ORVANE_EXPORT_INTERFACE_VERSION                                            \
  extern "C" __attribute__((visibility("default"))) int orvaneInterfaceVersion() { \
    return ::orvane::kInterfaceVersion;                                            \
  }
