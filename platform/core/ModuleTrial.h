#pragma once

#include <string>

#include "shared/Export.h"

namespace orvane {

/// Opens a module in a second process first, where one that throws, ends the process or crashes
/// while it is loaded harms nobody; in this process nothing of it runs. Also looks whether it was
/// built for these interfaces. A path that was found good is not tried again.
///
/// The second process is a copy of this one, which goes on with the calling thread alone: call it
/// before the process has other threads.
///
/// `path` as the dynamic linker takes it. Returns an empty text, or what is wrong, in UTF-8, in
/// words that go on after the module's name: "threw while it was loaded: ...".
ORVANE_API std::string tryModule(const std::string& path);

}  // namespace orvane
